// What Windows' shell tells of files: version information, icons, property sheets and folders.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tarvelin {

// The version resource of one file, held in memory.
class VersionResource {
 public:
  virtual ~VersionResource() = default;

  // The first language and code-page pair of "\VarFileInfo\Translation"; nullopt without one.
  [[nodiscard]] virtual std::optional<std::pair<std::uint16_t, std::uint16_t>> Translation() = 0;

  // The text of a sub-block such as "\StringFileInfo\040904B0\CompanyName" (VerQueryValueW).
  [[nodiscard]] virtual std::optional<std::wstring> Text(const std::wstring& subBlock) = 0;

  // The thirteen words of VS_FIXEDFILEINFO.
  [[nodiscard]] virtual std::optional<std::array<std::uint32_t, 13>> FixedInfo() = 0;
};

// An icon handle; destroying the object destroys the icon.
class Icon {
 public:
  virtual ~Icon() = default;
};

class Shell {
 public:
  virtual ~Shell() = default;

  // The version resource of a file, null when it has none that can be read (GetFileVersionInfoW).
  [[nodiscard]] virtual std::unique_ptr<VersionResource> OpenVersionResource(
      const std::wstring& path) = 0;

  // Icon `index` of a file, a negative index naming a resource; null when there is none
  // (ExtractIconW).
  [[nodiscard]] virtual std::unique_ptr<Icon> ExtractIconOf(const std::wstring& path,
                                                            int index) = 0;

  // The icon that the shell gives to files of that name, which need not exist; null when it gives
  // none (SHGetFileInfoW with SHGFI_USEFILEATTRIBUTES).
  [[nodiscard]] virtual std::unique_ptr<Icon> FileTypeIcon(const std::wstring& path,
                                                           bool small) = 0;

  // Opens the shell's "properties" sheet of a file (ShellExecuteExW); false when it refuses.
  virtual bool ShowProperties(const std::wstring& path) = 0;

  // A special folder by its CSIDL number, without a trailing backslash; empty when there is none.
  [[nodiscard]] virtual std::wstring SpecialFolder(int folderId) = 0;
};

}  // namespace tarvelin
