#include <windows.h>

#include <commctrl.h>
#include <oleacc.h>

#include <memory>
#include <utility>

#include "widgets/controls_win.h"
#include "widgets/navigation.h"
#include "widgets/tool_tip_win.h"

namespace tarvelin {

namespace {

constexpr int kIconLeft = 8;
constexpr int kIconSide = 16;
constexpr int kTextLeft = 30;
constexpr COLORREF kSelectedBackground = RGB(0xDC, 0xE9, 0xF8);
constexpr COLORREF kHotBackground = RGB(0xF0, 0xF6, 0xFD);

// The bar is one Tab stop; inside it the arrow keys move the focus.
class GroupBarPeer : public WindowPeer<TGroupBar, ContainerWindow> {
 public:
  GroupBarPeer(TGroupBar& bar, const Site& site) : WindowPeer(bar, site) {
    CreateOwn(
        {L"TarvelinGroupBar", WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, WS_EX_CONTROLPARENT});
  }

  [[nodiscard]] TGroupBar& Bar() const { return component_; }

  // Makes that button the one which Tab reaches.
  void MoveTabStop(HWND button) {
    if (button == tabStop_) return;
    for (const HWND window : {tabStop_, button}) {
      if (!window) continue;
      const LONG_PTR style = GetWindowLongPtrW(window, GWL_STYLE);
      SetWindowLongPtrW(window, GWL_STYLE,
                        window == button ? style | WS_TABSTOP : style & ~LONG_PTR{WS_TABSTOP});
    }
    tabStop_ = button;
  }
  [[nodiscard]] HWND TabStop() const { return tabStop_; }

 private:
  HWND tabStop_ = nullptr;
};

// A header or an item: an owner-drawn button, which screen readers know by its caption.
class NavigationButton : public Window {
 protected:
  NavigationButton(TControl& control, const Site& site)
      : Window(control, site),
        group_(dynamic_cast<TGroup&>(*control.Parent())),
        bar_(dynamic_cast<GroupBarPeer&>(*group_.Parent()->Peer())) {}

  void CreateButton() {
    CreateSystem({WC_BUTTONW, WS_CHILD | BS_OWNERDRAW});
    if (!bar_.TabStop()) bar_.MoveTabStop(Handle());
  }

  LRESULT Process(UINT message, WPARAM wParam, LPARAM lParam) override;
  std::optional<LRESULT> Reflected(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Apply(Change change) override;
  virtual void Click() = 0;
  // Tells assistive programs what only the program knows of the button (STATE_SYSTEM_*).
  void TellState(long state);
  // What stands for this button in the bar's order of focus.
  [[nodiscard]] virtual const TControl& Stop() const { return control_; }
  // What lies under the caption.
  virtual void DrawGround(HDC dc, const RECT& area) = 0;
  struct CaptionLine {
    HFONT font;
    COLORREF color;
    std::wstring text;
    RECT place;
    RECT focus;
  };
  [[nodiscard]] virtual CaptionLine CaptionIn(const RECT& area) const = 0;

  [[nodiscard]] bool Hot() const { return hot_; }
  [[nodiscard]] bool HasFocus() const { return GetFocus() == Handle(); }
  [[nodiscard]] bool FocusShown() const {
    return HasFocus() && !(SendMessageW(Handle(), WM_QUERYUISTATE, 0, 0) & UISF_HIDEFOCUS);
  }

  TGroup& group_;
  GroupBarPeer& bar_;

 private:
  [[nodiscard]] bool Key(WPARAM key);
  void MoveFocus(TGroupBar::Move move);
  void SetHot(bool hot);

  bool hot_ = false;
  ToolTip tip_;
  const std::shared_ptr<long> state_ = std::make_shared<long>(0);
};

LRESULT NavigationButton::Process(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_MOUSEMOVE) SetHot(true);
  tip_.Relay(Handle(), message, wParam, lParam);
  switch (message) {
    case WM_GETDLGCODE: {
      const auto* key = reinterpret_cast<const MSG*>(lParam);
      const bool enter = key && key->message == WM_KEYDOWN && key->wParam == VK_RETURN;
      return DLGC_BUTTON | DLGC_WANTARROWS | (enter ? DLGC_WANTMESSAGE : 0);
    }
    case WM_KEYDOWN:
      if (Key(wParam)) return 0;
      break;
    case WM_SETFOCUS:
      bar_.MoveTabStop(Handle());
      Invalidate();
      break;
    case WM_KILLFOCUS:
    case WM_UPDATEUISTATE:
      Invalidate();
      break;
    case WM_MOUSELEAVE:
      SetHot(false);
      break;
    case WM_SETCURSOR:
      SetCursor(LoadCursorW(nullptr, IDC_HAND));
      return TRUE;
    case WM_ERASEBKGND:
      return TRUE;
    case WM_GETOBJECT:
      if (static_cast<LONG>(lParam) == static_cast<LONG>(OBJID_CLIENT)) {
        const LRESULT object = site_.context.accessibility.ObjectFor(Handle(), wParam, state_);
        if (object) return object;
      }
      break;
    default:
      break;
  }
  return Window::Process(message, wParam, lParam);
}

std::optional<LRESULT> NavigationButton::Reflected(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DRAWITEM) {
    const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
    DrawGround(BufferedDc(item.hDC, item.rcItem, WasPainted()).Get(), item.rcItem);
    const CaptionLine line = CaptionIn(item.rcItem);
    DrawTextLine(item.hDC, line.font, line.color, line.text, line.place);
    if (FocusShown()) {
      SetTextColor(item.hDC, kBlack);
      SetBkColor(item.hDC, kWhite);
      DrawFocusRect(item.hDC, &line.focus);
    }
    return TRUE;
  }
  // The second press of a double click is a click as well: it closes what the first one opened.
  if (message == WM_COMMAND &&
      (HIWORD(wParam) == BN_CLICKED || HIWORD(wParam) == BN_DOUBLECLICKED)) {
    Run([this] { Click(); });
    return 0;
  }
  return std::nullopt;
}

void NavigationButton::Apply(Change change) {
  if (change == Change::Visible && !control_.Visible()) {
    // The group was closed over the item.
    const HWND header = WindowOf(*group_.HeaderImage());
    if (HasFocus()) site_.form.Focus(header);
    if (bar_.TabStop() == Handle()) bar_.MoveTabStop(header);
  }
  Window::Apply(change);
  if (change == Change::Caption) Invalidate();
}

void NavigationButton::TellState(long state) {
  if (std::exchange(*state_, state) == state) return;
  NotifyWinEvent(EVENT_OBJECT_STATECHANGE, Handle(), OBJID_CLIENT, CHILDID_SELF);
}

bool NavigationButton::Key(WPARAM key) {
  switch (key) {
    case VK_UP:
      MoveFocus(TGroupBar::Move::Previous);
      return true;
    case VK_DOWN:
      MoveFocus(TGroupBar::Move::Next);
      return true;
    case VK_HOME:
      MoveFocus(TGroupBar::Move::First);
      return true;
    case VK_END:
      MoveFocus(TGroupBar::Move::Last);
      return true;
    case VK_LEFT:
    case VK_RIGHT:
      Run([&] {
        if (group_.Opened() != (key == VK_RIGHT)) group_.ClickHeader();
      });
      return true;
    case VK_RETURN:
      Run([this] { Click(); });
      return true;
    default:
      return false;
  }
}

void NavigationButton::MoveFocus(TGroupBar::Move move) {
  // Whoever moves by keyboard wants to see the focus.
  SendMessageW(Handle(), WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
  if (TControl* target = bar_.Bar().FocusTarget(Stop(), move)) target->SetFocus();
}

void NavigationButton::SetHot(bool hot) {
  if (hot_ == hot) return;
  hot_ = hot;
  if (hot) {
    TRACKMOUSEEVENT leave{sizeof leave, TME_LEAVE, Handle(), 0};
    TrackMouseEvent(&leave);
    RECT area{};
    GetClientRect(Handle(), &area);
    const CaptionLine line = CaptionIn(area);
    const bool cutOff = TextExtent(line.font, line.text).cx > line.place.right - line.place.left;
    tip_.SetText(Handle(), cutOff ? line.text : L"");
  }
  Invalidate();
}

// The header of a group: the strip's picture with the label's caption over it.
class HeaderPeer : public WindowPeer<TImageNote, NavigationButton> {
 public:
  HeaderPeer(TImageNote& image, const Site& site)
      : WindowPeer(image, site), bitmap_(image.Picture()) {
    CreateButton();
    TellOpened();
  }

  void TellOpened() { TellState(group_.Opened() ? STATE_SYSTEM_EXPANDED : STATE_SYSTEM_COLLAPSED); }

 protected:
  std::wstring WindowText() const override { return Literal(Label().Caption()); }

  void Apply(Change change) override {
    if (change == Change::Picture) bitmap_ = PictureBitmap(component_.Picture());
    NavigationButton::Apply(change);
  }

  void Click() override { group_.ClickHeader(); }
  const TControl& Stop() const override { return group_; }

  void DrawGround(HDC dc, const RECT& area) override {
    if (SchemeColors()) {
      Fill(dc, area, GetSysColor(COLOR_BTNFACE));
      FrameRect(dc, &area, GetSysColorBrush(COLOR_BTNTEXT));
      // In the place of the picture's arrow, and pointing as it does.
      RECT arrow{area.right - 20, area.top + 4, area.right - 4, area.bottom - 4};
      DrawFrameControl(dc, &arrow, DFC_SCROLL,
                       DFCS_FLAT | (group_.Opened() ? DFCS_SCROLLUP : DFCS_SCROLLDOWN));
    } else {
      Fill(dc, area, bar_.Bar().Color());
      bitmap_.Draw(dc, area, component_.stretch);
    }
  }

  CaptionLine CaptionIn(const RECT& area) const override {
    RECT text = area;
    text.left = Label().Bounds().left;
    text.right -= GetSystemMetrics(SM_CXSMICON) + 4;  // the picture's arrow
    return {site_.context.fonts.Of(Label().Style()),
            SchemeColors() ? GetSysColor(COLOR_BTNTEXT) : kBlack,
            Label().Caption(),
            text,
            {area.left + 2, area.top + 2, area.right - 2, area.bottom - 2}};
  }

 private:
  [[nodiscard]] const TLabel& Label() const { return *group_.HeaderLabel(); }

  PictureBitmap bitmap_;
};

// The label of a header, which the header shows.
class HeaderLabelPeer : public ControlPeer {
 public:
  explicit HeaderLabelPeer(const TGroup& group) : group_(group) {}
  void Changed(Change change) override {
    if (change == Change::Caption) group_.HeaderImage()->Peer()->Changed(change);
  }

 private:
  const TGroup& group_;
};

class GroupPeer : public WindowPeer<TGroup, ContainerWindow> {
 public:
  GroupPeer(TGroup& group, const Site& site) : WindowPeer(group, site) {
    CreateOwn(
        {L"TarvelinGroup", WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, WS_EX_CONTROLPARENT});
  }

  [[nodiscard]] HWND FocusHandle() const override { return WindowOf(*component_.HeaderImage()); }

 protected:
  void Apply(Change change) override {
    WindowPeer::Apply(change);
    // Opening and closing changes the group's height.
    auto* header = dynamic_cast<HeaderPeer*>(component_.HeaderImage()->Peer());
    if (change == Change::Bounds && header) header->TellOpened();
  }
};

class GroupItemPeer : public WindowPeer<TGroupItem, NavigationButton> {
 public:
  GroupItemPeer(TGroupItem& item, const Site& site) : WindowPeer(item, site) {
    CreateButton();
    TellSelected();
  }

 protected:
  std::wstring WindowText() const override { return Literal(component_.Caption()); }

  void Apply(Change change) override {
    // The selected item is the one that Tab reaches, unless the focus is elsewhere in the bar.
    if (change == Change::Color && component_.Selected() && !IsChild(bar_.Handle(), GetFocus())) {
      bar_.MoveTabStop(Handle());
    }
    NavigationButton::Apply(change);
    if (change == Change::Color) TellSelected();
  }

  void Click() override { component_.Click(); }

  void DrawGround(HDC dc, const RECT& area) override {
    COLORREF background = BackgroundColor(group_.Color());
    if (component_.Selected()) {
      background = SchemeColors() ? GetSysColor(COLOR_HIGHLIGHT) : kSelectedBackground;
    } else if (Hot() && !SchemeColors()) {
      background = kHotBackground;
    }
    Fill(dc, area, background);

    const TImageList* images = bar_.Bar().SmallImages();
    const int image = images ? images->StoredImage(component_.ImageIndex()) : -1;
    if (image >= 0) {
      ImageList_Draw(ImagesOf(images), image, dc, area.left + kIconLeft,
                     area.top + (area.bottom - area.top - kIconSide) / 2, ILD_TRANSPARENT);
    }
  }

  CaptionLine CaptionIn(const RECT& area) const override {
    const bool scheme = component_.Selected() && SchemeColors();
    return {site_.context.fonts.Plain(),
            scheme ? GetSysColor(COLOR_HIGHLIGHTTEXT) : TextColor(component_.FontColor()),
            component_.Caption(),
            {area.left + kTextLeft, area.top, area.right - 2, area.bottom},
            area};
  }

 private:
  void TellSelected() {
    TellState(STATE_SYSTEM_SELECTABLE | (component_.Selected() ? STATE_SYSTEM_SELECTED : 0));
  }
};

}  // namespace

std::unique_ptr<ControlPeer> MakeNavigationPeer(TControl& control, const Site& site) {
  if (const auto* group = dynamic_cast<const TGroup*>(control.Parent())) {
    if (&control == group->HeaderImage()) return MakePeerIf<HeaderPeer>(control, site);
    if (&control == group->HeaderLabel()) return std::make_unique<HeaderLabelPeer>(*group);
  }
  return MakePeerOf<GroupItemPeer, GroupPeer, GroupBarPeer>(control, site);
}

}  // namespace tarvelin
