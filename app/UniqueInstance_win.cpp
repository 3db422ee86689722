#include "app/UniqueInstance_win.h"

#include <utility>

#include "common/Corvane_Routine_New.h"
#include "widgets/peer_context_win.h"

namespace tarvelin {

namespace {
constexpr const wchar_t* kWindowClass = L"TApplication";

// The name of the program's file. A path that somebody typed may spell it in other letters, or
// shorter, than the folder has it.
std::wstring NameOnDisk(const std::wstring& executablePath) {
  WIN32_FIND_DATAW entry{};
  const UniqueFind search(FindFirstFileW(executablePath.c_str(), &entry));
  return search ? entry.cFileName : ExtractFileName(executablePath);
}
}  // namespace

bool BringToForeground(HWND window) {
  if (IsIconic(window)) ShowWindow(window, SW_RESTORE);
  if (GetForegroundWindow() == window) return true;

  const DWORD thread = GetWindowThreadProcessId(window, nullptr);
  const DWORD foregroundThread = GetWindowThreadProcessId(GetForegroundWindow(), nullptr);
  bool raised = false;
  // The threads stay attached: parting them would hand the foreground back.
  if (AttachThreadInput(thread, foregroundThread, TRUE)) {
    BringWindowToTop(window);
    SetForegroundWindow(window);
    raised = GetForegroundWindow() == window;
  }
  if (!raised) {
    const auto setTimeout = [](DWORD timeout) {
      // It travels in the place of a pointer.
      SystemParametersInfoW(SPI_SETFOREGROUNDLOCKTIMEOUT, 0,
                            reinterpret_cast<void*>(static_cast<UINT_PTR>(timeout)),
                            SPIF_SENDCHANGE);
    };
    DWORD timeout = 0;
    // One that is not known could not be put back.
    const BOOL known = SystemParametersInfoW(SPI_GETFOREGROUNDLOCKTIMEOUT, 0, &timeout, 0);
    if (known) setTimeout(0);
    BringWindowToTop(window);
    SetForegroundWindow(window);
    if (known) setTimeout(timeout);
  }
  return GetForegroundWindow() == window;
}

std::unique_ptr<UniqueInstance> UniqueInstance::Claim(HINSTANCE instance,
                                                      const std::wstring& executablePath) {
  const std::wstring name = NameOnDisk(executablePath);
  const UINT message = RegisterWindowMessageW(name.c_str());
  UniqueKernelObject mutex(CreateMutexW(nullptr, FALSE, name.c_str()));
  const bool runs = GetLastError() == ERROR_ALREADY_EXISTS;
  if (!mutex) return nullptr;
  if (runs) {
    DWORD recipients = BSM_APPLICATIONS;
    if (message) {
      BroadcastSystemMessageW(BSF_IGNORECURRENTTASK | BSF_POSTMESSAGE, &recipients, message, 0, 0);
    }
    return nullptr;
  }
  return std::unique_ptr<UniqueInstance>(new UniqueInstance(instance, message, std::move(mutex)));
}

UniqueInstance::UniqueInstance(HINSTANCE instance, UINT message, UniqueKernelObject mutex)
    : message_(message), mutex_(std::move(mutex)) {
  WNDCLASSW application{};
  application.lpfnWndProc = Procedure;
  application.hInstance = instance;
  application.lpszClassName = kWindowClass;
  RegisterClassW(&application);
  // Broadcasts reach top-level windows only; this one is never shown.
  applicationWindow_ = CreateWindowExW(0, kWindowClass, L"Tarvelin", WS_POPUP, 0, 0, 0, 0, nullptr,
                                       nullptr, instance, nullptr);
  if (!applicationWindow_) throw WindowsError();
  SetWindowLongPtrW(applicationWindow_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

UniqueInstance::~UniqueInstance() { DestroyWindow(applicationWindow_); }

LRESULT CALLBACK UniqueInstance::Procedure(HWND window, UINT message, WPARAM wParam,
                                           LPARAM lParam) {
  auto* instance = reinterpret_cast<UniqueInstance*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  // 0, which no program could register, is a message that anybody may send for no reason.
  if (instance && message != 0 && message == instance->message_) {
    instance->Raise();
    return 0;
  }
  if (instance && message == WM_CLOSE) {
    // Whoever ends programs by closing their windows means the one that is seen; without this one
    // no second start would reach the program.
    if (instance->mainWindow_) SendMessageW(instance->mainWindow_, WM_CLOSE, 0, 0);
    return 0;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

void UniqueInstance::Raise() {
  // Before the window is shown, and after it was closed, there is nothing to bring forward.
  if (!mainWindow_ || !IsWindowVisible(mainWindow_)) return;
  // While a dialog or message box is open, the main window takes no input: that one has to. It is
  // asked for first, because raising the main window makes that one the last active.
  const HWND popup = GetLastActivePopup(mainWindow_);
  if (IsIconic(applicationWindow_)) OpenIcon(applicationWindow_);
  SetForegroundWindow(applicationWindow_);
  BringToForeground(mainWindow_);
  if (popup != mainWindow_) BringToForeground(popup);
}

}  // namespace tarvelin
