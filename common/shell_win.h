// The Windows half of the shell.
#pragma once

#include <windows.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "common/com_win.h"
#include "common/handles_win.h"
#include "common/shell.h"

namespace tarvelin {

// An icon of the shell or of a file.
class WindowsIcon : public Icon {
 public:
  explicit WindowsIcon(UniqueIcon icon) : icon_(std::move(icon)) {}
  [[nodiscard]] HICON Handle() const { return icon_.Get(); }

 private:
  UniqueIcon icon_;
};

// `com` outlives the result.
[[nodiscard]] std::unique_ptr<Shell> MakeWindowsShell(Com& com);

// Runs a verb on a file and gives the process, if one was started; nullopt when Windows refuses
// (ShellExecuteExW with SEE_MASK_ flags and a show state).
std::optional<UniqueKernelObject> Execute(Com& com, const std::wstring& path, const wchar_t* verb,
                                          ULONG mask, int show);

}  // namespace tarvelin
