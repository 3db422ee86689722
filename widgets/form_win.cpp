#include "widgets/form_win.h"

#include <algorithm>
#include <utility>

namespace tarvelin {

namespace {

// Where a window stands that is centred on the monitor of another window, or on the main monitor.
POINT Centred(SIZE size, HWND owner) {
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  GetMonitorInfoW(MonitorFromWindow(owner, MONITOR_DEFAULTTOPRIMARY), &monitor);
  const RECT& screen = monitor.rcMonitor;
  return {screen.left + (screen.right - screen.left - size.cx) / 2,
          screen.top + (screen.bottom - screen.top - size.cy) / 2};
}

BOOL CALLBACK PassOn(HWND child, LPARAM parameter) {
  const auto& message = *reinterpret_cast<const MSG*>(parameter);
  SendMessageW(child, message.message, message.wParam, message.lParam);
  return TRUE;
}

}  // namespace

FormWindow::FormWindow(TForm& form, PeerContext& context, const FormFrame& frame)
    : WindowPeer(form, {context, *this, nullptr}),
      frame_(frame),
      style_(WS_CAPTION | WS_SYSMENU | (frame.owner ? WS_POPUP : WS_OVERLAPPED | WS_MINIMIZEBOX)) {
  CreateOwn({(L"T" + form.Name()).c_str(), style_, WS_EX_CONTROLPARENT, 0, frame.owner});
  FollowWindow();
  context.loop.AddForm(Handle());
  // Focus rectangles and underlines are shown once the keyboard is used, or as the user set it.
  SendMessageW(Handle(), WM_CHANGEUISTATE, MAKEWPARAM(UIS_INITIALIZE, 0), 0);
}

FormWindow::~FormWindow() {
  if (!Handle()) return;
  ended_ = true;
  DestroyWindow(Handle());
}

RECT FormWindow::WindowBounds() const {
  // Windows asks for the limits before the new window knows its object, so they count here too.
  RECT frame{0, 0, component_.Bounds().width, component_.Bounds().height};
  AdjustWindowRectEx(&frame, style_, FALSE, WS_EX_CONTROLPARENT);
  const auto limit = [](LONG length, LONG minimum, LONG maximum) {
    return std::max(minimum, maximum ? std::min(length, maximum) : length);
  };
  const SIZE size{limit(frame.right - frame.left, frame_.minimum.cx, frame_.maximum.cx),
                  limit(frame.bottom - frame.top, frame_.minimum.cy, frame_.maximum.cy)};
  const POINT corner = Centred(size, frame_.owner);
  return {corner.x, corner.y, corner.x + size.cx, corner.y + size.cy};
}

// A high caption bar, as for large text, takes its part of a window whose height is limited.
void FormWindow::FollowWindow() {
  RECT client{};
  GetClientRect(Handle(), &client);
  component_.WindowResized(client.right, client.bottom);
}

// ---- Showing and closing ----

// Of a window that clips its children Windows erases all of them as it shows it, each in a turn of
// its own, and again when each is painted. So this one clips them from then on.
void FormWindow::Appear(int command) {
  ShowWindow(Handle(), command);
  SetWindowLongPtrW(Handle(), GWL_STYLE, GetWindowLongPtrW(Handle(), GWL_STYLE) | WS_CLIPCHILDREN);
}

void FormWindow::Show() {
  Appear(SW_SHOWNORMAL);
  SetForegroundWindow(Handle());
}

void FormWindow::RunModal() {
  if (!Handle()) return component_.Close();
  WindowPeer::Apply(Change::Bounds);  // the owner may have moved to another monitor
  modal_ = true;
  EnableWindow(frame_.owner, FALSE);
  Appear(SW_SHOW);
  SetCursor(LoadCursorW(nullptr, IDC_ARROW));
  site_.context.commands.Listen(
      [this] { site_.context.loop.RunUntil([this] { return !component_.Visible(); }); });
  Hide();
}

void FormWindow::Hide() {
  if (modal_) {
    // The owner must be enabled before the dialog goes: Windows would activate another program.
    modal_ = false;
    EnableWindow(frame_.owner, TRUE);
    if (GetActiveWindow() == Handle()) SetActiveWindow(frame_.owner);
  }
  ShowWindow(Handle(), SW_HIDE);
}

void FormWindow::Apply(Change change) {
  if (change != Change::Visible) {
    WindowPeer::Apply(change);
  } else if (!component_.Visible() && Handle()) {
    Hide();
    EndProgram();
  }
}

void FormWindow::EndProgram() {
  if (!frame_.owner && !std::exchange(ended_, true)) PostQuitMessage(0);
}

// ---- Focus and keys ----

void FormWindow::Focus(HWND control) {
  lastFocus_ = control;
  if (GetActiveWindow() == Handle()) SetFocus(control);
}

void FormWindow::FocusBefore(HWND control) { Focus(GetNextDlgTabItem(Handle(), control, TRUE)); }

void FormWindow::RestoreFocus() {
  if (!lastFocus_ || !IsChild(Handle(), lastFocus_)) {
    lastFocus_ = GetNextDlgTabItem(Handle(), nullptr, FALSE);
  } else if (!IsWindowEnabled(lastFocus_) || !IsWindowVisible(lastFocus_)) {
    lastFocus_ = GetNextDlgTabItem(Handle(), lastFocus_, TRUE);
  }
  if (lastFocus_) SetFocus(lastFocus_);
}

int FormWindow::AddButton(TButton& button) {
  const int id = button.isDefault ? IDOK : button.isCancel ? IDCANCEL : AddControl();
  buttons_[id] = &button;
  return id;
}

LRESULT FormWindow::DefaultButtonId() const {
  if (buttons_.contains(IDOK)) return MAKELONG(IDOK, DC_HASDEFID);
  // A button in a panel answers Enter while it has the focus.
  const int focused = GetDlgCtrlID(GetFocus());
  return buttons_.contains(focused) ? MAKELONG(focused, DC_HASDEFID) : 0;
}

// ---- Messages ----

void FormWindow::SettingsChanged(const MSG& message) {
  // The system tells top-level windows only, and common controls want to know as well.
  EnumChildWindows(Handle(), PassOn, reinterpret_cast<LPARAM>(&message));
  RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
}

LRESULT FormWindow::Process(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CLOSE:
      Run([this] { component_.Close(); });
      return 0;
    case WM_DESTROY:
      // An add-on's code can do this to a window of its process. The command that called it goes on
      // without the window, and then there is nothing left to run for.
      site_.context.loop.RemoveForm(Handle());
      EndProgram();
      break;
    case WM_ACTIVATE:
      if (LOWORD(wParam) == WA_INACTIVE && IsChild(Handle(), GetFocus())) lastFocus_ = GetFocus();
      break;
    case WM_SIZE:
      if (wParam != SIZE_MINIMIZED) FollowWindow();
      break;
    case WM_SETFOCUS:
      RestoreFocus();
      return 0;
    case DM_GETDEFID:
      return DefaultButtonId();
    case WM_COMMAND:
      // Enter and Escape arrive here as the numbers of the buttons that answer them.
      if (const auto button = buttons_.find(LOWORD(wParam)); button != buttons_.end()) {
        Run([&] { button->second->Click(); });
        return 0;
      }
      break;
    case WM_GETMINMAXINFO: {
      auto& limits = *reinterpret_cast<MINMAXINFO*>(lParam);
      if (frame_.minimum.cx) limits.ptMinTrackSize = {frame_.minimum.cx, frame_.minimum.cy};
      if (frame_.maximum.cx) limits.ptMaxTrackSize = {frame_.maximum.cx, frame_.maximum.cy};
      return 0;
    }
    case WM_SYSCOLORCHANGE:
    case WM_SETTINGCHANGE:
      SettingsChanged({Handle(), message, wParam, lParam, 0, {}});
      break;
    default:
      break;
  }
  return WindowPeer::Process(message, wParam, lParam);
}

}  // namespace tarvelin
