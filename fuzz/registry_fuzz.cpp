// Whole registries and what a user does with them, both told by a script of bytes; and a crowded
// registry with whose pages everything is done while one platform call after another fails.
#include <iostream>
#include <random>
#include <string>

#include "fuzz/fuzz.h"
#include "fuzz/session.h"

namespace tarvelin::fuzz {
namespace {

using testing::kPages;
using testing::MemoryRegistry;
using testing::Rights;

constexpr const wchar_t* kBystander = L"HKEY_LOCAL_MACHINE\\Software\\Bystander";
constexpr int kPageCount = static_cast<int>(std::size(kPages));
constexpr int kSettingsPage = kPageCount - 1;

// Where the pages read.
constexpr const wchar_t* kPlaces[] = {
    L"HKEY_LOCAL_MACHINE\\Software\\Classes",
    L"HKEY_LOCAL_MACHINE\\Software\\Classes\\*\\shell",
    L"HKEY_LOCAL_MACHINE\\Software\\Classes\\*\\shellex\\ContextMenuHandlers",
    L"HKEY_LOCAL_MACHINE\\Software\\Classes\\CLSID",
    L"HKEY_LOCAL_MACHINE\\Software\\Classes\\CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell",
    L"HKEY_LOCAL_MACHINE\\Software\\Classes\\Directory\\shell",
    L"HKEY_LOCAL_MACHINE\\Software\\Classes\\Drive\\shellex\\ContextMenuHandlers",
    L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Code Store Database\\Distribution Units",
    L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\Toolbar",
    L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\Extensions",
    L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\Main",
    L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Approved",
    L"HKEY_CURRENT_USER\\Software\\Classes",
    L"HKEY_CURRENT_USER\\Software\\Classes\\*\\shellex\\ContextMenuHandlers",
    L"HKEY_CURRENT_USER\\Software\\Classes\\CLSID",
    L"HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats",
    L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\Explorer Bars",
    L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\MenuExt",
    L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\SearchUrl",
};

constexpr const wchar_t* kKeyNames[] = {
    L"{B}",     L"{C}",         L".x",   L"type", L"ShellNew", L"InprocServer32", L"iexplore",
    L"Command", L"DefaultIcon", L"Open", L"*",    L".lnk",     L"Child",          L"{B} ",
};
constexpr const wchar_t* kValueNames[] = {
    L"", L"Type", L"MenuText", L"ButtonText", L"Exec", L"NullFile", L"{B}", L"{C}", L"Start Page",
};
constexpr const wchar_t* kTexts[] = {
    L"{B}", L"type", L"C:\\b.dll", L"C:\\icon.ico,-12", L"C:\\b.exe /x", L"%1", L"",
};

class Script {
 public:
  explicit Script(Data data) : rest_(data), plain(Byte() % 2 == 0) {}
  [[nodiscard]] bool Done() const { return rest_.empty(); }

  unsigned Byte() {
    if (rest_.empty()) return 0;
    const auto byte = std::to_integer<unsigned>(rest_[0]);
    rest_ = rest_.subspan(1);
    return byte;
  }
  Bytes Some() {
    const std::size_t wanted = Byte() % 40;
    const std::size_t count = std::min(wanted, rest_.size());
    Bytes bytes(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(count));
    rest_ = rest_.subspan(count);
    return bytes;
  }
  // One of the table, or a text of its own.
  template <std::size_t count>
  std::wstring Word(const wchar_t* const (&table)[count]) {
    const unsigned choice = Byte();
    std::wstring word = choice % 8 == 7 ? FromUtf16Le(Some()) : table[choice % count];
    if (plain) std::erase(word, L'\0');
    return word;
  }
  // A child of one of the places, up to three keys deep.
  std::wstring Path() {
    std::wstring path = kPlaces[Byte() % std::size(kPlaces)];
    for (unsigned depth = Byte() % 4; depth > 0; --depth) {
      std::wstring name = Word(kKeyNames).substr(0, 255);
      std::erase_if(name, [](wchar_t c) { return c == L'\\' || c == L'\0'; });
      if (!name.empty()) path += L"\\" + name;
    }
    return path;
  }

 private:
  Data rest_;

 public:
  // Nothing is denied, no key is a link and no name holds a NUL.
  const bool plain;
};

void Step(Script& script, MemoryRegistry& registry) {
  const unsigned kind = script.Byte();
  const std::wstring path = script.Path();
  switch (kind % 9) {
    case 0:
      registry.Key(path);
      break;
    case 1:
    case 2:
    case 3: {
      const std::wstring name = script.Word(kValueNames);
      registry.Text(path, name, script.Word(kTexts));
      break;
    }
    case 4:
      registry.Integer(path, script.Word(kValueNames), script.Byte() % 5);
      break;
    case 5: {
      const unsigned type = script.Byte() % 12;
      const std::wstring name = script.Word(kValueNames);
      registry.Value(path, name, type, script.Some());
      break;
    }
    case 6: {
      std::wstring name = FromUtf16Le(script.Some());
      std::erase(name, L'\\');
      if (!name.empty() && !script.plain) registry.Child(path, std::move(name));
      break;
    }
    case 7:
      // Links stand below the places, never in their stead.
      if (script.plain) break;
      registry.Link(path + L"\\Linked", script.Byte() % 2 ? kBystander : script.Path());
      break;
    default:
      if (!script.plain) registry.Restrict(path, static_cast<Rights>(script.Byte() % 5));
      break;
  }
}

// Most of what a user does is done on the page that is shown.
Command NextCommand(Script& script, int& page) {
  using enum Command::Kind;
  constexpr Command::Kind kKinds[] = {Visit,  Visit,   Visit,  Select, Select, Select,
                                      Select, Remove,  Remove, Remove, Remove, Show,
                                      Modify, Restore, Check,  Check};
  const unsigned kind = script.Byte();
  const unsigned rest = script.Byte();
  Command command{kKinds[kind % 16], page};
  if (command.kind == Visit) command.page = page = static_cast<int>(rest % kPageCount);
  if (kind == 0x70) command.kind = Close;
  if (kind == 0x80) command.kind = Fold;
  command.row = static_cast<int>(rest % 8) - 1;
  command.agree = rest / 8 % 4 != 0;
  command.how = static_cast<int>(rest / 32 % 3);
  return command;
}

// A few entries for each page.
void Crowd(Session& session) {
  MemoryRegistry& registry = session.driver.world.registry;
  const std::wstring machine = L"HKEY_LOCAL_MACHINE\\Software\\";
  const std::wstring user = L"HKEY_CURRENT_USER\\Software\\";
  const std::wstring classes = machine + L"Classes\\";
  const std::wstring browser = L"Microsoft\\Internet Explorer\\";
  registry.Text(classes + L"*\\shell\\Verb\\Command", L"", L"C:\\b.exe /x");
  registry.Text(classes + L"*\\shellex\\ContextMenuHandlers\\H", L"", L"{H}");
  registry.Text(user + L"Classes\\*\\shellex\\ContextMenuHandlers\\H", L"", L"{U}");
  registry.Text(classes + L"Directory\\shell\\D", L"", L"D");
  registry.Text(classes + L"Directory\\shell\\D\\command", L"", L"C:\\b.exe");
  for (const wchar_t* extension : {L".x", L".y"}) {
    registry.Text(classes + extension, L"", L"type");
    registry.Text(classes + extension + L"\\ShellNew", L"NullFile", L"");
  }
  registry.Text(classes + L"type", L"", L"A type")
      .Text(classes + L"type\\DefaultIcon", L"", L"C:\\icon.ico,-12");
  registry.Text(user + browser + L"MenuExt\\Entry", L"", L"C:\\b.htm");
  for (const wchar_t* name : {L"{B}", L"{C}"}) {
    registry.Text(classes + L"CLSID\\" + name, L"", L"Class");
    registry.Text(classes + L"CLSID\\" + name + L"\\InprocServer32", L"", L"C:\\b.dll");
    registry.Integer(
        user + L"Microsoft\\Windows\\CurrentVersion\\Ext\\Stats\\" + name + L"\\iexplore", L"Type",
        3);
  }
  registry.Key(user + browser + L"Explorer Bars\\{B}")
      .Text(machine + browser + L"Toolbar", L"{C}", L"");
  registry.Text(machine + browser + L"Extensions\\{E}", L"MenuText", L"Button");
  registry.Key(machine + L"Microsoft\\Code Store Database\\Distribution Units\\{C}");
  registry.Text(machine + browser + L"Main", L"Start Page", L"http://hijacked.example/");
}

void AddFiles(Session& session) {
  testing::FakeFiles& files = session.driver.world.files;
  for (const wchar_t* file :
       {L"C:\\b.dll", L"C:\\icon.ico", L"C:\\b.exe", L"C:\\SendTo\\a.lnk", L"C:\\SendTo\\c.lnk"}) {
    files.Add(file);
  }
  files.Add(L"C:\\Program\\Toolbox_Language\\English.lng",
            "[Tarvelin_FormMain]\nbtnClose.Caption=C\n");
  files.entries[L"C:\\Program\\Toolbox_Language\\*.lng"] = {L"English.lng"};
  files.entries[L"C:\\SendTo\\*.*"] = {L".", L"a.lnk", L"c.lnk"};
  session.driver.world.registry.Text(
      L"HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
      L"SendTo", L"C:\\SendTo");
  session.driver.world.shell.AddVersion(L"C:\\b.dll", {{L"CompanyName", L"Maker"}});
}

// Lets each call of a command fail in each way, after what stands before it was done. Returns how
// many failures the window survived.
int FailEachCall(const std::vector<Command>& before, const Command& command) {
  int survived = 0;
  for (const bool onwards : {false, true}) {
    for (const Way way : kWays) {
      if (onwards && way != Way::Refused && way != Way::OutOfMemory) continue;
      for (int call = 0;; ++call) {
        Session session(true);
        Crowd(session);
        AddFiles(session);
        for (const Command& step : before) session.Perform(step);
        session.faults.Arm(call, way, onwards);
        session.Do(command);
        if (!session.faults.Disarm()) break;
        session.Tour(&Session::Perform);
        session.Finish();
        ++survived;
      }
    }
  }
  return survived;
}

// Returns how many commands changed something.
int PlayScript(Data data) {
  Script script(data);
  Session session(script.plain);
  MemoryRegistry& registry = session.driver.world.registry;
  for (const wchar_t* place : kPlaces) registry.Key(place);
  registry.Text(std::wstring(kBystander) + L"\\Precious", L"", L"kept");
  AddFiles(session);
  const unsigned steps = script.Byte();
  if (steps >= 64) Crowd(session);
  for (unsigned step = 0; step < steps % 64 && !script.Done(); ++step) Step(script, registry);

  int page = 0;
  int depth = 0;
  session.meanwhile = [&] {
    if (depth == 2 || script.Done() || script.Byte() % 4 != 0) return;
    ++depth;
    session.Do(NextCommand(script, page));
    --depth;
  };
  session.Do({Command::Kind::Start});
  for (int commands = 0; commands < 60 && !script.Done(); ++commands) {
    session.Do(NextCommand(script, page));
  }
  session.meanwhile = nullptr;
  session.Tour(&Session::Do);
  session.Finish();
  for (const wchar_t* place : kPlaces) Require(registry.Has(place));
  Require(registry.TextOf(std::wstring(kBystander) + L"\\Precious", L"") == L"kept");
  return session.Changes();
}

}  // namespace

void Registry(Data data) { (void)PlayScript(data); }

int RegistryOfSeed(unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::byte> bytes(100 + random() % 900);
  for (std::byte& byte : bytes) byte = static_cast<std::byte>(random() & 0xFF);
  return PlayScript(bytes);
}

void FailEveryCall() {
  using enum Command::Kind;
  const Command start{Start};
  int survived = FailEachCall({}, start);
  std::cout << survived << " failures at the start\n";
  for (int page = 0; page < kPageCount; ++page) {
    const Command visit{Visit, page};
    const Command select{Select, page, 0};
    int ofPage = FailEachCall({start}, visit) + FailEachCall({start, visit}, select);
    if (page == kSettingsPage) {
      const Command check{Check, page, -1};
      ofPage += FailEachCall({start, visit}, check);
      ofPage += FailEachCall({start, visit, check}, {Restore, page});
      ofPage += FailEachCall({start, visit, select}, {Modify, page});
    } else {
      ofPage += FailEachCall({start, visit, select}, {Remove, page});
    }
    ofPage += FailEachCall({start, visit, select}, {Show, page});
    std::cout << ofPage << " failures on the page " << ToUtf8(kPages[page].item) << '\n'
              << std::flush;
    survived += ofPage;
  }
  std::cout << survived << " failures survived\n";
}

}  // namespace tarvelin::fuzz
