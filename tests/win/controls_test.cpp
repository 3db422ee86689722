// Components in real windows that nobody sees.
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "app/application.h"
#include "common/handles_win.h"
#include "tests/support/form_driver.h"
#include "widgets/peers_win.h"

namespace tarvelin::testing {
namespace {

// The colours of the pixels that a control paints, row by row.
std::vector<COLORREF> Painted(const TControl& control) {
  const WindowDc screen(nullptr);
  const UniqueMemoryDc dc(CreateCompatibleDC(screen.Get()));
  const int width = control.Bounds().width, height = control.Bounds().height;
  const UniqueBitmap bitmap(CreateCompatibleBitmap(screen.Get(), width, height));
  const SelectGuard selected(dc.Get(), bitmap.Get());
  SendMessageW(WindowOf(control), WM_PRINT, reinterpret_cast<WPARAM>(dc.Get()),
               PRF_CLIENT | PRF_ERASEBKGND);
  std::vector<COLORREF> colors;
  for (int at = 0; at < width * height; ++at) {
    colors.push_back(GetPixel(dc.Get(), at % width, at / width));
  }
  return colors;
}

class PeersTest : public ::testing::Test {
 protected:
  MessageLoop loop_;
  FakeBoxes boxes_;
  TApplication application_{boxes_, L"Peers"};
  PeerContext context_{GetModuleHandleW(nullptr), loop_, application_, nullptr, nullptr};
};

class ListTest : public PeersTest {
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
  list_.SetColumnCaption(1, L"Pfad");
  wchar_t header[9] = L"";
  LVCOLUMNW column{};
  column.mask = LVCF_TEXT;
  column.pszText = header;
  column.cchTextMax = 9;
  Send(LVM_GETCOLUMNW, 1, reinterpret_cast<LPARAM>(&column));
  EXPECT_STREQ(header, L"Pfad");

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
  const auto painted = Painted(list_);
  for (int row = 0; row < 3; ++row) {
    const RECT place = Place(row);
    const COLORREF color = GetSysColor(row == 1 ? COLOR_HIGHLIGHT : COLOR_WINDOW);
    for (const LONG x : {place.left + 180, place.left + 280}) {
      EXPECT_EQ(painted[static_cast<std::size_t>(600 * (place.top + 2) + x)], color)
          << "row " << row << ", at " << x;
    }
  }
}

// The pixels that frames and pictures leave a caption; nothing for what shows none.
std::optional<int> RoomFor(const TComponent& component) {
  const auto* label = dynamic_cast<const TLabel*>(&component);
  if (const auto* button = dynamic_cast<const TButton*>(&component)) {
    return button->Bounds().width - 4;
  }
  if (dynamic_cast<const TCheckBox*>(&component)) return 204;
  if (dynamic_cast<const TGroupItem*>(&component)) return 124;
  if (!label) return std::nullopt;
  if (dynamic_cast<const TGroup*>(label->Parent())) return 132;  // up to the header's arrow
  return label->Parent()->Bounds().width - label->Bounds().left;
}

// Names the captions below a component that are wider than their place.
void Measure(const TComponent& owner, const Fonts& fonts, std::vector<std::string>& tooWide) {
  const auto check = [&](HFONT font, const std::wstring& text, int room) {
    const int width = TextExtent(font, text).cx;
    if (width > room) tooWide.push_back(ToUtf8(text) + ": " + std::to_string(width));
  };
  for (const auto& component : owner.Components()) {
    const auto* label = dynamic_cast<const TLabel*>(component.get());
    if (const auto* list = dynamic_cast<const TListView*>(component.get())) {
      for (const auto& column : list->Columns()) {
        check(fonts.Plain(), column.caption, column.width - 12);
      }
      for (int row = 0; list->CheckBoxes() && row < list->Count(); ++row) {
        check(fonts.Plain(), list->Item(row).caption, 178);
      }
    } else if (const auto room = RoomFor(*component)) {
      check(label ? fonts.Of(label->Style()) : fonts.Plain(),
            dynamic_cast<const TControl&>(*component).Caption(), *room);
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

TEST_F(PeersTest, TakeTheColorsOfASchemeThatIsNotBlackOnWhite) {
  static constexpr int kParts[] = {COLOR_WINDOW,        COLOR_WINDOWTEXT, COLOR_HIGHLIGHT,
                                   COLOR_HIGHLIGHTTEXT, COLOR_BTNFACE,    COLOR_BTNTEXT};
  static constexpr COLORREF kScheme[] = {0x010203, 0xFF00FF, 0x800080,
                                         0x00FFFF, 0x404000, 0x0000FF};
  COLORREF former[6];
  std::ranges::transform(kParts, former, GetSysColor);
  FormDriver driver;
  driver.Start();
  AttachPeers(*driver.form, context_, {});
  SetSysColors(6, kParts, kScheme);
  const TGroup& group = *driver.Find<TGroupBar>(L"RzGroupBar").Groups()[0];
  const TControl* const controls[] = {driver.form.get(), group.Items()[0], group.HeaderImage()};
  for (int control = 0; control < 3; ++control) {
    const auto painted = Painted(*controls[control]);
    EXPECT_GT(std::ranges::count(painted, kScheme[2 * control]), painted.size() * 7 / 10);
    EXPECT_GT(std::ranges::count(painted, kScheme[2 * control + 1]), 10) << control;
  }
  SetSysColors(6, kParts, former);
  driver.form->SetPeer(nullptr);
}

int g_granted = 0;  // windows that may be created before one is refused

LRESULT CALLBACK RefuseOne(int code, WPARAM wParam, LPARAM lParam) {
  if (code == HCBT_CREATEWND && g_granted-- == 0) return 1;
  return CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST_F(PeersTest, APageAndADialogWhoseWindowsWereRefusedCanStillBeShown) {
  FormDriver driver;
  driver.Start();
  AttachPeers(*driver.form, context_, {});
  driver.change->OnFirstShow = [&] { AttachPeers(*driver.change, context_, {}); };
  driver.Visit(L"IE Settings");
  driver.List(L"lvHijack").SetSelectedIndex(0);
  const TListView& list = driver.List(L"lvBHO");
  auto& boxes = driver.world.boxes;
  boxes.answers.assign(40, 0);
  const HHOOK hook = SetWindowsHookExW(WH_CBT, RefuseOne, nullptr, GetCurrentThreadId());
  for (int granted = 0; granted < 5; ++granted) {
    g_granted = granted;
    driver.Press(L"Button_Modify");
    EXPECT_FALSE(driver.change->Peer());
    EXPECT_EQ(boxes.shown.size(), 1U) << granted;
    boxes.shown.clear();
  }
  int refused = -1;
  do {
    boxes.shown.clear();
    g_granted = ++refused;
    driver.Visit(L"IE BHOs");
    EXPECT_EQ(WindowOf(list) != nullptr, boxes.shown.empty()) << refused;
  } while (!boxes.shown.empty());
  UnhookWindowsHookEx(hook);
  EXPECT_GE(refused, 4) << "of the page, its list and its buttons";
  int windows = 0;
  for (HWND page = GetParent(WindowOf(list)); page; page = GetWindow(page, GW_HWNDNEXT)) ++windows;
  EXPECT_EQ(windows, 3) << "the pages shown so far";
  driver.form->SetPeer(nullptr);
}

TEST_F(PeersTest, TellWhyAWindowWasRefused) {
  TForm form(L"FormRefused", 100, 100, L"");
  std::wstring reason;
  try {
    AttachPeers(form, context_, {reinterpret_cast<HWND>(1), {}, {}});
  } catch (const WindowsError& error) {
    reason = error.Reason();
  }
  EXPECT_EQ(reason, L"Invalid window handle.");
}

}  // namespace
}  // namespace tarvelin::testing
