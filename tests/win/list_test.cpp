// A list in a real window that nobody sees.
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include "app/application.h"
#include "common/handles_win.h"
#include "tests/support/test_platform.h"
#include "widgets/peers_win.h"

namespace tarvelin::testing {
namespace {

class ListTest : public ::testing::Test {
 protected:
  ListTest() {
    for (const wchar_t* name : {L"Adder", L"Bee", L"Badger", L"Cat"})
      list_.Add({name, {L"x"}, -1, false, nullptr});
    AttachPeers(form_, context_, {});
  }
  ~ListTest() override { form_.SetPeer(nullptr); }

  LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
    return SendMessageW(WindowOf(list_), message, wParam, lParam);
  }

  MessageLoop loop_;
  FakeBoxes boxes_;
  TApplication application_{boxes_, L"List"};
  PeerContext context_{GetModuleHandleW(nullptr), loop_, application_, nullptr, nullptr};
  TForm form_{L"FormList", 600, 400, L"List"};
  TListView& list_ =
      form_.Create<TListView>(L"list", &form_, TRect{0, 0, 600, 300},
                              std::vector<TListColumn>{{L"Name", 200}, {L"Path", 100}});
};

TEST_F(ListTest, TheSelectedRowIsPlainToSeeWithoutTheFocus) {
  list_.SetSelectedIndex(1);
  const WindowDc screen(nullptr);
  const UniqueMemoryDc dc(CreateCompatibleDC(screen.Get()));
  const UniqueBitmap bitmap(CreateCompatibleBitmap(screen.Get(), 600, 300));
  const SelectGuard selected(dc.Get(), bitmap.Get());
  Send(WM_PRINT, reinterpret_cast<WPARAM>(dc.Get()), PRF_CLIENT | PRF_ERASEBKGND);
  for (int row = 0; row < 3; ++row) {
    RECT place{};
    Send(LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
    const COLORREF color = GetSysColor(row == 1 ? COLOR_HIGHLIGHT : COLOR_WINDOW);
    for (const LONG x : {place.left + 180, place.left + 280}) {
      EXPECT_EQ(GetPixel(dc.Get(), x, place.top + 2), color) << "row " << row << ", at " << x;
    }
  }
}

}  // namespace
}  // namespace tarvelin::testing
