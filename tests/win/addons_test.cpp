// Removing add-ons with the real buttons: what the user is told, and exactly what goes.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "tests/win/driver_registry.h"

namespace tarvelin::testing {
namespace {

using namespace std::literals;

const std::wstring kFolder = L"C:\\Addons";

const Box kRemoved{L"Tarvelin", L"Remove successfully!", {IDOK}, false};
const Box kEntryRemoved{L"Tarvelin", L"Remove success!", {IDOK}, false};
const Box kUnable{L"Unable to delete file", L"", {IDOK}, true};  // and the reason

// Everything that a removal could touch.
Lines State() {
  Lines lines = DumpRegistry({L"HKCU\\Software\\Microsoft", L"HKLM\\SOFTWARE\\Classes\\CLSID",
                              kTraces, L"HKLM\\SOFTWARE\\Microsoft\\Internet Explorer",
                              L"HKLM\\SOFTWARE\\Microsoft\\Code Store Database"});
  std::ranges::copy(ListFiles(kFolder), std::back_inserter(lines));
  std::ranges::sort(lines);
  return lines;
}

std::wstring Trace(const std::wstring& module, const std::wstring& text = L"done") {
  return L"+ " + kTraces + L"\\Unregistered|" + module + L"=1:" + text;
}

class Removal : public ::testing::Test {
 protected:
  void SetUp() override {
    // With the classes of Windows itself a dump would take seconds.
    for (const auto& key : {kClass, kUnit, kToolbar, kExtensions, kBars, kMenuExt, kStats}) {
      DeleteKey(key);
    }
    RegisterClass(L"{other}", L"Other", L"C:\\Other\\other.dll");
    MakeKey(kUnit + L"{other}");
    MakeKey(kTraces + L"\\Loaded");
    MakeKey(kTraces + L"\\Unregistered");
    std::filesystem::create_directories(kFolder);
  }
  void TearDown() override {
    DeleteKey(kTraces);
    std::filesystem::remove_all(kFolder);
  }

  // A class whose module describes itself as nothing, so that rows bear the name of the class.
  static std::wstring AddClass(const std::wstring& id, const std::wstring& name,
                               const std::wstring& file, const wchar_t* sample = L"dunmorrel.dll") {
    const std::wstring path = kFolder + L"\\" + file;
    InstallModule(sample, path);
    RegisterClass(id, name, path);
    return path;
  }
  static std::wstring AddHelper(const std::wstring& id, const std::wstring& name,
                                const std::wstring& file) {
    WriteInteger(kStats + L"\\" + id + L"\\iexplore", L"Type", 3);
    return AddClass(id, name, file);
  }

  // Presses "Remove" for a row, confirms, and checks what is told and what has changed: all that
  // begins like `gone` goes, keys, values ("key|name=") and files ("path "), and `added` comes.
  static void Remove(Program& program, const std::wstring& name, const Box& report,
                     const Lines& gone, const Lines& added = {}, bool rowStays = false) {
    SCOPED_TRACE(ToUtf8(name));
    const Lines before = State();
    Lines expected;
    for (const auto& line : before) {
      const auto leads = [&](const std::wstring& beginning) { return line.starts_with(beginning); };
      if (std::ranges::any_of(gone, leads)) expected.push_back(L"- " + line);
    }
    EXPECT_GE(expected.size(), gone.size());
    expected.insert(expected.end(), added.begin(), added.end());

    const int rows = program.RowCount();
    program.Select(program.RowOf(name));
    program.Click(L"Remove");
    EXPECT_EQ(program.Answer(IDYES),
              (Box{L"Warning", L"Are you sure to remove \"" + name + L"\"?", {IDYES, IDNO}, true}));
    Box told = program.Answer(IDOK);
    if (report.icon) told.text.clear();
    EXPECT_EQ(told, report);
    EXPECT_EQ(program.Modal(), nullptr);
    EXPECT_EQ(program.RowCount(), rowStays ? rows : rows - 1);
    EXPECT_EQ(Differences(before, State()), expected);
  }
};

// Keeps a file open; others may read it.
UniqueFile Hold(const std::wstring& path) {
  return UniqueFile(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

TEST_F(Removal, UnregistersHelperObjects) {
  AddHelper(L"{a1}", L"Plain", L"plain.dll");
  const auto locked = AddHelper(L"{a2}", L"Locked", L"locked.dll");
  const auto gone = AddHelper(L"{a3}", L"Gone", L"gone.dll");
  AddHelper(L"{a4}", L"Braced", L"{x}\\braced.dll");
  Program program;
  ASSERT_EQ(program.Open(L"IE BHOs").size(), 4U);
  EXPECT_FALSE(program.Enabled(L"Remove"));

  // The statistics stay: they only say that the object was loaded once.
  Remove(program, L"Plain", kRemoved, {kClass + L"{a1}"}, {Trace(L"plain.dll")});
  {
    const UniqueFile holder = Hold(locked);
    Remove(program, L"Locked", kUnable, {}, {}, true);
  }
  Remove(program, L"Locked", kRemoved, {kClass + L"{a2}"}, {Trace(L"locked.dll")});
  std::filesystem::remove(gone);
  Remove(program, L"Gone", kRemoved, {});
  Remove(program, L"Braced", kRemoved, {}, {Trace(L"braced.dll")});
  EXPECT_FALSE(program.Enabled(L"Remove"));
}

TEST_F(Removal, UnregistersControlsWhateverTheyAnswer) {
  const struct {
    std::wstring id, name, sample;
    Lines added;
  } controls[] = {{L"{b1}", L"Quimbrel Search Helper", L"quimbrel.dll", {Trace(L"quimbrel.dll")}},
                  {L"{b2}", L"Tolvanek Viewer Control", L"refusing.dll", {Trace(L"refusing.dll")}},
                  {L"{b3}", L"Unknown", L"silent.ocx", {}},
                  {L"{b4}", L"Unknown", L"text.dll", {}}};
  for (const auto& [id, name, sample, added] : controls) {
    AddClass(id, L"Class", sample, sample.c_str());
    MakeKey(kUnit + id + L"\\Contains\\Files");
  }
  Program program;
  ASSERT_EQ(program.Open(L"IE Downloaded ActiveX").size(), std::size(controls));
  for (const auto& [id, name, sample, added] : controls) {
    Remove(program, name, kRemoved, {kClass + id, kUnit + id}, added);
  }
}

TEST_F(Removal, AModuleFindsItsOwnCompanionAndNoPlantedOne) {
  // Paths as registrations have them: with other slashes, and from a drive's current folder on.
  const std::pair<std::wstring, std::wstring> helpers[] = {{L"{c1}", kFolder + L"/loading.dll"},
                                                           {L"{c2}", kFolder + L"\\importing.dll"},
                                                           {L"{c3}", L"C:lone.dll"},
                                                           {L"{c4}", L"C:/Lone/loading.dll"}};
  for (const auto& [id, path] : helpers) {
    WriteInteger(kStats + L"\\" + id + L"\\iexplore", L"Type", 3);
    RegisterClass(id, L"Class", path);
  }
  for (const std::wstring name : {L"loading.dll", L"importing.dll", L"companion.dll"}) {
    InstallModule(L"companion\\" + name, kFolder + L"\\" + name);
  }
  const std::wstring exe = CopyProgram(L"C:\\Copy");
  InstallModule(L"planted\\companion.dll", L"C:\\Copy\\companion.dll");
  InstallModule(L"planted\\companion.dll", L"C:\\Current\\companion.dll");
  InstallModule(L"bare.dll", L"C:\\Current\\lone.dll");
  InstallModule(L"companion\\loading.dll", L"C:\\Lone\\loading.dll");
  Program program(exe, L"C:\\Current");
  ASSERT_EQ(program.Open(L"IE BHOs").size(), std::size(helpers));

  // No module has version information, so all rows are called "Unknown".
  const auto remove = [&](const std::wstring& id, const Lines& added) {
    Remove(program, L"Unknown", kRemoved, {kClass + id}, added);
  };
  const auto loaded = [](const std::wstring& path) {
    return L"+ " + kTraces + L"\\Loaded|" + path + L"=1:companion";
  };
  const std::wstring own = kFolder + L"\\companion.dll";
  remove(L"{c1}", {loaded(own), Trace(L"loading.dll", own)});
  remove(L"{c2}", {Trace(L"importing.dll", own)});
  remove(L"{c3}", {Trace(L"lone.dll")});
  const std::wstring shared = L"C:\\windows\\companion.dll";
  InstallModule(L"companion\\companion.dll", shared);
  DeleteKey(kTraces + L"\\Unregistered");
  MakeKey(kTraces + L"\\Unregistered");
  remove(L"{c4}", {loaded(shared), Trace(L"loading.dll", shared)});
  std::filesystem::remove(shared);

  // What a program is linked to is loaded before it can say from where. A second start ends before
  // it draws anything: for themes Wine loads msimg32 itself.
  const Lines traces = DumpRegistry({kTraces});
  WriteText(L"HKCU\\Software\\Wine\\DllOverrides", L"msimg32", L"native,builtin");
  const std::wstring second = CopyProgram(L"C:\\Second");
  InstallModule(L"planted\\companion.dll", L"C:\\Second\\msimg32.dll");
  EXPECT_EQ(RunToEnd(second), 0U);
  EXPECT_EQ(DumpRegistry({kTraces}), traces);
}

TEST_F(Removal, AModuleThatMeddlesGetsItsOwnRowRemovedAndNothingElse) {
  AddHelper(L"{m1}", L"Meddling", L"meddling.dll");
  AddHelper(L"{m2}", L"Other", L"other.dll");
  InstallModule(L"meddling.dll", kFolder + L"\\meddling.dll");
  Program program;
  ASSERT_EQ(program.Open(L"IE BHOs").size(), 2U);
  const Lines before = State();
  Lines expected;
  for (const auto& line : before) {
    if (line.starts_with(kClass + L"{m1}")) expected.push_back(L"- " + line);
  }
  expected.push_back(Trace(L"meddling.dll"));
  program.Select(0);
  program.Click(L"Remove");
  EXPECT_EQ(program.Answer(IDYES).caption, L"Warning");
  // The module has tried to close the windows, to select the other row and to press every button.
  // Now its box is open, and others try.
  SendMessageW(program.Window(), WM_CLOSE, 0, 0);
  SendMessageW(program.Button(L"Remove"), BM_CLICK, 0, 0);
  EXPECT_EQ(program.Answer(IDOK).caption, L"Meddling");
  EXPECT_EQ(program.Answer(IDOK), kRemoved);
  EXPECT_EQ(Differences(before, State()), expected);
  ASSERT_EQ(program.RowCount(), 1);
  EXPECT_EQ(program.Rows()[0][0], L"Other");
  EXPECT_EQ(program.Close(), 0U);
}

TEST_F(Removal, AModuleThatDestroysTheWindowEndsTheProgramAfterTheCommand) {
  AddHelper(L"{m3}", L"Destroying", L"destroying.dll");
  InstallModule(L"destroying.dll", kFolder + L"\\destroying.dll");
  Program program;
  ASSERT_EQ(program.Open(L"IE BHOs").size(), 1U);
  program.Select(0);
  program.Click(L"Remove");
  program.Answer(IDYES);
  EXPECT_EQ(program.WaitForExit(), 0U);
  EXPECT_EQ(DumpRegistry(kClass + L"{m3}"), Lines{});
}

TEST_F(Removal, DeletesTheFileOfABarButTheEntryOfAToolbarOnly) {
  AddClass(L"{d1}", L"Plain", L"plain.dll");
  const auto held = AddClass(L"{d2}", L"Held", L"held.dll");
  std::filesystem::remove(AddClass(L"{d3}", L"Gone", L"gone.dll"));
  AddClass(L"{d4}", L"Braced", L"{x}\\braced.dll");
  AddClass(L"class", L"Braceless", L"braceless.dll");
  for (const auto* name : {L"{d1}", L"{d2}", L"{d3}", L"{d4}", L"class"}) {
    WriteValue(kToolbar, name, REG_BINARY, {});
  }
  WriteText(kToolbar, L"text", L"Text only");
  const auto bar = AddClass(L"{e1}", L"Class bar", L"bar.dll");
  for (const auto* name : {L"{e1}", L"{d2}", L"Plain bar"}) MakeKey(kBars + L"\\" + name);
  Program program;
  ASSERT_EQ(program.Open(L"IE Toolbars").size(), 6U);
  Remove(program, L"Plain", kRemoved, {kFolder + L"\\plain.dll ", kToolbar + L"|{d1}="});
  const UniqueFile holder = Hold(held);
  Remove(program, L"Held", kUnable, {kToolbar + L"|{d2}="});
  Remove(program, L"Gone", kRemoved, {kToolbar + L"|{d3}="});
  for (const auto* name : {L"Braced", L"Braceless", L"Text only"}) {
    Remove(program, name, kRemoved, {});
  }

  ASSERT_EQ(program.Open(L"IE Bars").size(), 3U);
  Remove(program, L"Class bar", kRemoved, {bar});
  Remove(program, L"Plain bar", kRemoved, {});
  Remove(program, L"Held", kRemoved, {});  // only toolbars report it
}

TEST_F(Removal, DeletesTheKeysOfButtonsAndContextEntries) {
  WriteText(kExtensions + L"\\{f1}", L"MenuText", L"100 %s && more");
  MakeKey(kExtensions + L"\\{f1}\\Lang0409");
  MakeKey(kExtensions + L"\\{f2}");
  WriteText(kMenuExt + L"\\&Open %s", L"", L"res://open");
  WriteText(kMenuExt + L"\\&Open", L"", L"res://other");
  MakeOddKey(kMenuExt, L"\0hidden"sv);
  MakeOddKey(kMenuExt, L"&Open\0 odd"sv);
  MakeLink(kExtensions + L"\\{f1}\\Way", kClass + L"{other}");
  Program program;
  ASSERT_EQ(program.Open(L"IE Extra Button").size(), 2U);
  Remove(program, L"100 %s && more", kRemoved, {kExtensions + L"\\{f1}"});

  ASSERT_EQ(program.Open(L"IE Context Menus").size(), 4U);
  Remove(program, L"&Open %s", kEntryRemoved, {kMenuExt + L"\\&Open %s"});
  // What is listed can be removed, and the name before a NUL is another entry's.
  const Lines before = State();
  for (int row = 2; row >= 0; --row) {
    if (!program.Rows()[static_cast<std::size_t>(row)][1].empty()) continue;
    program.Select(row);
    program.Click(L"Remove");
    program.Answer(IDYES);
    EXPECT_EQ(program.Answer(IDOK), kEntryRemoved);
  }
  EXPECT_EQ(program.Rows(), (Program::Texts{{L"&Open", L"res://other"}}));
  EXPECT_EQ(Differences(before, State()),
            (Lines{L"- " + kMenuExt + L"\\\0hidden"s, L"- " + kMenuExt + L"\\&Open\0 odd"s}));
}

}  // namespace
}  // namespace tarvelin::testing
