// What assistive programs hear about a control beyond what Windows itself can tell them.
#pragma once

#include <windows.h>

#include <memory>

namespace tarvelin {

// Answers WM_GETOBJECT with the system's own accessible object for a window, to whose state it adds
// what only the program knows. The functions behind it are those of oleacc.dll, which is named by
// its full path, since Windows would look for it beside the program first. One for all windows of a
// thread.
class Accessibility {
 public:
  Accessibility() = default;
  Accessibility(const Accessibility&) = delete;
  Accessibility& operator=(const Accessibility&) = delete;
  ~Accessibility();

  // The answer for the window's client area (LresultFromObject); 0, which leaves it to Windows,
  // when there is no such library. `added` holds the further state, a sum of STATE_SYSTEM_* bits;
  // it is read whenever a program asks, which may be after the window has gone.
  [[nodiscard]] LRESULT ObjectFor(HWND window, WPARAM wParam, std::shared_ptr<const long> added);

 private:
  void Load();

  bool loaded_ = false;
  bool com_ = false;
  HMODULE library_ = nullptr;
};

}  // namespace tarvelin
