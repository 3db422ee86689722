// The Windows halves of files, version information, icons, modules, the display and the start.
#include <gtest/gtest.h>

#include <objbase.h>

#include <algorithm>
#include <random>

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
  std::vector<std::wstring> names = files->EntryNames(folder + L"\\*.*");
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

TEST_F(SystemTest, ReadsVersionInformationHoweverDamaged) {
  EXPECT_EQ(GetModuleFacts(*shell, folder).publisher, L"Unknown");
  const unsigned seed = std::random_device{}();
  std::mt19937 random(seed);
  const std::wstring broken = folder + L"\\broken.dll";
  const std::pair<std::wstring, ModuleFacts> modules[] = {
      {L"quimbrel.dll", {L"Quimbrel Search Helper", L"Quimbrel Works"}},
      {L"wexcomb.ocx", {L"Wexcomb Vorschau", L""}}};
  for (const auto& [name, facts] : modules) {
    const Bytes whole = *files->ReadWholeFile(sample + name);
    const auto find = [&](const Bytes& bytes) {
      const auto found = std::search(whole.begin(), whole.end(), bytes.begin(), bytes.end());
      EXPECT_NE(found, whole.end());
      return static_cast<std::size_t>(found - whole.begin());
    };
    // The resource begins with its length, which stands in the directory as well.
    const std::size_t start = find(ToUtf16Le(L"VS_VERSION_INFO")) - 6;
    const auto length = std::to_integer<std::size_t>(whole[start]) +
                        256 * std::to_integer<std::size_t>(whole[start + 1]);
    const std::size_t directory =
        find({whole[start], whole[start + 1], {}, {}, {}, {}, {}, {}, {}, {}, {}, {}});
    const auto any = [&](std::size_t end) { return random() % end; };
    int readable = 0;
    constexpr int copies = 2000;
    for (int copy = 0; copy < copies; ++copy) {
      Bytes changed = whole;
      const auto put = [&](std::size_t at, std::size_t number) {
        changed[at] = static_cast<std::byte>(number);
        changed[at + 1] = static_cast<std::byte>(number >> 8);
      };
      // Every word in turn claims to be nothing, huge or something else, in every second copy
      // alone.
      const std::size_t claims[] = {0, 0xFFFF, 0x7FFE, any(length)};
      const std::size_t words = length / 2;
      const auto number = static_cast<std::size_t>(copy);
      put(start + number % words * 2, claims[number / words % std::size(claims)]);
      for (std::size_t more = any(4) * any(2); more > 0; --more) {
        switch (any(3)) {
          case 0:
            changed[start + any(length)] ^= std::byte{1} << any(8);
            break;
          case 1: {  // blocks in the wrong place, which hold others or themselves
            const std::size_t size = any(length / 2);
            std::copy_n(whole.begin() + static_cast<std::ptrdiff_t>(start + any(length - size)),
                        size,
                        changed.begin() + static_cast<std::ptrdiff_t>(start + any(length - size)));
            break;
          }
          case 2:  // the end is missing
            put(directory, any(length));
        }
      }
      Write(broken, changed);
      // By turns as the pages look into it and as it is read whole.
      TFileInfo info;
      ModuleFacts shown;
      if (copy % 2 == 0) {
        shown = GetModuleFacts(*shell, broken);
      } else if (ReadFileInfo(*shell, broken, info, L"WOW Version")) {
        shown = {info.FileDescription, info.CompanyName};
      }
      readable += shown.description == facts.description;
      for (const auto& text :
           {shown.description, shown.publisher, info.FileVersion, info.ExtraValue}) {
        EXPECT_LT(text.size(), length) << seed << ' ' << copy;
      }
    }
    EXPECT_GT(readable, copies / 10);
    EXPECT_LT(readable, copies - copies / 10);
    // A file that ends in the middle of the resource, and the whole one.
    Write(broken, std::span(whole).first(start + length / 2));
    EXPECT_EQ(GetModuleFacts(*shell, broken).publisher, L"Unknown");
    Write(broken, whole);
    EXPECT_EQ(GetModuleFacts(*shell, broken).description, facts.description);
    EXPECT_EQ(GetModuleFacts(*shell, broken).publisher, facts.publisher);
  }
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
