#include <gtest/gtest.h>

#include "app/UnitMain.h"
#include "settings/UnitChangeSetting.h"
#include "shellmenu/shellmenu.h"
#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

constexpr wchar_t kStats[] =
    L"HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats\\";
constexpr wchar_t kClasses[] = L"HKEY_LOCAL_MACHINE\\Software\\Classes\\";
constexpr wchar_t kToolbar[] =
    L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\Toolbar";
constexpr wchar_t kMenuExt[] =
    L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\MenuExt";

class MainForm : public ::testing::Test {
 protected:
  // Two handlers, two helper objects (the module of {B} is there, that of {C} too), two toolbars
  // (only the first has its module) and a browser context-menu entry.
  void SetUp() override {
    auto& registry = world_.registry;
    registry.Text(kClasses + std::wstring(L"*\\shellex\\ContextMenuHandlers\\Packer"), L"", L"{1}");
    registry.Text(kClasses + std::wstring(L"Drive\\shellex\\ContextMenuHandlers\\Disk"), L"",
                  L"{2}");
    for (const wchar_t* name : {L"{B}", L"{C}"}) {
      AddModule(name, L"C:\\" + std::wstring(name).substr(1, 1) + L".dll");
      registry.Integer(kStats + std::wstring(name) + L"\\iexplore", L"Type", 3);
    }
    AddModule(L"{T1}", L"C:\\t1.dll");
    AddModule(L"{T2}", L"C:\\t2.dll");
    world_.files.files.erase(L"C:\\t2.dll");
    registry.Text(kToolbar, L"{T1}", L"").Text(kToolbar, L"{T2}", L"");
    registry.Text(kMenuExt + std::wstring(L"\\Save \"%s\" & all"), L"", L"C:\\save.htm");
    registry.Text(
        L"HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
        L"SendTo", L"C:\\SendTo");
  }

  void AddModule(const std::wstring& classId, const std::wstring& path) {
    world_.registry.Text(kClasses + (L"CLSID\\" + classId), L"", L"Class " + classId);
    world_.registry.Text(kClasses + (L"CLSID\\" + classId + L"\\InprocServer32"), L"", path);
    world_.files.Add(path);
  }

  void Start() {
    form_ = std::make_unique<TFormMain>(world_.platform, application_, L"C:\\Program\\");
    change_ = std::make_unique<TFormChange>(world_.platform, form_->lvHijack(),
                                            [this] { form_->TranslateWindows(); });
    form_->SetFormChange(*change_);
    application_.AddForm(*form_);
    application_.AddForm(*change_);
    form_->Show();
  }

  template <typename T>
  T& Find(std::wstring_view name) {
    for (const auto& component : form_->Components()) {
      if (component->Name() == name) return dynamic_cast<T&>(*component);
    }
    throw std::runtime_error("no component " + ToUtf8(name));
  }
  TListView& List(std::wstring_view name) { return Find<TListView>(name); }
  bool Enabled(std::wstring_view name) { return Find<TButton>(name).Enabled(); }
  void Press(std::wstring_view button) {
    application_.Run([&] { Find<TButton>(button).Click(); });
  }
  void Visit(std::wstring_view caption) {
    for (TGroup* group : Find<TGroupBar>(L"RzGroupBar").Groups()) {
      for (TGroupItem* item : group->Items()) {
        if (item->Caption() == caption) return application_.Run([&] { item->Click(); });
      }
    }
    FAIL() << "no item " << ToUtf8(caption);
  }
  std::wstring ActivePage() { return Find<TPageNote>(L"PageNote1").ActivePage()->Name(); }

  TestPlatform world_;
  TApplication application_{world_.boxes, L"Tarvelin"};
  std::unique_ptr<TFormMain> form_;
  std::unique_ptr<TFormChange> change_;
};

TEST_F(MainForm, StartsWithTheShellPageFilled) {
  Start();
  EXPECT_EQ(ActivePage(), L"PageTab_Shell_Extention");
  EXPECT_EQ(List(L"lvShellList").Count(), 2);
  int selected = 0;
  for (TGroup* group : Find<TGroupBar>(L"RzGroupBar").Groups()) {
    for (TGroupItem* item : group->Items()) {
      selected += item->Selected() ? 1 : 0;
      EXPECT_EQ(item->FontColor(), item->Selected() ? kSelectedItemColor : kItemColor);
    }
  }
  EXPECT_EQ(selected, 1);
  EXPECT_EQ(List(L"lvShellList").Columns()[1].width, 566 - 250);
  EXPECT_EQ(Find<TCheckBox>(L"chkBoxAll").Bounds().width, 10 * 6 + 25);
  for (const wchar_t* picture : {L"Image_Logo", L"Image_Background", L"img2", L"ImageNote_IE"}) {
    EXPECT_FALSE(Find<TImage>(picture).Picture().Empty()) << ToUtf8(picture);
  }
}

TEST_F(MainForm, ScansAnEmptyListOnly) {
  Start();
  Visit(L"IE BHOs");
  ASSERT_EQ(List(L"lvBHO").Count(), 2);
  world_.registry.Drop(kStats + std::wstring(L"{B}"));
  Visit(L"IE BHOs");
  EXPECT_EQ(List(L"lvBHO").Count(), 2);
  List(L"lvBHO").Delete(0);
  List(L"lvBHO").Delete(0);
  Visit(L"IE BHOs");
  EXPECT_EQ(List(L"lvBHO").Count(), 1);
}

TEST_F(MainForm, HeadersShowWhichGroupsAreOpen) {
  Start();
  auto& menu = Find<TImageNote>(L"ImageNote_Menu");
  auto& product = Find<TImageNote>(L"ImageNote_IE");
  const auto pictures = [&] { return std::pair(menu.ImageIndex(), product.ImageIndex()); };
  EXPECT_EQ(pictures(), std::pair(0, 2));
  product.Click();
  EXPECT_EQ(pictures(), std::pair(0, 3));
  menu.Click();
  EXPECT_EQ(pictures(), std::pair(1, 1));
  product.Click();
  EXPECT_EQ(pictures(), std::pair(1, 0));
}

TEST_F(MainForm, ButtonsFollowTheSelection) {
  Start();
  EXPECT_FALSE(Enabled(L"btnSERmv"));
  List(L"lvShellList").SetSelectedIndex(1);
  EXPECT_TRUE(Enabled(L"btnSERmv"));
  EXPECT_TRUE(Enabled(L"btnSEKey"));
  List(L"lvShellList").SetSelectedIndex(-1);
  EXPECT_FALSE(Enabled(L"btnSEKey"));

  Visit(L"IE Toolbars");
  auto& tools = List(L"lvTool");
  ASSERT_EQ(tools.Count(), 2);
  tools.SetSelectedIndex(1);  // no module: Properties keeps its state, which is disabled
  EXPECT_TRUE(Enabled(L"btnTlbarRmv"));
  EXPECT_FALSE(Enabled(L"btnTlbarPPT"));
  tools.SetSelectedIndex(0);
  EXPECT_TRUE(Enabled(L"btnTlbarPPT"));
  tools.SetSelectedIndex(1);
  EXPECT_TRUE(Enabled(L"btnTlbarPPT"));
  tools.SetSelectedIndex(-1);
  EXPECT_FALSE(Enabled(L"btnTlbarPPT"));
}

TEST_F(MainForm, RemovalAsksThenRemovesThenReports) {
  Start();
  Visit(L"IE Context Menus");
  List(L"lvMenu").SetSelectedIndex(0);
  const auto before = world_.registry.Dump();
  world_.boxes.answers = {kAnswerNo};
  Press(L"btnCMRmv");
  EXPECT_EQ(world_.registry.Dump(), before);
  EXPECT_EQ(List(L"lvMenu").Count(), 1);

  world_.boxes.answers = {kAnswerYes, kAnswerOk};
  Press(L"btnCMRmv");
  EXPECT_FALSE(world_.registry.Has(kMenuExt + std::wstring(L"\\Save \"%s\" & all")));
  EXPECT_EQ(List(L"lvMenu").Count(), 0);
  EXPECT_FALSE(Enabled(L"btnCMRmv"));
  const FakeBoxes::Box question{L"Are you sure to remove \"Save \"%s\" & all\"?", L"Warning", 0x24};
  EXPECT_EQ(world_.boxes.shown, (std::vector<FakeBoxes::Box>{
                                    question, question, {L"Remove success!", L"Tarvelin", 0}}));
}

TEST_F(MainForm, AModuleInUseStaysAndAnUndeletableToolbarFileIsReported) {
  Start();
  const FakeBoxes::Box failure{L"This operation could not be completed.\r\nAccess is denied.",
                               L"Unable to delete file", 0x10};
  Visit(L"IE BHOs");
  List(L"lvBHO").SetSelectedIndex(0);
  world_.files.locked.insert(L"C:\\B.dll");
  const auto before = world_.registry.Dump();
  world_.boxes.answers = {kAnswerYes, kAnswerOk};
  Press(L"btnBHORmv");
  EXPECT_EQ(world_.boxes.shown.back(), failure);
  EXPECT_EQ(world_.registry.Dump(), before);
  EXPECT_EQ(List(L"lvBHO").Count(), 2);

  List(L"lvBHO").SetSelectedIndex(1);
  world_.boxes.answers = {kAnswerYes, kAnswerOk};
  Press(L"btnBHORmv");
  EXPECT_EQ(world_.boxes.shown.back().text, L"Remove successfully!");
  EXPECT_EQ(world_.modules.unregistered, std::vector<std::wstring>{L"C:\\C.dll"});
  EXPECT_FALSE(world_.registry.Has(kClasses + std::wstring(L"CLSID\\{C}")));
  EXPECT_TRUE(world_.registry.Has(kClasses + std::wstring(L"CLSID\\{B}")));

  Visit(L"IE Toolbars");
  List(L"lvTool").SetSelectedIndex(0);
  world_.files.undeletable.insert(L"C:\\t1.dll");
  world_.boxes.answers = {kAnswerYes, kAnswerOk};
  Press(L"btnTlbarRmv");
  EXPECT_EQ(world_.boxes.shown.back(), failure);
  EXPECT_EQ(List(L"lvTool").Count(), 1);
  EXPECT_EQ(world_.registry.TextOf(kToolbar, L"{T1}"), std::nullopt);
  EXPECT_TRUE(world_.files.removed.empty());
}

TEST_F(MainForm, AnErrorEndsTheCommandAndKeepsThePage) {
  Start();
  world_.registry.Integer(kMenuExt + std::wstring(L"\\Zoom"), L"", 7);
  world_.boxes.answers = {kAnswerOk};
  Visit(L"IE Context Menus");
  EXPECT_EQ(world_.boxes.shown.back().caption, L"Tarvelin");
  EXPECT_EQ(world_.boxes.shown.back().flags, kBoxError);
  EXPECT_EQ(ActivePage(), L"PageTab_Shell_Extention");
  Visit(L"IE BHOs");
  EXPECT_EQ(ActivePage(), L"PageTab_IE_BHO");
}

TEST_F(MainForm, SelectAllChecksAndRestoreClearsTheBoxAlone) {
  Start();
  Visit(L"IE Settings");
  EXPECT_FALSE(Enabled(L"Button_Restore"));
  Find<TCheckBox>(L"chkBoxAll").SetChecked(true);
  EXPECT_TRUE(Enabled(L"Button_Restore"));
  world_.boxes.answers = {kAnswerNo};
  Press(L"Button_Restore");
  EXPECT_TRUE(Find<TCheckBox>(L"chkBoxAll").Checked());

  world_.registry.Deny(L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer");
  world_.registry.Deny(L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer");
  for (const wchar_t* root : {L"HKEY_CURRENT_USER", L"HKEY_LOCAL_MACHINE"}) {
    for (const wchar_t* key : {L"Main", L"SearchUrl", L"Search", L"AboutURLs"}) {
      world_.registry.Deny(root + std::wstring(L"\\Software\\Microsoft\\Internet Explorer\\") +
                           key);
    }
  }
  world_.boxes.answers = {kAnswerYes, kAnswerOk};
  Press(L"Button_Restore");
  EXPECT_EQ(world_.boxes.shown.back(),
            (FakeBoxes::Box{L"No items selected!", L"Tarvelin", kBoxError}));
  EXPECT_FALSE(Find<TCheckBox>(L"chkBoxAll").Checked());
  EXPECT_TRUE(List(L"lvHijack").Item(21).checked);
}

TEST_F(MainForm, SpeaksTheLanguageOfTheSettingsFile) {
  world_.files.entries[L"C:\\Program\\Toolbox_Language\\*.lng"] = {L"Test.lng", L"Other.lngbak"};
  world_.files.Add(L"C:\\Program\\Toolbox_Language\\Test.lng",
                   "[Tarvelin_FormMain]\nbtnClose.Caption=Zu\nRzGroupTarvelin.Items[4].Caption=H\n"
                   "FormMain.Caption=T!\nlvBHO.Columns[1].Caption=Wer\nPanel_Top.Caption=no\n"
                   "[Tarvelin_M]\nM_Warning=\nM_Drive=Platte\n");
  world_.files.profile
      [L"C:\\Users\\u\\AppData\\Roaming\\Corvane\\Halvicore V4\\Main.ini|Main|"
       L"Language"] = L"test";
  Start();
  EXPECT_EQ(Find<TButton>(L"btnClose").Caption(), L"Zu");
  EXPECT_EQ(form_->Caption(), L"T!");
  EXPECT_EQ(List(L"lvBHO").Columns()[1].caption, L"Wer");
  EXPECT_EQ(Find<TPanel>(L"Panel_Top").Caption(), L"");
  EXPECT_EQ(List(L"lvShellList").Item(1).subItems[0], L"Platte(ContextMenu)");
  Visit(L"H");
  EXPECT_EQ(ActivePage(), L"PageTab_IE_BHO");
  List(L"lvBHO").SetSelectedIndex(0);
  world_.boxes.answers = {kAnswerNo};
  Press(L"btnBHORmv");
  EXPECT_EQ(world_.boxes.shown.back().caption, L"");  // present but empty is not missing
}

TEST_F(MainForm, ClosingDuringAListingIsSafe) {
  world_.files.entries[L"C:\\SendTo\\*.*"] = {L".", L"..", L"a.lnk", L"b.lnk"};
  Start();
  world_.display.onProcessMessages = [this] {
    form_->Close();
    Visit(L"IE BHOs");
  };
  Visit(L"Send to");
  EXPECT_FALSE(form_->Visible());
  EXPECT_EQ(List(L"lvBHO").Count(), 0);
}

}  // namespace
}  // namespace tarvelin::testing
