// The Windows halves of files, version information, icons, modules and the display.
#include "common/system_win.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "common/Corvane_Routine_New.h"
#include "tests/win/driver.h"

namespace tarvelin::testing {
namespace {

class SystemTest : public ::testing::Test {
 protected:
  SystemTest() { CreateDirectoryW(folder.c_str(), nullptr); }

  static void Write(const std::wstring& path, std::span<const std::byte> data) {
    const UniqueFile file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD done = 0;
    ASSERT_TRUE(
        WriteFile(file.Get(), data.data(), static_cast<DWORD>(data.size()), &done, nullptr));
  }

  const std::wstring folder = L"C:\\System test";
  const std::wstring sample = Environment(L"TARVELIN_SAMPLE") + L"\\";
  const std::wstring english = L"\\StringFileInfo\\040904B0\\";
  WindowsPlatform windows;
  TPlatform& platform = windows.Get();
};

TEST_F(SystemTest, TellsFilesFromFoldersAndFreeOnesFromThoseInUse) {
  FileSystem& files = platform.files;
  const std::wstring path = folder + L"\\a.lngbak";
  EXPECT_FALSE(files.FileExists(folder));
  EXPECT_FALSE(files.FileExists(path));
  EXPECT_FALSE(files.ReadWholeFile(path));
  EXPECT_FALSE(files.ReadWholeFile(folder));
  const Bytes content{std::byte{1}, std::byte{0}, std::byte{2}};
  Write(path, content);
  EXPECT_TRUE(files.FileExists(path));
  EXPECT_FALSE(IsFileInUse(files, path));
  EXPECT_EQ(files.ReadWholeFile(path), content);
  {
    const UniqueFile reader(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(IsFileInUse(files, path));
    EXPECT_EQ(files.ReadWholeFile(path), content);
    EXPECT_FALSE(files.RemoveFile(path));
  }
  CreateDirectoryW((folder + L"\\sub").c_str(), nullptr);
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  std::vector<std::wstring> names;
  files.ForEachEntry(folder + L"\\*.*", [&](const auto& name) { names.push_back(name); });
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::wstring>{L".", L"..", L"a.lngbak", L"sub"}));
  EXPECT_FALSE(files.RemoveFile(folder + L"\\sub"));
  EXPECT_TRUE(files.RemoveFile(path));
  EXPECT_FALSE(files.RemoveFile(path));
}

TEST_F(SystemTest, ReadsTextsOfAnyLength) {
  FileSystem& files = platform.files;
  SetEnvironmentVariableW(L"TARVELIN_LONG", std::wstring(5000, L'x').c_str());
  EXPECT_EQ(files.ExpandEnvironment(L"%TARVELIN_LONG%"), std::wstring(5000, L'x'));
  EXPECT_EQ(files.ExpandEnvironment(L"%no such variable%"), L"%no such variable%");
  EXPECT_EQ(CommandLineToFilePath(files, L"%SystemRoot%\\system32\\shell32.dll,-153"),
            files.WindowsDirectory() + L"\\system32\\shell32.dll");
  EXPECT_TRUE(SameText(CommandLineToFilePath(files, L"rundll32.exe shell32.dll,Control_RunDLL"),
                       files.SystemDirectory() + L"\\shell32.dll"));

  const std::wstring ini = folder + L"\\Main.ini";
  const std::string text = "[Main]\r\nShort=de\r\nLong=" + std::string(1000, 'y') + "\r\n";
  Write(ini, std::as_bytes(std::span(text)));
  EXPECT_EQ(files.ReadProfileText(ini, L"Main", L"Short", L"-"), L"de");
  EXPECT_EQ(files.ReadProfileText(ini, L"Main", L"Long", L"-"), std::wstring(1000, L'y'));
  EXPECT_EQ(files.ReadProfileText(ini, L"Main", L"None", L"-"), L"-");
  EXPECT_EQ(files.DecodeAnsi(std::as_bytes(std::span("a\0b", 3))), std::wstring(L"a\0b", 3));
  EXPECT_EQ(files.DecodeAnsi({}), L"");
}

TEST_F(SystemTest, ReadsVersionInformationAndSurvivesBrokenOne) {
  const auto field = [&](const std::wstring& path, FileInfoField which) {
    return GetFileInfoField(platform.shell, path, which);
  };
  const std::wstring module = sample + L"quimbrel.dll";
  EXPECT_EQ(field(module, FileInfoField::CompanyName), L"Quimbrel Works");
  EXPECT_EQ(field(module, FileInfoField::Comments), L"");
  EXPECT_EQ(field(sample + L"wexcomb.ocx", FileInfoField::CompanyName), L"");
  for (const auto& none : {sample + L"bare.dll", sample + L"truncated.dll", sample + L"text.dll",
                           folder, std::wstring()}) {
    EXPECT_EQ(field(none, FileInfoField::CompanyName), L"Unknown") << ToUtf8(none);
  }
  TFileInfo info;
  ASSERT_TRUE(ReadFileInfo(platform.shell, module, info, L""));
  EXPECT_EQ(info.FixedInfo[0], 0xFEEF04BD);
  EXPECT_EQ(info.FixedInfo[2], 0x00020004U);

  // Every 16-bit word of the resource in turn claims to be huge, or to be nothing: whatever Windows
  // makes of that, the texts that come back end inside of the file's own data.
  const Bytes whole = *platform.files.ReadWholeFile(module);
  const Bytes key = ToUtf16Le(L"VS_VERSION_INFO");
  const auto found = std::search(whole.begin(), whole.end(), key.begin(), key.end());
  ASSERT_NE(found, whole.end());
  const auto start = static_cast<std::size_t>(found - whole.begin()) - 6;
  const auto length = std::to_integer<std::size_t>(whole[start]) +
                      256 * std::to_integer<std::size_t>(whole[start + 1]);
  const std::wstring broken = folder + L"\\broken.dll";
  int readable = 0;
  for (std::size_t at = start; at < start + length; at += 2) {
    for (const auto byte : {std::byte{0xFF}, std::byte{0}}) {
      Bytes changed = whole;
      changed[at] = changed[at + 1] = byte;
      Write(broken, changed);
      TFileInfo read;
      if (!ReadFileInfo(platform.shell, broken, read, L"x")) continue;
      ++readable;
      EXPECT_LT(read.CompanyName.size() + read.FileDescription.size(), 2 * length) << at;
    }
  }
  EXPECT_GT(readable, 0);
  // A file that ends in the middle of the resource.
  Write(broken, std::span(whole).first(start + length / 2));
  EXPECT_EQ(field(broken, FileInfoField::CompanyName), L"Unknown");
}

TEST_F(SystemTest, UnregistersLibrariesAndPassesByWhatIsNone) {
  // The program hardens its search for libraries before anything else.
  HardenDllSearch();
  for (const auto& none : {folder, sample + L"text.dll", folder + L"\\missing.dll", std::wstring(),
                           std::wstring(L"kernel32.dll"), sample + L"silent.ocx"}) {
    platform.modules.Unregister(none);
  }
  // Its companions stand beside it, and nowhere else.
  for (const auto* name : {L"loading.dll", L"importing.dll"}) {
    platform.modules.Unregister(sample + L"companion\\" + name);
    TRegistry registry(platform.registry);
    ASSERT_TRUE(registry.OpenKeyReadOnly(L"\\Software\\Tarvelin Sample\\Unregistered"));
    EXPECT_TRUE(SameText(registry.ReadString(name), sample + L"companion\\companion.dll"));
  }
  EXPECT_FALSE(GetModuleHandleW(L"companion.dll"));
  EXPECT_FALSE(LoadLibraryW(L"companion.dll"));
}

TEST_F(SystemTest, GivesIconsFoldersAndScreenFacts) {
  const std::wstring shell32 = platform.files.SystemDirectory() + L"\\shell32.dll";
  EXPECT_TRUE(platform.shell.ExtractIconOf(shell32, 0));
  EXPECT_FALSE(platform.shell.ExtractIconOf(shell32, -1));
  EXPECT_FALSE(platform.shell.ExtractIconOf(shell32, 30000));
  EXPECT_FALSE(platform.shell.ExtractIconOf(sample + L"text.dll", 0));
  EXPECT_FALSE(platform.shell.ExtractIconOf(folder + L"\\missing.dll", 0));
  EXPECT_TRUE(GetFileIcon(platform.files, platform.shell, L"C:\\no such\\file.txt /x", true));
  EXPECT_FALSE(platform.shell.ShowProperties(folder + L"\\missing.dll"));

  const std::wstring data = GetSpecialFolder(platform.shell, kAppDataFolder);
  EXPECT_FALSE(data.empty() || data.ends_with(L'\\'));
  EXPECT_EQ(GetSpecialFolder(platform.shell, 0x7F), L"");
  EXPECT_TRUE(platform.resources.Find(L"no-such.png").empty());

  EXPECT_GT(platform.display.TextWidth(L"mmmm"), platform.display.TextWidth(L"ii"));
  EXPECT_EQ(platform.display.TextWidth(L""), 0);
  EXPECT_GE(platform.display.PixelsPerInch(), 96);
  EXPECT_GE(platform.display.WindowsMajorVersion(), 6);
  PostQuitMessage(7);
  platform.display.ProcessMessages();
  MSG message{};
  EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
  EXPECT_EQ(message.wParam, 7U);
}

}  // namespace
}  // namespace tarvelin::testing
