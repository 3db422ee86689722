// Case folding by Windows.
#include <windows.h>

#include "common/text.h"

namespace tarvelin {
namespace {

// The functions refuse a null pointer, which an empty view may hold.
const wchar_t* Data(std::wstring_view text) { return text.empty() ? L"" : text.data(); }

std::wstring Map(std::wstring_view text, DWORD flags) {
  std::wstring result(text);
  const int size = static_cast<int>(text.size());
  // Both mappings replace one character by one, so the result has the size of the text.
  if (size > 0) {
    LCMapStringEx(LOCALE_NAME_INVARIANT, flags, text.data(), size, result.data(), size, nullptr,
                  nullptr, 0);
  }
  return result;
}

int Compare(std::wstring_view a, std::wstring_view b) {
  return CompareStringOrdinal(Data(a), static_cast<int>(a.size()), Data(b),
                              static_cast<int>(b.size()), TRUE);
}

}  // namespace

std::wstring LowerCase(std::wstring_view text) { return Map(text, LCMAP_LOWERCASE); }

std::wstring UpperCase(std::wstring_view text) { return Map(text, LCMAP_UPPERCASE); }

bool SameText(std::wstring_view a, std::wstring_view b) {
  return a.size() == b.size() && Compare(a, b) == CSTR_EQUAL;
}

bool TextLess::operator()(std::wstring_view a, std::wstring_view b) const {
  return Compare(a, b) == CSTR_LESS_THAN;
}

}  // namespace tarvelin
