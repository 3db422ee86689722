// Registry locations and access: the one place that knows how a registry key is opened, read,
// written and deleted, and what may never be deleted.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/errors.h"
#include "common/text.h"

namespace tarvelin {

enum class RootKey { ClassesRoot, CurrentUser, LocalMachine, Users };

// The type of a value as the scans distinguish it.
enum class DataType {
  rdUnknown = 0,
  rdString = 1,
  rdExpandString = 2,
  rdInteger = 3,
  rdBinary = 4
};

// The Windows type numbers of the values that are read as text or as an integer.
inline constexpr std::uint32_t kRegSz = 1;
inline constexpr std::uint32_t kRegExpandSz = 2;
inline constexpr std::uint32_t kRegDword = 4;

// The data of one value as the registry holds it: text is UTF-16 little endian, usually but not
// always terminated.
struct RegistryValue {
  std::uint32_t type = 0;
  Bytes data;
};

enum class RegistryAccess { Read, Full };

// A root or an open key; destroying it closes it. A path is relative to it; it has no leading,
// trailing or doubled backslash, and where nothing else is said no NUL. A returned name is whole:
// it may hold any character, NUL included.
class RegistryKey {
 public:
  virtual ~RegistryKey() = default;

  // The opened key, this one once more for an empty path; null when it is missing or access is
  // denied (RegOpenKeyExW). A registry link is followed.
  [[nodiscard]] virtual std::unique_ptr<RegistryKey> Open(const std::wstring& path,
                                                          RegistryAccess access) const = 0;

  // The opened key with full access, created with its missing parents if need be, or null when that
  // is refused (RegCreateKeyExW). The path is not empty.
  [[nodiscard]] virtual std::unique_ptr<RegistryKey> Create(const std::wstring& path) const = 0;

  // The key opened for RemoveTree and nothing else, null when it is missing or may not be deleted.
  // A link at the end of the path is opened itself. Names may hold NULs, but not those directly
  // below a root. The path is not empty.
  [[nodiscard]] virtual std::unique_ptr<RegistryKey> OpenToRemove(
      const std::wstring& path) const = 0;

  // Deletes the key and everything below it, subkeys first; links are deleted and never followed.
  // False when something of it stays, whatever else of it has gone by then.
  [[nodiscard]] virtual bool RemoveTree() = 0;

  // The system's own name of the key at `path`, or of this one for an empty path, which tells where
  // the key really is (NtQueryKey). A link at the end of the path is not followed. Empty when the
  // key cannot be asked; a root has no such name.
  [[nodiscard]] virtual std::wstring RealName(const std::wstring& path) const = 0;

  // All subkey or value names in the platform's order (RegEnumKeyExW, RegEnumValueW). The unnamed
  // value is listed as an empty name when it is set.
  [[nodiscard]] virtual std::vector<std::wstring> SubkeyNames() const = 0;
  [[nodiscard]] virtual std::vector<std::wstring> ValueNames() const = 0;

  // The value of that name, "" being the unnamed value; nullopt when it is missing or unreadable
  // (RegQueryValueExW).
  [[nodiscard]] virtual std::optional<RegistryValue> Query(const std::wstring& name) const = 0;

  // Creates or replaces a REG_SZ value (RegSetValueExW). False when the key was opened for reading
  // or access is denied.
  [[nodiscard]] virtual bool SetText(const std::wstring& name, std::wstring_view text) = 0;

  // Deletes the value of that name (RegDeleteValueW). False when it is missing or denied.
  [[nodiscard]] virtual bool RemoveValue(const std::wstring& name) = 0;
};

// The registry as a platform service, without policy: its roots, from which the rest is reached.
class RegistryBackend {
 public:
  virtual ~RegistryBackend() = default;
  [[nodiscard]] virtual std::unique_ptr<RegistryKey> Root(RootKey root) = 0;
};

// A value of the wrong type, a missing integer or a write that failed; Detail() names the value.
class TRegistryError : public TError {
 public:
  using TError::TError;
};

// Registry access with one root and at most one open key, in the manner in which every scan,
// removal and repair uses it. Paths: one leading backslash means "from the root", otherwise the
// path is relative to the open key, or to the root when none is open; a trailing backslash names
// the same key. A path with an empty inner component names nothing, and neither does a path or name
// with a NUL character, except to DeleteKey.
class TRegistry {
 public:
  // Starts with no key open. `backend` must outlive the object.
  explicit TRegistry(RegistryBackend& backend, RootKey root = RootKey::CurrentUser);

  // Changing the root closes the open key; setting the same root again changes nothing.
  void SetRootKey(RootKey root);

  // Opens a key with full access (KEY_ALL_ACCESS), or for reading only (KEY_READ). On success it
  // replaces the open key; on failure the key that was open stays open. With `canCreate` a missing
  // key is created.
  // Callers that read on regardless of the result rely on that rule, so it may be ignored.
  bool OpenKey(std::wstring_view path, bool canCreate);
  bool OpenKeyReadOnly(std::wstring_view path);

  void CloseKey();

  // Whether the key can be opened for reading; the open key is not changed.
  [[nodiscard]] bool KeyExists(std::wstring_view path) const;

  [[nodiscard]] bool ValueExists(std::wstring_view name) const;

  // rdUnknown when there is no such value or no open key.
  [[nodiscard]] DataType GetDataType(std::wstring_view name) const;

  // The text of a REG_SZ or REG_EXPAND_SZ value, unexpanded, up to its first NUL; empty when it is
  // missing or no key is open. Throws TRegistryError when the value has another type.
  [[nodiscard]] std::wstring ReadString(std::wstring_view name) const;

  // The number of a REG_DWORD value; data shorter than four bytes is extended with zeros. Throws
  // TRegistryError when the value is missing or has another type.
  [[nodiscard]] std::int32_t ReadInteger(std::wstring_view name) const;

  // The names of the subkeys or values of the open key in the platform's order; empty without one.
  [[nodiscard]] std::vector<std::wstring> GetKeyNames() const;
  [[nodiscard]] std::vector<std::wstring> GetValueNames() const;

  // Writes a REG_SZ value into the open key. Throws TRegistryError when that fails.
  void WriteString(std::wstring_view name, std::wstring_view text);

  // False when the value is missing, denied or no key is open.
  bool DeleteValue(std::wstring_view name);

  // Deletes the key with everything below it; below HKEY_CLASSES_ROOT both the user's and the
  // machine's key of that name go. Names may hold NULs, so that whatever GetKeyNames lists can be
  // deleted. True when the key is gone, false when it is missing, denied in part or in whole, or
  // refused: a root, a key that the scans list the children of, every key above those, and a key
  // that a registry link in the middle of the path leads to.
  bool DeleteKey(std::wstring_view path);

 private:
  struct Place;  // a path and what it is relative to
  [[nodiscard]] std::optional<Place> Resolve(std::wstring_view path) const;
  [[nodiscard]] std::unique_ptr<RegistryKey> OpenAt(const Place& place,
                                                    RegistryAccess access) const;
  bool OpenWith(std::wstring_view path, RegistryAccess access, bool canCreate);
  [[nodiscard]] const std::optional<RegistryValue>& Query(std::wstring_view name) const;

  struct Answer {
    std::wstring name;
    std::optional<RegistryValue> value;
  };

  RegistryBackend& backend_;
  RootKey root_;
  std::unique_ptr<RegistryKey> rootKey_;
  std::unique_ptr<RegistryKey> key_;
  std::wstring keyPath_;  // of the open key, below the root
  // The last value of the open key that was asked for. Whether it is there, of which type it is and
  // what it says is one question to Windows, and has one answer even while another program writes.
  mutable std::optional<Answer> answer_;
};

// The text of a value as ReadString gives it; empty also when the value is no text. For the pages
// on which a single broken entry must not keep the others from the user.
[[nodiscard]] std::wstring TextOrEmpty(const TRegistry& registry, std::wstring_view name);

// A place in the registry as rows and removals carry it: a key or one of its values. As a text it
// is the root's name and the key's path, for a value followed by "|" and the value's name:
// "HKEY_CURRENT_USER\Software\Microsoft\Internet Explorer\Main|Start Page".
struct RegistryLocation {
  RootKey root = RootKey::CurrentUser;
  std::wstring path;                  // with a leading backslash, as TRegistry takes it
  std::optional<std::wstring> value;  // "" is the key's unnamed value

  [[nodiscard]] std::wstring Text() const;
};

// Takes the location of a key apart, whose path may hold "|". A text that begins with no root's
// name, in capitals and followed by a backslash, is below HKEY_CURRENT_USER.
[[nodiscard]] RegistryLocation ParseKeyLocation(std::wstring_view text);

// The same for the location of a value: the key stands before the first "|" and the name after the
// last one. Without any the location names no value.
[[nodiscard]] RegistryLocation ParseValueLocation(std::wstring_view text);

// Deletes the key that a location names, with everything below it. Nothing is reported.
void DeleteLocationKey(RegistryBackend& backend, std::wstring_view location);

// Deletes one value of the key that a location names, if it exists. Nothing is reported.
void DeleteLocationValue(RegistryBackend& backend, std::wstring_view location,
                         std::wstring_view valueName);

}  // namespace tarvelin
