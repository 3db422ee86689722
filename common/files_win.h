// The Windows half of files.
#pragma once

#include <memory>
#include <string>

#include "common/files.h"

namespace tarvelin {

[[nodiscard]] std::unique_ptr<FileSystem> MakeWindowsFiles();

// GetWindowsDirectoryW and GetSystemDirectoryW, without a trailing backslash.
[[nodiscard]] std::wstring WindowsFolder();
[[nodiscard]] std::wstring SystemFolder();

}  // namespace tarvelin
