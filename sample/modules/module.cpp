// The sample modules: each is this file, built with SAMPLE_KIND set to what it does when it is
// unregistered. What they did can be read under HKEY_CURRENT_USER\Software\Tarvelin Sample:
//   Unregistered   a value named after each module that was unregistered
//   Loaded         a value for each path from which a companion was loaded
#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>

#include <iterator>

#define SAMPLE_SILENT 0     // exports nothing
#define SAMPLE_TRACE 1      // leaves its trace and succeeds
#define SAMPLE_REFUSE 2     // leaves its trace and fails
#define SAMPLE_CRASH 3      // leaves its trace and reads from address 0
#define SAMPLE_LOADING 4    // loads its companion by name; the trace is the companion's path
#define SAMPLE_IMPORTING 5  // is linked to its companion; the trace is the companion's path
#define SAMPLE_COMPANION 6  // the companion
#define SAMPLE_MEDDLE 7     // closes windows, selects a row, presses buttons, and shows a box
#define SAMPLE_DESTROY 8    // destroys the main window

namespace {

[[maybe_unused]] HMODULE self = nullptr;

[[maybe_unused]] void Trace(const wchar_t* key, const wchar_t* name, const wchar_t* text) {
  HKEY opened = nullptr;
  if (RegCreateKeyExW(HKEY_CURRENT_USER, key, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &opened,
                      nullptr) != ERROR_SUCCESS) {
    return;
  }
  const auto bytes = static_cast<DWORD>(lstrlenW(text) + 1) * DWORD{sizeof(wchar_t)};
  RegSetValueExW(opened, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), bytes);
  RegCloseKey(opened);
}

struct Path {
  wchar_t text[1024] = L"";
  explicit Path(HMODULE module) {
    if (module) GetModuleFileNameW(module, text, static_cast<DWORD>(std::size(text)));
  }
  [[nodiscard]] const wchar_t* FileName() const {
    const wchar_t* name = text;
    for (const wchar_t* at = text; *at; ++at) {
      if (*at == L'\\') name = at + 1;
    }
    return name;
  }
};

[[maybe_unused]] void TraceUnregistration(const wchar_t* text) {
  Trace(L"Software\\Tarvelin Sample\\Unregistered", Path(self).FileName(), text);
}

[[maybe_unused]] HWND OwnWindow(const wchar_t* className) {
  HWND window = nullptr;
  do {
    window = FindWindowExW(nullptr, window, className, nullptr);
  } while (window && GetWindowThreadProcessId(window, nullptr) != GetCurrentThreadId());
  return window;
}

#if SAMPLE_KIND == SAMPLE_MEDDLE
BOOL CALLBACK MeddleWith(HWND control, LPARAM) {
  wchar_t className[32] = L"";
  GetClassNameW(control, className, static_cast<int>(std::size(className)));
  if (lstrcmpiW(className, L"Button") == 0) {
    PostMessageW(control, BM_CLICK, 0, 0);
    SendMessageW(control, BM_CLICK, 0, 0);
  } else if (lstrcmpiW(className, WC_LISTVIEWW) == 0 && IsWindowVisible(control)) {
    LVITEMW state{};
    state.state = state.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(control, LVM_SETITEMSTATE, 1, reinterpret_cast<LPARAM>(&state));
    PostMessageW(control, WM_KEYDOWN, VK_HOME, 1);
  }
  return TRUE;
}

void Meddle() {
  const HWND main = OwnWindow(L"TFormMain");
  for (const HWND window : {main, OwnWindow(L"TApplication")}) {
    PostMessageW(window, WM_CLOSE, 0, 0);
    SendMessageW(window, WM_CLOSE, 0, 0);
  }
  EnumChildWindows(main, MeddleWith, 0);
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  MessageBoxW(nullptr, L"Unregistering", L"Meddling", MB_OK);
}
#endif

}  // namespace

#if SAMPLE_KIND == SAMPLE_COMPANION
extern "C" __declspec(dllexport) HMODULE SampleCompanion() { return self; }
#elif SAMPLE_KIND == SAMPLE_IMPORTING
extern "C" __declspec(dllimport) HMODULE SampleCompanion();
#endif

#if SAMPLE_KIND != SAMPLE_SILENT && SAMPLE_KIND != SAMPLE_COMPANION
extern "C" __declspec(dllexport) HRESULT __stdcall DllUnregisterServer() {
#if SAMPLE_KIND == SAMPLE_LOADING
  HMODULE companion = LoadLibraryW(L"companion.dll");
  TraceUnregistration(Path(companion).text);
  if (companion) FreeLibrary(companion);
  return companion ? S_OK : E_FAIL;
#elif SAMPLE_KIND == SAMPLE_IMPORTING
  TraceUnregistration(Path(SampleCompanion()).text);
  return S_OK;
#else
  TraceUnregistration(L"done");
#if SAMPLE_KIND == SAMPLE_MEDDLE
  Meddle();
#elif SAMPLE_KIND == SAMPLE_DESTROY
  DestroyWindow(OwnWindow(L"TFormMain"));
#endif
#if SAMPLE_KIND == SAMPLE_CRASH
  const volatile int* volatile nowhere = nullptr;
  return *nowhere;
#else
  return SAMPLE_KIND == SAMPLE_REFUSE ? E_FAIL : S_OK;
#endif
#endif
}
#endif

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) {
    self = instance;
#if SAMPLE_KIND == SAMPLE_COMPANION
    Trace(L"Software\\Tarvelin Sample\\Loaded", Path(self).text, SAMPLE_TEXT);
#endif
  }
  return TRUE;
}
