// The Windows half of modules, and from where the program itself may load any.
#pragma once

#include <memory>

#include "common/com_win.h"
#include "common/modules.h"

namespace tarvelin {

// Takes the program's folder and the current folder out of the search for DLLs, so that from then
// on a file that somebody dropped there is not loaded (SetDefaultDllDirectories, which Windows 8
// brings and KB2533623 added to Windows 7, and SetDllDirectoryW; a Windows 7 without that update
// still looks in the program's folder). What the program is linked to is loaded before: that is
// only what Windows takes from its own folders (tools/check-imports.sh). Keeps the system's own
// boxes about an empty card reader or a damaged library away as well (SetErrorMode). The first
// statement of the program.
void PrepareProcess();

// `com` outlives the result.
[[nodiscard]] std::unique_ptr<ModuleRegistrar> MakeWindowsModules(Com& com);

}  // namespace tarvelin
