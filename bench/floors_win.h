// Floors: what the least program does that could do the same work, the bare calls to Windows in a
// loop that keeps nothing. What the program takes beyond its floor is its own.
#pragma once

#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>

#include <functional>
#include <string>
#include <string_view>

#include "common/handles_win.h"

namespace tarvelin::bench {

inline const std::wstring kFolder = L"C:\\bench\\";
inline const std::wstring kSendTo = kFolder + L"sendto\\";
inline constexpr int kFiles = 50;  // icons and modules that the entries share, 10.ico to 59.ico

// Does the calls of one scan, by its name in the seeds, and adds its icons to an image list unless
// that is null. Returns how many entries passed, so that a seed that does not fit is noticed.
int ScanFloor(const std::wstring& scan, HIMAGELIST images);

using CellText = std::function<std::wstring_view(int row, int column)>;

// A shown window with a list that asks for the texts of the rows that are to be seen.
class BareList {
 public:
  BareList();
  ~BareList() { DestroyWindow(window_); }
  BareList(const BareList&) = delete;
  BareList& operator=(const BareList&) = delete;
  // The texts are those that the page shows, since drawing takes the longer the longer they are;
  // with empty check boxes when the page gives each row one.
  void Show(int rows, bool checkBoxes, const CellText& text);
  [[nodiscard]] HWND Handle() const { return list_; }
  [[nodiscard]] HIMAGELIST Images() const { return images_.Get(); }

 private:
  UniqueImageList images_;
  HWND window_;
  HWND list_;
};

}  // namespace tarvelin::bench
