#include "tests/win/driver.h"

// After windows.h, on which they depend.
#include <oleacc.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

#include "common/text.h"

namespace tarvelin::testing {

namespace {

constexpr DWORD kPatience = 40000;  // milliseconds
constexpr int kCellLength = 32768;

// Commands that have returned, by number. They are told about by messages to this thread.
std::set<std::size_t> returned;

void CALLBACK CommandReturned(HWND, UINT, ULONG_PTR number, LRESULT) { returned.insert(number); }

LRESULT Ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
  DWORD_PTR result = 0;
  if (!SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kPatience, &result)) {
    throw DriverError(L"a window did not answer message " + std::to_wstring(message));
  }
  return static_cast<LRESULT>(result);
}

BOOL CALLBACK Collect(HWND window, LPARAM windows) {
  reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
  return TRUE;
}

std::vector<HWND> Controls(HWND parent) {
  std::vector<HWND> windows;
  EnumChildWindows(parent, Collect, reinterpret_cast<LPARAM>(&windows));
  return windows;
}

// The visible window of a process that accepts input; null when there is none.
HWND ActiveWindow(DWORD process) {
  std::vector<HWND> windows;
  EnumWindows(Collect, reinterpret_cast<LPARAM>(&windows));
  const auto found = std::ranges::find_if(windows, [&](HWND window) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    return owner == process && IsWindowVisible(window) && IsWindowEnabled(window);
  });
  return found == windows.end() ? nullptr : *found;
}

bool Running(const UniqueProcess& process) {
  return WaitForSingleObject(process.Get(), 0) == WAIT_TIMEOUT;
}

DWORD ExitCode(const UniqueProcess& process) {
  WaitUntil([&] { return !Running(process); }, L"a process to end");
  DWORD code = STILL_ACTIVE;
  GetExitCodeProcess(process.Get(), &code);
  return code;
}

std::wstring TakeText(BSTR text) {
  std::wstring taken = text ? text : L"";
  SysFreeString(text);
  return taken;
}

}  // namespace

DriverError::DriverError(std::wstring_view message) : std::runtime_error(ToUtf8(message)) {}

void WaitUntil(const std::function<bool()>& condition, std::wstring_view what) {
  const ULONGLONG end = GetTickCount64() + kPatience;
  while (!condition()) {
    if (GetTickCount64() > end) throw DriverError(L"timed out waiting for " + std::wstring(what));
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  }
}

std::wstring Environment(const wchar_t* name) {
  std::wstring value(MAX_PATH * 4, L'\0');
  value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
  if (value.empty()) throw DriverError(std::wstring(name) + L" is not set");
  return value;
}

UniqueProcess Start(std::wstring commandLine, const std::wstring& currentFolder) {
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                      currentFolder.empty() ? nullptr : currentFolder.c_str(), &startup,
                      &process)) {
    throw DriverError(L"cannot start " + commandLine);
  }
  CloseHandle(process.hThread);
  return UniqueProcess(process.hProcess);
}

DWORD RunToEnd(const std::wstring& commandLine) { return ExitCode(Start(commandLine)); }

std::wstring CopyProgram(const std::wstring& folder) {
  const std::filesystem::path exe = Environment(L"TARVELIN_EXE");
  const std::filesystem::path target = folder;
  const auto replace = std::filesystem::copy_options::overwrite_existing;
  std::filesystem::create_directories(target);
  std::filesystem::copy(exe, target, replace);
  std::filesystem::copy(exe.parent_path() / L"Toolbox_Language", target / L"Toolbox_Language",
                        replace);
  return target / exe.filename();
}

std::wstring TextOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(Ask(window, WM_GETTEXTLENGTH)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(
      Ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

std::wstring ClassOf(HWND window) {
  wchar_t name[257] = L"";
  GetClassNameW(window, name, 257);
  return name;
}

void SetText(HWND edit, std::wstring_view text) {
  Ask(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(std::wstring(text).c_str()));
}

Accessible AccessibleOf(HWND window) {
  static const HRESULT ready = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  IAccessible* object = nullptr;
  if (FAILED(ready) || FAILED(AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT),
                                                         __uuidof(IAccessible),
                                                         reinterpret_cast<void**>(&object)))) {
    throw DriverError(L"no accessible object for " + TextOf(window));
  }
  VARIANT self{}, role{}, state{};
  self.vt = VT_I4;
  BSTR name = nullptr, action = nullptr;
  object->get_accName(self, &name);
  object->get_accRole(self, &role);
  object->get_accState(self, &state);
  object->get_accDefaultAction(self, &action);
  object->Release();
  return {TakeText(name), role.lVal, state.lVal, TakeText(action)};
}

std::vector<HWND> VisibleControls(HWND parent) {
  std::vector<HWND> windows = Controls(parent);
  std::erase_if(windows, [](HWND window) { return !IsWindowVisible(window); });
  return windows;
}

HWND FindControl(HWND parent, std::wstring_view className, std::wstring_view text) {
  // Most often it is the one of the last time, and asking all windows takes long.
  static std::map<std::pair<std::wstring, std::wstring>, HWND> found;
  const auto fits = [&](HWND window) {
    return SameText(ClassOf(window), className) && IsWindowVisible(window) &&
           (text.empty() || TextOf(window) == text);
  };
  HWND& known = found[{std::wstring(className), std::wstring(text)}];
  if (IsChild(parent, known) && fits(known)) return known;
  for (HWND window : Controls(parent)) {
    if (fits(window)) return known = window;
  }
  throw DriverError(L"no visible " + std::wstring(className) + L" \"" + std::wstring(text) + L"\"");
}

void PointAt(HWND window, LONG x, LONG y) {
  POINT place{x, y};
  ClientToScreen(window, &place);
  SetCursorPos(place.x, place.y);
}

std::wstring ShownTip() {
  for (HWND tip = nullptr; (tip = FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr));) {
    if (IsWindowVisible(tip)) return TextOf(tip);
  }
  return {};
}

void PrintTo(const Box& box, std::ostream* stream) {
  *stream << ToUtf8(box.caption + L": \"" + box.text) << (box.icon ? "\", icon" : "\"");
  for (const int button : box.buttons) *stream << ", button " << button;
}

// ---- The process ----

void ProcessTraits::Close(HANDLE process) {
  TerminateProcess(process, 99);
  WaitForSingleObject(process, kPatience);
  CloseHandle(process);
}

Program::Program(const std::wstring& exe, const std::wstring& currentFolder)
    : process_(Start(L"\"" + exe + L"\"", currentFolder)),
      remote_(VirtualAllocEx(process_.Get(), nullptr,
                             sizeof(LVITEMW) + kCellLength * sizeof(wchar_t), MEM_COMMIT,
                             PAGE_READWRITE)) {
  const auto started = [this] {
    window_ = ActiveWindow(ProcessId());
    return window_ || !Running(process_);
  };
  WaitUntil(started, L"the program's window");
  if (!window_) throw DriverError(L"ended with code " + std::to_wstring(WaitForExit()));
}

DWORD Program::WaitForExit() { return ExitCode(process_); }

DWORD Program::Close() {
  PostMessageW(window_, WM_CLOSE, 0, 0);
  return WaitForExit();
}

// ---- Commands ----

HWND Program::Button(std::wstring_view caption) const {
  return FindControl(window_, L"Button", caption);
}

bool Program::Enabled(std::wstring_view caption) const { return IsWindowEnabled(Button(caption)); }

void Program::Click(std::wstring_view caption) {
  HWND button = Button(caption);
  if (!IsWindowEnabled(button)) throw DriverError(L"disabled: " + std::wstring(caption));
  Act(button, BM_CLICK);
}

void Program::Act(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  static std::size_t number = 0;
  HWND former = Modal();
  commands_.push_back(++number);
  if (!SendMessageCallbackW(window, message, wParam, lParam, CommandReturned, number)) {
    throw DriverError(L"cannot send message " + std::to_wstring(message));
  }
  AwaitCommand(former);
}

void Program::AwaitCommand(HWND former) {
  const std::size_t sent = commands_.size();
  const auto settled = [&] {
    std::erase_if(commands_, [](std::size_t command) { return returned.contains(command); });
    if (commands_.empty() || !Running(process_)) return true;
    // What the last command was sent to may be a dialog that stays open; then earlier commands wait
    // for it. Otherwise all of them return.
    HWND modal = Modal();
    return modal && (modal != former || commands_.size() < sent);
  };
  WaitUntil(settled, L"a command to end or to ask");
}

HWND Program::Focused() const {
  GUITHREADINFO info{};
  info.cbSize = sizeof(info);
  GetGUIThreadInfo(GetWindowThreadProcessId(window_, nullptr), &info);
  return info.hwndFocus;
}

void Program::Press(WORD key) {
  PostMessageW(Focused(), WM_KEYDOWN, key, 1);
  PostMessageW(Focused(), WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
  AwaitKeys();
}

void Program::Hold(WORD key) {
  for (int repeat = 0; repeat < 30; ++repeat) {
    PostMessageW(Focused(), WM_KEYDOWN, key, static_cast<LPARAM>(0x40000001));
    if (repeat % 10 == 0) AwaitKeys();
  }
  AwaitKeys();
}

void Program::AwaitKeys() {
  // The keys have been handled when this message, which comes after them and changes nothing that
  // anybody sees, has been; and the characters that they type, which are posted only then, when a
  // second one has been.
  static LPARAM mark = 1000;
  for (const LPARAM last = mark + 2; mark < last && Running(process_);) {
    PostMessageW(List(), LVM_SETHOVERTIME, 0, ++mark);
    WaitUntil([&] { return !Running(process_) || Ask(List(), LVM_GETHOVERTIME) == mark; },
              L"a key");
  }
}

HWND Program::Modal() const {
  // The window is disabled for a moment as well while a module runs.
  HWND active = IsWindowEnabled(window_) ? nullptr : ActiveWindow(ProcessId());
  return active == window_ ? nullptr : active;
}

Box Program::Answer(int answer, WORD key) {
  HWND window = Modal();
  if (!window || ClassOf(window) != L"#32770") throw DriverError(L"no message box is open");
  Box box{TextOf(window), TextOf(GetDlgItem(window, 0xFFFF)), {}, false};
  for (int button : {IDOK, IDCANCEL, IDYES, IDNO}) {
    HWND control = GetDlgItem(window, button);
    if (control && IsWindowVisible(control)) box.buttons.push_back(button);
  }
  for (HWND control : VisibleControls(window)) {
    box.icon |= ClassOf(control) == L"Static" && Ask(control, STM_GETICON) != 0;
  }
  if (std::ranges::find(box.buttons, answer) == box.buttons.end()) {
    throw DriverError(L"the box has no button " + std::to_wstring(answer));
  }
  if (key) Press(key);
  if (!key) PostMessageW(window, WM_COMMAND, static_cast<WPARAM>(answer), 0);
  WaitUntil([&] { return !IsWindow(window); }, L"the box to close");
  AwaitCommand(nullptr);
  return box;
}

// ---- The list ----

HWND Program::List() const { return FindControl(window_, WC_LISTVIEWW, L""); }

int Program::RowCount() const { return static_cast<int>(Ask(List(), LVM_GETITEMCOUNT)); }

template <class Item>
LRESULT Program::AskWithItem(HWND list, UINT message, int row, Item& item) const {
  SIZE_T done = 0;
  if (!WriteProcessMemory(process_.Get(), remote_, &item, sizeof(item), &done)) {
    throw DriverError(L"cannot write the program's memory");
  }
  const LRESULT result =
      Ask(list, message, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(remote_));
  ReadProcessMemory(process_.Get(), remote_, &item, sizeof(item), &done);
  return result;
}

std::wstring Program::CellText(HWND list, int row, int column) const {
  LVITEMW item{};
  item.iSubItem = column;
  item.pszText = reinterpret_cast<wchar_t*>(static_cast<LVITEMW*>(remote_) + 1);
  item.cchTextMax = kCellLength;
  std::wstring text(static_cast<std::size_t>(AskWithItem(list, LVM_GETITEMTEXTW, row, item)),
                    L'\0');
  SIZE_T done = 0;
  ReadProcessMemory(process_.Get(), item.pszText, text.data(), text.size() * sizeof(wchar_t),
                    &done);
  return text;
}

Program::Texts Program::Rows() const {
  HWND list = List();
  const auto columns = Ask(reinterpret_cast<HWND>(Ask(list, LVM_GETHEADER)), HDM_GETITEMCOUNT);
  Texts rows(static_cast<std::size_t>(RowCount()));
  for (int row = 0; auto& cells : rows) {
    for (int column = 0; column < columns; ++column) cells.push_back(CellText(list, row, column));
    ++row;
  }
  return rows;
}

std::vector<int> Program::Images() const {
  HWND list = List();
  std::vector<int> images;
  for (int row = 0; row < RowCount(); ++row) {
    LVITEMW item{};
    item.mask = LVIF_IMAGE;
    item.iItem = row;
    AskWithItem(list, LVM_GETITEMW, row, item);
    images.push_back(item.iImage);
  }
  return images;
}

int Program::RowOf(std::wstring_view text) const {
  HWND list = List();
  for (int row = 0, count = RowCount(); row < count; ++row) {
    if (CellText(list, row, 0) == text) return row;
  }
  throw DriverError(L"no row \"" + std::wstring(text) + L"\"");
}

int Program::Selected() const {
  return static_cast<int>(Ask(List(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
}

void Program::SetRowState(int row, UINT state, UINT mask) {
  LVITEMW item{};
  item.state = state;
  item.stateMask = mask;
  AskWithItem(List(), LVM_SETITEMSTATE, row, item);
}

void Program::Select(int row) {
  const UINT selected = LVIS_SELECTED | LVIS_FOCUSED;
  SetRowState(row, row < 0 ? 0 : selected, selected);
  if (Selected() != row) throw DriverError(L"cannot select row " + std::to_wstring(row));
}

bool Program::Checked(int row) const {
  return Ask(List(), LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_STATEIMAGEMASK) ==
         INDEXTOSTATEIMAGEMASK(2);
}

void Program::Check(int row, bool checked) {
  SetRowState(row, INDEXTOSTATEIMAGEMASK(checked ? 2U : 1U), LVIS_STATEIMAGEMASK);
}

void Program::DoubleClick(int row) {
  HWND list = List();
  RECT place{};
  GetClientRect(list, &place);
  place.top = place.bottom - 4;
  if (row >= 0) {
    place.left = LVIR_LABEL;
    AskWithItem(list, LVM_GETITEMRECT, row, place);
  }
  Act(list, WM_LBUTTONDBLCLK, MK_LBUTTON, MAKELPARAM(place.left + 2, place.top + 2));
}

Program::Texts Program::Open(std::wstring_view item) {
  Click(item);
  return Rows();
}

}  // namespace tarvelin::testing
