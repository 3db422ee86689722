// What the real program makes of a well-used registry, of a hostile one and of a very large one.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <tuple>

#include "tests/win/driver_registry.h"

namespace tarvelin::testing {

namespace {

using namespace std::literals;
using Texts = Program::Texts;

const std::wstring kHandlers = L"HKCR\\*\\shellex\\ContextMenuHandlers";
const std::wstring kVerbs = L"HKCR\\*\\shell";

// Each test finds none of the entries that another one made.
class Inventory : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const auto& key : {L"HKCR\\*"s, L"HKCR\\Directory"s, L"HKCR\\Folder"s, L"HKCR\\Drive"s,
                            L"HKCR\\CLSID"s, kStats, kToolbar, kMenuExt}) {
      DeleteKey(key);
    }
  }
};

// Everything that the program reads, as it stands now.
Lines State() {
  return DumpRegistry({L"HKCU\\Software\\Microsoft", L"HKCR\\*", L"HKCR\\CLSID", L"HKCR\\Directory",
                       L"HKCR\\Drive", L"HKCR\\Folder",
                       L"HKLM\\SOFTWARE\\Microsoft\\Internet Explorer",
                       L"HKLM\\SOFTWARE\\Microsoft\\Code Store Database"});
}

}  // namespace

TEST_F(Inventory, ShowsAWellUsedComputerAndChangesNothing) {
  ImportSample();
  const std::pair<const wchar_t*, const wchar_t*> modules[] = {
      {L"quimbrel.dll", L"C:\\Program Files\\Quimbrel\\quimbrel.dll"},
      {L"pellowick.dll", L"C:\\Program Files\\Pellowick\\pellowick.dll"},
      {L"dunmorrel.dll", L"C:\\Program Files\\Dunmorrel\\dunmorrel.dll"},
      {L"ueberblick.dll", L"C:\\Program Files\\Fennimarsch Süd\\ueberblick.dll"},
      {L"kotonoha.ocx", L"C:\\Program Files\\ことのは\\kotonoha.ocx"},
      {L"wexcomb.ocx", L"C:\\windows\\Downloaded Program Files\\wexcomb.ocx"},
      {L"bare.dll", L"C:\\windows\\bare.dll"}};
  for (const auto& [name, path] : modules) InstallModule(name, path);
  const auto sendTo = ReadText(
      L"HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", L"SendTo");
  WriteFileBytes(sendTo.value() + L"\\a.lnk.lnk", "");
  const Lines before = State();

  Program program;
  const Texts shell = program.Rows();
  Texts expected;
  std::vector<int> images;
  const auto expect = [&](const wchar_t* category, int image,
                          std::initializer_list<const wchar_t*> names) {
    for (const wchar_t* name : names) {
      expected.push_back({name, category});
      images.push_back(image);
    }
  };
  expect(L"All Files(Shell)", 5,
         {L"Bresquin quick share", L"Crop & shrink to 50 %s", L"Hollowfern 🌲 garden",
          L"Pack with Quimbrel",
          L"Send the selected file with all of its former versions, comments and signatures to the "
          L"Bresquin document store of your department and keep a copy beside the original, "
          L"renamed by the rules of the store",
          L"Ulmarq: Größe ändern …", L"Послать в Вексомб", L"افتح مع النخلة", L"ことのは で 開く"});
  expect(L"All Files(ContextMenu)", 0,
         {L"Quimbrel", L"Wexcomb Preview", L"{5A3D0103-7E1A-4F6B-9C42-1D0000000003}", L"Überblick",
          L"ことのは"});
  expect(L"Recycle Bin(ContextMenu)", 3,
         {L"ごみ箱を整理する", L"Only a text", L"", L"Papierkorb & Größe berichten",
          L"Wipe with Marrowick"});
  expect(L"Directory(Shell)", 4,
         {L"Clean up with Marrowick", L"Command prompt here", L"Pack folder \"as is\"",
          L"Порядок с Улмарк"});
  expect(L"Directory(ContextMenu)", 4, {L"Dunmorrel", L"Quimbrel", L"مزامنة"});
  expect(L"Folder(ContextMenu)", 1,
         {L"Hollowfern Sync", L"Quimbrel", L"Tolvanek & Co.",
          L"{750FDF0E-2A26-11D1-A3EA-080036587F03}"});
  expect(L"Drive(ContextMenu)", 2, {L"Marrowick", L"Quimbrel", L"Ältere Sicherung"});
  EXPECT_EQ(shell, expected);
  EXPECT_EQ(program.Images(), images);

  EXPECT_EQ(program.Open(L"IE BHOs"),
            (Texts{{L"Quimbrel Search Helper", L"Quimbrel Works", modules[0].second},
                   {L"Pellowick Link Catcher", L"", modules[1].second},
                   {L"Dunmorrel class, named by the registry", L"Dunmorrel & Daughters",
                    modules[2].second},
                   {L"Unknown", L"Unknown", modules[6].second},
                   {L"Überblick für Größen & Maße", L"Fennimarsch Süd GmbH", modules[3].second}}));
  // The control's publisher stands in its second language only.
  EXPECT_EQ(program.Open(L"IE Downloaded ActiveX"),
            (Texts{{L"Wexcomb Vorschau", L"", modules[5].second},
                   {L"Unknown", L"Unknown", modules[6].second},
                   {L"ことのは 手帳 バー", L"ことのは工房", modules[4].second}}));

  EXPECT_EQ(program.Open(L"Send to"), (Texts{{L"a"}}));
  for (const wchar_t* page : {L"New", L"IE Context Menus", L"IE Bars", L"IE Toolbars",
                              L"IE Extra Button", L"IE Settings"}) {
    EXPECT_FALSE(program.Open(page).empty()) << ToUtf8(page);
  }
  // Only the class of a control that is not registered has come into being, empty.
  EXPECT_EQ(Differences(before, State()),
            (Lines{L"+ HKCR\\CLSID\\{5A3D0FFA-7E1A-4F6B-9C42-1D0000000FFA}"}));
  EXPECT_EQ(program.Close(), 0U);
}

TEST_F(Inventory, SurvivesAHostileRegistry) {
  const auto bytes = [](std::wstring_view text, std::size_t size) {
    Bytes data = ToUtf16Le(text);
    data.resize(size);
    return data;
  };
  const std::wstring longName(255, L'n');
  WriteText(kVerbs + L"\\" + longName + L"\\Command", L"", L"long.exe");
  for (const auto& parent : {kVerbs, kHandlers, kStats, kMenuExt}) {
    MakeOddKey(parent, L"\0odd"sv);
    MakeOddKey(parent, L"od\0d"sv);
  }
  WriteValue(kHandlers + L"\\1 odd length", L"", REG_SZ, bytes(L"{1}", 7));
  WriteValue(kHandlers + L"\\2 zero length", L"", REG_SZ, {});
  WriteValue(kHandlers + L"\\3 unterminated", L"", REG_SZ, bytes(L"{3}", 6));
  WriteText(kHandlers + L"\\4 inner NUL", L"", L"\0{4}"sv);
  WriteText(kHandlers + L"\\5 very long", L"", std::wstring(100000, L'5'), REG_EXPAND_SZ);

  InstallModule(L"truncated.dll", L"C:\\Odd\\truncated.dll");
  std::filesystem::create_directories(L"C:\\Odd\\folder.dll");
  const Bytes three{std::byte{3}, {}, {}, {}};
  const std::tuple<std::wstring, DWORD, Bytes> types[] = {
      {L"{1}", REG_DWORD, three},          {L"{2}", REG_DWORD, three},
      {L"{3}", REG_BINARY, three},         {L"{4}", REG_SZ, bytes(L"3", 4)},
      {L"{5}", REG_DWORD, {std::byte{3}}}, {L"{6}", REG_DWORD, {}}};
  for (const auto& [id, type, data] : types) {
    RegisterClass(id, L"Class", id == L"{2}" ? L"C:\\Odd\\folder.dll" : L"C:\\Odd\\truncated.dll");
    WriteValue(kStats + L"\\" + id + L"\\iexplore", L"Type", type, data);
  }
  MakeKey(kStats + L"\\" + longName + L"\\iexplore");

  const std::wstring longValue(16383, L'v');
  WriteText(kToolbar, longValue, L"A very long name");
  WriteValue(kToolbar, L"", REG_SZ, bytes(L"Unnamed", 14));
  WriteValue(kToolbar, L"number", REG_DWORD, three);
  WriteText(kMenuExt + L"\\" + longName, L"", L"first\0second"sv);

  Program program;
  const std::wstring handler = L"All Files(ContextMenu)";
  Texts shell = program.Rows();
  std::erase_if(shell, [](const auto& row) { return !row[1].starts_with(L"All Files"); });
  EXPECT_EQ(shell, (Texts{{longName, L"All Files(Shell)"},
                          {L"1 odd length", handler},
                          {L"3 unterminated", handler},
                          {L"5 very long", handler}}));
  const std::vector<std::wstring> truncated{L"Unknown", L"Unknown", L"C:\\Odd\\truncated.dll"};
  EXPECT_EQ(program.Open(L"IE BHOs"), (Texts{truncated, truncated}));
  // An unnamed value names no class but the key of all classes, which has no module.
  EXPECT_EQ(program.Open(L"IE Toolbars"), (Texts{{L"A very long name", L"", L""}}));
  // This page shows entries that cannot be opened as well; a control's text ends at the first NUL.
  EXPECT_EQ(program.Open(L"IE Context Menus"),
            (Texts{{L"", L""}, {longName, L"first"}, {L"od", L""}}));
  EXPECT_EQ(program.Close(), 0U);
}

TEST_F(Inventory, TakesTimeInProportionToTheRegistry) {
  int handlers = 0;
  const auto measure = [&](int enough) {
    for (; handlers < enough; ++handlers) {
      WriteText(kHandlers + L"\\Handler " + std::to_wstring(handlers), L"",
                L"{5A3D0101-7E1A-4F6B-9C42-1D0000000001}");
    }
    const auto start = std::chrono::steady_clock::now();
    const Program program;
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(program.RowCount(), enough);
    std::printf("%d handlers: %.2f s\n", enough, taken.count());
    return taken.count();
  };
  // Four times as many entries: time that grew with the square would be sixteen times as much.
  const double bound = 8 * std::min(measure(5000), measure(5000)) + 1;
  double taken = measure(20000);
  // Other work on the computer may slow any of them.
  for (int again = 0; again < 2 && taken > bound; ++again) taken = measure(20000);
  EXPECT_LT(taken, bound);
}

}  // namespace tarvelin::testing
