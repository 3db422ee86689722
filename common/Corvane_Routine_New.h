// Common routines: from command lines to file paths, version information, file icons, property
// sheets and special folders. Each takes the platform services that it needs.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "common/files.h"
#include "common/shell.h"

namespace tarvelin {

// The text before the first `stopChar`, empty when it does not occur; with a NUL `stopChar` the
// first `count` characters.
[[nodiscard]] std::wstring LeftOfChar(std::wstring_view text, std::size_t count, wchar_t stopChar);

// The text after the last `stopChar`, the whole text when it does not occur; with a NUL `stopChar`
// the last `count` characters.
[[nodiscard]] std::wstring RightOfLastChar(std::wstring_view text, std::size_t count,
                                           wchar_t stopChar);

// Counted from the end, the 1-based position of the n-th occurrence of `charText`; 0 when there are
// fewer.
[[nodiscard]] std::size_t PositionFromRight(std::wstring_view text, wchar_t charText,
                                            std::size_t n);

// `text` without the characters at both ends whose code is at most that of `limitChar`.
[[nodiscard]] std::wstring TrimChars(std::wstring text, wchar_t limitChar);

[[nodiscard]] std::wstring GetWindowsDir(FileSystem& files);
[[nodiscard]] std::wstring GetSystemDir(FileSystem& files);

// Whether the file exists and refuses an exclusive open for reading and writing.
[[nodiscard]] bool IsFileInUse(FileSystem& files, const std::wstring& path);

// The file path behind a registered command line, by a fixed series of textual rewrites. Never
// fails; the result may be empty or name no file.
[[nodiscard]] std::wstring CommandLineToFilePath(FileSystem& files, std::wstring_view commandLine);

// Whether a path says where it begins, at the root of a drive or on a server, whatever folder is
// the current one.
[[nodiscard]] bool IsAbsolutePath(std::wstring_view path);

// The part of a path after its last "\" or ":", and that part's extension from its last "." on.
[[nodiscard]] std::wstring ExtractFileName(std::wstring_view path);
[[nodiscard]] std::wstring ExtractFileExt(std::wstring_view path);

struct TFileInfo {
  std::wstring CompanyName;
  std::wstring FileDescription;
  std::wstring FileVersion;
  std::wstring InternalName;
  std::wstring LegalCopyright;
  std::wstring LegalTrademarks;
  std::wstring OriginalFileName;
  std::wstring ProductName;
  std::wstring ProductVersion;
  std::wstring Comments;
  std::array<std::uint32_t, 13> FixedInfo{};  // VS_FIXEDFILEINFO
  std::wstring ExtraValue;
};

// Reads the version resource of a file in its first translation; an absent entry is empty. False,
// with `info` untouched, when there is none that can be read.
[[nodiscard]] bool ReadFileInfo(Shell& shell, const std::wstring& fileName, TFileInfo& info,
                                const std::wstring& extraEntryName);

// What GetFileInfoField returns; the numbers are those that callers pass.
enum class FileInfoField : int {
  Comments = 0,
  CompanyName = 1,
  FileDescription = 2,
  FileVersion = 3,
  InternalName = 4,
  LegalCopyright = 5,
  LegalTrademarks = 6,
  OriginalFileName = 7,
  ProductName = 8,
  ProductVersion = 9,
  ExtraValue = 10,  // the entry "WOW Version"
};

// One field of a file's version information; "Unknown" when it has none that can be read.
[[nodiscard]] std::wstring GetFileInfoField(Shell& shell, const std::wstring& fileName,
                                            FileInfoField field);

// What the pages tell of a module; both "Unknown" when it has no version information that can be
// read. As GetFileInfoField, but with one look into the file.
struct ModuleFacts {
  std::wstring description;
  std::wstring publisher;
};
[[nodiscard]] ModuleFacts GetModuleFacts(Shell& shell, const std::wstring& fileName);

// The shell's icon for files named like the program in a command line; null when there is none.
[[nodiscard]] std::unique_ptr<Icon> GetFileIcon(FileSystem& files, Shell& shell,
                                                std::wstring_view path, bool small);

// Opens the shell's "properties" sheet; the name is passed on unchanged.
bool ShowFileProperties(Shell& shell, const std::wstring& fileName);

// The path of a shell special folder (a CSIDL number).
[[nodiscard]] std::wstring GetSpecialFolder(Shell& shell, int folderId);
inline constexpr int kAppDataFolder = 26;  // CSIDL_APPDATA

}  // namespace tarvelin
