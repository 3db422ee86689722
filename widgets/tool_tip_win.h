// The tool tip of a text that is cut off.
#pragma once

#include <windows.h>

#include <string>

namespace tarvelin {

// Shows in full what a window cuts off of a text, while the pointer rests on it (TOOLTIPS_CLASS).
// The tip's own window is made for the first such text, since most are never cut off.
class ToolTip {
 public:
  // Sets what is cut off below the pointer, nothing where it is empty. A tip that shows another
  // text goes.
  void SetText(HWND window, const std::wstring& text);
  // Tells of a message of the mouse that the window was sent, after the text has been set.
  void Relay(HWND window, UINT message, WPARAM wParam, LPARAM lParam) const;

 private:
  HWND tip_ = nullptr;  // goes with the top-level window, which owns it
  std::wstring text_;
};

}  // namespace tarvelin
