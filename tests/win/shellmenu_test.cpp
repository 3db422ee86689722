// The three context-menu pages with their real buttons: what the user is asked and told, exactly
// what goes, and how the registry editor is taken to an entry.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/win/driver_registry.h"

namespace tarvelin::testing {
namespace {

using namespace std::literals;

const std::wstring kClasses = L"HKLM\\SOFTWARE\\Classes\\";
const std::wstring kVerb = kClasses + L"*\\shell\\Öffnen mit 50 %s";
const std::wstring kBinVerb = kClasses + L"CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell\\w";
const std::wstring kDirectoryVerb = kClasses + L"Directory\\shell\\p";
const std::wstring kHandler = kClasses + L"Drive\\shellex\\ContextMenuHandlers\\Handler & Co.";
const std::wstring kSendTo = L"C:\\Send folder";
const std::wstring kLog = L"C:\\editor.log";
const std::wstring kEditor = L"C:\\windows\\regedit.exe";

// Everything that a removal could touch.
Lines State() {
  Lines lines = DumpRegistry(L"HKLM\\SOFTWARE\\Classes");
  std::ranges::copy(ListFiles(kSendTo), std::back_inserter(lines));
  std::ranges::sort(lines);
  return lines;
}

// A file type that the "New" menu offers through a key of its program identifier or of its own.
void OfferType(const std::wstring& extension, const std::wstring& description, bool ofProgram) {
  const std::wstring programId = description + L".1";
  WriteText(kClasses + extension, L"", programId);
  WriteText(kClasses + extension + (ofProgram ? L"\\" + programId : L"") + L"\\ShellNew",
            L"NullFile", L"");
  WriteText(kClasses + programId, L"", description);
}

class ShellMenu : public ::testing::Test {
 protected:
  void SetUp() override {
    // With the classes and interfaces of Windows itself a dump would take seconds.
    for (const auto* key :
         {L"*", L"Directory", L"Drive", L".tva", L".tvb", L".tvc", L"CLSID", L"Interface"}) {
      DeleteKey(kClasses + key);
    }
    // A file that a failed test left read-only would withstand.
    SetFileAttributesW((kSendTo + L"\\fixed.lnk").c_str(), FILE_ATTRIBUTE_NORMAL);
    std::filesystem::remove_all(kSendTo);
    std::filesystem::create_directories(kSendTo);
    WriteText(L"HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
              L"SendTo", kSendTo);
  }

  // Presses "Remove" for a row twice: refuses, then confirms. Checks what the user is asked and
  // told, and that only the row that was confirmed goes.
  static void Remove(Program& program, const std::wstring& name) {
    const int rows = program.RowCount();
    for (const int answer : {IDNO, IDYES}) {
      EXPECT_FALSE(program.Enabled(L"Remove")) << ToUtf8(name);
      program.Select(program.RowOf(name));
      program.Click(L"Remove");
      EXPECT_EQ(
          program.Answer(answer),
          (Box{L"Warning", L"Are you sure to remove \"" + name + L"\"?", {IDYES, IDNO}, true}));
      if (answer == IDNO) {
        EXPECT_EQ(program.Modal(), nullptr);
        EXPECT_EQ(program.RowCount(), rows);
        program.Select(-1);
      }
    }
    EXPECT_EQ(program.Answer(IDOK), (Box{L"Tarvelin", L"Remove successfully!", {IDOK}, false}));
    EXPECT_EQ(program.RowCount(), rows - 1);
  }
};

TEST_F(ShellMenu, RemovesWhatWasConfirmedAndNothingElse) {
  WriteText(kVerb, L"", L"Open it");
  WriteText(kVerb + L"\\Command", L"", L"open.exe");
  WriteText(kBinVerb, L"", L"Wipe");
  WriteText(kBinVerb + L"\\command", L"", L"wipe.exe");
  WriteText(kDirectoryVerb, L"", L"Pack");
  WriteText(kDirectoryVerb + L"\\command", L"", L"pack.exe");
  WriteText(kDirectoryVerb + L"\\command\\deep\\deeper", L"x", L"y");
  WriteText(kHandler, L"", L"{5A3D0101-7E1A-4F6B-9C42-1D0000000001}");
  OfferType(L".tva", L"Typ Ä", true);
  OfferType(L".tvb", L"Type B", false);
  WriteFileBytes(kSendTo + L"\\Mail.lnk", "m");
  WriteFileBytes(kSendTo + L"\\ことのは.txt", "k");

  Program program;
  const Lines before = State();
  for (const auto* name : {L"Öffnen mit 50 %s", L"Wipe", L"Pack", L"Handler & Co."}) {
    Remove(program, name);
  }
  program.Open(L"New");
  Remove(program, L"Typ Ä");
  Remove(program, L"Type B");
  program.Open(L"Send to");
  Remove(program, L"ことのは");

  Lines expected;
  for (const std::wstring& line : {kVerb + L"\\Command", kBinVerb, kDirectoryVerb, kHandler,
                                   kClasses + L".tva\\Typ Ä.1\\ShellNew",
                                   kClasses + L".tvb\\ShellNew", kSendTo + L"\\ことのは.txt"}) {
    for (const std::wstring& old : before) {
      const wchar_t next = old.starts_with(line) ? (old + L"|")[line.size()] : L'x';
      if (next == L'|' || next == L'\\' || next == L' ') expected.push_back(L"- " + old);
    }
  }
  std::ranges::sort(expected);
  EXPECT_EQ(expected.size(), 20U);
  EXPECT_EQ(Differences(before, State()), expected);
  EXPECT_EQ(ReadText(kVerb, L""), L"Open it") << "only the verb's command goes";
}

TEST_F(ShellMenu, ReportsSuccessForWhatStaysAndReadsAgainOnceTheLastRowHasGone) {
  OfferType(L".tva", L"Type A", false);
  OfferType(L".tvb", L"Type B", true);
  const std::wstring readOnly = kSendTo + L"\\fixed.lnk";
  WriteFileBytes(readOnly, "f");
  SetFileAttributesW(readOnly.c_str(), FILE_ATTRIBUTE_READONLY);
  std::filesystem::create_directories(kSendTo + L"\\Folder");
  // Wine lets everybody delete a key, but not one whose children nobody may list.
  MakeKey(kClasses + L".tva\\ShellNew\\Kept\\Below");
  const AccessRule rule(kClasses + L".tva\\ShellNew\\Kept", kNoAccess);

  Program program;
  const Lines before = State();
  using Texts = Program::Texts;
  EXPECT_EQ(program.Open(L"Send to"), (Texts{{L"fixed"}, {L"Folder"}}));
  Remove(program, L"Folder");
  EXPECT_EQ(program.Open(L"New"), (Texts{{L"Type A"}, {L"Type B"}}));
  Remove(program, L"Type A");
  EXPECT_EQ(Differences(before, State()), Lines{});

  OfferType(L".tvc", L"Type C", false);
  EXPECT_EQ(program.Open(L"Send to"), (Texts{{L"fixed"}}));
  Remove(program, L"fixed");
  EXPECT_EQ(program.Open(L"Send to"), (Texts{{L"fixed"}, {L"Folder"}}));
  EXPECT_EQ(program.Open(L"New"), (Texts{{L"Type B"}}));
  Remove(program, L"Type B");
  EXPECT_EQ(program.Open(L"New"), (Texts{{L"Type A"}, {L"Type C"}}));
  SetFileAttributesW(readOnly.c_str(), FILE_ATTRIBUTE_NORMAL);
}

// What the editor was sent, with the steps to the root and the last key that every visit sends.
std::wstring ExpectedKeys(const std::wstring& path) {
  std::wstring keys;
  for (int step = 0; step < 20; ++step) keys += L"tree key 37\n";
  for (const wchar_t c : path) keys += c == L'\\' ? L"tree key 39\n" : L"tree char " + (c + L"\n"s);
  return keys + L"list key 36\n";
}

TEST_F(ShellMenu, TakesTheRegistryEditorToTheSelectedEntry) {
  WriteText(kVerb + L"\\Command", L"", L"open.exe");
  WriteText(kHandler, L"", L"{5A3D0101-7E1A-4F6B-9C42-1D0000000001}");
  // The file is shared with other prefixes: it is replaced and never written.
  DeleteFileW(kEditor.c_str());
  Program program;
  EXPECT_FALSE(program.Enabled(L"Open in RegEdit"));
  const auto open = [&](const wchar_t* name) {
    DeleteFileW(kLog.c_str());
    program.Select(program.RowOf(name));
    program.Click(L"Open in RegEdit");
    EXPECT_EQ(program.Modal(), nullptr);
    std::ifstream file(std::filesystem::path(kLog), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    return FromUtf16Le(std::as_bytes(std::span(bytes)));
  };
  EXPECT_EQ(open(L"Handler & Co."), L"") << "without an editor nothing happens";

  InstallModule(L"stand_in_editor.exe", kEditor);
  EXPECT_EQ(open(L"Öffnen mit 50 %s"),
            ExpectedKeys(L"\\HKEY_CLASSES_ROOT\\*\\shell\\Öffnen mit 50 %s\\Command"));
  HWND editor = FindWindowW(L"RegEdit_RegEdit", nullptr);
  ASSERT_NE(editor, nullptr);
  EXPECT_TRUE(IsZoomed(editor));

  ShowWindow(editor, SW_MINIMIZE);
  EXPECT_EQ(open(L"Handler & Co."),
            ExpectedKeys(L"\\HKEY_CLASSES_ROOT\\Drive\\shellex\\ContextMenuHandlers\\"
                         L"Handler & Co."));
  EXPECT_TRUE(IsZoomed(editor));
  EXPECT_EQ(FindWindowExW(nullptr, editor, L"RegEdit_RegEdit", nullptr), nullptr)
      << "one editor is enough";
  SendMessageW(editor, WM_CLOSE, 0, 0);
}

}  // namespace
}  // namespace tarvelin::testing
