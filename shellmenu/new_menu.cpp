// The "New" page: the file types that the shell offers to create.
#include <utility>

#include "common/registry.h"
#include "shellmenu/extension_icon.h"
#include "shellmenu/shellmenu.h"
#include "widgets/list_update.h"

namespace tarvelin {
namespace {

// Whether a ShellNew key says how to create a file: it has a value besides its default one.
bool OffersNewFile(const std::vector<std::wstring>& valueNames) {
  return valueNames.size() > 1 || (valueNames.size() == 1 && !valueNames[0].empty());
}

}  // namespace

std::wstring GetTypeDescription(RegistryBackend& registry, std::wstring_view programId) {
  TRegistry access(registry, RootKey::LocalMachine);
  access.OpenKeyReadOnly(L"\\SOFTWARE\\Classes\\" + std::wstring(programId));
  return TextOrEmpty(access, L"");
}

void ScanNewMenu(TPlatform& platform, TListView& list, TImageList& images) {
  if (list.Count() > 0) return;
  const ListUpdate update(list);
  ExtensionIcons icons(platform, images);
  TRegistry registry(platform.registry, RootKey::ClassesRoot);
  registry.OpenKey(L"\\", true);
  for (const std::wstring& extension : registry.GetKeyNames()) {
    if (!extension.starts_with(L'.') || LowerCase(extension) == L".lnk") continue;
    const std::wstring extensionPath = L"\\" + extension;
    if (!registry.OpenKeyReadOnly(extensionPath)) continue;
    const std::wstring defaultValue = TextOrEmpty(registry, L"");
    registry.CloseKey();
    const std::wstring programId(Trim(defaultValue));
    if (programId.empty()) continue;

    std::wstring keyPath = extensionPath + L"\\" + programId + L"\\ShellNew";
    if (!registry.OpenKeyReadOnly(keyPath)) {
      keyPath = extensionPath + L"\\ShellNew";
      if (!registry.OpenKeyReadOnly(keyPath)) continue;
    }
    const std::vector<std::wstring> valueNames = registry.GetValueNames();
    registry.CloseKey();
    if (!OffersNewFile(valueNames)) continue;

    TListItem row;
    row.caption = GetTypeDescription(platform.registry, programId);
    if (row.caption.empty()) continue;
    row.imageIndex = icons.GetExtensionIcon(extension, defaultValue);
    auto record = std::make_shared<TNew>();
    record->KeyPath = std::move(keyPath);
    row.data = std::move(record);
    row.checked = true;  // not seen: the page has no check boxes
    list.Add(std::move(row));
  }
}

}  // namespace tarvelin
