// The Windows halves of the platform's interfaces.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "common/handles_win.h"
#include "common/platform.h"

namespace tarvelin {

// Takes the program's folder and the current folder out of the search for DLLs, so that from then
// on a file that somebody dropped there is not loaded (SetDefaultDllDirectories, which Windows 8
// brings and KB2533623 added to Windows 7, and SetDllDirectoryW; a Windows 7 without that update
// still looks in the program's folder). What the program is linked to is loaded before: that is
// only what Windows takes from its own folders (tools/check-imports.sh). Keeps the system's own
// boxes about an empty card reader or a damaged library away as well (SetErrorMode). The first
// statement of the program.
void PrepareProcess();

// An icon of the shell or of a file.
class WindowsIcon : public Icon {
 public:
  explicit WindowsIcon(UniqueIcon icon) : icon_(std::move(icon)) {}
  [[nodiscard]] HICON Handle() const { return icon_.Get(); }

 private:
  UniqueIcon icon_;
};

// Everything that the program asks of Windows. Used by the thread that has the windows.
class WindowsPlatform {
 public:
  WindowsPlatform();
  ~WindowsPlatform();

  // The interfaces; they live as long as this object.
  [[nodiscard]] TPlatform& Get();

  // The window whose last active popup owns the message boxes; until it is set, or after null was
  // set, the thread's active window does.
  void SetMainWindow(HWND window);

  // What Display::ProcessMessages runs. Without one it dispatches the waiting messages
  // (PeekMessageW), and leaves a request to quit in the queue.
  void SetMessagePump(std::function<void()> pump);

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace tarvelin
