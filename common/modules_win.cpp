#include "common/modules_win.h"

#include <windows.h>

#include "common/Corvane_Routine_New.h"
#include "common/files_win.h"
#include "common/handles_win.h"
#include "common/input_block_win.h"

namespace tarvelin {
namespace {

// While it lives, a library that is loaded by its mere name is also looked for in that folder. The
// one for Windows' folder is of use where the program's folder was taken out of the search; an
// older Windows looks there in any case (AddDllDirectory, SetDllDirectoryW).
class CompanionFolder {
 public:
  explicit CompanionFolder(const std::wstring& folder) {
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    const auto add = FindExport<decltype(&AddDllDirectory)>(kernel, "AddDllDirectory");
    remove_ = FindExport<decltype(&RemoveDllDirectory)>(kernel, "RemoveDllDirectory");
    if (add && remove_) {
      added_ = add(folder.c_str());
    } else {
      SetDllDirectoryW(folder.c_str());
    }
  }
  CompanionFolder(const CompanionFolder&) = delete;
  CompanionFolder& operator=(const CompanionFolder&) = delete;
  ~CompanionFolder() {
    if (added_) {
      remove_(added_);
    } else {
      SetDllDirectoryW(L"");
    }
  }

 private:
  DLL_DIRECTORY_COOKIE added_ = nullptr;
  decltype(&RemoveDllDirectory) remove_ = nullptr;
};

class WindowsModules : public ModuleRegistrar {
 public:
  explicit WindowsModules(Com& com) : com_(com) {}

  // The library's code runs in this process and cannot be shielded: when it crashes, the program
  // ends. Callers unregister before they delete anything, so the registry is then as it was.
  void Unregister(const std::wstring& path) override {
    if (!IsAbsolutePath(path)) return;
    com_.Start();
    const InputBlock block;
    // Its own folder and those of Windows, but not the program's. The flags are for the libraries
    // that it is linked to, the guards alone for those that it loads while it runs.
    const CompanionFolder windows(WindowsFolder());
    const CompanionFolder own(path.substr(0, path.rfind(L'\\') + 1));
    UniqueModule module(LoadLibraryExW(path.c_str(), nullptr,
                                       LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR |
                                           LOAD_LIBRARY_SEARCH_USER_DIRS |
                                           LOAD_LIBRARY_SEARCH_SYSTEM32));
    if (!module && GetLastError() == ERROR_INVALID_PARAMETER) {
      // Windows 7 without the update that knows these flags.
      module.Reset(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    }
    if (!module) return;
    using UnregisterServer = HRESULT(STDAPICALLTYPE*)();
    const auto unregister = FindExport<UnregisterServer>(module.Get(), "DllUnregisterServer");
    if (unregister) unregister();
  }

 private:
  Com& com_;
};

}  // namespace

void PrepareProcess() {
  using SetDirectories = BOOL(WINAPI*)(DWORD);
  const auto setDirectories =
      FindExport<SetDirectories>(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories");
  // The user's directory is one that the program itself names, and it starts without any.
  if (setDirectories) setDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32 | LOAD_LIBRARY_SEARCH_USER_DIRS);
  SetDllDirectoryW(L"");
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
}

std::unique_ptr<ModuleRegistrar> MakeWindowsModules(Com& com) {
  return std::make_unique<WindowsModules>(com);
}

}  // namespace tarvelin
