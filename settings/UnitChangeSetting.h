// The dialog in which the user types a value of their own for the selected setting.
#pragma once

#include <cstdint>
#include <functional>

#include "widgets/components.h"
#include "widgets/platform.h"

namespace tarvelin {

// A message that the application's loop took from its queue.
struct TMessage {
  std::uintptr_t window = 0;
  std::uint32_t message = 0;
  std::uintptr_t wParam = 0;
};
inline constexpr std::uint32_t kKeyDownMessage = 0x0100;  // WM_KEYDOWN
inline constexpr std::uintptr_t kReturnKey = 0x0D;
inline constexpr std::uintptr_t kEscapeKey = 0x1B;

class TFormChange : public TForm {
 public:
  // `settingsList` is the page whose selected row is changed; `translateWindows` applies the
  // language to every window. Both live as long as the dialog.
  TFormChange(TPlatform& platform, TListView& settingsList, std::function<void()> translateWindows);

  void FormShow();
  // Writes the typed text into the selected row's value and closes. Throws TError, and stays open,
  // when no row is selected.
  void btnOKClick();
  void btnCancelClick();
  // Sees every message of the application's loop; while the dialog is visible Enter is OK and
  // Escape is Cancel. The message goes on to its window in any case.
  void ApplicationEvents1Message(const TMessage& message);

  TLabel* lblChange;
  TEdit* edtValue;
  TButton* btnOK;
  TButton* btnCancel;

 private:
  TPlatform& platform_;
  TListView& settingsList_;
  std::function<void()> translateWindows_;
};

}  // namespace tarvelin
