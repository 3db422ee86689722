#include "common/registry_editor_win.h"

#include <windows.h>
// After windows.h, on which it depends.
#include <shellapi.h>

#include "common/files_win.h"
#include "common/shell_win.h"

namespace tarvelin {
namespace {

class WindowsEditor : public EditorWindows {
 public:
  explicit WindowsEditor(Com& com) : com_(com) {}

  Window FindTopLevel(const std::wstring& className) override {
    return FromHandle(FindWindowW(className.c_str(), nullptr));
  }

  Window FindChild(Window parent, const std::wstring& className) override {
    if (!parent) return 0;  // null would mean the desktop
    return FromHandle(FindWindowExW(ToHandle(parent), nullptr, className.c_str(), nullptr));
  }

  void StartEditor() override {
    // By its full path, so that nothing else of that name is started.
    const auto process = Execute(com_, WindowsFolder() + L"\\regedit.exe", L"open",
                                 SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI, SW_MAXIMIZE);
    if (process && *process) WaitForInputIdle(process->Get(), INFINITE);
  }

  void Maximize(Window window) override { ShowWindow(ToHandle(window), SW_MAXIMIZE); }

  void BringToForeground(Window window) override { SetForegroundWindow(ToHandle(window)); }

  void SetFocusTo(Window window) override { SetFocus(ToHandle(window)); }

  void SendKeyDown(Window window, Key key) override {
    SendMessageW(ToHandle(window), WM_KEYDOWN, static_cast<WPARAM>(key), 0);
  }

  void SendChar(Window window, wchar_t character) override {
    SendMessageW(ToHandle(window), WM_CHAR, character, 0);
  }

  void Pause(int milliseconds) override { Sleep(static_cast<DWORD>(milliseconds)); }

 private:
  static Window FromHandle(HWND handle) { return reinterpret_cast<Window>(handle); }
  static HWND ToHandle(Window window) { return reinterpret_cast<HWND>(window); }

  Com& com_;
};

}  // namespace

std::unique_ptr<EditorWindows> MakeWindowsEditor(Com& com) {
  return std::make_unique<WindowsEditor>(com);
}

}  // namespace tarvelin
