#include "app/application.h"

#include "common/flag_guard.h"
#include "common/text.h"

namespace tarvelin {

void TApplication::Run(const std::function<void()>& command) {
  if (busy_) return;
  const FlagGuard busy(busy_, true);
  Report(command);
}

void TApplication::Report(const std::function<void()>& report) {
  if (terminated_) return;
  std::wstring text;
  try {
    report();
    return;
  } catch (const TError& error) {
    text = FormatMessageText(
        messages_ ? messages_->Message(error.Key(), error.EnglishText()) : error.EnglishText(),
        ShortenedName(error.Detail()));
  } catch (const std::exception&) {
    // Running out of memory, for one: nothing is known that would help the user further.
    constexpr std::wstring_view english = L"An unexpected error ended the command.";
    text = messages_ ? messages_->Message(L"M_Error_Unexpected", english) : std::wstring(english);
  }
  const FlagGuard busy(busy_, true);
  if (!terminated_) boxes_.Show(text, title_, kBoxError);
}

void TApplication::Listen(const std::function<void()>& wait) {
  const FlagGuard busy(busy_, false);
  wait();
}

}  // namespace tarvelin
