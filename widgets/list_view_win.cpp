#include <windows.h>

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "widgets/controls_win.h"
#include "widgets/tool_tip_win.h"

namespace tarvelin {

namespace {

constexpr UINT kCheckedState = 2;  // numbers of the images of LVS_EX_CHECKBOXES
constexpr UINT kUncheckedState = 1;

// What the control leaves free on both sides of a text, in pixels; where that differs, the most.
constexpr LONG kLabelMargin = 3;
constexpr LONG kSubItemMargin = 6;

// Shows a list in a SysListView32 that has no rows of its own (LVS_OWNERDATA): it knows how many
// there are, which one is selected and which has the focus, and asks for everything else when it
// paints or is read.
class ListPeer : public WindowPeer<TListView, Window, ListViewPeer> {
 public:
  ListPeer(TListView& list, const Site& site);

  int ClientWidth(int width) override;
  void RowsAdded() override;
  void RowDeleted(int index) override;
  void RowChanged(int index) override;
  void CheckChanged(int index) override;
  void SelectionChanged() override;
  void ColumnsChanged() override;
  void CheckBoxesChanged() override;

 protected:
  LRESULT Process(UINT message, WPARAM wParam, LPARAM lParam) override;
  std::optional<LRESULT> Reflected(UINT message, WPARAM wParam, LPARAM lParam) override;
  // Screen readers read it as the list's name; it is not shown.
  [[nodiscard]] std::wstring WindowText() const override {
    return component_.Caption() + (IsEmpty() ? L": " + component_.EmptyText() : L"");
  }
  void Apply(Change change) override {
    WindowPeer::Apply(change);
    if (change == Change::Caption) Invalidate();
  }

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
  void Show(int rows);
  [[nodiscard]] int NextItem(UINT flags) const {
    return static_cast<int>(
        Send(LVM_GETNEXTITEM, static_cast<WPARAM>(-1), static_cast<LPARAM>(flags)));
  }
  void SetState(int index, UINT state, UINT mask);
  [[nodiscard]] UINT Mark(int index) const;
  [[nodiscard]] std::wstring CutOffText(POINT at) const;
  void FillIn(LVITEMW& item) const;
  LRESULT Draw(NMLVCUSTOMDRAW& draw) const;
  LRESULT DrawRow(NMLVCUSTOMDRAW& draw) const;
  void DrawEmptyText(HDC dc) const;
  [[nodiscard]] bool IsEmpty() const {
    return component_.Count() == 0 && !component_.EmptyText().empty();
  }
  void ShowMenu(POINT at);
  void Toggle(int index);
  void Clicked(const NMITEMACTIVATE& click);
  void RowReported(const NMLISTVIEW& change);
  void ReportSelection(int index);
  void ColumnReported(const NMHEADERW& change);

  std::vector<TListColumn> shownColumns_;
  ToolTip tip_;
  int mirroring_ = 0;
  int processing_ = 0;
  bool deselected_ = false;
};

ListPeer::ListPeer(TListView& list, const Site& site) : WindowPeer(list, site) {
  const Mirroring mirroring(*this);
  CreateSystem({WC_LISTVIEWW, WS_CHILD | WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL |
                                  LVS_SHOWSELALWAYS | LVS_NOSORTHEADER | LVS_SHAREIMAGELISTS |
                                  LVS_OWNERDATA});
  // Without LVS_EX_DOUBLEBUFFER: on a screen for which Windows enlarges the program, the texts of
  // the whole list would be blurred with the bitmap that they are drawn in. Scrolling moves what is
  // there; only when all rows change may a frame show some of them missing.
  Send(LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
  Send(LVM_SETCALLBACKMASK, LVIS_STATEIMAGEMASK);
  if (const auto images = ImagesOf(list.SmallImages())) {
    Send(LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(images));
  }
  for (std::size_t index = 0; index < list.Columns().size(); ++index) {
    LVCOLUMNW column{};
    SendWith(LVM_INSERTCOLUMNW, index, column);
  }
  ColumnsChanged();
  CheckBoxesChanged();
  RowsAdded();
  SelectionChanged();
}

// ---- From the component ----

int ListPeer::ClientWidth(int) {
  RECT area{};
  GetClientRect(Handle(), &area);
  return area.right;
}

void ListPeer::Show(int rows) {
  const Mirroring mirroring(*this);
  Send(LVM_SETITEMCOUNT, static_cast<WPARAM>(rows), LVSICF_NOSCROLL);
}

void ListPeer::RowsAdded() {
  if (Shown() != component_.Count()) Show(component_.Count());
}

void ListPeer::RowDeleted(int index) {
  const int rows = Shown() - 1;
  if (index > rows) return;
  // The keyboard goes on from the row that took the deleted one's place; nothing is selected. The
  // focus leaves that place first, since only a focus that comes is told to screen readers.
  int focused = NextItem(LVNI_FOCUSED);
  if (focused < 0) focused = index;
  if (focused > index || focused == rows) --focused;
  SetState(-1, 0, LVIS_FOCUSED | LVIS_SELECTED);
  Show(rows);
  if (rows > 0) SetState(focused, LVIS_FOCUSED, LVIS_FOCUSED);
  SelectionChanged();
}

void ListPeer::RowChanged(int index) { Send(LVM_REDRAWITEMS, static_cast<WPARAM>(index), index); }

void ListPeer::CheckChanged(int index) {
  RowChanged(index);
  NotifyWinEvent(EVENT_OBJECT_STATECHANGE, Handle(), OBJID_CLIENT, index + 1);
}

void ListPeer::SetState(int index, UINT state, UINT mask) {
  const Mirroring mirroring(*this);
  LVITEMW item{};
  item.state = state;
  item.stateMask = mask;
  SendWith(LVM_SETITEMSTATE, static_cast<WPARAM>(index), item);
}

void ListPeer::SelectionChanged() {
  const int index = component_.SelectedIndex();
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
  shownColumns_.resize(component_.Columns().size());
  for (std::size_t index = 0; index < shownColumns_.size(); ++index) {
    TListColumn& shown = shownColumns_[index];
    const TListColumn& wanted = component_.Columns()[index];
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
  Send(LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_CHECKBOXES,
       component_.CheckBoxes() ? LVS_EX_CHECKBOXES : 0);
}

// ---- What the control asks for ----

UINT ListPeer::Mark(int index) const {
  if (!component_.CheckBoxes()) return 0;
  return INDEXTOSTATEIMAGEMASK(component_.Checked(index) ? kCheckedState : kUncheckedState);
}

void ListPeer::FillIn(LVITEMW& item) const {
  // While the program changes the list the control may still ask for a row that has gone.
  const bool known = item.iItem >= 0 && item.iItem < component_.Count();
  if (item.mask & LVIF_IMAGE) {
    const int image = known && component_.SmallImages()
                          ? component_.SmallImages()->StoredImage(component_.ImageIndex(item.iItem))
                          : -1;
    item.iImage = image < 0 ? I_IMAGENONE : image;
  }
  if ((item.mask & LVIF_STATE) && known) item.state = Mark(item.iItem);
  if ((item.mask & LVIF_TEXT) && item.pszText && item.cchTextMax > 0) {
    const std::wstring_view text =
        known ? component_.CellText(item.iItem, static_cast<std::size_t>(item.iSubItem))
              : std::wstring_view{};
    // Copied, because the buffer may be one that another program reads.
    const auto room = static_cast<std::size_t>(item.cchTextMax) - 1;
    item.pszText[text.copy(item.pszText, room)] = L'\0';
  }
}

// The control shows the selected row of a list without the focus in a colour that can hardly be
// told from the background. It is the row that the page's buttons act on, so it looks selected
// always.
LRESULT ListPeer::DrawRow(NMLVCUSTOMDRAW& draw) const {
  if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT ||
      static_cast<int>(draw.nmcd.dwItemSpec) != component_.SelectedIndex()) {
    return CDRF_DODEFAULT;
  }
  draw.nmcd.uItemState &= ~static_cast<UINT>(CDIS_SELECTED);
  draw.clrText = GetSysColor(COLOR_HIGHLIGHTTEXT);
  draw.clrTextBk = GetSysColor(COLOR_HIGHLIGHT);
  // What lies between the texts takes the colour from below.
  Fill(draw.nmcd.hdc, draw.nmcd.rc, draw.clrTextBk);
  return CDRF_NEWFONT;
}

LRESULT ListPeer::Draw(NMLVCUSTOMDRAW& draw) const {
  if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) {
    return IsEmpty() ? CDRF_NOTIFYPOSTPAINT : CDRF_NOTIFYITEMDRAW;
  }
  if (draw.nmcd.dwDrawStage != CDDS_POSTPAINT) return DrawRow(draw);
  DrawEmptyText(draw.nmcd.hdc);
  return CDRF_DODEFAULT;
}

void ListPeer::DrawEmptyText(HDC dc) const {
  RECT area{};
  GetClientRect(Handle(), &area);
  const std::wstring& text = component_.EmptyText();
  const HFONT font = site_.context.fonts.Plain();
  area.left = std::max<LONG>((area.right - TextExtent(font, text).cx) / 2, 0);
  DrawTextLine(dc, font, GetSysColor(COLOR_GRAYTEXT), text, area);
}

// The text below the pointer where its column or the list's edge cuts it off, empty elsewhere. The
// control's own tips know only the first column's.
std::wstring ListPeer::CutOffText(POINT at) const {
  LVHITTESTINFO hit{};
  hit.pt = at;
  const auto row = SendWith(LVM_SUBITEMHITTEST, 0, hit);
  if (row < 0 || row >= component_.Count()) return {};
  const bool label = hit.iSubItem == 0;
  RECT place{LVIR_LABEL, hit.iSubItem, 0, 0};
  SendWith(label ? LVM_GETITEMRECT : LVM_GETSUBITEMRECT, static_cast<WPARAM>(row), place);
  if (!PtInRect(&place, at)) return {};
  RECT client{};
  GetClientRect(Handle(), &client);
  const LONG margin = label ? kLabelMargin : kSubItemMargin;
  std::wstring text(component_.CellText(hit.iItem, static_cast<std::size_t>(hit.iSubItem)));
  const LONG left = place.left + margin;
  const LONG right = left + TextExtent(site_.context.fonts.Plain(), text).cx;
  if (left >= 0 && right <= std::min(place.right - margin, client.right)) text.clear();
  return text;
}

// ---- From the user ----

namespace {

// The command that a key gives; none for any other key, and for one that is held down.
std::optional<ListKey> KeyOf(UINT message, WPARAM key, LPARAM lParam) {
  constexpr LPARAM wasDown = LPARAM{1} << 30;
  if (lParam & wasDown) return std::nullopt;
  if (message == WM_KEYDOWN && key == VK_DELETE) return ListKey::Delete;
  if (message == WM_KEYDOWN && key == VK_F2) return ListKey::F2;
  if (message == WM_SYSKEYDOWN && key == VK_RETURN) return ListKey::AltEnter;
  // Keys with Ctrl come as the control characters that they stand for.
  if (message == WM_CHAR && key == L'C' - L'@') return ListKey::CtrlC;
  if (message == WM_CHAR && key == L'A' - L'@') return ListKey::CtrlA;
  return std::nullopt;
}

struct MenuTraits : NullHandleTraits<HMENU> {
  static void Close(HMENU handle) { DestroyMenu(handle); }
};

}  // namespace

void ListPeer::ShowMenu(POINT at) {
  int row = component_.SelectedIndex();
  if (at.x == -1 && at.y == -1) {
    // From the keyboard: below the selected row.
    RECT place{LVIR_LABEL, 0, 0, 0};
    const bool shown = row >= 0 && SendWith(LVM_GETITEMRECT, static_cast<WPARAM>(row), place);
    at = shown ? POINT{place.left, place.bottom} : POINT{0, 0};
    ClientToScreen(Handle(), &at);
  } else {
    LVHITTESTINFO hit{};
    hit.pt = at;
    ScreenToClient(Handle(), &hit.pt);
    row = static_cast<int>(SendWith(LVM_HITTEST, 0, hit));
    component_.SetSelectedIndex(row);
  }

  const std::vector<TMenuItem> items = component_.OnMenu();
  const UniqueHandle<MenuTraits> menu(CreatePopupMenu());
  for (std::size_t index = 0; index < items.size(); ++index) {
    AppendMenuW(menu.Get(), MF_STRING | (items[index].enabled ? MF_ENABLED : MF_GRAYED), index + 1,
                Literal(items[index].caption).c_str());
  }
  const BOOL chosen =
      TrackPopupMenu(menu.Get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, 0, Handle(), nullptr);
  if (chosen > 0) items[static_cast<std::size_t>(chosen) - 1].OnClick();
}

LRESULT ListPeer::Process(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NOTIFY) {
    const auto& header = *reinterpret_cast<const NMHDR*>(lParam);
    if (header.code == HDN_ITEMCHANGEDW) {
      const LRESULT result = WindowPeer::Process(message, wParam, lParam);
      ColumnReported(*reinterpret_cast<const NMHEADERW*>(lParam));
      return result;
    }
  }
  if (message == WM_MOUSEMOVE) {
    tip_.SetText(Handle(), CutOffText({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}));
  } else if (message == WM_KEYDOWN || message == WM_MOUSEWHEEL || message == WM_VSCROLL ||
             message == WM_HSCROLL) {
    tip_.SetText(Handle(), {});  // another row may come below the pointer
  }
  tip_.Relay(Handle(), message, wParam, lParam);
  if (const auto key = KeyOf(message, wParam, lParam); key && component_.OnKey) {
    Run([&] { component_.OnKey(*key); });
    return 0;
  }
  if (message == WM_SYSCHAR && wParam == VK_RETURN) return 0;  // it would be answered by a beep
  if (message == WM_CONTEXTMENU && component_.OnMenu) {
    Run([&] { ShowMenu({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}); });
    return 0;
  }
  if (message == LVM_SETITEMSTATE) {
    // From another program, such as a screen reader's "toggle": the control has no marks to set.
    const auto& item = *reinterpret_cast<const LVITEMW*>(lParam);
    const auto index = static_cast<int>(wParam);
    if ((item.stateMask & LVIS_STATEIMAGEMASK) && index >= 0 && index < component_.Count() &&
        (item.state & LVIS_STATEIMAGEMASK) != Mark(index)) {
      Toggle(index);
    }
  }
  // Moving the selection reports a deselected row and then a selected one. Only when the control is
  // through with a message is it known that a row was deselected for good.
  ++processing_;
  const LRESULT result = WindowPeer::Process(message, wParam, lParam);
  if (--processing_ == 0 && std::exchange(deselected_, false) && message != WM_NCDESTROY) {
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
    case LVN_ODFINDITEMW: {
      const auto& search = *reinterpret_cast<const NMLVFINDITEMW*>(lParam);
      const bool text = (search.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) != 0;
      return text ? component_.FindCaption(search.lvfi.psz, search.iStart) : -1;
    }
    case NM_CUSTOMDRAW:
      return Draw(*reinterpret_cast<NMLVCUSTOMDRAW*>(lParam));
    case LVN_ITEMCHANGED:
      if (!mirroring_) RowReported(*reinterpret_cast<const NMLISTVIEW*>(lParam));
      return 0;
    case NM_CLICK:
      Clicked(*reinterpret_cast<const NMITEMACTIVATE*>(lParam));
      return 0;
    case LVN_KEYDOWN:
      if (reinterpret_cast<const NMLVKEYDOWN*>(lParam)->wVKey == VK_SPACE) {
        Toggle(NextItem(LVNI_FOCUSED));
      }
      return 0;
    case NM_DBLCLK:
      Run([this] { component_.DoubleClick(); });
      return 0;
    default:
      return std::nullopt;
  }
}

void ListPeer::Toggle(int index) {
  if (!component_.CheckBoxes() || index < 0) return;
  Run([&] { component_.SetChecked(index, !component_.Checked(index)); });
}

void ListPeer::Clicked(const NMITEMACTIVATE& click) {
  LVHITTESTINFO hit{};
  hit.pt = click.ptAction;
  SendWith(LVM_HITTEST, 0, hit);
  if (hit.flags == LVHT_ONITEMSTATEICON) Toggle(hit.iItem);
}

void ListPeer::RowReported(const NMLISTVIEW& change) {
  if (!(change.uChanged & LVIF_STATE) || change.iItem >= component_.Count()) return;
  if (!((change.uOldState ^ change.uNewState) & LVIS_SELECTED)) return;
  if (change.uNewState & LVIS_SELECTED) {
    ReportSelection(change.iItem);
  } else {
    deselected_ = true;
  }
}

void ListPeer::ReportSelection(int index) {
  deselected_ = false;
  Report([&] { component_.SetSelectedIndex(index); });
}

void ListPeer::ColumnReported(const NMHEADERW& change) {
  if (mirroring_ || !change.pitem || !(change.pitem->mask & HDI_WIDTH) || change.iItem < 0) return;
  const auto index = static_cast<std::size_t>(change.iItem);
  if (index >= shownColumns_.size()) return;
  // The user drew the column to another width; fitting the last one counts with it.
  shownColumns_[index].width = change.pitem->cxy;
  Report([&] { component_.SetColumnWidth(index, change.pitem->cxy); });
}

}  // namespace

std::unique_ptr<ControlPeer> MakeListPeer(TControl& control, const Site& site) {
  return MakePeerIf<ListPeer>(control, site);
}

}  // namespace tarvelin
