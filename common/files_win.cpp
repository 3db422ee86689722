#include "common/files_win.h"

#include <windows.h>

#include <algorithm>

#include "common/buffer_win.h"
#include "common/handles_win.h"

namespace tarvelin {
namespace {

class WindowsFiles : public FileSystem {
 public:
  bool FileExists(const std::wstring& path) override {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
  }

  bool ExclusiveOpenFails(const std::wstring& path) override {
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return !file;
  }

  bool RemoveFile(const std::wstring& path) override { return DeleteFileW(path.c_str()); }

  std::wstring FullPath(const std::wstring& path) override {
    return BufferText([&](wchar_t* buffer, DWORD size) {
      return GetFullPathNameW(path.c_str(), size, buffer, nullptr);
    });
  }

  std::vector<std::wstring> EntryNames(const std::wstring& pattern) override {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW entry{};
    const UniqueFind search(FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry,
                                             FindExSearchNameMatch, nullptr, 0));
    if (!search) return names;
    do {
      names.emplace_back(entry.cFileName);
    } while (FindNextFileW(search.Get(), &entry));
    return names;
  }

  std::optional<Bytes> ReadWholeFile(const std::wstring& path) override {
    // No file that the program reads is anywhere near as large.
    constexpr LONGLONG limit = 256 * 1024 * 1024;
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file || !GetFileSizeEx(file.Get(), &size) || size.QuadPart > limit) return std::nullopt;
    Bytes data(static_cast<std::size_t>(size.QuadPart));
    DWORD done = 0;
    if (!ReadFile(file.Get(), data.data(), static_cast<DWORD>(data.size()), &done, nullptr)) {
      return std::nullopt;
    }
    data.resize(done);
    return data;
  }

  std::wstring DecodeAnsi(std::span<const std::byte> data) override {
    const auto* bytes = reinterpret_cast<const char*>(data.data());
    const int size = static_cast<int>(data.size());
    const int length = MultiByteToWideChar(CP_ACP, 0, bytes, size, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes, size, text.data(), length);
    return text;
  }

  std::wstring ReadProfileText(const std::wstring& path, const std::wstring& section,
                               const std::wstring& key, const std::wstring& defaultText) override {
    return BufferText([&](wchar_t* buffer, DWORD size) {
      return GetPrivateProfileStringW(section.c_str(), key.c_str(), defaultText.c_str(), buffer,
                                      size, path.c_str());
    });
  }

  std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) override {
    std::wstring expansion = BufferText([&](wchar_t* buffer, DWORD size) {
      // Unlike its relatives this one counts the terminator.
      return std::max<DWORD>(ExpandEnvironmentStringsW(text.c_str(), buffer, size), 1) - 1;
    });
    if (expansion.empty() && !text.empty()) return std::nullopt;
    return expansion;
  }

  std::wstring WindowsDirectory() override { return WindowsFolder(); }

  std::wstring SystemDirectory() override { return SystemFolder(); }
};

}  // namespace

std::unique_ptr<FileSystem> MakeWindowsFiles() { return std::make_unique<WindowsFiles>(); }

std::wstring WindowsFolder() { return BufferText(GetWindowsDirectoryW); }

std::wstring SystemFolder() { return BufferText(GetSystemDirectoryW); }

}  // namespace tarvelin
