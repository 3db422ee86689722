// The program's entry point.
#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>

#include <string>

#include "app/UniqueInstance_win.h"
#include "app/UnitMain.h"
#include "app/application.h"
#include "common/system_win.h"
#include "settings/UnitChangeSetting.h"
#include "widgets/peers_win.h"

namespace tarvelin {
namespace {

constexpr int kProgramIcon = 1;  // in resources/tarvelin.rc

std::wstring ExecutablePath() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length =
        GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);  // the path was cut
  }
}

HICON ProgramIcon(HINSTANCE instance, int widthMetric, int heightMetric) {
  return static_cast<HICON>(LoadImageW(instance, MAKEINTRESOURCEW(kProgramIcon), IMAGE_ICON,
                                       GetSystemMetrics(widthMetric),
                                       GetSystemMetrics(heightMetric), LR_SHARED));
}

// True for a key that the dialog has dealt with.
bool ShowMessageTo(TFormChange& dialog, TApplication& application, const MSG& message) {
  const bool dialogKey = dialog.Visible() && message.message == WM_KEYDOWN &&
                         (message.wParam == VK_RETURN || message.wParam == VK_ESCAPE);
  application.Run([&] {
    dialog.ApplicationEvents1Message(
        {reinterpret_cast<std::uintptr_t>(message.hwnd), message.message, message.wParam});
  });
  return dialogKey;
}

int RunProgram(HINSTANCE instance) {
  HardenDllSearch();
  const INITCOMMONCONTROLSEX controls{sizeof controls,
                                      ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES};
  InitCommonControlsEx(&controls);

  const std::wstring executable = ExecutablePath();
  const auto uniqueInstance = UniqueInstance::Claim(instance, executable);
  if (!uniqueInstance) return 0;

  WindowsPlatform windows;
  TPlatform& platform = windows.Get();
  TApplication application(platform.boxes, L"Tarvelin");

  const std::wstring folder = executable.substr(0, executable.rfind(L'\\') + 1);
  TFormMain formMain(platform, application, folder);
  TFormChange formChange(platform, formMain.lvHijack(), [&] { formMain.TranslateWindows(); });
  formMain.SetFormChange(formChange);
  application.AddForm(formMain);
  application.AddForm(formChange);

  MessageLoop loop;
  loop.hook = [&](const MSG& message) { return ShowMessageTo(formChange, application, message); };
  windows.SetMessagePump([&] { loop.ProcessWaiting(); });
  PeerContext context{instance,
                      loop,
                      [&](const std::function<void()>& command) { application.Run(command); },
                      {},
                      ProgramIcon(instance, SM_CXICON, SM_CYICON),
                      ProgramIcon(instance, SM_CXSMICON, SM_CYSMICON)};
  AttachPeers(formMain, context, {nullptr, {749, 507}, {749, 514}});
  AttachPeers(formChange, context, {WindowOf(formMain), {}, {}});
  windows.SetMainWindow(WindowOf(formMain));
  uniqueInstance->SetMainWindow(WindowOf(formMain));

  formMain.Show();
  loop.Run();

  // The windows go while everything that they speak to is still there.
  formChange.SetPeer(nullptr);
  formMain.SetPeer(nullptr);
  return 0;
}

}  // namespace
}  // namespace tarvelin

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
  return tarvelin::RunProgram(instance);
}
