#include "common/registry_win.h"

#include <windows.h>
// After windows.h, on which it depends.
#include <winternl.h>

#include <array>
#include <climits>
#include <utility>

#include "common/handles_win.h"

namespace tarvelin {
namespace {

// The kernel's own calls that winternl.h leaves out. The Win32 ones take names that end at a NUL: a
// key whose name holds one can neither be opened nor deleted through them, and one whose name
// begins with a NUL looks like its parent.
extern "C" NTSTATUS NTAPI NtOpenKey(HANDLE* key, ACCESS_MASK access, OBJECT_ATTRIBUTES* name);
extern "C" NTSTATUS NTAPI NtDeleteKey(HANDLE key);
extern "C" NTSTATUS NTAPI NtQueryKey(HANDLE key, int what, void* result, ULONG size, ULONG* needed);

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
template <typename Enumerate>
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

// The rights that are asked for to delete a key, in order. The second are for a key whose children
// may not be listed; it goes if it has none.
constexpr REGSAM kRemovalRights[] = {DELETE | KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE, DELETE};

// Opens a key by a path that may hold NULs, a link at its end itself; null when that is refused.
UniqueRegistryKey OpenCounted(HKEY parent, std::wstring path) {
  UniqueRegistryKey key;
  const std::size_t size = path.size() * sizeof(wchar_t);
  if (size > USHRT_MAX) return key;
  UNICODE_STRING text{};
  text.Buffer = path.data();
  text.Length = text.MaximumLength = static_cast<USHORT>(size);
  OBJECT_ATTRIBUTES attributes{};
  InitializeObjectAttributes(&attributes, &text, OBJ_CASE_INSENSITIVE | OBJ_OPENLINK, parent,
                             nullptr);
  for (const REGSAM rights : kRemovalRights) {
    HANDLE opened = nullptr;
    if (NtOpenKey(&opened, rights, &attributes) < 0) continue;
    key.Reset(static_cast<HKEY>(opened));
    break;
  }
  return key;
}

// The same by the Win32 call, which knows the roots and the view of the registry that this program
// has, and no NULs.
UniqueRegistryKey OpenLinkItself(HKEY parent, const std::wstring& path, REGSAM rights) {
  UniqueRegistryKey key;
  RegOpenKeyExW(parent, path.c_str(), REG_OPTION_OPEN_LINK, rights, key.Put());
  return key;
}

std::wstring RealNameOf(HKEY key) {
  constexpr int nameInformation = 3;  // a ULONG with the size of the text in bytes, and the text
  std::vector<ULONG> buffer(256);
  for (;;) {
    ULONG needed = 0;
    const auto size = static_cast<ULONG>(buffer.size() * sizeof(ULONG));
    if (NtQueryKey(key, nameInformation, buffer.data(), size, &needed) >= 0) break;
    if (needed <= size) return {};
    buffer.resize(needed / sizeof(ULONG) + 1);
  }
  return {reinterpret_cast<const wchar_t*>(buffer.data() + 1), buffer[0] / sizeof(wchar_t)};
}

// Deletes an open key with everything below it; false when something of it stays, because the
// kernel deletes no key that has children. The handle names the key itself even if that is a link,
// and the children of a link are not those of its target, so nothing outside of the tree is ever
// reached. A child that cannot be opened may be gone already.
bool RemoveOpenKey(HKEY key) {
  for (std::wstring& name : SubkeyNamesOf(key)) {
    if (const UniqueRegistryKey child = OpenCounted(key, std::move(name))) {
      (void)RemoveOpenKey(child.Get());
    }
  }
  return NtDeleteKey(key) >= 0;
}

class WindowsKey : public RegistryKey {
 public:
  explicit WindowsKey(HKEY root) : key_(root) {}
  explicit WindowsKey(UniqueRegistryKey key) : owned_(std::move(key)), key_(owned_.Get()) {}

  std::unique_ptr<RegistryKey> Open(const std::wstring& path,
                                    RegistryAccess access) const override {
    UniqueRegistryKey key;
    const REGSAM rights = access == RegistryAccess::Full ? KEY_ALL_ACCESS : KEY_READ;
    RegOpenKeyExW(key_, path.c_str(), 0, rights, key.Put());
    return Wrap(std::move(key));
  }

  std::unique_ptr<RegistryKey> Create(const std::wstring& path) const override {
    UniqueRegistryKey key;
    RegCreateKeyExW(key_, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                    nullptr, key.Put(), nullptr);
    return Wrap(std::move(key));
  }

  std::unique_ptr<RegistryKey> OpenToRemove(const std::wstring& path) const override {
    const auto nul = path.find(L'\0');
    if (nul == std::wstring::npos) {
      for (const REGSAM rights : kRemovalRights) {
        if (auto key = Wrap(OpenLinkItself(key_, path, rights))) return key;
      }
      return nullptr;
    }
    // As far as it can by the Win32 call, the rest by the kernel's.
    const auto end = path.rfind(L'\\', nul);
    if (end == std::wstring::npos) return nullptr;
    const UniqueRegistryKey parent = OpenLinkItself(key_, path.substr(0, end), KEY_QUERY_VALUE);
    return parent ? Wrap(OpenCounted(parent.Get(), path.substr(end + 1))) : nullptr;
  }

  bool RemoveTree() override { return RemoveOpenKey(key_); }

  std::wstring RealName(const std::wstring& path) const override {
    if (path.empty()) return RealNameOf(key_);
    const UniqueRegistryKey key = OpenLinkItself(key_, path, KEY_QUERY_VALUE);
    return key ? RealNameOf(key.Get()) : std::wstring();
  }

  std::vector<std::wstring> SubkeyNames() const override { return SubkeyNamesOf(key_); }

  std::vector<std::wstring> ValueNames() const override {
    return CollectNames([this](DWORD index, wchar_t* buffer, DWORD* size) {
      return RegEnumValueW(key_, index, buffer, size, nullptr, nullptr, nullptr, nullptr);
    });
  }

  std::optional<RegistryValue> Query(const std::wstring& name) const override {
    // Nearly every value fits, so that one call does.
    std::array<std::byte, 1024> usual;
    DWORD type = 0;
    auto size = static_cast<DWORD>(usual.size());
    LSTATUS status = RegQueryValueExW(key_, name.c_str(), nullptr, &type,
                                      reinterpret_cast<BYTE*>(usual.data()), &size);
    if (status == ERROR_SUCCESS) {
      return RegistryValue{type, Bytes(usual.begin(), usual.begin() + size)};
    }
    Bytes data;
    // Again while the value grows between two calls.
    while (status == ERROR_MORE_DATA) {
      data.resize(size);
      status = RegQueryValueExW(key_, name.c_str(), nullptr, &type,
                                reinterpret_cast<BYTE*>(data.data()), &size);
    }
    if (status != ERROR_SUCCESS) return std::nullopt;
    data.resize(size);
    return RegistryValue{type, std::move(data)};
  }

  bool SetText(const std::wstring& name, std::wstring_view text) override {
    const std::wstring terminated(text);
    return RegSetValueExW(
               key_, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(terminated.c_str()),
               static_cast<DWORD>((terminated.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
  }

  bool RemoveValue(const std::wstring& name) override {
    return RegDeleteValueW(key_, name.c_str()) == ERROR_SUCCESS;
  }

 private:
  static std::unique_ptr<RegistryKey> Wrap(UniqueRegistryKey key) {
    return key ? std::make_unique<WindowsKey>(std::move(key)) : nullptr;
  }

  UniqueRegistryKey owned_;  // none for a root
  HKEY key_;
};

}  // namespace

std::unique_ptr<RegistryKey> WindowsRegistry::Root(RootKey root) {
  return std::make_unique<WindowsKey>(RootHandle(root));
}

}  // namespace tarvelin
