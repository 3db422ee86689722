#include "widgets/message_boxes_win.h"

#include <algorithm>

#include "widgets/keys_win.h"

namespace tarvelin {
namespace {

// While it lives, a key that is held down answers no box. The box has a message loop of its own.
class HeldKeysFilter {
 public:
  HeldKeysFilter()
      : hook_(SetWindowsHookExW(WH_MSGFILTER, Filter, nullptr, GetCurrentThreadId())) {}
  HeldKeysFilter(const HeldKeysFilter&) = delete;
  HeldKeysFilter& operator=(const HeldKeysFilter&) = delete;
  ~HeldKeysFilter() {
    if (hook_) UnhookWindowsHookEx(hook_);
  }

 private:
  static LRESULT CALLBACK Filter(int code, WPARAM unused, LPARAM message) {
    if (code == MSGF_DIALOGBOX && IsHeldAnswer(*reinterpret_cast<const MSG*>(message))) return TRUE;
    return CallNextHookEx(nullptr, code, unused, message);
  }

  HHOOK hook_;
};

}  // namespace

int WindowsBoxes::Show(const std::wstring& text, const std::wstring& caption, std::uint32_t flags) {
  const HWND owner = IsWindow(mainWindow_) ? GetLastActivePopup(mainWindow_) : GetActiveWindow();
  // The name of a registry key may hold NULs, and the question about it must not end there.
  std::wstring whole = text;
  std::replace(whole.begin(), whole.end(), L'\0', L' ');
  const HeldKeysFilter filter;
  return MessageBoxW(owner, whole.c_str(), caption.c_str(), flags);
}

}  // namespace tarvelin
