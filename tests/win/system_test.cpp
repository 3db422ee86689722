// The Windows halves of files, version information, icons, modules, the display and the start.
#include <gtest/gtest.h>

#include <objbase.h>

#include <algorithm>

#include "app/UniqueInstance_win.h"
#include "app/application.h"
#include "common/Corvane_Routine_New.h"
#include "common/files_win.h"
#include "common/modules_win.h"
#include "common/registry_win.h"
#include "common/shell_win.h"
#include "tests/support/test_platform.h"
#include "tests/win/driver.h"
#include "widgets/platform_win.h"

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
  const std::unique_ptr<FileSystem> files = MakeWindowsFiles();
  Com com;
  const std::unique_ptr<Shell> shell = MakeWindowsShell(com);
};

TEST_F(SystemTest, TellsFilesFromFoldersAndFreeOnesFromThoseInUse) {
  const std::wstring path = folder + L"\\a.lngbak";
  for (const auto& none : {folder, path}) {
    EXPECT_FALSE(files->FileExists(none)) << none;
    EXPECT_FALSE(files->ReadWholeFile(none)) << none;
    EXPECT_FALSE(files->RemoveFile(none)) << none;
  }
  const Bytes content{std::byte{1}, std::byte{0}, std::byte{2}};
  Write(path, content);
  EXPECT_FALSE(IsFileInUse(*files, path));
  {
    const UniqueFile reader(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(IsFileInUse(*files, path));
    EXPECT_EQ(files->ReadWholeFile(path), content);
    EXPECT_FALSE(files->RemoveFile(path));
  }
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  std::vector<std::wstring> names;
  files->ForEachEntry(folder + L"\\*.*", [&](const auto& name) { names.push_back(name); });
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::wstring>{L".", L"..", L"a.lngbak"}));
  EXPECT_TRUE(files->RemoveFile(path));
}

TEST_F(SystemTest, ReadsTextsOfAnyLength) {
  SetEnvironmentVariableW(L"TARVELIN_LONG", std::wstring(5000, L'x').c_str());
  EXPECT_EQ(files->ExpandEnvironment(L"%TARVELIN_LONG%"), std::wstring(5000, L'x'));
  const std::wstring ini = folder + L"\\Main.ini";
  Write(ini, MakeBytes("[Main]\r\nLong=" + std::string(1000, 'y') + "\r\n"));
  EXPECT_EQ(files->ReadProfileText(ini, L"Main", L"Long", L"-"), std::wstring(1000, L'y'));
  EXPECT_EQ(files->ReadProfileText(ini, L"Main", L"None", L"-"), L"-");
  EXPECT_TRUE(DeleteFileW(ini.c_str()));
}

TEST_F(SystemTest, ReadsVersionInformationAndSurvivesBrokenOne) {
  const auto company = [&](const std::wstring& path) {
    return GetFileInfoField(*shell, path, FileInfoField::CompanyName);
  };
  const std::wstring module = sample + L"quimbrel.dll";
  EXPECT_EQ(company(module), L"Quimbrel Works");
  EXPECT_EQ(company(folder), L"Unknown");

  // Every 16-bit word of the resource in turn claims to be huge, or to be nothing: whatever Windows
  // makes of that, the texts that come back end inside of the file's own data.
  const Bytes whole = *files->ReadWholeFile(module);
  const Bytes key = ToUtf16Le(L"VS_VERSION_INFO");
  const auto found = std::search(whole.begin(), whole.end(), key.begin(), key.end());
  ASSERT_NE(found, whole.end());
  const auto start = static_cast<std::size_t>(found - whole.begin()) - 6;
  const auto length = std::to_integer<std::size_t>(whole[start]) +
                      256 * std::to_integer<std::size_t>(whole[start + 1]);
  const std::wstring broken = folder + L"\\broken.dll";
  for (std::size_t at = start; at < start + length; at += 2) {
    for (const auto byte : {std::byte{0xFF}, std::byte{0}}) {
      Bytes changed = whole;
      changed[at] = changed[at + 1] = byte;
      Write(broken, changed);
      EXPECT_LT(company(broken).size(), length) << at;
    }
  }
  // A file that ends in the middle of the resource.
  Write(broken, std::span(whole).first(start + length / 2));
  EXPECT_EQ(company(broken), L"Unknown");
}

TEST_F(SystemTest, UnregistersByTheFullPathAndPassesByWhatIsNoLibrary) {
  SetErrorMode(0);  // what the test framework sets
  PrepareProcess();
  EXPECT_EQ(GetErrorMode() & SEM_FAILCRITICALERRORS, UINT{SEM_FAILCRITICALERRORS});
  const auto modules = MakeWindowsModules(com);
  for (const auto& path : {folder, sample + L"text.dll", folder + L"\\missing.dll", std::wstring(),
                           std::wstring(L"refusing.dll"), sample + L"silent.ocx"}) {
    modules->Unregister(path);
  }
  WindowsRegistry windows;
  TRegistry registry(windows);
  EXPECT_FALSE(registry.OpenKeyReadOnly(L"\\Software\\Tarvelin Sample\\Unregistered"));
  modules->Unregister(sample + L"refusing.dll");
  EXPECT_TRUE(registry.OpenKeyReadOnly(L"\\Software\\Tarvelin Sample\\Unregistered"));
  EXPECT_FALSE(GetModuleHandleW(L"refusing.dll"));
}

TEST_F(SystemTest, GivesIconsFoldersAndScreenFacts) {
  FakeBoxes boxes;
  TApplication application(boxes, L"Test");
  MessageLoop loop;
  PeerContext context{GetModuleHandleW(nullptr), loop, application, nullptr, nullptr};
  WindowsPlatform windows(boxes, context);
  Display& display = windows.Get().display;
  EXPECT_GT(display.TextWidth(L"mmmm"), display.TextWidth(L"ii"));
  EXPECT_GE(display.WindowsMajorVersion(), 6);

  const std::wstring shell32 = SystemFolder() + L"\\shell32.dll";
  EXPECT_TRUE(shell->ExtractIconOf(shell32, 0));
  EXPECT_FALSE(shell->ExtractIconOf(shell32, -1));
  EXPECT_FALSE(shell->ExtractIconOf(shell32, 30000));
  EXPECT_FALSE(shell->ExtractIconOf(sample + L"text.dll", 0));
  APTTYPE apartment{};
  APTTYPEQUALIFIER qualifier{};
  EXPECT_EQ(CoGetApartmentType(&apartment, &qualifier), CO_E_NOTINITIALIZED);
  EXPECT_TRUE(GetFileIcon(*files, *shell, L"C:\\no such\\file.txt /x", true));
  EXPECT_EQ(CoGetApartmentType(&apartment, &qualifier), S_OK) << "what makes icons may need COM";
  EXPECT_TRUE(GetSpecialFolder(*shell, kAppDataFolder).ends_with(L"\\Roaming"));
  EXPECT_EQ(GetSpecialFolder(*shell, 0x7F), L"");
}

TEST_F(SystemTest, OneInstanceGoesByTheFileNameOnDisk) {
  const HINSTANCE program = GetModuleHandleW(nullptr);
  Write(folder + L"\\One.exe", {});
  const auto first = UniqueInstance::Claim(program, folder + L"\\One.exe");
  EXPECT_TRUE(first);
  EXPECT_FALSE(UniqueInstance::Claim(program, folder + L"\\ONE.EXE"));

  // A name that Windows registers no message for: its number, 0, is not one to come forward at.
  const auto nameless = UniqueInstance::Claim(program, L"C:\\");
  const HWND hidden = FindWindowW(L"TApplication", nullptr);
  const HWND window = CreateWindowW(L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 9, 9, nullptr,
                                    nullptr, program, nullptr);
  nameless->SetMainWindow(window);
  ShowWindow(window, SW_MINIMIZE);
  SendMessageW(hidden, WM_NULL, 0, 0);
  EXPECT_TRUE(IsIconic(window));
  DestroyWindow(window);
}

}  // namespace
}  // namespace tarvelin::testing
