#include "common/registry_win.h"

#include <windows.h>
// After windows.h, on which it depends.
#include <winternl.h>

#include <array>
#include <utility>

#include "common/handles_win.h"

namespace tarvelin {
namespace {

// The longest names, with a terminator: 255 characters for a key, 16,383 for a value.
constexpr std::size_t kUsualName = 256;
constexpr std::size_t kLongestName = 16384;

HKEY RootHandle(RootKey root) {
  switch (root) {
    case RootKey::ClassesRoot:
      return HKEY_CLASSES_ROOT;
    case RootKey::CurrentUser:
      return HKEY_CURRENT_USER;
    case RootKey::LocalMachine:
      return HKEY_LOCAL_MACHINE;
    case RootKey::Users:
      break;
  }
  return HKEY_USERS;
}

// The names that `enumerate(index, buffer, size)` gives until it gives an error, which is
// ERROR_NO_MORE_ITEMS, or another one when the key has been deleted meanwhile.
template <class Enumerate>
std::vector<std::wstring> CollectNames(const Enumerate& enumerate) {
  std::vector<std::wstring> names;
  std::wstring buffer(kUsualName, L'\0');
  for (DWORD index = 0;;) {
    DWORD size = static_cast<DWORD>(buffer.size());
    const LSTATUS status = enumerate(index, buffer.data(), &size);
    if (status == ERROR_MORE_DATA && buffer.size() < kLongestName) {
      buffer.resize(kLongestName);
      continue;
    }
    if (status != ERROR_SUCCESS) return names;
    names.emplace_back(buffer, 0, size);  // by its length: the name may hold NULs
    ++index;
  }
}

std::vector<std::wstring> SubkeyNamesOf(HKEY key) {
  return CollectNames([key](DWORD index, wchar_t* buffer, DWORD* size) {
    return RegEnumKeyExW(key, index, buffer, size, nullptr, nullptr, nullptr, nullptr);
  });
}

class WindowsKey : public RegistryKey {
 public:
  explicit WindowsKey(UniqueRegistryKey key) : key_(std::move(key)) {}

  [[nodiscard]] HKEY Handle() const { return key_.Get(); }

  std::vector<std::wstring> SubkeyNames() const override { return SubkeyNamesOf(key_.Get()); }

  std::vector<std::wstring> ValueNames() const override {
    return CollectNames([this](DWORD index, wchar_t* buffer, DWORD* size) {
      return RegEnumValueW(key_.Get(), index, buffer, size, nullptr, nullptr, nullptr, nullptr);
    });
  }

  std::optional<RegistryValue> Query(const std::wstring& name) const override {
    // Nearly every value fits, so that one call does.
    std::array<std::byte, 1024> usual;
    DWORD type = 0;
    auto size = static_cast<DWORD>(usual.size());
    LSTATUS status = RegQueryValueExW(key_.Get(), name.c_str(), nullptr, &type,
                                      reinterpret_cast<BYTE*>(usual.data()), &size);
    if (status == ERROR_SUCCESS) {
      return RegistryValue{type, Bytes(usual.begin(), usual.begin() + size)};
    }
    Bytes data;
    // Again while the value grows between two calls.
    while (status == ERROR_MORE_DATA) {
      data.resize(size);
      status = RegQueryValueExW(key_.Get(), name.c_str(), nullptr, &type,
                                reinterpret_cast<BYTE*>(data.data()), &size);
    }
    if (status != ERROR_SUCCESS) return std::nullopt;
    data.resize(size);
    return RegistryValue{type, std::move(data)};
  }

  bool SetText(const std::wstring& name, std::wstring_view text) override {
    const std::wstring terminated(text);
    return RegSetValueExW(key_.Get(), name.c_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(terminated.c_str()),
                          static_cast<DWORD>((terminated.size() + 1) * sizeof(wchar_t))) ==
           ERROR_SUCCESS;
  }

  bool RemoveValue(const std::wstring& name) override {
    return RegDeleteValueW(key_.Get(), name.c_str()) == ERROR_SUCCESS;
  }

 private:
  UniqueRegistryKey key_;
};

HKEY BaseHandle(RootKey root, const RegistryKey* base) {
  return base ? static_cast<const WindowsKey*>(base)->Handle() : RootHandle(root);
}

std::unique_ptr<RegistryKey> Wrap(LSTATUS status, UniqueRegistryKey key) {
  if (status != ERROR_SUCCESS) return nullptr;
  return std::make_unique<WindowsKey>(std::move(key));
}

// What cannot be opened to be written is not deleted either, even where Windows would let its owner
// do so.
constexpr REGSAM kRemovalAccess = KEY_ALL_ACCESS;

// The kernel's own calls, because the Win32 ones take names that end at a NUL: a key whose name
// holds one can neither be opened nor deleted through them, and one whose name begins with a NUL
// looks like its parent.
struct KernelCalls {
  using OpenKey = NTSTATUS(NTAPI*)(HANDLE*, ACCESS_MASK, OBJECT_ATTRIBUTES*);
  using DeleteKey = NTSTATUS(NTAPI*)(HANDLE);

  OpenKey openKey = FindExport<OpenKey>(GetModuleHandleW(L"ntdll.dll"), "NtOpenKey");
  DeleteKey deleteKey = FindExport<DeleteKey>(GetModuleHandleW(L"ntdll.dll"), "NtDeleteKey");
};

// Deletes an open key with everything below it; false when something of it stays, because the
// kernel deletes no key that has children. The handle names the key itself even if that is a link,
// and the children of a link are not those of its target, so nothing outside of the tree is ever
// reached. A child that cannot be opened may be gone already, or stand in the other hive that
// HKEY_CLASSES_ROOT shows.
bool RemoveOpenKey(const KernelCalls& kernel, HKEY key) {
  for (std::wstring& name : SubkeyNamesOf(key)) {
    UNICODE_STRING text{};
    text.Buffer = name.data();
    text.Length = static_cast<USHORT>(name.size() * sizeof(wchar_t));
    text.MaximumLength = text.Length;
    OBJECT_ATTRIBUTES attributes{};
    InitializeObjectAttributes(&attributes, &text, OBJ_CASE_INSENSITIVE | OBJ_OPENLINK, key,
                               nullptr);
    HANDLE opened = nullptr;
    if (kernel.openKey(&opened, kRemovalAccess, &attributes) < 0) continue;
    const UniqueRegistryKey child(static_cast<HKEY>(opened));
    (void)RemoveOpenKey(kernel, child.Get());
  }
  return kernel.deleteKey(key) >= 0;
}

}  // namespace

std::unique_ptr<RegistryKey> WindowsRegistry::Open(RootKey root, const RegistryKey* base,
                                                   const std::wstring& path,
                                                   RegistryAccess access) {
  UniqueRegistryKey key;
  const REGSAM rights = access == RegistryAccess::Full ? KEY_ALL_ACCESS : KEY_READ;
  const LSTATUS status = RegOpenKeyExW(BaseHandle(root, base), path.c_str(), 0, rights, key.Put());
  return Wrap(status, std::move(key));
}

std::unique_ptr<RegistryKey> WindowsRegistry::Create(RootKey root, const RegistryKey* base,
                                                     const std::wstring& path) {
  UniqueRegistryKey key;
  const LSTATUS status =
      RegCreateKeyExW(BaseHandle(root, base), path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                      KEY_ALL_ACCESS, nullptr, key.Put(), nullptr);
  return Wrap(status, std::move(key));
}

bool WindowsRegistry::RemoveTree(RootKey root, const RegistryKey* base, const std::wstring& path) {
  // An empty path, or one that a NUL cuts short, would name the parent.
  if (path.empty() || path.find(L'\0') != std::wstring::npos) return false;
  const KernelCalls kernel;
  if (!kernel.openKey || !kernel.deleteKey) return false;
  const HKEY parent = BaseHandle(root, base);

  // HKEY_CLASSES_ROOT shows the user's key in front of the machine's of the same name: when the
  // first is gone, the second comes to light and has to go as well.
  const int hives = root == RootKey::ClassesRoot ? 2 : 1;
  for (int removed = 0; removed < hives; ++removed) {
    UniqueRegistryKey key;
    const LSTATUS status =
        RegOpenKeyExW(parent, path.c_str(), REG_OPTION_OPEN_LINK, kRemovalAccess, key.Put());
    if (status != ERROR_SUCCESS) return removed > 0 && status == ERROR_FILE_NOT_FOUND;
    if (!RemoveOpenKey(kernel, key.Get())) return false;
  }
  return true;
}

}  // namespace tarvelin
