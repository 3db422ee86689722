// The contract of the registry against the Windows one. The predefined roots are redirected to
// scratch keys, so that nothing of the user's is touched.
#include <list>

#include "common/registry_win.h"
#include "tests/support/registry_contract.h"
#include "tests/win/driver_registry.h"

namespace tarvelin::testing {
namespace {

constexpr wchar_t kScratch[] = L"Software\\Tarvelin contract";

class WindowsWorld {
 public:
  WindowsWorld() {
    (void)backend_.RemoveTree(RootKey::CurrentUser, nullptr, kScratch);
    Redirect(HKEY_CLASSES_ROOT, L"\\Machine\\Software\\Classes");
    Redirect(HKEY_LOCAL_MACHINE, L"\\Machine");
    Redirect(HKEY_CURRENT_USER, L"\\User");
  }
  ~WindowsWorld() {
    guarded_.clear();
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT}) {
      RegOverridePredefKey(root, nullptr);
    }
    EXPECT_TRUE(backend_.RemoveTree(RootKey::CurrentUser, nullptr, kScratch));
  }

  RegistryBackend& Backend() { return backend_; }

  void Key(const std::wstring& path) { MakeKey(path); }
  void Value(const std::wstring& path, const std::wstring& name, ULONG type, const Bytes& data) {
    WriteValue(path, name, type, data);
  }
  void Child(const std::wstring& parent, const std::wstring& name) { MakeOddKey(parent, name); }
  void Link(const std::wstring& path, const std::wstring& target) { MakeLink(path, target); }
  void Deny(const std::wstring& path) { guarded_.emplace_back(path, kNoAccess); }
  void DenyWriting(const std::wstring& path) { guarded_.emplace_back(path, kReadOnly); }

 private:
  static void Redirect(HKEY root, const wchar_t* place) {
    UniqueRegistryKey key;
    EXPECT_EQ(0, RegCreateKeyExW(HKEY_CURRENT_USER, (kScratch + std::wstring(place)).c_str(), 0,
                                 nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(), nullptr));
    EXPECT_EQ(0, RegOverridePredefKey(root, key.Get()));
  }

  WindowsRegistry backend_;
  std::list<AccessRule> guarded_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Windows, RegistryContract, WindowsWorld);

}  // namespace
}  // namespace tarvelin::testing
