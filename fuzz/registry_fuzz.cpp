// Whole registries, built by a script of bytes: every page is visited, and every row is removed.
#include <array>
#include <string>

#include "fuzz/fuzz.h"
#include "tests/support/form_driver.h"

namespace tarvelin::fuzz {
namespace {

using testing::FormDriver;
using testing::kPages;
using testing::MemoryRegistry;
using testing::Rights;

constexpr const wchar_t* kBystander = L"HKEY_LOCAL_MACHINE\\Software\\Bystander";

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
    L"Command", L"DefaultIcon", L"Open", L"*",    L".lnk",     L"Child",          L"CLSID",
};
constexpr const wchar_t* kValueNames[] = {
    L"", L"Type", L"MenuText", L"ButtonText", L"Exec", L"NullFile", L"{B}", L"{C}", L"Start Page",
};
constexpr const wchar_t* kTexts[] = {
    L"{B}", L"type", L"C:\\b.dll", L"C:\\icon.ico,-12", L"C:\\b.exe /x", L"%1", L"",
};

class Script {
 public:
  explicit Script(Data data) : rest_(data) {}
  [[nodiscard]] bool Done() const { return rest_.empty(); }

  unsigned Byte() {
    if (rest_.empty()) return 0;
    const auto byte = std::to_integer<unsigned>(rest_[0]);
    rest_ = rest_.subspan(1);
    return byte;
  }
  Bytes Some() {
    const std::size_t count = std::min<std::size_t>(Byte() % 40, rest_.size());
    Bytes bytes(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(count));
    rest_ = rest_.subspan(count);
    return bytes;
  }
  // One of the table, or a text of its own.
  template <std::size_t count>
  std::wstring Word(const wchar_t* const (&table)[count]) {
    const unsigned choice = Byte();
    return choice % 8 == 7 ? FromUtf16Le(Some()) : table[choice % count];
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
      if (!name.empty()) registry.Child(path, std::move(name));
      break;
    }
    case 7:
      // Links stand below the places, never in their stead.
      registry.Link(path + L"\\Linked", script.Byte() % 2 ? kBystander : script.Path());
      break;
    default:
      registry.Restrict(path, static_cast<Rights>(script.Byte() % 5));
      break;
  }
}

}  // namespace

void Registry(Data data) {
  FormDriver driver;
  MemoryRegistry& registry = driver.world.registry;
  driver.world.resources.none = true;
  for (const wchar_t* file : {L"C:\\b.dll", L"C:\\icon.ico", L"C:\\b.exe"})
    driver.world.files.Add(file);
  for (const wchar_t* place : kPlaces) registry.Key(place);
  registry.Text(std::wstring(kBystander) + L"\\Precious", L"", L"kept");
  Script script(data);
  for (int steps = 0; steps < 60 && !script.Done(); ++steps) Step(script, registry);

  auto& answers = driver.world.boxes.answers;
  const auto agree = [&] { answers.assign(4, kAnswerYes); };
  agree();
  driver.Start();
  for (const auto& page : kPages) {
    agree();
    driver.Visit(page.item);
    TListView& list = driver.List(page.list);
    const int rows = list.Count();
    for (int row = 0; page.remove && row < rows && list.Count() > 0; ++row) {
      list.SetSelectedIndex(0);
      agree();
      driver.Press(page.remove);
      Require(list.Count() == rows - row - 1);
    }
  }
  agree();
  driver.Find<TCheckBox>(L"chkBoxAll").SetChecked(true);
  driver.Press(L"Button_Restore");

  for (const wchar_t* place : kPlaces) Require(registry.Has(place));
  Require(registry.TextOf(std::wstring(kBystander) + L"\\Precious", L"") == L"kept");
}

}  // namespace tarvelin::fuzz
