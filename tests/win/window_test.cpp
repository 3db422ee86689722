// The window as a user at the keyboard, a screen reader and a second start meet it.
#include <gtest/gtest.h>

#include <oleacc.h>

#include <filesystem>
#include <utility>
#include <vector>

#include "tests/win/driver.h"
#include "tests/win/driver_registry.h"

namespace tarvelin::testing {
namespace {

const std::wstring kHandlers = L"HKCR\\*\\shellex\\ContextMenuHandlers";

class WindowTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (const wchar_t* name : {L"First", L"Second", L"Third"}) {
      WriteText(kHandlers + L"\\" + name, L"", L"{5A3D0101-7E1A-4F6B-9C42-1D0000000001}");
    }
  }
  // A window is seen before it has the focus, to which all keys go.
  void SetUp() override {
    WaitUntil([this] { return FocusedText() == L"Shell Extensions"; }, L"the first focus");
  }

  [[nodiscard]] std::wstring FocusedText() const {
    const HWND focused = app_.Focused();
    return focused ? TextOf(focused) : L"";
  }
  [[nodiscard]] std::wstring PressAndTell(WORD key) {
    app_.Press(key);
    return FocusedText();
  }
  // Answers the box that comes of a key by another key.
  Box AnswerNext(int button, WORD key) {
    WaitUntil([this] { return app_.Modal() != nullptr; }, L"a message box");
    return app_.Answer(button, key);
  }
  // What a screen reader hears of every control that can have the focus, in the order of Tab and
  // the arrow keys: the name and what is remarkable about the state.
  [[nodiscard]] std::vector<std::wstring> Heard() const {
    static constexpr std::pair<long, const wchar_t*> kStates[] = {
        {STATE_SYSTEM_EXPANDED, L"expanded"},     {STATE_SYSTEM_COLLAPSED, L"collapsed"},
        {STATE_SYSTEM_SELECTABLE, L"selectable"}, {STATE_SYSTEM_SELECTED, L"selected"},
        {STATE_SYSTEM_FOCUSED, L"focused"},       {STATE_SYSTEM_UNAVAILABLE, L"unavailable"}};
    std::vector<std::wstring> heard;
    for (HWND control : VisibleControls(app_.Window())) {
      const std::wstring kind = ClassOf(control);
      if (kind != L"Button" && kind != WC_LISTVIEWW) continue;
      const Accessible told = AccessibleOf(control);
      std::wstring line = told.name;
      for (const auto& [state, word] : kStates) {
        if (told.state & state) line += (line == told.name ? L": " : L", ") + std::wstring(word);
      }
      // Wine gives everything the role of a plain window and no action.
      const bool button = kind == L"Button" && line != L"Select All";
      if (told.role != ROLE_SYSTEM_CLIENT && button != (told.role == ROLE_SYSTEM_PUSHBUTTON)) {
        line += L", role " + std::to_wstring(told.role);
      }
      if (told.role == ROLE_SYSTEM_PUSHBUTTON && told.action.empty()) line += L", no action";
      heard.push_back(line);
    }
    return heard;
  }

  Program app_;
};

TEST_F(WindowTest, TheKeyboardReachesEverything) {
  const HWND firstPage = app_.List();
  // Moving on the bar shows no other page; a key that chooses does.
  EXPECT_EQ(PressAndTell(VK_DOWN), L"New");
  EXPECT_EQ(PressAndTell(VK_END), L"IE Settings");
  EXPECT_EQ(PressAndTell(VK_DOWN), L"IE Settings");
  EXPECT_EQ(PressAndTell(VK_HOME), L"Context Menu");
  EXPECT_EQ(PressAndTell(VK_UP), L"Context Menu");
  EXPECT_EQ(app_.List(), firstPage);

  EXPECT_EQ(PressAndTell(VK_RIGHT), L"Context Menu");
  EXPECT_EQ(PressAndTell(VK_DOWN), L"Shell Extensions") << "an open group stays open";
  EXPECT_EQ(PressAndTell(VK_UP), L"Context Menu");
  EXPECT_EQ(PressAndTell(VK_LEFT), L"Context Menu");
  EXPECT_EQ(PressAndTell(VK_DOWN), L"Tarvelin") << "closed items are passed by";
  app_.Press(VK_DOWN);
  EXPECT_EQ(PressAndTell(VK_LEFT), L"Tarvelin") << "the focus leaves the item that is hidden";
  EXPECT_EQ(PressAndTell(VK_RETURN), L"Tarvelin");
  EXPECT_EQ(PressAndTell(VK_ESCAPE), L"Tarvelin") << "only a button closes the window";

  // The bar is one stop; the buttons of the page are disabled while nothing is selected.
  app_.Press(VK_TAB);
  EXPECT_EQ(app_.Focused(), app_.List());
  EXPECT_EQ(PressAndTell(VK_TAB), L"Close");
  EXPECT_EQ(PressAndTell(VK_TAB), L"Tarvelin");
  app_.Press(VK_TAB);
  app_.Press(VK_TAB);
  for (const UINT message : std::initializer_list<UINT>{WM_KEYDOWN, WM_KEYUP}) {
    PostMessageW(app_.Button(L"Close"), message, VK_SPACE, 1);
  }
  EXPECT_EQ(app_.WaitForExit(), 0U);
}

TEST_F(WindowTest, EveryPageIsWorkedByKeysAlone) {
  WriteText(L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\Main", L"Start Page",
            L"mine");
  const auto enter = [this] { app_.Act(app_.Focused(), WM_KEYDOWN, VK_RETURN); };
  std::wstring item;
  for (int pages = 1; pages < 10; ++pages) {
    if (PressAndTell(VK_DOWN) == L"Tarvelin") app_.Press(VK_DOWN);
    item = FocusedText();
    enter();
    EXPECT_TRUE(TextOf(app_.List()).starts_with(item)) << TextOf(app_.List());
  }
  EXPECT_EQ(item, L"IE Settings");
  app_.Press(VK_TAB);
  app_.Press(VK_HOME);
  app_.Press(VK_SPACE);
  EXPECT_EQ(app_.Selected(), 0);
  EXPECT_TRUE(app_.Checked(0));
  app_.Press(VK_TAB);
  EXPECT_EQ(PressAndTell(VK_TAB), L"Modify Settings");
  app_.Press(VK_RETURN);
  WaitUntil([this] { return ClassOf(app_.Focused()) == L"Edit"; }, L"the dialog");
  for (const char letter : {'O', 'U', 'R', 'S'}) app_.Press(static_cast<WORD>(letter));
  app_.Press(VK_RETURN);
  EXPECT_EQ(app_.Rows()[0][1], L"ours");
  EXPECT_EQ(PressAndTell(VK_TAB), L"Use Default Settings");
  app_.Press(VK_RETURN);
  EXPECT_EQ(AnswerNext(IDYES, VK_RETURN).caption, L"Confirm");
  EXPECT_EQ(AnswerNext(IDOK, VK_ESCAPE).text, L"Restore successfully!");
  EXPECT_NE(app_.Rows()[0][1], L"ours");
  PostMessageW(app_.Focused(), WM_SYSKEYDOWN, VK_F4, 0x20000001);  // with Alt
  EXPECT_EQ(app_.WaitForExit(), 0U);
}

TEST_F(WindowTest, AHeldKeyIsPressedOnce) {
  app_.Select(0);
  app_.Press(VK_TAB);
  app_.Press(VK_TAB);
  ASSERT_EQ(PressAndTell(VK_TAB), L"Remove");
  app_.Press(VK_RETURN);
  WaitUntil([this] { return app_.Modal() != nullptr; }, L"a message box");
  const HWND question = app_.Modal();
  app_.Hold(VK_RETURN);
  app_.Hold(VK_SPACE);
  app_.Hold(VK_ESCAPE);
  EXPECT_EQ(app_.Modal(), question);
  EXPECT_EQ(app_.Answer(IDNO).caption, L"Warning");
  app_.Hold(VK_RETURN);
  EXPECT_EQ(app_.Modal(), nullptr) << "a held key asks nothing again";

  const std::wstring key = L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\Main";
  WriteText(key, L"Start Page", L"mine");
  app_.Open(L"IE Settings");
  app_.Select(0);
  app_.Click(L"Modify Settings");
  const HWND dialog = app_.Modal();
  app_.Hold(VK_RETURN);
  app_.Hold(VK_ESCAPE);
  ASSERT_EQ(app_.Modal(), dialog);
  app_.Hold(VK_SPACE);
  EXPECT_EQ(TextOf(FindControl(dialog, L"Edit", L"")).size(), 30U) << "blanks can be typed";
  app_.Press(VK_ESCAPE);
  app_.Hold(VK_ESCAPE);
  EXPECT_EQ(app_.Modal(), nullptr);
  EXPECT_EQ(app_.Rows()[0][1], L"mine");
  EXPECT_EQ(ReadText(key, L"Start Page"), L"mine");
}

TEST_F(WindowTest, ARemovalLeavesTheKeyboardInTheList) {
  app_.Select(app_.RowOf(L"Second"));
  const int row = app_.Selected();
  app_.Click(L"Remove");
  EXPECT_EQ(app_.Answer(IDNO).caption, L"Warning");
  EXPECT_EQ(app_.Selected(), row);

  app_.Act(app_.List(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(500, 300));
  app_.Act(app_.List(), WM_LBUTTONUP, 0, MAKELPARAM(500, 300));
  EXPECT_EQ(app_.Selected(), -1) << "a click beside the rows";
  EXPECT_FALSE(app_.Enabled(L"Remove"));
  app_.Select(row);
  app_.Press(VK_TAB);  // to "Open in RegEdit"
  EXPECT_EQ(PressAndTell(VK_TAB), L"Remove");
  app_.Press(VK_RETURN);
  EXPECT_EQ(AnswerNext(IDYES, VK_RETURN).caption, L"Warning");
  EXPECT_EQ(AnswerNext(IDOK, VK_SPACE).text, L"Remove successfully!");
  EXPECT_FALSE(app_.Enabled(L"Remove"));
  EXPECT_EQ(app_.Focused(), app_.List());
  EXPECT_EQ(app_.Selected(), -1);
  EXPECT_EQ(SendMessageW(app_.List(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED), row);
  EXPECT_EQ(app_.Rows().at(static_cast<std::size_t>(row)).at(0), L"Third");
}

TEST_F(WindowTest, AToolTipShowsWhatAColumnCutsOff) {
  const std::wstring address(50, L'm');
  WriteText(L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\Main", L"Start Page",
            address);
  app_.Open(L"IE Settings");
  const auto expect = [this](LONG x, const std::wstring& tip) {
    PointAt(app_.List(), x, 24);
    WaitUntil([&] { return ShownTip() == tip; }, L"the tool tip");
  };
  expect(260, address);
  expect(60, L"");
  SendMessageW(app_.List(), LVM_SETCOLUMNWIDTH, 1, 500);
  expect(260, address);  // the list's edge cuts it off
  SendMessageW(app_.List(), LVM_SCROLL, 130, 0);
  expect(260, L"");
  Sleep(700);
  EXPECT_EQ(ShownTip(), L"");
  expect(20, L"Start Page");
}

std::wstring ClipboardText() {
  WaitUntil([] { return OpenClipboard(nullptr) != FALSE; }, L"the clipboard");
  const HANDLE memory = GetClipboardData(CF_UNICODETEXT);
  const auto* text = memory ? static_cast<const wchar_t*>(GlobalLock(memory)) : nullptr;
  std::wstring content = text ? text : L"";
  if (text) GlobalUnlock(memory);
  EmptyClipboard();
  CloseClipboard();
  return content;
}

TEST_F(WindowTest, ARowAnswersKeysAndItsMenu) {
  const std::wstring first =
      L"First\tAll Files(ContextMenu)\t{5A3D0101-7E1A-4F6B-9C42-1D0000000001}\t"
      L"HKEY_CLASSES_ROOT\\*\\shellex\\ContextMenuHandlers\\First";
  app_.Press(VK_TAB);
  app_.Act(app_.List(), WM_KEYDOWN, VK_DELETE, 1);
  EXPECT_EQ(app_.Modal(), nullptr) << "no row is selected";
  app_.Select(app_.RowOf(L"First"));
  app_.Act(app_.List(), WM_CHAR, 3, 1);  // Ctrl+C
  EXPECT_EQ(ClipboardText(), first);

  const auto menu = [] { return FindWindowW(L"#32768", nullptr) != nullptr; };
  PostMessageW(app_.List(), WM_CONTEXTMENU, 0, -1);
  WaitUntil(menu, L"a menu");
  PostMessageW(app_.List(), WM_KEYDOWN, VK_UP, 1);  // from the top to the end, which is Copy
  PostMessageW(app_.List(), WM_KEYDOWN, VK_RETURN, 1);
  WaitUntil([&] { return !menu(); }, L"the menu to close");
  WaitUntil([&] { return IsClipboardFormatAvailable(CF_UNICODETEXT) != FALSE; }, L"a copy");
  EXPECT_EQ(ClipboardText(), first);

  app_.Hold(VK_DELETE);
  EXPECT_EQ(app_.Modal(), nullptr);
  app_.Act(app_.List(), WM_KEYDOWN, VK_DELETE, 1);
  EXPECT_EQ(app_.Answer(IDNO).text, L"Are you sure to remove \"First\"?");

  app_.Open(L"IE Toolbars");
  EXPECT_EQ(TextOf(app_.List()), L"IE Toolbars: No entries were found.");
}

TEST_F(WindowTest, TellsScreenReadersWhatItShows) {
  EXPECT_EQ(
      Heard(),
      (std::vector<std::wstring>{
          L"Context Menu: expanded", L"Shell Extensions: selectable, selected, focused",
          L"New: selectable", L"Send to: selectable", L"Tarvelin: expanded",
          L"IE Context Menus: selectable", L"IE Bars: selectable", L"IE Toolbars: selectable",
          L"IE Extra Button: selectable", L"IE BHOs: selectable",
          L"IE Downloaded ActiveX: selectable", L"IE Settings: selectable", L"Shell Extensions",
          L"Open in RegEdit: unavailable", L"Remove: unavailable", L"Close"}));

  app_.Press(VK_LEFT);
  EXPECT_EQ(FocusedText(), L"Context Menu");
  app_.Press(VK_END);
  app_.Act(app_.Focused(), WM_KEYDOWN, VK_RETURN);
  auto heard = Heard();
  heard.erase(heard.begin() + 2, heard.begin() + 8);  // the group that stayed open
  EXPECT_EQ(heard,
            (std::vector<std::wstring>{
                L"Context Menu: collapsed", L"Tarvelin: expanded",
                L"IE Settings: selectable, selected, focused", L"IE Settings", L"Select All",
                L"Modify Settings: unavailable", L"Use Default Settings: unavailable", L"Close"}));
  app_.Select(0);
  app_.Click(L"Modify Settings");
  const HWND edit = FindControl(app_.Modal(), L"Edit", L"");
  EXPECT_EQ(TextOf(GetWindow(edit, GW_HWNDPREV)), L"Change to:");
}

TEST_F(WindowTest, HasAFixedSizeAndOwnsItsDialog) {
  RECT frame{}, client{};
  GetWindowRect(app_.Window(), &frame);
  GetClientRect(app_.Window(), &client);
  EXPECT_EQ(frame.right - frame.left, 749);
  EXPECT_EQ(client.right, 743);
  EXPECT_EQ(client.bottom, 482);
  SetWindowPos(app_.Window(), nullptr, 0, 0, 1000, 700, SWP_NOZORDER | SWP_NOMOVE);
  GetWindowRect(app_.Window(), &frame);
  EXPECT_EQ(frame.right - frame.left, 749);
  EXPECT_LE(frame.bottom - frame.top, 514);

  app_.Open(L"IE Settings");
  app_.Select(0);
  app_.Click(L"Modify Settings");
  const HWND dialog = app_.Modal();
  EXPECT_EQ(GetWindow(dialog, GW_OWNER), app_.Window());
  GetClientRect(dialog, &client);
  EXPECT_EQ(client.right, 413);
  EXPECT_EQ(client.bottom, 96);
  // A window that waits for its dialog cannot be closed over it.
  SendMessageW(app_.Window(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(IsWindowVisible(dialog));
  SendMessageW(dialog, WM_CLOSE, 0, 0);
  EXPECT_EQ(app_.Modal(), nullptr);
  EXPECT_EQ(GetForegroundWindow(), app_.Window());
  EXPECT_EQ(app_.Close(), 0U);
}

TEST_F(WindowTest, AHighCaptionBarCutsNothingOff) {
  // From the list down to the page's button, and from the lowest button down to the frame.
  const auto distances = [](const Program& app) {
    RECT list{}, remove{}, close{}, frame{};
    GetWindowRect(app.List(), &list);
    GetWindowRect(app.Button(L"Remove"), &remove);
    GetWindowRect(app.Button(L"Close"), &close);
    GetWindowRect(app.Window(), &frame);
    EXPECT_LT(remove.bottom, close.top);
    return std::pair(remove.top - list.bottom, frame.bottom - close.bottom);
  };
  const auto usual = distances(app_);
  EXPECT_EQ(app_.Close(), 0U);

  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  ASSERT_TRUE(SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0));
  NONCLIENTMETRICSW high = metrics;
  high.iCaptionHeight += 40;
  SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof high, &high, SPIF_UPDATEINIFILE);
  {
    const Program app;
    RECT frame{}, client{};
    GetWindowRect(app.Window(), &frame);
    GetClientRect(app.Window(), &client);
    EXPECT_EQ(frame.bottom - frame.top, 514);
    EXPECT_LT(client.bottom, 482 - 30);
    EXPECT_EQ(distances(app), usual);
  }
  SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof metrics, &metrics, SPIF_UPDATEINIFILE);
}

TEST_F(WindowTest, ASecondStartRaisesTheFirst) {
  const std::wstring exe = CopyProgram(L"C:\\Elsewhere");
  const auto startAgain = [&] { EXPECT_EQ(RunToEnd(L"\"" + exe + L"\""), 0U); };
  const auto inFront = [](HWND window) { return [=] { return GetForegroundWindow() == window; }; };

  const std::filesystem::path renamed = L"C:\\Elsewhere\\Renamed.exe";
  std::filesystem::copy_file(exe, renamed, std::filesystem::copy_options::overwrite_existing);
  Program beside{renamed};
  WaitUntil(inFront(beside.Window()), L"the renamed copy to come up");
  ShowWindow(app_.Window(), SW_MINIMIZE);
  WaitUntil([&] { return IsIconic(app_.Window()) != FALSE; }, L"the window to be minimised");
  startAgain();
  WaitUntil(inFront(app_.Window()), L"the window to come forward");
  EXPECT_FALSE(IsIconic(app_.Window()));

  app_.Open(L"IE Settings");
  app_.Select(0);
  app_.Click(L"Modify Settings");
  SetForegroundWindow(beside.Window());
  WaitUntil(inFront(beside.Window()), L"the renamed copy to come forward");
  startAgain();
  WaitUntil(inFront(app_.Modal()), L"the dialog to come forward");
}

}  // namespace
}  // namespace tarvelin::testing
