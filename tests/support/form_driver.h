// The program's windows over the doubles, driven by the names of their components as a user drives
// them.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/UnitMain.h"
#include "app/application.h"
#include "settings/UnitChangeSetting.h"
#include "tests/support/test_platform.h"

namespace tarvelin::testing {

class FormDriver {
 public:
  FormDriver() : own_(std::make_unique<TestPlatform>()), world(*own_), platform(own_->platform) {}
  // The windows are given a platform of the caller's, which stands before that world.
  FormDriver(TestPlatform& behind, TPlatform& given) : world(behind), platform(given) {}

  // Creates and shows the windows; the system behind them is arranged before.
  void Start() {
    form = std::make_unique<TFormMain>(platform, application, L"C:\\Program\\");
    change = std::make_unique<TFormChange>(platform, form->lvHijack(),
                                           [this] { form->TranslateWindows(); });
    form->SetFormChange(*change);
    application.AddForm(*form);
    application.AddForm(*change);
    application.Run([this] { form->Show(); });
  }
  // Takes the windows away.
  void Stop() {
    change.reset();
    form.reset();
  }

  template <typename T>
  T& Find(std::wstring_view name) {
    for (const auto& component : form->Components()) {
      if (component->Name() == name) return dynamic_cast<T&>(*component);
    }
    throw std::runtime_error("no component " + ToUtf8(name));
  }
  TListView& List(std::wstring_view name) { return Find<TListView>(name); }
  bool Enabled(std::wstring_view name) { return Find<TButton>(name).Enabled(); }
  void Press(std::wstring_view button) {
    application.Run([&] { Find<TButton>(button).Click(); });
  }
  // Clicks a page's item in the navigation bar.
  void Visit(std::wstring_view caption) {
    for (TGroup* group : Find<TGroupBar>(L"RzGroupBar").Groups()) {
      for (TGroupItem* item : group->Items()) {
        if (item->Caption() == caption) return application.Run([&] { item->Click(); });
      }
    }
    throw std::runtime_error("no item " + ToUtf8(caption));
  }

 private:
  std::unique_ptr<TestPlatform> own_;

 public:
  TestPlatform& world;
  TPlatform& platform;
  TApplication application{platform.boxes, L"Tarvelin"};
  std::unique_ptr<TFormMain> form;
  std::unique_ptr<TFormChange> change;
};

// The pages: their items in the navigation bar, their lists and their buttons; the settings page
// has no Remove button.
struct PageNames {
  const wchar_t* item;
  const wchar_t* list;
  const wchar_t* remove;
  const wchar_t* more;  // what else works on a row
};
inline constexpr PageNames kPages[] = {
    {L"Shell Extensions", L"lvShellList", L"btnSERmv", L"btnSEKey"},
    {L"New", L"lvNewList", L"btnNewRmv", nullptr},
    {L"Send to", L"lvSendList", L"btnStRmv", nullptr},
    {L"IE Context Menus", L"lvMenu", L"btnCMRmv", nullptr},
    {L"IE Bars", L"lvBar", L"btnExpBarRmv", L"btnExpBarPPT"},
    {L"IE Toolbars", L"lvTool", L"btnTlbarRmv", L"btnTlbarPPT"},
    {L"IE Extra Button", L"lvButton", L"btnExBtnRmv", nullptr},
    {L"IE BHOs", L"lvBHO", L"btnBHORmv", L"btnBHOPPT"},
    {L"IE Downloaded ActiveX", L"lvActive", L"btnDARmv", L"btnDAPPT"},
    {L"IE Settings", L"lvHijack", nullptr, L"Button_Modify"},
};

}  // namespace tarvelin::testing
