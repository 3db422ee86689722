#include "tests/support/memory_registry.h"

#include <algorithm>
#include <utility>

namespace tarvelin::testing {

struct MemoryRegistry::Node {
  std::map<std::wstring, std::shared_ptr<Node>, TextLess> keys;
  std::map<std::wstring, RegistryValue, TextLess> values;
  std::wstring linkTarget;
  bool denied = false;
  bool writingDenied = false;
  bool deleted = false;
};

namespace {

constexpr std::wstring_view kUserClasses = L"HKEY_CURRENT_USER\\Software\\Classes";
constexpr std::wstring_view kMachineClasses = L"HKEY_LOCAL_MACHINE\\Software\\Classes";
constexpr std::wstring_view kClassesRoot = L"HKEY_CLASSES_ROOT";

std::wstring_view RootName(RootKey root) {
  switch (root) {
    case RootKey::ClassesRoot:
      return kClassesRoot;
    case RootKey::CurrentUser:
      return L"HKEY_CURRENT_USER";
    case RootKey::LocalMachine:
      return L"HKEY_LOCAL_MACHINE";
    case RootKey::Users:
      break;
  }
  return L"HKEY_USERS";
}

std::pair<std::wstring_view, std::wstring_view> SplitFirst(std::wstring_view path) {
  const auto end = path.find(L'\\');
  if (end == std::wstring_view::npos) return {path, {}};
  return {path.substr(0, end), path.substr(end + 1)};
}

// The children or values of all nodes together, each name once, as the first node has it.
template <class Map>
std::vector<std::wstring> NamesOf(const std::vector<std::shared_ptr<MemoryRegistry::Node>>& nodes,
                                  Map MemoryRegistry::Node::*map) {
  std::map<std::wstring, bool, TextLess> all;
  for (const auto& node : nodes) {
    if (node->deleted) continue;
    for (const auto& [name, item] : (*node).*map) all.emplace(name, true);
  }
  std::vector<std::wstring> names;
  for (const auto& [name, unused] : all) names.push_back(name);
  return names;
}

// One node, or below HKEY_CLASSES_ROOT the user's in front of the machine's.
class MemoryKey : public RegistryKey {
 public:
  MemoryKey(std::vector<std::shared_ptr<MemoryRegistry::Node>> nodes, std::wstring path,
            RegistryAccess access, int& queries)
      : nodes_(std::move(nodes)), path_(std::move(path)), access_(access), queries_(queries) {}

  const std::wstring& Path() const { return path_; }

  std::vector<std::wstring> SubkeyNames() const override {
    return NamesOf(nodes_, &MemoryRegistry::Node::keys);
  }
  std::vector<std::wstring> ValueNames() const override {
    return NamesOf(nodes_, &MemoryRegistry::Node::values);
  }
  std::optional<RegistryValue> Query(const std::wstring& name) const override {
    ++queries_;
    for (const auto& node : nodes_) {
      const auto found = node->values.find(name);
      if (!node->deleted && found != node->values.end()) return found->second;
    }
    return std::nullopt;
  }
  bool SetText(const std::wstring& name, std::wstring_view text) override {
    if (access_ != RegistryAccess::Full || nodes_[0]->deleted) return false;
    Bytes data = ToUtf16Le(text);
    data.resize(data.size() + 2);
    nodes_[0]->values[name] = {kRegSz, std::move(data)};
    return true;
  }
  bool RemoveValue(const std::wstring& name) override {
    return access_ == RegistryAccess::Full && !nodes_[0]->deleted &&
           nodes_[0]->values.erase(name) > 0;
  }

 private:
  std::vector<std::shared_ptr<MemoryRegistry::Node>> nodes_;
  std::wstring path_;
  RegistryAccess access_;
  int& queries_;
};

void DumpNode(const MemoryRegistry::Node& node, int depth, std::wstring& out) {
  const std::wstring indent(static_cast<std::size_t>(depth) * 2, L' ');
  for (const auto& [name, value] : node.values) {
    out += indent + L"\"" + name + L"\" " + std::to_wstring(value.type) + L" ";
    if (value.type == kRegSz || value.type == kRegExpandSz) {
      out += FromUtf16Le(value.data);
    } else {
      for (const std::byte byte : value.data)
        out += std::to_wstring(std::to_integer<int>(byte)) + L",";
    }
    out += L"\n";
  }
  for (const auto& [name, child] : node.keys) {
    out += indent + L"[" + name + L"]" + child->linkTarget + L"\n";
    DumpNode(*child, depth + 1, out);
  }
}

void MarkDeleted(MemoryRegistry::Node& node) {
  node.deleted = true;
  if (!node.linkTarget.empty()) return;
  for (const auto& [name, child] : node.keys) MarkDeleted(*child);
}

// Deletes what is below a key; false when something denies it.
bool RemoveChildren(MemoryRegistry::Node& node) {
  bool all = true;
  for (auto child = node.keys.begin(); child != node.keys.end();) {
    const bool gone = !child->second->denied && !child->second->writingDenied &&
                      (!child->second->linkTarget.empty() || RemoveChildren(*child->second));
    if (gone) MarkDeleted(*child->second);
    all = all && gone;
    child = gone ? node.keys.erase(child) : std::next(child);
  }
  return all;
}

}  // namespace

MemoryRegistry::MemoryRegistry() : top_(std::make_shared<Node>()) {
  for (const auto root : {RootKey::CurrentUser, RootKey::LocalMachine, RootKey::Users}) {
    top_->keys[std::wstring(RootName(root))] = std::make_shared<Node>();
  }
  Make(kMachineClasses);
}

MemoryRegistry::~MemoryRegistry() = default;

std::shared_ptr<MemoryRegistry::Node> MemoryRegistry::Find(std::wstring_view fullPath,
                                                           bool followLastLink) const {
  if (SameText(SplitFirst(fullPath).first, kClassesRoot)) {
    const auto below = fullPath.substr(kClassesRoot.size());
    if (auto node = Find(std::wstring(kUserClasses) + std::wstring(below), followLastLink)) {
      return node;
    }
    return Find(std::wstring(kMachineClasses) + std::wstring(below), followLastLink);
  }
  auto node = top_;
  for (std::wstring_view rest = fullPath; !rest.empty();) {
    const auto [name, below] = SplitFirst(rest);
    const auto child = node->keys.find(name);
    if (child == node->keys.end()) return nullptr;
    node = child->second;
    rest = below;
    if (!node->linkTarget.empty() && (followLastLink || !rest.empty())) {
      node = Find(node->linkTarget, true);
      if (!node) return nullptr;
    }
  }
  return node;
}

std::shared_ptr<MemoryRegistry::Node> MemoryRegistry::Make(std::wstring_view fullPath) {
  if (SameText(SplitFirst(fullPath).first, kClassesRoot)) {
    return Make(std::wstring(kMachineClasses) + std::wstring(fullPath.substr(kClassesRoot.size())));
  }
  auto node = top_;
  for (std::wstring_view rest = fullPath; !rest.empty();) {
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
  Bytes data = ToUtf16Le(text);
  data.resize(data.size() + 2);
  return Value(path, name, kRegSz, std::move(data));
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

void MemoryRegistry::Deny(std::wstring_view path) { Make(path)->denied = true; }

void MemoryRegistry::DenyWriting(std::wstring_view path) { Make(path)->writingDenied = true; }

void MemoryRegistry::Drop(std::wstring_view path) {
  const auto end = path.rfind(L'\\');
  const auto parent = Find(path.substr(0, end), true);
  if (!parent) return;
  const auto child = parent->keys.find(path.substr(end + 1));
  if (child == parent->keys.end()) return;
  MarkDeleted(*child->second);
  parent->keys.erase(child);
}

bool MemoryRegistry::Has(std::wstring_view path) const { return Find(path, true) != nullptr; }

std::optional<std::wstring> MemoryRegistry::TextOf(std::wstring_view path,
                                                   std::wstring_view name) const {
  const auto node = Find(path, true);
  if (!node) return std::nullopt;
  const auto value = node->values.find(name);
  if (value == node->values.end()) return std::nullopt;
  const std::wstring text = FromUtf16Le(value->second.data);
  return text.substr(0, text.find(L'\0'));
}

std::wstring MemoryRegistry::Dump() const {
  std::wstring out;
  DumpNode(*top_, 0, out);
  return out;
}

std::wstring MemoryRegistry::Resolve(RootKey root, const RegistryKey* base,
                                     const std::wstring& path) const {
  std::wstring full(base ? static_cast<const MemoryKey*>(base)->Path() : RootName(root));
  if (!path.empty()) full += L"\\" + path;
  return full;
}

std::unique_ptr<RegistryKey> MemoryRegistry::Open(RootKey root, const RegistryKey* base,
                                                  const std::wstring& path, RegistryAccess access) {
  const auto full = Resolve(root, base, path);
  ++opens;
  if (beforeOpen) beforeOpen(full);
  auto node = Find(full, true);
  if (!node || node->denied || (node->writingDenied && access == RegistryAccess::Full)) {
    return nullptr;
  }
  return Wrap(full, std::move(node), access);
}

std::unique_ptr<RegistryKey> MemoryRegistry::Wrap(const std::wstring& full,
                                                  std::shared_ptr<Node> node,
                                                  RegistryAccess access) {
  std::vector<std::shared_ptr<Node>> nodes{std::move(node)};
  if (SameText(SplitFirst(full).first, kClassesRoot)) {
    auto machine = Find(std::wstring(kMachineClasses) + full.substr(kClassesRoot.size()), true);
    if (machine && machine != nodes[0] && !machine->denied) nodes.push_back(std::move(machine));
  }
  return std::make_unique<MemoryKey>(std::move(nodes), full, access, queries);
}

std::unique_ptr<RegistryKey> MemoryRegistry::Create(RootKey root, const RegistryKey* base,
                                                    const std::wstring& path) {
  const auto full = Resolve(root, base, path);
  ++opens;
  if (beforeOpen) beforeOpen(full);
  // A missing key is created below the nearest one that exists, which must allow it.
  for (std::wstring_view above = full;;) {
    if (const auto node = Find(above, true)) {
      if (node->denied || node->writingDenied) return nullptr;
      break;
    }
    const auto end = above.rfind(L'\\');
    if (end == std::wstring_view::npos) return nullptr;
    above = above.substr(0, end);
  }
  auto node = Find(full, true);
  if (!node) node = Make(full);
  return Wrap(full, std::move(node), RegistryAccess::Full);
}

bool MemoryRegistry::RemoveTree(RootKey root, const RegistryKey* base, const std::wstring& path) {
  if (path.empty()) return false;
  const auto full = Resolve(root, base, path);
  if (!SameText(SplitFirst(full).first, kClassesRoot)) return RemoveAt(full);
  // The user's key and then the machine's, which comes to light behind it.
  bool removed = false;
  for (const auto classes : {kUserClasses, kMachineClasses}) {
    const auto one = std::wstring(classes) + full.substr(kClassesRoot.size());
    if (!Find(one, false)) continue;
    if (!RemoveAt(one)) return false;
    removed = true;
  }
  return removed;
}

bool MemoryRegistry::RemoveAt(const std::wstring& full) {
  const auto node = Find(full, false);
  if (!node || node->denied || node->writingDenied) return false;
  if (node->linkTarget.empty() && !RemoveChildren(*node)) return false;
  MarkDeleted(*node);
  const auto end = full.rfind(L'\\');
  const auto parent = Find(std::wstring_view(full).substr(0, end), true);
  return parent && parent->keys.erase(full.substr(end + 1)) > 0;
}

}  // namespace tarvelin::testing
