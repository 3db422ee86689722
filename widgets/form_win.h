// The top-level windows.
#pragma once

#include <map>

#include "widgets/window_win.h"

namespace tarvelin {

class FormWindow : public WindowPeer<FormPeer, ContainerWindow> {
 public:
  FormWindow(TForm& form, PeerContext& context, const FormFrame& frame);
  ~FormWindow() override;

  void Show() override;
  void RunModal() override;

  // Gives the focus to a control's window, as soon as this form is the active one.
  void Focus(HWND control);
  // Gives the focus to the control before that one in the Tab order.
  void FocusBefore(HWND control);

  // A number for a new control. A button also gets the keys that go with it.
  [[nodiscard]] int AddControl() { return nextId_++; }
  [[nodiscard]] int AddButton(TButton& button);

 protected:
  LRESULT Process(UINT message, WPARAM wParam, LPARAM lParam) override;
  [[nodiscard]] RECT WindowBounds() const override;
  void Apply(Change change) override;

 private:
  void FollowWindow();
  void RestoreFocus();
  void Hide();
  void EndProgram();  // when this is the main window
  [[nodiscard]] LRESULT DefaultButtonId() const;
  void SettingsChanged(const MSG& message);

  TForm& form_;
  FormFrame frame_;
  DWORD style_;
  bool modal_ = false;
  bool ended_ = false;
  HWND lastFocus_ = nullptr;  // the control that had the focus when another window was activated
  std::map<int, TButton*> buttons_;
  int nextId_ = 100;
};

}  // namespace tarvelin
