// One running copy of the program for each user's desktop.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "common/handles_win.h"

namespace tarvelin {

// Brings a window to the foreground, restored when it is minimised (SetForegroundWindow, with
// AttachThreadInput or without the foreground lock where Windows would only flash the task-bar
// button). Returns whether it is the foreground window then.
bool BringToForeground(HWND window);

// The first copy's claim to be the only one, and its ear for the copies that are started later. The
// claim goes by the file name of the executable as it is on disk, so that a renamed copy runs
// beside this one, and one that was started by another spelling does not.
class UniqueInstance {
 public:
  // Null when the program must end without a word: another copy runs, which has been asked to show
  // itself, or Windows refuses the marker (CreateMutexW).
  [[nodiscard]] static std::unique_ptr<UniqueInstance> Claim(HINSTANCE instance,
                                                             const std::wstring& executablePath);

  UniqueInstance(const UniqueInstance&) = delete;
  UniqueInstance& operator=(const UniqueInstance&) = delete;
  ~UniqueInstance();

  // The window that a second start brings to the front, together with the dialog or message box
  // that it may have open.
  void SetMainWindow(HWND window) { mainWindow_ = window; }

 private:
  UniqueInstance(HINSTANCE instance, UINT message, UniqueKernelObject mutex);
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  void Raise();

  UINT message_;
  UniqueKernelObject mutex_;
  HWND applicationWindow_ = nullptr;
  HWND mainWindow_ = nullptr;
};

}  // namespace tarvelin
