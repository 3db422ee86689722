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

// ---- Building ----

TFormMain::TFormMain(TPlatform& platform, TApplication& application,
                     std::wstring_view executableFolder)
    : TForm(L"FormMain", 743, 482, L"Tarvelin"),
      platform_(platform),
      application_(application),
      language_(platform.files, kPrefix, std::wstring(executableFolder) + L"Toolbox_Language") {
  FillTop();
  FillNavigation();
  FillPages();
  FillBottom();

  OnShow = [this] { FormShow(); };
  OnClose = [this] { FormClose(); };
  FormCreate();
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

void TFormMain::FillTop() {
  AddImage(L"Image_Background", Panel_Top, {0, 0, 743, 69}, L"background.jpg");
  AddImage(L"Image_Logo", Panel_Top, {16, 9, 48, 48}, L"logo.png");
  Create<TLabel>(L"Label_Product_Name", &Panel_Top, TRect{84, 14, 640, 20}, L"Tarvelin",
                 LabelStyle::Title);
  Create<TLabel>(L"Label_Product_Description", &Panel_Top, TRect{84, 40, 650, 16},
                 L"Manages Internet Explorer add-ons and system context menu. Restores hijacked "
                 L"settings.",
                 LabelStyle::Plain);
  AddImage(L"imgLine", *this, {0, 69, 178, 1}, L"line.png");
}

void TFormMain::FillNavigation() {
  const TPicture categories = LoadPicture(L"categories.png");
  for (std::size_t icon = 0; icon < kCategoryIcons; ++icon) {
    imgListPublic.Add(IconOf(categories, icon));
  }
  // The strip holds the icons in use, in the order of the pages; all others are one empty image.
  const TPicture icons = LoadPicture(L"navigation.png");
  int unused = -1;
  for (int image = 0; image < kNavigationIcons; ++image) {
    const auto page = std::ranges::find(PageTable(), image, &PageDescription::itemImage);
    if (page != PageTable().end()) {
      ImageList1.Add(IconOf(icons, static_cast<std::size_t>(page - PageTable().begin())));
    } else if (unused >= 0) {
      ImageList1.AddCopy(unused);
    } else {
      unused = ImageList1.Add(IconOf({}, 0));
    }
  }

  RzGroupBar.anchor = Anchor::Both;
  RzGroupBar.SetSmallImages(&ImageList1);
  for (const PageDescription& description : PageTable()) {
    TGroup& group =
        description.group == NavigationGroup::ContextMenu ? RzGroupContextMenu : RzGroupTarvelin;
    const Page page = description.page;
    Controls(page).item = &group.AddItem(description.itemCaption, description.itemImage,
                                         [this, page] { ItemClick(page); });
  }
}

TGroup& TFormMain::AddGroup(std::wstring_view name, int height, std::wstring_view caption,
                            std::wstring_view imageName, std::wstring_view labelName,
                            std::initializer_list<std::wstring_view> pictureFiles) {
  TGroup& group = RzGroupBar.AddGroup(std::wstring(name), height, caption);
  auto& image = Create<TImageNote>(std::wstring(imageName), &group, TRect{0, 0, 162, 24});
  for (const auto& file : pictureFiles) image.Items().Add().Picture = LoadPicture(file);
  image.OnClick = [this, &group] { HeaderClick(group); };
  auto& label = Create<TLabel>(std::wstring(labelName), &group, TRect{10, 5, 128, 14}, caption,
                               LabelStyle::Bold);
  group.SetHeader(image, label);
  return group;
}

void TFormMain::FillPages() {
  Panel_Right.anchor = PageNote1.anchor = Anchor::Both;
  for (const PageDescription& description : PageTable()) {
    const Page page = description.page;
    PageControls& controls = Controls(page);
    controls.page = &Create<TPageTab>(std::wstring(description.name), &PageNote1);
    PageNote1.InsertPage(*controls.page);
    controls.list = &Create<TListView>(std::wstring(description.listName), controls.page,
                                       TRect{0, 0, 566, 323}, description.columns);
    controls.list->anchor = Anchor::Both;
    if (description.rowImages) controls.list->SetSmallImages(&imgListPublic);
    controls.list->OnSelectItem = [this, page] { SelectItem(page); };
    controls.list->OnKey = [this, page](ListKey key) { ListKeyPressed(page, key); };
    controls.list->OnMenu = [this, page] { return RowMenu(page); };

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
      created.OnClick = [this, page, role = button.role] { ButtonClick(page, role); };
      controls.buttons.push_back(&created);
    }
    // Softer than the line of the bottom panel right below it, or the two would look like a thick
    // one.
    AddImage(L"img" + std::to_wstring(static_cast<std::size_t>(page) + 2), *controls.page,
             {0, 363, 565, 1}, L"line-soft.png")
        .anchor = Anchor::Bottom;
  }
  // The one that is shown first, so that no other is shown for a moment.
  PageNote1.SetTabIndex(0);
}

void TFormMain::FillBottom() {
  Panel_Bottom.anchor = Anchor::Bottom;
  AddImage(L"img1", Panel_Bottom, {0, 0, 743, 1}, L"line.png");
  auto& close = Create<TButton>(L"btnClose", &Panel_Bottom, TRect{638, 13, 90, 25}, L"Close");
  close.OnClick = [this] { Close(); };
}

// ---- The window's own events ----

void TFormMain::FormCreate() {
  if (platform_.display.WindowsMajorVersion() < 6) {
    // Check boxes of the older theme stand two pixels further left.
    TRect bounds = chkBoxAll->Bounds();
    bounds.left += 2;
    chkBoxAll->SetBounds(bounds);
  }

  application_.SetMessages(&language_);
  const std::wstring settingsFile =
      GetSpecialFolder(platform_.shell, kAppDataFolder) + L"\\Corvane\\Halvicore V4\\Main.ini";
  language_.Load(language_.ReadLanguageName(settingsFile, L"Main", L"Language"));

  for (const PageControls& page : pages_) page.page->SetColor(kWhite);

  scanner_.emplace(platform_, language_, std::vector{Message(messages::kNonexistPath)});

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
  if (formChange_) language_.Translate(*formChange_);
  for (TGroup* group : RzGroupBar.Groups()) {
    for (std::size_t index = 0; index < group->Items().size(); ++index) {
      TGroupItem& item = *group->Items()[index];
      const std::wstring key = group->Name() + L".Items[" + std::to_wstring(index) + L"].Caption";
      item.SetCaption(language_.ReadText(kMainSection, key, item.Caption()));
    }
    group->SetCaption(group->HeaderLabel()->Caption());
  }
  // Screen readers read the captions of groups and lists, which are not shown, as their names.
  for (const PageControls& page : pages_) page.list->SetCaption(page.item->Caption());

  PageNote1.SetBounds({0, 0, Panel_Right.Bounds().width, Panel_Right.Bounds().height});

  TRect bounds = chkBoxAll->Bounds();
  const int wanted =
      static_cast<int>(std::lrint(platform_.display.PixelsPerInch() / 96.0 *
                                  platform_.display.TextWidth(chkBoxAll->Caption())));
  const int room = Button(Page::Settings, ButtonRole::Modify).Bounds().left - bounds.left;
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
  for (TForm* form : application_.Forms()) language_.Translate(*form);
}

// ---- Navigation ----

void TFormMain::ItemClick(Page page) {
  PageControls& controls = Controls(page);
  RzGroupBar.SelectItem(*controls.item);
  // A listing that lets messages through must not be begun a second time by a click on its item.
  if (!controls.scanning) {
    const FlagGuard scanning(controls.scanning, true);
    const ListUpdate update(*controls.list);
    Scan(page, *controls.list);
  }
  controls.list->SetEmptyText(controls.list->Count() > 0 ? L"" : Message(messages::kNothingFound));
  // Another item may have been chosen while a listing let messages through.
  if (!controls.item->Selected()) return;
  PageNote1.SetActivePage(controls.page);
  FitLastColumn(*controls.list, platform_.display);
}

void TFormMain::Scan(Page page, TListView& list) {
  switch (page) {
    case Page::ShellExtensions:
      return ScanShellExtensions(platform_, language_, list);
    case Page::New:
      return ScanNewMenu(platform_, list, imgListPublic);
    case Page::SendTo:
      return ScanSendTo(platform_, list, imgListPublic, sendToFolder_);
    case Page::ContextMenus:
      return scanner_->ScanContextEntries(list);
    case Page::Bars:
      return scanner_->ScanExplorerBars(list);
    case Page::Toolbars:
      return scanner_->ScanToolbars(list);
    case Page::ExtraButtons:
      return scanner_->ScanExtraButtons(list);
    case Page::HelperObjects:
      return scanner_->ScanHelperObjects(list);
    case Page::ActiveX:
      return scanner_->ScanDownloadedActiveX(list);
    case Page::Settings:
      return scanner_->ScanIeSettings(list);
  }
}

void TFormMain::HeaderClick(TGroup& group) {
  group.SetOpened(!group.Opened());
  ChooseHeaderPictures();
}

void TFormMain::ChooseHeaderPictures() {
  const bool menuOpen = RzGroupContextMenu.Opened();
  const bool productOpen = RzGroupTarvelin.Opened();
  RzGroupContextMenu.HeaderImage()->SetImageIndex(menuOpen ? 0 : 1);
  RzGroupTarvelin.HeaderImage()->SetImageIndex((menuOpen ? 2 : 0) + (productOpen ? 0 : 1));
}

// ---- Selection ----

void TFormMain::SelectItem(Page page) {
  if (page == Page::Toolbars) return lvToolSelectItem();
  const bool selected = List(page).SelectedIndex() >= 0;
  for (const ButtonDescription& button : Description(page).buttons) {
    if (button.enabledWhile == EnabledWhile::RowSelected) {
      Button(page, button.role).SetEnabled(selected);
    }
  }
}

void TFormMain::lvToolSelectItem() {
  TButton& remove = Button(Page::Toolbars, ButtonRole::Remove);
  TButton& properties = Button(Page::Toolbars, ButtonRole::Properties);
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
  while (index < list.Count() && !list.Checked(index)) ++index;
  Button(Page::Settings, ButtonRole::Restore).SetEnabled(index < list.Count());
}

// ---- Buttons ----

const PageDescription& TFormMain::Description(Page page) {
  return PageTable()[static_cast<std::size_t>(page)];
}

TButton* TFormMain::FindButton(Page page, ButtonRole role) {
  const auto& buttons = Description(page).buttons;
  const auto found = std::ranges::find(buttons, role, &ButtonDescription::role);
  if (found == buttons.end()) return nullptr;
  return Controls(page).buttons.at(static_cast<std::size_t>(found - buttons.begin()));
}

void TFormMain::ButtonClick(Page page, ButtonRole role) {
  switch (role) {
    case ButtonRole::OpenInRegEdit:
      return btnSEKeyClick();
    case ButtonRole::Remove:
      return RemoveClick(page);
    case ButtonRole::Properties:
      return ShowRowProperties(page);
    case ButtonRole::Modify:
      return Button_ModifyClick();
    case ButtonRole::Restore:
      return Button_RestoreClick();
  }
}

void TFormMain::ListKeyPressed(Page page, ListKey key) {
  const auto press = [&](ButtonRole role) {
    if (TButton* button = FindButton(page, role)) button->Click();
  };
  switch (key) {
    case ListKey::Delete:
      return press(ButtonRole::Remove);
    case ListKey::AltEnter:
      return press(ButtonRole::Properties);
    case ListKey::F2:
      return press(ButtonRole::Modify);
    case ListKey::CtrlC:
      return CopyRow(page);
    case ListKey::CtrlA:
      if (page != Page::Settings) return;
      chkBoxAll->SetMark(true);
      return chkBoxAllClick();
  }
}

std::vector<TMenuItem> TFormMain::RowMenu(Page page) {
  std::vector<TMenuItem> menu;
  for (TButton* button : Controls(page).buttons) {
    menu.push_back({button->Caption(), button->Enabled(), [button] { button->Click(); }});
  }
  menu.push_back(
      {Message(messages::kCopy), List(page).SelectedIndex() >= 0, [this, page] { CopyRow(page); }});
  return menu;
}

void TFormMain::CopyRow(Page page) {
  const TListView& list = List(page);
  if (list.SelectedIndex() >= 0) platform_.clipboard.SetText(list.CopyOf(list.SelectedIndex()));
}

// ---- Properties and the registry editor ----

void TFormMain::ShowRowProperties(Page page) {
  // The shell reports nothing of a file that has gone, and neither does the button.
  if (const auto record = SelectedRecord<TIESec>(page)) {
    ShowFileProperties(platform_.shell, record->FilePath);
  }
}

void TFormMain::btnSEKeyClick() {
  if (const auto record = SelectedRecord<TShellExtension>(Page::ShellExtensions)) {
    OpenRegEditAt(platform_.editor,
                  RegistryLocation{RootKey::ClassesRoot, record->KeyPath, {}}.Text(), L"");
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
