// The lookup of user-visible texts.
#pragma once

#include <string>
#include <string_view>

namespace tarvelin {

class MessageLookup {
 public:
  virtual ~MessageLookup() = default;

  // The text of a message key such as "M_Warning" in the loaded language, `englishText` where the
  // language has none.
  [[nodiscard]] virtual std::wstring Message(std::wstring_view key,
                                             std::wstring_view englishText) const = 0;
};

}  // namespace tarvelin
