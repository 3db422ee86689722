#include "common/text.h"

#include <gtest/gtest.h>

#include "tests/support/memory_registry.h"

namespace tarvelin::testing {
namespace {

TEST(TextTest, CodePointsSurviveTheWayToBytesAndBack) {
  const std::wstring text(L"a\0\u00DF\u3053\uFFFF\U0001F600\U0010FFFF", 7);
  EXPECT_EQ(FromUtf16Le(ToUtf16Le(text)), text);
  const std::string utf8 = ToUtf8(text);
  EXPECT_EQ(utf8,
            std::string("a\0\xC3\x9F\xE3\x81\x93\xEF\xBF\xBF\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF", 18));
  EXPECT_EQ(FromUtf8(MakeBytes(utf8)), text);
  EXPECT_EQ(FromUtf16Be(MakeBytes({"\x30\x53\xD8\x3D\xDE\x00", 6})), L"\u3053\U0001F600");
}

TEST(TextTest, MalformedBytesBecomeReplacementsAndHideNoNeighbours) {
  const auto decode = [](std::string_view bytes) { return FromUtf8(MakeBytes(bytes)); };
  EXPECT_EQ(decode("\xE3\x81|\xC3"), L"\uFFFD|\uFFFD");  // cut short
  EXPECT_EQ(decode("\xC0\x80|"), L"\uFFFD\uFFFD|");      // overlong
  EXPECT_EQ(decode("\xE0\x9F\xBF").size(), 3U);
  EXPECT_EQ(decode("\xED\xA0\x80|"), L"\uFFFD\uFFFD\uFFFD|");  // a surrogate
  EXPECT_EQ(decode("\xF4\x90\x80\x80").size(), 4U);            // beyond the last code point
  EXPECT_EQ(decode("\x80\xFF|"), L"\uFFFD\uFFFD|");

  // A file name may have an unpaired surrogate, which must come out as it went in.
  const Bytes lone = MakeBytes({"\x3D\xD8|\0\x00\xDE_", 7});
  const std::wstring text = FromUtf16Le(lone);
  EXPECT_EQ(ToUtf8(text), "\xEF\xBF\xBD|\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf16Le(text), Bytes(lone.begin(), lone.end() - 1));
}

TEST(TextTest, NamesAreComparedOrdinallyWithoutCase) {
  EXPECT_TRUE(SameText(L"\u00E4\u0416{AbC}", L"\u00C4\u0436{aBc}"));
  EXPECT_FALSE(SameText(L"stra\u00DFe", L"STRASSE"));
  EXPECT_FALSE(SameText(L"a", std::wstring_view(L"a\0", 2)));
  EXPECT_TRUE(SameText({}, L""));
  const TextLess less;
  EXPECT_TRUE(less(L"b", L"_") && less(L"B", L"_"));  // as in upper case
  EXPECT_TRUE(less(L"a", L"Ab"));
  EXPECT_FALSE(less(L"\u00E4", L"\u00C4"));
}

TEST(TextTest, ReplacesAndTrims) {
  EXPECT_EQ(ReplaceFirst(L"aXbX", L"X", L"XX"), L"aXXbX");
  EXPECT_EQ(ReplaceAll(L"\\\\\\x\\\\", L"\\\\", L"\\"), L"\\\\x\\");
  EXPECT_EQ(ReplaceAll(L"abc", L"", L"x"), L"abc");
  EXPECT_EQ(FormatMessageText(L"%d %s? %s", L"100%s%n"), L"%d 100%s%n? %s");
  EXPECT_EQ(Trim(L" \t\r\n a b \x01 "), L"a b");
}

}  // namespace
}  // namespace tarvelin::testing
