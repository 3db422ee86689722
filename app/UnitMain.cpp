#include "app/UnitMain.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "common/Corvane_Routine_New.h"
#include "common/flag_guard.h"
#include "common/registry_editor.h"
#include "shellmenu/shellmenu.h"
#include "widgets/list_update.h"

namespace tarvelin {

namespace {

constexpr std::size_t kIconSize = 16;
constexpr int kCategoryIcons = 6;
constexpr int kNavigationIcons = 35;
constexpr std::wstring_view kPrefix = L"Tarvelin";
constexpr std::wstring_view kMainSection = L"Tarvelin_FormMain";

constexpr std::wstring_view kMenuHeaderPictures[] = {L"header-menu-0.png", L"header-menu-1.png"};
constexpr std::wstring_view kIeHeaderPictures[] = {L"header-ie-0.png", L"header-ie-1.png",
                                                   L"header-ie-2.png", L"header-ie-3.png"};

// One icon of a strip of icons, empty when the strip is too short.
TPicture IconOf(const TPicture& strip, std::size_t index) {
  TPicture icon{kIconSize, kIconSize, std::vector<std::uint32_t>(kIconSize * kIconSize)};
  const auto width = static_cast<std::size_t>(strip.width);
  if ((index + 1) * kIconSize > width || strip.height < icon.height) return icon;
  for (std::size_t y = 0; y < kIconSize; ++y) {
    for (std::size_t x = 0; x < kIconSize; ++x) {
      icon.pixels[y * kIconSize + x] = strip.pixels[y * width + index * kIconSize + x];
    }
  }
  return icon;
}

}  // namespace

struct TFormMain::ButtonDescription {
  std::wstring_view name;
  std::wstring_view caption;
  int left;
  int width;
  void (TFormMain::*onClick)();
  bool followsSelection = true;
};

// What makes one page differ from the others.
struct TFormMain::PageDescription {
  std::wstring_view name;
  std::wstring_view listName;
  std::wstring_view itemCaption;
  int itemImage;
  bool contextMenu;  // in the upper navigation group
  bool rowImages;
  std::vector<TListColumn> columns;
  std::vector<ButtonDescription> buttons;
  void (*scan)(TFormMain& form, TListView& list);
};

std::span<const TFormMain::PageDescription> TFormMain::PageTable() {
  const auto shellExtensions = [](TFormMain& form, TListView& list) {
    ScanShellExtensions(form.platform_, *form.language_, list);
  };
  const auto newMenu = [](TFormMain& form, TListView& list) {
    ScanNewMenu(form.platform_, list, *form.imgListPublic);
  };
  const auto sendTo = [](TFormMain& form, TListView& list) {
    ScanSendTo(form.platform_, list, *form.imgListPublic, form.sendToFolder_);
  };
  const auto contextEntries = [](TFormMain& form, TListView& list) {
    form.scanner_->ScanContextEntries(list);
  };
  const auto explorerBars = [](TFormMain& form, TListView& list) {
    form.scanner_->ScanExplorerBars(list);
  };
  const auto toolbars = [](TFormMain& form, TListView& list) { form.scanner_->ScanToolbars(list); };
  const auto extraButtons = [](TFormMain& form, TListView& list) {
    form.scanner_->ScanExtraButtons(list);
  };
  const auto helperObjects = [](TFormMain& form, TListView& list) {
    form.scanner_->ScanHelperObjects(list);
  };
  const auto activeX = [](TFormMain& form, TListView& list) {
    form.scanner_->ScanDownloadedActiveX(list);
  };
  const auto settings = [](TFormMain& form, TListView& list) {
    form.scanner_->ScanIeSettings(list);
  };
  using F = TFormMain;
  const std::vector<TListColumn> module{{L"Name", 150}, {L"Publisher", 120}, {L"File Path", 250}};

  static const std::vector<PageDescription> table{
      // The headers of the first page stand over the other column's content; the entry's name comes
      // first so that it is what the user selects.
      {L"PageTab_Shell_Extention",
       L"lvShellList",
       L"Shell Extensions",
       33,
       true,
       true,
       {{L"Type", 250}, {L"Item Name", 270}},
       {{L"btnSEKey", L"Open in RegEdit", 10, 90, &F::btnSEKeyClick},
        {L"btnSERmv", L"Remove", 114, 90, &F::btnSERmvClick}},
       shellExtensions},
      {L"PageTab_New",
       L"lvNewList",
       L"New",
       8,
       true,
       true,
       {{L"Type", 300}},
       {{L"btnNewRmv", L"Remove", 10, 90, &F::btnNewRmvClick}},
       newMenu},
      {L"PageTab_Sendto",
       L"lvSendList",
       L"Send to",
       34,
       true,
       true,
       {{L"Type", 400}},
       {{L"btnStRmv", L"Remove", 10, 90, &F::btnStRmvClick}},
       sendTo},
      {L"PageTab_IE_Context_Menu",
       L"lvMenu",
       L"IE Context Menus",
       20,
       false,
       false,
       {{L"Name", 200}, {L"File Path", 300}},
       {{L"btnCMRmv", L"Remove", 10, 90, &F::btnCMRmvClick}},
       contextEntries},
      {L"PageTab_IE_Bar",
       L"lvBar",
       L"IE Bars",
       22,
       false,
       false,
       module,
       {{L"btnExpBarRmv", L"Remove", 10, 90, &F::btnExpBarRmvClick},
        {L"btnExpBarPPT", L"Properties", 114, 90, &F::btnExpBarPPTClick}},
       explorerBars},
      {L"PageTab_IE_Toolbar",
       L"lvTool",
       L"IE Toolbars",
       17,
       false,
       false,
       module,
       {{L"btnTlbarRmv", L"Remove", 10, 90, &F::btnTlbarRmvClick},
        {L"btnTlbarPPT", L"Properties", 114, 90, &F::btnTlbarPPTClick}},
       toolbars},
      {L"PageTab_IE_Extra_Button",
       L"lvButton",
       L"IE Extra Button",
       32,
       false,
       false,
       {{L"Name", 200}, {L"Command", 300}},
       {{L"btnExBtnRmv", L"Remove", 10, 90, &F::btnExBtnRmvClick}},
       extraButtons},
      {L"PageTab_IE_BHO",
       L"lvBHO",
       L"IE BHOs",
       13,
       false,
       false,
       module,
       {{L"btnBHORmv", L"Remove", 10, 90, &F::btnBHORmvClick},
        {L"btnBHOPPT", L"Properties", 114, 90, &F::btnBHOPPTClick}},
       helperObjects},
      {L"PageTab_IE_ActiveX",
       L"lvActive",
       L"IE Downloaded ActiveX",
       31,
       false,
       false,
       module,
       {{L"btnDARmv", L"Remove", 10, 90, &F::btnDARmvClick},
        {L"btnDAPPT", L"Properties", 114, 90, &F::btnDAPPTClick}},
       activeX},
      {L"PageTab_IE_Setting",
       L"lvHijack",
       L"IE Settings",
       26,
       false,
       false,
       {{L"Name", 200}, {L"Current Settings", 315}},
       {{L"Button_Modify", L"Modify Settings", 235, 150, &F::Button_ModifyClick},
        {L"Button_Restore", L"Use Default Settings", 399, 150, &F::Button_RestoreClick, false}},
       settings},
  };
  return table;
}

// ---- Building ----

TFormMain::TFormMain(TPlatform& platform, TApplication& application,
                     std::wstring_view executableFolder)
    : TForm(L"FormMain", 743, 482, L"Tarvelin"), platform_(platform), application_(application) {
  imgListPublic = &Create<TImageList>(L"imgListPublic");
  ImageList1 = &Create<TImageList>(L"ImageList1");
  const TPicture categories = LoadPicture(L"categories.png");
  for (std::size_t icon = 0; icon < kCategoryIcons; ++icon) {
    imgListPublic->Add(IconOf(categories, icon));
  }

  // The order of creation is the Tab order.
  CreateTop();
  CreateNavigation();
  CreatePages();
  CreateBottom();

  OnShow = [this] { FormShow(); };
  OnClose = [this] { FormClose(); };
  FormCreate(executableFolder);
}

TPicture TFormMain::LoadPicture(std::wstring_view fileName) {
  const auto extension = fileName.substr(fileName.rfind(L'.') + 1);
  return DecodePicture(extension, platform_.resources.Find(fileName)).value_or(TPicture{});
}

TImage& TFormMain::AddImage(std::wstring_view name, TControl& parent, TRect bounds,
                            std::wstring_view pictureFile) {
  auto& image = Create<TImage>(std::wstring(name), &parent, bounds);
  image.SetPicture(LoadPicture(pictureFile));
  image.stretch = true;
  return image;
}

void TFormMain::CreateTop() {
  auto& top = Create<TPanel>(L"Panel_Top", this, TRect{0, 0, 743, 69});
  AddImage(L"Image_Background", top, {0, 0, 743, 69}, L"background.jpg");
  AddImage(L"Image_Logo", top, {16, 9, 48, 48}, L"logo.png");
  Create<TLabel>(L"Label_Product_Name", &top, TRect{84, 14, 640, 20}, L"Tarvelin",
                 LabelStyle::Title);
  Create<TLabel>(L"Label_Product_Description", &top, TRect{84, 40, 650, 16},
                 L"Manages Internet Explorer add-ons and system context menu. Restores hijacked "
                 L"settings.",
                 LabelStyle::Plain);
  AddImage(L"imgLine", *this, {0, 69, 178, 1}, L"line.png");
}

void TFormMain::CreateNavigation() {
  const TPicture icons = LoadPicture(L"navigation.png");
  const auto table = PageTable();
  for (int image = 0; image < kNavigationIcons; ++image) {
    std::size_t page = 0;
    while (page < table.size() && table[page].itemImage != image) ++page;
    ImageList1->Add(IconOf(icons, page));
  }

  // One pixel lower it would cover the line above the bottom panel.
  RzGroupBar = &Create<TGroupBar>(L"RzGroupBar", this, TRect{0, 70, 178, 363});
  RzGroupBar->anchor = Anchor::Both;
  RzGroupBar->SetSmallImages(ImageList1);
  RzGroupContextMenu = &AddGroup(L"RzGroupContextMenu", 90, L"Context Menu", L"ImageNote_Menu",
                                 L"Label_Menu", kMenuHeaderPictures);
  RzGroupTarvelin = &AddGroup(L"RzGroupTarvelin", 170, L"Tarvelin", L"ImageNote_IE", L"Label_IE",
                              kIeHeaderPictures);
  for (std::size_t page = 0; page < table.size(); ++page) {
    TGroup& group = table[page].contextMenu ? *RzGroupContextMenu : *RzGroupTarvelin;
    pages_[page].item = &group.AddItem(table[page].itemCaption, table[page].itemImage,
                                       [this, page] { ItemClick(static_cast<Page>(page)); });
  }
}

TGroup& TFormMain::AddGroup(std::wstring_view name, int height, std::wstring_view caption,
                            std::wstring_view imageName, std::wstring_view labelName,
                            std::span<const std::wstring_view> pictureFiles) {
  TGroup& group = RzGroupBar->AddGroup(std::wstring(name), height, caption);
  auto& image = Create<TImageNote>(std::wstring(imageName), &group, TRect{0, 0, 162, 24});
  for (const auto& file : pictureFiles) image.Items().Add().Picture = LoadPicture(file);
  image.OnClick = [this, &group] { HeaderClick(group); };
  auto& label = Create<TLabel>(std::wstring(labelName), &group, TRect{10, 5, 128, 14}, caption,
                               LabelStyle::Bold);
  group.SetHeader(image, label);
  return group;
}

void TFormMain::CreatePages() {
  Panel_Right = &Create<TPanel>(L"Panel_Right", this, TRect{178, 69, 565, 364});
  PageNote1 = &Create<TPageNote>(L"PageNote1", Panel_Right, TRect{0, 0, 565, 364});
  Panel_Right->anchor = PageNote1->anchor = Anchor::Both;
  const auto table = PageTable();
  for (std::size_t index = 0; index < table.size(); ++index) {
    const PageDescription& description = table[index];
    const auto page = static_cast<Page>(index);
    PageControls& controls = pages_[index];

    controls.page = &Create<TPageTab>(std::wstring(description.name), PageNote1);
    PageNote1->InsertPage(*controls.page);
    controls.list = &Create<TListView>(std::wstring(description.listName), controls.page,
                                       TRect{0, 0, 566, 323}, description.columns);
    controls.list->anchor = Anchor::Both;
    if (description.rowImages) controls.list->SetSmallImages(imgListPublic);
    controls.list->OnSelectItem = [this, page] { SelectItem(page); };

    if (page == Page::Settings) {
      chkBoxAll =
          &Create<TCheckBox>(L"chkBoxAll", controls.page, TRect{6, 334, 97, 17}, L"Select All");
      chkBoxAll->anchor = Anchor::Bottom;
      chkBoxAll->OnClick = [this] { chkBoxAllClick(); };
      controls.list->OnItemChecked = [this] { lvHijackItemChecked(); };
      controls.list->OnDblClick = [this] { Button_ModifyClick(); };
    }
    for (const ButtonDescription& button : description.buttons) {
      auto& created = Create<TButton>(std::wstring(button.name), controls.page,
                                      TRect{button.left, 330, button.width, 25}, button.caption);
      created.anchor = Anchor::Bottom;
      created.SetEnabled(false);
      created.OnClick = [this, onClick = button.onClick] { (this->*onClick)(); };
      if (button.followsSelection) {
        controls.buttons.push_back(&created);
      } else {
        Button_Restore = &created;
      }
    }
    // Softer than the line of the bottom panel right below it, or the two would look like a thick
    // one.
    AddImage(L"img" + std::to_wstring(index + 2), *controls.page, {0, 363, 565, 1},
             L"line-soft.png")
        .anchor = Anchor::Bottom;
  }
}

void TFormMain::CreateBottom() {
  auto& bottom = Create<TPanel>(L"Panel_Bottom", this, TRect{0, 433, 743, 49});
  bottom.anchor = Anchor::Bottom;
  AddImage(L"img1", bottom, {0, 0, 743, 1}, L"line.png");
  auto& close = Create<TButton>(L"btnClose", &bottom, TRect{638, 13, 90, 25}, L"Close");
  close.OnClick = [this] { Close(); };
}

// ---- The window's own events ----

void TFormMain::FormCreate(std::wstring_view executableFolder) {
  if (platform_.display.WindowsMajorVersion() < 6) {
    // Check boxes of the older theme stand two pixels further left.
    TRect bounds = chkBoxAll->Bounds();
    bounds.left += 2;
    chkBoxAll->SetBounds(bounds);
  }

  language_ = std::make_unique<TLanguage>(platform_.files, kPrefix,
                                          std::wstring(executableFolder) + L"Toolbox_Language");
  application_.SetMessages(language_.get());
  const std::wstring settingsFile =
      GetSpecialFolder(platform_.shell, kAppDataFolder) + L"\\Corvane\\Halvicore V4\\Main.ini";
  language_->Load(language_->ReadLanguageName(settingsFile, L"Main", L"Language"));

  for (const PageControls& page : pages_) page.page->SetColor(kWhite);

  const std::vector<std::wstring> texts{Message(messages::kNonexistPath)};
  scanner_ = std::make_unique<TScanIeBrowser>(platform_, *language_, texts);

  application_.Report([this] { ReadSendToFolder(); });
  ChooseHeaderPictures();
}

void TFormMain::ReadSendToFolder() {
  TRegistry registry(platform_.registry);
  if (registry.OpenKey(L"\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                       true)) {
    sendToFolder_ = registry.ReadString(L"SendTo");
  }
}

void TFormMain::FormShow() {
  TranslateWindows();
  if (formChange_) language_->Translate(*formChange_);
  for (TGroup* group : RzGroupBar->Groups()) {
    for (std::size_t index = 0; index < group->Items().size(); ++index) {
      TGroupItem& item = *group->Items()[index];
      const std::wstring key = group->Name() + L".Items[" + std::to_wstring(index) + L"].Caption";
      item.SetCaption(language_->ReadText(kMainSection, key, item.Caption()));
    }
    group->SetCaption(group->HeaderLabel()->Caption());
  }
  // Screen readers read the captions of groups and lists, which are not shown, as their names.
  for (const PageControls& page : pages_) page.list->SetCaption(page.item->Caption());

  PageNote1->SetBounds({0, 0, Panel_Right->Bounds().width, Panel_Right->Bounds().height});

  TRect bounds = chkBoxAll->Bounds();
  const int wanted =
      static_cast<int>(std::lrint(platform_.display.PixelsPerInch() / 96.0 *
                                  platform_.display.TextWidth(chkBoxAll->Caption())));
  const int room = Controls(Page::Settings).buttons.front()->Bounds().left - bounds.left;
  bounds.width = std::min(wanted + 25, room);
  chkBoxAll->SetBounds(bounds);

  // The window appears even when its first page cannot be read.
  application_.Report([this] { Controls(Page::ShellExtensions).item->Click(); });
}

void TFormMain::FormClose() {
  application_.Terminate();
  scanner_.reset();
}

void TFormMain::TranslateWindows() {
  for (TForm* form : application_.Forms()) language_->Translate(*form);
}

// ---- Navigation ----

void TFormMain::ItemClick(Page page) {
  PageControls& controls = Controls(page);
  RzGroupBar->SelectItem(*controls.item);
  // A listing that lets messages through must not be begun a second time by a click on its item.
  if (!controls.scanning) {
    const FlagGuard scanning(controls.scanning, true);
    const ListUpdate update(*controls.list);
    PageTable()[static_cast<std::size_t>(page)].scan(*this, *controls.list);
  }
  // Another item may have been chosen while a listing let messages through.
  if (!controls.item->Selected()) return;
  PageNote1->SetActivePage(controls.page);
  FitLastColumn(*controls.list, platform_.display);
}

void TFormMain::HeaderClick(TGroup& group) {
  group.SetOpened(!group.Opened());
  ChooseHeaderPictures();
}

void TFormMain::ChooseHeaderPictures() {
  const bool menuOpen = RzGroupContextMenu->Opened();
  const bool productOpen = RzGroupTarvelin->Opened();
  RzGroupContextMenu->HeaderImage()->SetImageIndex(menuOpen ? 0 : 1);
  RzGroupTarvelin->HeaderImage()->SetImageIndex((menuOpen ? 2 : 0) + (productOpen ? 0 : 1));
}

// ---- Selection ----

void TFormMain::SelectItem(Page page) {
  if (page == Page::Toolbars) return lvToolSelectItem();
  const bool selected = List(page).SelectedIndex() >= 0;
  for (TButton* button : Controls(page).buttons) button->SetEnabled(selected);
}

void TFormMain::lvToolSelectItem() {
  TButton& remove = *Controls(Page::Toolbars).buttons[0];
  TButton& properties = *Controls(Page::Toolbars).buttons[1];
  if (List(Page::Toolbars).SelectedIndex() < 0) {
    remove.SetEnabled(false);
    properties.SetEnabled(false);
  } else if (const auto record = SelectedRecord<TIESec>(Page::Toolbars)) {
    remove.SetEnabled(true);
    // A row whose module is gone leaves Properties as the row before it did.
    if (platform_.files.FileExists(record->FilePath)) properties.SetEnabled(true);
  }
}

void TFormMain::lvHijackItemChecked() {
  const TListView& list = lvHijack();
  int index = 0;
  while (index < list.Count() && !list.Item(index).checked) ++index;
  Button_Restore->SetEnabled(index < list.Count());
}

template <typename Record>
std::shared_ptr<Record> TFormMain::SelectedRecord(Page page) {
  const TListView& list = List(page);
  return list.SelectedIndex() < 0 ? nullptr : list.Data<Record>(list.SelectedIndex());
}

// ---- Removal ----

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
                        ShortenedName(list.Item(list.IndexOf(*record)).caption));
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
        scanner_->RemoveAddon(RemovalMode::DeleteContextEntry, record.RegLocation);
        return Removal::Done;
      },
      messages::kEntryRemoved);
}

void TFormMain::btnExBtnRmvClick() {
  RemoveSelected<TIESec>(Page::ExtraButtons, [this](const TIESec& record) {
    scanner_->RemoveAddon(RemovalMode::DeleteExtraButton, record.RegLocation);
    return Removal::Done;
  });
}

void TFormMain::btnExpBarRmvClick() {
  RemoveSelected<TIESec>(Page::Bars, [this](const TIESec& record) {
    scanner_->RemoveAddon(RemovalMode::DeleteValueAndFile,
                          record.RegLocation + L"|" + record.FilePath);
    return Removal::Done;  // whatever became of the file
  });
}

void TFormMain::btnTlbarRmvClick() {
  RemoveSelected<TIESec>(Page::Toolbars, [this](const TIESec& record) {
    const int result = scanner_->RemoveAddon(RemovalMode::DeleteValueAndFile,
                                             record.RegLocation + L"|" + record.FilePath);
    return result == 0 ? Removal::Done : Removal::FileStays;
  });
}

void TFormMain::RemoveModule(Page page, RemovalMode mode) {
  RemoveSelected<TIESec>(page, [this, mode](const TIESec& record) {
    if (IsFileInUse(platform_.files, std::wstring(Trim(record.FilePath)))) {
      return Removal::FileInUse;
    }
    scanner_->RemoveAddon(mode, record.FilePath + L"|" + record.RegLocation);
    return Removal::Done;
  });
}

void TFormMain::btnBHORmvClick() {
  RemoveModule(Page::HelperObjects, RemovalMode::UnregisterHelperObject);
}

void TFormMain::btnDARmvClick() { RemoveModule(Page::ActiveX, RemovalMode::UnregisterControl); }

// ---- Properties and the registry editor ----

void TFormMain::ShowRowProperties(Page page) {
  // The shell reports nothing of a file that has gone, and neither does the button.
  if (const auto record = SelectedRecord<TIESec>(page)) {
    ShowFileProperties(platform_.shell, record->FilePath);
  }
}

void TFormMain::btnExpBarPPTClick() { ShowRowProperties(Page::Bars); }
void TFormMain::btnTlbarPPTClick() { ShowRowProperties(Page::Toolbars); }
void TFormMain::btnBHOPPTClick() { ShowRowProperties(Page::HelperObjects); }
void TFormMain::btnDAPPTClick() { ShowRowProperties(Page::ActiveX); }

void TFormMain::btnSEKeyClick() {
  if (const auto record = SelectedRecord<TShellExtension>(Page::ShellExtensions)) {
    OpenRegEditAt(platform_.editor, L"HKEY_CLASSES_ROOT" + record->KeyPath, L"");
  } else {
    platform_.boxes.Show(Message(messages::kSelectNone), application_.Title(), kBoxError);
  }
}

// ---- Settings ----

void TFormMain::chkBoxAllClick() {
  for (int index = 0; index < lvHijack().Count(); ++index) {
    lvHijack().SetChecked(index, chkBoxAll->Checked());
  }
}

void TFormMain::Button_ModifyClick() {
  if (formChange_) formChange_->ShowModal();
}

void TFormMain::Button_RestoreClick() {
  if (platform_.boxes.Show(Message(messages::kRestore), Message(messages::kConfirm),
                           kBoxYesNoQuestion) != kAnswerYes) {
    return;
  }
  chkBoxAll->SetMark(false);
  if (scanner_->RestoreSettings(lvHijack()) > 0) {
    platform_.boxes.Show(Message(messages::kRestoreSuccess), Caption(), kBoxOk);
  } else {
    platform_.boxes.Show(Message(messages::kNothingRestored), Caption(), kBoxError);
  }
}

}  // namespace tarvelin
