// The Windows halves of what the program asks of Windows.
#pragma once

#include <memory>

#include "widgets/peers_win.h"
#include "widgets/platform.h"

namespace tarvelin {

// Everything but the message boxes, which are there before the application is. Used by the thread
// that has the windows.
class WindowsPlatform {
 public:
  WindowsPlatform(MessageBoxes& boxes, PeerContext& context);
  ~WindowsPlatform();

  // The interfaces; they live as long as this object.
  [[nodiscard]] TPlatform& Get();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace tarvelin
