// The "Shell Extensions" page: verbs and context-menu handlers of files, folders, drives and the
// Recycle Bin.
#include <optional>
#include <utility>

#include "common/registry.h"
#include "shellmenu/shellmenu.h"

namespace tarvelin {
namespace {

enum class EntryKind { FileVerb, RecycleBinVerb, DirectoryVerb, Handler };

// Which texts are held against the entries of Windows itself.
enum class Filter { None, Name, Target, Both };

struct Category {
  std::wstring_view parent;  // below HKEY_CLASSES_ROOT; its subkeys are the entries
  EntryKind kind;
  Filter filter;
  Text category;
  Text kindWord;
  int image;
};

// In the order of the page. Recycle Bin verbs go by the name of handlers there.
constexpr Category kCategories[] = {
    {L"\\*\\shell", EntryKind::FileVerb, Filter::Name, messages::kAllFile, messages::kShell, 5},
    {L"\\*\\shellex\\ContextMenuHandlers", EntryKind::Handler, Filter::Both, messages::kAllFile,
     messages::kContextMenu, 0},
    {L"\\CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell", EntryKind::RecycleBinVerb,
     Filter::None, messages::kRecycleBin, messages::kContextMenu, 3},
    {L"\\Directory\\shell", EntryKind::DirectoryVerb, Filter::Target, messages::kDirectory,
     messages::kShell, 4},
    {L"\\Directory\\shellex\\ContextMenuHandlers", EntryKind::Handler, Filter::Target,
     messages::kDirectory, messages::kContextMenu, 4},
    {L"\\Folder\\shellex\\ContextMenuHandlers", EntryKind::Handler, Filter::Target,
     messages::kFolder, messages::kContextMenu, 1},
    {L"\\Drive\\shellex\\ContextMenuHandlers", EntryKind::Handler, Filter::Both, messages::kDrive,
     messages::kContextMenu, 2},
};

struct Entry {
  std::wstring caption;
  std::wstring target;
  std::wstring keyPath;
};

// The entry behind one subkey of a category's parent; nullopt when it is none. Opening a key is
// also the test of its existence, so that no key costs two opens.
std::optional<Entry> ReadEntry(TRegistry& registry, EntryKind kind, const std::wstring& name,
                               const std::wstring& keyPath) {
  switch (kind) {
    case EntryKind::FileVerb: {
      // Removal takes the command alone; without it the verb is neither offered nor listed.
      const std::wstring commandPath = keyPath + L"\\Command";
      if (!registry.OpenKeyReadOnly(commandPath)) return std::nullopt;
      return Entry{name, TextOrEmpty(registry, L""), commandPath};
    }
    case EntryKind::RecycleBinVerb: {
      if (!registry.OpenKeyReadOnly(keyPath)) return std::nullopt;
      const std::wstring displayText = TextOrEmpty(registry, L"");
      // Without a command the verb's own key stays open, and its display text is the target.
      registry.OpenKeyReadOnly(keyPath + L"\\command");
      return Entry{displayText, TextOrEmpty(registry, L""), keyPath};
    }
    case EntryKind::DirectoryVerb: {
      if (!registry.OpenKeyReadOnly(keyPath)) return std::nullopt;
      const std::wstring displayText = TextOrEmpty(registry, L"");
      if (displayText.empty()) return std::nullopt;
      if (!registry.OpenKeyReadOnly(keyPath + L"\\command")) return std::nullopt;
      return Entry{displayText, TextOrEmpty(registry, L""), keyPath};
    }
    case EntryKind::Handler:
      break;
  }
  if (!registry.OpenKeyReadOnly(keyPath)) return std::nullopt;
  return Entry{name, TextOrEmpty(registry, L""), keyPath};
}

bool IsHidden(Filter filter, std::wstring_view name, std::wstring_view target) {
  const bool byName = filter == Filter::Name || filter == Filter::Both;
  const bool byTarget = filter == Filter::Target || filter == Filter::Both;
  return (byName && IsSystemShellEntry(name)) || (byTarget && IsSystemShellEntry(target));
}

}  // namespace

bool IsSystemShellEntry(std::wstring_view text) {
  // The last pattern never matches a text in lower case: an entry that opens a command prompt is
  // shown like any other.
  static constexpr std::wstring_view kPatterns[] = {
      L"{a2a9545d-a0c2-42b4-9708-a0b2badd77c8}",
      L"{750fdf0e-2a26-11d1-a3ea-080036587f03}",
      L"{f81e9010-6ea4-11ce-a7ff-00aa003ca9f6}",
      L"{d6791a63-e7e2-4fee-bf52-5ded8e86e9b8}",
      L"{a470f8cf-a1e8-4f65-8335-227475aa5c46}",
      L"{09799afb-ad67-11d1-abcd-00c04fc30936}",
      L"cmd.exe /k \"cd %L\"",
  };
  if (text.empty()) return true;
  const std::wstring lower = LowerCase(text);
  for (const std::wstring_view pattern : kPatterns) {
    if (lower.find(pattern) != std::wstring::npos) return true;
  }
  return false;
}

void ScanShellExtensions(TPlatform& platform, const MessageLookup& messages, TListView& list) {
  if (list.Count() > 0) return;
  TRegistry registry(platform.registry, RootKey::ClassesRoot);
  for (const Category& category : kCategories) {
    if (!registry.OpenKey(category.parent, true)) continue;
    const std::vector<std::wstring> names = registry.GetKeyNames();
    registry.CloseKey();

    const std::wstring categoryText =
        messages.Message(category.category) + L"(" + messages.Message(category.kindWord) + L")";
    for (const std::wstring& name : names) {
      std::wstring keyPath(category.parent);
      keyPath += L"\\" + name;
      auto entry = ReadEntry(registry, category.kind, name, keyPath);
      if (!entry || IsHidden(category.filter, name, entry->target)) continue;

      auto record = std::make_shared<TShellExtension>();
      record->Target = std::move(entry->target);
      record->KeyPath = std::move(entry->keyPath);
      TListItem row;
      row.caption = std::move(entry->caption);
      row.subItems.push_back(categoryText);
      row.imageIndex = category.image;
      row.data = std::move(record);
      list.Add(std::move(row));
    }
  }
}

}  // namespace tarvelin
