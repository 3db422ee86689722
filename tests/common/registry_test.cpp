#include "common/registry.h"

#include <gtest/gtest.h>

#include "tests/support/registry_contract.h"

namespace tarvelin::testing {
namespace {

struct MemoryWorld : MemoryRegistry {
  RegistryBackend& Backend() { return *this; }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, RegistryContract, MemoryWorld);

TEST(RegistryTest, AFailedOpenLeavesTheOpenKeyAndAnotherRootClosesIt) {
  MemoryRegistry tree;
  tree.Key(L"HKEY_CURRENT_USER\\A\\B\\C").Key(L"HKEY_LOCAL_MACHINE\\A");
  TRegistry registry(tree);
  EXPECT_TRUE(registry.GetKeyNames().empty());
  EXPECT_TRUE(registry.OpenKey(L"A\\B", false));
  for (const auto* missing : {L"\\Nowhere", L"A", L"\\\\A", L"\\A\\\\B", L"C\\\\", L"\\\\"}) {
    EXPECT_FALSE(registry.OpenKey(missing, false)) << ToUtf8(missing);
    EXPECT_FALSE(registry.KeyExists(missing)) << ToUtf8(missing);
    EXPECT_EQ(registry.GetKeyNames(), Names{L"C"});
  }
  tree.DenyWriting(L"HKEY_CURRENT_USER\\A\\B\\C");
  EXPECT_FALSE(registry.OpenKey(L"C", false));
  EXPECT_FALSE(registry.DeleteKey(L"C")) << "the contract leaves it open, since Wine allows it";
  EXPECT_TRUE(registry.KeyExists(L"C"));
  EXPECT_TRUE(registry.OpenKeyReadOnly(L"C"));
  EXPECT_TRUE(registry.OpenKey(L"\\", true));
  EXPECT_EQ(registry.GetKeyNames(), Names{L"A"});
  EXPECT_TRUE(registry.OpenKey(L"\\A", false));
  registry.SetRootKey(RootKey::CurrentUser);
  EXPECT_EQ(registry.GetKeyNames(), Names{L"B"});
  registry.SetRootKey(RootKey::LocalMachine);
  EXPECT_TRUE(registry.GetKeyNames().empty());
  EXPECT_FALSE(registry.DeleteValue(L""));
}

TEST(RegistryTest, ReadsByTypeWithOneQueryAndNamesTheValueInErrors) {
  MemoryRegistry tree;
  const std::wstring key = L"HKEY_CURRENT_USER\\K";
  tree.Text(key, L"", L"text").Integer(key, L"number", 0xFFFFFFFE);
  tree.Value(key, L"expand", kRegExpandSz, ToUtf16Le(L"%x%")).Value(key, L"list", 7, {});
  TRegistry registry(tree);
  ASSERT_TRUE(registry.OpenKeyReadOnly(L"\\K"));
  EXPECT_EQ(registry.GetDataType(L""), DataType::rdString);
  EXPECT_EQ(registry.GetDataType(L"EXPAND"), DataType::rdExpandString);
  EXPECT_EQ(registry.GetDataType(L"number"), DataType::rdInteger);
  EXPECT_EQ(registry.GetDataType(L"list"), DataType::rdBinary);
  EXPECT_EQ(registry.GetDataType(std::wstring_view(L"\0", 1)), DataType::rdUnknown);
  tree.queries = 0;
  EXPECT_EQ(registry.ReadString(L"expand"), L"%x%");
  EXPECT_EQ(tree.queries, 1);
  EXPECT_EQ(registry.ReadInteger(L"number"), -2);

  const auto errorOf = [](const auto& action) {
    try {
      action();
    } catch (const TRegistryError& error) {
      return std::wstring(error.Message().key) + L" " + error.Detail();
    }
    return std::wstring(L"none");
  };
  EXPECT_EQ(errorOf([&] { (void)registry.ReadString(L"number"); }), L"M_Error_Value_Type number");
  EXPECT_EQ(errorOf([&] { (void)registry.ReadInteger(L""); }), L"M_Error_Value_Type (Default)");
  EXPECT_EQ(errorOf([&] { (void)registry.ReadInteger(L"x"); }), L"M_Error_Value_Missing x");
  EXPECT_EQ(errorOf([&] { registry.WriteString(L"w", L""); }), L"M_Error_Value_Write w");
}

TEST(RegistryTest, NoTextMakesARemovalTakeAParentKey) {
  const std::vector<std::wstring> parents{
      L"HKEY_CLASSES_ROOT\\clsid",
      L"HKEY_CURRENT_USER\\software\\classes\\Clsid",
      L"HKEY_CURRENT_USER\\Software\\Classes",
      L"HKEY_LOCAL_MACHINE\\Software",
      L"HKEY_CLASSES_ROOT\\*\\shellex",
      L"HKEY_CLASSES_ROOT\\Directory",
      L"HKEY_CLASSES_ROOT\\CLSID\\{645ff040-5081-101b-9f08-00aa002f954e}\\shell",
      L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Code Store Database\\Distribution Units",
      L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Internet Explorer\\Extensions",
      L"HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Classes\\CLSID",
      L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\Wow6432Node",
      L"HKEY_CURRENT_USER\\SOFTWARE\\Microsoft\\Internet Explorer\\MenuExt",
      L"HKEY_USERS\\S-1-5-21-1",
      L"HKEY_USERS\\S-1-5-21-1\\Software\\Classes\\CLSID",
      L"HKEY_USERS\\S-1-5-21-1_Classes\\CLSID",
      L"HKEY_USERS\\S-1-5-21-1_classes",
      L"HKEY_USERS\\.DEFAULT\\Software\\Microsoft"};
  MemoryRegistry tree;
  for (const auto& parent : parents) tree.Key(parent + L"\\x");
  const auto before = tree.Dump();
  for (const auto& parent : parents) {
    // What is left of a location when the name at its end is empty, or begins with a NUL.
    for (const auto& end :
         {std::wstring(), std::wstring(L"\\"), std::wstring(L"\\\\"), std::wstring(L"\\\0", 2)}) {
      DeleteLocationKey(tree, parent + end);
      ASSERT_EQ(tree.Dump(), before) << ToUtf8(parent) << ToUtf8(end);
    }
  }
  for (const auto* root : {L"HKEY_CLASSES_ROOT\\", L"HKEY_USERS\\\\", L"", L"\\", L"Software"}) {
    DeleteLocationKey(tree, root);
  }
  TRegistry registry(tree);
  ASSERT_TRUE(registry.OpenKey(L"\\SOFTWARE\\Classes", false));
  EXPECT_FALSE(registry.DeleteKey(L"CLSID"));
  EXPECT_FALSE(registry.DeleteKey(L""));
  EXPECT_EQ(tree.Dump(), before);
}

TEST(RegistryTest, LocationsNameExactlyTheKeyOrValueToDelete) {
  MemoryRegistry tree;
  tree.Key(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{X}\\Sub");
  tree.Key(L"HKEY_CURRENT_USER\\Foo\\Foo").Key(L"HKEY_CURRENT_USER\\SOFTWARE\\Bar");
  tree.Key(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\ClassesTwo");
  DeleteLocationKey(tree, L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{X}\\");
  DeleteLocationKey(tree, L"HKEY_LOCAL_MACHINE\\SOFTWARE\\ClassesTwo");
  DeleteLocationKey(tree, L"Foo");
  // What a 32-bit program is shown is elsewhere, but at the place that it names.
  const std::wstring classes = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\";
  tree.Link(classes + L"Interface", classes + L"Wow6432Node\\Interface");
  tree.Key(classes + L"Wow6432Node\\Interface\\{X}");
  DeleteLocationKey(tree, classes + L"Interface\\{X}");
  DeleteLocationKey(tree, L"hkey_local_machine\\SOFTWARE\\Bar");  // no root: the current user's
  MemoryRegistry left;
  left.Key(L"HKEY_CURRENT_USER\\SOFTWARE").Key(classes + L"CLSID");
  left.Link(classes + L"Interface", classes + L"Wow6432Node\\Interface");
  left.Key(classes + L"Wow6432Node\\Interface");
  EXPECT_EQ(tree.Dump(), left.Dump());

  const std::wstring key = L"HKEY_CURRENT_USER\\K";
  tree.Text(key, L"", L"d").Text(key, L"a|b", L"v").Text(key, L"keep", L"v");
  DeleteLocationValue(tree, key + L"\\", L"A|B");
  DeleteLocationValue(tree, key, L"");
  DeleteLocationValue(tree, key + L"\\Missing", L"keep");
  DeleteLocationValue(tree, key, std::wstring_view(L"keep\0", 5));
  TRegistry registry(tree);
  ASSERT_TRUE(registry.OpenKeyReadOnly(L"K"));
  EXPECT_EQ(registry.GetValueNames(), Names{L"keep"});

  const RegistryLocation value = ParseValueLocation(L"HKEY_USERS\\a|b|c");
  EXPECT_EQ(value.root, RootKey::Users);
  EXPECT_EQ(value.path, L"\\a");
  EXPECT_EQ(value.value, L"c");
  EXPECT_EQ(ParseValueLocation(L"HKEY_USERS").path, L"HKEY_USERS");
  for (const auto* text :
       {L"HKEY_CLASSES_ROOT\\k|", L"HKEY_LOCAL_MACHINE\\k|v", L"HKEY_USERS\\k"}) {
    EXPECT_EQ(ParseValueLocation(text).Text(), text);
    EXPECT_EQ(ParseKeyLocation(text).Text(), text);
  }
}

}  // namespace
}  // namespace tarvelin::testing
