#include "common/registry.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tarvelin {
namespace {

constexpr std::wstring_view kClasses = L"SOFTWARE\\Classes";

struct KeyName {
  RootKey root;
  std::wstring_view path;
};

// The keys whose children the scans list. A removal names one of these children by a text that it
// read from the registry; when that text comes out empty or crooked, the parent must survive.
// Classes stand here once, below the machine's classes, for the user's and the merged view as well.
constexpr auto kProtected = std::to_array<KeyName>({
    {RootKey::LocalMachine, L"SOFTWARE\\Classes\\*\\shell"},
    {RootKey::LocalMachine, L"SOFTWARE\\Classes\\*\\shellex\\ContextMenuHandlers"},
    {RootKey::LocalMachine, L"SOFTWARE\\Classes\\CLSID"},
    {RootKey::LocalMachine,
     L"SOFTWARE\\Classes\\CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell"},
    {RootKey::LocalMachine, L"SOFTWARE\\Classes\\Directory\\shell"},
    {RootKey::LocalMachine, L"SOFTWARE\\Classes\\Directory\\shellex\\ContextMenuHandlers"},
    {RootKey::LocalMachine, L"SOFTWARE\\Classes\\Folder\\shellex\\ContextMenuHandlers"},
    {RootKey::LocalMachine, L"SOFTWARE\\Classes\\Drive\\shellex\\ContextMenuHandlers"},
    {RootKey::LocalMachine, L"SOFTWARE\\Microsoft\\Code Store Database\\Distribution Units"},
    {RootKey::LocalMachine, L"SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar"},
    {RootKey::LocalMachine, L"SOFTWARE\\Microsoft\\Internet Explorer\\Extensions"},
    {RootKey::LocalMachine, L"SOFTWARE\\Microsoft\\Internet Explorer\\Main"},
    {RootKey::LocalMachine, L"SOFTWARE\\Microsoft\\Internet Explorer\\Search"},
    {RootKey::LocalMachine, L"SOFTWARE\\Microsoft\\Internet Explorer\\SearchUrl"},
    {RootKey::LocalMachine, L"SOFTWARE\\Microsoft\\Internet Explorer\\AboutURLs"},
    {RootKey::LocalMachine,
     L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Approved"},
    {RootKey::CurrentUser, L"Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats"},
    {RootKey::CurrentUser, L"Software\\Microsoft\\Internet Explorer\\Explorer Bars"},
    {RootKey::CurrentUser, L"Software\\Microsoft\\Internet Explorer\\MenuExt"},
    {RootKey::CurrentUser, L"Software\\Microsoft\\Internet Explorer\\Main"},
    {RootKey::CurrentUser, L"Software\\Microsoft\\Internet Explorer\\SearchUrl"},
    {RootKey::CurrentUser,
     L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders"},
});

constexpr std::array<std::pair<std::wstring_view, RootKey>, 4> kRootNames{{
    {L"HKEY_CLASSES_ROOT", RootKey::ClassesRoot},
    {L"HKEY_CURRENT_USER", RootKey::CurrentUser},
    {L"HKEY_LOCAL_MACHINE", RootKey::LocalMachine},
    {L"HKEY_USERS", RootKey::Users},
}};

bool HasNul(std::wstring_view text) { return text.find(L'\0') != std::wstring_view::npos; }

std::wstring Join(std::wstring_view parent, std::wstring_view child) {
  std::wstring path(parent);
  if (!parent.empty() && !child.empty()) path += L'\\';
  return path.append(child);
}

// Whether `path` is `ancestor` or lies below it.
bool IsWithin(std::wstring_view path, std::wstring_view ancestor) {
  if (path.size() < ancestor.size()) return false;
  if (path.size() > ancestor.size() && !ancestor.empty() && path[ancestor.size()] != L'\\') {
    return false;
  }
  return SameText(path.substr(0, ancestor.size()), ancestor);
}

// Whether the key is a root, one of the protected keys or above one of them.
bool IsProtected(RootKey root, std::wstring path) {
  if (root == RootKey::Users) {
    // HKEY_USERS\<sid> is a user's root and HKEY_USERS\<sid>_Classes are that user's classes.
    const auto end = path.find(L'\\');
    if (end == std::wstring::npos) return true;
    constexpr std::wstring_view suffix = L"_Classes";
    const auto user = std::wstring_view(path).substr(0, end);
    const bool classes =
        user.size() > suffix.size() && SameText(user.substr(user.size() - suffix.size()), suffix);
    path.erase(0, end + 1);
    root = classes ? RootKey::ClassesRoot : RootKey::CurrentUser;
  }
  if (root == RootKey::ClassesRoot) {
    path = Join(kClasses, path);
    root = RootKey::LocalMachine;
  }
  if (root == RootKey::CurrentUser && IsWithin(path, kClasses)) root = RootKey::LocalMachine;
  return std::any_of(kProtected.begin(), kProtected.end(), [&](const KeyName& key) {
    return key.root == root && IsWithin(key.path, path);
  });
}

std::wstring ShownName(std::wstring_view name) {
  return name.empty() ? L"(Default)" : std::wstring(name);
}

TRegistryError WrongType(std::wstring_view name) {
  return {L"M_Error_Value_Type", L"The registry value \"%s\" has an unexpected type.",
          ShownName(name)};
}

}  // namespace

// A path that names something: relative to `base`, or to the root when that is null.
struct TRegistry::Place {
  const RegistryKey* base;
  std::wstring path;
  std::wstring fullPath;  // below the root
};

std::optional<TRegistry::Place> TRegistry::Resolve(std::wstring_view path) const {
  if (HasNul(path)) return std::nullopt;
  const bool absolute = !path.empty() && path.front() == L'\\';
  if (absolute) path.remove_prefix(1);
  if (!path.empty() && path.back() == L'\\') {
    path.remove_suffix(1);
    if (path.empty()) return std::nullopt;
  }
  if (!path.empty() && (path.front() == L'\\' || path.back() == L'\\')) return std::nullopt;
  if (path.find(L"\\\\") != std::wstring_view::npos) return std::nullopt;

  if (absolute || !key_) return Place{nullptr, std::wstring(path), std::wstring(path)};
  return Place{key_.get(), std::wstring(path), Join(keyPath_, path)};
}

void TRegistry::SetRootKey(RootKey root) {
  if (root == root_) return;
  CloseKey();
  root_ = root;
}

bool TRegistry::OpenWith(std::wstring_view path, RegistryAccess access, bool canCreate) {
  auto place = Resolve(path);
  if (!place) return false;
  auto key = canCreate ? backend_.Create(root_, place->base, place->path)
                       : backend_.Open(root_, place->base, place->path, access);
  if (!key) return false;
  key_ = std::move(key);
  keyPath_ = std::move(place->fullPath);
  return true;
}

bool TRegistry::OpenKey(std::wstring_view path, bool canCreate) {
  return OpenWith(path, RegistryAccess::Full, canCreate);
}

bool TRegistry::OpenKeyReadOnly(std::wstring_view path) {
  return OpenWith(path, RegistryAccess::Read, false);
}

void TRegistry::CloseKey() {
  key_.reset();
  keyPath_.clear();
}

bool TRegistry::KeyExists(std::wstring_view path) const {
  const auto place = Resolve(path);
  return place && backend_.Open(root_, place->base, place->path, RegistryAccess::Read) != nullptr;
}

std::optional<RegistryValue> TRegistry::Query(std::wstring_view name) const {
  if (!key_ || HasNul(name)) return std::nullopt;
  return key_->Query(std::wstring(name));
}

bool TRegistry::ValueExists(std::wstring_view name) const { return Query(name).has_value(); }

DataType TRegistry::GetDataType(std::wstring_view name) const {
  const auto value = Query(name);
  if (!value) return DataType::rdUnknown;
  switch (value->type) {
    case kRegSz:
      return DataType::rdString;
    case kRegExpandSz:
      return DataType::rdExpandString;
    case kRegDword:
      return DataType::rdInteger;
    default:
      return DataType::rdBinary;
  }
}

std::wstring TRegistry::ReadString(std::wstring_view name) const {
  const auto value = Query(name);
  if (!value) return {};
  if (value->type != kRegSz && value->type != kRegExpandSz) throw WrongType(name);
  std::wstring text = FromUtf16Le(value->data);
  text.resize(std::min(text.find(L'\0'), text.size()));
  return text;
}

std::int32_t TRegistry::ReadInteger(std::wstring_view name) const {
  const auto value = Query(name);
  if (!value) {
    throw TRegistryError(L"M_Error_Value_Missing", L"The registry value \"%s\" is missing.",
                         ShownName(name));
  }
  if (value->type != kRegDword) throw WrongType(name);
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4 && i < value->data.size(); ++i) {
    number |= std::to_integer<std::uint32_t>(value->data[i]) << (8 * i);
  }
  return static_cast<std::int32_t>(number);
}

std::vector<std::wstring> TRegistry::GetKeyNames() const {
  return key_ ? key_->SubkeyNames() : std::vector<std::wstring>{};
}

std::vector<std::wstring> TRegistry::GetValueNames() const {
  return key_ ? key_->ValueNames() : std::vector<std::wstring>{};
}

void TRegistry::WriteString(std::wstring_view name, std::wstring_view text) {
  if (key_ && !HasNul(name) && key_->SetText(std::wstring(name), text)) return;
  throw TRegistryError(L"M_Error_Value_Write", L"The registry value \"%s\" could not be written.",
                       ShownName(name));
}

bool TRegistry::DeleteValue(std::wstring_view name) {
  return key_ && !HasNul(name) && key_->RemoveValue(std::wstring(name));
}

bool TRegistry::DeleteKey(std::wstring_view path) {
  const auto place = Resolve(path);
  // A relative path that is empty would be the open key itself, which no removal means.
  if (!place || place->path.empty() || IsProtected(root_, place->fullPath)) return false;
  return backend_.RemoveTree(root_, place->base, place->path);
}

RegistryLocation SplitLocation(std::wstring_view location) {
  const auto end = location.find(L'\\');
  if (end == std::wstring_view::npos) return {std::nullopt, std::wstring(location)};
  RegistryLocation parts{std::nullopt, std::wstring(location.substr(end))};
  for (const auto& [name, root] : kRootNames) {
    if (location.substr(0, end) == name) parts.root = root;
  }
  return parts;
}

ValueLocation SplitValueLocation(std::wstring_view location) {
  const auto first = location.find(L'|');
  if (first == std::wstring_view::npos) return {std::wstring(location), {}};
  return {std::wstring(location.substr(0, first)),
          std::wstring(location.substr(location.rfind(L'|') + 1))};
}

void DeleteLocationKey(RegistryBackend& backend, std::wstring_view location) {
  const auto parts = SplitLocation(location);
  TRegistry registry(backend);
  if (parts.root) registry.SetRootKey(*parts.root);
  registry.DeleteKey(parts.path);
}

void DeleteLocationValue(RegistryBackend& backend, std::wstring_view location,
                         std::wstring_view valueName) {
  const auto parts = SplitLocation(location);
  TRegistry registry(backend);
  if (parts.root) registry.SetRootKey(*parts.root);
  registry.OpenKey(parts.path, false);
  if (registry.ValueExists(valueName)) registry.DeleteValue(valueName);
}

}  // namespace tarvelin
