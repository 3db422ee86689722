// The watched Internet Explorer settings: their table, the page that shows them and what is
// written.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "common/messages.h"
#include "common/records.h"
#include "common/registry.h"
#include "widgets/components.h"

namespace tarvelin {

// One watched setting. The settings of one key stand together.
struct TWatchedSetting {
  RootKey root;
  Text name;
  std::wstring_view keyPath;    // with a leading backslash
  std::wstring_view valueName;  // "" is the key's unnamed value
  std::wstring_view defaultValue;
};

// The twenty-two settings in the order in which they are read and shown.
[[nodiscard]] std::span<const TWatchedSetting> WatchedSettings();

// The name shown for a setting: translated, with the translated suffix for all users.
[[nodiscard]] std::wstring DisplayName(const TWatchedSetting& setting,
                                       const MessageLookup& messages);

// Fills an empty list with the settings and their current texts, and leaves any other alone. A
// value that is no text ends the scan with TRegistryError before the first row is added.
void ScanSettings(RegistryBackend& registry, const MessageLookup& messages, TListView& list);

// Writes the default of every checked row and unchecks it; a row that cannot be written stays as it
// is. Returns how many were written.
int RestoreCheckedSettings(RegistryBackend& registry, TListView& list);

// Writes the value of one setting, whose key is created when it is missing. False when that is
// refused; throws TRegistryError when the key can be opened but the value cannot be written.
[[nodiscard]] bool WriteSetting(RegistryBackend& registry, const TIESec& record,
                                std::wstring_view text);

}  // namespace tarvelin
