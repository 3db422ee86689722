#include "common/registry_editor.h"

#include "common/text.h"

namespace tarvelin {
namespace {

using Key = EditorWindows::Key;

// More levels than a key below HKEY_CLASSES_ROOT is likely to have, each worth a step up the tree.
constexpr int kStepsToRoot = 20;

// What the editor needs to expand a node or to fill its value list.
constexpr int kPauseMilliseconds = 100;

void BringToFront(EditorWindows& editor, EditorWindows::Window window) {
  editor.BringToForeground(window);
  editor.SetFocusTo(window);
}

}  // namespace

EditorWindows::Window FindOrStartRegEdit(EditorWindows& editor) {
  static const std::wstring kClassName = L"RegEdit_RegEdit";
  if (const auto window = editor.FindTopLevel(kClassName)) return window;
  editor.StartEditor();
  return editor.FindTopLevel(kClassName);
}

std::wstring EnsureLeadingBackslash(std::wstring_view path) {
  if (path.empty() || path.starts_with(L'\\')) return std::wstring(path);
  return L"\\" + std::wstring(path);
}

bool OpenRegEditAt(EditorWindows& editor, std::wstring_view keyPath, std::wstring_view valueName) {
  const auto window = FindOrStartRegEdit(editor);
  if (!window) return false;
  editor.Maximize(window);
  editor.BringToForeground(window);

  const auto tree = editor.FindChild(window, L"SysTreeView32");
  for (int step = 0; step < kStepsToRoot; ++step) editor.SendKeyDown(tree, Key::Left);
  editor.Pause(kPauseMilliseconds);
  BringToFront(editor, tree);
  for (const wchar_t c : EnsureLeadingBackslash(keyPath)) {
    if (c == L'\\') {
      editor.SendKeyDown(tree, Key::Right);  // expands the node and steps into it
      editor.Pause(kPauseMilliseconds);
    } else {
      editor.SendChar(tree, c);  // the tree selects the child that begins with what was typed
    }
  }

  const auto values = editor.FindChild(window, L"SysListView32");
  BringToFront(editor, values);
  editor.Pause(kPauseMilliseconds);
  editor.SendKeyDown(values, Key::Home);
  for (const wchar_t c : UpperCase(valueName)) editor.SendChar(values, c);
  return true;
}

}  // namespace tarvelin
