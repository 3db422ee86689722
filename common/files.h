// Files, folders and what else is read from the disk.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "common/text.h"

namespace tarvelin {

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Whether a file, not a directory, is there (GetFileAttributesW).
  [[nodiscard]] virtual bool FileExists(const std::wstring& path) = 0;

  // Whether an exclusive open for reading and writing is refused (CreateFileW, no sharing,
  // OPEN_EXISTING); also true for a file that is not there.
  [[nodiscard]] virtual bool ExclusiveOpenFails(const std::wstring& path) = 0;

  // Deletes a file (DeleteFileW); a directory or a read-only file is not deleted.
  [[nodiscard]] virtual bool RemoveFile(const std::wstring& path) = 0;

  // The path from a drive or a server on that Windows makes of any other, with backslashes only
  // (GetFullPathNameW); empty when it refuses.
  [[nodiscard]] virtual std::wstring FullPath(const std::wstring& path) = 0;

  // The names that match a pattern such as "C:\folder\*.*", hidden and system entries, "." and ".."
  // included, in the order of the file system (FindFirstFileW).
  [[nodiscard]] virtual std::vector<std::wstring> EntryNames(const std::wstring& pattern) = 0;

  // The bytes of a file, nullopt when it cannot be read.
  [[nodiscard]] virtual std::optional<Bytes> ReadWholeFile(const std::wstring& path) = 0;

  // Bytes in the system's ANSI code page as text (MultiByteToWideChar with CP_ACP).
  [[nodiscard]] virtual std::wstring DecodeAnsi(std::span<const std::byte> data) = 0;

  // One text of a profile (INI) file (GetPrivateProfileStringW).
  [[nodiscard]] virtual std::wstring ReadProfileText(const std::wstring& path,
                                                     const std::wstring& section,
                                                     const std::wstring& key,
                                                     const std::wstring& defaultText) = 0;

  // Environment variables replaced (ExpandEnvironmentStringsW); nullopt when that fails.
  [[nodiscard]] virtual std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) = 0;

  // GetWindowsDirectoryW and GetSystemDirectoryW, without a trailing backslash.
  [[nodiscard]] virtual std::wstring WindowsDirectory() = 0;
  [[nodiscard]] virtual std::wstring SystemDirectory() = 0;
};

}  // namespace tarvelin
