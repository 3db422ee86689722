// The error that ends a command.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace tarvelin {

// Ends the command in which it is thrown; the application's error handler shows it in one message
// box. It carries a message key with its English text, so that the box speaks the user's language,
// and the name that goes in place of the text's "%s".
class TError : public std::exception {
 public:
  TError(std::wstring messageKey, std::wstring englishText, std::wstring detail)
      : key_(std::move(messageKey)), text_(std::move(englishText)), detail_(std::move(detail)) {}

  [[nodiscard]] const std::wstring& Key() const { return key_; }
  [[nodiscard]] const std::wstring& EnglishText() const { return text_; }
  [[nodiscard]] const std::wstring& Detail() const { return detail_; }
  [[nodiscard]] const char* what() const noexcept override { return "tarvelin error"; }

 private:
  std::wstring key_;
  std::wstring text_;
  std::wstring detail_;
};

}  // namespace tarvelin
