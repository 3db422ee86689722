// The contract of the registry against the Windows one. The predefined roots are redirected to
// scratch keys, so that nothing of the user's is touched.
#include <list>

#include "common/registry_win.h"
#include "tests/support/registry_contract.h"
#include "tests/win/driver_registry.h"

namespace tarvelin::testing {
namespace {

const std::wstring kScratch = L"HKCU\\Software\\Tarvelin contract";

class WindowsWorld {
 public:
  WindowsWorld() {
    DeleteKey(kScratch);
    Redirect(HKEY_CLASSES_ROOT, L"\\Machine\\Software\\Classes");
    Redirect(HKEY_LOCAL_MACHINE, L"\\Machine");
    Redirect(HKEY_CURRENT_USER, L"\\User");
  }
  ~WindowsWorld() {
    guarded_.clear();
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT}) {
      RegOverridePredefKey(root, nullptr);
    }
    DeleteKey(kScratch);
  }

  RegistryBackend& Backend() { return backend_; }

  void Key(const std::wstring& path) { MakeKey(path); }
  void Value(const std::wstring& path, const std::wstring& name, ULONG type, const Bytes& data) {
    WriteValue(path, name, type, data);
  }
  void Child(const std::wstring& parent, const std::wstring& name) { MakeOddKey(parent, name); }
  void Link(const std::wstring& path, const std::wstring& target) { MakeLink(path, target); }
  void Restrict(const std::wstring& path, Rights rights) {
    constexpr const wchar_t* rules[] = {L"D:P(A;;KA;;;WD)", L"D:P(A;;KRKWSD;;;WD)", kReadOnly,
                                        L"D:P(A;;SD;;;WD)", kNoAccess};
    guarded_.emplace_back(path, rules[static_cast<std::size_t>(rights)]);
  }

 private:
  static void Redirect(HKEY root, const wchar_t* place) {
    UniqueRegistryKey key;
    EXPECT_EQ(0, RegCreateKeyExW(HKEY_CURRENT_USER, (kScratch.substr(5) + place).c_str(), 0,
                                 nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(), nullptr));
    EXPECT_EQ(0, RegOverridePredefKey(root, key.Get()));
  }

  WindowsRegistry backend_;
  std::list<AccessRule> guarded_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Windows, RegistryContract, WindowsWorld);

}  // namespace
}  // namespace tarvelin::testing
