#include "common/system_win.h"

#include <ole2.h>
#include <shellapi.h>
#include <shlobj.h>
#include <windows.h>

#include <algorithm>
#include <vector>

#include "common/Corvane_Routine_New.h"
#include "common/clipboard_win.h"
#include "common/keys_win.h"
#include "common/registry_win.h"
#include "common/version_win.h"

namespace tarvelin {
namespace {

constexpr DWORD kMaxText = 32768;  // in characters, of paths and environment variables

// The text that `get(buffer, size)` writes. It returns the length, or the size that it needs when
// the buffer is too small, or 0 on failure.
template <class Get>
std::wstring TextOf(const Get& get) {
  std::wstring text(MAX_PATH, L'\0');
  DWORD length = get(text.data(), static_cast<DWORD>(text.size()));
  if (length >= text.size()) {
    text.resize(std::min(length, kMaxText));
    length = get(text.data(), static_cast<DWORD>(text.size()));
    if (length >= text.size()) length = 0;
  }
  text.resize(length);
  return text;
}

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
    return TextOf([&](wchar_t* buffer, DWORD size) {
      return GetFullPathNameW(path.c_str(), size, buffer, nullptr);
    });
  }

  void ForEachEntry(const std::wstring& pattern,
                    const std::function<void(const std::wstring&)>& found) override {
    WIN32_FIND_DATAW entry{};
    const UniqueFind search(FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry,
                                             FindExSearchNameMatch, nullptr, 0));
    if (!search) return;
    do {
      found(entry.cFileName);
    } while (FindNextFileW(search.Get(), &entry));
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
    std::wstring text(MAX_PATH, L'\0');
    for (;;) {
      const auto size = static_cast<DWORD>(text.size());
      const DWORD length = GetPrivateProfileStringW(
          section.c_str(), key.c_str(), defaultText.c_str(), text.data(), size, path.c_str());
      // One less than the buffer means that the text was cut.
      if (length + 1 < size || size >= kMaxText) {
        text.resize(length);
        return text;
      }
      text.resize(text.size() * 2);
    }
  }

  std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) override {
    // Unlike its relatives this one counts the terminator.
    std::wstring expansion = TextOf([&](wchar_t* buffer, DWORD size) {
      const DWORD needed = ExpandEnvironmentStringsW(text.c_str(), buffer, size);
      return needed > size ? needed : std::max<DWORD>(needed, 1) - 1;
    });
    if (expansion.empty() && !text.empty()) return std::nullopt;
    return expansion;
  }

  std::wstring WindowsDirectory() override {
    return TextOf([](wchar_t* buffer, DWORD size) { return GetWindowsDirectoryW(buffer, size); });
  }

  std::wstring SystemDirectory() override {
    return TextOf([](wchar_t* buffer, DWORD size) { return GetSystemDirectoryW(buffer, size); });
  }
};

// COM for this thread, from its first use on; property sheets and add-ons rely on it.
class Com {
 public:
  Com() = default;
  Com(const Com&) = delete;
  Com& operator=(const Com&) = delete;
  ~Com() {
    if (started_) OleUninitialize();
  }

  void Start() {
    if (!started_) started_ = SUCCEEDED(OleInitialize(nullptr));
  }

 private:
  bool started_ = false;
};

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

// While it lives, the windows of this thread take no input: somebody else's code runs in it, which
// may show a box of its own or let messages through in some other way. Messages that are not input,
// and what a disabled window still gets, are the windows' own business.
class InputBlock {
 public:
  InputBlock() : active_(GetActiveWindow()), focus_(GetFocus()) {
    EnumThreadWindows(GetCurrentThreadId(), Disable, reinterpret_cast<LPARAM>(&disabled_));
  }
  InputBlock(const InputBlock&) = delete;
  InputBlock& operator=(const InputBlock&) = delete;
  ~InputBlock() {
    for (const HWND window : disabled_) EnableWindow(window, TRUE);
    // Windows has activated another program when a box closed that had no enabled owner.
    if (active_ && IsWindow(active_) && GetActiveWindow() != active_) SetForegroundWindow(active_);
    if (focus_ && IsWindow(focus_) && GetActiveWindow() == active_) SetFocus(focus_);
  }

 private:
  static BOOL CALLBACK Disable(HWND window, LPARAM disabled) {
    if (IsWindowVisible(window) && IsWindowEnabled(window)) {
      reinterpret_cast<std::vector<HWND>*>(disabled)->push_back(window);
      EnableWindow(window, FALSE);
    }
    return TRUE;
  }

  HWND active_;
  HWND focus_;
  std::vector<HWND> disabled_;
};

class WindowsModules : public ModuleRegistrar {
 public:
  WindowsModules(Com& com, FileSystem& files) : com_(com), files_(files) {}

  // The library's code runs in this process and cannot be shielded: when it crashes, the program
  // ends. Callers unregister before they delete anything, so the registry is then as it was.
  void Unregister(const std::wstring& path) override {
    if (!IsAbsolutePath(path)) return;
    com_.Start();
    const InputBlock block;
    // Its own folder and those of Windows, but not the program's. The flags are for the libraries
    // that it is linked to, the guards alone for those that it loads while it runs.
    const CompanionFolder windows(files_.WindowsDirectory());
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
  FileSystem& files_;
};

// Runs a verb on a file and gives the process, if one was started; nullopt when Windows refuses.
std::optional<UniqueKernelObject> Execute(const std::wstring& path, const wchar_t* verb, ULONG mask,
                                          int show) {
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

std::unique_ptr<Icon> WrapIcon(HICON handle) {
  if (!handle) return nullptr;
  return std::make_unique<WindowsIcon>(UniqueIcon(handle));
}

class WindowsShell : public Shell {
 public:
  WindowsShell(Com& com, FileSystem& files) : com_(com), version_(files) {}

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
    com_.Start();
    constexpr ULONG mask = SEE_MASK_INVOKEIDLIST | SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    return Execute(path, L"properties", mask, SW_HIDE).has_value();
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

// While it lives, a key that is held down answers no box. The box has a message loop of its own.
class HeldKeysFilter {
 public:
  HeldKeysFilter()
      : hook_(SetWindowsHookExW(WH_MSGFILTER, Filter, nullptr, GetCurrentThreadId())) {}
  HeldKeysFilter(const HeldKeysFilter&) = delete;
  HeldKeysFilter& operator=(const HeldKeysFilter&) = delete;
  ~HeldKeysFilter() {
    if (hook_) UnhookWindowsHookEx(hook_);
  }

 private:
  static LRESULT CALLBACK Filter(int code, WPARAM unused, LPARAM message) {
    if (code == MSGF_DIALOGBOX && IsHeldAnswer(*reinterpret_cast<const MSG*>(message))) return TRUE;
    return CallNextHookEx(nullptr, code, unused, message);
  }

  HHOOK hook_;
};

class WindowsBoxes : public MessageBoxes {
 public:
  int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t flags) override {
    const HWND owner = IsWindow(mainWindow) ? GetLastActivePopup(mainWindow) : GetActiveWindow();
    // The name of a registry key may hold NULs, and the question about it must not end there.
    std::wstring whole = text;
    std::replace(whole.begin(), whole.end(), L'\0', L' ');
    const HeldKeysFilter filter;
    return MessageBoxW(owner, whole.c_str(), caption.c_str(), flags);
  }

  HWND mainWindow = nullptr;
};

class WindowsEditor : public EditorWindows {
 public:
  WindowsEditor(Com& com, FileSystem& files) : com_(com), files_(files) {}

  Window FindTopLevel(const std::wstring& className) override {
    return FromHandle(FindWindowW(className.c_str(), nullptr));
  }

  Window FindChild(Window parent, const std::wstring& className) override {
    if (!parent) return 0;  // null would mean the desktop
    return FromHandle(FindWindowExW(ToHandle(parent), nullptr, className.c_str(), nullptr));
  }

  void StartEditor() override {
    com_.Start();
    // By its full path, so that nothing else of that name is started.
    const auto process = Execute(files_.WindowsDirectory() + L"\\regedit.exe", L"open",
                                 SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI, SW_MAXIMIZE);
    if (process && *process) WaitForInputIdle(process->Get(), INFINITE);
  }

  void Maximize(Window window) override { ShowWindow(ToHandle(window), SW_MAXIMIZE); }

  void BringToForeground(Window window) override { SetForegroundWindow(ToHandle(window)); }

  void SetFocusTo(Window window) override { SetFocus(ToHandle(window)); }

  void SendKeyDown(Window window, Key key) override {
    SendMessageW(ToHandle(window), WM_KEYDOWN, static_cast<WPARAM>(key), 0);
  }

  void SendChar(Window window, wchar_t character) override {
    SendMessageW(ToHandle(window), WM_CHAR, character, 0);
  }

  void Pause(int milliseconds) override { Sleep(static_cast<DWORD>(milliseconds)); }

 private:
  static Window FromHandle(HWND handle) { return reinterpret_cast<Window>(handle); }
  static HWND ToHandle(Window window) { return reinterpret_cast<HWND>(window); }

  Com& com_;
  FileSystem& files_;
};

class WindowsResources : public Resources {
 public:
  std::span<const std::byte> Find(std::wstring_view name) override {
    // "header-ie-0.png" is the resource HEADER_IE_0_PNG: identifiers hold neither "." nor "-".
    std::wstring id = UpperCase(name);
    std::replace_if(
        id.begin(), id.end(), [](wchar_t c) { return c == L'.' || c == L'-'; }, L'_');
    const HRSRC resource = FindResourceW(nullptr, id.c_str(), RT_RCDATA);
    if (!resource) return {};
    // Part of the mapped executable: there is nothing to free.
    const void* data = LockResource(LoadResource(nullptr, resource));
    if (!data) return {};
    return {static_cast<const std::byte*>(data), SizeofResource(nullptr, resource)};
  }
};

class WindowsDisplay : public Display {
 public:
  int PixelsPerInch() override { return GetDeviceCaps(WindowDc(nullptr).Get(), LOGPIXELSX); }

  int VerticalScrollBarWidth() override { return GetSystemMetrics(SM_CXVSCROLL); }

  int TextWidth(std::wstring_view text) override {
    if (!font_) {
      font_.Reset(CreateFontW(-11, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                              OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                              DEFAULT_PITCH | FF_DONTCARE, L"Tahoma"));
    }
    const WindowDc screen(nullptr);
    const SelectGuard selected(screen.Get(), font_.Get());
    SIZE size{};
    GetTextExtentPoint32W(screen.Get(), text.data(), static_cast<int>(text.size()), &size);
    return size.cx;
  }

  int WindowsMajorVersion() override {
    // GetVersionEx tells programs what their manifest wants to hear.
    using GetVersionCall = LONG(WINAPI*)(OSVERSIONINFOW*);
    const auto getVersion =
        FindExport<GetVersionCall>(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (getVersion) getVersion(&version);
    return static_cast<int>(version.dwMajorVersion);
  }

  void ProcessMessages() override {
    if (pump) {
      pump();
      return;
    }
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      if (message.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(message.wParam));
        return;
      }
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }

  std::function<void()> pump;

 private:
  UniqueFont font_;
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

struct WindowsPlatform::Parts {
  Com com;
  WindowsRegistry registry;
  WindowsFiles files;
  WindowsModules modules{com, files};
  WindowsShell shell{com, files};
  WindowsBoxes boxes;
  WindowsEditor editor{com, files};
  WindowsResources resources;
  WindowsDisplay display;
  WindowsClipboard clipboard;
  TPlatform platform{registry, files, modules, shell, boxes, editor, resources, display, clipboard};
};

WindowsPlatform::WindowsPlatform() : parts_(std::make_unique<Parts>()) {}

WindowsPlatform::~WindowsPlatform() = default;

TPlatform& WindowsPlatform::Get() { return parts_->platform; }

void WindowsPlatform::SetMainWindow(HWND window) { parts_->boxes.mainWindow = window; }

void WindowsPlatform::SetMessagePump(std::function<void()> pump) {
  parts_->display.pump = std::move(pump);
}

}  // namespace tarvelin
