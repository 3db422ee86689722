// The least program that shows a window with a themed list of 60 rows: what starting the real one
// is measured beside.
#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>

namespace {

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DESTROY) PostQuitMessage(0);
  return DefWindowProcW(window, message, wParam, lParam);
}

HWND CreateFilledList(HWND window) {
  HWND list = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE | LVS_REPORT, 178, 69,
                              565, 323, window, nullptr, nullptr, nullptr);
  SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_FULLROWSELECT);
  LVCOLUMNW column{};
  column.mask = LVCF_TEXT | LVCF_WIDTH;
  column.cx = 260;
  wchar_t header[] = L"Type";
  column.pszText = header;
  for (int i = 0; i < 2; ++i) {
    SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i),
                 reinterpret_cast<LPARAM>(&column));
  }
  wchar_t text[] = L"All Files(ContextMenu)";
  LVITEMW item{};
  item.mask = LVIF_TEXT;
  item.pszText = text;
  for (item.iItem = 0; item.iItem < 60; ++item.iItem) {
    item.iSubItem = 0;
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    item.iSubItem = 1;
    SendMessageW(list, LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }
  return list;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show) {
  const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_LISTVIEW_CLASSES};
  InitCommonControlsEx(&controls);
  WNDCLASSW type{};
  type.lpfnWndProc = Procedure;
  type.hInstance = instance;
  type.lpszClassName = L"BareProgram";
  type.hCursor = LoadCursorW(nullptr, reinterpret_cast<const wchar_t*>(IDC_ARROW));
  type.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
  RegisterClassW(&type);
  HWND window = CreateWindowExW(0, type.lpszClassName, L"Bare",
                                WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX, 100, 100,
                                749, 507, nullptr, nullptr, instance, nullptr);
  SetFocus(CreateFilledList(window));
  ShowWindow(window, show);
  MSG message{};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return 0;
}
