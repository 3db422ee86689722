// Calls into code that is not the program's own.
#pragma once

#include <windows.h>

#include <vector>

namespace tarvelin {

// While it lives, the windows of this thread take no input: somebody else's code runs in it, which
// may show a box of its own or let messages through in some other way. Messages that are not input,
// and what a disabled window still gets, are the windows' own business.
class InputBlock {
 public:
  InputBlock() : active_(GetActiveWindow()), focus_(GetFocus()) {
    EnumThreadWindows(GetCurrentThreadId(), Disable, reinterpret_cast<LPARAM>(&disabled_));
  }
  InputBlock(const InputBlock&) = delete;
  InputBlock& operator=(const InputBlock&) = delete;
  ~InputBlock() {
    for (const HWND window : disabled_) EnableWindow(window, TRUE);
    // Windows has activated another program when a box closed that had no enabled owner.
    if (active_ && IsWindow(active_) && GetActiveWindow() != active_) SetForegroundWindow(active_);
    if (focus_ && IsWindow(focus_) && GetActiveWindow() == active_) SetFocus(focus_);
  }

 private:
  static BOOL CALLBACK Disable(HWND window, LPARAM disabled) {
    if (IsWindowVisible(window) && IsWindowEnabled(window)) {
      reinterpret_cast<std::vector<HWND>*>(disabled)->push_back(window);
      EnableWindow(window, FALSE);
    }
    return TRUE;
  }

  HWND active_;
  HWND focus_;
  std::vector<HWND> disabled_;
};

}  // namespace tarvelin
