// Version resources of files.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "common/handles_win.h"
#include "common/shell.h"

namespace tarvelin {

// The functions of version.dll, loaded at the first use. It is none of the libraries that Windows
// takes from its own folder whatever lies beside the program, so it is not linked but named by its
// full path.
class VersionLibrary {
 public:
  // The version resource of a file (GetFileVersionInfoW), null when it has none that can be read.
  // The file may be broken or made to do harm. The resource must not outlive this object.
  [[nodiscard]] std::unique_ptr<VersionResource> Open(const std::wstring& path);

 private:
  UniqueModule module_;
};

}  // namespace tarvelin
