#include "settings/UnitChangeSetting.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "common/text.h"
#include "settings/settings.h"

namespace tarvelin {

TFormChange::TFormChange(TPlatform& platform, TListView& settingsList,
                         std::function<void()> translateWindows)
    : TForm(L"FormChange", 413, 96, L"Change Internet Explorer Settings"),
      lblChange(&Create<TLabel>(L"lblChange", this, TRect{13, 12, 54, 13}, L"Change to:",
                                LabelStyle::Plain)),
      edtValue(&Create<TEdit>(L"edtValue", this, TRect{12, 30, 386, 21})),
      btnOK(&Create<TButton>(L"btnOK", this, TRect{204, 59, 90, 25}, L"OK")),
      btnCancel(&Create<TButton>(L"btnCancel", this, TRect{308, 59, 90, 25}, L"Cancel")),
      platform_(platform),
      settingsList_(settingsList),
      translateWindows_(std::move(translateWindows)) {
  OnShow = [this] { FormShow(); };
  lblChange->namesNext = true;
  btnOK->isDefault = true;
  btnOK->OnClick = [this] { btnOKClick(); };
  btnCancel->OnClick = [this] { btnCancelClick(); };
}

void TFormChange::FormShow() {
  translateWindows_();
  edtValue->SetText(L"");
  edtValue->SetFocus();
}

void TFormChange::btnOKClick() {
  const int row = settingsList_.SelectedIndex();
  const auto record = row < 0 ? nullptr : settingsList_.Data<TIESec>(row);
  if (!record) {
    throw TError(messages::kErrorNoItem);
  }
  try {
    // A key that cannot be opened is silent, and so is a write that fails, after which the row
    // keeps its old text.
    static_cast<void>(WriteSetting(platform_.registry, *record, Trim(edtValue->Text())));
    // The row shows what was typed, not the trimmed text.
    settingsList_.SetSubItem(row, 0, edtValue->Text());
  } catch (const std::exception&) {
  }
  Close();
}

void TFormChange::btnCancelClick() { Close(); }

void TFormChange::ApplicationEvents1Message(const TMessage& message) {
  if (!Visible()) return;
  // A control without a window counts as handle 0. The complement of that, the pseudo handle
  // HWND_TOPMOST, names no window, so a message for it is no key press in this dialog. Once all
  // four are shown nothing is held back.
  const std::array<const TControl*, 4> own{this, edtValue, btnCancel, btnOK};
  const bool windowless =
      std::ranges::any_of(own, [](const TControl* control) { return !control->Peer(); });
  if (windowless && ~message.window == 0) return;

  if (message.message != kKeyDownMessage) return;
  if (message.wParam == kReturnKey) {
    btnOKClick();
  } else if (message.wParam == kEscapeKey) {
    Close();
  }
}

}  // namespace tarvelin
