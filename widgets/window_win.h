// The windows behind the components: the link between an object and its HWND, and the containers
// that paint the pictures and labels lying on them.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>

#include "widgets/components.h"
#include "widgets/paint_win.h"
#include "widgets/peers_win.h"

namespace tarvelin {

class FormWindow;

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

 protected:
  // What a new window needs; its place, text and state are the control's.
  struct Creation {
    const wchar_t* windowClass = nullptr;
    DWORD style = 0;
    DWORD exStyle = 0;
    HWND parent = nullptr;
    int id = 0;
  };

  Window(TControl& control, PeerContext& context, FormWindow* form);

  // Creates the window in one of the program's own classes, or in one of the system's, which is
  // subclassed. Throws std::bad_alloc when Windows refuses.
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
  void Run(const std::function<void()>& command) { context_.commands.Run(command); }
  void Report(const std::function<void()>& report) { context_.commands.Report(report); }
  [[nodiscard]] FormWindow& Form() const { return *form_; }
  void Invalidate() { InvalidateRect(handle_, nullptr, FALSE); }

  TControl& control_;
  PeerContext& context_;

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT Receive(UINT message, WPARAM wParam, LPARAM lParam);
  [[nodiscard]] bool TakesInput() const;
  void Create(const Creation& creation, void* parameter);
  void Unlink();

  FormWindow* form_;
  HWND handle_ = nullptr;
  WNDPROC former_ = nullptr;  // of a system class
};

// A window that holds other controls. It paints its background and the controls that have no window
// of their own, in the order of their creation.
class ContainerWindow : public Window {
 public:
  // Something painted here changed.
  virtual void GraphicChanged() { Invalidate(); }

 protected:
  using Window::Window;
  LRESULT Process(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Apply(Change change) override;
  virtual void Paint(HDC dc, const RECT& area);
};

// A control without a window of its own.
class Graphic {
 public:
  virtual ~Graphic() = default;
  virtual void Draw(HDC dc) = 0;
};

// Joins a window with the interface through which its component speaks to it.
template <typename Interface, typename Base = Window>
class WindowPeer : public Interface, public Base {
 public:
  void Changed(Change change) override { this->Apply(change); }

 protected:
  using Base::Base;
};

}  // namespace tarvelin
