// Reading the watched settings into the settings page and putting them back to their defaults.
#include <exception>
#include <memory>
#include <utility>
#include <vector>

#include "settings/settings.h"

namespace tarvelin {

bool WriteSetting(RegistryBackend& registry, const TIESec& record, std::wstring_view text) {
  const RegistryLocation place = ParseValueLocation(record.RegLocation);
  TRegistry access(registry, place.root);
  if (!place.value || !access.OpenKey(place.path, true)) return false;
  access.WriteString(*place.value, text);
  return true;
}

void ScanSettings(RegistryBackend& registry, const MessageLookup& messages, TListView& list) {
  if (list.Count() > 0) return;
  // Everything is read before the first row is added: a value that cannot be read as text ends the
  // scan, and the empty list then lets the next visit scan again.
  std::vector<TListItem> rows;
  TRegistry access(registry);
  const TWatchedSetting* previous = nullptr;
  for (const TWatchedSetting& setting : WatchedSettings()) {
    if (!previous || previous->root != setting.root || previous->keyPath != setting.keyPath) {
      // Without the close, values of the key before would stand in for those of a missing key.
      access.CloseKey();
      access.SetRootKey(setting.root);
      access.OpenKey(setting.keyPath, false);
    }
    previous = &setting;

    TListItem row;
    row.caption = DisplayName(setting, messages);
    row.subItems.push_back(access.ReadString(setting.valueName));
    auto record = std::make_shared<TIESec>();
    record->RegLocation = RegistryLocation{setting.root, std::wstring(setting.keyPath),
                                           std::wstring(setting.valueName)}
                              .Text();
    record->DefaultValue = setting.defaultValue;
    row.data = std::move(record);
    rows.push_back(std::move(row));
  }
  access.CloseKey();

  list.SetCheckBoxes(true);
  for (TListItem& row : rows) list.Add(std::move(row));
}

int RestoreCheckedSettings(RegistryBackend& registry, TListView& list) {
  int written = 0;
  for (int index = 0; index < list.Count(); ++index) {
    const auto record = list.Data<TIESec>(index);
    if (!record || !list.Checked(index)) continue;
    try {
      if (!WriteSetting(registry, *record, record->DefaultValue)) continue;
      list.SetSubItem(index, 0, record->DefaultValue);
      list.SetChecked(index, false);
      ++written;
    } catch (const std::exception&) {
      // One setting that cannot be written must not keep the others from being restored.
    }
  }
  return written;
}

}  // namespace tarvelin
