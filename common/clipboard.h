// The clipboard.
#pragma once

#include <string_view>

namespace tarvelin {

class Clipboard {
 public:
  virtual ~Clipboard() = default;
  // Replaces what the clipboard holds by a text (SetClipboardData); nothing happens while another
  // program keeps it open.
  virtual void SetText(std::wstring_view text) = 0;
};

}  // namespace tarvelin
