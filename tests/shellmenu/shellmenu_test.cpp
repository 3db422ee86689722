#include "shellmenu/shellmenu.h"

#include <gtest/gtest.h>

#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

using Texts = std::vector<std::wstring>;

const std::wstring kRoot = L"HKEY_CLASSES_ROOT\\";
const std::wstring kBin = L"CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell\\";
const std::wstring kShellIcon = L"C:\\Windows\\system32\\shell32.dll,";

// Stands for the control of the list: counts the batch updates that are open.
class OpenUpdates : public ListViewPeer {
 public:
  explicit OpenUpdates(int& open) : open_(open) {}
  void Changed(Change) override {}
  int ClientWidth() override { return 0; }
  void ItemInserted(int) override {}
  void ItemChanged(int) override {}
  void ItemDeleted(int) override {}
  void CheckChanged(int) override {}
  void SelectionChanged() override {}
  void ColumnsChanged() override {}
  void CheckBoxesChanged() override {}
  void BeginUpdate() override { ++open_; }
  void EndUpdate() override { --open_; }

 private:
  int& open_;
};

class ShellMenuTest : public ::testing::Test {
 protected:
  ShellMenuTest() { list.SetPeer(std::make_unique<OpenUpdates>(openUpdates)); }

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
  const TShellExtension& Extension(int row) { return *list.Data<TShellExtension>(row); }

  // A file type that the "New" menu offers, described by its program identifier.
  void Offer(const std::wstring& extension, const std::wstring& programId) {
    registry.Text(kRoot + extension, L"", programId)
        .Text(kRoot + extension + L"\\ShellNew", L"NullFile", L"")
        .Text(kRoot + programId, L"", L"About " + programId);
  }
  void OfferWithIcon(const std::wstring& extension, const std::wstring& specification) {
    Offer(extension, extension.substr(1));
    registry.Text(kRoot + extension.substr(1) + L"\\DefaultIcon", L"", specification);
  }

  TestPlatform test;
  MemoryRegistry& registry = test.registry;
  Texts& sendTo = test.files.entries[L"C:\\SendTo\\*.*"];
  Texts& iconRequests = test.shell.iconRequests;
  int openUpdates = 0;
  TListView list{L"list", nullptr, {}, {}};
  TImageList images{L"images"};
};

TEST_F(ShellMenuTest, ListsTheSevenCategoriesInTheirOrder) {
  registry.Text(kRoot + L"Drive\\shellex\\ContextMenuHandlers\\D", L"", L"{7}")
      .Text(kRoot + L"Folder\\shellex\\ContextMenuHandlers\\F", L"", L"{6}")
      .Text(kRoot + L"Directory\\shellex\\ContextMenuHandlers\\H", L"", L"{5}")
      .Text(kRoot + L"Directory\\shell\\v", L"", L"Show &it")
      .Text(kRoot + L"Directory\\shell\\v\\command", L"", L"show.exe")
      .Text(kRoot + kBin + L"b", L"", L"Shred")
      .Text(kRoot + kBin + L"b\\command", L"", L"shred.exe")
      .Text(kRoot + L"*\\shellex\\ContextMenuHandlers\\A", L"", L"{2}")
      .Text(kRoot + L"*\\shell\\open", L"", L"Open it")
      .Text(kRoot + L"*\\shell\\open\\Command", L"", L"o.exe");
  ScanExtensions();
  std::wstring rows;
  for (int row = 0; row < list.Count(); ++row) {
    const TListItem& item = list.Item(row);
    rows += item.caption + L"|" + item.subItems.at(0) + L"|" + Extension(row).Target + L"|" +
            Extension(row).KeyPath + L"|" + std::to_wstring(item.imageIndex) + L"\n";
  }
  EXPECT_EQ(rows,
            L"open|All Files(Shell)|o.exe|\\*\\shell\\open\\Command|5\n"
            L"A|All Files(ContextMenu)|{2}|\\*\\shellex\\ContextMenuHandlers\\A|0\n"
            L"Shred|Recycle Bin(ContextMenu)|shred.exe|\\" +
                kBin +
                L"b|3\n"
                L"Show &it|Directory(Shell)|show.exe|\\Directory\\shell\\v|4\n"
                L"H|Directory(ContextMenu)|{5}|\\Directory\\shellex\\ContextMenuHandlers\\H|4\n"
                L"F|Folder(ContextMenu)|{6}|\\Folder\\shellex\\ContextMenuHandlers\\F|1\n"
                L"D|Drive(ContextMenu)|{7}|\\Drive\\shellex\\ContextMenuHandlers\\D|2\n");
  EXPECT_EQ(openUpdates, 0);
  EXPECT_EQ(registry.opens, 7 + 9) << "seven parents, seven entries and two commands below theirs";

  RemoveShellKey(registry, Extension(0).KeyPath);
  EXPECT_FALSE(registry.Has(kRoot + L"*\\shell\\open\\Command"));
  EXPECT_EQ(registry.TextOf(kRoot + L"*\\shell\\open", L""), L"Open it");
  ScanExtensions();
  EXPECT_EQ(list.Count(), 7) << "a page with rows is not read again";
  Clear();
  ScanExtensions();
  EXPECT_EQ(list.Count(), 6);
}

TEST_F(ShellMenuTest, LeavesOutWhatIsNoEntryOrBelongsToWindows) {
  const std::wstring windowsOwn = L"{09799AFB-AD67-11D1-ABCD-00C04FC30936}";
  registry.Text(kRoot + L"*\\shell\\noCommand", L"", L"Text")
      .Text(kRoot + L"*\\shell\\" + windowsOwn + L"\\Command", L"", L"x.exe")
      .Text(kRoot + L"Directory\\shell\\prompt", L"", L"Prompt")
      .Text(kRoot + L"Directory\\shell\\prompt\\command", L"", L"cmd.exe /k \"cd %L\"")
      .Text(kRoot + kBin + L"silent\\Command", L"", L"only.exe")
      .Text(kRoot + kBin + L"textOnly", L"", L"Only text")
      .Text(kRoot + L"Directory\\shell\\noText\\command", L"", L"x.exe")
      .Text(kRoot + L"Directory\\shell\\noCommand", L"", L"Text")
      .Text(kRoot + L"Directory\\shell\\emptyCommand", L"", L"Text")
      .Key(kRoot + L"Directory\\shell\\emptyCommand\\command");
  // By name and class in the first and last group of handlers, by class alone in the others.
  for (const std::wstring parent : {L"*", L"Directory", L"Folder", L"Drive"}) {
    const std::wstring handlers = kRoot + parent + L"\\shellex\\ContextMenuHandlers\\";
    registry.Text(handlers + L"byClass", L"", windowsOwn)
        .Text(handlers + windowsOwn, L"", L"{" + parent + L"}")
        .Key(handlers + L"empty");
  }
  ScanExtensions();
  EXPECT_EQ(Captions(), (Texts{L"", L"Only text", L"Prompt", windowsOwn, windowsOwn}));
  EXPECT_EQ(Extension(0).Target, L"only.exe");
  EXPECT_EQ(Extension(1).Target, L"Only text") << "the verb's key stayed open";
  EXPECT_EQ(Extension(3).Target, L"{Directory}");
  EXPECT_EQ(Extension(4).Target, L"{Folder}");
}

TEST_F(ShellMenuTest, SurvivesBrokenKeysAndCreatesMissingParents) {
  const std::wstring handlers = kRoot + L"Folder\\shellex\\ContextMenuHandlers";
  registry.Integer(handlers + L"\\number", L"", 7)
      .Child(handlers, std::wstring(L"nul\0name", 8))
      .Child(handlers, std::wstring(1, L'\0'))
      .Text(handlers + L"\\ok", L"", L"{1}")
      .Text(handlers + L"\\denied", L"", L"{2}")
      .Integer(kRoot + kBin + L"number", L"", 7)
      .Text(kRoot + L"Drive\\shellex\\ContextMenuHandlers\\lost", L"", L"{3}");
  registry.Deny(kRoot + L"Drive\\shellex\\ContextMenuHandlers");
  registry.Deny(handlers + L"\\denied");
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
  registry.Text(kRoot + L".blank", L"", L"  ").Text(kRoot + L".blank\\ShellNew", L"NullFile", L"");
  registry.Text(kRoot + L".default", L"", L"b").Text(kRoot + L".default\\ShellNew", L"", L"x");
  // The type's own key counts although it is empty; the extension's is not looked at then.
  Offer(L".first", L"b");
  registry.Key(kRoot + L".first\\b\\ShellNew");
  registry.Text(kRoot + L".lost", L"", L"lost").Text(kRoot + L".lost\\ShellNew", L"Data", L"x");
  registry.Child(L"HKEY_CLASSES_ROOT", std::wstring(L".n\0l", 4));
  ScanNew();
  EXPECT_EQ(Captions(), (Texts{L"Type a", L"About b"}));
  EXPECT_EQ(list.Data<TNew>(0)->KeyPath, L"\\.a\\ShellNew");
  EXPECT_EQ(list.Data<TNew>(1)->KeyPath, L"\\.b\\b\\ShellNew");
  EXPECT_TRUE(list.Item(0).checked && list.Item(1).checked);
  ScanNew();
  EXPECT_EQ(list.Count(), 2);
}

TEST_F(ShellMenuTest, FindsTheIconThatASpecificationNames) {
  for (const auto* file : {L"C:\\i\\a.dll", L"C:\\i\\whole.ico", L"C:\\i\\odd,name.ico",
                           L"C:\\Windows\\system32\\sys.dll", L"D:\\Progs\\p.dll"}) {
    test.files.Add(file);
  }
  test.files.environment[L"%systemroot%"] = L"C:\\Windows";
  registry.Text(L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion",
                L"ProgramFilesDir", L"D:\\Progs");
  test.shell.noIcons = {L"C:\\i\\a.dll,99", L"C:\\Windows\\system32\\sys.dll,99",
                        L"D:\\Progs\\p.dll,99"};
  struct Case {
    std::wstring specification, icon;  // the last one asked for
    bool found = true;
  };
  for (const auto& [specification, icon, found] : std::initializer_list<Case>{
           {L"C:\\i\\a.dll,12", L"C:\\i\\a.dll,12"},
           {L"C:\\i\\a.dll,-3", L"C:\\i\\a.dll,-3"},
           {L"C:\\i\\a.dll,3", L"C:\\i\\a.dll,0"},
           {L"C:\\i\\a.dll,", L"C:\\i\\a.dll,0"},
           {L"C:\\i\\a.dll,  +3", L"C:\\i\\a.dll,3"},
           {L"C:\\i\\a.dll,-$1f", L"C:\\i\\a.dll,-31"},
           {L"C:\\i\\a.dll,word", L"C:\\i\\a.dll,0"},
           {L"C:\\i\\a.dll,2147483648", L"C:\\i\\a.dll,0"},
           {L"C:\\i\\a.dll,-2147483648", L"C:\\i\\a.dll,-2147483648"},
           {L"C:\\i\\a.dll,1,2", L"C:\\i\\a.dll,0"},
           {L"\"C:\\i\\a.dll\",12", L"C:\\i\\a.dll,12"},
           {L"\"C:\\i\\a.dll\"", L"C:\\i\\a.dll,0"},
           {L"C:\\i\\a.dll,99", kShellIcon + L"0"},
           {L"C:\\i\\whole.ico", L"type:C:\\i\\whole.ico"},
           {L"C:\\i\\odd,name.ico", L"type:C:\\i\\odd"},
           {L"sys.dll,-7", L"C:\\Windows\\system32\\sys.dll,-7"},
           {L"sys.dll,99", L"C:\\Windows\\system32\\sys.dll,99", false},
           {L"%SystemRoot%\\system32\\sys.dll,-3", L"C:\\Windows\\system32\\sys.dll,-3"},
           {L"%ProgramFiles%\\p.dll,-10", L"D:\\Progs\\p.dll,-10"},
           {L"%ProgramFiles%\\p.dll,99", L"D:\\Progs\\p.dll,99", false},
           {L"missing.dll,word", kShellIcon + L"0"},
           {L"", kShellIcon + L"0"}}) {
    SCOPED_TRACE(ToUtf8(specification));
    Clear();
    iconRequests = {L"none"};
    OfferWithIcon(L".x", specification);
    ScanNew();
    ASSERT_EQ(list.Count(), 1);
    EXPECT_EQ(iconRequests.back(), icon);
    EXPECT_EQ(list.Item(0).imageIndex, found ? images.Count() - 1 : -1);
    EXPECT_EQ(test.shell.iconsAlive, 0);
  }
}

TEST_F(ShellMenuTest, ExtractsEachIconOnceAndAddsAnImageForEachRow) {
  test.files.Add(L"C:\\Windows\\system32\\sys.dll");
  test.files.Add(L"C:\\i\\w.ico");
  const std::wstring specifications[] = {L"sys.dll,12", L"C:\\Windows\\System32\\SYS.dll,12",
                                         L"C:\\i\\w.ico", L"missing.dll"};
  OfferWithIcon(L".EXE", L"sys.dll,12");  // programs have an icon of the shell's
  for (int row = 0; row < 40; ++row) {
    OfferWithIcon(L".x" + std::to_wstring(100 + row), specifications[row % 4]);
  }
  ScanNew();
  ASSERT_EQ(list.Count(), 41);
  EXPECT_EQ(iconRequests, (Texts{kShellIcon + L"2", L"C:\\Windows\\system32\\sys.dll,12",
                                 L"type:C:\\i\\w.ico", kShellIcon + L"0"}));
  EXPECT_EQ(images.Count(), 41);
  for (int row = 0; row < 41; ++row) EXPECT_EQ(list.Item(row).imageIndex, row);
  EXPECT_EQ(images.StoredImage(40), images.StoredImage(4));
  EXPECT_EQ(images.StoredImage(2), images.StoredImage(1));
  EXPECT_NE(images.StoredImage(3), images.StoredImage(1));
  EXPECT_EQ(registry.opens, 1 + 4 + 40 * 5) << "the root and at most five keys for each type";
}

TEST_F(ShellMenuTest, EndsAtAMalformedIndexWithTheRowsBeforeItAndNoUpdateOpen) {
  test.files.Add(L"C:\\Windows\\system32\\sys.dll");
  OfferWithIcon(L".a", L"sys.dll,12");
  OfferWithIcon(L".b", L"sys.dll,word");
  OfferWithIcon(L".c", L"sys.dll,13");
  try {
    ScanNew();
    FAIL() << "no error";
  } catch (const TError& error) {
    EXPECT_EQ(error.Detail(), L"word");
  }
  EXPECT_EQ(Captions(), (Texts{L"About a"}));
  EXPECT_EQ(openUpdates, 0);
}

TEST_F(ShellMenuTest, ListsEveryEntryOfTheFolderUnderItsNameWithoutExtension) {
  // What follows the blank and hyphen is taken for arguments, so that no extension is left.
  sendTo = {L".",         L"..",         L"desktop.ini", L"Mail Recipient.MAPIMail",
            L"a.lnk.lnk", L"a.lnkb.lnk", L"Folder",      L"two -x.lnk",
            L"A.LNK"};
  test.shell.noIcons = {L"type:Folder"};
  ScanSend();
  EXPECT_EQ(Captions(),
            (Texts{L"desktop", L"Mail Recipient", L"a", L"ab", L"Folder", L"two -x", L"A"}));
  EXPECT_EQ(list.Data<TSendTo>(2)->FilePath, L"C:\\SendTo\\a.lnk.lnk");
  EXPECT_EQ(test.display.pumped, 9);
  EXPECT_EQ(iconRequests, (Texts{L"type:desktop.ini", L"type:Mail Recipient.MAPIMail",
                                 L"type:a.lnk.lnk", L"type:Folder"}));
  EXPECT_EQ(list.Item(5).imageIndex, -1);
  EXPECT_EQ(images.Count(), 5);
  EXPECT_EQ(images.StoredImage(list.Item(6).imageIndex), images.StoredImage(2));
  EXPECT_TRUE(list.Item(6).checked);
  EXPECT_EQ(openUpdates, 0);
  EXPECT_EQ(test.shell.iconsAlive, 0);
  ScanSend();
  EXPECT_EQ(list.Count(), 7);
}

TEST_F(ShellMenuTest, AllowsClicksInTheMiddleOfTheFolder) {
  sendTo = {L".", L"a.x", L"b.x", L"c.x"};
  test.display.onProcessMessages = [this] {
    if (test.display.pumped == 1) ScanSend();      // a second click before the first row
    if (test.display.pumped == 8) list.Delete(0);  // a row goes while others come
  };
  ScanSend();
  EXPECT_EQ(Captions(), (Texts{L"a", L"b", L"c"}));
  EXPECT_EQ(test.display.pumped, 5);
  Clear();
  ScanSend();
  EXPECT_EQ(Captions(), (Texts{L"b", L"c"}));
  EXPECT_EQ(openUpdates, 0);
}

TEST_F(ShellMenuTest, LeavesTheUpdateOpenWithoutAFolder) {
  ScanSendTo(test.platform, list, images, L"");
  EXPECT_EQ(openUpdates, 1);
}

}  // namespace
}  // namespace tarvelin::testing
