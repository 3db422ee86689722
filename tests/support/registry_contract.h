// What the program relies on of a registry, whichever is behind the interface. A suite is
// instantiated with a world: a type that has the backend and arranges keys in it, as MemoryRegistry
// does, by paths that begin with a root name.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/memory_registry.h"

namespace tarvelin::testing {

using Names = std::vector<std::wstring>;

inline Names Sorted(Names names) {
  std::sort(names.begin(), names.end());
  return names;
}

template <typename World>
class RegistryContract : public ::testing::Test {
 protected:
  std::unique_ptr<RegistryKey> Root(RootKey root) { return world.Backend().Root(root); }
  std::unique_ptr<RegistryKey> Open(const std::wstring& path,
                                    RegistryAccess access = RegistryAccess::Full) {
    return Root(RootKey::LocalMachine)->Open(path, access);
  }
  bool Remove(const std::wstring& path) {
    TRegistry registry(world.Backend(), RootKey::LocalMachine);
    return registry.DeleteKey(L"\\" + path);
  }
  Names Subkeys(const std::wstring& path) {
    const auto key = Open(path, RegistryAccess::Read);
    return key ? Sorted(key->SubkeyNames()) : Names{L"(no key)"};
  }

  World world;
};

TYPED_TEST_SUITE_P(RegistryContract);

TYPED_TEST_P(RegistryContract, OpensAndCreatesBelowRootsAndKeys) {
  this->world.Key(L"HKEY_LOCAL_MACHINE\\Software\\Classes\\.x\\Sub");
  const auto classes = this->Root(RootKey::ClassesRoot)->Open(L".X", RegistryAccess::Read);
  ASSERT_TRUE(classes);
  EXPECT_EQ(classes->SubkeyNames(), Names{L"Sub"});
  EXPECT_TRUE(classes->Open(L"", RegistryAccess::Full));
  EXPECT_FALSE(classes->Open(L".x", RegistryAccess::Read));

  // Created with its parents; once it is there, it is opened and keeps what it has.
  const auto user = this->Root(RootKey::CurrentUser);
  const auto key = user->Create(L"Software\\A\\b");
  ASSERT_TRUE(key);
  EXPECT_TRUE(key->SetText(L"", L"unnamed"));
  EXPECT_TRUE(key->SetText(L"Name", L"first"));
  EXPECT_TRUE(key->SetText(L"NAME", L"sm\u00F8rrebr\u00F8d"));
  EXPECT_EQ(Sorted(key->ValueNames()), (Names{L"", L"Name"}));
  EXPECT_TRUE(key->RemoveValue(L""));
  EXPECT_FALSE(key->RemoveValue(L""));
  const auto again = user->Create(L"software\\a\\B");
  ASSERT_TRUE(again && again->Query(L"name"));
  EXPECT_EQ(again->Query(L"name")->type, kRegSz);
  EXPECT_EQ(FromUtf16Le(again->Query(L"name")->data), std::wstring(L"sm\u00F8rrebr\u00F8d\0", 11));

  TRegistry registry(this->world.Backend());
  EXPECT_TRUE(registry.OpenKey(L"\\Software\\A\\", false));
  EXPECT_TRUE(registry.DeleteKey(L"b\\"));
  EXPECT_TRUE(registry.GetKeyNames().empty());
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
    ASSERT_TRUE(read);
    EXPECT_EQ(read->type, value.type);
    EXPECT_EQ(read->data, value.data) << ToUtf8(name.substr(0, 20));
  }
  TRegistry registry(this->world.Backend(), RootKey::LocalMachine);
  ASSERT_TRUE(registry.OpenKeyReadOnly(L"\\Software\\Raw"));
  for (const auto& [name, text] : std::vector<std::pair<std::wstring, std::wstring>>{
           {L"unterminated", L"ab"}, {L"odd", L"a"}, {L"empty", L""}, {L"inner NUL", L"a"}}) {
    EXPECT_EQ(registry.ReadString(name), text) << ToUtf8(name);
  }
  EXPECT_EQ(registry.ReadInteger(L"short number"), 7);
}

TYPED_TEST_P(RegistryContract, DeniedAccessLooksLikeAbsenceAndProtects) {
  const std::wstring root = L"HKEY_LOCAL_MACHINE\\Software\\";
  for (const auto* key : {L"Fixed", L"Guarded\\Free", L"Guarded\\Hidden", L"Guarded\\Owned"}) {
    this->world.Key(root + key + L"\\Below");
  }
  this->world.Restrict(root + L"Fixed", Rights::Read);
  this->world.Restrict(root + L"Guarded\\Hidden", Rights::None);
  const auto machine = this->Root(RootKey::LocalMachine);

  EXPECT_FALSE(this->Open(L"Software\\Guarded\\Hidden", RegistryAccess::Read));
  EXPECT_FALSE(machine->Create(L"Software\\Guarded\\Hidden"));
  EXPECT_FALSE(this->Open(L"Software\\Fixed"));
  EXPECT_FALSE(machine->Create(L"Software\\Fixed"));
  const auto fixed = this->Open(L"Software\\Fixed", RegistryAccess::Read);
  ASSERT_TRUE(fixed);
  EXPECT_EQ(fixed->SubkeyNames(), Names{L"Below"});
  EXPECT_FALSE(fixed->SetText(L"v", L"t"));

  // A tree stays with the parts that may not be deleted. That nobody may open a key for everything,
  // or list the children that it lacks, protects nothing.
  this->world.Restrict(root + L"Guarded\\Owned\\Below", Rights::AllButOwnership);
  this->world.Restrict(root + L"Guarded\\Owned", Rights::AllButOwnership);
  this->world.Restrict(root + L"Guarded\\Sealed", Rights::Delete);
  this->world.Restrict(root + L"Sealed", Rights::Delete);
  EXPECT_FALSE(this->Open(L"Software\\Guarded\\Owned"));
  EXPECT_FALSE(this->Remove(L"Software\\Guarded"));
  EXPECT_EQ(this->Subkeys(L"Software\\Guarded"), Names{L"Hidden"});
  EXPECT_TRUE(this->Remove(L"Software\\Sealed"));
}

TYPED_TEST_P(RegistryContract, FollowsLinksToReadButNeverToDelete) {
  const std::wstring root = L"HKEY_LOCAL_MACHINE\\Software\\";
  this->world.Key(root + L"Target\\Precious\\Deep");
  this->world.Key(root + L"Tree\\Plain");
  this->world.Link(root + L"Tree\\Inner", root + L"Target");
  this->world.Link(root + L"Alone", root + L"Target");
  this->world.Link(root + L"Dangling", root + L"Nowhere");

  EXPECT_EQ(this->Subkeys(L"Software\\Tree\\Inner"), Names{L"Precious"});
  for (const std::wstring link : {L"Alone", L"Tree\\Inner"}) {
    EXPECT_TRUE(this->Open(L"Software\\" + link + L"\\Precious"));
    EXPECT_FALSE(this->Remove(L"Software\\" + link + L"\\Precious")) << ToUtf8(link);
    EXPECT_FALSE(this->Remove(L"Software\\" + link + L"\\Precious\\Deep")) << ToUtf8(link);
  }
  for (const std::wstring name : {L"Alone", L"Dangling", L"Tree"}) {
    EXPECT_TRUE(this->Remove(L"Software\\" + name)) << ToUtf8(name);
  }
  EXPECT_TRUE(this->Open(L"Software\\Target\\Precious\\Deep"));
  EXPECT_EQ(this->Subkeys(L"Software"), (Names{L"Classes", L"Target"}));
}

TYPED_TEST_P(RegistryContract, NamesWithNulsAreListedAndDeletedWhole) {
  const std::wstring parent = L"HKEY_LOCAL_MACHINE\\Software\\Odd";
  Names names{std::wstring(L"\0hidden", 7), std::wstring(1, L'\0'), std::wstring(L"a\0b", 3),
              std::wstring(255, L'k'), L"a"};
  for (const auto& name : names) this->world.Child(parent, name);
  this->world.Key(parent + L"\\a\\b\\c");
  this->world.Child(parent + L"\\a", names[0]);
  EXPECT_EQ(this->Subkeys(L"Software\\Odd"), Sorted(names));
  EXPECT_TRUE(this->Open(L"Software\\Odd\\" + names[3]));

  TRegistry registry(this->world.Backend(), RootKey::LocalMachine);
  for (int odd = 0; odd < 3; ++odd) {
    const std::wstring path = L"\\Software\\Odd\\" + names[0];
    EXPECT_FALSE(registry.OpenKey(path, true));
    EXPECT_FALSE(registry.KeyExists(path));
    EXPECT_TRUE(registry.DeleteKey(path));
    EXPECT_FALSE(registry.DeleteKey(path));
    names.erase(names.begin());
    EXPECT_EQ(this->Subkeys(L"Software\\Odd"), Sorted(names));
  }
  EXPECT_EQ(this->Subkeys(L"Software\\Odd\\a").size(), 2U);
  EXPECT_TRUE(registry.DeleteKey(L"\\Software\\Odd"));
  EXPECT_FALSE(registry.KeyExists(L"\\Software\\Odd"));
}

TYPED_TEST_P(RegistryContract, DeletesWholeTreesOfTheUserAndTheMachine) {
  for (const auto* root : {L"HKEY_LOCAL_MACHINE\\", L"HKEY_CURRENT_USER\\"}) {
    this->world.Key(root + std::wstring(L"Software\\Classes\\.x\\Sub"));
  }
  this->world.Key(L"HKEY_LOCAL_MACHINE\\Software\\T\\1\\2\\3");
  this->world.Key(L"HKEY_LOCAL_MACHINE\\Software\\T2");
  const auto key = this->Open(L"Software\\T");
  ASSERT_TRUE(key);
  EXPECT_FALSE(this->Remove(L""));
  EXPECT_FALSE(this->Remove(L"Software\\T\\5"));
  EXPECT_TRUE(this->Open(L"Software\\T\\1\\2\\3"));

  EXPECT_TRUE(this->Remove(L"Software\\T"));
  EXPECT_FALSE(this->Remove(L"Software\\T"));
  EXPECT_TRUE(this->Open(L"Software\\T2"));
  // The key that is still open has gone.
  EXPECT_TRUE(key->SubkeyNames().empty());
  EXPECT_FALSE(key->Query(L""));
  EXPECT_FALSE(key->SetText(L"", L""));

  TRegistry classes(this->world.Backend(), RootKey::ClassesRoot);
  EXPECT_TRUE(classes.DeleteKey(L"\\.X"));
  EXPECT_FALSE(this->Open(L"Software\\Classes\\.x"));
  EXPECT_FALSE(
      this->Root(RootKey::CurrentUser)->Open(L"Software\\Classes\\.x", RegistryAccess::Read));
}

REGISTER_TYPED_TEST_SUITE_P(RegistryContract, OpensAndCreatesBelowRootsAndKeys,
                            GivesTheBytesOfAValueAsTheyAre, DeniedAccessLooksLikeAbsenceAndProtects,
                            FollowsLinksToReadButNeverToDelete,
                            NamesWithNulsAreListedAndDeletedWhole,
                            DeletesWholeTreesOfTheUserAndTheMachine);

}  // namespace tarvelin::testing
