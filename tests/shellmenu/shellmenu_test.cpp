#include "shellmenu/shellmenu.h"

#include <gtest/gtest.h>

#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

using Texts = std::vector<std::wstring>;

const std::wstring kRoot = L"HKEY_CLASSES_ROOT\\";
const std::wstring kBin = L"CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell\\";
const std::wstring kShellIcon = L"C:\\Windows\\system32\\shell32.dll,";

class ShellMenuTest : public ::testing::Test {
 protected:
  void ScanExtensions() { ScanShellExtensions(test.platform, EnglishMessages(), list); }
  void ScanNew() { ScanNewMenu(test.platform, list, images); }
  void ScanSend() { ScanSendTo(test.platform, list, images, L"C:\\SendTo"); }
  void Clear() {
    while (list.Count() > 0) list.Delete(0);
  }
  Texts Captions() const {
    Texts captions;
    for (int row = 0; row < list.Count(); ++row) captions.push_back(list.Item(row).caption);
    return captions;
  }

  // A file type that the "New" menu offers, described by its program identifier.
  void Offer(const std::wstring& extension, const std::wstring& programId) {
    registry.Text(kRoot + extension, L"", programId)
        .Text(kRoot + extension + L"\\ShellNew", L"NullFile", L"")
        .Text(kRoot + programId, L"", L"About " + programId);
  }
  void OfferWithIcon(const std::wstring& extension, const std::wstring& location) {
    Offer(extension, extension.substr(1));
    registry.Text(kRoot + extension.substr(1) + L"\\DefaultIcon", L"", location);
  }

  TestPlatform test;
  MemoryRegistry& registry = test.registry;
  Texts& sendTo = test.files.entries[L"C:\\SendTo\\*.*"];
  Texts& iconRequests = test.shell.iconRequests;
  TListView list{L"list", nullptr, {}, {}};
  TImageList images{L"images"};
};

TEST_F(ShellMenuTest, ListsVerbsAndHandlersButNotThoseOfWindows) {
  const std::wstring windowsOwn = L"{09799AFB-AD67-11D1-ABCD-00C04FC30936}";
  const std::wstring verb = kRoot + L"*\\shell\\", directory = kRoot + L"Directory\\shell\\";
  registry.Text(verb + L"open\\Command", L"", L"o.exe").Text(verb + L"noCommand", L"", L"Text");
  registry.Text(verb + windowsOwn + L"\\Command", L"", L"x.exe");
  registry.Text(kRoot + kBin + L"silent\\Command", L"", L"only.exe");
  registry.Text(kRoot + kBin + L"textOnly", L"", L"Only text");
  registry.Text(directory + L"prompt", L"", L"Prompt");
  registry.Text(directory + L"prompt\\command", L"", L"cmd.exe /k \"cd %L\"");
  registry.Text(directory + L"noText\\command", L"", L"x.exe");
  registry.Text(directory + L"noCommand", L"", L"Text");
  registry.Text(directory + L"emptyCommand", L"", L"Text")
      .Key(directory + L"emptyCommand\\command");
  // By name and class in the first and last group of handlers, by class alone in the others.
  for (const std::wstring parent : {L"*", L"Directory", L"Folder", L"Drive"}) {
    const std::wstring handlers = kRoot + parent + L"\\shellex\\ContextMenuHandlers\\";
    registry.Text(handlers + L"byClass", L"", windowsOwn)
        .Text(handlers + windowsOwn, L"", L"{" + parent + L"}")
        .Key(handlers + L"empty");
  }
  ScanExtensions();
  std::wstring rows;
  for (int row = 0; row < list.Count(); ++row) {
    const auto& record = *list.Data<TShellExtension>(row);
    rows += list.Item(row).caption + L"|" + record.Target + L"|" + record.KeyPath + L"\n";
  }
  const std::wstring handler = L"\\shellex\\ContextMenuHandlers\\" + windowsOwn + L"\n";
  EXPECT_EQ(rows, L"open|o.exe|\\*\\shell\\open\\Command\n|only.exe|\\" + kBin +
                      L"silent\nOnly text|Only text|\\" + kBin +
                      L"textOnly\nPrompt|cmd.exe /k \"cd %L\"|\\Directory\\shell\\prompt\n" +
                      windowsOwn + L"|{Directory}|\\Directory" + handler + windowsOwn +
                      L"|{Folder}|\\Folder" + handler);
  EXPECT_FALSE(list.Updating());
  EXPECT_LE(registry.opens, 33) << "opening a key is also the test of its existence";

  registry.Drop(kRoot + kBin + L"silent");
  ScanExtensions();
  EXPECT_EQ(list.Count(), 6) << "a page with rows is not read again";
}

TEST_F(ShellMenuTest, ListsAnEntryOfUserAndMachineOnceAndRemovesBoth) {
  const std::wstring user = L"HKEY_CURRENT_USER\\Software\\Classes\\";
  const std::wstring machine = L"HKEY_LOCAL_MACHINE\\Software\\Classes\\";
  const std::wstring handlers = L"*\\shellex\\ContextMenuHandlers\\";
  registry.Text(user + handlers + L"both", L"", L"{user's}");
  registry.Text(machine + handlers + L"BOTH", L"", L"{machine's}");
  registry.Text(machine + handlers + L"machine", L"", L"{machine's}");
  // Here the user's key hides what the machine's holds.
  registry.Text(user + L"Directory\\shellex\\ContextMenuHandlers\\user", L"", L"{user's}");
  registry.Text(machine + L"Directory\\shellex\\ContextMenuHandlers\\hidden", L"", L"{hidden}");
  ScanExtensions();
  EXPECT_EQ(Captions(), (Texts{L"both", L"machine", L"user"}));
  EXPECT_EQ(list.Data<TShellExtension>(0)->Target, L"{user's}");
  for (; list.Count() > 0; list.Delete(0)) {
    RemoveShellKey(registry, list.Data<TShellExtension>(0)->KeyPath);
  }
  ScanExtensions();
  EXPECT_EQ(Captions(), Texts{});
  EXPECT_TRUE(registry.Has(machine + L"Directory\\shellex\\ContextMenuHandlers\\hidden"));

  Offer(L".X", L"x");
  registry.Text(user + L".x", L"", L"x").Text(user + L".x\\ShellNew", L"NullFile", L"");
  ScanNew();
  EXPECT_EQ(Captions(), (Texts{L"About x"}));
  RemoveShellKey(registry, list.Data<TNew>(0)->KeyPath);
  Clear();
  ScanNew();
  EXPECT_EQ(Captions(), Texts{});
}

TEST_F(ShellMenuTest, SurvivesBrokenKeysAndCreatesMissingParents) {
  const std::wstring handlers = kRoot + L"Folder\\shellex\\ContextMenuHandlers";
  registry.Integer(handlers + L"\\number", L"", 7).Integer(kRoot + kBin + L"number", L"", 7);
  registry.Child(handlers, std::wstring(L"nul\0name", 8)).Text(handlers + L"\\ok", L"", L"{1}");
  registry.Text(handlers + L"\\denied", L"", L"{2}").Deny(handlers + L"\\denied");
  registry.Text(kRoot + L"Drive\\shellex\\ContextMenuHandlers\\lost", L"", L"{3}");
  registry.Deny(kRoot + L"Drive\\shellex\\ContextMenuHandlers");
  ScanExtensions();
  EXPECT_EQ(Captions(), (Texts{L"", L"ok"}));
  EXPECT_TRUE(registry.Has(kRoot + L"*\\shell"));
}

TEST_F(ShellMenuTest, ListsTheFileTypesThatAreOfferedAndDescribed) {
  Offer(L".a", L"  a  ");  // described under the trimmed name
  registry.Text(kRoot + L"a", L"", L"Type a");
  Offer(L".b", L"b");
  registry.Text(kRoot + L".b\\b\\ShellNew", L"Command", L"x");
  Offer(L".LNK", L"lnk");
  Offer(L"noDot", L"d");
  Offer(L".blank", L"  ");
  registry.Text(kRoot + L".default", L"", L"b").Text(kRoot + L".default\\ShellNew", L"", L"x");
  // The type's own key counts although it is empty; the extension's is not looked at then.
  Offer(L".first", L"b");
  registry.Key(kRoot + L".first\\b\\ShellNew");
  Offer(L".lost", L"lost");
  registry.Drop(kRoot + L"lost");
  registry.Child(L"HKEY_CLASSES_ROOT", std::wstring(L".n\0l", 4));
  // Anyone can write a number where a text belongs.
  Offer(L".number", L"b");
  registry.Integer(kRoot + L".number", L"", 1);
  Offer(L".undescribed", L"u");
  registry.Integer(kRoot + L"u", L"", 1);
  registry.Integer(kRoot + L"b\\DefaultIcon", L"", 1);
  registry.DenyWriting(kRoot + L"b\\DefaultIcon");
  registry.DenyWriting(kRoot + L"b");
  ScanNew();
  ScanNew();
  EXPECT_EQ(Captions(), (Texts{L"Type a", L"About b"}));
  EXPECT_EQ(list.Data<TNew>(0)->KeyPath, L"\\.a\\ShellNew");
  EXPECT_EQ(list.Data<TNew>(1)->KeyPath, L"\\.b\\b\\ShellNew");
}

TEST_F(ShellMenuTest, FindsTheIconThatALocationNames) {
  const std::wstring dll = L"C:\\a.dll,", system = L"C:\\Windows\\system32\\sys.dll,";
  for (const auto* file :
       {L"C:\\a.dll", L"C:\\odd,name.ico", L"C:\\Windows\\system32\\sys.dll", L"D:\\P\\p.dll"}) {
    test.files.Add(file);
  }
  test.files.environment[L"%systemroot%"] = L"C:\\Windows";
  registry.Text(L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion",
                L"ProgramFilesDir", L"D:\\P");
  test.shell.noIcons = {dll + L"99", system + L"99"};
  // The last icon that is asked for.
  const std::pair<std::wstring, std::wstring> cases[] = {
      {dll + L"-3", dll + L"-3"},
      {dll + L"3", dll + L"0"},
      {dll + L"  +3", dll + L"3"},
      {dll + L"-$1f", dll + L"-31"},
      {dll + L"word", dll + L"0"},
      {dll + L"1,2", dll + L"0"},
      {dll + L"2147483648", dll + L"0"},
      {dll + L"-2147483648", dll + L"-2147483648"},
      {L"\"C:\\a.dll\",12", dll + L"12"},
      {dll + L"99", kShellIcon + L"0"},
      {L"C:\\odd,name.ico", L"type:C:\\odd"},
      {L"sys.dll,-7", system + L"-7"},
      {L"sys.dll,99", system + L"99"},
      {L"%SystemRoot%\\system32\\sys.dll,-3", system + L"-3"},
      {L"%ProgramFiles%\\p.dll,-10", L"D:\\P\\p.dll,-10"},
      {L"missing.dll,word", kShellIcon + L"0"},
      {L"", kShellIcon + L"0"}};
  for (const auto& [location, icon] : cases) {
    Clear();
    OfferWithIcon(L".x", location);
    ScanNew();
    EXPECT_EQ(iconRequests.back(), icon) << ToUtf8(location);
    const bool found = !test.shell.noIcons.contains(icon);
    EXPECT_EQ(list.Item(0).imageIndex, found ? images.Count() - 1 : -1) << ToUtf8(location);
    EXPECT_EQ(test.shell.iconsAlive, 0);
  }
}

TEST_F(ShellMenuTest, ExtractsEachIconOnceAndAddsAnImageForEachRow) {
  test.files.Add(L"C:\\Windows\\system32\\sys.dll");
  OfferWithIcon(L".EXE", L"sys.dll,12");  // programs have an icon of the shell's
  for (int row = 1; row <= 9; ++row) {
    OfferWithIcon(L".x" + std::to_wstring(row), row % 2 == 1 ? L"sys.dll,12" : L"missing.dll");
  }
  ScanNew();
  EXPECT_EQ(iconRequests,
            (Texts{kShellIcon + L"2", L"C:\\Windows\\system32\\sys.dll,12", kShellIcon + L"0"}));
  ASSERT_EQ(images.Count(), 10);
  for (int row = 0; row < 10; ++row) EXPECT_EQ(list.Item(row).imageIndex, row);
  EXPECT_EQ(images.StoredImage(9), images.StoredImage(1));
  EXPECT_NE(images.StoredImage(2), images.StoredImage(1));
  EXPECT_LE(registry.opens, 50) << "at most five keys for each type: there may be thousands";
}

TEST_F(ShellMenuTest, EndsAtAMalformedIndexWithTheRowsBeforeItAndNoUpdateOpen) {
  test.files.Add(L"C:\\Windows\\system32\\sys.dll");
  OfferWithIcon(L".a", L"sys.dll,12");
  OfferWithIcon(L".b", L"sys.dll,word");
  OfferWithIcon(L".c", L"sys.dll,13");
  EXPECT_THROW(ScanNew(), TError);
  EXPECT_EQ(Captions(), (Texts{L"About a"}));
  EXPECT_FALSE(list.Updating());
}

TEST_F(ShellMenuTest, ListsEveryEntryOfTheFolderUnderItsNameWithoutExtension) {
  // What follows the blank and hyphen is taken for arguments, so that no extension is left.
  sendTo = {L".", L"..", L"Mail.MAPIMail", L"a.lnk.lnk", L"ab.lnkb.lnk", L"two -x.lnk", L"A.LNK"};
  test.shell.noIcons = {L"type:two"};
  ScanSend();
  EXPECT_EQ(Captions(), (Texts{L"Mail", L"a", L"abb", L"two -x", L"A"}));
  EXPECT_EQ(list.Data<TSendTo>(1)->FilePath, L"C:\\SendTo\\a.lnk.lnk");
  EXPECT_EQ(iconRequests, (Texts{L"type:Mail.MAPIMail", L"type:a.lnk.lnk", L"type:two"}));
  EXPECT_EQ(list.Item(3).imageIndex, -1);
  EXPECT_EQ(images.StoredImage(list.Item(4).imageIndex), images.StoredImage(1));
  EXPECT_FALSE(list.Updating());
  EXPECT_EQ(test.shell.iconsAlive, 0);
  ScanSend();
  EXPECT_EQ(list.Count(), 5);
  Clear();
  ScanSendTo(test.platform, list, images, L"");
  EXPECT_TRUE(list.Updating()) << "without a folder the list is left in its update";
}

TEST_F(ShellMenuTest, AllowsClicksInTheMiddleOfTheFolder) {
  sendTo = {L".", L"a.x", L"b.x", L"c.x"};
  test.display.onProcessMessages = [this] {
    if (test.display.pumped == 3) list.Delete(0);  // a row goes while others come
  };
  ScanSend();
  EXPECT_EQ(test.display.pumped, 4);
  EXPECT_EQ(Captions(), (Texts{L"b", L"c"}));
  EXPECT_FALSE(list.Updating());
}

}  // namespace
}  // namespace tarvelin::testing
