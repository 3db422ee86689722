#include "fuzz/session.h"

#include <algorithm>
#include <utility>

#include "shellmenu/shellmenu.h"

namespace tarvelin::fuzz {
namespace {

using testing::kPages;
using testing::MemoryRegistry;
using Kind = Command::Kind;

enum Page { Shell, New, SendTo, Menus, Bars, Toolbars, Buttons, Helpers, Controls, Settings };

constexpr const wchar_t* kShellParents[] = {
    L"*\\shell",
    L"*\\shellex\\ContextMenuHandlers",
    L"CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell",
    L"Directory\\shell",
    L"Directory\\shellex\\ContextMenuHandlers",
    L"Folder\\shellex\\ContextMenuHandlers",
    L"Drive\\shellex\\ContextMenuHandlers",
};
const std::wstring kRoot = L"HKEY_CLASSES_ROOT";
const std::wstring kUsers = L"HKEY_CURRENT_USER\\Software\\Classes";
const std::wstring kMachines = L"HKEY_LOCAL_MACHINE\\Software\\Classes";
const std::wstring kUnits =
    L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Code Store Database\\Distribution Units";
const std::wstring kFolders =
    L"HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

constexpr wchar_t kTyped[] = L" typed\t";
constexpr wchar_t kWritten[] = L"typed";

// The places in the hives that a key stands for, in lower case.
std::vector<std::wstring> Places(const std::wstring& key) {
  if (!key.starts_with(kRoot)) return {LowerCase(key)};
  const std::wstring path = key.substr(kRoot.size());
  return {LowerCase(kUsers + path), LowerCase(kMachines + path)};
}

template <typename Range, typename Test>
bool Any(const Range& range, const Test& test) {
  return std::any_of(range.begin(), range.end(), test);
}

bool IsIn(const std::vector<std::wstring>& trees, const std::wstring& fact) {
  return Any(trees, [&](const std::wstring& tree) {
    return Any(Places(tree),
               [&](const std::wstring& place) { return fact.starts_with(place + L"\\"); });
  });
}

// Whether a fact is the existence of a key on the way to one of those.
bool IsOnTheWay(const std::vector<std::wstring>& keys, const std::wstring& fact) {
  return Any(keys, [&](const std::wstring& key) {
    return Any(Places(key),
               [&](const std::wstring& place) { return (place + L"\\").starts_with(fact); });
  });
}

bool BeginsLikeOne(const std::vector<std::wstring>& beginnings, const std::wstring& fact) {
  return Any(beginnings, [&](const std::wstring& begin) { return fact.starts_with(begin); });
}

std::wstring FileFact(const std::wstring& path) { return L"file " + LowerCase(path); }

std::wstring ValueFact(std::wstring key, std::wstring_view name) {
  if (key.ends_with(L'\\')) key.pop_back();
  return LowerCase(MemoryRegistry::ValueFact(key, name));
}

template <typename Item>
void Append(std::vector<Item>& to, const std::vector<Item>& from) {
  to.insert(to.end(), from.begin(), from.end());
}

}  // namespace

Session::Session(bool plain) : plain_(plain) {
  const auto interrupt = [this] {
    if (meanwhile) meanwhile();
  };
  driver.world.resources.none = true;
  driver.world.boxes.onShow = driver.world.modules.onUnregister = interrupt;
  driver.world.display.onProcessMessages = [this, interrupt] {
    driver.application.Listen(interrupt);
  };
}

Facts Session::Now() const {
  Facts facts;
  for (const std::wstring& fact : driver.world.registry.Dump()) facts.insert(LowerCase(fact));
  for (const auto& [path, content] : driver.world.files.files) facts.insert(FileFact(path));
  return facts;
}

// ---- What a command may change ----

Session::Account Session::Expect(const Command& command) {
  Account account;
  if (command.kind == Kind::Start) {
    account.created.push_back(kFolders);
    ExpectScan(Shell, account);
    return account;
  }
  const auto& page = kPages[command.page];
  if (!Open() || driver.application.Busy()) return account;
  switch (command.kind) {
    case Kind::Visit:
      ExpectScan(command.page, account);
      break;
    case Kind::Remove: {
      TListView& list = List(command.page);
      if (!page.remove || !command.agree || !driver.Enabled(page.remove)) break;
      if (list.SelectedIndex() < 0) break;
      ExpectRemoval(command.page, *list.Item(list.SelectedIndex()).data, account);
      break;
    }
    case Kind::Modify: {
      TListView& list = List(Settings);
      if (!command.agree || list.SelectedIndex() < 0) break;
      ExpectWriting(*list.Data<TIESec>(list.SelectedIndex()), kWritten, account);
      break;
    }
    case Kind::Restore: {
      TListView& list = List(Settings);
      if (!command.agree || !driver.Enabled(L"Button_Restore")) break;
      for (int row = 0; row < list.Count(); ++row) {
        const auto setting = list.Data<TIESec>(row);
        if (list.Checked(row)) ExpectWriting(*setting, setting->DefaultValue, account);
      }
      break;
    }
    default:
      break;
  }
  return account;
}

// A scan that was ended by an odd value comes again with the next visit.
void Session::ExpectScan(int page, Account& account) {
  if (page == Shell && (!driver.form || List(page).Count() == 0)) {
    for (const wchar_t* parent : kShellParents) account.created.push_back(kRoot + L"\\" + parent);
  }
  if (page != Controls || List(page).Count() > 0) return;
  account.created.push_back(kUnits);
  const auto units = driver.world.registry.Root(RootKey::LocalMachine)
                         ->Open(kUnits.substr(kUnits.find(L'\\') + 1), RegistryAccess::Read);
  if (!units) return;
  for (const std::wstring& unit : units->SubkeyNames()) {
    if (unit.starts_with(L'{')) account.mayCreate.push_back(kMachines + L"\\CLSID\\" + unit);
  }
}

void Session::ExpectRemoval(int page, const TRecord& record, Account& account) const {
  if (const auto* entry = dynamic_cast<const TShellExtension*>(&record)) {
    account.trees.push_back(kRoot + entry->KeyPath);
    return;
  }
  if (const auto* type = dynamic_cast<const TNew*>(&record)) {
    account.trees.push_back(kRoot + type->KeyPath);
    return;
  }
  if (const auto* file = dynamic_cast<const TSendTo*>(&record)) {
    account.files.push_back(file->FilePath);
    return;
  }
  const auto& addOn = dynamic_cast<const TIESec&>(record);
  const std::wstring& location = addOn.RegLocation;
  if (page == Menus || page == Buttons) {
    account.trees.push_back(location);
    return;
  }
  const auto brace = location.find(L'{');
  const bool simple = addOn.FilePath.find(L'{') == std::wstring::npos &&
                      location.find(L'{', brace + 1) == std::wstring::npos;
  account.exact = simple;
  if (page == Bars || page == Toolbars) {
    if (brace == std::wstring::npos && simple) return;
    const std::wstring key = location.substr(0, brace);
    account.values.push_back(simple ? ValueFact(key, location.substr(brace))
                                    : LowerCase(key + L"\\"));
    if (addOn.FilePath.starts_with(L"C:\\")) account.files.push_back(addOn.FilePath);
    return;
  }
  // A class whose module has gone since it was listed stays as it is.
  const bool there = driver.world.files.files.contains(addOn.FilePath);
  if (simple && !there) return;
  account.modules.push_back(addOn.FilePath);
  account.exact = simple && SameText(addOn.FilePath, L"C:\\b.dll");
  const std::wstring removal = addOn.FilePath + L"|" + location;
  if (removal.find(L'{') == std::wstring::npos) return;
  const std::wstring classId(Trim(removal.substr(removal.find(L'{'))));
  account.trees.push_back(kMachines + L"\\CLSID\\" + classId);
  account.trees.push_back(kUnits + L"\\" + classId);
}

void Session::ExpectWriting(const TIESec& setting, std::wstring_view text, Account& account) const {
  const auto bar = setting.RegLocation.find(L'|');
  const std::wstring key = setting.RegLocation.substr(0, bar);
  account.created.push_back(key);
  account.written[ValueFact(key, setting.RegLocation.substr(bar + 1))] = text;
}

// ---- Doing it ----

void Session::Do(const Command& command) {
  Account account = Expect(command);
  // Nothing changes between two commands.
  const Facts before = account_ || now_.empty() ? Now() : std::move(now_);
  const std::size_t modules = driver.world.modules.unregistered.size();
  Account* const outer = std::exchange(account_, &account);
  Perform(command);
  account_ = outer;

  Check(before, modules, account);
  if (outer) {
    Append(outer->trees, account.trees);
    Append(outer->values, account.values);
    Append(outer->files, account.files);
    Append(outer->modules, account.modules);
    Append(outer->mayCreate, account.created);
    Append(outer->mayCreate, account.mayCreate);
    for (const auto& [begin, text] : account.written) outer->written[begin] = text;
    outer->exact = outer->exact && account.exact;
  } else if (Open()) {
    CheckWindow();
  }
}

void Session::Perform(const Command& command) {
  driver.world.boxes.answers.assign(9, command.agree ? kAnswerYes : kAnswerNo);
  if (command.kind == Kind::Start) {
    try {
      driver.Start();
    } catch (const std::bad_alloc&) {
      // The program says that it cannot be started, and ends.
    }
    if (!Open()) driver.Stop();
    return;
  }
  if (!driver.form) return;
  TApplication& application = driver.application;
  const auto& page = kPages[command.page];
  TListView& list = List(command.page);
  const auto key = [&](ListKey pressed) { application.Run([&] { list.OnKey(pressed); }); };
  const auto choose = [&](std::size_t entry) {
    const auto menu = list.OnMenu();
    if (entry < menu.size() && menu[entry].enabled) application.Run(menu[entry].OnClick);
  };
  switch (command.kind) {
    case Kind::Start:
      break;
    case Kind::Visit:
      driver.Visit(page.item);
      break;
    case Kind::Select:
      application.Report([&] { list.SetSelectedIndex(std::min(command.row, list.Count() - 1)); });
      break;
    case Kind::Remove:
      if (!page.remove) break;
      if (command.how == 0) driver.Press(page.remove);
      if (command.how == 1) key(ListKey::Delete);
      if (command.how == 2) choose(command.page == Shell ? 1 : 0);
      break;
    case Kind::Show:
      if (page.more && command.page != Settings) driver.Press(page.more);
      key(ListKey::CtrlC);
      break;
    case Kind::Modify:
      driver.Press(L"Button_Modify");
      if (!driver.change->Visible()) break;
      driver.change->edtValue->UserTyped(kTyped);
      if (command.agree) application.Run([&] { driver.change->btnOKClick(); });
      if (driver.change->Visible()) application.Run([&] { driver.change->btnCancelClick(); });
      break;
    case Kind::Check:
      application.Run([&] {
        if (command.row < 0 || list.Count() == 0) {
          auto& all = driver.Find<TCheckBox>(L"chkBoxAll");
          all.SetChecked(!all.Checked());
        } else {
          const int row = command.row % list.Count();
          list.SetChecked(row, !list.Checked(row));
        }
      });
      break;
    case Kind::Restore:
      driver.Press(L"Button_Restore");
      break;
    case Kind::Fold:
      application.Run([&] {
        driver.Find<TImageNote>(command.row % 2 ? L"ImageNote_Menu" : L"ImageNote_IE").Click();
      });
      break;
    case Kind::Close:
      application.Run([&] { driver.form->Close(); });
      break;
  }
}

void Session::Check(const Facts& before, std::size_t modules, const Account& account) {
  now_ = Now();
  const Facts& after = now_;
  changes_ += after == before ? 0 : 1;
  const auto written = [&](const std::wstring& fact) {
    return Any(account.written, [&](const auto& value) { return fact.starts_with(value.first); });
  };
  std::vector<std::wstring> files;
  for (const std::wstring& file : account.files) files.push_back(FileFact(file));
  const auto mayGo = [&](const std::wstring& fact) {
    return IsIn(account.trees, fact) || BeginsLikeOne(account.values, fact) ||
           std::ranges::find(files, fact) != files.end();
  };
  for (const std::wstring& fact : before) {
    if (!after.contains(fact)) Require(mayGo(fact) || written(fact));
  }
  for (const std::wstring& fact : after) {
    if (before.contains(fact)) continue;
    Require(IsOnTheWay(account.created, fact) || IsOnTheWay(account.mayCreate, fact) ||
            written(fact));
  }
  const auto& unregistered = driver.world.modules.unregistered;
  for (std::size_t i = modules; i < unregistered.size(); ++i) {
    Require(Any(account.modules,
                [&](const std::wstring& module) { return SameText(module, unregistered[i]); }));
  }
  if (!plain_ || !account.exact || faults.Armed()) return;

  for (const std::wstring& fact : before) {
    if (mayGo(fact)) Require(!after.contains(fact));
  }
  for (const std::wstring& key : account.created) Require(driver.world.registry.Has(key));
  for (const auto& [begin, text] : account.written) {
    const auto fact = after.lower_bound(begin);
    Require(fact != after.end() && *fact == begin + L"1 " + LowerCase(text) + L'\0');
  }
}

// Nothing is going on, and every button that works on a row knows whether there is one.
void Session::CheckWindow() {
  Require(!driver.application.Busy());
  for (int page = 0; page < static_cast<int>(std::size(kPages)); ++page) {
    const TListView& list = List(page);
    Require(list.SelectedIndex() < list.Count());
    if (kPages[page].remove && list.SelectedIndex() < 0)
      Require(!driver.Enabled(kPages[page].remove));
  }
}

void Session::Tour(void (Session::*play)(const Command&)) {
  if (!Open()) return;
  for (int page = 0; page < static_cast<int>(std::size(kPages)); ++page) {
    (this->*play)({Kind::Visit, page});
    for (int rows = List(page).Count(); kPages[page].remove && rows > 0; --rows) {
      Require(List(page).Count() == rows);
      (this->*play)({Kind::Select, page, 0});
      (this->*play)({Kind::Remove, page, 0, true, rows % 3});
    }
    if (kPages[page].remove) Require(List(page).Count() == 0);
  }
  (this->*play)({Kind::Check, Settings, -1});
  (this->*play)({Kind::Restore, Settings});
}

void Session::Finish() {
  driver.Stop();
  Require(driver.world.shell.iconsAlive == 0);
}

}  // namespace tarvelin::fuzz
