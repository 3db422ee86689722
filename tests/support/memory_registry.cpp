#include "tests/support/memory_registry.h"

#include <algorithm>
#include <utility>

namespace tarvelin::testing {

struct MemoryRegistry::Node {
  std::map<std::wstring, std::shared_ptr<Node>, TextLess> keys;
  std::map<std::wstring, RegistryValue, TextLess> values;
  std::wstring linkTarget;
  Rights rights = Rights::All;
  bool deleted = false;
};

namespace {

constexpr std::wstring_view kUserClasses = L"HKEY_CURRENT_USER\\Software\\Classes";
constexpr std::wstring_view kMachineClasses = L"HKEY_LOCAL_MACHINE\\Software\\Classes";
constexpr std::wstring_view kClassesRoot = L"HKEY_CLASSES_ROOT";

// The keys of HKEY_CLASSES_ROOT, itself among them, whose children are those of both hives
// together. Of any other key that both have, the user's hides what the machine's holds.
constexpr std::wstring_view kMergedKeys =
    L"||*|*\\shellex|*\\shellex\\contextmenuhandlers|*\\shellex\\propertysheethandlers|appid|clsid|"
    L"component categories|drive|drive\\shellex|drive\\shellex\\contextmenuhandlers|"
    L"drive\\shellex\\folderextensions|filter|folder|folder\\shellex|"
    L"folder\\shellex\\columnhandlers|"
    L"folder\\shellex\\contextmenuhandlers|folder\\shellex\\propertysheethandlers|"
    L"installer\\components|interface|mime|mime\\database|mime\\database\\charset|"
    L"mime\\database\\codepage|mime\\database\\content type|typelib|";

bool IsMerged(std::wstring_view path) {
  return kMergedKeys.find(L"|" + LowerCase(path) + L"|") != std::wstring_view::npos;
}

std::wstring RootName(RootKey root) { return RegistryLocation{root, {}, {}}.Text(); }

std::pair<std::wstring_view, std::wstring_view> SplitFirst(std::wstring_view path) {
  const auto end = std::min(path.find(L'\\'), path.size());
  return {path.substr(0, end), path.substr(std::min(end + 1, path.size()))};
}

bool IsClassesRoot(std::wstring_view path) {
  return SameText(SplitFirst(path).first, kClassesRoot);
}

// The place in one hive of classes that a path of HKEY_CLASSES_ROOT stands for.
std::wstring InHive(std::wstring_view hive, std::wstring_view path) {
  return std::wstring(hive).append(path.substr(kClassesRoot.size()));
}

// The path without its last component.
std::wstring_view Parent(std::wstring_view path) { return path.substr(0, path.rfind(L'\\')); }

// The kernel's name for the place: the user's classes are a hive of their own.
std::wstring KernelName(std::wstring_view path) {
  const std::pair<std::wstring_view, std::wstring_view> hives[] = {
      {kUserClasses, L"\\REGISTRY\\USER\\S-1-5-21-1_Classes"},
      {L"HKEY_CURRENT_USER", L"\\REGISTRY\\USER\\S-1-5-21-1"},
      {L"HKEY_LOCAL_MACHINE", L"\\REGISTRY\\MACHINE"},
      {L"HKEY_USERS", L"\\REGISTRY\\USER"}};
  for (const auto& [begin, name] : hives) {
    if (SameText((std::wstring(path) + L'\\').substr(0, begin.size() + 1),
                 std::wstring(begin) + L'\\')) {
      return std::wstring(name).append(path.substr(begin.size()));
    }
  }
  return {};
}

bool MayRead(Rights rights) { return rights <= Rights::Read; }
bool MayCreateBelow(Rights rights) { return rights < Rights::Read; }
bool MayDelete(Rights rights) { return rights < Rights::Read || rights == Rights::Delete; }

void MarkDeleted(MemoryRegistry::Node& node) {
  node.deleted = true;
  if (!node.linkTarget.empty()) return;
  for (const auto& [name, child] : node.keys) MarkDeleted(*child);
}

// Text as a value of the registry holds it.
RegistryValue TextValue(std::wstring_view text) {
  Bytes data = ToUtf16Le(text);
  data.resize(data.size() + 2);
  return {kRegSz, std::move(data)};
}

// Deletes what is below a key; false when something of it stays.
bool RemoveChildren(MemoryRegistry::Node& node) {
  if (!node.linkTarget.empty()) return true;
  if (!MayRead(node.rights)) return node.keys.empty();
  bool all = true;
  for (auto child = node.keys.begin(); child != node.keys.end();) {
    const bool gone = MayDelete(child->second->rights) && RemoveChildren(*child->second);
    if (gone) MarkDeleted(*child->second);
    all = all && gone;
    child = gone ? node.keys.erase(child) : std::next(child);
  }
  return all;
}

}  // namespace

// A root, one key, or below HKEY_CLASSES_ROOT the user's in front of the machine's.
class MemoryKey : public RegistryKey {
 public:
  MemoryKey(MemoryRegistry& registry, std::wstring path, std::vector<MemoryRegistry::Found> found,
            RegistryAccess access)
      : registry_(registry), path_(std::move(path)), found_(std::move(found)), access_(access) {}

  std::unique_ptr<RegistryKey> Open(const std::wstring& path,
                                    RegistryAccess access) const override {
    const std::wstring full = Below(path.c_str());
    NoteOpening(full);
    auto found = registry_.Find(full, true);
    if (found.empty()) return nullptr;
    const Rights rights = found[0].node->rights;
    if (access == RegistryAccess::Full ? rights != Rights::All : !MayRead(rights)) return nullptr;
    return std::make_unique<MemoryKey>(registry_, full, std::move(found), access);
  }

  std::unique_ptr<RegistryKey> Create(const std::wstring& path) const override {
    // What a 32-bit program gets for an empty path below HKEY_CLASSES_ROOT.
    const std::wstring full = Below(path.empty() ? L"Wow6432Node" : path.c_str());
    NoteOpening(full);
    auto found = registry_.Find(full, true);
    if (found.empty()) {
      // It is created below the nearest key that exists, which must allow it: below the user's if
      // there is one, but what stands directly below HKEY_CLASSES_ROOT is the machine's.
      std::wstring_view above = full;
      while (found.empty()) {
        above = Parent(above);
        found = registry_.Find(above, true);
      }
      const auto& parent = SameText(above, kClassesRoot) ? found.back() : found.front();
      if (!MayCreateBelow(parent.node->rights)) return nullptr;
      registry_.Make(parent.path + full.substr(above.size()));
      found = registry_.Find(full, true);
    }
    if (found[0].node->rights != Rights::All) return nullptr;
    return std::make_unique<MemoryKey>(registry_, full, std::move(found), RegistryAccess::Full);
  }

  std::unique_ptr<RegistryKey> OpenToRemove(const std::wstring& path) const override {
    auto found = registry_.Find(Below(path), false);
    if (path.empty() || found.empty() || !MayDelete(found[0].node->rights)) return nullptr;
    return std::make_unique<MemoryKey>(registry_, Below(path), std::move(found),
                                       RegistryAccess::Read);
  }

  bool RemoveTree() override {
    if (Node().deleted || !RemoveChildren(Node())) return false;
    registry_.Erase(found_[0]);
    return true;
  }

  std::wstring RealName(const std::wstring& path) const override {
    const auto found = path.empty() ? found_ : registry_.Find(Below(path), false);
    return found.empty() ? std::wstring() : KernelName(found[0].path);
  }

  std::vector<std::wstring> SubkeyNames() const override {
    std::map<std::wstring, bool, TextLess> all;  // each name once, as the first key has it
    for (const auto& [node, path] : found_) {
      if (node->deleted) continue;
      for (const auto& [name, child] : node->keys) all.emplace(name, true);
    }
    std::vector<std::wstring> names;
    for (const auto& [name, unused] : all) names.push_back(name);
    return names;
  }

  std::vector<std::wstring> ValueNames() const override {
    std::vector<std::wstring> names;
    if (Node().deleted) return names;
    for (const auto& [name, value] : Node().values) names.push_back(name);
    return names;
  }

  std::optional<RegistryValue> Query(const std::wstring& name) const override {
    ++registry_.queries;
    const auto found = Node().values.find(name);
    if (Node().deleted || found == Node().values.end()) return std::nullopt;
    return found->second;
  }

  bool SetText(const std::wstring& name, std::wstring_view text) override {
    if (registry_.refusesText || access_ != RegistryAccess::Full || Node().deleted) return false;
    Node().values[name] = TextValue(text);
    return true;
  }

  bool RemoveValue(const std::wstring& name) override {
    return access_ == RegistryAccess::Full && !Node().deleted && Node().values.erase(name) > 0;
  }

 private:
  [[nodiscard]] MemoryRegistry::Node& Node() const { return *found_.at(0).node; }
  [[nodiscard]] std::wstring Below(const std::wstring& path) const {
    return path.empty() ? path_ : path_ + L"\\" + path;
  }
  void NoteOpening(const std::wstring& path) const {
    ++registry_.opens;
    if (registry_.beforeOpen) registry_.beforeOpen(path);
  }

  MemoryRegistry& registry_;
  std::wstring path_;  // as it was asked for
  std::vector<MemoryRegistry::Found> found_;
  RegistryAccess access_;
};

namespace {

void DumpNode(const MemoryRegistry::Node& node, const std::wstring& path,
              std::set<std::wstring>& facts) {
  for (const auto& [name, value] : node.values) {
    std::wstring data = FromUtf16Le(value.data);
    if (value.data.size() % 2 != 0) data += static_cast<wchar_t>(value.data.back());
    facts.insert(MemoryRegistry::ValueFact(path, name) + std::to_wstring(value.type) + L" " + data);
  }
  for (const auto& [name, child] : node.keys) {
    const std::wstring below = path.empty() ? name : path + L"\\" + name;
    facts.insert(below + L"\\");
    if (!child->linkTarget.empty()) facts.insert(below + L"\\\\" + child->linkTarget);
    DumpNode(*child, below, facts);
  }
}

}  // namespace

MemoryRegistry::MemoryRegistry() : top_(std::make_shared<Node>()) {
  for (const auto root : {RootKey::CurrentUser, RootKey::LocalMachine, RootKey::Users}) {
    top_->keys[RootName(root)] = std::make_shared<Node>();
  }
  Make(kMachineClasses);
}

MemoryRegistry::~MemoryRegistry() = default;

std::optional<MemoryRegistry::Found> MemoryRegistry::FindIn(std::wstring_view path,
                                                            bool followLastLink) const {
  Found found{top_, {}};
  for (std::wstring_view rest = path; !rest.empty();) {
    const auto [name, below] = SplitFirst(rest);
    const auto child = found.node->keys.find(name);
    if (child == found.node->keys.end()) return std::nullopt;
    found.node = child->second;
    if (!found.path.empty()) found.path += L'\\';
    found.path += name;
    rest = below;
    if (!found.node->linkTarget.empty() && (followLastLink || !rest.empty())) {
      const auto target = FindIn(found.node->linkTarget, true);
      if (!target) return std::nullopt;
      found = *target;
    }
  }
  return found;
}

std::vector<MemoryRegistry::Found> MemoryRegistry::Find(std::wstring_view path,
                                                        bool followLastLink) const {
  std::vector<Found> all;
  if (!IsClassesRoot(path)) {
    if (auto found = FindIn(path, followLastLink)) all.push_back(std::move(*found));
    return all;
  }
  for (const auto hive : {kUserClasses, kMachineClasses}) {
    if (auto found = FindIn(InHive(hive, path), followLastLink)) all.push_back(std::move(*found));
  }
  const auto below = path.substr(std::min(kClassesRoot.size() + 1, path.size()));
  if (all.size() > 1 && !IsMerged(below)) all.pop_back();
  return all;
}

std::shared_ptr<MemoryRegistry::Node> MemoryRegistry::Make(std::wstring_view path) {
  if (IsClassesRoot(path)) return Make(InHive(kMachineClasses, path));
  auto node = top_;
  for (std::wstring_view rest = path; !rest.empty();) {
    const auto [name, below] = SplitFirst(rest);
    auto& child = node->keys[std::wstring(name)];
    if (!child) child = std::make_shared<Node>();
    node = child;
    rest = below;
  }
  return node;
}

MemoryRegistry& MemoryRegistry::Key(std::wstring_view path) {
  Make(path);
  return *this;
}

MemoryRegistry& MemoryRegistry::Text(std::wstring_view path, std::wstring_view name,
                                     std::wstring_view text) {
  Make(path)->values[std::wstring(name)] = TextValue(text);
  return *this;
}

MemoryRegistry& MemoryRegistry::Integer(std::wstring_view path, std::wstring_view name,
                                        std::uint32_t number) {
  Bytes data;
  for (int shift = 0; shift < 32; shift += 8) {
    data.push_back(static_cast<std::byte>((number >> shift) & 0xFF));
  }
  return Value(path, name, kRegDword, std::move(data));
}

MemoryRegistry& MemoryRegistry::Value(std::wstring_view path, std::wstring_view name,
                                      std::uint32_t type, Bytes data) {
  Make(path)->values[std::wstring(name)] = {type, std::move(data)};
  return *this;
}

MemoryRegistry& MemoryRegistry::Link(std::wstring_view path, std::wstring_view target) {
  Make(path)->linkTarget = target;
  return *this;
}

MemoryRegistry& MemoryRegistry::Child(std::wstring_view parent, std::wstring name) {
  Make(parent)->keys.emplace(std::move(name), std::make_shared<Node>());
  return *this;
}

void MemoryRegistry::Restrict(std::wstring_view path, Rights rights) {
  Make(path)->rights = rights;
}

void MemoryRegistry::Erase(const Found& key) {
  MarkDeleted(*key.node);
  const auto parent = FindIn(Parent(key.path), true);
  parent.value().node->keys.erase(key.path.substr(key.path.rfind(L'\\') + 1));
}

void MemoryRegistry::Drop(std::wstring_view path) {
  for (const Found& found : Find(path, false)) Erase(found);
}

bool MemoryRegistry::Has(std::wstring_view path) const { return !Find(path, true).empty(); }

std::optional<std::wstring> MemoryRegistry::TextOf(std::wstring_view path,
                                                   std::wstring_view name) const {
  const auto found = Find(path, true);
  if (found.empty()) return std::nullopt;
  const auto value = found[0].node->values.find(name);
  if (value == found[0].node->values.end()) return std::nullopt;
  const std::wstring text = FromUtf16Le(value->second.data);
  return text.substr(0, text.find(L'\0'));
}

std::set<std::wstring> MemoryRegistry::Dump() const {
  std::set<std::wstring> facts;
  DumpNode(*top_, {}, facts);
  return facts;
}

// No key has an empty name, so no path has two backslashes; a value's name may hold anything.
std::wstring MemoryRegistry::ValueFact(std::wstring_view path, std::wstring_view name) {
  return std::wstring(path) + L"\\\\" + std::to_wstring(name.size()) + L":" + std::wstring(name) +
         L" ";
}

std::unique_ptr<RegistryKey> MemoryRegistry::Root(RootKey root) {
  const std::wstring name = RootName(root);
  return std::make_unique<MemoryKey>(*this, name, Find(name, true), RegistryAccess::Full);
}

}  // namespace tarvelin::testing
