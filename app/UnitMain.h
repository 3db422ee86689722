// The main window: the navigation bar, ten pages with a list each, and the commands on their rows.
#pragma once

#include <array>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "addons/UnitIEBrowserHelp.h"
#include "app/PLanguage.h"
#include "app/application.h"
#include "app/pages.h"
#include "widgets/PImageNote.h"
#include "widgets/PPageNote.h"
#include "widgets/components.h"
#include "widgets/navigation.h"
#include "widgets/platform.h"

namespace tarvelin {

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
  struct PageControls {
    TGroupItem* item = nullptr;
    TPageTab* page = nullptr;
    TListView* list = nullptr;
    std::vector<TButton*> buttons;
    bool scanning = false;
  };

  // Building
  void FillTop();
  void FillNavigation();
  void FillPages();
  void FillBottom();
  TImage& AddImage(std::wstring_view name, TControl& parent, TRect bounds,
                   std::wstring_view pictureFile);
  TGroup& AddGroup(std::wstring_view name, int height, std::wstring_view caption,
                   std::wstring_view imageName, std::wstring_view labelName,
                   std::initializer_list<std::wstring_view> pictureFiles);
  [[nodiscard]] TPicture LoadPicture(std::wstring_view fileName);

  // The window's own events
  void FormCreate();
  void FormShow();
  void FormClose();
  void ReadSendToFolder();

  // Navigation
  void ItemClick(Page page);
  void Scan(Page page, TListView& list);
  void HeaderClick(TGroup& group);
  void ChooseHeaderPictures();

  // Selection
  void SelectItem(Page page);
  void lvToolSelectItem();
  void lvHijackItemChecked();

  // Commands
  void ButtonClick(Page page, ButtonRole role);
  void RemoveClick(Page page);
  void btnSERmvClick();
  void btnSEKeyClick();
  void btnNewRmvClick();
  void btnStRmvClick();
  void btnCMRmvClick();
  void btnExpBarRmvClick();
  void btnTlbarRmvClick();
  void btnExBtnRmvClick();
  void btnBHORmvClick();
  void btnDARmvClick();
  void chkBoxAllClick();
  void Button_ModifyClick();
  void Button_RestoreClick();

  void ListKeyPressed(Page page, ListKey key);
  [[nodiscard]] std::vector<TMenuItem> RowMenu(Page page);
  void CopyRow(Page page);

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

  [[nodiscard]] static const PageDescription& Description(Page page);
  [[nodiscard]] TButton* FindButton(Page page, ButtonRole role);  // null on a page without one
  [[nodiscard]] TButton& Button(Page page, ButtonRole role) { return *FindButton(page, role); }
  [[nodiscard]] PageControls& Controls(Page page) { return pages_[static_cast<std::size_t>(page)]; }
  [[nodiscard]] TListView& List(Page page) { return *Controls(page).list; }
  [[nodiscard]] std::wstring Message(const Text& text) const { return language_.Message(text); }

  TPlatform& platform_;
  TApplication& application_;
  TForm* formChange_ = nullptr;

  TLanguage language_;
  std::optional<TScanIeBrowser> scanner_;  // until the window is closed
  std::wstring sendToFolder_;

  TImageList& imgListPublic = Create<TImageList>(L"imgListPublic");
  TImageList& ImageList1 = Create<TImageList>(L"ImageList1");

  // In the order in which Tab reaches what they hold. The bar ends where it does because one pixel
  // lower it would cover the line above the bottom panel.
  TPanel& Panel_Top = Create<TPanel>(L"Panel_Top", this, TRect{0, 0, 743, 69});
  TGroupBar& RzGroupBar = Create<TGroupBar>(L"RzGroupBar", this, TRect{0, 70, 178, 363});
  TGroup& RzGroupContextMenu =
      AddGroup(L"RzGroupContextMenu", 90, L"Context Menu", L"ImageNote_Menu", L"Label_Menu",
               {L"header-menu-0.png", L"header-menu-1.png"});
  TGroup& RzGroupTarvelin =
      AddGroup(L"RzGroupTarvelin", 170, L"Tarvelin", L"ImageNote_IE", L"Label_IE",
               {L"header-ie-0.png", L"header-ie-1.png", L"header-ie-2.png", L"header-ie-3.png"});
  TPanel& Panel_Right = Create<TPanel>(L"Panel_Right", this, TRect{178, 69, 565, 364});
  TPageNote& PageNote1 = Create<TPageNote>(L"PageNote1", &Panel_Right, TRect{0, 0, 565, 364});
  TPanel& Panel_Bottom = Create<TPanel>(L"Panel_Bottom", this, TRect{0, 433, 743, 49});
  TCheckBox* chkBoxAll = nullptr;  // on the settings page, between its list and its buttons
  std::array<PageControls, kPageCount> pages_;
};

template <typename Record>
std::shared_ptr<Record> TFormMain::SelectedRecord(Page page) {
  const TListView& list = List(page);
  return list.SelectedIndex() < 0 ? nullptr : list.Data<Record>(list.SelectedIndex());
}

}  // namespace tarvelin
