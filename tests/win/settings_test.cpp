// The settings page and its dialog, held against what they leave in the registry.
#include <gtest/gtest.h>

#include <optional>
#include <set>

#include "settings/settings.h"
#include "tests/win/driver.h"
#include "tests/win/driver_registry.h"

namespace tarvelin::testing {
namespace {

const std::wstring kUser = L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\";
const std::wstring kMachine = L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\";
constexpr wchar_t kPage[] = L"IE Settings", kRestore[] = L"Use Default Settings";
constexpr wchar_t kDone[] = L"Restore successfully!";
// Rows of the page.
constexpr int kStart = 0, kSearchUrl = 6, kStartAllUsers = 7, kDefaultSearchAllUsers = 12;
constexpr int kSearchUrlAllUsers = 13, kCustomizeSearch = 14, kRows = 22;

// How a dump of the registry shows a row's value, by default a restored one.
std::wstring Line(int row, std::optional<std::wstring_view> text = {}) {
  const TWatchedSetting& setting = WatchedSettings()[static_cast<std::size_t>(row)];
  const RegistryLocation location{setting.root, std::wstring(setting.keyPath),
                                  std::wstring(setting.valueName)};
  return location.Text() + L"=1:" + std::wstring(text.value_or(setting.defaultValue));
}

class SettingsTest : public ::testing::Test {
 protected:
  // Two of the keys exist: the user's start page is hijacked, the machine's pages are gone.
  SettingsTest() {
    for (const wchar_t* key : {L"Main", L"SearchUrl", L"Search", L"AboutURLs"}) {
      DeleteKey(kUser + key);
      DeleteKey(kMachine + key);
    }
    WriteText(kUser + L"Main", L"Start Page", L"hijacked");
    WriteText(kUser + L"Main", L"Window Title", L"stays");
    MakeKey(kMachine + L"Main");
    user_ = DumpRegistry(L"HKEY_CURRENT_USER\\Software");
    machine_ = DumpRegistry(L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer");
    app_.emplace();
  }
  [[nodiscard]] std::set<std::wstring> Changes() const {
    std::set<std::wstring> changes;
    for (const Lines& before : {user_, machine_}) {
      for (const auto& line : Differences(before, DumpRegistry(before.front()))) {
        // Wine itself notes there how the screen of the run is set up.
        if (line.find(L"\\Software\\Wine\\") == line.npos) changes.insert(line);
      }
    }
    return changes;
  }
  // Restores the checked rows; returns the box that reports on it.
  Box Restore() {
    app_->Click(kRestore);
    EXPECT_EQ(app_->Answer(IDYES).caption, L"Confirm");
    return app_->Answer(IDOK);
  }
  // Opens the dialog, which was closed, for a row and types a text; returns the dialog.
  HWND Type(int row, std::wstring_view text) {
    EXPECT_EQ(app_->Modal(), nullptr);
    app_->Select(row);
    app_->Click(L"Modify Settings");
    HWND edit = FindControl(app_->Modal(), L"Edit", L"");
    EXPECT_EQ(TextOf(edit), L"");
    EXPECT_EQ(app_->Focused(), edit);
    SetText(edit, text);
    return app_->Modal();
  }
  [[nodiscard]] std::wstring Shown(int row) const {
    return app_->Rows().at(static_cast<std::size_t>(row)).at(1);
  }
  // Whether "Select All" and all rows have that mark.
  [[nodiscard]] bool AllMarked(bool mark) const {
    const HWND list = app_->List();
    const LRESULT state = INDEXTOSTATEIMAGEMASK(mark ? 2 : 1);
    bool all = SendMessageW(app_->Button(L"Select All"), BM_GETCHECK, 0, 0) == (mark ? 1 : 0);
    for (WPARAM row = 0; row < kRows; ++row) {
      all &= SendMessageW(list, LVM_GETITEMSTATE, row, LVIS_STATEIMAGEMASK) == state;
    }
    return all;
  }

  Lines user_, machine_;  // before
  std::optional<Program> app_;
};

TEST_F(SettingsTest, RestoresWhatIsCheckedAndNothingElse) {
  auto rows = app_->Open(kPage);
  ASSERT_EQ(rows.size(), std::size_t{kRows});
  EXPECT_EQ(rows[kStartAllUsers][0], L"Start Page(All Users)");
  EXPECT_FALSE(app_->Enabled(kRestore));
  app_->Check(kStart, true);
  EXPECT_EQ(Restore().text, kDone);
  std::set expected{L"- " + Line(kStart, L"hijacked"), L"+ " + Line(kStart)};
  EXPECT_EQ(Changes(), expected);

  for (const int row : {kSearchUrl, kDefaultSearchAllUsers, kSearchUrlAllUsers}) {
    app_->Check(row, true);
    expected.insert(L"+ " + Line(row));
  }
  for (const auto& root : {kUser, kMachine}) expected.insert(L"+ " + root + L"SearchUrl");
  EXPECT_EQ(Restore().text, kDone);
  EXPECT_EQ(Changes(), expected);
  const std::wstring blank = L" http://home.microsoft.com/search/search.asp";
  EXPECT_EQ(ReadText(kMachine + L"Main", L"Default_Search_URL"), blank);
  EXPECT_EQ(Shown(kDefaultSearchAllUsers), blank);

  app_->Click(L"Select All");
  app_->Click(kRestore);
  const Box question = app_->Answer(IDNO);
  EXPECT_EQ(question.buttons, (std::vector<int>{IDYES, IDNO}));
  EXPECT_TRUE(question.icon);
  EXPECT_EQ(app_->Modal(), nullptr);
  EXPECT_EQ(Changes(), expected);
  EXPECT_TRUE(AllMarked(true));

  EXPECT_EQ(Restore().text, kDone);
  rows = app_->Rows();
  for (int row = 0; row < kRows; ++row) {
    expected.insert(L"+ " + Line(row));
    EXPECT_EQ(Line(row, rows[static_cast<std::size_t>(row)][1]), Line(row));
  }
  for (const auto* key : {L"Search", L"AboutURLs"}) expected.insert(L"+ " + kMachine + key);
  EXPECT_EQ(Changes(), expected);
  EXPECT_TRUE(AllMarked(false));
  EXPECT_FALSE(app_->Enabled(kRestore));
}

TEST_F(SettingsTest, RowsOfDeniedKeysStayAsTheyAre) {
  app_->Open(kPage);
  for (const int row : {kStart, kStartAllUsers, kCustomizeSearch}) app_->Check(row, true);
  {
    const AccessRule noAccess(kUser + L"Main", kNoAccess);
    const AccessRule readOnly(kMachine + L"Main", kReadOnly);
    EXPECT_EQ(Restore().text, kDone);
    EXPECT_FALSE(app_->Checked(kCustomizeSearch));
    const Box failed = Restore();
    EXPECT_EQ(failed.text, L"No items selected!");
    EXPECT_EQ(failed.caption, L"Tarvelin");
    EXPECT_EQ(failed.buttons, std::vector<int>{IDOK});
    EXPECT_TRUE(failed.icon);
  }
  EXPECT_TRUE(app_->Checked(kStart) && app_->Checked(kStartAllUsers));
  EXPECT_EQ(Shown(kStart), L"hijacked");
  EXPECT_EQ(Changes(), (std::set{L"+ " + kMachine + L"Search", L"+ " + Line(kCustomizeSearch)}));
}

TEST_F(SettingsTest, TheDialogWritesWhenConfirmedOnly) {
  app_->Open(kPage);
  const HWND dialog = Type(kStart, L"typed");
  app_->Press(VK_TAB);  // the next showing must not start where this one ends
  app_->Press(VK_ESCAPE);
  Type(kStart, L"typed");
  app_->Act(dialog, WM_SYSCOMMAND, SC_CLOSE);
  EXPECT_TRUE(Changes().empty());

  Type(kStart, L"  res://mshtml.dll/blank.htm  ");
  app_->Press(VK_RETURN);
  EXPECT_EQ(Shown(kStart), L"  res://mshtml.dll/blank.htm  ");
  Type(kSearchUrl, L"");
  app_->Act(FindControl(dialog, L"Button", L"OK"), BM_CLICK);
  EXPECT_EQ(app_->Modal(), nullptr);
  EXPECT_EQ(Changes(), (std::set{L"- " + Line(kStart, L"hijacked"), L"+ " + kUser + L"SearchUrl",
                                 L"+ " + Line(kStart, L"res://mshtml.dll/blank.htm"),
                                 L"+ " + Line(kSearchUrl, L"")}));
}

TEST_F(SettingsTest, WithoutARowTheDialogComplainsOnceAndStays) {
  app_->Open(kPage);
  app_->Act(app_->List(), LVM_ENSUREVISIBLE, kRows - 1);  // makes room below the last row
  app_->DoubleClick(-1);
  ASSERT_EQ(app_->Selected(), -1);
  const HWND dialog = app_->Modal();
  for (const bool byKey : {false, true}) {
    byKey ? app_->Press(VK_RETURN) : app_->Act(FindControl(dialog, L"Button", L"OK"), BM_CLICK);
    const Box box = app_->Answer(IDOK);
    EXPECT_EQ(box.caption, L"Tarvelin");
    EXPECT_NE(box.text.find(L"No setting is selected."), std::wstring::npos);
    app_->Press(VK_SHIFT);  // once this has been handled a second box would be open
    ASSERT_EQ(app_->Modal(), dialog);
  }
  app_->Act(dialog, WM_CLOSE);
  EXPECT_EQ(app_->Modal(), nullptr);
}

TEST_F(SettingsTest, AValueThatIsNoTextKeepsThePageShut) {
  WriteInteger(kMachine + L"AboutURLs", L"PostNotCached", 1);
  const HWND former = app_->List();
  app_->Click(kPage);
  const Box box = app_->Answer(IDOK);
  EXPECT_EQ(box.caption, L"Tarvelin");
  EXPECT_NE(box.text.find(L"PostNotCached"), std::wstring::npos);
  EXPECT_EQ(app_->List(), former);
  WriteText(kMachine + L"AboutURLs", L"PostNotCached", L"mended");
  EXPECT_EQ(app_->Open(kPage).at(kRows - 1).at(1), L"mended");
}

TEST_F(SettingsTest, ShowsAndWritesOddTextsAsTheyAre) {
  const wchar_t* const names[] = {L"Start Page", L"Search Page", L"Default_Page_URL"};
  const std::wstring texts[] = {std::wstring(32767, L'x'), L"one\r\ntwo\n\"%s\" & &amp; %1|'q'\\",
                                L"\x202E\x05D0\x05D1.htm\x202C"};
  for (int i = 0; i < 3; ++i) WriteText(kUser + L"Main", names[i], texts[i]);
  app_->Open(kPage);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Shown(kStart + i), texts[i]);
    Type(kStartAllUsers + i, texts[i]);
    app_->Press(VK_RETURN);
    EXPECT_EQ(Shown(kStartAllUsers + i), texts[i]);
    EXPECT_EQ(ReadText(kMachine + L"Main", names[i]), texts[i]);
  }
}

}  // namespace
}  // namespace tarvelin::testing
