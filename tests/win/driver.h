// Drives the real program from outside, as a user and a screen reader do. Every wait ends: what
// does not happen in time, or a control that is not there, throws DriverError, which the test
// framework reports with its message.
#pragma once

#include <windows.h>

#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/handles_win.h"

namespace tarvelin::testing {

class DriverError : public std::runtime_error {
 public:
  explicit DriverError(std::wstring_view message);
};

// Polls until `condition` holds; `what` completes "timed out waiting for ...".
void WaitUntil(const std::function<bool()>& condition, std::wstring_view what);

// A variable that the runner sets, such as TARVELIN_EXE.
[[nodiscard]] std::wstring Environment(const wchar_t* name);

// Copies the program with its language files into a folder and returns the path of the copy.
std::wstring CopyProgram(const std::wstring& folder);

// What a window tells others about itself. The text is read from the control, not from a cache.
[[nodiscard]] std::wstring TextOf(HWND window);
[[nodiscard]] std::wstring ClassOf(HWND window);
void SetText(HWND edit, std::wstring_view text);

// What a screen reader is told about a control (oleacc's role and state numbers).
struct Accessible {
  std::wstring name;
  long role = 0;
  long state = 0;
  std::wstring action;
};
[[nodiscard]] Accessible AccessibleOf(HWND window);

// The visible windows inside a window, at any depth, from the top of the Z order.
[[nodiscard]] std::vector<HWND> VisibleControls(HWND parent);

// The one among them of that class with that text; an empty text means any.
[[nodiscard]] HWND FindControl(HWND parent, std::wstring_view className, std::wstring_view text);

// Moves the pointer to a place in a window. The tool tip that comes of it, empty while none is
// seen.
void PointAt(HWND window, LONG x, LONG y);
[[nodiscard]] std::wstring ShownTip();

// A message box.
struct Box {
  std::wstring caption;
  std::wstring text;
  std::vector<int> buttons;  // IDOK, IDYES, IDNO
  bool icon = false;
  bool operator==(const Box&) const = default;
};
void PrintTo(const Box& box, std::ostream* stream);  // for the test framework

// A process ends with the handle to it.
struct ProcessTraits : NullHandleTraits<HANDLE> {
  static void Close(HANDLE process);
};
using UniqueProcess = UniqueHandle<ProcessTraits>;
UniqueProcess Start(std::wstring commandLine, const std::wstring& currentFolder = L"");

// Runs a program to its end and returns its exit code.
DWORD RunToEnd(const std::wstring& commandLine);

// The running program. A command returns once it has been carried out or has opened a modal window:
// when no box is open afterwards, none will come.
class Program {
 public:
  // Starts it, TARVELIN_EXE by default, and waits until its window shows the first page.
  Program() : Program(Environment(L"TARVELIN_EXE")) {}
  explicit Program(const std::wstring& exe, const std::wstring& currentFolder = L"");

  [[nodiscard]] HWND Window() const { return window_; }
  [[nodiscard]] DWORD ProcessId() const { return GetProcessId(process_.Get()); }
  DWORD WaitForExit();  // returns the exit code
  DWORD Close();        // closes the main window like the user and waits; returns the exit code

  // A visible control in the main window; buttons, navigation items and check boxes are "Button".
  [[nodiscard]] HWND Button(std::wstring_view caption) const;
  [[nodiscard]] bool Enabled(std::wstring_view caption) const;

  void Click(std::wstring_view caption);  // a button, a check box or a navigation item
  // Sends a message as part of a command, such as BM_CLICK to a control of a dialog.
  void Act(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
  // A key, pressed and released in the control that has the focus.
  void Press(WORD key);
  // The repeats of a key that stays down, as many as come in a second.
  void Hold(WORD key);
  [[nodiscard]] HWND Focused() const;

  // The list of the page that is shown.
  using Texts = std::vector<std::vector<std::wstring>>;
  [[nodiscard]] HWND List() const;
  [[nodiscard]] int RowCount() const;
  [[nodiscard]] Texts Rows() const;  // every column of every row
  [[nodiscard]] std::vector<int> Images() const;
  [[nodiscard]] int RowOf(std::wstring_view text) const;  // by the first column
  [[nodiscard]] int Selected() const;                     // -1 when none is
  void Select(int row);                                   // -1 clears the selection
  [[nodiscard]] bool Checked(int row) const;
  void Check(int row, bool checked);
  void DoubleClick(int row);  // -1: below the rows

  // Opens a page by its navigation item and returns its rows.
  Texts Open(std::wstring_view item);

  // The modal window that is open, null when there is none.
  [[nodiscard]] HWND Modal() const;
  // Answers the message box that is open, by a key where one is given; the command goes on as far
  // as it can.
  Box Answer(int button, WORD key = 0);

 private:
  template <class Item>
  LRESULT AskWithItem(HWND list, UINT message, int row, Item& item) const;
  [[nodiscard]] std::wstring CellText(HWND list, int row, int column) const;
  void SetRowState(int row, UINT state, UINT mask);
  void AwaitKeys();
  void AwaitCommand(HWND former);

  UniqueProcess process_;
  void* remote_ = nullptr;  // in the program's memory
  HWND window_ = nullptr;
  std::vector<std::size_t> commands_;  // that have not returned
};

}  // namespace tarvelin::testing
