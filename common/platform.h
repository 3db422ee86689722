// What the program asks of Windows apart from the registry and the window, as small interfaces.
// Each has one implementation over Win32 and one scripted double for the tests.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/clipboard.h"
#include "common/registry.h"
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
  // included, in the order of the file system (FindFirstFileW). `found` gets each name in turn.
  virtual void ForEachEntry(const std::wstring& pattern,
                            const std::function<void(const std::wstring& name)>& found) = 0;

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

class ModuleRegistrar {
 public:
  virtual ~ModuleRegistrar() = default;

  // Loads the library, calls its export "DllUnregisterServer" when there is one and unloads it.
  // `path` is a full one; any other is passed by. Nothing is reported. The library finds companions
  // in its own folder and in those of Windows, none in the program's or in the current folder.
  virtual void Unregister(const std::wstring& path) = 0;
};

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

// MessageBoxW, owned by the active window of the program.
class MessageBoxes {
 public:
  virtual ~MessageBoxes() = default;
  virtual int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t flags) = 0;
};

// The flags and answers of MessageBoxW that the program uses.
inline constexpr std::uint32_t kBoxOk = 0x0;
inline constexpr std::uint32_t kBoxError = 0x10;          // MB_OK | MB_ICONERROR
inline constexpr std::uint32_t kBoxYesNoQuestion = 0x24;  // MB_YESNO | MB_ICONQUESTION
inline constexpr int kAnswerOk = 1;
inline constexpr int kAnswerYes = 6;
inline constexpr int kAnswerNo = 7;

// What the registry editor's window is driven with; a window is an opaque number, 0 being none.
class EditorWindows {
 public:
  using Window = std::uintptr_t;
  enum class Key : int { End = 0x23, Home = 0x24, Left = 0x25, Right = 0x27 };

  virtual ~EditorWindows() = default;
  [[nodiscard]] virtual Window FindTopLevel(const std::wstring& className) = 0;
  [[nodiscard]] virtual Window FindChild(Window parent, const std::wstring& className) = 0;
  // Starts the system's registry editor by its full path, maximised, and waits until it is idle.
  virtual void StartEditor() = 0;
  virtual void Maximize(Window window) = 0;
  virtual void BringToForeground(Window window) = 0;
  virtual void SetFocusTo(Window window) = 0;
  virtual void SendKeyDown(Window window, Key key) = 0;
  virtual void SendChar(Window window, wchar_t character) = 0;
  virtual void Pause(int milliseconds) = 0;
};

// The artwork that the executable carries.
class Resources {
 public:
  virtual ~Resources() = default;
  // The bytes of a picture by its file name, such as "logo.png"; empty when there is none. They
  // stay valid as long as this object.
  [[nodiscard]] virtual std::span<const std::byte> Find(std::wstring_view name) = 0;
};

// Screen facts and the message queue.
class Display {
 public:
  virtual ~Display() = default;
  [[nodiscard]] virtual int PixelsPerInch() = 0;
  [[nodiscard]] virtual int VerticalScrollBarWidth() = 0;
  [[nodiscard]] virtual int TextWidth(std::wstring_view text) = 0;  // in the window's font
  [[nodiscard]] virtual int WindowsMajorVersion() = 0;
  // Handles the messages that are waiting, so that the window stays responsive in a long listing.
  virtual void ProcessMessages() = 0;
};

// Everything above, handed to the windows and the scanner. The referenced objects outlive both.
struct TPlatform {
  RegistryBackend& registry;
  FileSystem& files;
  ModuleRegistrar& modules;
  Shell& shell;
  MessageBoxes& boxes;
  EditorWindows& editor;
  Resources& resources;
  Display& display;
  Clipboard& clipboard;
};

}  // namespace tarvelin
