// Everything that takes a text apart.
#include <algorithm>
#include <string>

#include "addons/UnitIEBrowserHelp.h"
#include "app/PLanguage.h"
#include "common/Corvane_Routine_New.h"
#include "common/registry.h"
#include "fuzz/fuzz.h"
#include "shellmenu/extension_icon.h"
#include "tests/support/test_platform.h"

namespace tarvelin::fuzz {
namespace {

using testing::EnglishMessages;
using testing::FakeFiles;
using testing::TestPlatform;

constexpr std::wstring_view kAbsent = L"\1";

// UTF-16 after a byte that UTF-8 never has, else UTF-8, so that every text can be made and most
// inputs are plain.
std::wstring TextOf(Data data) {
  if (!data.empty() && data[0] == std::byte{0xFF}) return FromUtf16Le(data.subspan(1));
  return FromUtf8(data);
}

std::string_view Characters(Data data) {
  return {reinterpret_cast<const char*>(data.data()), data.size()};
}

// What the scans list the children of, and a key that nothing names.
class Parents {
 public:
  explicit Parents(testing::MemoryRegistry& registry) : registry_(registry) {
    for (const wchar_t* path : kPaths)
      registry_.Text(path + std::wstring(L"\\Child"), L"Name", L"");
  }
  void RequireAll() const {
    for (const wchar_t* path : kPaths) Require(registry_.Has(path));
  }

 private:
  static constexpr const wchar_t* kPaths[] = {
      L"HKEY_LOCAL_MACHINE\\Software\\Classes\\CLSID",
      L"HKEY_LOCAL_MACHINE\\Software\\Classes\\*\\shell",
      L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\Toolbar",
      L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Internet Explorer\\Extensions",
      L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Code Store Database\\Distribution Units",
      L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\MenuExt",
      L"HKEY_CURRENT_USER\\Software\\Microsoft\\Internet Explorer\\Explorer Bars",
  };
  testing::MemoryRegistry& registry_;
};

// Every variable expands and every other file exists, so that all branches are taken.
class SomeFiles : public FakeFiles {
 public:
  bool FileExists(const std::wstring& path) override { return path.size() % 2 == 0; }
  std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) override {
    if (text == L"%windir%") return std::nullopt;
    return L"C:\\" + text;
  }
};

}  // namespace

void Language(Data data) {
  FakeFiles files;
  files.Add(L"L:\\x.lng", Characters(data));
  files.entries[L"L:\\*.lng"] = {L"x.lng"};
  const TLanguage language(files, L"Tarvelin", L"L:");
  Require(language.Index() == 0 && language.DisplayNames().size() == 1);

  TExtIniFile file;
  Require(file.LoadFromFile(files, L"L:\\x.lng"));
  TValueLines lines;
  file.ReadSectionValues(L"TARVELIN_m", lines);
  for (const auto& [key, value] : lines.Lines()) {
    Require(Trim(key) == key && Trim(value) == value && key.find(L'=') == std::wstring::npos);
    Require(file.ValueExists(L"Tarvelin_M", key));
    Require(language.Message({key, kAbsent}) == file.ReadText(L"Tarvelin_M", key, kAbsent));
  }

  TForm form(L"FormMain", 100, 100, L"Before");
  const auto& button = form.Create<TButton>(L"btnClose", &form, TRect{}, L"Before");
  language.Translate(form);
  Require(button.Caption() ==
          language.ReadText(L"Tarvelin_FormMain", L"btnClose.Caption", L"Before"));
}

void Profile(Data data) {
  FakeFiles files;
  files.Add(L"L:\\English.lng");
  files.Add(L"L:\\German.lng");
  files.Add(L"C:\\other.lng", "[Tarvelin_M]\nM_Remove=stolen");
  files.entries[L"L:\\*.lng"] = {L"German.lng", L"English.lng"};
  files.profile[L"Main.ini|Main|Language"] = TextOf(data);
  TLanguage language(files, L"Tarvelin", L"L:");
  const std::wstring name = language.ReadLanguageName(L"Main.ini", L"Main", L"Language");
  language.Load(name);
  Require(language.Index() == (SameText(name, L"German") ? 0 : 1));
  Require(language.Message({L"M_Remove", kAbsent}) == kAbsent);
}

void CommandLine(Data data) {
  const std::wstring text = TextOf(data);
  SomeFiles files;
  const std::wstring path = CommandLineToFilePath(files, text);
  Require(path.find_first_of(L"/\"") == std::wstring::npos);
  const std::wstring name = ExtractFileName(path);
  Require(path.ends_with(name) && name.ends_with(ExtractFileExt(name)));

  const std::string encoded = ToUtf8(FromUtf8(data));
  Require(FromUtf8(std::as_bytes(std::span(encoded))) == FromUtf8(data));
  const Bytes again = ToUtf16Le(FromUtf16Le(data));
  Require(std::equal(again.begin(), again.end(), data.begin(),
                     data.begin() + static_cast<std::ptrdiff_t>(data.size() / 2 * 2)));
  (void)FromUtf16Be(data);
  Require(UpperCase(text).size() == text.size() && LowerCase(text).size() == text.size());
  Require(SameText(text, UpperCase(text)));
}

// The first byte tells which of the files that a location may mean are there.
void Icon(Data data) {
  if (data.empty()) return;
  const auto there = std::to_integer<unsigned>(data[0]);
  const std::wstring location = TextOf(data.subspan(1));
  TestPlatform system;
  system.registry.Text(L"HKEY_LOCAL_MACHINE\\Software\\Classes\\type\\DefaultIcon", L"", location);
  const std::wstring file = ReplaceAll(location.substr(0, location.find(L',')), L"\"", L"");
  if (there & 1) system.files.Add(location);
  if (there & 2) system.files.Add(file);
  if (there & 4) system.files.Add(L"C:\\Windows\\system32\\" + file);
  if (there & 8) system.files.Add(CommandLineToFilePath(system.files, file));
  TImageList images(L"images");
  ExtensionIcons icons(system.platform, images);
  for (int twice = 0; twice < 2; ++twice) {
    try {
      const int image = icons.GetExtensionIcon(L".x", L"type");
      Require(image >= -1 && image < images.Count());
    } catch (const TError& error) {
      Require(!error.Detail().empty());  // a number that is none
    }
  }
  Require(system.shell.iconsAlive == 0);
}

void Location(Data data) {
  const std::wstring text = TextOf(data);
  for (const auto parse : {ParseKeyLocation, ParseValueLocation}) {
    const RegistryLocation read = parse(text);
    // A text without any backslash names nothing that could be written.
    if (!read.path.starts_with(L'\\')) {
      Require(text.substr(0, text.find(L'|')).find(L'\\') == std::wstring::npos);
      continue;
    }
    const RegistryLocation again = parse(read.Text());
    Require(again.root == read.root && again.path == read.path && again.value == read.value);
  }

  TestPlatform system;
  const Parents parents(system.registry);
  TRegistry registry(system.registry);
  for (const RootKey root : {RootKey::LocalMachine, RootKey::ClassesRoot, RootKey::CurrentUser}) {
    registry.SetRootKey(root);
    const bool there = registry.KeyExists(text);
    Require(registry.OpenKeyReadOnly(text) == there);
    (void)registry.GetKeyNames();
    registry.CloseKey();
    if (registry.DeleteKey(text)) Require(there || text.find(L'\0') != std::wstring::npos);
    parents.RequireAll();
  }
  DeleteLocationKey(system.registry, text);
  DeleteLocationValue(system.registry, text, L"Name");
  parents.RequireAll();
}

// The first byte chooses the kind of the removal.
void Removal(Data data) {
  if (data.empty()) return;
  const std::wstring text = TextOf(data.subspan(1));
  TestPlatform system;
  const Parents parents(system.registry);
  const std::wstring bystander = L"HKEY_LOCAL_MACHINE\\Software\\Bystander";
  system.registry.Key(bystander);
  for (const wchar_t* module : {L"C:\\a.dll", L"C:\\b.ocx", L"\\\\server\\c.dll"}) {
    system.files.Add(module);
  }
  const EnglishMessages messages;
  TScanIeBrowser scanner(system.platform, messages, {});
  (void)scanner.RemoveAddon(static_cast<RemovalMode>(std::to_integer<int>(data[0]) % 6), text);
  parents.RequireAll();
  Require(system.registry.Has(bystander) ||
          UpperCase(text).find(L"BYSTANDER") != std::wstring::npos);
  for (const auto& path : system.modules.unregistered) Require(path.at(1) == L':');
  for (const auto& path : system.files.removed) Require(text.ends_with(path));
}

}  // namespace tarvelin::fuzz
