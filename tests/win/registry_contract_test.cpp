// The contract of the registry against the Windows one. The predefined roots are redirected to
// scratch keys, so that nothing of the user's is touched.
#include <windows.h>
// After windows.h, on which they depend.
#include <sddl.h>
#include <winternl.h>

#include <list>

#include "common/handles_win.h"
#include "common/registry_win.h"
#include "tests/support/registry_contract.h"

namespace tarvelin::testing {
namespace {

constexpr wchar_t kScratch[] = L"Software\\Tarvelin contract";

HMODULE Ntdll() { return GetModuleHandleW(L"ntdll.dll"); }

UNICODE_STRING Unicode(std::wstring& text) {
  const auto size = static_cast<USHORT>(text.size() * sizeof(wchar_t));
  return {size, size, text.data()};
}

class WindowsWorld {
 public:
  WindowsWorld() {
    (void)backend_.RemoveTree(RootKey::CurrentUser, nullptr, kScratch);
    Redirect(HKEY_CLASSES_ROOT, L"\\Machine\\Software\\Classes");
    Redirect(HKEY_LOCAL_MACHINE, L"\\Machine");
    Redirect(HKEY_CURRENT_USER, L"\\User");
  }
  ~WindowsWorld() {
    for (const auto& key : guarded_) SetAcl(key.Get(), L"D:(A;;KA;;;WD)");
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT}) {
      RegOverridePredefKey(root, nullptr);
    }
    EXPECT_TRUE(backend_.RemoveTree(RootKey::CurrentUser, nullptr, kScratch));
  }

  RegistryBackend& Backend() { return backend_; }

  void Key(const std::wstring& path) { Make(path); }

  // By the kernel's call: RegSetValueExW may add the terminator that a text lacks.
  void Value(const std::wstring& path, std::wstring name, ULONG type, Bytes data) {
    using SetValue = NTSTATUS(NTAPI*)(HANDLE, UNICODE_STRING*, ULONG, ULONG, const void*, ULONG);
    auto text = Unicode(name);
    EXPECT_EQ(0,
              FindExport<SetValue>(Ntdll(), "NtSetValueKey")(
                  Make(path).Get(), &text, 0, type, data.data(), static_cast<ULONG>(data.size())));
  }

  void Child(const std::wstring& parent, std::wstring name) {
    using CreateKey = NTSTATUS(NTAPI*)(HANDLE*, ACCESS_MASK, OBJECT_ATTRIBUTES*, ULONG,
                                       UNICODE_STRING*, ULONG, ULONG*);
    const auto key = Make(parent);
    auto text = Unicode(name);
    OBJECT_ATTRIBUTES attributes{};
    InitializeObjectAttributes(&attributes, &text, OBJ_CASE_INSENSITIVE, key.Get(), nullptr);
    HANDLE child = nullptr;
    EXPECT_EQ(0, FindExport<CreateKey>(Ntdll(), "NtCreateKey")(&child, KEY_ALL_ACCESS, &attributes,
                                                               0, nullptr, 0, nullptr));
    RegCloseKey(static_cast<HKEY>(child));
  }

  // A link to a key, or to none when nothing is at `target`.
  void Link(const std::wstring& path, const std::wstring& target) {
    // The kernel's path of the target, which a link holds without a terminator.
    using QueryKey = NTSTATUS(NTAPI*)(HANDLE, int, void*, ULONG, ULONG*);
    constexpr int nameInformation = 3;
    struct {
      ULONG size = 0;
      wchar_t text[1024]{};
    } name;
    ULONG needed = 0;
    const auto end = target.rfind(L'\\');
    EXPECT_EQ(0,
              FindExport<QueryKey>(Ntdll(), "NtQueryKey")(
                  Make(target.substr(0, end)).Get(), nameInformation, &name, sizeof name, &needed));
    const std::wstring kernelPath =
        std::wstring(name.text, name.size / sizeof(wchar_t)) + target.substr(end);

    const auto link = Make(path, REG_OPTION_CREATE_LINK | REG_OPTION_VOLATILE);
    EXPECT_EQ(0, RegSetValueExW(link.Get(), L"SymbolicLinkValue", 0, REG_LINK,
                                reinterpret_cast<const BYTE*>(kernelPath.data()),
                                static_cast<DWORD>(kernelPath.size() * sizeof(wchar_t))));
  }

  void Deny(const std::wstring& path) { Guard(path, L"D:(D;;KA;;;WD)"); }
  void DenyWriting(const std::wstring& path) { Guard(path, L"D:P(A;;KR;;;WD)"); }

 private:
  void Redirect(HKEY root, const wchar_t* place) {
    UniqueRegistryKey key;
    EXPECT_EQ(0, RegCreateKeyExW(HKEY_CURRENT_USER, (kScratch + std::wstring(place)).c_str(), 0,
                                 nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(), nullptr));
    EXPECT_EQ(0, RegOverridePredefKey(root, key.Get()));
  }

  // Below HKEY_LOCAL_MACHINE, whose name the path begins with.
  static UniqueRegistryKey Make(const std::wstring& path, DWORD options = 0) {
    UniqueRegistryKey key;
    EXPECT_EQ(0, RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.substr(path.find(L'\\') + 1).c_str(), 0,
                                 nullptr, options, KEY_ALL_ACCESS, nullptr, key.Put(), nullptr));
    return key;
  }

  static void SetAcl(HKEY key, const wchar_t* acl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(acl, SDDL_REVISION_1,
                                                                     &descriptor, nullptr));
    EXPECT_EQ(0, RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor));
    LocalFree(descriptor);
  }

  // The handle has the access that the key then refuses, to undo it at the end.
  void Guard(const std::wstring& path, const wchar_t* acl) {
    guarded_.push_back(Make(path));
    SetAcl(guarded_.back().Get(), acl);
  }

  WindowsRegistry backend_;
  std::list<UniqueRegistryKey> guarded_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Windows, RegistryContract, WindowsWorld);

}  // namespace
}  // namespace tarvelin::testing
