// Showing a key in the system's registry editor, which has no interface for that: its window is
// driven by keystrokes.
#pragma once

#include <string>
#include <string_view>

#include "common/platform.h"

namespace tarvelin {

// Finds or starts the editor, walks its tree to the key and selects the value whose name begins
// with `valueName`, or the first one. False when the editor can neither be found nor started.
bool OpenRegEditAt(EditorWindows& editor, std::wstring_view keyPath, std::wstring_view valueName);

// The editor's main window, started if need be; 0 when it cannot be found.
[[nodiscard]] EditorWindows::Window FindOrStartRegEdit(EditorWindows& editor);

[[nodiscard]] std::wstring EnsureLeadingBackslash(std::wstring_view path);

}  // namespace tarvelin
