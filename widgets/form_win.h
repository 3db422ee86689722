// The top-level windows.
#pragma once

#include <map>

#include "widgets/window_win.h"

namespace tarvelin {

class FormWindow : public WindowPeer<TForm, ContainerWindow, FormPeer>, public FormHost {
 public:
  FormWindow(TForm& form, PeerContext& context, const FormFrame& frame);
  ~FormWindow() override;

  void Show() override;
  void RunModal() override;

  void Focus(HWND control) override;
  void FocusBefore(HWND control) override;
  [[nodiscard]] int AddControl() override { return nextId_++; }
  [[nodiscard]] int AddButton(TButton& button) override;

 protected:
  LRESULT Process(UINT message, WPARAM wParam, LPARAM lParam) override;
  [[nodiscard]] RECT WindowBounds() const override;
  void Apply(Change change) override;

 private:
  void FollowWindow();
  void RestoreFocus();
  void Appear(int command);  // of ShowWindow
  void Hide();
  void EndProgram();  // when this is the main window
  [[nodiscard]] LRESULT DefaultButtonId() const;
  void SettingsChanged(const MSG& message);

  FormFrame frame_;
  DWORD style_;
  bool modal_ = false;
  bool ended_ = false;
  HWND lastFocus_ = nullptr;  // the control that had the focus when another window was activated
  std::map<int, TButton*> buttons_;
  int nextId_ = 100;
};

}  // namespace tarvelin
