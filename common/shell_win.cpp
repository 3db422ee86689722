#include "common/shell_win.h"

#include <shellapi.h>
#include <shlobj.h>

#include "common/input_block_win.h"
#include "common/version_win.h"

namespace tarvelin {
namespace {

std::unique_ptr<Icon> WrapIcon(HICON handle) {
  if (!handle) return nullptr;
  return std::make_unique<WindowsIcon>(UniqueIcon(handle));
}

class WindowsShell : public Shell {
 public:
  explicit WindowsShell(Com& com) : com_(com) {}

  std::unique_ptr<VersionResource> OpenVersionResource(const std::wstring& path) override {
    return version_.Open(path);
  }

  std::unique_ptr<Icon> ExtractIconOf(const std::wstring& path, int index) override {
    // To ExtractIconW -1 is a question: it would return the number of icons.
    if (index == -1) return nullptr;
    const HICON icon =
        ExtractIconW(GetModuleHandleW(nullptr), path.c_str(), static_cast<UINT>(index));
    // 1 says that the file holds no icons at all.
    return reinterpret_cast<std::uintptr_t>(icon) == 1 ? nullptr : WrapIcon(icon);
  }

  std::unique_ptr<Icon> FileTypeIcon(const std::wstring& path, bool small) override {
    com_.Start();
    SHFILEINFOW info{};
    const UINT flags = SHGFI_ICON | SHGFI_USEFILEATTRIBUTES | (small ? SHGFI_SMALLICON : 0);
    if (!SHGetFileInfoW(path.c_str(), FILE_ATTRIBUTE_NORMAL, &info, sizeof info, flags)) {
      return nullptr;
    }
    return WrapIcon(info.hIcon);
  }

  bool ShowProperties(const std::wstring& path) override {
    constexpr ULONG mask = SEE_MASK_INVOKEIDLIST | SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    return Execute(com_, path, L"properties", mask, SW_HIDE).has_value();
  }

  std::wstring SpecialFolder(int folderId) override {
    wchar_t buffer[MAX_PATH + 1]{};
    if (!SHGetSpecialFolderPathW(nullptr, buffer, folderId, FALSE)) return {};
    std::wstring path(buffer);
    if (path.ends_with(L'\\')) path.pop_back();  // a folder that is a whole drive
    return path;
  }

 private:
  Com& com_;
  VersionLibrary version_;
};

}  // namespace

std::unique_ptr<Shell> MakeWindowsShell(Com& com) { return std::make_unique<WindowsShell>(com); }

std::optional<UniqueKernelObject> Execute(Com& com, const std::wstring& path, const wchar_t* verb,
                                          ULONG mask, int show) {
  com.Start();
  const InputBlock block;  // extensions of the shell run in this process
  SHELLEXECUTEINFOW request{};
  request.cbSize = sizeof request;
  request.fMask = mask;
  request.lpVerb = verb;
  request.lpFile = path.c_str();
  request.nShow = show;
  if (!ShellExecuteExW(&request)) return std::nullopt;
  return UniqueKernelObject(request.hProcess);
}

}  // namespace tarvelin
