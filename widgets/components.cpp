#include "widgets/components.h"

#include <algorithm>
#include <stdexcept>

#include "common/text.h"

namespace tarvelin {

TControl::TControl(std::wstring name, TControl* parent, TRect bounds)
    : TComponent(std::move(name)), parent_(parent), bounds_(bounds) {
  if (parent_) parent_->controls_.push_back(this);
}

TControl::~TControl() {
  for (TControl* child : controls_) child->parent_ = nullptr;
  if (parent_) std::erase(parent_->controls_, this);
}

void TControl::Notify(Change change) {
  if (peer_) peer_->Changed(change);
}

void TControl::SetBounds(const TRect& bounds) {
  if (bounds_ == bounds) return;
  StoreBounds(bounds);
  Notify(Change::Bounds);
}

void TControl::StoreBounds(const TRect& bounds) {
  const int grown = bounds.height - bounds_.height;
  bounds_ = bounds;
  for (TControl* child : controls_) {
    TRect place = child->Bounds();
    if (child->anchor == Anchor::Bottom) place.top += grown;
    if (child->anchor == Anchor::Both) place.height += grown;
    child->SetBounds(place);
  }
}

void TControl::SetCaption(std::wstring_view caption) {
  if (caption_ == caption) return;
  caption_ = caption;
  Notify(Change::Caption);
}

void TControl::SetEnabled(bool enabled) {
  if (enabled_ == enabled) return;
  enabled_ = enabled;
  Notify(Change::Enabled);
}

void TControl::SetVisible(bool visible) {
  if (visible_ == visible) return;
  visible_ = visible;
  Notify(Change::Visible);
}

void TControl::SetColor(TColor color) {
  if (color_ == color) return;
  color_ = color;
  Notify(Change::Color);
}

TranslatableText TControl::CaptionText() {
  return {L".Caption", caption_, [this](const std::wstring& text) { SetCaption(text); }};
}

TLabel::TLabel(std::wstring name, TControl* parent, TRect bounds, std::wstring_view caption,
               LabelStyle style)
    : TControl(std::move(name), parent, bounds), style_(style) {
  SetCaption(caption);
}

std::vector<TranslatableText> TLabel::TranslatableTexts() { return {CaptionText()}; }

TButton::TButton(std::wstring name, TControl* parent, TRect bounds, std::wstring_view caption)
    : TControl(std::move(name), parent, bounds) {
  SetCaption(caption);
}

void TButton::Click() {
  if (Enabled() && OnClick) OnClick();
}

std::vector<TranslatableText> TButton::TranslatableTexts() { return {CaptionText()}; }

TCheckBox::TCheckBox(std::wstring name, TControl* parent, TRect bounds, std::wstring_view caption)
    : TControl(std::move(name), parent, bounds) {
  SetCaption(caption);
}

void TCheckBox::SetChecked(bool checked) {
  if (checked_ == checked) return;
  SetMark(checked);
  if (OnClick) OnClick();
}

void TCheckBox::SetMark(bool checked) {
  if (checked_ == checked) return;
  checked_ = checked;
  Notify(Change::Checked);
}

std::vector<TranslatableText> TCheckBox::TranslatableTexts() { return {CaptionText()}; }

void TImage::SetPicture(TPicture picture) {
  picture_ = std::move(picture);
  Notify(Change::Picture);
}

int TImageList::Add(const Icon& icon, const std::wstring& source) {
  const auto known = sources_.find(source);
  std::optional<int> place;
  if (known != sources_.end()) place = known->second;
  const int image = peer_ ? peer_->AddIcon(icon, place) : place ? *place : storedCount_++;
  if (image < 0) return -1;
  sources_[source] = image;
  stored_.push_back(image);
  return Count() - 1;
}

int TImageList::Add(TPicture picture) {
  const int image = peer_ ? peer_->AddPicture(picture) : storedCount_++;
  if (image < 0) return -1;
  if (!peer_) pictures_.push_back(std::move(picture));
  stored_.push_back(image);
  return Count() - 1;
}

int TImageList::AddCopy(int index) {
  const int image = StoredImage(index);
  if (image < 0) return -1;
  stored_.push_back(image);
  return Count() - 1;
}

int TImageList::StoredImage(int index) const {
  return index >= 0 && index < Count() ? stored_[static_cast<std::size_t>(index)] : -1;
}

void TImageList::SetPeer(std::unique_ptr<ImageListPeer> peer) {
  peer_ = std::move(peer);
  for (const TPicture& picture : pictures_) peer_->AddPicture(picture);
  pictures_.clear();
}

namespace {

constexpr unsigned kLengthBits = 15;  // that one character holds wherever the program is built

std::wstring Packed(const TListItem& item) {
  std::size_t size = item.caption.size() + 2;
  for (const std::wstring& text : item.subItems) size += text.size() + 2;
  std::wstring packed;
  packed.reserve(size);
  const auto append = [&](const std::wstring& text) {
    packed += static_cast<wchar_t>(text.size() >> kLengthBits);
    packed += static_cast<wchar_t>(text.size() & ((1U << kLengthBits) - 1));
    packed += text;
  };
  append(item.caption);
  for (const std::wstring& text : item.subItems) append(text);
  return packed;
}

// Takes the first text from packed ones.
std::wstring_view TakeText(std::wstring_view& packed) {
  const std::size_t length =
      static_cast<std::size_t>(packed[0]) << kLengthBits | static_cast<std::size_t>(packed[1]);
  const std::wstring_view text = packed.substr(2, length);
  packed.remove_prefix(2 + length);
  return text;
}

}  // namespace

TListView::TListView(std::wstring name, TControl* parent, TRect bounds,
                     std::vector<TListColumn> columns)
    : TControl(std::move(name), parent, bounds), columns_(std::move(columns)) {}

ListViewPeer& TListView::ListPeer() const {
  static ListViewPeer none;
  return Peer() ? static_cast<ListViewPeer&>(*Peer()) : none;
}

const TListView::Row& TListView::At(int index) const {
  if (index < 0 || index >= Count()) throw std::out_of_range("list index");
  return rows_[static_cast<std::size_t>(index)];
}

TListItem TListView::Item(int index) const {
  const Row& row = At(index);
  TListItem item{{}, {}, row.imageIndex, row.checked, row.data};
  std::wstring_view texts = row.texts;
  item.caption = TakeText(texts);
  while (!texts.empty()) item.subItems.emplace_back(TakeText(texts));
  return item;
}

std::wstring_view TListView::CellText(int index, std::size_t column) const {
  std::wstring_view texts = At(index).texts;
  for (; column > 0 && !texts.empty(); --column) TakeText(texts);
  return texts.empty() ? texts : TakeText(texts);
}

int TListView::IndexOf(const TRecord& record) const {
  const auto row =
      std::ranges::find_if(rows_, [&](const Row& item) { return item.data.get() == &record; });
  return row == rows_.end() ? -1 : static_cast<int>(row - rows_.begin());
}

std::wstring TListView::CopyOf(int index) const {
  const TListItem row = Item(index);
  std::vector<std::wstring> cells{row.caption};
  cells.insert(cells.end(), row.subItems.begin(), row.subItems.end());
  cells.resize(columns_.size());
  if (row.data) {
    for (std::wstring& detail : row.data->Details()) {
      const bool known = std::ranges::find(cells, detail) != cells.end();
      if (!detail.empty() && !known) cells.push_back(std::move(detail));
    }
  }
  std::wstring text;
  for (std::wstring& cell : cells) {
    // What would end the cell, the line or the text stands as a blank.
    std::ranges::replace_if(
        cell, [](wchar_t c) { return c < L' '; }, L' ');
    if (&cell != &cells.front()) text += L'\t';
    text += cell;
  }
  return text;
}

void TListView::SetColumnCaption(std::size_t column, std::wstring_view caption) {
  columns_.at(column).caption = caption;
  ListPeer().ColumnsChanged();
}

void TListView::SetColumnWidth(std::size_t column, int width) {
  columns_.at(column).width = width;
  ListPeer().ColumnsChanged();
}

int TListView::ClientWidth() { return ListPeer().ClientWidth(Bounds().width); }

int TListView::Add(TListItem item) {
  rows_.push_back({Packed(item), item.imageIndex, item.checked, std::move(item.data)});
  if (!Updating()) ListPeer().RowsAdded();
  return Count() - 1;
}

void TListView::Delete(int index) {
  if (index < 0 || index >= Count()) return;
  if (selected_ == index) {
    SetSelectedIndex(-1);
  } else if (selected_ > index) {
    --selected_;
  }
  rows_.erase(rows_.begin() + index);
  ListPeer().RowDeleted(index);
}

void TListView::SetSubItem(int index, std::size_t subItem, std::wstring_view text) {
  TListItem item = Item(index);
  if (item.subItems.size() <= subItem) item.subItems.resize(subItem + 1);
  item.subItems[subItem] = text;
  At(index).texts = Packed(item);
  ListPeer().RowChanged(index);
}

void TListView::SetChecked(int index, bool checked) {
  Row& row = At(index);
  if (row.checked == checked) return;
  row.checked = checked;
  ListPeer().CheckChanged(index);
  if (OnItemChecked) OnItemChecked();
}

int TListView::FindCaption(std::wstring_view text, int start) const {
  for (int step = 0; step < Count(); ++step) {
    const int index = (std::max(start, 0) + step) % Count();
    if (SameText(CellText(index, 0).substr(0, text.size()), text)) return index;
  }
  return -1;
}

void TListView::SetSelectedIndex(int index) {
  if (index < 0 || index >= Count()) index = -1;
  if (selected_ == index) return;
  selected_ = index;
  ListPeer().SelectionChanged();
  if (OnSelectItem) OnSelectItem();
}

void TListView::SetEmptyText(std::wstring_view text) {
  if (emptyText_ == text) return;
  emptyText_ = text;
  Notify(Change::Caption);
}

void TListView::SetCheckBoxes(bool checkBoxes) {
  if (checkBoxes_ == checkBoxes) return;
  checkBoxes_ = checkBoxes;
  ListPeer().CheckBoxesChanged();
}

void TListView::EndUpdate() {
  if (updates_ > 0 && --updates_ == 0) ListPeer().RowsAdded();
}

void TListView::DoubleClick() {
  if (OnDblClick) OnDblClick();
}

std::vector<TranslatableText> TListView::TranslatableTexts() {
  std::vector<TranslatableText> texts;
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    texts.push_back({L".Columns[" + std::to_wstring(column) + L"].Caption",
                     columns_[column].caption,
                     [this, column](const std::wstring& text) { SetColumnCaption(column, text); }});
  }
  return texts;
}

void FitLastColumn(TListView& list, Display& display) {
  const auto& columns = list.Columns();
  if (columns.empty()) return;
  list.BeginUpdate();
  int others = 0;
  for (std::size_t column = 0; column + 1 < columns.size(); ++column) {
    others += columns[column].width;
  }
  int available = list.ClientWidth();
  // An empty list leaves room for the scroll bar that its first rows may bring.
  if (list.Count() == 0) available -= display.VerticalScrollBarWidth();
  if (available > others) list.SetColumnWidth(columns.size() - 1, std::max(available - others, 5));
  list.EndUpdate();
}

void TEdit::UserTyped(std::wstring_view text) { StoreCaption(text); }

TForm::TForm(std::wstring name, int clientWidth, int clientHeight, std::wstring_view caption)
    : TControl(std::move(name), nullptr, {0, 0, clientWidth, clientHeight}) {
  SetCaption(caption);
  SetVisible(false);
}

void TForm::Show() {
  if (OnShow) OnShow();
  SetVisible(true);
  if (auto* peer = static_cast<FormPeer*>(Peer())) peer->Show();
}

void TForm::ShowModal() {
  if (!Peer() && OnFirstShow) OnFirstShow();
  if (OnShow) OnShow();
  SetVisible(true);
  if (auto* peer = static_cast<FormPeer*>(Peer())) peer->RunModal();
}

void TForm::Close() {
  if (!Visible()) return;
  if (OnClose) OnClose();
  SetVisible(false);
}

void TForm::WindowResized(int clientWidth, int clientHeight) {
  StoreBounds({0, 0, clientWidth, clientHeight});
}

}  // namespace tarvelin
