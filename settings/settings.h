// The table of watched Internet Explorer settings with the values that restoring writes.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "common/messages.h"
#include "common/registry.h"

namespace tarvelin {

// One watched setting. The settings of one key stand together.
struct TWatchedSetting {
  Text name;
  bool allUsers;  // whether the name gets the "(All Users)" suffix
  RootKey root;
  std::wstring_view rootName;
  std::wstring_view keyPath;    // with a leading backslash
  std::wstring_view valueName;  // "" is the key's unnamed value
  std::wstring_view defaultValue;
};

// The twenty-two settings in the order in which they are read and shown.
[[nodiscard]] std::span<const TWatchedSetting> WatchedSettings();

// The name shown for a setting: translated, with the translated suffix for all users.
[[nodiscard]] std::wstring DisplayName(const TWatchedSetting& setting,
                                       const MessageLookup& messages);

// The value-form location of a setting.
[[nodiscard]] std::wstring LocationOf(const TWatchedSetting& setting);

}  // namespace tarvelin
