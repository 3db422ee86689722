// Extra toolbar buttons and Tools-menu items, and entries of the browser's context menu: plain keys
// without a module.
#include <utility>

#include "addons/UnitIEBrowserHelp.h"
#include "addons/add_on_row.h"
#include "common/registry.h"

namespace tarvelin {
namespace {

constexpr wchar_t kExtensions[] = L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Extensions\\";
constexpr wchar_t kMenuEntries[] = L"\\SOFTWARE\\Microsoft\\Internet Explorer\\MenuExt\\";

}  // namespace

void TScanIeBrowser::ScanExtraButtons(TListView& list) {
  if (list.Count() > 0) return;
  TRegistry registry(platform_.registry, RootKey::LocalMachine);
  if (!registry.OpenKey(kExtensions, false)) return;

  for (const std::wstring& entry : registry.GetKeyNames()) {
    // An entry that has vanished shows the texts of the one before. A name with NUL can never be
    // opened; it must not borrow texts, or it would pass for the other add-on.
    if (entry.find(L'\0') != std::wstring::npos) registry.CloseKey();
    registry.OpenKey(kExtensions + entry, false);
    std::wstring name;
    if (registry.ValueExists(L"MenuText")) {
      name = registry.ReadString(L"MenuText");
    } else if (registry.ValueExists(L"ButtonText")) {
      name = registry.ReadString(L"ButtonText");
    }
    std::wstring command = registry.ValueExists(L"Exec") ? registry.ReadString(L"Exec") : name;
    AddRow(list, std::move(name), {std::move(command)}, L"",
           {RootKey::LocalMachine, kExtensions + entry, {}});
  }
}

void TScanIeBrowser::ScanContextEntries(TListView& list) {
  if (list.Count() > 0) return;
  TRegistry registry(platform_.registry, RootKey::CurrentUser);
  if (!registry.OpenKey(kMenuEntries, false)) return;

  for (const std::wstring& entry : registry.GetKeyNames()) {
    registry.OpenKey(kMenuEntries, false);
    std::wstring page;
    if (registry.OpenKey(entry, false)) page = registry.ReadString(L"");
    registry.CloseKey();
    AddRow(list, entry, {std::move(page)}, L"", {RootKey::CurrentUser, kMenuEntries + entry, {}});
  }
}

}  // namespace tarvelin
