// The registry as a tree in memory, with the semantics of the Windows one: names keep their case
// and are compared without it, HKEY_CLASSES_ROOT shows the user's and the machine's classes
// together, links are followed by opening and not by deleting, and calls that take terminated texts
// see nothing behind a NUL.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "common/registry.h"

namespace tarvelin::testing {

inline Bytes MakeBytes(std::string_view characters) {
  const auto bytes = std::as_bytes(std::span(characters));
  return {bytes.begin(), bytes.end()};
}

// What the access control of a key allows, from everything down to nothing. Whoever may not write
// may not create subkeys either.
enum class Rights {
  All,
  AllButOwnership,  // reading, writing and deleting, which is less than full access
  Read,
  Delete,
  None,
};

class MemoryRegistry : public RegistryBackend {
 public:
  struct Node;
  // A key without its link and where it really is: a root name and a path, never through
  // HKEY_CLASSES_ROOT.
  struct Found {
    std::shared_ptr<Node> node;
    std::wstring path;
  };
  MemoryRegistry();
  ~MemoryRegistry() override;

  // Building. A path is a root name and a key path: L"HKEY_LOCAL_MACHINE\\Software\\X". Missing
  // keys are created; every function returns the registry, so that calls can be chained.
  MemoryRegistry& Key(std::wstring_view path);
  MemoryRegistry& Text(std::wstring_view path, std::wstring_view name, std::wstring_view text);
  MemoryRegistry& Integer(std::wstring_view path, std::wstring_view name, std::uint32_t number);
  MemoryRegistry& Value(std::wstring_view path, std::wstring_view name, std::uint32_t type,
                        Bytes data);
  MemoryRegistry& Link(std::wstring_view path, std::wstring_view target);
  // A child whose name may hold NULs.
  MemoryRegistry& Child(std::wstring_view parent, std::wstring name);
  void Restrict(std::wstring_view path, Rights rights);
  void Deny(std::wstring_view path) { Restrict(path, Rights::None); }
  void DenyWriting(std::wstring_view path) { Restrict(path, Rights::Read); }
  void Drop(std::wstring_view path);

  // Asking.
  [[nodiscard]] bool Has(std::wstring_view path) const;
  [[nodiscard]] std::optional<std::wstring> TextOf(std::wstring_view path,
                                                   std::wstring_view name) const;
  // The whole tree, a text for each key, its path and a backslash, and for each value; equal dumps
  // mean equal trees.
  [[nodiscard]] std::set<std::wstring> Dump() const;
  // How the text of a value begins, before its type and its data.
  [[nodiscard]] static std::wstring ValueFact(std::wstring_view path, std::wstring_view name);

  // Runs before each Open or Create with the full path asked for, so that a test can change the
  // tree in the middle of a scan.
  std::function<void(const std::wstring& path)> beforeOpen;
  int opens = 0;             // of Open and Create together
  int queries = 0;           // of values
  bool refusesText = false;  // whatever the access control of a key says

  std::unique_ptr<RegistryKey> Root(RootKey root) override;

 private:
  friend class MemoryKey;
  [[nodiscard]] std::optional<Found> FindIn(std::wstring_view path, bool followLastLink) const;
  // All keys that one path shows, the one that counts first.
  [[nodiscard]] std::vector<Found> Find(std::wstring_view path, bool followLastLink) const;
  std::shared_ptr<Node> Make(std::wstring_view path);
  void Erase(const Found& key);

  std::shared_ptr<Node> top_;  // its children are the four roots
};

}  // namespace tarvelin::testing
