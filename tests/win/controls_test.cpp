// Components in real windows that nobody sees.
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "app/application.h"
#include "common/handles_win.h"
#include "tests/support/form_driver.h"
#include "widgets/peers_win.h"

namespace tarvelin::testing {
namespace {

class ListTest : public ::testing::Test {
 protected:
  ListTest() {
    for (const wchar_t* name : {L"Adder", L"bee", L"Badger", L"Cat"}) Add(name);
    AttachPeers(form_, context_, {});
    list_.OnSelectItem = [this] { selections_.push_back(list_.SelectedIndex()); };
    list_.OnItemChecked = [this] { ++checks_; };
  }
  ~ListTest() override { form_.SetPeer(nullptr); }

  void Add(std::wstring name) { list_.Add({std::move(name), {L"x"}, -1, false, nullptr}); }

  LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
    return SendMessageW(WindowOf(list_), message, wParam, lParam);
  }
  void SetState(int row, UINT state, UINT mask) const {
    LVITEMW item{};
    item.state = state;
    item.stateMask = mask;
    Send(LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
  }
  [[nodiscard]] LRESULT RowWith(UINT flag) const {
    return Send(LVM_GETNEXTITEM, static_cast<WPARAM>(-1), static_cast<LPARAM>(flag));
  }
  [[nodiscard]] std::wstring Text(int row, int column) const {
    wchar_t text[20] = L"";
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text;
    item.cchTextMax = 20;
    Send(LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    return text;
  }
  [[nodiscard]] RECT Place(int row) const {
    RECT place{LVIR_BOUNDS, 0, 0, 0};
    Send(LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
    return place;
  }

  MessageLoop loop_;
  FakeBoxes boxes_;
  TApplication application_{boxes_, L"List"};
  PeerContext context_{GetModuleHandleW(nullptr), loop_, application_, nullptr, nullptr};
  TForm form_{L"FormList", 600, 400, L"List"};
  TListView& list_ =
      form_.Create<TListView>(L"list", &form_, TRect{0, 0, 600, 300},
                              std::vector<TListColumn>{{L"Name", 200}, {L"Path", 100}});
  std::vector<int> selections_;
  int checks_ = 0;
};

TEST_F(ListTest, ShowsTheRowsAndTellsWhichIsSelected) {
  list_.BeginUpdate();
  Add(L"Dingo");
  EXPECT_EQ(Send(LVM_GETITEMCOUNT), 4) << "nothing is shown while a scan fills the list";
  list_.EndUpdate();
  EXPECT_EQ(Send(LVM_GETITEMCOUNT), 5);
  list_.SetSubItem(4, 0, L"y");
  EXPECT_EQ(Text(4, 0), L"Dingo");
  EXPECT_EQ(Text(4, 1), L"y");

  const UINT selected = LVIS_SELECTED | LVIS_FOCUSED;
  SetState(1, selected, selected);
  SetState(2, selected, selected);
  SetState(-1, 0, LVIS_SELECTED);
  EXPECT_EQ(selections_, (std::vector<int>{1, 2, -1}));
  list_.SetSelectedIndex(4);
  EXPECT_EQ(RowWith(LVNI_SELECTED), 4);
}

TEST_F(ListTest, LeavesTheFocusWhereARowWasDeleted) {
  list_.SetSelectedIndex(2);
  list_.Delete(0);
  EXPECT_EQ(RowWith(LVNI_SELECTED), 1);
  EXPECT_EQ(RowWith(LVNI_FOCUSED), 1);
  list_.Delete(1);
  EXPECT_EQ(RowWith(LVNI_SELECTED), -1);
  EXPECT_EQ(RowWith(LVNI_FOCUSED), 1);
  EXPECT_EQ(Text(1, 0), L"Cat");
  list_.Delete(1);
  EXPECT_EQ(RowWith(LVNI_FOCUSED), 0) << "the row above the last one";
  list_.Delete(0);
  EXPECT_EQ(Send(LVM_GETITEMCOUNT), 0);
  EXPECT_EQ(selections_, (std::vector<int>{2, -1}));
}

TEST_F(ListTest, FindsARowByTyping) {
  for (const wchar_t letter : {L'B', L'A'}) Send(WM_CHAR, letter, 1);
  EXPECT_EQ(list_.SelectedIndex(), 2);
}

TEST_F(ListTest, MarksRowsByMouseKeyAndAssistiveProgram) {
  list_.SetCheckBoxes(true);
  const auto mark = [this](int row) {
    return Send(LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_STATEIMAGEMASK) >> 12;
  };
  EXPECT_EQ(mark(1), 1);
  list_.SetChecked(1, true);
  EXPECT_EQ(mark(1), 2);

  const RECT place = Place(2);
  const auto click = [&](LONG x) {
    const LPARAM point = MAKELPARAM(x, place.top + 8);
    PostMessageW(WindowOf(list_), WM_LBUTTONUP, 0, point);  // while the control waits for a drag
    Send(WM_LBUTTONDOWN, MK_LBUTTON, point);
    loop_.ProcessWaiting();
  };
  click(place.left + 8);
  EXPECT_TRUE(list_.Item(2).checked);
  EXPECT_EQ(mark(2), 2);
  click(place.left + 60);
  EXPECT_TRUE(list_.Item(2).checked) << "a click on the text";
  EXPECT_EQ(list_.SelectedIndex(), 2);

  Send(WM_KEYDOWN, VK_SPACE, 1);
  EXPECT_FALSE(list_.Item(2).checked);
  SetState(3, INDEXTOSTATEIMAGEMASK(2U), LVIS_STATEIMAGEMASK);
  SetState(3, INDEXTOSTATEIMAGEMASK(2U), LVIS_STATEIMAGEMASK);
  EXPECT_TRUE(list_.Item(3).checked);
  EXPECT_EQ(checks_, 4);
}

TEST_F(ListTest, TheSelectedRowIsPlainToSeeWithoutTheFocus) {
  list_.SetSelectedIndex(1);
  const WindowDc screen(nullptr);
  const UniqueMemoryDc dc(CreateCompatibleDC(screen.Get()));
  const UniqueBitmap bitmap(CreateCompatibleBitmap(screen.Get(), 600, 300));
  const SelectGuard selected(dc.Get(), bitmap.Get());
  Send(WM_PRINT, reinterpret_cast<WPARAM>(dc.Get()), PRF_CLIENT | PRF_ERASEBKGND);
  for (int row = 0; row < 3; ++row) {
    const RECT place = Place(row);
    const COLORREF color = GetSysColor(row == 1 ? COLOR_HIGHLIGHT : COLOR_WINDOW);
    for (const LONG x : {place.left + 180, place.left + 280}) {
      EXPECT_EQ(GetPixel(dc.Get(), x, place.top + 2), color) << "row " << row << ", at " << x;
    }
  }
}

// Where a caption stands, in pixels: the room that the frames and pictures around it leave.
int RoomFor(const TControl& control) {
  const int width = control.Bounds().width;
  if (dynamic_cast<const TButton*>(&control)) return width - 4;
  if (dynamic_cast<const TCheckBox*>(&control)) return 204;
  if (dynamic_cast<const TGroupItem*>(&control)) return 124;
  if (dynamic_cast<const TGroup*>(control.Parent())) return 132;  // up to the header's arrow
  const TControl* parent = control.Parent();
  return (parent ? parent->Bounds().width : width) - control.Bounds().left;
}

// Names the captions below a component that are wider than their place.
void Measure(const TComponent& owner, const Fonts& fonts, std::vector<std::string>& tooWide) {
  const auto check = [&](HFONT font, const std::wstring& text, int room) {
    const int width = TextExtent(font, text).cx;
    if (width > room) tooWide.push_back(ToUtf8(text) + ": " + std::to_string(width));
  };
  for (const auto& component : owner.Components()) {
    const auto* label = dynamic_cast<const TLabel*>(component.get());
    const auto* list = dynamic_cast<const TListView*>(component.get());
    if (list) {
      for (const auto& column : list->Columns()) {
        check(fonts.Plain(), column.caption, column.width - 12);
      }
      for (int row = 0; list->CheckBoxes() && row < list->Count(); ++row) {
        check(fonts.Plain(), list->Item(row).caption, 178);
      }
    } else if (label || dynamic_cast<const TButton*>(component.get()) ||
               dynamic_cast<const TCheckBox*>(component.get()) ||
               dynamic_cast<const TGroupItem*>(component.get())) {
      const auto& control = dynamic_cast<const TControl&>(*component);
      check(label ? fonts.Of(label->Style()) : fonts.Plain(), control.Caption(), RoomFor(control));
    }
    Measure(*component, fonts, tooWide);
  }
}

TEST(LanguageFiles, HaveNoCaptionThatIsCutOff) {
  int files = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(TARVELIN_RESOURCES_DIR "/languages")) {
    SCOPED_TRACE(entry.path().filename().string());
    ++files;
    std::ifstream stream(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    FormDriver driver;
    const std::wstring folder = L"C:\\Program\\Toolbox_Language\\";
    driver.world.files.Add(folder + L"English.lng", bytes);
    driver.world.files.entries[folder + L"*.lng"] = {L"English.lng"};
    driver.Start();
    TExtIniFile file;
    EXPECT_TRUE(file.LoadFromFile(driver.world.files, folder + L"English.lng"));
    const TButton& close = driver.Find<TButton>(L"btnClose");
    EXPECT_EQ(close.Caption(), file.ReadText(L"Tarvelin_FormMain", L"btnClose.Caption", L"?"));
    driver.Find<TGroupBar>(L"RzGroupBar").Groups().back()->Items().back()->Click();
    std::vector<std::string> tooWide;
    const Fonts fonts;
    Measure(*driver.form, fonts, tooWide);
    Measure(*driver.change, fonts, tooWide);
    EXPECT_EQ(tooWide, std::vector<std::string>());
    EXPECT_GT(driver.List(L"lvHijack").Count(), 0);
  }
  EXPECT_EQ(files, 13);
}

TEST(Navigation, ShowsACutOffCaptionInAToolTip) {
  MessageLoop loop;
  FakeBoxes boxes;
  TApplication application(boxes, L"");
  PeerContext context{GetModuleHandleW(nullptr), loop, application, nullptr, nullptr};
  TForm form(L"FormBar", 200, 200, L"");
  auto& bar = form.Create<TGroupBar>(L"bar", &form, TRect{0, 0, 178, 200});
  TGroup& group = bar.AddGroup(L"group", 90, L"Group");
  auto& label =
      form.Create<TLabel>(L"label", &group, TRect{10, 5, 128, 14}, L"Group", LabelStyle::Bold);
  group.SetHeader(form.Create<TImageNote>(L"image", &group, TRect{0, 0, 162, 24}), label);
  const std::wstring longCaption = L"Longer & longer than the whole bar is wide";
  TGroupItem* const items[] = {&group.AddItem(L"Short", -1, [] {}),
                               &group.AddItem(longCaption, -1, [] {})};
  AttachPeers(form, context, {});
  const HWND tips = FindWindowW(TOOLTIPS_CLASSW, nullptr);
  ASSERT_EQ(GetWindow(tips, GW_OWNER), WindowOf(form));
  for (TGroupItem* item : items) {
    SendMessageW(WindowOf(*item), WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    wchar_t text[80] = L"?";
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V2_SIZE;
    tool.hwnd = WindowOf(bar);
    tool.uId = reinterpret_cast<UINT_PTR>(WindowOf(*item));
    tool.lpszText = text;
    SendMessageW(tips, TTM_GETTEXTW, 80, reinterpret_cast<LPARAM>(&tool));
    EXPECT_EQ(std::wstring(text), item == items[1] ? longCaption : L"");
  }
  form.SetPeer(nullptr);
}

TEST(Peers, TellWhyAWindowWasRefused) {
  MessageLoop loop;
  FakeBoxes boxes;
  TApplication application(boxes, L"");
  PeerContext context{GetModuleHandleW(nullptr), loop, application, nullptr, nullptr};
  TForm form(L"FormRefused", 100, 100, L"");
  std::wstring reason;
  try {
    AttachPeers(form, context, {reinterpret_cast<HWND>(1), {}, {}});
  } catch (const WindowsError& error) {
    reason = error.Reason();
  }
  EXPECT_EQ(reason, L"Invalid window handle.");
}

}  // namespace
}  // namespace tarvelin::testing
