// The error that ends a command.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "common/messages.h"

namespace tarvelin {

// Ends the command in which it is thrown; the application's error handler shows it in one message
// box. It carries the message, which is looked up in the user's language only then, and the name
// that goes in place of its "%s".
class TError : public std::exception {
 public:
  explicit TError(const Text& text, std::wstring detail = {})
      : text_(text), detail_(std::move(detail)) {}

  [[nodiscard]] const Text& Message() const { return text_; }
  [[nodiscard]] const std::wstring& Detail() const { return detail_; }
  [[nodiscard]] const char* what() const noexcept override { return "tarvelin error"; }

 private:
  Text text_;
  std::wstring detail_;
};

}  // namespace tarvelin
