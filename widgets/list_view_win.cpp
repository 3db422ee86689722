#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "widgets/controls_win.h"

namespace tarvelin {

namespace {

constexpr UINT kCheckedState = 2;  // numbers of the images of LVS_EX_CHECKBOXES
constexpr UINT kUncheckedState = 1;

// Keeps a window from painting while it is changed row by row.
class RedrawGuard {
 public:
  explicit RedrawGuard(HWND window) : window_(window) {
    SendMessageW(window, WM_SETREDRAW, FALSE, 0);
  }
  RedrawGuard(const RedrawGuard&) = delete;
  RedrawGuard& operator=(const RedrawGuard&) = delete;
  ~RedrawGuard() {
    SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(window_, nullptr, TRUE);
  }

 private:
  HWND window_;
};

// Mirrors a list in a SysListView32. The control keeps no texts and images: it asks for them when
// it paints or is read, so that a long list costs little and a changed row only a repaint.
class ListPeer : public WindowPeer<ListViewPeer> {
 public:
  ListPeer(TListView& list, PeerContext& context, FormWindow& form, HWND parent);

  int ClientWidth() override;
  void ItemInserted(int index) override;
  void ItemChanged(int index) override;
  void ItemDeleted(int index) override;
  void CheckChanged(int index) override;
  void SelectionChanged() override;
  void ColumnsChanged() override;
  void CheckBoxesChanged() override;
  void BeginUpdate() override { updating_ = true; }
  void EndUpdate() override;

 protected:
  LRESULT Process(UINT message, WPARAM wParam, LPARAM lParam) override;
  std::optional<LRESULT> Reflected(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  // While the program itself changes the control, what the control reports is no news.
  class Mirroring {
   public:
    explicit Mirroring(ListPeer& peer) : peer_(peer) { ++peer_.mirroring_; }
    Mirroring(const Mirroring&) = delete;
    Mirroring& operator=(const Mirroring&) = delete;
    ~Mirroring() { --peer_.mirroring_; }

   private:
    ListPeer& peer_;
  };

  LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
    return SendMessageW(Handle(), message, wParam, lParam);
  }
  template <typename Structure>
  LRESULT SendWith(UINT message, WPARAM wParam, Structure& structure) const {
    return Send(message, wParam, reinterpret_cast<LPARAM>(&structure));
  }
  // Rows that the control shows; those added in an update are still missing.
  [[nodiscard]] int Shown() const { return static_cast<int>(Send(LVM_GETITEMCOUNT)); }
  [[nodiscard]] int NextItem(UINT flags) const {
    return static_cast<int>(
        Send(LVM_GETNEXTITEM, static_cast<WPARAM>(-1), static_cast<LPARAM>(flags)));
  }
  void SetState(int index, UINT state, UINT mask);
  void ShowRow(int index);
  void FillIn(LVITEMW& item) const;
  LRESULT DrawRow(NMLVCUSTOMDRAW& draw) const;
  void RowReported(const NMLISTVIEW& change);
  void ReportSelection(int index);
  void ColumnReported(const NMHEADERW& change);

  TListView& list_;
  std::vector<TListColumn> shownColumns_;
  bool updating_ = false;
  int mirroring_ = 0;
  int processing_ = 0;
  bool deselected_ = false;
};

ListPeer::ListPeer(TListView& list, PeerContext& context, FormWindow& form, HWND parent)
    : WindowPeer(list, context, &form), list_(list) {
  const Mirroring mirroring(*this);
  CreateSystem({WC_LISTVIEWW,
                WS_CHILD | WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS |
                    LVS_NOSORTHEADER | LVS_SHAREIMAGELISTS,
                0, parent, form.AddControl()});
  const DWORD style = LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_INFOTIP | LVS_EX_LABELTIP;
  Send(LVM_SETEXTENDEDLISTVIEWSTYLE, style, style);
  if (const auto images = ImagesOf(list.SmallImages())) {
    Send(LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(images));
  }
  for (std::size_t index = 0; index < list.Columns().size(); ++index) {
    LVCOLUMNW column{};
    SendWith(LVM_INSERTCOLUMNW, index, column);
  }
  ColumnsChanged();
  CheckBoxesChanged();
  EndUpdate();
  SelectionChanged();
}

// ---- From the component ----

int ListPeer::ClientWidth() {
  RECT area{};
  GetClientRect(Handle(), &area);
  return area.right;
}

void ListPeer::ItemInserted(int index) {
  if (!updating_) ShowRow(index);
}

void ListPeer::ShowRow(int index) {
  const Mirroring mirroring(*this);
  LVITEMW item{};
  item.mask = LVIF_TEXT | LVIF_IMAGE;
  item.iItem = index;
  item.pszText = LPSTR_TEXTCALLBACKW;
  item.iImage = I_IMAGECALLBACK;
  SendWith(LVM_INSERTITEMW, 0, item);
  for (std::size_t column = 1; column < list_.Columns().size(); ++column) {
    item.iSubItem = static_cast<int>(column);
    SendWith(LVM_SETITEMTEXTW, static_cast<WPARAM>(index), item);
  }
  if (list_.CheckBoxes()) CheckChanged(index);
}

void ListPeer::EndUpdate() {
  updating_ = false;
  const int shown = Shown();
  if (shown == list_.Count()) return;
  const RedrawGuard redraw(Handle());
  Send(LVM_SETITEMCOUNT, static_cast<WPARAM>(list_.Count()));
  for (int index = shown; index < list_.Count(); ++index) ShowRow(index);
}

void ListPeer::ItemChanged(int index) { Send(LVM_REDRAWITEMS, static_cast<WPARAM>(index), index); }

void ListPeer::ItemDeleted(int index) {
  if (index >= Shown()) return;
  const Mirroring mirroring(*this);
  Send(LVM_DELETEITEM, static_cast<WPARAM>(index));
  // The keyboard goes on from the row that took the deleted one's place; nothing is selected.
  const int last = Shown() - 1;
  if (last >= 0 && NextItem(LVNI_FOCUSED) < 0) {
    SetState(std::min(index, last), LVIS_FOCUSED, LVIS_FOCUSED);
  }
}

void ListPeer::SetState(int index, UINT state, UINT mask) {
  const Mirroring mirroring(*this);
  LVITEMW item{};
  item.state = state;
  item.stateMask = mask;
  SendWith(LVM_SETITEMSTATE, static_cast<WPARAM>(index), item);
}

void ListPeer::CheckChanged(int index) {
  const bool checked = list_.Item(index).checked;
  SetState(index, INDEXTOSTATEIMAGEMASK(checked ? kCheckedState : kUncheckedState),
           LVIS_STATEIMAGEMASK);
}

void ListPeer::SelectionChanged() {
  const int index = list_.SelectedIndex();
  if (index == NextItem(LVNI_SELECTED)) return;
  if (index < 0) {
    SetState(-1, 0, LVIS_SELECTED);
  } else {
    SetState(index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    Send(LVM_ENSUREVISIBLE, static_cast<WPARAM>(index), FALSE);
  }
}

void ListPeer::ColumnsChanged() {
  const Mirroring mirroring(*this);
  shownColumns_.resize(list_.Columns().size());
  for (std::size_t index = 0; index < shownColumns_.size(); ++index) {
    TListColumn& shown = shownColumns_[index];
    const TListColumn& wanted = list_.Columns()[index];
    // The header would flicker if it were given what it has.
    if (shown.caption == wanted.caption && shown.width == wanted.width) continue;
    shown = wanted;
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.pszText = shown.caption.data();
    column.cx = shown.width;
    SendWith(LVM_SETCOLUMNW, index, column);
  }
}

void ListPeer::CheckBoxesChanged() {
  const Mirroring mirroring(*this);
  Send(LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_CHECKBOXES, list_.CheckBoxes() ? LVS_EX_CHECKBOXES : 0);
  if (!list_.CheckBoxes()) return;
  for (int index = Shown() - 1; index >= 0; --index) CheckChanged(index);
}

// ---- From the user ----

LRESULT ListPeer::Process(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NOTIFY) {
    const auto& header = *reinterpret_cast<const NMHDR*>(lParam);
    if (header.code == HDN_ITEMCHANGEDW) {
      const LRESULT result = WindowPeer::Process(message, wParam, lParam);
      ColumnReported(*reinterpret_cast<const NMHEADERW*>(lParam));
      return result;
    }
  }
  // Moving the selection reports a deselected row and then a selected one. Only when the control is
  // through with a message is it known that a row was deselected for good.
  ++processing_;
  const LRESULT result = WindowPeer::Process(message, wParam, lParam);
  if (--processing_ == 0 && deselected_ && message != WM_NCDESTROY) {
    ReportSelection(NextItem(LVNI_SELECTED));
  }
  return result;
}

std::optional<LRESULT> ListPeer::Reflected(UINT message, WPARAM, LPARAM lParam) {
  if (message != WM_NOTIFY) return std::nullopt;
  auto& header = *reinterpret_cast<NMHDR*>(lParam);
  switch (header.code) {
    case LVN_GETDISPINFOW:
      FillIn(reinterpret_cast<NMLVDISPINFOW*>(lParam)->item);
      return 0;
    case NM_CUSTOMDRAW:
      return DrawRow(*reinterpret_cast<NMLVCUSTOMDRAW*>(lParam));
    case LVN_ITEMCHANGED:
      if (!mirroring_) RowReported(*reinterpret_cast<const NMLISTVIEW*>(lParam));
      return 0;
    case NM_DBLCLK:
      Run([this] { list_.DoubleClick(); });
      return 0;
    default:
      return std::nullopt;
  }
}

void ListPeer::FillIn(LVITEMW& item) const {
  // While a row is being deleted the control may still ask for the one behind the end.
  const bool known = item.iItem >= 0 && item.iItem < list_.Count();
  const TListItem* row = known ? &list_.Item(item.iItem) : nullptr;
  if (item.mask & LVIF_IMAGE) {
    const int image =
        row && list_.SmallImages() ? list_.SmallImages()->StoredImage(row->imageIndex) : -1;
    item.iImage = image < 0 ? I_IMAGENONE : image;
  }
  if ((item.mask & LVIF_TEXT) && item.pszText && item.cchTextMax > 0) {
    std::wstring_view text;
    const auto subItem = static_cast<std::size_t>(item.iSubItem);
    if (row && subItem == 0) text = row->caption;
    if (row && subItem > 0 && subItem <= row->subItems.size()) text = row->subItems[subItem - 1];
    // Copied, because the buffer may be one that another program reads.
    const auto room = static_cast<std::size_t>(item.cchTextMax) - 1;
    item.pszText[text.copy(item.pszText, room)] = L'\0';
  }
}

// The control shows the selected row of a list without the focus in a colour that can hardly be
// told from the background. It is the row that the page's buttons act on, so it looks selected
// always.
LRESULT ListPeer::DrawRow(NMLVCUSTOMDRAW& draw) const {
  if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
  if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT ||
      static_cast<int>(draw.nmcd.dwItemSpec) != list_.SelectedIndex()) {
    return CDRF_DODEFAULT;
  }
  draw.nmcd.uItemState &= ~static_cast<UINT>(CDIS_SELECTED);
  draw.clrText = GetSysColor(COLOR_HIGHLIGHTTEXT);
  draw.clrTextBk = GetSysColor(COLOR_HIGHLIGHT);
  // What lies between the texts takes the colour from below.
  Fill(draw.nmcd.hdc, draw.nmcd.rc, draw.clrTextBk);
  return CDRF_NEWFONT;
}

void ListPeer::RowReported(const NMLISTVIEW& change) {
  if (!(change.uChanged & LVIF_STATE) || change.iItem >= list_.Count()) return;
  const UINT changed = change.uOldState ^ change.uNewState;
  if (changed & LVIS_SELECTED) {
    if (change.uNewState & LVIS_SELECTED) {
      ReportSelection(change.iItem);
    } else {
      deselected_ = true;
    }
  }
  // A row without a check mark gets its first one from the program.
  if ((changed & LVIS_STATEIMAGEMASK) && (change.uOldState & LVIS_STATEIMAGEMASK) &&
      change.iItem >= 0) {
    const bool checked =
        (change.uNewState & LVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(kCheckedState);
    Report([&] { list_.SetChecked(change.iItem, checked); });
  }
}

void ListPeer::ReportSelection(int index) {
  deselected_ = false;
  Report([&] { list_.SetSelectedIndex(index); });
}

void ListPeer::ColumnReported(const NMHEADERW& change) {
  if (mirroring_ || !change.pitem || !(change.pitem->mask & HDI_WIDTH) || change.iItem < 0) return;
  const auto index = static_cast<std::size_t>(change.iItem);
  if (index >= shownColumns_.size()) return;
  // The user drew the column to another width; fitting the last one counts with it.
  shownColumns_[index].width = change.pitem->cxy;
  Report([&] { list_.SetColumnWidth(index, change.pitem->cxy); });
}

}  // namespace

std::unique_ptr<ControlPeer> MakeListViewPeer(TListView& list, PeerContext& context,
                                              FormWindow& form, HWND parent) {
  return std::make_unique<ListPeer>(list, context, form, parent);
}

}  // namespace tarvelin
