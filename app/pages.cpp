#include "app/pages.h"

namespace tarvelin {

namespace {

constexpr ButtonDescription First(ButtonRole role, std::wstring_view name,
                                  std::wstring_view caption) {
  return {role, name, caption, 10, 90, EnabledWhile::RowSelected};
}

constexpr ButtonDescription Second(ButtonRole role, std::wstring_view name,
                                   std::wstring_view caption) {
  return {role, name, caption, 114, 90, EnabledWhile::RowSelected};
}

constexpr ButtonDescription Remove(std::wstring_view name) {
  return First(ButtonRole::Remove, name, L"Remove");
}

constexpr ButtonDescription Properties(std::wstring_view name) {
  return Second(ButtonRole::Properties, name, L"Properties");
}

}  // namespace

std::span<const PageDescription> PageTable() {
  using enum NavigationGroup;
  static const std::vector<TListColumn> module{
      {L"Name", 150}, {L"Publisher", 120}, {L"File Path", 250}};
  static const std::vector<PageDescription> table{
      // The headers of the first page stand over the other column's content; the entry's name comes
      // first so that it is what the user selects.
      {Page::ShellExtensions,
       L"PageTab_Shell_Extention",
       L"lvShellList",
       ContextMenu,
       L"Shell Extensions",
       33,
       true,
       {{L"Type", 250}, {L"Item Name", 270}},
       {First(ButtonRole::OpenInRegEdit, L"btnSEKey", L"Open in RegEdit"),
        Second(ButtonRole::Remove, L"btnSERmv", L"Remove")}},
      {Page::New,
       L"PageTab_New",
       L"lvNewList",
       ContextMenu,
       L"New",
       8,
       true,
       {{L"Type", 300}},
       {Remove(L"btnNewRmv")}},
      {Page::SendTo,
       L"PageTab_Sendto",
       L"lvSendList",
       ContextMenu,
       L"Send to",
       34,
       true,
       {{L"Type", 400}},
       {Remove(L"btnStRmv")}},
      {Page::ContextMenus,
       L"PageTab_IE_Context_Menu",
       L"lvMenu",
       Tarvelin,
       L"IE Context Menus",
       20,
       false,
       {{L"Name", 200}, {L"File Path", 300}},
       {Remove(L"btnCMRmv")}},
      {Page::Bars,
       L"PageTab_IE_Bar",
       L"lvBar",
       Tarvelin,
       L"IE Bars",
       22,
       false,
       module,
       {Remove(L"btnExpBarRmv"), Properties(L"btnExpBarPPT")}},
      {Page::Toolbars,
       L"PageTab_IE_Toolbar",
       L"lvTool",
       Tarvelin,
       L"IE Toolbars",
       17,
       false,
       module,
       {Remove(L"btnTlbarRmv"), Properties(L"btnTlbarPPT")}},
      {Page::ExtraButtons,
       L"PageTab_IE_Extra_Button",
       L"lvButton",
       Tarvelin,
       L"IE Extra Button",
       32,
       false,
       {{L"Name", 200}, {L"Command", 300}},
       {Remove(L"btnExBtnRmv")}},
      {Page::HelperObjects,
       L"PageTab_IE_BHO",
       L"lvBHO",
       Tarvelin,
       L"IE BHOs",
       13,
       false,
       module,
       {Remove(L"btnBHORmv"), Properties(L"btnBHOPPT")}},
      {Page::ActiveX,
       L"PageTab_IE_ActiveX",
       L"lvActive",
       Tarvelin,
       L"IE Downloaded ActiveX",
       31,
       false,
       module,
       {Remove(L"btnDARmv"), Properties(L"btnDAPPT")}},
      {Page::Settings,
       L"PageTab_IE_Setting",
       L"lvHijack",
       Tarvelin,
       L"IE Settings",
       26,
       false,
       {{L"Name", 200}, {L"Current Settings", 315}},
       {{ButtonRole::Modify, L"Button_Modify", L"Modify Settings", 235, 150,
         EnabledWhile::RowSelected},
        {ButtonRole::Restore, L"Button_Restore", L"Use Default Settings", 399, 150,
         EnabledWhile::RowChecked}}},
  };
  return table;
}

}  // namespace tarvelin
