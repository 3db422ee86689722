// The windows behind the components: the link between an object and its HWND, and the containers
// that paint the pictures and labels lying on them.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "widgets/components.h"
#include "widgets/paint_win.h"
#include "widgets/peer_context_win.h"

namespace tarvelin {

class ContainerWindow;

// What the controls in a form ask of its window.
class FormHost {
 public:
  // Gives the focus to a control's window, as soon as this form is the active one.
  virtual void Focus(HWND control) = 0;
  // Gives the focus to the control before that one in the Tab order.
  virtual void FocusBefore(HWND control) = 0;
  // A number for a new control. A button also gets the keys that go with it.
  [[nodiscard]] virtual int AddControl() = 0;
  [[nodiscard]] virtual int AddButton(TButton& button) = 0;

 protected:
  ~FormHost() = default;
};

// What every peer is made from, besides its component.
struct Site {
  PeerContext& context;
  FormHost& form;
  ContainerWindow* parent;  // null for the form itself
};

// A window that shows one control. The HWND belongs to its parent window, which destroys it; the
// link is cleared at WM_NCDESTROY.
class Window {
 public:
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  virtual ~Window();

  [[nodiscard]] HWND Handle() const { return handle_; }
  // The window that takes the keyboard focus for the control.
  [[nodiscard]] virtual HWND FocusHandle() const { return handle_; }
  // The colour of the container that the control lies on.
  [[nodiscard]] TColor GroundColor() const { return control_.Parent()->Color(); }

 protected:
  // What a new window needs; its place, text and state are the control's.
  struct Creation {
    const wchar_t* windowClass = nullptr;
    DWORD style = 0;
    DWORD exStyle = 0;
    int id = 0;            // of a control; 0 for the next free number
    HWND owner = nullptr;  // of a top-level window
  };

  Window(TControl& control, const Site& site) : control_(control), site_(site) {}

  // Creates the window in one of the program's own classes, or in one of the system's, which is
  // subclassed. Throws WindowsError when Windows refuses.
  void CreateOwn(const Creation& creation);
  void CreateSystem(const Creation& creation);

  // Handles a message of this window; the default passes it to Default.
  virtual LRESULT Process(UINT message, WPARAM wParam, LPARAM lParam);
  // What the class itself does with a message.
  LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam);
  // Handles a message about this window that Windows sent to its parent (WM_COMMAND, WM_NOTIFY,
  // WM_DRAWITEM, WM_CTLCOLOR*); nullopt leaves it to the parent's class.
  virtual std::optional<LRESULT> Reflected(UINT message, WPARAM wParam, LPARAM lParam);

  // The control's state as its window shows it.
  [[nodiscard]] virtual std::wstring WindowText() const { return control_.Caption(); }
  [[nodiscard]] virtual RECT WindowBounds() const { return ToRect(control_.Bounds()); }
  virtual void Apply(Change change);

  // What the user asks for, and what the window tells of its own state.
  void Run(const std::function<void()>& command);
  void Report(const std::function<void()>& report) { site_.context.commands.Report(report); }
  void Invalidate() { InvalidateRect(handle_, nullptr, FALSE); }
  // Whether this window was painted before, which it counts as from then on. What was not there
  // before cannot flicker, and memory for painting it takes its part of the start.
  [[nodiscard]] bool WasPainted() { return std::exchange(painted_, true); }

  TControl& control_;
  const Site site_;

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT Receive(UINT message, WPARAM wParam, LPARAM lParam);
  [[nodiscard]] bool TakesInput() const;
  [[nodiscard]] bool HasFrame() const;  // or scroll bars
  void Create(const Creation& creation, void* parameter);
  [[nodiscard]] RECT Place() const;  // within the parent window
  void Unlink();

  HWND handle_ = nullptr;
  WNDPROC former_ = nullptr;  // of a system class
  bool painted_ = false;
};

// A control without a window of its own, painted by the window that it lies in: first what is no
// text, then the text above it.
class Graphic {
 public:
  virtual ~Graphic() = default;
  // Each paints in the coordinates of the control's parent.
  virtual void PaintGround(HDC) {}
  virtual void PaintText(HDC) {}
};

// Paints one layer of the graphics in a container, in the order of their creation.
void PaintChildren(const TControl& control, HDC dc, void (Graphic::*layer)(HDC));

// A window that holds other controls. It paints its background and the controls that have no window
// of their own.
class ContainerWindow : public Window {
 public:
  // Something painted here changed.
  virtual void GraphicChanged() { Invalidate(); }
  // What creates the controls in this window, which has yet to be created itself, once it is shown:
  // most pages are never visited. When Windows refuses one of these windows all of them go, the
  // control is hidden again, and the next attempt to show it begins anew.
  void FillWhenShown(std::function<void()> fill) { fill_ = std::move(fill); }

 protected:
  using Window::Window;
  // Creates the window of a container that may be hidden when its peer is made.
  virtual void CreateContainer() {}
  LRESULT Process(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Apply(Change change) override;

 private:
  void PaintGround(HDC dc, const RECT& area);

  std::function<void()> fill_;
};

// Joins a window with its component and the interface through which that speaks to it.
template <typename Shown, typename Base = Window, typename Interface = ControlPeer>
class WindowPeer : public Interface, public Base {
 public:
  using Component = Shown;
  void Changed(Change change) override { this->Apply(change); }

 protected:
  WindowPeer(Component& component, const Site& site)
      : Base(component, site), component_(component) {}

  Component& component_;
};

// A peer of that class when the control is of the kind that it shows, null otherwise.
template <typename Peer>
std::unique_ptr<ControlPeer> MakePeerIf(TControl& control, const Site& site) {
  auto* component = dynamic_cast<typename Peer::Component*>(&control);
  if (!component) return nullptr;
  return std::make_unique<Peer>(*component, site);
}

// The first peer that shows the kind of control that this one is, null when none does.
template <typename... Peers>
std::unique_ptr<ControlPeer> MakePeerOf(TControl& control, const Site& site) {
  std::unique_ptr<ControlPeer> peer;
  static_cast<void>(((peer = MakePeerIf<Peers>(control, site)) || ...));
  return peer;
}

// The window of a control that has one, null before it has been made.
[[nodiscard]] HWND WindowOf(const TControl& control);

}  // namespace tarvelin
