#include "app/application.h"

namespace tarvelin {

void TApplication::Run(const std::function<void()>& command) {
  std::wstring text;
  try {
    command();
    return;
  } catch (const TError& error) {
    text = FormatMessageText(
        messages_ ? messages_->Message(error.Key(), error.EnglishText()) : error.EnglishText(),
        error.Detail());
  } catch (const std::exception&) {
    // Running out of memory, for one: nothing is known that would help the user further.
    constexpr std::wstring_view english = L"An unexpected error ended the command.";
    text = messages_ ? messages_->Message(L"M_Error_Unexpected", english) : std::wstring(english);
  }
  boxes_.Show(text, title_, kBoxError);
}

}  // namespace tarvelin
