// The clipboard of Windows.
#pragma once

#include "common/clipboard.h"

namespace tarvelin {

class WindowsClipboard : public Clipboard {
 public:
  void SetText(std::wstring_view text) override;
};

}  // namespace tarvelin
