// The program over the doubles, with an account of everything that a command may change: what the
// user confirmed, and what the scans are known to create. Whatever else changes is a finding.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "fuzz/faults.h"
#include "fuzz/fuzz.h"
#include "tests/support/form_driver.h"

namespace tarvelin::fuzz {

// What a user does.
struct Command {
  enum class Kind {
    Start,
    Visit,   // a page
    Select,  // a row, -1 for none
    Remove,  // by the button, the Delete key or the menu of the row
    Show,    // the properties or the registry key of the row, and a copy of it
    Modify,  // the selected setting, or leave it
    Check,   // a row of the settings, or with -1 the box that marks all
    Restore,
    Fold,  // a group of the navigation bar
    Close,
  };
  Kind kind = Kind::Start;
  int page = 0;  // in testing::kPages
  int row = -1;
  bool agree = true;  // the answer to whatever is asked
  int how = 0;        // which of several ways to do it
};

// Keys, values and files as texts in lower case, so that two moments can be compared.
using Facts = std::set<std::wstring>;

class Session {
 public:
  // In a plain world, where no access is denied, no key is a link and no name holds a NUL, all that
  // was confirmed must have happened as well, unless a call was to fail.
  explicit Session(bool plain);

  // Carries out a command, and within it whatever `meanwhile` gives.
  void Perform(const Command& command);
  // The same; ends the program if anything changed that it should not have, or if the window is not
  // as it should be afterwards.
  void Do(const Command& command);
  // Visits every page, removes every row and restores all settings, in one of these ways.
  void Tour(void (Session::*play)(const Command& command));
  // Ends the program if anything is left of the windows.
  void Finish();

  [[nodiscard]] TListView& List(int page) {
    return driver.List(testing::kPages[static_cast<std::size_t>(page)].list);
  }
  // Whether there is a window.
  [[nodiscard]] bool Open() const { return driver.form && driver.form->Visible(); }

  // How many commands changed something.
  [[nodiscard]] int Changes() const { return changes_; }

  Faults faults;

 private:
  testing::TestPlatform world_;
  FaultyPlatform faulty_{world_.platform, faults};

 public:
  testing::FormDriver driver{world_, faulty_.Get()};
  // What happens while a command waits for the user, a module or the waiting messages.
  std::function<void()> meanwhile;

 private:
  // Paths of keys are in full, below HKEY_CLASSES_ROOT for both hives of classes.
  struct Account {
    std::vector<std::wstring> trees;               // keys that go with everything in them
    std::vector<std::wstring> values;              // the beginnings of the facts of values that go
    std::vector<std::wstring> files;               // that go
    std::vector<std::wstring> modules;             // whose own code runs
    std::vector<std::wstring> created;             // keys that come, with their missing parents
    std::vector<std::wstring> mayCreate;           // the same, where the scan reaches them
    std::map<std::wstring, std::wstring> written;  // the beginnings of facts, and their texts
    bool exact = true;
  };

  [[nodiscard]] Facts Now() const;
  [[nodiscard]] Account Expect(const Command& command);
  void ExpectScan(int page, Account& account);
  void ExpectRemoval(int page, const TRecord& record, Account& account) const;
  void ExpectWriting(const TIESec& setting, std::wstring_view text, Account& account) const;
  void Check(const Facts& before, std::size_t modules, const Account& account);
  void CheckWindow();

  bool plain_;
  Account* account_ = nullptr;  // of the command that is being carried out
  int changes_ = 0;
  Facts now_;  // after the last command
};

}  // namespace tarvelin::fuzz
