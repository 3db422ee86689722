#include "common/text.h"

#include <algorithm>

namespace tarvelin {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void AppendCodePoint(std::wstring& text, char32_t code) {
  if (sizeof(wchar_t) == 2 && code > 0xFFFF) {
    text += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
    text += static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
  } else {
    text += static_cast<wchar_t>(code);
  }
}

char32_t UnitAt(std::wstring_view text, std::size_t at) {
  return static_cast<char32_t>(text[at]) & (sizeof(wchar_t) == 2 ? 0xFFFFU : 0xFFFFFFFFU);
}

// The code point at `at`, which moves behind it; an unpaired surrogate comes as it is.
char32_t NextCodePoint(std::wstring_view text, std::size_t& at) {
  const char32_t unit = UnitAt(text, at++);
  if (!IsHighSurrogate(unit) || at == text.size() || !IsLowSurrogate(UnitAt(text, at))) return unit;
  return 0x10000 + ((unit - 0xD800) << 10) + (UnitAt(text, at++) - 0xDC00);
}

std::wstring FromUtf16(std::span<const std::byte> data, std::size_t lowByte) {
  const auto unitAt = [&](std::size_t at) {
    return std::to_integer<char32_t>(data[at + lowByte]) |
           (std::to_integer<char32_t>(data[at + 1 - lowByte]) << 8);
  };
  const std::size_t end = data.size() & ~std::size_t{1};
  std::wstring text;
  text.reserve(end / 2);
  for (std::size_t at = 0; at < end; at += 2) {
    char32_t code = unitAt(at);
    if (IsHighSurrogate(code) && at + 2 < end && IsLowSurrogate(unitAt(at + 2))) {
      at += 2;
      code = 0x10000 + ((code - 0xD800) << 10) + (unitAt(at) - 0xDC00);
    }
    AppendCodePoint(text, code);
  }
  return text;
}

}  // namespace

std::wstring_view Trim(std::wstring_view text) {
  while (!text.empty() && UnitAt(text, 0) <= 0x20) text.remove_prefix(1);
  while (!text.empty() && UnitAt(text, text.size() - 1) <= 0x20) text.remove_suffix(1);
  return text;
}

std::wstring ReplaceFirst(std::wstring text, std::wstring_view from, std::wstring_view to) {
  const auto at = from.empty() ? std::wstring::npos : text.find(from);
  if (at != std::wstring::npos) text.replace(at, from.size(), to);
  return text;
}

std::wstring ReplaceAll(std::wstring_view text, std::wstring_view from, std::wstring_view to) {
  std::wstring result;
  while (!from.empty()) {
    const auto at = text.find(from);
    if (at == std::wstring_view::npos) break;
    result.append(text.substr(0, at)).append(to);
    text.remove_prefix(at + from.size());
  }
  return result.append(text);
}

std::wstring FormatMessageText(std::wstring_view message, std::wstring_view argument) {
  return ReplaceFirst(std::wstring(message), L"%s", argument);
}

std::wstring ShortenedName(std::wstring_view name) {
  constexpr std::size_t longest = 1000;
  if (name.size() <= longest) return std::wstring(name);
  auto head = name.substr(0, longest / 2);
  auto tail = name.substr(name.size() - (longest / 2 - 1));
  // No half of a surrogate pair stays behind.
  if (IsHighSurrogate(UnitAt(head, head.size() - 1))) head.remove_suffix(1);
  if (IsLowSurrogate(UnitAt(tail, 0))) tail.remove_prefix(1);
  return std::wstring(head).append(L"\u2026").append(tail);
}

std::wstring FromUtf16Le(std::span<const std::byte> data) { return FromUtf16(data, 0); }

std::wstring FromUtf16Be(std::span<const std::byte> data) { return FromUtf16(data, 1); }

std::wstring FromUtf8(std::span<const std::byte> data) {
  std::wstring text;
  text.reserve(data.size());
  for (std::size_t at = 0; at < data.size();) {
    const auto first = std::to_integer<char32_t>(data[at++]);
    // The bytes that follow, and the range of the next one, which leaves out overlong forms,
    // surrogates and what lies beyond the last code point.
    int following = 0;
    char32_t low = 0x80;
    char32_t high = 0xBF;
    char32_t code = first;
    if (first >= 0xC2 && first <= 0xDF) {
      following = 1;
      code = first & 0x1F;
    } else if (first >= 0xE0 && first <= 0xEF) {
      following = 2;
      code = first & 0x0F;
      if (first == 0xE0) low = 0xA0;
      if (first == 0xED) high = 0x9F;
    } else if (first >= 0xF0 && first <= 0xF4) {
      following = 3;
      code = first & 0x07;
      if (first == 0xF0) low = 0x90;
      if (first == 0xF4) high = 0x8F;
    } else if (first >= 0x80) {
      code = kReplacement;
    }
    for (; following > 0; --following) {
      const auto next = at < data.size() ? std::to_integer<char32_t>(data[at]) : 0;
      if (next < low || next > high) {
        code = kReplacement;
        break;
      }
      code = (code << 6) | (next & 0x3F);
      low = 0x80;
      high = 0xBF;
      ++at;
    }
    AppendCodePoint(text, code);
  }
  return text;
}

Bytes ToUtf16Le(std::wstring_view text) {
  Bytes data;
  data.reserve(text.size() * 2);
  const auto append = [&](char32_t unit) {
    data.push_back(static_cast<std::byte>(unit & 0xFF));
    data.push_back(static_cast<std::byte>((unit >> 8) & 0xFF));
  };
  for (std::size_t at = 0; at < text.size();) {
    char32_t code = NextCodePoint(text, at);
    if (code > 0x10FFFF) code = kReplacement;
    if (code > 0xFFFF) {
      append(0xD800 + ((code - 0x10000) >> 10));
      append(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      append(code);
    }
  }
  return data;
}

std::string ToUtf8(std::wstring_view text) {
  std::string data;
  data.reserve(text.size());
  const auto append = [&](char32_t byte) { data += static_cast<char>(byte); };
  for (std::size_t at = 0; at < text.size();) {
    char32_t code = NextCodePoint(text, at);
    if (code > 0x10FFFF || IsHighSurrogate(code) || IsLowSurrogate(code)) code = kReplacement;
    if (code < 0x80) {
      append(code);
    } else if (code < 0x800) {
      append(0xC0 | (code >> 6));
      append(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      append(0xE0 | (code >> 12));
      append(0x80 | ((code >> 6) & 0x3F));
      append(0x80 | (code & 0x3F));
    } else {
      append(0xF0 | (code >> 18));
      append(0x80 | ((code >> 12) & 0x3F));
      append(0x80 | ((code >> 6) & 0x3F));
      append(0x80 | (code & 0x3F));
    }
  }
  return data;
}

}  // namespace tarvelin
