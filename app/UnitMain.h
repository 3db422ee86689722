// The main window: the navigation bar, ten pages with a list each, and the commands on their rows.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "addons/UnitIEBrowserHelp.h"
#include "app/PLanguage.h"
#include "app/application.h"
#include "common/platform.h"
#include "widgets/PImageNote.h"
#include "widgets/PPageNote.h"
#include "widgets/components.h"
#include "widgets/navigation.h"

namespace tarvelin {

// The pages in the order of the page control and of the navigation bar.
enum class Page : std::size_t {
  ShellExtensions,
  New,
  SendTo,
  ContextMenus,
  Bars,
  Toolbars,
  ExtraButtons,
  HelperObjects,
  ActiveX,
  Settings,
};
inline constexpr std::size_t kPageCount = 10;

class TFormMain : public TForm {
 public:
  // Builds the window and runs FormCreate. `executableFolder` ends in a backslash. The platform and
  // the application outlive the window.
  TFormMain(TPlatform& platform, TApplication& application, std::wstring_view executableFolder);

  // The settings page's list, whose selected row the change dialog works on.
  [[nodiscard]] TListView& lvHijack() { return List(Page::Settings); }
  // The dialog that Modify opens; it is created after this window and set once.
  void SetFormChange(TForm& formChange) { formChange_ = &formChange; }

  // Applies the loaded language to every window of the application.
  void TranslateWindows();

 private:
  struct ButtonDescription;
  struct PageDescription;
  static std::span<const PageDescription> PageTable();

  struct PageControls {
    TGroupItem* item = nullptr;
    TPageTab* page = nullptr;
    TListView* list = nullptr;
    std::vector<TButton*> buttons;
    bool scanning = false;
  };

  // Building
  void CreateTop();
  void CreateNavigation();
  void CreatePages();
  void CreateBottom();
  TImage& AddImage(std::wstring_view name, TControl& parent, TRect bounds,
                   std::wstring_view pictureFile);
  TGroup& AddGroup(std::wstring_view name, int height, std::wstring_view caption,
                   std::wstring_view imageName, std::wstring_view labelName,
                   std::span<const std::wstring_view> pictureFiles);
  [[nodiscard]] TPicture LoadPicture(std::wstring_view fileName);

  // The window's own events
  void FormCreate(std::wstring_view executableFolder);
  void FormShow();
  void FormClose();
  void ReadSendToFolder();

  // Navigation
  void ItemClick(Page page);
  void HeaderClick(TGroup& group);
  void ChooseHeaderPictures();

  // Selection
  void SelectItem(Page page);
  void lvToolSelectItem();
  void lvHijackItemChecked();

  // Commands
  void btnSERmvClick();
  void btnSEKeyClick();
  void btnNewRmvClick();
  void btnStRmvClick();
  void btnCMRmvClick();
  void btnExpBarRmvClick();
  void btnExpBarPPTClick();
  void btnTlbarRmvClick();
  void btnTlbarPPTClick();
  void btnExBtnRmvClick();
  void btnBHORmvClick();
  void btnBHOPPTClick();
  void btnDARmvClick();
  void btnDAPPTClick();
  void chkBoxAllClick();
  void Button_ModifyClick();
  void Button_RestoreClick();

  // What the commands share
  enum class Removal { Done, FileInUse, FileStays };
  // Asks, removes what the selected row stands for, takes the row out and tells what came of it. A
  // file that is in use leaves the row as it was.
  template <typename Record>
  void RemoveSelected(Page page, const std::function<Removal(const Record&)>& remove,
                      const Text& success = messages::kRemoveSuccess);
  void RemoveModule(Page page, RemovalMode mode);
  void ShowRowProperties(Page page);
  void ShowFailure(const std::wstring& caption);
  template <typename Record>
  [[nodiscard]] std::shared_ptr<Record> SelectedRecord(Page page);

  [[nodiscard]] PageControls& Controls(Page page) { return pages_[static_cast<std::size_t>(page)]; }
  [[nodiscard]] TListView& List(Page page) { return *Controls(page).list; }
  [[nodiscard]] std::wstring Message(const Text& text) const { return language_->Message(text); }

  TPlatform& platform_;
  TApplication& application_;
  TForm* formChange_ = nullptr;

  TGroupBar* RzGroupBar = nullptr;
  TGroup* RzGroupContextMenu = nullptr;
  TGroup* RzGroupTarvelin = nullptr;
  TPanel* Panel_Right = nullptr;
  TPageNote* PageNote1 = nullptr;
  TCheckBox* chkBoxAll = nullptr;
  TButton* Button_Restore = nullptr;
  TImageList* imgListPublic = nullptr;
  TImageList* ImageList1 = nullptr;
  std::array<PageControls, kPageCount> pages_;

  std::wstring sendToFolder_;
  std::unique_ptr<TLanguage> language_;
  std::unique_ptr<TScanIeBrowser> scanner_;
};

}  // namespace tarvelin
