// The Windows half of driving the registry editor.
#pragma once

#include <memory>

#include "common/com_win.h"
#include "common/registry_editor.h"

namespace tarvelin {

// `com` outlives the result.
[[nodiscard]] std::unique_ptr<EditorWindows> MakeWindowsEditor(Com& com);

}  // namespace tarvelin
