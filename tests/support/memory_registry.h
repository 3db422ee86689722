// The registry as a tree in memory, with the semantics of the Windows one: names keep their case
// and are compared without it, HKEY_CLASSES_ROOT shows the user's classes over the machine's, links
// are followed by opening and not by deleting.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "common/registry.h"

namespace tarvelin::testing {

inline Bytes MakeBytes(std::string_view characters) {
  const auto bytes = std::as_bytes(std::span(characters));
  return {bytes.begin(), bytes.end()};
}

class MemoryRegistry : public RegistryBackend {
 public:
  struct Node;
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
  // A child whose name may hold any character, NUL and backslash included.
  MemoryRegistry& Child(std::wstring_view parent, std::wstring name);
  // Opening fails: altogether, or for full access only.
  void Deny(std::wstring_view path);
  void DenyWriting(std::wstring_view path);
  void Drop(std::wstring_view path);

  // Asking.
  [[nodiscard]] bool Has(std::wstring_view path) const;
  [[nodiscard]] std::optional<std::wstring> TextOf(std::wstring_view path,
                                                   std::wstring_view name) const;
  // The whole tree, a line for each key and value, indented by depth; equal dumps mean equal trees.
  [[nodiscard]] std::wstring Dump() const;

  // Runs before each Open or Create with the full path asked for, so that a test can change the
  // tree in the middle of a scan.
  std::function<void(const std::wstring& path)> beforeOpen;
  int opens = 0;    // of Open and Create together
  int queries = 0;  // of values

  std::unique_ptr<RegistryKey> Open(RootKey root, const RegistryKey* base, const std::wstring& path,
                                    RegistryAccess access) override;
  std::unique_ptr<RegistryKey> Create(RootKey root, const RegistryKey* base,
                                      const std::wstring& path) override;
  bool RemoveTree(RootKey root, const RegistryKey* base, const std::wstring& path) override;

 private:
  [[nodiscard]] std::shared_ptr<Node> Find(std::wstring_view fullPath, bool followLastLink) const;
  std::shared_ptr<Node> Make(std::wstring_view fullPath);
  std::unique_ptr<RegistryKey> Wrap(const std::wstring& full, std::shared_ptr<Node> node,
                                    RegistryAccess access);
  bool RemoveAt(const std::wstring& full);
  [[nodiscard]] std::wstring Resolve(RootKey root, const RegistryKey* base,
                                     const std::wstring& path) const;

  std::shared_ptr<Node> top_;  // its children are the four roots
};

}  // namespace tarvelin::testing
