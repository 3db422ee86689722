#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "addons/UnitIEBrowserHelp.h"
#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

using namespace std::string_literals;

const std::wstring kMachine = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\";
const std::wstring kUser = L"HKEY_CURRENT_USER\\SOFTWARE\\";
const std::wstring kClass = kMachine + L"Classes\\CLSID\\";
const std::wstring kUnits = kMachine + L"Microsoft\\Code Store Database\\Distribution Units";
const std::wstring kToolbar = kMachine + L"Microsoft\\Internet Explorer\\Toolbar\\";
const std::wstring kExtensions = kMachine + L"Microsoft\\Internet Explorer\\Extensions";
const std::wstring kButton = kExtensions + L"\\";
const std::wstring kBar = kUser + L"Microsoft\\Internet Explorer\\Explorer Bars\\";
const std::wstring kMenuExt = kUser + L"Microsoft\\Internet Explorer\\MenuExt";
const std::wstring kEntry = kMenuExt + L"\\";
const std::wstring kStats = kUser + L"Microsoft\\Windows\\CurrentVersion\\Ext\\Stats";
const std::wstring kApproved =
    kMachine + L"Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Approved";

class AddonsTest : public ::testing::Test {
 protected:
  // A class registered machine-wide, and its module.
  void AddClass(const std::wstring& id, const std::wstring& name, const std::wstring& module) {
    registry.Text(kClass + id, L"", name).Text(kClass + id + L"\\InprocServer32", L"", module);
    test.files.Add(module);
  }

  // A line for each row: the caption, the sub-items, "->" and the record's file and location.
  std::wstring Rows() const {
    std::wstring text;
    for (int row = 0; row < list.Count(); ++row) {
      text += list.Item(row).caption;
      for (const std::wstring& subItem : list.Item(row).subItems) text += L"|" + subItem;
      const auto& record = *list.Data<TIESec>(row);
      text += L" -> " + record.FilePath + L"|" + record.RegLocation + L"\n";
    }
    return text;
  }

  TestPlatform test;
  MemoryRegistry& registry = test.registry;
  EnglishMessages messages;
  TScanIeBrowser scanner{test.platform, messages, {}};
  TListView list{L"list", nullptr, {}, {}};
};

TEST_F(AddonsTest, ListsDownloadedControlsByTheirVersionTexts) {
  AddClass(L"{1}", L"One", L"C:\\1.dll");
  AddClass(L"{2}", L"Two", L"C:\\2.ocx");
  AddClass(L"{3}", L"Three", L"C:\\3.dll");
  AddClass(L"{4}", L"Four", L"C:\\1.dll");
  AddClass(L"{5}", L"Five", L"C:\\gone.dll");
  test.files.files.erase(L"C:\\gone.dll");
  AddClass(L"{7", L"", L"C:\\1.dll");
  AddClass(L"open", L"Open", L"C:\\1.dll");
  test.shell.AddVersion(L"C:\\1.dll", {{L"FileDescription", L"Player"}, {L"CompanyName", L"M"}});
  test.shell.AddVersion(L"C:\\3.dll", {{L"FileDescription", L"N/A"}});
  for (const auto* name : {L"{1}", L"{2}", L"{3}", L"{4}", L"{5}", L"{6}", L"{7", L"{", L"open"}) {
    registry.Key(kUnits + L"\\" + name);
  }
  registry.Child(kUnits, L"{1}\0x"s).Text(kUnits, L"", L"C:\\1.dll");
  for (int visit = 0; visit < 2; ++visit) {
    scanner.ScanDownloadedActiveX(list);
    EXPECT_EQ(Rows(), L"Player|M|C:\\1.dll -> C:\\1.dll|" + kClass + L"{1}\n" +
                          L"Unknown|Unknown|C:\\2.ocx -> C:\\2.ocx|" + kClass + L"{2}\n" +
                          L"Three||C:\\3.dll -> C:\\3.dll|" + kClass + L"{3}\n" +
                          L"Player|M|C:\\1.dll -> C:\\1.dll|" + kClass + L"{4}\n");
  }
  EXPECT_TRUE(registry.Has(kClass + L"{6}")) << "left behind for a unit without a class";
}

TEST_F(AddonsTest, ListsHelperObjectsByTheirType) {
  const auto add = [&](const std::wstring& id, std::uint32_t type) {
    AddClass(id, L"Class " + id, L"C:\\" + id + L".dll");
    registry.Integer(kStats + L"\\" + id + L"\\iexplore", L"Type", type);
  };
  for (const auto* id : {L"{bho}", L"{gone}", L"{nameless}", L"{text}", L"{typeless}"}) add(id, 3);
  add(L"{control}", 1);
  test.shell.AddVersion(L"C:\\{bho}.dll", {{L"CompanyName", L"Maker"}});
  test.files.files.erase(L"C:\\{gone}.dll");
  registry.Text(kClass + L"{nameless}", L"", L"");
  registry.Text(kStats + L"\\{text}\\iexplore", L"Type", L"3");
  registry.Drop(kStats + L"\\{typeless}\\iexplore");
  registry.Child(kStats, L"{bho}\0"s).Integer(kStats + L"\\{user}\\iexplore", L"Type", 3);
  registry.Text(kUser + L"Classes\\CLSID\\{user}", L"", L"Own")
      .Text(kUser + L"Classes\\CLSID\\{user}\\InprocServer32", L"", L"C:\\{bho}.dll");
  scanner.ScanHelperObjects(list);
  EXPECT_EQ(Rows(), L"Class {bho}|Maker|C:\\{bho}.dll|C:\\{bho}.dll -> C:\\{bho}.dll|" + kClass +
                        L"{bho}\n");
}

TEST_F(AddonsTest, ListsToolbarsByClassOrText) {
  AddClass(L"{class}", L"Bar", L"C:\\gone.dll");
  test.files.files.clear();
  AddClass(L"{nomodule}", L"Class", L"");
  AddClass(L"{nameless}", L"", L"C:\\x.dll");
  for (const auto* name : {L"{class}", L"{nomodule}", L"{nameless}", L"{binary}"}) {
    registry.Value(kToolbar, name, 3, {});
  }
  registry.Text(kToolbar, L"", L"unnamed")
      .Text(kToolbar, L"s", L"My bar")
      .Text(kToolbar, L"t", L"");
  scanner.ScanToolbars(list);
  EXPECT_EQ(Rows(), L"My bar| -> |" + kToolbar + L"s\nBar|Unknown|C:\\gone.dll -> C:\\gone.dll|" +
                        kToolbar + L"{class}\n");
}

TEST_F(AddonsTest, ListsExplorerBarsThatAreNotApproved) {
  AddClass(L"{class}", L"Class bar", L"C:\\b.dll");
  test.shell.AddVersion(L"C:\\b.dll", {{L"CompanyName", L"Maker"}});
  AddClass(L"{nameless}", L"", L"C:\\b.dll");
  registry.Text(kClass + L"{nomodule}", L"", L"Name");
  for (const auto* bar : {L"plain", L"{class}", L"{nameless}", L"{nomodule}", L"group\\sub"}) {
    registry.Key(kBar + bar);
  }
  registry.Key(kBar + L" {Approved} ")
      .Text(kApproved, L"\t{aPPROVED}", L"")
      .Text(kApproved, L"", L"");
  scanner.ScanExplorerBars(list);
  EXPECT_EQ(Rows(), L"plain| -> |" + kBar + L"plain\n" + L"Class bar|Maker -> C:\\b.dll|" + kBar +
                        L"{class}\n" + L"Name|Unknown -> Name|" + kBar + L"{nomodule}\n");
}

TEST_F(AddonsTest, ReadsApprovedNamesOnceAndOnlyWhenABarNeedsThem) {
  int approvedOpens = 0;
  registry.beforeOpen = [&](const std::wstring& path) {
    approvedOpens += SameText(path, kApproved) ? 1 : 0;
  };
  registry.Key(kBar + L"group\\sub");
  scanner.ScanExplorerBars(list);
  EXPECT_EQ(list.Count() + approvedOpens, 0);
  for (int i = 0; i < 500; ++i) {
    registry.Key(kBar + L"Bar" + std::to_wstring(i));
    registry.Text(kApproved, L"BAR" + std::to_wstring(2 * i), L"");
  }
  registry.opens = 0;
  scanner.ScanExplorerBars(list);
  EXPECT_EQ(list.Count(), 250);
  EXPECT_EQ(approvedOpens, 1);
  EXPECT_EQ(registry.opens, 1 + 501 + 1 + 250) << "the bars, and the classes of those shown";
  EXPECT_EQ(registry.queries, 0);
}

TEST_F(AddonsTest, ListsButtonsAndContextEntriesAsTheyStand) {
  registry.Text(kButton + L"{a}", L"ButtonText", L"B").Text(kButton + L"{a}", L"Exec", L"run");
  registry.Text(kButton + L"{b}", L"ButtonText", L"B").Text(kButton + L"{b}", L"MenuText", L"&M");
  registry.Text(kButton + L"{c}", L"ButtonText", L"B").Text(kButton + L"{c}", L"MenuText", L"");
  registry.Text(kButton + L"{d", L"MenuText", L"M").Child(kExtensions, L"{d\0"s);
  scanner.ScanExtraButtons(list);
  EXPECT_EQ(Rows(), L"B|run -> |" + kButton + L"{a}\n&M|&M -> |" + kButton + L"{b}\n| -> |" +
                        kButton + L"{c}\nM|M -> |" + kButton + L"{d\n| -> |" + kButton +
                        L"{d\0\n"s);

  while (list.Count() > 0) list.Delete(0);
  registry.Text(kEntry + L"&Open %s", L"", L"res://a").Key(kEntry + L"Nothing");
  registry.Text(kMenuExt, L"", L"base").Child(kMenuExt, L"nul\0"s);
  scanner.ScanContextEntries(list);
  EXPECT_EQ(Rows(), L"&Open %s|res://a -> |" + kEntry + L"&Open %s\nNothing| -> |" + kEntry +
                        L"Nothing\nnul\0| -> |"s + kEntry + L"nul\0\n"s);
}

TEST_F(AddonsTest, KeysThatVanishAreReadFromTheKeyBefore) {
  registry.beforeOpen = [&](const std::wstring& path) {
    if (path.ends_with(L"gone")) registry.Drop(path);
  };
  registry.Text(kButton + L"a", L"MenuText", L"Before").Text(kButton + L"gone", L"MenuText", L"x");
  scanner.ScanExtraButtons(list);
  EXPECT_EQ(Rows(),
            L"Before|Before -> |" + kButton + L"a\nBefore|Before -> |" + kButton + L"gone\n");

  // A first bar is judged by the parent of all, which has subkeys.
  while (list.Count() > 0) list.Delete(0);
  for (const auto* bar : {L"0gone", L"a", L"b\\sub", L"bgone", L"c", L"cgone"}) {
    registry.Key(kBar + bar);
  }
  scanner.ScanExplorerBars(list);
  EXPECT_EQ(Rows(),
            L"a| -> |" + kBar + L"a\nc| -> |" + kBar + L"c\ncgone| -> |" + kBar + L"cgone\n");
}

TEST_F(AddonsTest, AValueOfTheWrongTypeEndsTheScanAndKeepsTheRows) {
  registry.Text(kButton + L"a", L"MenuText", L"A").Integer(kButton + L"b", L"MenuText", 1);
  EXPECT_THROW(scanner.ScanExtraButtons(list), TRegistryError);
  EXPECT_EQ(Rows(), L"A|A -> |" + kButton + L"a\n");
  list.Delete(0);
  registry.Key(kBar + L"{b}").Integer(kClass + L"{b}", L"", 1);
  EXPECT_THROW(scanner.ScanExplorerBars(list), TRegistryError);
  EXPECT_EQ(list.Count(), 0) << "no row is left half filled";
}

TEST_F(AddonsTest, KeysThatMayNotBeChangedAreNotListed) {
  AddClass(L"{1}", L"One", L"C:\\1.dll");
  registry.Key(kUnits + L"\\{1}").Key(kButton + L"{1}").Text(kToolbar, L"t", L"T");
  for (const auto& key : {kClass + L"{1}", kExtensions, kToolbar}) registry.DenyWriting(key);
  scanner.ScanDownloadedActiveX(list);
  scanner.ScanToolbars(list);
  scanner.ScanExtraButtons(list);
  EXPECT_EQ(list.Count(), 0);
}

// The lines that a dump lost; lines that it gained come last, with a "+".
std::wstring Difference(const std::wstring& before, const std::wstring& after) {
  std::wistringstream old(before);
  std::wistringstream now(after);
  std::wstring kept;
  std::wstring result;
  std::getline(now, kept);
  for (std::wstring line; std::getline(old, line);) {
    if (now && line == kept) {
      std::getline(now, kept);
    } else {
      result += Trim(line);
      result += L" ";
    }
  }
  return now ? result + L"+" + kept : result;
}

class RemovalTest : public AddonsTest {
 protected:
  RemovalTest() {
    AddClass(L"{1}", L"One", L"C:\\1.dll");
    registry.Key(kClass + L"{2}").Key(kUnits + L"\\{1}\\Sub").Key(kUnits + L"\\{2}");
    registry.Integer(kToolbar, L"{1}", 0).Integer(kToolbar, L"", 0).Integer(kToolbar, L"plain", 0);
    registry.Key(kBar + L"{1}\\Sub").Key(kEntry + L"A\\Sub").Key(kEntry + L"B");
    registry.Child(kMenuExt, L"\0hidden"s).Key(kButton + L"{1}\\Sub").Key(kButton + L"{2}");
    registry.Integer(L"HKEY_CURRENT_USER", L"", 0);
  }

  // What a removal took out of the registry.
  std::wstring Remove(RemovalMode mode, const std::wstring& removal, int result = 0) {
    const std::wstring before = registry.Dump();
    EXPECT_EQ(scanner.RemoveAddon(mode, removal), result);
    return Difference(before, registry.Dump());
  }
};

constexpr auto kUnregister = RemovalMode::UnregisterControl;
constexpr auto kValueAndFile = RemovalMode::DeleteValueAndFile;

TEST_F(RemovalTest, UnregistersFreeLibrariesOnADriveAndDeletesTheirKeys) {
  for (const auto* file : {L"C:\\Windows\\w.dll", L"C:\\a.oCx", L"C:\\a.exe", L"C:\\dll",
                           L"\\\\server\\a.dll", L"a.dll", L"C:\\locked.dll"}) {
    test.files.Add(file);
  }
  test.files.locked.insert(L"C:\\locked.dll");
  for (const auto* module : {L"%SystemRoot%\\w.dll", L"C:\\a.exe", L"C:\\dll", L"\\\\server\\a.dll",
                             L"a.dll", L"C:\\locked.dll", L"C:\\gone.dll", L""}) {
    EXPECT_EQ(Remove(kUnregister, module + (L"|" + kClass) + L"{2}"), L"") << ToUtf8(module);
  }
  EXPECT_TRUE(test.modules.unregistered.empty());

  EXPECT_EQ(Remove(kUnregister, L"%SYSTEMROOT%\\w.dll|" + kClass + L"{2}"), L"[{2}] [{2}] ");
  EXPECT_NE(Remove(RemovalMode::UnregisterHelperObject, L"C:\\a.oCx|" + kClass + L"{1} "), L"");
  EXPECT_FALSE(registry.Has(kClass + L"{1}") || registry.Has(kUnits + L"\\{1}"));
  EXPECT_EQ(test.modules.unregistered,
            (std::vector<std::wstring>{L"C:\\Windows\\w.dll", L"C:\\a.oCx"}));
  EXPECT_TRUE(test.files.removed.empty()) << "modules stay on disk";
}

TEST_F(RemovalTest, DeletesTheValueOfAToolbarAndTheFileOfAToolbarOrBar) {
  const std::wstring value = L"\"{1}\" 4 0,0,0,0, ";
  test.files.undeletable.insert(L"C:\\1.dll");
  EXPECT_EQ(Remove(kValueAndFile, kToolbar + L"{1}|C:\\1.dll", -1), value);
  test.files.undeletable.clear();
  for (const bool present : {true, false}) {
    registry.Integer(kToolbar, L"{1}", 0);
    EXPECT_EQ(test.files.FileExists(L"C:\\1.dll"), present);
    EXPECT_EQ(Remove(kValueAndFile, kToolbar + L"{1}|C:\\1.dll"), value);
  }
  test.files.Add(L"C:\\1.dll");
  EXPECT_EQ(Remove(kValueAndFile, kBar + L"{1}|C:\\1.dll"), L"") << "the key of a bar stays";
  EXPECT_EQ(test.files.removed.size(), 2U);
}

TEST_F(RemovalTest, DeletesEntriesWithWhatIsBelowThemButNoTargetOfALink) {
  const std::wstring target = kMachine + L"Target";
  registry.Key(target + L"\\Sub").Link(kEntry + L"A\\Way", target).Link(kClass + L"{3}", target);
  EXPECT_EQ(Remove(RemovalMode::DeleteContextEntry, kEntry + L"A"),
            L"[A] [Sub] [Way]" + target + L" ");
  EXPECT_EQ(Remove(RemovalMode::DeleteExtraButton, kButton + L"{1}"), L"[{1}] [Sub] ");
  EXPECT_EQ(Remove(RemovalMode::DeleteKey, kButton + L"{2}\\"), L"[{2}] ");
  EXPECT_EQ(Remove(kUnregister, L"C:\\1.dll|" + kClass + L"{3}"), L"[{3}]" + target + L" ");
}

TEST_F(RemovalTest, HostileNamesDeleteNothing) {
  // The first two are files that a badly split string would name.
  for (const auto* file : {L"{x}\\1.dll", L"{", L"C:\\{x}\\1.dll"}) test.files.Add(file);
  const auto files = test.files.files;
  const std::pair<RemovalMode, std::vector<std::wstring>> cases[] = {
      {kUnregister,
       {L"", L"|", L"{", L"C:\\1.dll", L"C:\\1.dll|", L"C:\\1.dll|" + kClass,
        L"C:\\1.dll|" + kClass + L"{", L"C:\\1.dll|" + kClass + L"{1}\0"s,
        L"C:\\1.dll|" + kClass + L"{\\\\", L"C:\\{x}\\1.dll|" + kClass + L"{1}"}},
      {kValueAndFile,
       {L"", L"|", L"{", L"{|", kToolbar, kToolbar + L"|", kToolbar + L"{1}", kToolbar + L"{1}\0|"s,
        kToolbar + L"plain|C:\\1.dll", kToolbar + L"{1}|C:\\{x}\\1.dll",
        kToolbar + L"plain|C:\\{x}\\1.dll"}},
      {RemovalMode::DeleteContextEntry,
       {L"", L"HKEY_CURRENT_USER\\", kMenuExt, kEntry, kEntry + L"\\", kEntry + L"\0hidden"s,
        kEntry + L"\0A"s, kEntry + L"A\0"s}},
      {RemovalMode::DeleteExtraButton, {kButton, kButton + L"{"}},
  };
  for (const auto& [mode, removals] : cases) {
    for (const std::wstring& removal : removals) {
      EXPECT_EQ(Remove(mode, removal), L"") << ToUtf8(removal);
      EXPECT_EQ(test.files.files, files) << ToUtf8(removal);
    }
  }
}

}  // namespace
}  // namespace tarvelin::testing
