// Keys that are held down.
#pragma once

#include <windows.h>

namespace tarvelin {

// Whether a message is the repeat of an Enter, Escape or Space that is held down. Windows sends
// repeats to whatever window has the focus by then, so that a key held a moment too long would
// answer the question that its first press has brought up.
[[nodiscard]] inline bool IsHeldAnswer(const MSG& message) {
  constexpr LPARAM wasDown = LPARAM{1} << 30;
  return message.message == WM_KEYDOWN && (message.lParam & wasDown) != 0 &&
         (message.wParam == VK_RETURN || message.wParam == VK_ESCAPE || message.wParam == VK_SPACE);
}

}  // namespace tarvelin
