// What the program asks of Windows, as small interfaces. Each has one implementation over Win32 and
// one scripted double for the tests.
#pragma once

#include "common/clipboard.h"
#include "common/files.h"
#include "common/modules.h"
#include "common/registry.h"
#include "common/registry_editor.h"
#include "common/shell.h"
#include "widgets/display.h"
#include "widgets/message_boxes.h"
#include "widgets/pictures.h"

namespace tarvelin {

// All of them, handed to the windows and the scanner. The referenced objects outlive both.
struct TPlatform {
  RegistryBackend& registry;
  FileSystem& files;
  ModuleRegistrar& modules;
  Shell& shell;
  MessageBoxes& boxes;
  EditorWindows& editor;
  Resources& resources;
  Display& display;
  Clipboard& clipboard;
};

}  // namespace tarvelin
