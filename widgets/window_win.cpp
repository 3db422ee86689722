#include "widgets/window_win.h"

#include <windows.h>

#include <utility>

#include "common/text.h"

namespace tarvelin {

namespace {

// Painting answered by BeginPaint must end, whatever the painting did.
class PaintGuard {
 public:
  explicit PaintGuard(HWND window) : window_(window) { BeginPaint(window, &paint_); }
  PaintGuard(const PaintGuard&) = delete;
  PaintGuard& operator=(const PaintGuard&) = delete;
  ~PaintGuard() { EndPaint(window_, &paint_); }
  [[nodiscard]] HDC Get() const { return paint_.hdc; }
  [[nodiscard]] const RECT& Area() const { return paint_.rcPaint; }

 private:
  HWND window_;
  PAINTSTRUCT paint_{};
};

// The child window that a message to its parent is about, null when it is about none.
HWND Subject(UINT message, LPARAM lParam) {
  switch (message) {
    case WM_COMMAND:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORSTATIC:
      return reinterpret_cast<HWND>(lParam);
    case WM_NOTIFY:
      return reinterpret_cast<const NMHDR*>(lParam)->hwndFrom;
    case WM_DRAWITEM:
      return reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)->hwndItem;
    default:
      return nullptr;
  }
}

// How far the container of a control lies from the corner of the window that holds both.
POINT Origin(const TControl& control) {
  POINT origin{};
  const TControl* container = control.Parent();
  while (container && dynamic_cast<const Graphic*>(container->Peer())) {
    origin.x += container->Bounds().left;
    origin.y += container->Bounds().top;
    container = container->Parent();
  }
  return origin;
}

// Whether a message asks for something, as those of mouse and keyboard do.
bool IsInput(UINT message) {
  return (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
         (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST) || message == WM_COMMAND ||
         message == WM_CLOSE || message == BM_CLICK;
}

}  // namespace

WindowsError::WindowsError() {
  wchar_t reason[512] = L"";
  FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                 GetLastError(), 0, reason, 512, nullptr);
  reason_ = Trim(reason);
}

// ---- The link between object and window ----

Window::~Window() {
  if (!handle_) return;
  if (former_) SetWindowLongPtrW(handle_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(former_));
  Unlink();
}

void Window::Unlink() {
  site_.context.windows.erase(handle_);
  SetWindowLongPtrW(handle_, GWLP_USERDATA, 0);
  handle_ = nullptr;
}

RECT Window::Place() const {
  RECT place = WindowBounds();
  const POINT origin = Origin(control_);
  OffsetRect(&place, origin.x, origin.y);
  return place;
}

void Window::Create(const Creation& creation, void* parameter) {
  const RECT bounds = Place();
  const bool child = (creation.style & WS_CHILD) != 0;
  const DWORD state =
      (child && control_.Visible() ? WS_VISIBLE : 0) | (control_.Enabled() ? 0 : WS_DISABLED);
  const int id = creation.id || !child ? creation.id : site_.form.AddControl();
  handle_ = CreateWindowExW(
      creation.exStyle, creation.windowClass, WindowText().c_str(), creation.style | state,
      bounds.left, bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top,
      site_.parent ? site_.parent->Handle() : creation.owner,
      reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), site_.context.instance, parameter);
  if (!handle_) throw WindowsError();
  site_.context.windows[handle_] = this;
}

void Window::CreateOwn(const Creation& creation) {
  WNDCLASSEXW own{};
  own.cbSize = sizeof own;
  if (!GetClassInfoExW(site_.context.instance, creation.windowClass, &own)) {
    own.lpfnWndProc = Procedure;
    own.hInstance = site_.context.instance;
    own.hIcon = site_.context.icon;
    own.hIconSm = site_.context.smallIcon;
    own.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    own.lpszClassName = creation.windowClass;
    if (!RegisterClassExW(&own)) throw WindowsError();
  }
  Create(creation, this);
}

void Window::CreateSystem(const Creation& creation) {
  Create(creation, nullptr);
  SetWindowLongPtrW(handle_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  // Every message of a long list passes here, so this replaces the procedure itself:
  // SetWindowSubclass would look up a property of the window each time.
  former_ = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(handle_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure)));
  SendMessageW(handle_, WM_SETFONT, reinterpret_cast<WPARAM>(site_.context.fonts.Plain()), FALSE);
}

LRESULT CALLBACK Window::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NCCREATE) {
    auto* created =
        static_cast<Window*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
    created->handle_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
  }
  auto* object = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  return object ? object->Receive(message, wParam, lParam)
                : DefWindowProcW(window, message, wParam, lParam);
}

LRESULT Window::Receive(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NCDESTROY) {
    const LRESULT result = Process(message, wParam, lParam);
    Unlink();
    return result;
  }
  // Windows would take its time for each of thirty windows to paint no frame.
  if (message == WM_NCPAINT && !HasFrame()) return 0;
  if (IsInput(message) && !TakesInput()) return 0;
  if (const HWND child = Subject(message, lParam)) {
    const auto window = site_.context.windows.find(child);
    if (window != site_.context.windows.end()) {
      const auto result = window->second->Reflected(message, wParam, lParam);
      if (result) return *result;
    }
  }
  return Process(message, wParam, lParam);
}

void Window::Run(const std::function<void()>& command) {
  if (site_.context.commands.Busy()) return;
  // A moment later a window below the pointer, this one or that of a box, sets its own again.
  const HCURSOR former = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
  site_.context.commands.Run(command);
  SetCursor(former);
}

bool Window::TakesInput() const {
  // Windows keeps mouse and keys from a window that waits for a modal one, but no message that
  // another program, or an add-on's code in this one, has posted.
  return !site_.context.commands.Busy() && IsWindowEnabled(GetAncestor(handle_, GA_ROOT));
}

bool Window::HasFrame() const {
  RECT window{};
  RECT client{};
  GetWindowRect(handle_, &window);
  GetClientRect(handle_, &client);
  return window.right - window.left != client.right || window.bottom - window.top != client.bottom;
}

LRESULT Window::Process(UINT message, WPARAM wParam, LPARAM lParam) {
  return Default(message, wParam, lParam);
}

LRESULT Window::Default(UINT message, WPARAM wParam, LPARAM lParam) {
  return former_ ? CallWindowProcW(former_, handle_, message, wParam, lParam)
                 : DefWindowProcW(handle_, message, wParam, lParam);
}

std::optional<LRESULT> Window::Reflected(UINT, WPARAM, LPARAM) { return std::nullopt; }

void Window::Apply(Change change) {
  if (!handle_) return;
  switch (change) {
    case Change::Bounds: {
      const RECT bounds = Place();
      SetWindowPos(handle_, nullptr, bounds.left, bounds.top, bounds.right - bounds.left,
                   bounds.bottom - bounds.top, SWP_NOZORDER | SWP_NOACTIVATE);
      break;
    }
    case Change::Caption:
      SetWindowTextW(handle_, WindowText().c_str());
      break;
    case Change::Enabled:
      // A disabled window would keep the focus and swallow the keys.
      if (!control_.Enabled() && GetFocus() == handle_) site_.form.FocusBefore(handle_);
      EnableWindow(handle_, control_.Enabled());
      break;
    case Change::Visible:
      ShowWindow(handle_, control_.Visible() ? SW_SHOWNA : SW_HIDE);
      break;
    case Change::Order:
      SetWindowPos(handle_, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
      break;
    case Change::Focus:
      site_.form.Focus(FocusHandle());
      break;
    case Change::Color:
    case Change::Picture:
      Invalidate();
      break;
    case Change::Checked:
      break;
  }
}

// ---- Containers ----

LRESULT ContainerWindow::Process(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_ERASEBKGND:
      return TRUE;
    case WM_PAINT: {
      const PaintGuard paint(Handle());
      PaintGround(BufferedDc(paint.Get(), paint.Area(), WasPainted()).Get(), paint.Area());
      PaintChildren(control_, paint.Get(), &Graphic::PaintText);
      return 0;
    }
    case WM_PRINTCLIENT: {
      RECT area{};
      GetClientRect(Handle(), &area);
      PaintGround(reinterpret_cast<HDC>(wParam), area);
      PaintChildren(control_, reinterpret_cast<HDC>(wParam), &Graphic::PaintText);
      return 0;
    }
    case WM_SETFOCUS:
      // The control that had the focus was hidden together with this window.
      site_.form.FocusBefore(Handle());
      return 0;
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORSTATIC: {
      const auto dc = reinterpret_cast<HDC>(wParam);
      const auto child = site_.context.windows.find(reinterpret_cast<HWND>(lParam));
      const COLORREF background = BackgroundColor(
          child == site_.context.windows.end() ? control_.Color() : child->second->GroundColor());
      SetTextColor(dc, TextColor(kBlack));
      SetBkColor(dc, background);
      SetDCBrushColor(dc, background);
      return reinterpret_cast<LRESULT>(GetStockObject(DC_BRUSH));
    }
    default:
      return Window::Process(message, wParam, lParam);
  }
}

void ContainerWindow::Apply(Change change) {
  if (change == Change::Visible && control_.Visible() && fill_) {
    auto fill = std::exchange(fill_, nullptr);
    try {
      CreateContainer();
      fill();
    } catch (const std::exception&) {
      fill_ = std::move(fill);
      if (Handle()) DestroyWindow(Handle());
      control_.SetVisible(false);
      throw;
    }
  }
  Window::Apply(change);
  // Children show the colour too.
  if (change == Change::Color && Handle()) {
    RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
  }
}

void ContainerWindow::PaintGround(HDC dc, const RECT& area) {
  Fill(dc, area, BackgroundColor(control_.Color()));
  PaintChildren(control_, dc, &Graphic::PaintGround);
}

void PaintChildren(const TControl& control, HDC dc, void (Graphic::*layer)(HDC)) {
  for (const TControl* child : control.Controls()) {
    auto* graphic = dynamic_cast<Graphic*>(child->Peer());
    if (graphic && child->Visible()) (graphic->*layer)(dc);
  }
}

HWND WindowOf(const TControl& control) {
  const auto* window = dynamic_cast<const Window*>(control.Peer());
  return window ? window->Handle() : nullptr;
}

}  // namespace tarvelin
