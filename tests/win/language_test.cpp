// The window in other languages, with the settings file and the language files that decide on it.
#include <gtest/gtest.h>

#include "tests/win/driver.h"
#include "tests/win/driver_registry.h"

namespace tarvelin::testing {
namespace {

void Choose(std::string_view language) {
  WriteFileBytes(Environment(L"APPDATA") + L"\\Corvane\\Halvicore V4\\Main.ini",
                 "[Main]\r\nLanguage=" + std::string(language) + "\r\n");
}

TEST(LanguageTest, TheSettingsFileChoosesTheLanguage) {
  Choose("german");  // the file is German.lng
  Program program;
  EXPECT_TRUE(program.Enabled(L"Schlie\u00DFen"));
  program.Open(L"IE-Einstellungen");
  program.Check(program.RowOf(L"Startseite(Alle Benutzer)"), true);
  program.Click(L"Standardwerte verwenden");
  EXPECT_EQ(program.Answer(IDNO).caption, L"Best\u00E4tigung");
}

TEST(LanguageTest, AFileIsReadInEveryEncodingAndDoesNoHarmWhenBroken) {
  const std::wstring folder = L"C:\\Other place", caption = L"Schlie\u00DFen \u00E4\u00B5";
  const std::wstring exe = CopyProgram(folder), wide = L"Wider & wider than the whole bar";
  const std::wstring text = L"[Tarvelin_FormMain]\r\nbtnClose.Caption=" + caption +
                            L"\r\nRzGroupContextMenu.Items[0].Caption=" + wide;
  std::string ansi(text.size(), '?');
  WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), ansi.data(),
                      static_cast<int>(ansi.size()), nullptr, nullptr);
  Choose("Other");
  for (const auto& bytes : {ansi, "\xEF\xBB\xBF" + ToUtf8(text), std::string("\xFF\xFE[")}) {
    WriteFileBytes(folder + L"\\Toolbox_Language\\Other.lng", bytes);
    Program program(exe);
    const bool readable = bytes.size() > 9;
    EXPECT_NO_THROW((void)program.Button(readable ? caption : L"Close")) << bytes;
    PointAt(program.Window(), 60, 115);
    WaitUntil([&] { return ShownTip() == (readable ? wide : L""); }, L"the tool tip");
    EXPECT_EQ(program.Close(), 0U);
  }
}

}  // namespace
}  // namespace tarvelin::testing
