#include "settings/settings.h"

#include <gtest/gtest.h>

#include "addons/UnitIEBrowserHelp.h"
#include "settings/UnitChangeSetting.h"
#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

const std::wstring kUser = L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\";
const std::wstring kMachine = L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\";

class Settings : public ::testing::Test {
 protected:
  Settings() {
    registry_.Text(kUser + L"Main", L"Start Page", L"hijacked")
        .Text(kUser + L"Main", L"Window Title", L"stays");
  }
  std::wstring Shown(int row) { return list_.Item(row).subItems.at(0); }

  TestPlatform world_;
  MemoryRegistry& registry_ = world_.registry;
  EnglishMessages messages_;
  TScanIeBrowser scanner_{world_.platform, messages_, {}};
  TListView list_{L"lvHijack", nullptr, {}, {{L"Name", 200}, {L"Current Settings", 315}}};
};

TEST_F(Settings, AreShownAsTheyAreOnceAllCanBeRead) {
  registry_.Integer(kMachine + L"AboutURLs", L"PostNotCached", 1);
  EXPECT_THROW(scanner_.ScanIeSettings(list_), TRegistryError);
  EXPECT_EQ(list_.Count(), 0);
  registry_.Text(kMachine + L"AboutURLs", L"PostNotCached", L"p")
      .Text(kMachine + L"Main", L"", L"unnamed of another key")
      .Text(kUser + L"SearchUrl", L"", L"search %s")
      .Value(kMachine + L"AboutURLs", L"blank", kRegExpandSz, ToUtf16Le(L"%windir%\\b.htm"));
  const auto before = registry_.Dump();
  registry_.opens = 0;
  scanner_.ScanIeSettings(list_);
  EXPECT_EQ(registry_.Dump(), before);
  EXPECT_LE(registry_.opens, 6) << "one for each key, however many settings it holds";
  EXPECT_EQ(list_.Item(7).caption, L"Start Page(All Users)");
  EXPECT_EQ(list_.Item(16).caption, L"Blank Page");
  EXPECT_EQ(Shown(0), L"hijacked");
  EXPECT_EQ(Shown(6), L"search %s");
  EXPECT_EQ(Shown(16), L"%windir%\\b.htm");
  EXPECT_EQ(Shown(21), L"p");
  EXPECT_EQ(Shown(13), L"") << "the key is missing; the value of the one before is not its";
  scanner_.ScanIeSettings(list_);
  EXPECT_EQ(list_.Count(), 22);
}

TEST_F(Settings, AreRestoredToTheirDefaultsAndNothingElseIs) {
  MemoryRegistry expected;
  expected.Text(kUser + L"Main", L"Window Title", L"stays");
  for (const TWatchedSetting& setting : WatchedSettings()) {
    expected.Text(RegistryLocation{setting.root, std::wstring(setting.keyPath), {}}.Text(),
                  setting.valueName, setting.defaultValue);
  }
  const std::wstring search = L"http://home.microsoft.com/search/search.asp";
  EXPECT_EQ(expected.TextOf(kUser + L"Main", L"Default_Search_URL"), search);
  EXPECT_EQ(expected.TextOf(kMachine + L"Main", L"Default_Search_URL"), L" " + search);
  EXPECT_EQ(expected.TextOf(kMachine + L"SearchUrl", L""),
            L"http://home.microsoft.com/access/autosearch.asp?p=%s");

  scanner_.ScanIeSettings(list_);
  EXPECT_EQ(scanner_.RestoreSettings(list_), 0);
  EXPECT_EQ(Shown(0), L"hijacked");
  for (int row = 0; row < 22; ++row) list_.SetChecked(row, true);
  EXPECT_EQ(scanner_.RestoreSettings(list_), 22);
  EXPECT_EQ(registry_.Dump(), expected.Dump());
  EXPECT_EQ(Shown(12), L" " + search);
  for (int row = 0; row < 22; ++row) EXPECT_FALSE(list_.Item(row).checked);
}

TEST_F(Settings, StayAsTheyAreWhereTheyCannotBeWritten) {
  scanner_.ScanIeSettings(list_);
  for (const int row : {0, 6}) list_.SetChecked(row, true);
  registry_.refusesText = true;
  EXPECT_EQ(scanner_.RestoreSettings(list_), 0);
  registry_.refusesText = false;
  EXPECT_TRUE(list_.Item(0).checked);
  EXPECT_TRUE(list_.Item(6).checked);
  registry_.DenyWriting(kUser + L"Main");
  EXPECT_EQ(scanner_.RestoreSettings(list_), 1);
  EXPECT_TRUE(list_.Item(0).checked);
  EXPECT_FALSE(list_.Item(6).checked);
  EXPECT_EQ(Shown(0), L"hijacked");
  EXPECT_EQ(registry_.TextOf(kUser + L"Main", L"Start Page"), L"hijacked");
}

class ChangeDialog : public Settings {
 protected:
  ChangeDialog() { scanner_.ScanIeSettings(list_); }
  // Shows the dialog for a row and types into it.
  void Show(int row, std::wstring_view typed) {
    list_.SetSelectedIndex(row);
    form_.ShowModal();
    EXPECT_EQ(form_.edtValue->Text(), L"");
    form_.edtValue->UserTyped(typed);
  }
  void Key(std::uintptr_t key) { form_.ApplicationEvents1Message({7, kKeyDownMessage, key}); }

  int translations_ = 0;
  TFormChange form_{world_.platform, list_, [this] { ++translations_; }};
};

TEST_F(ChangeDialog, WritesTrimmedAndShowsAsTypedWhenConfirmed) {
  const auto before = registry_.Dump();
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
  EXPECT_EQ(registry_.Dump(), before);
  EXPECT_EQ(Shown(0), L"hijacked");

  Show(0, L"  \"%s\"&\x202E\t ");
  form_.btnOK->Click();
  EXPECT_FALSE(form_.Visible());
  EXPECT_EQ(Shown(0), L"  \"%s\"&\x202E\t ");
  EXPECT_EQ(registry_.TextOf(kUser + L"Main", L"Start Page"), L"\"%s\"&\x202E");
  Show(6, L" ");
  Key(kReturnKey);
  EXPECT_EQ(registry_.TextOf(kUser + L"SearchUrl", L""), L"");
  EXPECT_EQ(translations_, 4);
}

TEST_F(ChangeDialog, FailuresAreSilentButAMissingRowIsNot) {
  registry_.Deny(kMachine + L"Main");
  const auto before = registry_.Dump();
  Show(7, L"typed");
  Key(kReturnKey);
  EXPECT_FALSE(form_.Visible());
  EXPECT_EQ(Shown(7), L"typed") << "although it was not written";

  registry_.refusesText = true;
  Show(0, L"typed");
  form_.btnOK->Click();
  EXPECT_FALSE(form_.Visible());
  EXPECT_EQ(Shown(0), L"hijacked");

  Show(-1, L"typed");
  EXPECT_THROW(Key(kReturnKey), TError);
  EXPECT_TRUE(form_.Visible());
  EXPECT_EQ(registry_.Dump(), before);
}

}  // namespace
}  // namespace tarvelin::testing
