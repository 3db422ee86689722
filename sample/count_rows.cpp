// Counts the rows of every page of a program that it starts: count_rows.exe PROGRAM
// Fails when a page is empty. run.sh thereby notices that the sample did not reach the program, as
// when its registry landed in the view of the other bitness.
#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

constexpr const wchar_t* kPages[] = {L"Shell Extensions", L"New",     L"Send to",
                                     L"IE Context Menus", L"IE Bars", L"IE Toolbars",
                                     L"IE Extra Button",  L"IE BHOs", L"IE Downloaded ActiveX",
                                     L"IE Settings"};
constexpr int kPatience = 300;  // tenths of a second

struct Search {
  const wchar_t* className;
  const wchar_t* text;  // any when null
  DWORD process;        // any when 0
  HWND found;
};

BOOL CALLBACK Look(HWND window, LPARAM parameter) {
  auto& search = *reinterpret_cast<Search*>(parameter);
  wchar_t name[64] = L"";
  wchar_t text[64] = L"";
  DWORD process = 0;
  GetClassNameW(window, name, 64);
  GetWindowThreadProcessId(window, &process);
  SendMessageTimeoutW(window, WM_GETTEXT, 64, reinterpret_cast<LPARAM>(text), SMTO_NORMAL, 5000,
                      nullptr);
  if (IsWindowVisible(window) && (!search.className || wcscmp(name, search.className) == 0) &&
      (!search.text || wcscmp(text, search.text) == 0) &&
      (search.process == 0 || process == search.process)) {
    search.found = window;
    return FALSE;
  }
  return TRUE;
}

HWND Child(HWND parent, const wchar_t* className, const wchar_t* text) {
  Search search{className, text, 0, nullptr};
  EnumChildWindows(parent, Look, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

// The program's window, once its last button is there; null when none appears.
HWND MainWindow(DWORD process) {
  for (int i = 0; i < kPatience; ++i) {
    Search search{nullptr, nullptr, process, nullptr};
    EnumWindows(Look, reinterpret_cast<LPARAM>(&search));
    if (search.found && Child(search.found, L"Button", L"Close")) return search.found;
    Sleep(100);
  }
  return nullptr;
}

bool EveryPageHasRows(HWND window) {
  bool all = true;
  for (const wchar_t* page : kPages) {
    HWND item = Child(window, L"Button", page);
    if (item) SendMessageW(item, BM_CLICK, 0, 0);
    HWND list = Child(window, WC_LISTVIEWW, nullptr);
    const LRESULT rows = item && list ? SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) : 0;
    std::printf("%ls: %d rows\n", page, static_cast<int>(rows));
    all &= rows > 0;
  }
  return all;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 2) return 2;
  std::wstring command = L"\"" + std::wstring(argv[1]) + L"\"";
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &process)) {
    std::printf("cannot start the program\n");
    return 1;
  }
  HWND window = MainWindow(process.dwProcessId);
  const bool all = window && EveryPageHasRows(window);
  if (window) PostMessageW(window, WM_CLOSE, 0, 0);
  if (!window || WaitForSingleObject(process.hProcess, 10000) != WAIT_OBJECT_0) {
    TerminateProcess(process.hProcess, 1);
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  std::printf(all ? "" : "a page of the sample is empty\n");
  return all ? 0 : 1;
}
