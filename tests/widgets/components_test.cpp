#include <gtest/gtest.h>

#include "tests/support/test_platform.h"
#include "widgets/PImageNote.h"
#include "widgets/PPageNote.h"
#include "widgets/components.h"
#include "widgets/navigation.h"

namespace tarvelin::testing {
namespace {

struct CountedRecord : TRecord {
  explicit CountedRecord(int& alive) : alive(alive) { ++alive; }
  ~CountedRecord() override { --alive; }
  int& alive;
};

TEST(ListView, KeepsSelectionAndRecordsThroughDeletions) {
  int alive = 0;
  {
    TListView list(L"lv", nullptr, {0, 0, 566, 323}, {{L"Name", 100}});
    std::vector<int> selections;
    list.OnSelectItem = [&] { selections.push_back(list.SelectedIndex()); };
    for (const wchar_t* name : {L"a", L"b", L"c", L"d"}) {
      list.Add({name, {}, -1, false, std::make_unique<CountedRecord>(alive)});
    }
    list.SetSelectedIndex(2);
    list.Delete(0);  // a row above moves the selection without changing it
    EXPECT_EQ(list.SelectedIndex(), 1);
    EXPECT_EQ(list.Item(1).caption, L"c");
    list.Delete(1);  // the selected row is deselected before it goes
    EXPECT_EQ(selections, (std::vector<int>{2, -1}));
    list.Delete(7);
    list.SetSelectedIndex(99);
    EXPECT_EQ(list.SelectedIndex(), -1);
    EXPECT_EQ(list.Count(), 2);
    EXPECT_EQ(alive, 2);
  }
  EXPECT_EQ(alive, 0);
}

TEST(ListView, KeepsTextsOfAnyLengthAndContent) {
  TListView list(L"lv", nullptr, {}, {{L"Name", 100}});
  const std::wstring hostile(L"a\0\x7FFF b", 5);
  for (const std::size_t length : {0, 1, 32767, 32768, 100000}) {
    const std::wstring text(length, L'x');
    const int row = list.Add({text, {L"", text, hostile}, -1, false, nullptr});
    list.SetSubItem(row, 4, text);
    EXPECT_EQ(list.Item(row).caption, text);
    EXPECT_EQ(list.Item(row).subItems, (std::vector<std::wstring>{L"", text, hostile, L"", text}));
    EXPECT_EQ(list.CellText(row, 3), hostile);
    EXPECT_EQ(list.CellText(row, 5), text);
    EXPECT_EQ(list.CellText(row, 6), L"");
  }
}

TEST(ListView, FindsACaptionByItsBeginning) {
  TListView list(L"lv", nullptr, {}, {{L"Name", 100}});
  EXPECT_EQ(list.FindCaption(L"b", 0), -1);
  for (const wchar_t* name : {L"Bee", L"Ant", L"badger"}) list.Add({name, {}, -1, false, nullptr});
  EXPECT_EQ(list.FindCaption(L"b", 1), 2);
  EXPECT_EQ(list.FindCaption(L"BE", 1), 0) << "after the end it goes on at the top";
  EXPECT_EQ(list.FindCaption(L"bees", 0), -1);
}

TEST(ListView, FitsTheLastColumnToWhatIsLeft) {
  FakeDisplay display;
  TListView list(L"lv", nullptr, {0, 0, 566, 323}, {{L"Name", 150}, {L"File Path", 250}});
  const auto widthBeside = [&](int first) {
    list.SetColumnWidth(0, first);
    FitLastColumn(list, display);
    return list.Columns()[1].width;
  };
  EXPECT_EQ(widthBeside(150), 566 - 150 - 17) << "empty: room for a scroll bar";
  list.Add({});
  EXPECT_EQ(widthBeside(150), 566 - 150);
  EXPECT_EQ(widthBeside(563), 5);
  list.SetColumnWidth(1, 80);
  EXPECT_EQ(widthBeside(566), 80) << "nothing left: as the user has it";
}

TEST(CheckBox, OnlyAClickRunsTheHandler) {
  TCheckBox box(L"chk", nullptr, {}, L"Select All");
  int clicks = 0;
  box.OnClick = [&] { ++clicks; };
  box.SetChecked(true);
  box.SetMark(false);
  EXPECT_FALSE(box.Checked());
  EXPECT_EQ(clicks, 1);
}

TEST(ImageList, CopiesAndIconsOfOneSourceShareAStoredImage) {
  int alive = 0;
  TImageList images(L"images");
  EXPECT_EQ(images.Add(TPicture{1, 1, {0}}), 0);
  EXPECT_EQ(images.Add(FakeIcon(alive), L"a.dll|0"), 1);
  EXPECT_EQ(images.AddCopy(1), 2);
  EXPECT_EQ(images.AddCopy(9), -1);
  EXPECT_EQ(images.Add(FakeIcon(alive), L"a.dll|1"), 3);
  EXPECT_EQ(images.Add(FakeIcon(alive), L"A.dll|0"), 4);
  EXPECT_EQ(images.Count(), 5);
  EXPECT_EQ(images.StoredImage(2), 1);
  EXPECT_EQ(images.StoredImage(3), 2);
  EXPECT_EQ(images.StoredImage(4), 1);
}

TEST(PageNote, ShowsExactlyOnePage) {
  TPageNote pages(L"PageNote1", nullptr, {0, 0, 150, 150});
  TPageTab a(L"a", &pages), b(L"b", &pages), c(L"c", &pages), stranger(L"s", nullptr);
  const auto shown = [&] {
    std::wstring names;
    for (const TPageTab* page : {&a, &b, &c}) {
      EXPECT_EQ(page->Visible(), page->Active());
      if (page->Visible()) names += page->Name();
    }
    return names;
  };
  pages.InsertPage(a);
  pages.InsertPage(b);
  pages.SetActivePage(&a);
  pages.InsertPage(c);  // right after the current page
  EXPECT_EQ(pages.Pages(), (std::vector<TPageTab*>{&a, &c, &b}));
  pages.SetTabIndex(3);
  pages.SetTabIndex(-1);
  pages.SetActivePage(&stranger);
  pages.RemovePage(stranger);
  EXPECT_EQ(shown(), L"c");
  EXPECT_EQ(pages.TabCount(), 3);
  pages.SetBounds({0, 0, 565, 364});
  EXPECT_EQ(b.Bounds(), (TRect{0, 0, 565, 364}));

  pages.SetActivePage(&b);
  pages.RemovePage(a);  // its place is taken by the next page
  EXPECT_EQ(shown(), L"c");
  pages.RemovePage(c);
  EXPECT_EQ(pages.ActivePage(), &b);
  pages.RemovePage(stranger);  // with one page left any request empties the control
  EXPECT_EQ(pages.ActivePage(), nullptr);
  EXPECT_TRUE(b.Visible());

  pages.InsertPage(a);
  {
    TPageTab neverShown(L"neverShown", &pages), removed(L"removed", &pages), held(L"held", &pages);
    pages.InsertPage(removed);
    pages.InsertPage(held);
    pages.RemovePage(removed);
  }
  EXPECT_EQ(pages.ActivePage(), &a) << "no page is lost but those that go";
  EXPECT_EQ(pages.Controls(), (std::vector<TControl*>{&a, &b, &c}));
}

TEST(ImageNote, ChoosesPicturesAndHoldsLockedBounds) {
  TImageNote strip(L"ImageNote_IE", nullptr, {0, 0, 162, 24});
  for (std::uint32_t color : {1U, 2U}) strip.Items().Add().Picture = {1, 1, {color}};
  strip.SetImageIndex(1);
  strip.Items().Item(1).Picture.pixels[0] = 7;  // the strip shows a copy
  EXPECT_EQ(strip.Picture().pixels[0], 2U);
  strip.SetImageIndex(2);
  strip.SetImageIndex(-2);
  EXPECT_EQ(strip.ImageIndex(), 1);
  strip.SetImageIndex(-1);
  EXPECT_TRUE(strip.Picture().Empty());
  for (const bool locked : {true, false}) {
    strip.SetLocked(locked);
    strip.SetBounds({5, 5, 10, 10});
    EXPECT_EQ(strip.Bounds(), locked ? (TRect{0, 0, 162, 24}) : (TRect{5, 5, 10, 10}));
  }
}

TEST(Navigation, AClosedGroupLeavesItsRoomToThoseBelow) {
  TGroupBar bar(L"bar", nullptr, {0, 70, 178, 363});
  TGroup& upper = bar.AddGroup(L"upper", 90, L"Upper");
  const TGroup& lower = bar.AddGroup(L"lower", 170, L"Lower");
  const TGroupItem& item = upper.AddItem(L"item", 0, [] {});
  const int below = lower.Bounds().top;
  upper.SetOpened(false);
  EXPECT_FALSE(item.Visible());
  EXPECT_EQ(lower.Bounds().top, below - 90 + TGroup::kClosedHeight);
}

}  // namespace
}  // namespace tarvelin::testing
