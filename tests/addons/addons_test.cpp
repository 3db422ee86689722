#include <gtest/gtest.h>

#include <string>

#include "addons/UnitIEBrowserHelp.h"
#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

using namespace std::string_literals;

const std::wstring kMachine = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\";
const std::wstring kUser = L"HKEY_CURRENT_USER\\SOFTWARE\\";
const std::wstring kClass = kMachine + L"Classes\\CLSID\\";
const std::wstring kUnit = kMachine + L"Microsoft\\Code Store Database\\Distribution Units\\";
const std::wstring kToolbar = kMachine + L"Microsoft\\Internet Explorer\\Toolbar\\";
const std::wstring kButton = kMachine + L"Microsoft\\Internet Explorer\\Extensions\\";
const std::wstring kBar = kUser + L"Microsoft\\Internet Explorer\\Explorer Bars\\";
const std::wstring kEntry = kUser + L"Microsoft\\Internet Explorer\\MenuExt\\";
const std::wstring kStats = kUser + L"Microsoft\\Windows\\CurrentVersion\\Ext\\Stats\\";
const std::wstring kApproved =
    kMachine + L"Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Approved";

class AddonsTest : public ::testing::Test {
 protected:
  // A class registered machine-wide, and its module.
  void AddClass(const std::wstring& id, const std::wstring& name, const std::wstring& module) {
    registry.Text(kClass + id, L"", name).Text(kClass + id + L"\\InprocServer32", L"", module);
    test.files.Add(module);
  }

  // Takes the rows out of the list, a line for each: the caption, the sub-items, "->" and the
  // record's file and location.
  std::wstring Rows() {
    std::wstring text;
    for (; list.Count() > 0; list.Delete(0)) {
      text += list.Item(0).caption;
      for (const std::wstring& subItem : list.Item(0).subItems) text += L"|" + subItem;
      const auto& record = *list.Data<TIESec>(0);
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

TEST_F(AddonsTest, ListsDownloadedControls) {
  AddClass(L"{1}", L"One", L"C:\\1.dll");
  AddClass(L"{2}", L"Two", L"C:\\2.dll");
  AddClass(L"{nameless}", L"", L"C:\\1.dll");
  AddClass(L"open", L"Open", L"C:\\1.dll");
  registry.Text(kClass + L"{gone}", L"", L"Gone");
  test.shell.AddVersion(L"C:\\1.dll", {{L"FileDescription", L"Player"}, {L"CompanyName", L"M"}});
  test.shell.AddVersion(L"C:\\2.dll", {{L"FileDescription", L"N/A"}});
  for (const auto* name : {L"{1}", L"{2}", L"{nameless}", L"open", L"{gone}", L"{new}"}) {
    registry.Key(kUnit + name);
  }
  registry.Child(kUnit, L"{1}\0x"s).Text(kUnit, L"", L"C:\\1.dll");
  scanner.ScanDownloadedActiveX(list);
  scanner.ScanDownloadedActiveX(list);
  EXPECT_EQ(test.shell.versionsOpened, list.Count()) << "one file is read for each row, once";
  EXPECT_EQ(Rows(), L"Player|M|C:\\1.dll -> C:\\1.dll|" + kClass +
                        L"{1}\nTwo||C:\\2.dll -> C:\\2.dll|" + kClass + L"{2}\n");
  EXPECT_TRUE(registry.Has(kClass + L"{new}")) << "left behind for a unit without a class";
}

TEST_F(AddonsTest, ListsHelperObjectsThatAreRegisteredForTheMachine) {
  for (const auto* id : {L"{bho}", L"{control}", L"{nameless}", L"{user}"}) {
    registry.Integer(kStats + id + L"\\iexplore", L"Type", id == L"{control}"s ? 1 : 3);
    if (id != L"{user}"s) AddClass(id, id == L"{nameless}"s ? L"" : L"Class", L"C:\\b.dll");
  }
  registry.Child(kStats, L"{bho}\0"s).Text(kUser + L"Classes\\CLSID\\{user}", L"", L"Own");
  registry.Text(kUser + L"Classes\\CLSID\\{user}\\InprocServer32", L"", L"C:\\b.dll");
  scanner.ScanHelperObjects(list);
  EXPECT_EQ(Rows(), L"Unknown|Unknown|C:\\b.dll|C:\\b.dll -> C:\\b.dll|" + kClass + L"{bho}\n");
}

TEST_F(AddonsTest, ListsToolbarsAndBarsByClassOrText) {
  AddClass(L"{class}", L"Class", L"C:\\b.dll");
  AddClass(L"{nameless}", L"", L"C:\\b.dll");
  registry.Text(kClass + L"{nomodule}", L"", L"Name");
  test.shell.AddVersion(L"C:\\b.dll", {{L"CompanyName", L"Maker"}});
  for (const auto* name : {L"{class}", L"{nameless}", L"{nomodule}", L"plain"}) {
    registry.Value(kToolbar, name, 3, {}).Key(kBar + name);
  }
  registry.Text(kToolbar, L"s", L"My bar").Text(kToolbar, L"t", L"");
  scanner.ScanToolbars(list);
  EXPECT_EQ(Rows(), L"My bar| -> |" + kToolbar + L"s\nClass|Maker|C:\\b.dll -> C:\\b.dll|" +
                        kToolbar + L"{class}\n");

  registry.Key(kBar + L"group\\sub").Key(kBar + L" {Approved} ");
  registry.Text(kApproved, L"\t{aPPROVED}", L"").Text(kApproved, L"", L"");
  registry.opens = 0;
  scanner.ScanExplorerBars(list);
  EXPECT_LE(registry.opens, 18) << "the approved names are read once, however many bars there are";
  EXPECT_EQ(Rows(), L"plain| -> |" + kBar + L"plain\nClass|Maker -> C:\\b.dll|" + kBar +
                        L"{class}\nName|Unknown -> Name|" + kBar + L"{nomodule}\n");
}

TEST_F(AddonsTest, KeysThatVanishAreReadFromTheKeyBefore) {
  registry.beforeOpen = [&](const std::wstring& path) {
    if (path.ends_with(L"gone")) registry.Drop(path);
  };
  registry.Text(kButton + L"a", L"ButtonText", L"B").Text(kButton + L"a", L"Exec", L"run");
  registry.Text(kButton + L"b", L"ButtonText", L"B").Text(kButton + L"b", L"MenuText", L"");
  registry.Text(kButton + L"c", L"MenuText", L"&M").Key(kButton + L"gone");
  registry.Child(kButton, L"c\0"s);  // can never be opened, and must not pass for another
  scanner.ScanExtraButtons(list);
  EXPECT_EQ(Rows(), L"B|run -> |" + kButton + L"a\n| -> |" + kButton + L"b\n&M|&M -> |" + kButton +
                        L"c\n| -> |" + kButton + L"c\0\n| -> |"s + kButton + L"gone\n");

  // A first bar is judged by the parent of all, which has subkeys.
  for (const auto* bar : {L"0gone", L"b\\sub", L"bgone", L"c", L"cgone"}) registry.Key(kBar + bar);
  scanner.ScanExplorerBars(list);
  EXPECT_EQ(Rows(), L"c| -> |" + kBar + L"c\ncgone| -> |" + kBar + L"cgone\n");
}

TEST_F(AddonsTest, AValueOfTheWrongTypeEndsTheScanAndDeniedKeysAreNotListed) {
  registry.Text(kButton + L"a", L"MenuText", L"A").Integer(kButton + L"b", L"MenuText", 1);
  EXPECT_THROW(scanner.ScanExtraButtons(list), TRegistryError);
  EXPECT_EQ(Rows(), L"A|A -> |" + kButton + L"a\n");
  registry.Key(kBar + L"{b}").Integer(kClass + L"{b}", L"", 1);
  EXPECT_THROW(scanner.ScanExplorerBars(list), TRegistryError);

  registry.Key(kUnit + L"{1}").Text(kToolbar, L"t", L"T");
  AddClass(L"{1}", L"One", L"C:\\1.dll");
  for (const auto& key : {kClass + L"{1}", kButton, kToolbar}) registry.DenyWriting(key);
  scanner.ScanDownloadedActiveX(list);
  scanner.ScanToolbars(list);
  scanner.ScanExtraButtons(list);
  EXPECT_EQ(Rows(), L"") << "and the bar did not leave a row half filled";
}

class RemovalTest : public AddonsTest {
 protected:
  RemovalTest() {
    AddClass(L"{1}", L"One", L"C:\\1.dll");
    registry.Key(kUnit + L"{1}\\Sub").Key(kButton + L"{1}\\Sub").Key(kEntry + L"A");
    registry.Integer(kToolbar, L"{1}", 0).Integer(kToolbar, L"", 0).Integer(kToolbar, L"plain", 0);
    registry.Child(kEntry, L"\0hidden"s).Integer(L"HKEY_CURRENT_USER", L"", 0);
    registry.Link(kEntry + L"Way", kButton.substr(0, kButton.size() - 1));
  }
};

constexpr auto kUnregister = RemovalMode::UnregisterControl;
constexpr auto kValueAndFile = RemovalMode::DeleteValueAndFile;

TEST_F(RemovalTest, DeletesExactlyWhatIsNamed) {
  test.files.Add(L"C:\\Windows\\w.oCx");
  const auto before = registry.Dump();
  registry.Key(kClass + L"{2}\\Sub").Key(kUnit + L"{2}").Link(kClass + L"{3}", kClass + L"{1}");
  registry.Key(kButton + L"{2}\\Sub").Key(kButton + L"{3}").Integer(kToolbar, L"{2}", 0);
  registry.Child(kEntry, L"A\0"s).Child(kButton, L"\0"s);
  registry.Restrict(kClass + L"{2}", Rights::AllButOwnership);
  EXPECT_EQ(scanner.RemoveAddon(kUnregister, L"%SYSTEMROOT%\\w.oCx|" + kClass + L"{2}"), 0);
  EXPECT_EQ(scanner.RemoveAddon(kUnregister, L"C:/1.dll|" + kClass + L"{3} "), 0);
  EXPECT_EQ(test.modules.unregistered, (std::vector{L"C:\\Windows\\w.oCx"s, L"C:\\1.dll"s}));
  EXPECT_EQ(scanner.RemoveAddon(RemovalMode::DeleteExtraButton, kButton + L"{2}"), 0);
  EXPECT_EQ(scanner.RemoveAddon(RemovalMode::DeleteKey, kButton + L"{3}\\"), 0);
  EXPECT_EQ(scanner.RemoveAddon(RemovalMode::DeleteContextEntry, kEntry + L"A\0"s), 0);
  EXPECT_EQ(scanner.RemoveAddon(RemovalMode::DeleteExtraButton, kButton + L"\0"s), 0);
  EXPECT_TRUE(test.files.removed.empty()) << "modules stay on disk";

  test.files.undeletable = {L"C:\\1.dll"};
  EXPECT_EQ(scanner.RemoveAddon(kValueAndFile, kToolbar + L"{2}|C:\\1.dll"), -1);
  EXPECT_EQ(registry.Dump(), before);
  test.files.undeletable.clear();
  for (const auto* relative : {L"here.dll", L"C:here.dll", L"\\Current\\here.dll"}) {
    registry.Integer(kToolbar, L"{2}", 0);
    test.files.Add(relative);
    EXPECT_EQ(scanner.RemoveAddon(kValueAndFile, kToolbar + L"{2}|" + relative), 0);
    EXPECT_TRUE(test.files.FileExists(relative)) << relative;
  }
  registry.Integer(kToolbar, L"{2}", 0);
  EXPECT_EQ(scanner.RemoveAddon(kValueAndFile, kToolbar + L"{2}|C:\\1.dll"), 0);
  EXPECT_EQ(test.files.removed, std::vector{L"C:\\1.dll"s});
}

TEST_F(RemovalTest, HostileNamesAndModulesDeleteNothing) {
  const auto modules = {L"C:\\a.exe", L"C:\\dll", L"\\\\s\\a.dll", L"a.dll", L"C:\\locked.dll"};
  for (const auto* module : modules) test.files.Add(module);
  // The first two are files that a badly split string would name.
  for (const auto* file : {L"{x}\\1.dll", L"{", L"C:\\{x}\\1.dll"}) test.files.Add(file);
  test.files.locked = {L"C:\\locked.dll"};
  const auto files = test.files.files;
  const auto before = registry.Dump();
  const auto expectNothing = [&](RemovalMode mode, const std::wstring& removal) {
    EXPECT_EQ(scanner.RemoveAddon(mode, removal), 0);
    EXPECT_EQ(registry.Dump(), before) << ToUtf8(removal);
    EXPECT_EQ(test.files.files, files) << ToUtf8(removal);
  };
  for (const auto* module : modules) expectNothing(kUnregister, module + (L"|" + kClass) + L"{1}");
  expectNothing(kUnregister, L"C:\\gone.dll|" + kClass + L"{1}");
  EXPECT_TRUE(test.modules.unregistered.empty());
  for (const auto& classId : {L""s, L"{"s, L"{1}\0"s, L"{\\\\"s}) {
    expectNothing(kUnregister, L"C:\\1.dll|" + kClass + classId);
  }
  expectNothing(kUnregister, L"C:\\{x}\\1.dll|" + kClass + L"{1}");
  for (const auto& value : {L""s, L"|"s, L"{1}"s, L"{1}\0|"s, L"plain|C:\\1.dll"s,
                            L"{1}|C:\\{x}\\1.dll"s, L"plain|C:\\{x}\\1.dll"s}) {
    expectNothing(kValueAndFile, kToolbar + value);
  }
  for (const auto& entry : {L""s, L"\0A"s, L"A\0"s, L"Way\\{1}"s}) {
    expectNothing(RemovalMode::DeleteContextEntry, kEntry + entry);
  }
  for (const auto* text : {L"", L"|", L"{", L"{|", L"C:\\1.dll"}) {
    for (const auto mode : {kUnregister, kValueAndFile, RemovalMode::DeleteContextEntry}) {
      expectNothing(mode, text);
    }
  }
}

}  // namespace
}  // namespace tarvelin::testing
