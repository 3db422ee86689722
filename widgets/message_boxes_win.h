// The Windows half of message boxes.
#pragma once

#include <windows.h>

#include "widgets/message_boxes.h"

namespace tarvelin {

class WindowsBoxes : public MessageBoxes {
 public:
  // The window whose last active popup owns the boxes; until it is set, or after null was set, the
  // thread's active window does.
  void SetMainWindow(HWND window) { mainWindow_ = window; }

  int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t flags) override;

 private:
  HWND mainWindow_ = nullptr;
};

}  // namespace tarvelin
