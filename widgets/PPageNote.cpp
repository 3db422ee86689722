#include "widgets/PPageNote.h"

#include <algorithm>
#include <utility>

namespace tarvelin {

TPageTab::TPageTab(std::wstring name, TPageNote* pageNote)
    : TControl(std::move(name), pageNote, {}) {
  SetVisible(false);
}

TPageTab::~TPageTab() {
  if (pageNote_) pageNote_->RemovePage(*this);
}

TPageNote::TPageNote(std::wstring name, TControl* parent, TRect bounds)
    : TControl(std::move(name), parent, bounds) {}

TPageNote::~TPageNote() {
  for (TPageTab* page : pages_) page->pageNote_ = nullptr;
}

int TPageNote::IndexOf(const TControl* page) const {
  const auto found = std::find(pages_.begin(), pages_.end(), page);
  return found == pages_.end() ? -1 : static_cast<int>(found - pages_.begin());
}

TPageTab* TPageNote::ActivePage() const {
  return tabIndex_ >= 0 && tabIndex_ < TabCount() ? pages_[static_cast<std::size_t>(tabIndex_)]
                                                  : nullptr;
}

void TPageNote::SetActivePage(const TPageTab* page) { SetTabIndex(IndexOf(page)); }

void TPageNote::SetTabIndex(int index) {
  if (index < 0 || index >= TabCount() || index == tabIndex_) return;
  // The new page is shown first, so that nothing behind the pages flashes up.
  TPageTab& shown = *pages_[static_cast<std::size_t>(index)];
  shown.SetVisible(true);
  shown.active_ = true;
  shown.BringToFront();
  if (TPageTab* before = ActivePage()) {
    before->SetVisible(false);
    before->active_ = false;
  }
  tabIndex_ = index;
}

void TPageNote::InsertPage(TPageTab& page) {
  page.SetBounds({0, 0, Bounds().width, Bounds().height});
  page.SetCaption(L"");
  page.pageNote_ = this;
  const int index = pages_.empty() ? 0 : tabIndex_ + 1;
  pages_.insert(pages_.begin() + index, &page);
  SetTabIndex(index);
}

void TPageNote::RemovePage(const TPageTab& page) {
  const int index = pages_.size() == 1 ? 0 : IndexOf(&page);
  if (index < 0) return;
  const bool wasCurrent = index == tabIndex_;
  pages_[static_cast<std::size_t>(index)]->pageNote_ = nullptr;
  pages_.erase(pages_.begin() + index);
  // The page is out of the list already, so the index that it had must not be hidden again.
  if (wasCurrent) {
    tabIndex_ = -1;
  } else if (index < tabIndex_) {
    --tabIndex_;
  }
  if (!pages_.empty()) SetTabIndex(index % TabCount());
}

void TPageNote::ShowControl(TControl& control) {
  SetTabIndex(IndexOf(&control));
  control.SetVisible(true);
}

void TPageNote::SetBounds(const TRect& bounds) {
  TControl::SetBounds(bounds);
  for (TPageTab* page : pages_) page->SetBounds({0, 0, Bounds().width, Bounds().height});
}

}  // namespace tarvelin
