#include "common/registry.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tarvelin {
namespace {

// Of the user and of the machine alike; HKEY_CLASSES_ROOT shows both together.
constexpr std::wstring_view kClassesPath = L"SOFTWARE\\Classes";

struct KeyName {
  RootKey root;
  std::wstring_view path;
};

// The keys of which the program lists or writes the children or values. A removal names a child of
// one of them by a text that was read from the registry; when that text comes out empty or crooked,
// the key itself must survive. Classes stand here once, as the machine's, for the user's and for
// both together as well.
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

// `path` without the components by which a 32-bit program's part of the registry differs.
std::wstring WithoutView(std::wstring_view path) {
  std::wstring plain;
  for (std::size_t begin = 0, end = 0; begin <= path.size(); begin = end + 1) {
    end = std::min(path.find(L'\\', begin), path.size());
    const auto component = path.substr(begin, end - begin);
    if (!SameText(component, L"Wow6432Node")) plain = Join(plain, component);
  }
  return plain;
}

// Takes "<user>_Classes\...", below HKEY_USERS, for "<user>\Software\Classes\...": a user's classes
// are a hive of their own, and the second is a link to it.
std::wstring InUserHive(const std::wstring& path) {
  constexpr std::wstring_view suffix = L"_Classes";
  const std::size_t end = std::min(path.find(L'\\'), path.size());
  if (end <= suffix.size() ||
      !SameText(std::wstring_view(path).substr(end - suffix.size(), suffix.size()), suffix)) {
    return path;
  }
  return path.substr(0, end - suffix.size()) + L"\\" + std::wstring(kClassesPath) +
         path.substr(end);
}

// Whether the system's own names of two keys mean the same place, as far as a program that goes by
// paths can tell.
bool IsSamePlace(std::wstring_view a, std::wstring_view b) {
  const auto plain = [](std::wstring_view name) {
    constexpr std::wstring_view users = L"\\REGISTRY\\USER\\";
    if (!SameText(name.substr(0, users.size()), users)) return WithoutView(name);
    return InUserHive(WithoutView(name.substr(users.size())));
  };
  return SameText(plain(a), plain(b));
}

// Whether the key is a root, one of the protected keys or above one of them.
bool IsProtected(RootKey root, std::wstring_view keyPath) {
  std::wstring path = WithoutView(keyPath);
  if (root == RootKey::Users) {
    path = InUserHive(path);
    const auto end = path.find(L'\\');
    if (end == std::wstring::npos) return true;  // a user's root
    path.erase(0, end + 1);
    root = RootKey::CurrentUser;
  }
  if (root == RootKey::ClassesRoot) {
    path = Join(kClassesPath, path);
    root = RootKey::LocalMachine;
  }
  if (root == RootKey::CurrentUser && IsWithin(path, kClassesPath)) root = RootKey::LocalMachine;
  return std::any_of(kProtected.begin(), kProtected.end(), [&](const KeyName& key) {
    return key.root == root && IsWithin(key.path, path);
  });
}

// Deletes the key at a path below a root of its own, if it really is there and not where a link in
// the middle of the path leads: what protects a key and what the user confirmed go by the path. The
// first component tells where the root really is; nothing stands in between.
bool RemoveAt(RegistryBackend& backend, RootKey root, const std::wstring& path) {
  const auto rootKey = backend.Root(root);
  const auto key = rootKey->OpenToRemove(path);
  if (!key) return false;
  const std::size_t end = std::min(path.find(L'\\'), path.size());
  const std::wstring first = rootKey->RealName(path.substr(0, end));
  if (first.empty() || !IsSamePlace(key->RealName({}), first + path.substr(end))) return false;
  return key->RemoveTree();
}

std::wstring ShownName(std::wstring_view name) {
  return name.empty() ? L"(Default)" : std::wstring(name);
}

TRegistryError WrongType(std::wstring_view name) {
  return TRegistryError(messages::kErrorValueType, ShownName(name));
}

}  // namespace

struct TRegistry::Place {
  const RegistryKey& from;  // the root or the open key
  std::wstring path;        // below that
  std::wstring fullPath;    // below the root
};

TRegistry::TRegistry(RegistryBackend& backend, RootKey root)
    : backend_(backend), root_(root), rootKey_(backend.Root(root)) {}

std::optional<TRegistry::Place> TRegistry::Resolve(std::wstring_view path) const {
  const bool absolute = !path.empty() && path.front() == L'\\';
  if (absolute) path.remove_prefix(1);
  if (!path.empty() && path.back() == L'\\') {
    path.remove_suffix(1);
    if (path.empty()) return std::nullopt;
  }
  if (!path.empty() && (path.front() == L'\\' || path.back() == L'\\')) return std::nullopt;
  if (path.find(L"\\\\") != std::wstring_view::npos) return std::nullopt;

  if (absolute || !key_) return Place{*rootKey_, std::wstring(path), std::wstring(path)};
  return Place{*key_, std::wstring(path), Join(keyPath_, path)};
}

void TRegistry::SetRootKey(RootKey root) {
  if (root == root_) return;
  CloseKey();
  root_ = root;
  rootKey_ = backend_.Root(root);
}

std::unique_ptr<RegistryKey> TRegistry::OpenAt(const Place& place, RegistryAccess access) const {
  return HasNul(place.path) ? nullptr : place.from.Open(place.path, access);
}

bool TRegistry::OpenWith(std::wstring_view path, RegistryAccess access, bool canCreate) {
  auto place = Resolve(path);
  if (!place) return false;
  // What an empty path names is there already, and creating it would give a 32-bit program another
  // key below HKEY_CLASSES_ROOT.
  auto key = canCreate && !place->path.empty() && !HasNul(place->path)
                 ? place->from.Create(place->path)
                 : OpenAt(*place, access);
  if (!key) return false;
  key_ = std::move(key);
  keyPath_ = std::move(place->fullPath);
  answer_.reset();
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
  answer_.reset();
}

bool TRegistry::KeyExists(std::wstring_view path) const {
  const auto place = Resolve(path);
  return place && OpenAt(*place, RegistryAccess::Read) != nullptr;
}

const std::optional<RegistryValue>& TRegistry::Query(std::wstring_view name) const {
  if (!answer_ || answer_->name != name) {
    std::wstring asked(name);
    auto value = key_ && !HasNul(name) ? key_->Query(asked) : std::nullopt;
    answer_ = Answer{std::move(asked), std::move(value)};
  }
  return answer_->value;
}

bool TRegistry::ValueExists(std::wstring_view name) const { return Query(name).has_value(); }

DataType TRegistry::GetDataType(std::wstring_view name) const {
  const auto& value = Query(name);
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
  const auto& value = Query(name);
  if (!value) return {};
  if (value->type != kRegSz && value->type != kRegExpandSz) throw WrongType(name);
  std::wstring text = FromUtf16Le(value->data);
  text.resize(std::min(text.find(L'\0'), text.size()));
  return text;
}

std::int32_t TRegistry::ReadInteger(std::wstring_view name) const {
  const auto& value = Query(name);
  if (!value) {
    throw TRegistryError(messages::kErrorValueMissing, ShownName(name));
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
  answer_.reset();
  if (key_ && !HasNul(name) && key_->SetText(std::wstring(name), text)) return;
  throw TRegistryError(messages::kErrorValueWrite, ShownName(name));
}

bool TRegistry::DeleteValue(std::wstring_view name) {
  answer_.reset();
  return key_ && !HasNul(name) && key_->RemoveValue(std::wstring(name));
}

bool TRegistry::DeleteKey(std::wstring_view path) {
  answer_.reset();
  const auto place = Resolve(path);
  // A relative path that is empty would be the open key itself, which no removal means.
  if (!place || place->path.empty() || IsProtected(root_, place->fullPath)) return false;
  if (root_ != RootKey::ClassesRoot) return RemoveAt(backend_, root_, place->fullPath);

  // The user's key stands in front of the machine's of the same name, which would come to light. If
  // one of them is refused, what it names is listed again by the next reading, as after any removal
  // that is refused.
  const std::wstring below = Join(kClassesPath, place->fullPath);
  const bool users = RemoveAt(backend_, RootKey::CurrentUser, below);
  const bool machines = RemoveAt(backend_, RootKey::LocalMachine, below);
  return (users || machines) && !KeyExists(path);
}

std::wstring TextOrEmpty(const TRegistry& registry, std::wstring_view name) {
  try {
    return registry.ReadString(name);
  } catch (const TRegistryError&) {
    return {};
  }
}

std::wstring RegistryLocation::Text() const {
  std::wstring_view name;
  for (const auto& [rootName, named] : kRootNames) {
    if (named == root) name = rootName;
  }
  // Every row keeps one, so it takes no more room than it needs.
  std::wstring text;
  text.reserve(name.size() + path.size() + (value ? value->size() + 1 : 0));
  text.append(name).append(path);
  if (value) text.append(L"|").append(*value);
  return text;
}

RegistryLocation ParseKeyLocation(std::wstring_view text) {
  RegistryLocation location;
  const auto end = text.find(L'\\');
  if (end != std::wstring_view::npos) {
    for (const auto& [name, root] : kRootNames) {
      if (text.substr(0, end) == name) location.root = root;
    }
    text.remove_prefix(end);
  }
  location.path = text;
  return location;
}

RegistryLocation ParseValueLocation(std::wstring_view text) {
  const auto first = text.find(L'|');
  RegistryLocation location = ParseKeyLocation(text.substr(0, first));
  if (first != std::wstring_view::npos) location.value = text.substr(text.rfind(L'|') + 1);
  return location;
}

void DeleteLocationKey(RegistryBackend& backend, std::wstring_view location) {
  const RegistryLocation place = ParseKeyLocation(location);
  TRegistry(backend, place.root).DeleteKey(place.path);
}

void DeleteLocationValue(RegistryBackend& backend, std::wstring_view location,
                         std::wstring_view valueName) {
  const RegistryLocation place = ParseKeyLocation(location);
  TRegistry registry(backend, place.root);
  if (registry.OpenKey(place.path, false)) registry.DeleteValue(valueName);
}

}  // namespace tarvelin
