// The Windows half of driving the registry editor.
#pragma once

#include <memory>

#include "common/registry_editor.h"

namespace tarvelin {

[[nodiscard]] std::unique_ptr<EditorWindows> MakeWindowsEditor();

}  // namespace tarvelin
