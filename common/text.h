// Text handling shared by every folder. Text is UTF-16 on Windows and UTF-32 in native builds; the
// conversions from and to bytes live here and nowhere else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarvelin {

using Bytes = std::vector<std::byte>;

// `text` without the blanks and control characters (codes up to U+0020) at both ends.
[[nodiscard]] std::wstring_view Trim(std::wstring_view text);

// `text` in lower or upper case, character by character, independent of the user's language
// (LCMapStringEx with the invariant locale).
[[nodiscard]] std::wstring LowerCase(std::wstring_view text);
[[nodiscard]] std::wstring UpperCase(std::wstring_view text);

// Whether two names are the same for the registry, the file system and language files: ordinal,
// without regard to case (CompareStringOrdinal).
[[nodiscard]] bool SameText(std::wstring_view a, std::wstring_view b);

// The order that goes with SameText, for sorted containers of names.
struct TextLess {
  using is_transparent = void;
  bool operator()(std::wstring_view a, std::wstring_view b) const;
};

// `text` with the first, or every, occurrence of `from` replaced by `to`; replaced text is not
// searched again. An empty `from` replaces nothing.
[[nodiscard]] std::wstring ReplaceFirst(std::wstring text, std::wstring_view from,
                                        std::wstring_view to);
[[nodiscard]] std::wstring ReplaceAll(std::wstring_view text, std::wstring_view from,
                                      std::wstring_view to);

// A message with `argument` in place of its "%s". Nothing else in the message is special, so a
// translation or a registry name can never act as a format string.
[[nodiscard]] std::wstring FormatMessageText(std::wstring_view message, std::wstring_view argument);

// A name as a message box shows it: beyond 1,000 characters its middle gives way to an ellipsis, as
// a box that grows with its text would leave the screen.
[[nodiscard]] std::wstring ShortenedName(std::wstring_view name);

// The text of UTF-16 (little endian or big endian) or UTF-8 bytes. In UTF-16 an odd last byte is
// dropped and an unpaired surrogate is kept, because Windows allows it in names of files and keys;
// in UTF-8 malformed sequences become U+FFFD.
[[nodiscard]] std::wstring FromUtf16Le(std::span<const std::byte> data);
[[nodiscard]] std::wstring FromUtf16Be(std::span<const std::byte> data);
[[nodiscard]] std::wstring FromUtf8(std::span<const std::byte> data);

// UTF-16 little endian, without a terminator.
[[nodiscard]] Bytes ToUtf16Le(std::wstring_view text);

// UTF-8, for diagnostics and tests.
[[nodiscard]] std::string ToUtf8(std::wstring_view text);

}  // namespace tarvelin
