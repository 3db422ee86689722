// The program's entry point.
#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>

#include <cstdint>
#include <exception>
#include <string>

#include "app/UniqueInstance_win.h"
#include "app/UnitMain.h"
#include "app/application.h"
#include "common/buffer_win.h"
#include "common/modules_win.h"
#include "settings/UnitChangeSetting.h"
#include "widgets/message_boxes_win.h"
#include "widgets/peers_win.h"
#include "widgets/platform_win.h"

namespace tarvelin {
namespace {

constexpr const wchar_t* kTitle = L"Tarvelin";
constexpr SIZE kMainMinimum{749, 507};
constexpr SIZE kMainMaximum{749, 514};

std::wstring ExecutablePath() {
  return BufferText(
      [](wchar_t* buffer, DWORD size) { return GetModuleFileNameW(nullptr, buffer, size); });
}

// The program's icon in one of the system's sizes; Windows frees it with the program.
HICON ProgramIcon(HINSTANCE instance, int widthMetric, int heightMetric) {
  return static_cast<HICON>(LoadImageW(instance, MAKEINTRESOURCEW(1), IMAGE_ICON,
                                       GetSystemMetrics(widthMetric),
                                       GetSystemMetrics(heightMetric), LR_SHARED));
}

// Lets the dialog see every message, and says whether that was one of its keys.
bool ShowToDialog(TApplication& application, TFormChange& change, const MSG& message) {
  const bool key = change.Visible() && message.message == WM_KEYDOWN &&
                   (message.wParam == VK_RETURN || message.wParam == VK_ESCAPE);
  const TMessage seen{reinterpret_cast<std::uintptr_t>(message.hwnd), message.message,
                      message.wParam};
  application.Run([&] { change.ApplicationEvents1Message(seen); });
  return key;
}

void RunProgram(HINSTANCE instance) {
  const INITCOMMONCONTROLSEX controls{
      sizeof controls, ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_BAR_CLASSES};
  InitCommonControlsEx(&controls);

  const std::wstring path = ExecutablePath();
  const auto unique = UniqueInstance::Claim(instance, path);
  if (!unique) return;

  WindowsBoxes boxes;
  MessageLoop loop;
  TApplication application(boxes, kTitle);
  PeerContext context{instance, loop, application, ProgramIcon(instance, SM_CXICON, SM_CYICON),
                      ProgramIcon(instance, SM_CXSMICON, SM_CYSMICON)};
  WindowsPlatform windows(boxes, context);

  TFormMain main(windows.Get(), application, path.substr(0, path.rfind(L'\\') + 1));
  TFormChange change(windows.Get(), main.lvHijack(), [&] { main.TranslateWindows(); });
  main.SetFormChange(change);
  application.AddForm(main);
  application.AddForm(change);
  AttachPeers(main, context, {nullptr, kMainMinimum, kMainMaximum});
  change.OnFirstShow = [&] { AttachPeers(change, context, {WindowOf(main)}); };
  loop.hook = [&](const MSG& message) { return ShowToDialog(application, change, message); };
  boxes.SetMainWindow(WindowOf(main));
  unique->SetMainWindow(WindowOf(main));

  application.Run([&] { main.Show(); });
  // An error that kept the window from the screen was shown; nobody could end a hidden program.
  if (main.Visible()) loop.Run();

  // The windows go while everything that they show is still there.
  unique->SetMainWindow(nullptr);
  boxes.SetMainWindow(nullptr);
  change.SetPeer(nullptr);
  main.SetPeer(nullptr);
}

}  // namespace
}  // namespace tarvelin

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int) {
  tarvelin::PrepareProcess();
  // A long listing is no hang: the window keeps its own picture meanwhile.
  DisableProcessWindowsGhosting();
  std::wstring reason;
  try {
    tarvelin::RunProgram(instance);
    return 0;
  } catch (const tarvelin::WindowsError& error) {
    reason = error.Reason();
  } catch (const std::exception&) {
    reason = L"Windows is short of memory.";
  }
  // In English, since no language is known: what keeps the program from making a window keeps it
  // from making the first one, and that decides whether it is to read its language files at all.
  // Windows gives its reason in its own language.
  MessageBoxW(nullptr, (L"The program cannot be started: " + reason).c_str(), tarvelin::kTitle,
              MB_ICONERROR);
  return 1;
}
