// What the program relies on of a registry, whichever is behind the interface. A suite is
// instantiated with a world: a type that has the backend and arranges keys in it, as MemoryRegistry
// does, by paths that begin with a root name.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/registry.h"

namespace tarvelin::testing {

inline Bytes MakeBytes(std::string_view characters) {
  const auto bytes = std::as_bytes(std::span(characters));
  return {bytes.begin(), bytes.end()};
}

template <class World>
class RegistryContract : public ::testing::Test {
 protected:
  using Names = std::vector<std::wstring>;

  std::unique_ptr<RegistryKey> Open(const std::wstring& path,
                                    RegistryAccess access = RegistryAccess::Full) {
    return world.Backend().Open(RootKey::LocalMachine, nullptr, path, access);
  }
  bool Remove(const std::wstring& path) {
    return world.Backend().RemoveTree(RootKey::LocalMachine, nullptr, path);
  }
  Names Subkeys(const std::wstring& path) {
    const auto key = Open(path, RegistryAccess::Read);
    return key ? key->SubkeyNames() : Names{L"(no key)"};
  }
  static Names Sorted(Names names) {
    std::sort(names.begin(), names.end());
    return names;
  }

  World world;
};

TYPED_TEST_SUITE_P(RegistryContract);

TYPED_TEST_P(RegistryContract, EveryRootAndAnyBaseLeadsToTheSameKey) {
  this->world.Key(L"HKEY_LOCAL_MACHINE\\Software\\Classes\\.x\\Sub");
  this->world.Key(L"HKEY_CURRENT_USER\\Software\\Mine");
  auto& backend = this->world.Backend();
  const auto classes = backend.Open(RootKey::ClassesRoot, nullptr, L".X", RegistryAccess::Read);
  ASSERT_TRUE(classes);
  EXPECT_EQ(classes->SubkeyNames(), std::vector<std::wstring>{L"Sub"});
  EXPECT_TRUE(backend.Open(RootKey::ClassesRoot, classes.get(), L"sub", RegistryAccess::Full));
  EXPECT_TRUE(backend.Open(RootKey::ClassesRoot, classes.get(), L"", RegistryAccess::Full));
  EXPECT_FALSE(backend.Open(RootKey::ClassesRoot, classes.get(), L".x", RegistryAccess::Read));
  EXPECT_TRUE(backend.Open(RootKey::LocalMachine, nullptr, L"", RegistryAccess::Read));

  TRegistry registry(backend);
  EXPECT_TRUE(registry.OpenKey(L"\\software\\Mine\\", false));
  registry.SetRootKey(RootKey::LocalMachine);
  EXPECT_TRUE(registry.OpenKey(L"\\SOFTWARE\\Classes\\", false));
  EXPECT_TRUE(registry.OpenKey(L".x\\", false));
  EXPECT_TRUE(registry.DeleteKey(L"Sub\\"));
  EXPECT_TRUE(registry.GetKeyNames().empty());
  registry.SetRootKey(RootKey::ClassesRoot);
  EXPECT_TRUE(registry.OpenKeyReadOnly(L"\\.x\\"));
}

TYPED_TEST_P(RegistryContract, CreatesWithParentsAndReadsBackWhatWasWritten) {
  auto& backend = this->world.Backend();
  const auto key = backend.Create(RootKey::LocalMachine, nullptr, L"Software\\A\\b\\C");
  ASSERT_TRUE(key);
  EXPECT_TRUE(key->SetText(L"", L"unnamed"));
  EXPECT_TRUE(key->SetText(L"Name", L"first"));
  EXPECT_TRUE(key->SetText(L"NAME", L"sm\u00F8rrebr\u00F8d"));
  const auto value = key->Query(L"name");
  ASSERT_TRUE(value);
  EXPECT_EQ(value->type, kRegSz);
  EXPECT_EQ(FromUtf16Le(value->data), std::wstring(L"sm\u00F8rrebr\u00F8d\0", 11));
  EXPECT_EQ(this->Sorted(key->ValueNames()), (std::vector<std::wstring>{L"", L"Name"}));
  EXPECT_TRUE(key->RemoveValue(L""));
  EXPECT_FALSE(key->RemoveValue(L""));
  EXPECT_FALSE(key->Query(L""));
  EXPECT_EQ(this->Subkeys(L"SOFTWARE\\A\\B"), std::vector<std::wstring>{L"C"});
  // What is there is opened, not emptied.
  ASSERT_TRUE(backend.Create(RootKey::LocalMachine, nullptr, L"Software\\A"));
  EXPECT_TRUE(key->Query(L"Name"));
}

TYPED_TEST_P(RegistryContract, GivesTheBytesOfAValueAsTheyAre) {
  const std::wstring path = L"HKEY_LOCAL_MACHINE\\Software\\Raw";
  const std::vector<std::pair<std::wstring, RegistryValue>> values{
      {L"unterminated", {kRegSz, MakeBytes({"a\0b\0", 4})}},
      {L"odd", {kRegExpandSz, MakeBytes({"a\0b", 3})}},
      {L"empty", {kRegSz, {}}},
      {L"short number", {kRegDword, MakeBytes("\x07")}},
      {L"long", {3, Bytes(100'000, std::byte{0x5A})}},
      {L"inner NUL", {kRegSz, MakeBytes({"a\0\0\0b\0\0\0", 8})}},
      {std::wstring(16383, L'n'), {kRegSz, MakeBytes({"v\0\0\0", 4})}},
  };
  for (const auto& [name, value] : values) {
    this->world.Value(path, name, value.type, value.data);
  }
  const auto key = this->Open(L"Software\\Raw", RegistryAccess::Read);
  ASSERT_TRUE(key);
  EXPECT_EQ(key->ValueNames().size(), values.size());
  for (const auto& [name, value] : values) {
    const auto read = key->Query(name);
    ASSERT_TRUE(read) << ToUtf8(name.substr(0, 20));
    EXPECT_EQ(read->type, value.type);
    EXPECT_EQ(read->data, value.data) << ToUtf8(name.substr(0, 20));
  }
  TRegistry registry(this->world.Backend());
  registry.SetRootKey(RootKey::LocalMachine);
  ASSERT_TRUE(registry.OpenKeyReadOnly(L"\\Software\\Raw"));
  EXPECT_EQ(registry.ReadString(L"unterminated"), L"ab");
  EXPECT_EQ(registry.ReadString(L"odd"), L"a");
  EXPECT_EQ(registry.ReadString(L"empty"), L"");
  EXPECT_EQ(registry.ReadString(L"inner NUL"), L"a");
  EXPECT_EQ(registry.ReadInteger(L"short number"), 7);
}

TYPED_TEST_P(RegistryContract, DeniedAccessLooksLikeAbsenceAndProtects) {
  const std::wstring root = L"HKEY_LOCAL_MACHINE\\Software\\";
  this->world.Key(root + L"Guarded\\Free");
  this->world.Key(root + L"Guarded\\Hidden");
  this->world.Key(root + L"Guarded\\Fixed\\Below");
  this->world.Deny(root + L"Guarded\\Hidden");
  this->world.DenyWriting(root + L"Guarded\\Fixed");
  auto& backend = this->world.Backend();

  EXPECT_FALSE(this->Open(L"Software\\Guarded\\Hidden", RegistryAccess::Read));
  EXPECT_FALSE(backend.Create(RootKey::LocalMachine, nullptr, L"Software\\Guarded\\Hidden"));
  EXPECT_FALSE(this->Open(L"Software\\Guarded\\Fixed"));
  EXPECT_FALSE(backend.Create(RootKey::LocalMachine, nullptr, L"Software\\Guarded\\Fixed"));
  EXPECT_FALSE(this->Remove(L"Software\\Guarded\\Fixed"));
  const auto fixed = this->Open(L"Software\\Guarded\\Fixed", RegistryAccess::Read);
  ASSERT_TRUE(fixed);
  EXPECT_EQ(fixed->SubkeyNames(), std::vector<std::wstring>{L"Below"});
  EXPECT_FALSE(fixed->SetText(L"v", L"t"));
  EXPECT_FALSE(fixed->RemoveValue(L"v"));

  // A tree with parts that may not be deleted stays with these.
  EXPECT_FALSE(this->Remove(L"Software\\Guarded"));
  EXPECT_EQ(this->Sorted(this->Subkeys(L"Software\\Guarded")),
            (std::vector<std::wstring>{L"Fixed", L"Hidden"}));
}

TYPED_TEST_P(RegistryContract, FollowsLinksToReadButNeverToDelete) {
  const std::wstring root = L"HKEY_LOCAL_MACHINE\\Software\\";
  this->world.Key(root + L"Target\\Precious\\Deep");
  this->world.Key(root + L"Tree\\Plain");
  this->world.Link(root + L"Tree\\Inner", root + L"Target");
  this->world.Link(root + L"Alone", root + L"Target");
  this->world.Link(root + L"Dangling", root + L"Nowhere");

  EXPECT_EQ(this->Subkeys(L"Software\\Tree\\Inner"), std::vector<std::wstring>{L"Precious"});
  EXPECT_TRUE(this->Remove(L"Software\\Alone"));
  EXPECT_TRUE(this->Remove(L"Software\\Dangling"));
  EXPECT_TRUE(this->Remove(L"Software\\Tree"));
  EXPECT_TRUE(this->Open(L"Software\\Target\\Precious\\Deep"));
  EXPECT_EQ(this->Sorted(this->Subkeys(L"Software")),
            (std::vector<std::wstring>{L"Classes", L"Target"}));
}

TYPED_TEST_P(RegistryContract, NamesWithNulsAreListedWholeAndDeletedWithTheirParent) {
  const std::wstring parent = L"HKEY_LOCAL_MACHINE\\Software\\Odd";
  const std::vector<std::wstring> names{std::wstring(L"\0hidden", 7), std::wstring(1, L'\0'),
                                        std::wstring(L"a\0b", 3), std::wstring(255, L'k'), L"a"};
  for (const auto& name : names) this->world.Child(parent, name);
  this->world.Key(parent + L"\\a\\b\\c");
  EXPECT_EQ(this->Sorted(this->Subkeys(L"Software\\Odd")), this->Sorted(names));
  EXPECT_TRUE(this->Open(L"Software\\Odd\\" + std::wstring(255, L'k')));

  TRegistry registry(this->world.Backend());
  registry.SetRootKey(RootKey::LocalMachine);
  for (const auto& name : {names[0], names[1], names[2]}) {
    EXPECT_FALSE(registry.DeleteKey(L"\\Software\\Odd\\" + name));
    EXPECT_FALSE(registry.OpenKey(L"\\Software\\Odd\\" + name, true));
  }
  EXPECT_EQ(this->Subkeys(L"Software\\Odd").size(), names.size());
  EXPECT_TRUE(registry.DeleteKey(L"\\Software\\Odd"));
  EXPECT_FALSE(registry.KeyExists(L"\\Software\\Odd"));
}

TYPED_TEST_P(RegistryContract, DeletesWholeTreesOnceAndNothingForAnEmptyPath) {
  this->world.Key(L"HKEY_LOCAL_MACHINE\\Software\\T\\1\\2\\3");
  this->world.Value(L"HKEY_LOCAL_MACHINE\\Software\\T\\1\\2", L"v", kRegSz, {});
  this->world.Key(L"HKEY_LOCAL_MACHINE\\Software\\T\\4");
  this->world.Key(L"HKEY_LOCAL_MACHINE\\Software\\T2");
  const auto key = this->Open(L"Software\\T");
  ASSERT_TRUE(key);
  auto& backend = this->world.Backend();
  EXPECT_FALSE(backend.RemoveTree(RootKey::LocalMachine, key.get(), L""));
  EXPECT_FALSE(this->Remove(L""));
  EXPECT_FALSE(this->Remove(L"Software\\T\\5"));
  EXPECT_TRUE(this->Open(L"Software\\T\\1\\2\\3"));

  EXPECT_TRUE(backend.RemoveTree(RootKey::LocalMachine, key.get(), L"1"));
  EXPECT_EQ(key->SubkeyNames(), std::vector<std::wstring>{L"4"});
  EXPECT_TRUE(this->Remove(L"Software\\T"));
  EXPECT_FALSE(this->Remove(L"Software\\T"));
  EXPECT_TRUE(this->Open(L"Software\\T2"));
  // The key that is still open has gone.
  EXPECT_TRUE(key->SubkeyNames().empty());
  EXPECT_TRUE(key->ValueNames().empty());
  EXPECT_FALSE(key->Query(L""));
  EXPECT_FALSE(key->SetText(L"", L""));
}

REGISTER_TYPED_TEST_SUITE_P(RegistryContract, EveryRootAndAnyBaseLeadsToTheSameKey,
                            CreatesWithParentsAndReadsBackWhatWasWritten,
                            GivesTheBytesOfAValueAsTheyAre, DeniedAccessLooksLikeAbsenceAndProtects,
                            FollowsLinksToReadButNeverToDelete,
                            NamesWithNulsAreListedWholeAndDeletedWithTheirParent,
                            DeletesWholeTreesOnceAndNothingForAnEmptyPath);

}  // namespace tarvelin::testing
