#include <gtest/gtest.h>

#include "common/Corvane_Routine_New.h"
#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

class RoutinesTest : public ::testing::Test {
 protected:
  RoutinesTest() {
    files.environment[L"%windir%"] = L"C:\\Windows";
    files.environment[L"%systemroot%"] = L"C:\\Windows";
    files.environment[L"%programfiles%"] = L"C:\\Program Files";
    files.Add(L"C:\\Windows\\system32\\shell32.dll");
    files.Add(L"C:\\Windows\\both.dll");
    files.Add(L"C:\\Windows\\system32\\both.dll");
    files.Add(L"here.dll");
  }
  FakeFiles files;
  FakeShell shell;
};

TEST_F(RoutinesTest, CommandLinesBecomePaths) {
  const std::vector<std::pair<std::wstring, std::wstring>> table{
      {L"", L""},
      {L"\" ! \"", L""},
      {LR"("C:\Program Files\App\app.exe" "%1")", L"C:\\Program Files\\App\\app.exe"},
      {LR"("C:\a b\c.exe" "C:\d\e.exe")", L"C:\\a b\\c.exe"},
      {LR"(%SystemRoot%\system32\shell32.dll,-153)", L"C:\\Windows\\system32\\shell32.dll"},
      {LR"(%ProgramFiles%\\X\x.dll)", L"C:\\Program Files\\X\\x.dll"},
      {L"%windir%", L"C:\\Windows\\"},
      // A variable further in takes as many characters from the front as it has itself.
      {LR"(C:\%windir%\x.dll)", L"C:\\Windows\\r%\\x.dll"},
      {LR"(\SystemRoot\System32\drivers\x.sys)", L"C:\\Windows\\System32\\drivers\\x.sys"},
      {LR"(ab\SYSTEMROOT\x.sys)", L"C:\\WindowsabOT\\x.sys"},
      {LR"(0123456789ab\SystemRoot\x)", L"C:\\Windows0123456789ab\\SystemRoot\\x"},
      {LR"(\??\C:\Windows\x.sys)", L"C:\\Windows\\x.sys"},
      {LR"(\??\\??\C:\x)", L"C:\\x"},
      {L"a;b;c.exe", L"ab;c.exe"},
      {L"app.exe /n", L"app.exe"},
      {LR"(C:\My-Tools\t.exe -x)", L"C:\\My"},
      {LR"(C:\My-Tools\t.exe)", L"C:\\My-Tools\\t.exe"},
      {L"!x.exe!", L"x.exe"},
      {LR"(rundll32.exe C:\x\y.dll,Entry)", L"C:\\x\\y.dll"},
      {L":\\x", L":\\x"},
      {L"RunDll32.exe shell32.dll,Control_RunDLL", L"C:\\Windows\\system32\\shell32.dll"},
      {L"rundll32.exe both.dll", L"C:\\Windows\\both.dll"},
      {L"rundll32.exe here.dll,X", L"rundll32.exe here.dll"},
      {L"rundll32.exe nosuch.dll", L"rundll32.exe nosuch.dll"},
      {L"rundll32.exe ", L"rundll32.exe"},
  };
  for (const auto& [command, path] : table) {
    EXPECT_EQ(CommandLineToFilePath(files, command), path) << ToUtf8(command);
  }
  // An expansion is cut to the longest path that Windows usually takes.
  files.environment[L"%windir%"] = std::wstring(300, L'w');
  EXPECT_EQ(CommandLineToFilePath(files, L"%WinDir%\\x"), std::wstring(260, L'w') + L"\\x");
}

TEST_F(RoutinesTest, PartsOfTexts) {
  EXPECT_EQ(LeftOfChar(L"a\\b\\c", 255, L'\\'), L"a");
  EXPECT_EQ(LeftOfChar(L"abc", 255, L'\\'), L"");
  EXPECT_EQ(LeftOfChar(L"abc", 2, L'\0'), L"ab");
  EXPECT_EQ(LeftOfChar(L"abc", 255, L'\0'), L"abc");
  EXPECT_EQ(RightOfLastChar(L"a\\b", 255, L'\\'), L"b");
  EXPECT_EQ(RightOfLastChar(L"ab", 255, L'\\'), L"ab");
  EXPECT_EQ(RightOfLastChar(L"abc", 2, L'\0'), L"bc");
  EXPECT_EQ(RightOfLastChar(L"abc", 255, L'\0'), L"abc");
  EXPECT_EQ(PositionFromRight(L"a.b.c", L'.', 2), 2U);
  EXPECT_EQ(PositionFromRight(L"a.b.c", L'.', 3), 0U);
  EXPECT_EQ(ExtractFileName(L"C:\\a.b\\c.d.LNK"), L"c.d.LNK");
  EXPECT_EQ(ExtractFileName(L"C:x"), L"x");
  EXPECT_EQ(ExtractFileExt(L"C:\\a.b\\c.d.LNK"), L".LNK");
  EXPECT_EQ(ExtractFileExt(L"C:\\a.b\\c"), L"");
}

TEST_F(RoutinesTest, VersionFieldsComeFromTheFirstTranslation) {
  FakeShell::Version& version = shell.versions[L"x.dll"];
  version.translation = {{std::uint16_t{0x0C0A}, std::uint16_t{0x04E4}}};
  // By the number of the field.
  const std::vector<std::pair<int, std::wstring>> fields{
      {0, L"Comments"},         {2, L"FileDescription"}, {3, L"FileVersion"},
      {4, L"InternalName"},     {5, L"LegalCopyright"},  {6, L"LegalTrademarks"},
      {7, L"OriginalFileName"}, {8, L"ProductName"},     {9, L"ProductVersion"},
      {10, L"WOW Version"}};
  for (const auto& [number, entry] : fields) {
    version.texts[L"\\StringFileInfo\\0C0A04E4\\" + entry] = L"the " + entry;
  }
  version.texts[L"\\StringFileInfo\\040904B0\\CompanyName"] = L"in another language";
  const auto field = [&](int number) {
    return GetFileInfoField(shell, L"x.dll", static_cast<FileInfoField>(number));
  };
  for (const auto& [number, entry] : fields) EXPECT_EQ(field(number), L"the " + entry);
  EXPECT_EQ(field(1), L"");
  EXPECT_EQ(field(11), L"");
  EXPECT_EQ(field(-1), L"");
  version.translation.reset();
  EXPECT_EQ(field(0), L"Unknown");
}

}  // namespace
}  // namespace tarvelin::testing
