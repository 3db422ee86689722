// Stands in for the system's registry editor: a window of its class with panes of its panes'
// classes, which write down each key and character in C:\editor.log, a line for each in UTF-16.
#include <windows.h>

#include <string>

#include "common/handles_win.h"

namespace {

void Log(const std::wstring& line) {
  const tarvelin::UniqueFile file(CreateFileW(L"C:\\editor.log", FILE_APPEND_DATA, FILE_SHARE_READ,
                                              nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                              nullptr));
  DWORD done = 0;
  WriteFile(file.Get(), line.data(), static_cast<DWORD>(line.size() * sizeof(wchar_t)), &done,
            nullptr);
}

LRESULT CALLBACK PaneProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const std::wstring pane = GetDlgCtrlID(window) == 1 ? L"tree " : L"list ";
  if (message == WM_KEYDOWN) Log(pane + L"key " + std::to_wstring(wParam) + L"\n");
  if (message == WM_CHAR) Log(pane + L"char " + static_cast<wchar_t>(wParam) + L"\n");
  return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK FrameProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DESTROY) PostQuitMessage(0);
  return DefWindowProcW(window, message, wParam, lParam);
}

HWND Create(const wchar_t* className, WNDPROC procedure, DWORD style, HWND parent, UINT_PTR id) {
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = procedure;
  windowClass.lpszClassName = className;
  RegisterClassW(&windowClass);
  return CreateWindowExW(0, className, className, style | WS_VISIBLE, 0, 0, 200, 100, parent,
                         reinterpret_cast<HMENU>(id), nullptr, nullptr);
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  HWND frame = Create(L"RegEdit_RegEdit", FrameProc, WS_OVERLAPPEDWINDOW, nullptr, 0);
  Create(L"SysTreeView32", PaneProc, WS_CHILD, frame, 1);
  Create(L"SysListView32", PaneProc, WS_CHILD, frame, 2);
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
  return 0;
}
