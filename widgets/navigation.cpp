#include "widgets/navigation.h"

#include <algorithm>
#include <utility>

namespace tarvelin {

namespace {
constexpr int kMargin = 8;     // around the groups and between them
constexpr int kItemsTop = 27;  // below the header
constexpr int kItemHeight = 20;
}  // namespace

TGroupItem::TGroupItem(std::wstring name, TGroup& group, TRect bounds, std::wstring_view caption,
                       int imageIndex)
    : TControl(std::move(name), &group, bounds), imageIndex_(imageIndex) {
  SetCaption(caption);
}

void TGroupItem::SetSelected(bool selected, TColor fontColor) {
  if (selected_ == selected && fontColor_ == fontColor) return;
  selected_ = selected;
  fontColor_ = fontColor;
  Notify(Change::Color);
}

void TGroupItem::Click() {
  if (OnClick) OnClick();
}

TGroup::TGroup(std::wstring name, TControl* parent, TRect openBounds, std::wstring_view caption)
    : TControl(std::move(name), parent, openBounds), openHeight_(openBounds.height) {
  SetCaption(caption);
}

void TGroup::SetHeader(TImageNote& image, TLabel& label) {
  headerImage_ = &image;
  headerLabel_ = &label;
}

void TGroup::ClickHeader() {
  if (headerImage_) headerImage_->Click();
}

void TGroup::SetOpened(bool opened) {
  if (opened_ == opened) return;
  opened_ = opened;
  for (TGroupItem* item : items_) item->SetVisible(opened);
  TRect bounds = Bounds();
  bounds.height = opened ? openHeight_ : kClosedHeight;
  SetBounds(bounds);
  if (OnResize) OnResize();
}

TGroupItem& TGroup::AddItem(std::wstring_view caption, int imageIndex,
                            std::function<void()> onClick) {
  const int index = static_cast<int>(items_.size());
  auto& item = Create<TGroupItem>(
      Name() + L"Items" + std::to_wstring(index), *this,
      TRect{0, kItemsTop + index * kItemHeight, Bounds().width, kItemHeight}, caption, imageIndex);
  item.OnClick = std::move(onClick);
  items_.push_back(&item);
  return item;
}

TGroup& TGroupBar::AddGroup(std::wstring name, int openHeight, std::wstring_view caption) {
  auto& group = Create<TGroup>(
      std::move(name), this, TRect{kMargin, 0, Bounds().width - 2 * kMargin, openHeight}, caption);
  group.OnResize = [this] { Arrange(); };
  groups_.push_back(&group);
  Arrange();
  return group;
}

void TGroupBar::Arrange() {
  int top = kMargin;
  for (TGroup* group : groups_) {
    TRect bounds = group->Bounds();
    bounds.top = top;
    group->SetBounds(bounds);
    top += bounds.height + kMargin;
  }
}

void TGroupBar::SelectItem(const TGroupItem& item) {
  for (TGroup* group : groups_) {
    for (TGroupItem* other : group->Items()) {
      const bool selected = other == &item;
      other->SetSelected(selected, selected ? kSelectedItemColor : kItemColor);
    }
  }
}

std::vector<TControl*> TGroupBar::FocusOrder() const {
  std::vector<TControl*> order;
  for (TGroup* group : groups_) {
    order.push_back(group);
    if (group->Opened()) order.insert(order.end(), group->Items().begin(), group->Items().end());
  }
  return order;
}

TControl* TGroupBar::FocusTarget(const TControl& from, Move move) const {
  const auto order = FocusOrder();
  if (move == Move::First) return order.front();
  if (move == Move::Last) return order.back();
  const auto at = std::find(order.begin(), order.end(), &from);
  if (at == order.end()) return order.front();
  if (move == Move::Previous) return at == order.begin() ? *at : *std::prev(at);
  return std::next(at) == order.end() ? *at : *std::next(at);
}

}  // namespace tarvelin
