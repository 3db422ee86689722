// Texts of any length from functions of Windows that write into a buffer.
#pragma once

#include <windows.h>

#include <string>

namespace tarvelin {

// The text that `get(buffer, size)` writes, asked for again with a larger buffer until it fits.
// Sizes are in characters with the terminator; `get` returns the length without it, 0 on failure,
// and no less than `size` - 1 when the text does not fit. Empty when it fails, or is longer than
// any path or variable of Windows.
template <class Get>
[[nodiscard]] std::wstring BufferText(const Get& get) {
  constexpr std::size_t longest = 32767;
  for (std::wstring text(MAX_PATH, L'\0');; text.resize(text.size() * 2)) {
    const std::size_t length = get(text.data(), static_cast<DWORD>(text.size()));
    if (length + 1 < text.size()) {
      text.resize(length);
      return text;
    }
    if (text.size() > longest) return {};
  }
}

}  // namespace tarvelin
