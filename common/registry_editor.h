// Showing a key in the system's registry editor, which has no interface for that: its window is
// driven by keystrokes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarvelin {

// What the registry editor's window is driven with; a window is an opaque number, 0 being none.
class EditorWindows {
 public:
  using Window = std::uintptr_t;
  enum class Key : int { Home = 0x24, Left = 0x25, Right = 0x27 };

  virtual ~EditorWindows() = default;
  [[nodiscard]] virtual Window FindTopLevel(const std::wstring& className) = 0;
  [[nodiscard]] virtual Window FindChild(Window parent, const std::wstring& className) = 0;
  // Starts the system's registry editor by its full path, maximised, and waits until it is idle.
  virtual void StartEditor() = 0;
  virtual void Maximize(Window window) = 0;
  virtual void BringToForeground(Window window) = 0;
  virtual void SetFocusTo(Window window) = 0;
  virtual void SendKeyDown(Window window, Key key) = 0;
  virtual void SendChar(Window window, wchar_t character) = 0;
  virtual void Pause(int milliseconds) = 0;
};

// Finds or starts the editor, walks its tree to the key and selects the value whose name begins
// with `valueName`, or the first one. False when the editor can neither be found nor started.
bool OpenRegEditAt(EditorWindows& editor, std::wstring_view keyPath, std::wstring_view valueName);

// The editor's main window, started if need be; 0 when it cannot be found.
[[nodiscard]] EditorWindows::Window FindOrStartRegEdit(EditorWindows& editor);

[[nodiscard]] std::wstring EnsureLeadingBackslash(std::wstring_view path);

}  // namespace tarvelin
