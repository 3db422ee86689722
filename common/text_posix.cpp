// Case folding for native builds, one character for one as Windows does it.
#include <clocale>
#include <cwctype>
#include <stdexcept>

#include "common/text.h"

namespace tarvelin {
namespace {

locale_t Unicode() {
  static const locale_t locale = [] {
    const auto made = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (!made) throw std::runtime_error("there is no locale C.UTF-8");
    return made;
  }();
  return locale;
}

// Windows folds UTF-16 units, so it leaves characters beyond the first 65,536 alone.
bool Folds(wchar_t character) { return character >= 0 && character <= 0xFFFF; }

wchar_t Lower(wchar_t character) {
  if (!Folds(character)) return character;
  return static_cast<wchar_t>(towlower_l(static_cast<wint_t>(character), Unicode()));
}

wchar_t Upper(wchar_t character) {
  if (!Folds(character)) return character;
  return static_cast<wchar_t>(towupper_l(static_cast<wint_t>(character), Unicode()));
}

int Compare(std::wstring_view a, std::wstring_view b) {
  for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
    if (a[i] == b[i]) continue;
    const wchar_t left = Upper(a[i]);
    const wchar_t right = Upper(b[i]);
    if (left != right) return left < right ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

}  // namespace

std::wstring LowerCase(std::wstring_view text) {
  std::wstring result(text);
  for (wchar_t& character : result) character = Lower(character);
  return result;
}

std::wstring UpperCase(std::wstring_view text) {
  std::wstring result(text);
  for (wchar_t& character : result) character = Upper(character);
  return result;
}

bool SameText(std::wstring_view a, std::wstring_view b) {
  return a.size() == b.size() && Compare(a, b) == 0;
}

bool TextLess::operator()(std::wstring_view a, std::wstring_view b) const {
  return Compare(a, b) < 0;
}

}  // namespace tarvelin
