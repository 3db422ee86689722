// Screen facts and the message queue.
#pragma once

#include <string_view>

namespace tarvelin {

class Display {
 public:
  virtual ~Display() = default;
  [[nodiscard]] virtual int PixelsPerInch() = 0;
  [[nodiscard]] virtual int VerticalScrollBarWidth() = 0;
  [[nodiscard]] virtual int TextWidth(std::wstring_view text) = 0;  // in the window's font
  [[nodiscard]] virtual int WindowsMajorVersion() = 0;
  // Handles the messages that are waiting, so that the window stays responsive in a long listing.
  virtual void ProcessMessages() = 0;
};

}  // namespace tarvelin
