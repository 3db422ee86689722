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

// The header of a column, which is asked for and written in the program's memory.
std::wstring ColumnOf(const Program& program, WPARAM column) {
  struct {
    LVCOLUMNW header{};
    wchar_t text[64] = L"";
  } asked;
  const UniqueKernelObject process(OpenProcess(PROCESS_ALL_ACCESS, FALSE, program.ProcessId()));
  void* remote = VirtualAllocEx(process.Get(), nullptr, sizeof asked, MEM_COMMIT, PAGE_READWRITE);
  asked.header.mask = LVCF_TEXT;
  asked.header.pszText =
      reinterpret_cast<wchar_t*>(static_cast<char*>(remote) + sizeof asked.header);
  asked.header.cchTextMax = 64;
  WriteProcessMemory(process.Get(), remote, &asked, sizeof asked, nullptr);
  SendMessageW(program.List(), LVM_GETCOLUMNW, column, reinterpret_cast<LPARAM>(remote));
  ReadProcessMemory(process.Get(), remote, &asked, sizeof asked, nullptr);
  return asked.text;
}

TEST(LanguageTest, TheSettingsFileChoosesTheLanguage) {
  Choose("german");  // the file is German.lng
  Program program;
  EXPECT_TRUE(program.Enabled(L"Schlie\u00DFen"));
  program.Open(L"IE-Einstellungen");
  EXPECT_EQ(ColumnOf(program, 1), L"Aktuelle Einstellung");
  program.Check(program.RowOf(L"Startseite(Alle Benutzer)"), true);
  program.Click(L"Standardwerte verwenden");
  EXPECT_EQ(program.Answer(IDNO).caption, L"Best\u00E4tigung");
}

TEST(LanguageTest, AFileIsReadInEveryEncodingAndDoesNoHarmWhenBroken) {
  const std::wstring folder = L"C:\\Other place", caption = L"Schlie\u00DFen \u00E4\u00B5";
  const std::wstring exe = CopyProgram(folder);
  const std::wstring text = L"[Tarvelin_FormMain]\r\nbtnClose.Caption=" + caption;
  const Bytes utf16 = ToUtf16Le(text);
  std::string ansi(text.size(), '?');
  WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), ansi.data(),
                      static_cast<int>(ansi.size()), nullptr, nullptr);
  const std::pair<std::string, std::wstring> files[] = {
      {"\xFF\xFE" + std::string(reinterpret_cast<const char*>(utf16.data()), utf16.size()),
       caption},
      {"\xEF\xBB\xBF" + ToUtf8(text), caption},
      {ansi, caption},
      {"", L"Close"},
      {"\xFF\xFE[", L"Close"},
      {std::string("[Tarvelin_FormMain)\r\nbtnClose.Caption=wrong\r\n]=\0=[]\xFF[", 53), L"Close"}};
  Choose("Other");
  for (const auto& [bytes, expected] : files) {
    WriteFileBytes(folder + L"\\Toolbox_Language\\Other.lng", bytes);
    Program program(exe);
    EXPECT_NO_THROW((void)program.Button(expected)) << bytes;
    EXPECT_EQ(program.Close(), 0U);
  }
}

}  // namespace
}  // namespace tarvelin::testing
