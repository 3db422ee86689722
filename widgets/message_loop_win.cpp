#include "widgets/message_loop_win.h"

#include <algorithm>

#include "widgets/keys_win.h"

namespace tarvelin {

void MessageLoop::Run() {
  RunUntil([] { return false; });
}

void MessageLoop::RunUntil(const std::function<bool()>& done) {
  MSG message{};
  while (!quit_ && !done()) {
    // -1 would be an error that does not pass; the quit message gives 0.
    if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
      quit_ = true;
    } else {
      Handle(message);
    }
  }
}

void MessageLoop::ProcessWaiting() {
  MSG message{};
  while (!quit_ && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    // The outer loops see the flag: the queue hands out the quit message only once.
    if (message.message == WM_QUIT) {
      quit_ = true;
    } else {
      Handle(message);
    }
  }
}

void MessageLoop::Handle(MSG& message) {
  if (IsHeldAnswer(message)) {
    // A blank may be typed many times over, into what has a text to select.
    const LRESULT wants = SendMessageW(message.hwnd, WM_GETDLGCODE, 0, 0);
    if (message.wParam != VK_SPACE || !(wants & DLGC_HASSETSEL)) return;
  }
  const bool keyTaken = hook && hook(message);
  if (!keyTaken && message.hwnd) {
    const HWND form = GetAncestor(message.hwnd, GA_ROOT);
    const bool known = std::find(forms_.begin(), forms_.end(), form) != forms_.end();
    if (known && IsDialogMessageW(form, &message)) return;
  }
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

}  // namespace tarvelin
