// What the windows of the program share, and what is said about each when it is made.
#pragma once

#include <windows.h>

#include <exception>
#include <string>
#include <unordered_map>

#include "widgets/accessible_win.h"
#include "widgets/commands.h"
#include "widgets/message_loop_win.h"
#include "widgets/paint_win.h"

namespace tarvelin {

class Window;

// What all windows of the program share. It outlives them.
struct PeerContext {
  HINSTANCE instance;
  MessageLoop& loop;
  Commands& commands;  // runs what a component does in answer to the user
  HICON icon;          // of the program, 32 x 32
  HICON smallIcon;     // 16 x 16
  Fonts fonts{};
  Accessibility accessibility{};
  std::unordered_map<HWND, Window*> windows{};  // those that exist, by handle
};

// Windows refused a window.
class WindowsError : public std::exception {
 public:
  WindowsError();  // for the reason of the last refusal (GetLastError)
  // What Windows says about it, in the system's language.
  [[nodiscard]] const std::wstring& Reason() const { return reason_; }
  [[nodiscard]] const char* what() const noexcept override { return "a window was refused"; }

 private:
  std::wstring reason_;
};

// What the form's description does not hold of its window.
struct FormFrame {
  // The window that the form belongs to. A form with an owner is a dialog: it has no minimise
  // button and no place on the task bar. One without ends the program when it is closed.
  HWND owner = nullptr;
  // Limits of the whole window in pixels (WM_GETMINMAXINFO); zero for none.
  SIZE minimum{};
  SIZE maximum{};
};

}  // namespace tarvelin
