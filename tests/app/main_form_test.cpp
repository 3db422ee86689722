#include <gtest/gtest.h>

#include "shellmenu/shellmenu.h"
#include "tests/support/form_driver.h"

namespace tarvelin::testing {
namespace {

const std::wstring kClasses = L"HKEY_LOCAL_MACHINE\\Software\\Classes\\";
const std::wstring kToolbar =
    L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\Toolbar";
const std::wstring kWindows = L"HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\";

class MainForm : public ::testing::Test, protected FormDriver {
 protected:
  // Two handlers, two helper objects and two toolbars, of which the second has no module.
  void SetUp() override {
    auto& registry = world.registry;
    registry.Text(kClasses + L"*\\shellex\\ContextMenuHandlers\\Packer", L"", L"{1}");
    registry.Text(kClasses + L"Drive\\shellex\\ContextMenuHandlers\\Disk", L"", L"{2}");
    for (const std::wstring name : {L"B", L"C", L"T1", L"T2"}) {
      const std::wstring classKey = kClasses + L"CLSID\\{" + name + L"}";
      registry.Text(classKey, L"", L"Class " + name);
      registry.Text(classKey + L"\\InprocServer32", L"", L"C:\\" + name + L".dll");
      if (name != L"T2") world.files.Add(L"C:\\" + name + L".dll");
    }
    for (const wchar_t* name : {L"{B}", L"{C}"}) {
      registry.Integer(kWindows + L"Ext\\Stats\\" + name + L"\\iexplore", L"Type", 3);
    }
    registry.Text(kToolbar, L"{T1}", L"").Text(kToolbar, L"{T2}", L"");
    registry.Text(kWindows + L"Explorer\\Shell Folders", L"SendTo", L"C:\\SendTo");
  }

  TListView& lvHijack() { return form->lvHijack(); }
  std::wstring ActivePage() { return Find<TPageNote>(L"PageNote1").ActivePage()->Name(); }
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

TEST_F(MainForm, AHighCaptionBarCutsNothingOff) {
  Start();
  const auto places = [this] {
    std::map<std::wstring, TRect> all;
    for (const auto& component : form->Components()) {
      if (const auto* control = dynamic_cast<TControl*>(component.get())) {
        all[control->Name()] = control->Bounds();
      }
    }
    return all;
  };
  const auto usual = places();
  form->WindowResized(743, 440);
  const auto low = places();
  EXPECT_EQ(low.at(L"Panel_Bottom"), (TRect{0, 391, 743, 49}));
  EXPECT_EQ(low.at(L"RzGroupBar"), (TRect{0, 70, 178, 321}));
  EXPECT_EQ(low.at(L"PageNote1"), (TRect{0, 0, 565, 322}));
  EXPECT_EQ(low.at(L"lvHijack"), (TRect{0, 0, 566, 281}));
  for (const wchar_t* foot : {L"btnSEKey", L"chkBoxAll", L"Button_Restore", L"img11"}) {
    EXPECT_EQ(low.at(foot).top, usual.at(foot).top - 42) << ToUtf8(foot);
  }
  form->WindowResized(743, 482);
  EXPECT_EQ(places(), usual);
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

TEST_F(MainForm, PropertiesStaysAsItWasForAToolbarWithoutAModule) {
  Start();
  Visit(L"IE Toolbars");
  auto& tools = List(L"lvTool");
  ASSERT_EQ(tools.Count(), 2);
  const std::pair<int, bool> steps[] = {{1, false}, {0, true}, {1, true}, {-1, false}, {0, true}};
  for (const auto& [row, properties] : steps) {
    tools.SetSelectedIndex(row);
    EXPECT_EQ(Enabled(L"btnTlbarRmv"), row >= 0);
    EXPECT_EQ(Enabled(L"btnTlbarPPT"), properties);
  }
  Press(L"btnTlbarPPT");
  EXPECT_EQ(world.shell.properties, std::vector<std::wstring>{L"C:\\T1.dll"});
}

TEST_F(MainForm, RemovesAModuleThatIsFreeOnceThatIsConfirmed) {
  Start();
  Visit(L"IE BHOs");
  List(L"lvBHO").SetSelectedIndex(0);
  const auto before = world.registry.Dump();
  world.boxes.answers = {kAnswerNo, kAnswerYes, kAnswerOk};
  Press(L"btnBHORmv");
  world.files.locked.insert(L"C:\\B.dll");
  Press(L"btnBHORmv");
  EXPECT_EQ(world.boxes.shown.back(),
            (FakeBoxes::Box{L"This operation could not be completed.\r\nAccess is denied.",
                            L"Unable to delete file", 0x10}));
  EXPECT_EQ(world.registry.Dump(), before);
  EXPECT_EQ(List(L"lvBHO").Count(), 2);

  List(L"lvBHO").SetSelectedIndex(1);
  world.boxes.shown.clear();
  world.boxes.answers = {kAnswerYes, kAnswerOk};
  Press(L"btnBHORmv");
  EXPECT_EQ(world.boxes.shown,
            (std::vector<FakeBoxes::Box>{{L"Are you sure to remove \"Unknown\"?", L"Warning", 0x24},
                                         {L"Remove successfully!", L"Tarvelin", 0}}));
  EXPECT_EQ(world.modules.unregistered, std::vector<std::wstring>{L"C:\\C.dll"});
  EXPECT_FALSE(world.registry.Has(kClasses + L"CLSID\\{C}"));
  EXPECT_EQ(List(L"lvBHO").Count(), 1);
  EXPECT_FALSE(Enabled(L"btnBHORmv"));
}

TEST_F(MainForm, NothingElseHappensInTheMiddleOfACommand) {
  Start();
  Visit(L"IE BHOs");
  TListView& list = List(L"lvBHO");
  const auto meddle = [&] {
    EXPECT_TRUE(application.Busy());
    application.Run([&] { form->Close(); });
    Visit(L"IE Toolbars");
    application.Report([&] { list.SetSelectedIndex(1); });
    Press(L"btnBHORmv");
    Press(L"btnClose");
  };
  world.boxes.onShow = world.modules.onUnregister = meddle;
  list.SetSelectedIndex(0);
  world.boxes.answers = {kAnswerYes, kAnswerOk};
  Press(L"btnBHORmv");
  EXPECT_EQ(world.modules.unregistered, std::vector<std::wstring>{L"C:\\B.dll"});
  EXPECT_FALSE(world.registry.Has(kClasses + L"CLSID\\{B}"));
  EXPECT_TRUE(world.registry.Has(kClasses + L"CLSID\\{C}"));
  ASSERT_EQ(list.Count(), 1);
  EXPECT_EQ(list.Data<TIESec>(0)->FilePath, L"C:\\C.dll");
  EXPECT_EQ(ActivePage(), L"PageTab_IE_BHO");
  EXPECT_TRUE(form->Visible());

  // A row that has gone while the question stood is not removed from anywhere.
  world.boxes.onShow = [&] { list.Delete(0); };
  list.SetSelectedIndex(0);
  const auto before = world.registry.Dump();
  world.boxes.answers = {kAnswerYes};
  Press(L"btnBHORmv");
  EXPECT_EQ(world.registry.Dump(), before);
}

TEST_F(MainForm, ALongNameIsShortenedInAQuestion) {
  const std::wstring name = std::wstring(499, L'a') + L"\xD83C" + std::wstring(19'000, L'm') +
                            L"\xDF32" + std::wstring(498, L'z');
  world.registry.Text(
      L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\MenuExt\\" + name, L"", L"");
  Start();
  Visit(L"IE Context Menus");
  List(L"lvMenu").SetSelectedIndex(0);
  world.boxes.answers = {kAnswerNo};
  Press(L"btnCMRmv");
  EXPECT_EQ(world.boxes.shown.back().text, L"Are you sure to remove \"" + std::wstring(499, L'a') +
                                               L"\x2026" + std::wstring(498, L'z') + L"\"?");
}

TEST_F(MainForm, KeysAndTheRowMenuDoWhatTheButtonsDo) {
  Start();
  Visit(L"IE BHOs");
  TListView& list = List(L"lvBHO");
  const auto press = [&](ListKey key) { application.Run([&] { list.OnKey(key); }); };
  for (const ListKey key : {ListKey::Delete, ListKey::AltEnter, ListKey::CtrlC, ListKey::F2}) {
    press(key);  // no row is selected
  }
  EXPECT_FALSE(list.OnMenu().back().enabled);
  list.SetSelectedIndex(1);
  press(ListKey::AltEnter);
  EXPECT_EQ(world.shell.properties, std::vector<std::wstring>{L"C:\\C.dll"});
  press(ListKey::CtrlC);
  EXPECT_EQ(world.clipboard.content,
            L"Unknown\tUnknown\tC:\\C.dll\tHKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{C}");
  const auto menu = list.OnMenu();
  ASSERT_EQ(menu.size(), 3U);
  EXPECT_EQ(menu[0].caption, L"Remove");
  EXPECT_EQ(menu[1].caption, L"Properties");
  EXPECT_EQ(menu[2].caption, L"Copy");
  world.boxes.answers = {kAnswerYes, kAnswerOk};
  application.Run(menu[0].OnClick);
  EXPECT_FALSE(world.registry.Has(kClasses + L"CLSID\\{C}"));
  EXPECT_EQ(list.Count(), 1);

  Visit(L"IE Settings");
  lvHijack().OnKey(ListKey::CtrlA);
  EXPECT_TRUE(lvHijack().Item(21).checked);
  EXPECT_TRUE(Find<TCheckBox>(L"chkBoxAll").Checked());
  lvHijack().SetSelectedIndex(7);
  lvHijack().OnKey(ListKey::CtrlC);
  EXPECT_EQ(world.clipboard.content,
            L"Start Page(All Users)\t\t"
            L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\Main|Start Page\t"
            L"http://www.msn.com");
  lvHijack().OnKey(ListKey::F2);
  EXPECT_TRUE(change->Visible());
}

TEST_F(MainForm, ARestoreThatWritesNothingClearsSelectAllAlone) {
  Start();
  Visit(L"IE Settings");
  EXPECT_FALSE(Enabled(L"Button_Restore"));
  Find<TCheckBox>(L"chkBoxAll").SetChecked(true);
  EXPECT_TRUE(Enabled(L"Button_Restore"));
  world.boxes.answers = {kAnswerNo, kAnswerYes, kAnswerOk};
  Press(L"Button_Restore");
  EXPECT_TRUE(Find<TCheckBox>(L"chkBoxAll").Checked());

  for (const std::wstring root : {L"HKEY_CURRENT_USER", L"HKEY_LOCAL_MACHINE"}) {
    for (const wchar_t* key : {L"Main", L"SearchUrl", L"Search", L"AboutURLs"}) {
      world.registry.Deny(root + L"\\Software\\Microsoft\\Internet Explorer\\" + key);
    }
  }
  Press(L"Button_Restore");
  EXPECT_EQ(world.boxes.shown.back(),
            (FakeBoxes::Box{L"No items selected!", L"Tarvelin", kBoxError}));
  EXPECT_FALSE(Find<TCheckBox>(L"chkBoxAll").Checked());
  EXPECT_TRUE(List(L"lvHijack").Item(21).checked);
}

TEST_F(MainForm, SpeaksTheLanguageOfTheSettingsFile) {
  world.files.entries[L"C:\\Program\\Toolbox_Language\\*.lng"] = {L"Test.lng", L"Other.lngbak"};
  world.files.Add(L"C:\\Program\\Toolbox_Language\\Test.lng",
                  "[Tarvelin_FormMain]\nbtnClose.Caption=Zu\nRzGroupTarvelin.Items[4].Caption=H\n"
                  "FormMain.Caption=T!\nlvBHO.Columns[1].Caption=Wer\nPanel_Top.Caption=no\n"
                  "Label_Menu.Caption=Kontext\n"
                  "chkBoxAll.Caption=Alle Einstellungen dieser Seite markieren\n"
                  "[Tarvelin_M]\nM_Warning=\nM_Drive=Platte\n");
  world.files.profile
      [L"C:\\Users\\u\\AppData\\Roaming\\Corvane\\Halvicore V4\\Main.ini|Main|"
       L"Language"] = L"test";
  Start();
  EXPECT_EQ(Find<TButton>(L"btnClose").Caption(), L"Zu");
  EXPECT_EQ(form->Caption(), L"T!");
  EXPECT_EQ(List(L"lvBHO").Columns()[1].caption, L"Wer");
  EXPECT_EQ(Find<TPanel>(L"Panel_Top").Caption(), L"");
  EXPECT_EQ(Find<TGroupBar>(L"RzGroupBar").Groups()[0]->Caption(), L"Kontext");
  EXPECT_EQ(Find<TCheckBox>(L"chkBoxAll").Bounds(), (TRect{6, 334, 229, 17})) << "up to Modify";
  EXPECT_EQ(List(L"lvShellList").Item(1).subItems[0], L"Platte(ContextMenu)");
  Visit(L"H");
  EXPECT_EQ(ActivePage(), L"PageTab_IE_BHO");
  List(L"lvBHO").SetSelectedIndex(0);
  world.boxes.answers = {kAnswerNo};
  Press(L"btnBHORmv");
  EXPECT_EQ(world.boxes.shown.back().caption, L"");  // present but empty is not missing
}

TEST_F(MainForm, AListingLetsOtherCommandsThrough) {
  world.files.entries[L"C:\\SendTo\\*.*"] = {L".", L"..", L"a.lnk", L"b.lnk", L"c.lnk"};
  Start();
  TListView& list = List(L"lvSendList");
  // All rows so far go, and the page's item is clicked again.
  const auto meddle = [&] {
    while (list.Count() > 0) list.Delete(0);
    Visit(L"Send to");
    Visit(L"IE Bars");
  };
  world.display.onProcessMessages = [&] { application.Listen(meddle); };
  Visit(L"Send to");
  ASSERT_EQ(list.Count(), 1);
  EXPECT_EQ(list.Item(0).caption, L"c");
  EXPECT_EQ(ActivePage(), L"PageTab_IE_Bar");

  list.Delete(0);
  world.display.onProcessMessages = [this] {
    application.Listen([this] { application.Run([this] { form->Close(); }); });
    Visit(L"IE BHOs");
  };
  Visit(L"Send to");
  EXPECT_FALSE(form->Visible());
  EXPECT_EQ(List(L"lvBHO").Count(), 0);
}

}  // namespace
}  // namespace tarvelin::testing
