// The entries that software adds to the shell's context menu, its "New" menu and its "Send to"
// menu: the records of their rows, the scans and the removal of a key.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/messages.h"
#include "widgets/components.h"
#include "widgets/platform.h"

namespace tarvelin {

struct TShellExtension : TRecord {
  std::wstring Target;   // the command line of a verb or the class identifier of a handler
  std::wstring KeyPath;  // below HKEY_CLASSES_ROOT, with a leading backslash

  [[nodiscard]] std::vector<std::wstring> Details() const override {
    return {Target, L"HKEY_CLASSES_ROOT" + KeyPath};
  }
};

struct TNew : TRecord {
  std::wstring KeyPath;  // the ShellNew key below HKEY_CLASSES_ROOT, with a leading backslash

  [[nodiscard]] std::vector<std::wstring> Details() const override {
    return {L"HKEY_CLASSES_ROOT" + KeyPath};
  }
};

struct TSendTo : TRecord {
  std::wstring FilePath;  // of the entry in the "Send to" folder

  [[nodiscard]] std::vector<std::wstring> Details() const override { return {FilePath}; }
};

// Each scan fills an empty list and leaves any other alone.
void ScanShellExtensions(TPlatform& platform, const MessageLookup& messages, TListView& list);

// The rows' icons are appended to `images`. A malformed icon index may end the scan with TError;
// the rows added before stay.
void ScanNewMenu(TPlatform& platform, TListView& list, TImageList& images);
void ScanSendTo(TPlatform& platform, TListView& list, TImageList& images,
                std::wstring_view sendToFolder);

// Lists every entry of one folder; always 0.
int ScanFolderToList(TPlatform& platform, TListView& list, TImageList& images,
                     std::wstring_view folder);

// Whether a handler or verb belongs to Windows itself and is never shown.
[[nodiscard]] bool IsSystemShellEntry(std::wstring_view text);

// The description of a program identifier, empty when it has none.
[[nodiscard]] std::wstring GetTypeDescription(RegistryBackend& registry,
                                              std::wstring_view programId);

// HKEY_LOCAL_MACHINE's "ProgramFilesDir", empty when it cannot be read.
[[nodiscard]] std::wstring GetProgramFilesDir(RegistryBackend& registry);

// Deletes a key below HKEY_CLASSES_ROOT with everything below it; whether that worked is not told.
void RemoveShellKey(RegistryBackend& registry, std::wstring_view keyPath);

}  // namespace tarvelin
