#include <gtest/gtest.h>

#include "addons/UnitIEBrowserHelp.h"
#include "settings/UnitChangeSetting.h"
#include "settings/settings.h"
#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

const std::wstring kUser = L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\";
const std::wstring kMachine = L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\";

// Opens keys, and refuses to write into them.
class UnwritableRegistry : public RegistryBackend {
 public:
  explicit UnwritableRegistry(MemoryRegistry& memory) : memory_(memory) {}
  std::unique_ptr<RegistryKey> Open(RootKey root, const RegistryKey* base, const std::wstring& path,
                                    RegistryAccess) override {
    return memory_.Open(root, base, path, RegistryAccess::Read);
  }
  std::unique_ptr<RegistryKey> Create(RootKey root, const RegistryKey* base,
                                      const std::wstring& path) override {
    return memory_.Open(root, base, path, RegistryAccess::Read);
  }
  bool RemoveTree(RootKey, const RegistryKey*, const std::wstring&) override { return false; }

 private:
  MemoryRegistry& memory_;
};

class Settings : public ::testing::Test {
 protected:
  std::wstring Shown(int row) { return list_.Item(row).subItems.at(0); }
  void Check(std::initializer_list<int> rows) {
    for (const int row : rows) list_.SetChecked(row, true);
  }

  TestPlatform world_;
  EnglishMessages messages_;
  TScanIeBrowser scanner_{world_.platform, messages_, {}};
  TListView list_{L"lvHijack", nullptr, {}, {{L"Name", 200}, {L"Current Settings", 315}}};
};

TEST_F(Settings, ScanShowsWhatIsThereAsItIs) {
  const std::wstring hostile = L"\x202E\"%s\" & <a>|b\r\n" + std::wstring(32'000, L'x');
  world_.registry.Text(kUser + L"Main", L"Start Page", hostile)
      .Text(kMachine + L"Main", L"", L"unnamed of another key")
      .Text(kUser + L"SearchUrl", L"", L"search %s")
      .Value(kMachine + L"AboutURLs", L"blank", kRegExpandSz, ToUtf16Le(L"%windir%\\b.htm"));
  const auto before = world_.registry.Dump();
  scanner_.ScanIeSettings(list_);
  EXPECT_EQ(world_.registry.Dump(), before);
  EXPECT_EQ(world_.registry.opens, 6);  // one for each key

  ASSERT_EQ(list_.Count(), 22);
  EXPECT_TRUE(list_.CheckBoxes());
  EXPECT_EQ(Shown(0), hostile);
  EXPECT_EQ(Shown(6), L"search %s");
  EXPECT_EQ(Shown(13), L"");  // the key is missing; the value of the one before is not its
  EXPECT_EQ(Shown(16), L"%windir%\\b.htm");
  EXPECT_EQ(list_.Item(7).caption, L"Start Page(All Users)");
  EXPECT_EQ(list_.Item(16).caption, L"Blank Page");
  for (int row = 0; row < 22; ++row) EXPECT_FALSE(list_.Item(row).checked);

  world_.registry.Text(kUser + L"Main", L"Start Page", L"changed by another program");
  scanner_.ScanIeSettings(list_);
  EXPECT_EQ(list_.Count(), 22);
  EXPECT_EQ(Shown(0), hostile);
}

TEST_F(Settings, AValueThatIsNoTextEndsTheScan) {
  world_.registry.Integer(kMachine + L"AboutURLs", L"PostNotCached", 1);
  try {
    scanner_.ScanIeSettings(list_);
    FAIL() << "no error";
  } catch (const TRegistryError& error) {
    EXPECT_NE(error.Detail().find(L"PostNotCached"), std::wstring::npos);
  }
  EXPECT_EQ(list_.Count(), 0);
  world_.registry.Text(kMachine + L"AboutURLs", L"PostNotCached", L"p");
  scanner_.ScanIeSettings(list_);
  EXPECT_EQ(Shown(21), L"p");
}

TEST_F(Settings, RestoringAllWritesTheseValuesAndNoOthers) {
  world_.registry.Text(kUser + L"Main", L"Start Page", L"hijacked")
      .Text(kUser + L"Main", L"Window Title", L"stays");
  MemoryRegistry expected;
  const std::wstring home = L"http://home.microsoft.com/";
  const std::wstring assistant = L"http://ie.search.msn.com/{SUB_RFC1766}/srchasst/";
  for (const auto& explorer : {kUser, kMachine}) {
    const std::wstring main = explorer + L"Main";
    const std::wstring redirect = L"http://www.microsoft.com/isapi/redir.dll?prd=ie&";
    expected.Text(main, L"Start Page", L"http://www.msn.com")
        .Text(main, L"Search Page", redirect + L"ar=iesearch")
        .Text(main, L"Default_Page_URL", redirect + L"pver=6&ar=msnhome")
        .Text(main, L"Local Page", L"C:\\WINDOWS\\system32\\blank.htm")
        .Text(main, L"Search Bar", home + L"search/lobby/search.asp")
        .Text(explorer + L"SearchUrl", L"", home + L"access/autosearch.asp?p=%s");
  }
  expected.Text(kUser + L"Main", L"Window Title", L"stays")
      .Text(kUser + L"Main", L"Default_Search_URL", home + L"search/search.asp")
      .Text(kMachine + L"Main", L"Default_Search_URL", L" " + home + L"search/search.asp")
      .Text(kMachine + L"Search", L"CustomizeSearch", assistant + L"srchcust.htm")
      .Text(kMachine + L"Search", L"SearchAssistant", assistant + L"srchasst.htm");
  const std::wstring about = kMachine + L"AboutURLs";
  expected.Text(about, L"blank", L"res://mshtml.dll/blank.htm")
      .Text(about, L"DesktopItemNavigationFailure", L"res://shdoclc.dll/navcancl.htm")
      .Text(about, L"NavigationCanceled", L"res://shdoclc.dll/navcancl.htm")
      .Text(about, L"NavigationFailure", L"res://shdoclc.dll/navcancl.htm")
      .Text(about, L"OfflineInformation", L"res://shdoclc.dll/offcancl.htm")
      .Text(about, L"PostNotCached", L"res://mshtml.dll/repost.htm");

  scanner_.ScanIeSettings(list_);
  EXPECT_EQ(scanner_.RestoreSettings(list_), 0);
  EXPECT_EQ(Shown(0), L"hijacked");
  for (int row = 0; row < 22; ++row) Check({row});
  EXPECT_EQ(scanner_.RestoreSettings(list_), 22);
  EXPECT_EQ(world_.registry.Dump(), expected.Dump());
  EXPECT_EQ(Shown(12), L" " + home + L"search/search.asp");
  for (int row = 0; row < 22; ++row) EXPECT_FALSE(list_.Item(row).checked);
}

TEST_F(Settings, ASettingThatCannotBeWrittenIsSkipped) {
  world_.registry.Text(kUser + L"Main", L"Start Page", L"hijacked").Key(kMachine + L"Main");
  scanner_.ScanIeSettings(list_);
  Check({0, 6, 12, 14});
  world_.registry.DenyWriting(kUser + L"Main");
  world_.registry.Deny(kMachine + L"Main");
  EXPECT_EQ(scanner_.RestoreSettings(list_), 2);
  EXPECT_TRUE(list_.Item(0).checked);
  EXPECT_EQ(Shown(0), L"hijacked");
  EXPECT_EQ(world_.registry.TextOf(kUser + L"Main", L"Start Page"), L"hijacked");
  EXPECT_FALSE(list_.Item(6).checked);
  EXPECT_TRUE(list_.Item(12).checked);
  EXPECT_TRUE(world_.registry.TextOf(kMachine + L"Search", L"CustomizeSearch").has_value());

  // The key opens, and every write then fails.
  UnwritableRegistry unwritable(world_.registry);
  TPlatform platform{unwritable,   world_.files,  world_.modules,   world_.shell,
                     world_.boxes, world_.editor, world_.resources, world_.display};
  Check({6, 14});
  EXPECT_EQ(TScanIeBrowser(platform, messages_, {}).RestoreSettings(list_), 0);
  EXPECT_TRUE(list_.Item(6).checked);
}

TEST(SettingNames, PutTheTranslatedSuffixRightBehindTheName) {
  struct Reversed : MessageLookup {
    std::wstring Message(std::wstring_view, std::wstring_view english) const override {
      return {english.rbegin(), english.rend()};
    }
  };
  EXPECT_EQ(DisplayName(WatchedSettings()[7], Reversed()), L"egaP tratS(sresU llA)");
}

class ChangeDialog : public Settings {
 protected:
  ChangeDialog() {
    world_.registry.Text(kUser + L"Main", L"Start Page", L"before");
    scanner_.ScanIeSettings(list_);
    expected_.Text(kUser + L"Main", L"Start Page", L"before");
  }
  // Shows the dialog for a row and types into it.
  void Show(int row, std::wstring_view typed) {
    list_.SetSelectedIndex(row);
    form_.ShowModal();
    form_.edtValue->UserTyped(typed);
  }
  void Key(std::uintptr_t key) { form_.ApplicationEvents1Message({7, kKeyDownMessage, key}); }

  MemoryRegistry expected_;
  int translations_ = 0;
  TFormChange form_{world_.platform, list_, [this] { ++translations_; }};
};

TEST_F(ChangeDialog, WritesTrimmedAndShowsAsTyped) {
  const std::wstring typed = L"  res://x/\"%s\"&\x202E\t ";
  Show(0, typed);
  form_.btnOK->Click();
  EXPECT_FALSE(form_.Visible());
  EXPECT_EQ(Shown(0), typed);
  Show(6, L"unnamed");
  Key(kReturnKey);
  EXPECT_FALSE(form_.Visible());
  Show(17, L" ");
  Key(kReturnKey);
  expected_.Text(kUser + L"Main", L"Start Page", L"res://x/\"%s\"&\x202E")
      .Text(kUser + L"SearchUrl", L"", L"unnamed")
      .Text(kMachine + L"AboutURLs", L"DesktopItemNavigationFailure", L"");
  EXPECT_EQ(world_.registry.Dump(), expected_.Dump());
}

TEST_F(ChangeDialog, WritesOnlyWhenConfirmed) {
  Show(0, L"typed");
  Key(L'A');
  form_.ApplicationEvents1Message({7, kKeyDownMessage + 1, kReturnKey});  // the key goes up
  form_.ApplicationEvents1Message({~std::uintptr_t{0}, kKeyDownMessage, kReturnKey});  // nobody's
  EXPECT_TRUE(form_.Visible());
  Key(kEscapeKey);
  EXPECT_FALSE(form_.Visible());
  Key(kReturnKey);  // hidden: the key belongs to the main window
  Show(0, L"typed");
  form_.btnCancel->Click();
  EXPECT_FALSE(form_.Visible());
  EXPECT_EQ(world_.registry.Dump(), expected_.Dump());
  EXPECT_EQ(Shown(0), L"before");
}

TEST_F(ChangeDialog, OpensEmptyTranslatedAndFocused) {
  struct Peer : ControlPeer {
    explicit Peer(int& count) : focused(count) {}
    void Changed(Change change) override { focused += change == Change::Focus ? 1 : 0; }
    int& focused;
  };
  int focused = 0;
  form_.edtValue->SetPeer(std::make_unique<Peer>(focused));
  Show(0, L"typed");
  form_.Close();
  form_.ShowModal();
  EXPECT_EQ(form_.edtValue->Text(), L"");
  EXPECT_EQ(focused, 2);
  EXPECT_EQ(translations_, 2);
}

TEST_F(ChangeDialog, FailuresAreSilentButAMissingRowIsNot) {
  world_.registry.Deny(kMachine + L"Main");
  expected_.Deny(kMachine + L"Main");
  Show(7, L"typed");
  Key(kReturnKey);
  EXPECT_FALSE(form_.Visible());
  EXPECT_EQ(Shown(7), L"typed");  // although it was not written

  Show(-1, L"typed");
  EXPECT_THROW(Key(kReturnKey), TError);
  EXPECT_TRUE(form_.Visible());
  EXPECT_EQ(world_.registry.Dump(), expected_.Dump());

  UnwritableRegistry unwritable(world_.registry);
  TPlatform platform{unwritable,   world_.files,  world_.modules,   world_.shell,
                     world_.boxes, world_.editor, world_.resources, world_.display};
  TFormChange unable(platform, list_, [] {});
  list_.SetSelectedIndex(0);
  unable.ShowModal();
  unable.edtValue->UserTyped(L"typed");
  unable.btnOK->Click();
  EXPECT_FALSE(unable.Visible());
  EXPECT_EQ(Shown(0), L"before");
}

}  // namespace
}  // namespace tarvelin::testing
