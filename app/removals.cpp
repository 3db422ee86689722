// The Remove buttons of the pages.
#include "app/UnitMain.h"
#include "common/Corvane_Routine_New.h"
#include "shellmenu/shellmenu.h"

namespace tarvelin {

void TFormMain::RemoveClick(Page page) {
  switch (page) {
    case Page::ShellExtensions:
      return btnSERmvClick();
    case Page::New:
      return btnNewRmvClick();
    case Page::SendTo:
      return btnStRmvClick();
    case Page::ContextMenus:
      return btnCMRmvClick();
    case Page::Bars:
      return btnExpBarRmvClick();
    case Page::Toolbars:
      return btnTlbarRmvClick();
    case Page::ExtraButtons:
      return btnExBtnRmvClick();
    case Page::HelperObjects:
      return btnBHORmvClick();
    case Page::ActiveX:
      return btnDARmvClick();
    case Page::Settings:
      return;
  }
}

template <typename Record>
void TFormMain::RemoveSelected(Page page, const std::function<Removal(const Record&)>& remove,
                               const Text& success) {
  TListView& list = List(page);
  // The row is known by its record from here on: the selection may move while the question stands,
  // or while a module that is unregistered does what it likes.
  const auto record = SelectedRecord<Record>(page);
  if (!record) return;
  const std::wstring question =
      FormatMessageText(Message(messages::kRemoveWarning) + L"?",
                        ShortenedName(list.CellText(list.IndexOf(*record), 0)));
  if (platform_.boxes.Show(question, Message(messages::kWarning), kBoxYesNoQuestion) !=
      kAnswerYes) {
    return;
  }
  if (list.IndexOf(*record) < 0) return;

  const Removal result = remove(*record);
  if (result != Removal::FileInUse) list.Delete(list.IndexOf(*record));
  if (result == Removal::Done) {
    platform_.boxes.Show(Message(success), Caption(), kBoxOk);
  } else {
    ShowFailure(Message(messages::kUnableDeleteFile));
  }
}

void TFormMain::ShowFailure(const std::wstring& caption) {
  platform_.boxes.Show(
      Message(messages::kOperationFail) + L"\r\n" + Message(messages::kAccessDenied), caption,
      kBoxError);
}

void TFormMain::btnSERmvClick() {
  if (List(Page::ShellExtensions).SelectedIndex() < 0) {
    platform_.boxes.Show(Message(messages::kSelectNone), Caption(), kBoxError);
    return;
  }
  RemoveSelected<TShellExtension>(Page::ShellExtensions, [this](const TShellExtension& record) {
    RemoveShellKey(platform_.registry, record.KeyPath);
    return Removal::Done;
  });
}

void TFormMain::btnNewRmvClick() {
  RemoveSelected<TNew>(Page::New, [this](const TNew& record) {
    RemoveShellKey(platform_.registry, record.KeyPath);
    return Removal::Done;
  });
}

void TFormMain::btnStRmvClick() {
  RemoveSelected<TSendTo>(Page::SendTo, [this](const TSendTo& record) {
    // Success is reported whatever came of it: the row is gone until the folder is read again.
    static_cast<void>(platform_.files.RemoveFile(record.FilePath));
    return Removal::Done;
  });
}

void TFormMain::btnCMRmvClick() {
  RemoveSelected<TIESec>(
      Page::ContextMenus,
      [this](const TIESec& record) {
        scanner_->RemoveAddon(RemovalMode::DeleteContextEntry,
                              RemovalString(RemovalMode::DeleteContextEntry, record));
        return Removal::Done;
      },
      messages::kEntryRemoved);
}

void TFormMain::btnExBtnRmvClick() {
  RemoveSelected<TIESec>(Page::ExtraButtons, [this](const TIESec& record) {
    scanner_->RemoveAddon(RemovalMode::DeleteExtraButton,
                          RemovalString(RemovalMode::DeleteExtraButton, record));
    return Removal::Done;
  });
}

void TFormMain::btnExpBarRmvClick() {
  RemoveSelected<TIESec>(Page::Bars, [this](const TIESec& record) {
    scanner_->RemoveAddon(RemovalMode::DeleteValueAndFile,
                          RemovalString(RemovalMode::DeleteValueAndFile, record));
    return Removal::Done;  // whatever became of the file
  });
}

void TFormMain::btnTlbarRmvClick() {
  RemoveSelected<TIESec>(Page::Toolbars, [this](const TIESec& record) {
    const int result = scanner_->RemoveAddon(
        RemovalMode::DeleteValueAndFile, RemovalString(RemovalMode::DeleteValueAndFile, record));
    return result == 0 ? Removal::Done : Removal::FileStays;
  });
}

void TFormMain::RemoveModule(Page page, RemovalMode mode) {
  RemoveSelected<TIESec>(page, [this, mode](const TIESec& record) {
    if (IsFileInUse(platform_.files, std::wstring(Trim(record.FilePath)))) {
      return Removal::FileInUse;
    }
    scanner_->RemoveAddon(mode, RemovalString(mode, record));
    return Removal::Done;
  });
}

void TFormMain::btnBHORmvClick() {
  RemoveModule(Page::HelperObjects, RemovalMode::UnregisterHelperObject);
}

void TFormMain::btnDARmvClick() { RemoveModule(Page::ActiveX, RemovalMode::UnregisterControl); }

}  // namespace tarvelin
