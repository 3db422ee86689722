// Reading the watched settings into the settings page and putting them back to their defaults.
#include <algorithm>
#include <exception>
#include <memory>
#include <utility>
#include <vector>

#include "addons/UnitIEBrowserHelp.h"
#include "common/registry.h"
#include "settings/settings.h"

namespace tarvelin {

namespace {

// Writes the default of one row. False when the key cannot be opened; throws when it can but the
// value cannot be written.
bool WriteDefault(RegistryBackend& backend, const TIESec& record) {
  constexpr std::wstring_view machine = L"HKEY_LOCAL_MACHINE";
  constexpr std::wstring_view user = L"HKEY_CURRENT_USER";
  const bool allUsers = record.RegLocation.find(machine) != std::wstring::npos;
  const auto rootLength = (allUsers ? machine : user).size() + 1;  // with its backslash
  const auto place = SplitValueLocation(
      record.RegLocation.substr(std::min(rootLength, record.RegLocation.size())));

  TRegistry registry(backend);
  registry.SetRootKey(allUsers ? RootKey::LocalMachine : RootKey::CurrentUser);
  if (!registry.OpenKey(place.key, true)) return false;
  registry.WriteString(place.value, record.DefaultValue);
  return true;
}

}  // namespace

void TScanIeBrowser::ScanIeSettings(TListView& list) {
  if (list.Count() > 0) return;
  // Everything is read before the first row is added: a value that cannot be read as text ends the
  // scan, and the empty list then lets the next visit scan again.
  std::vector<TListItem> rows;
  TRegistry registry(platform_.registry);
  const TWatchedSetting* previous = nullptr;
  for (const TWatchedSetting& setting : WatchedSettings()) {
    if (!previous || previous->root != setting.root || previous->keyPath != setting.keyPath) {
      // Without the close, values of the key before would stand in for those of a missing key.
      registry.CloseKey();
      registry.SetRootKey(setting.root);
      registry.OpenKey(setting.keyPath, false);
    }
    previous = &setting;

    TListItem row;
    row.caption = DisplayName(setting, messages_);
    row.subItems.push_back(registry.ReadString(setting.valueName));
    auto record = std::make_unique<TIESec>();
    record->RegLocation = LocationOf(setting);
    record->DefaultValue = setting.defaultValue;
    row.data = std::move(record);
    rows.push_back(std::move(row));
  }
  registry.CloseKey();

  list.SetCheckBoxes(true);
  for (TListItem& row : rows) list.Add(std::move(row));
}

int TScanIeBrowser::RestoreSettings(TListView& list) {
  int written = 0;
  for (int index = 0; index < list.Count(); ++index) {
    const auto record = list.Data<TIESec>(index);
    if (!record || !list.Item(index).checked) continue;
    try {
      if (!WriteDefault(platform_.registry, *record)) continue;
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
