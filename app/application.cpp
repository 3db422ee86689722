#include "app/application.h"

#include "common/errors.h"
#include "common/flag_guard.h"
#include "common/text.h"

namespace tarvelin {

std::wstring TApplication::Message(const Text& text) const {
  return messages_ ? messages_->Message(text) : std::wstring(text.english);
}

void TApplication::Run(const std::function<void()>& command) {
  if (busy_) return;
  const FlagGuard busy(busy_, true);
  Report(command);
}

void TApplication::Report(const std::function<void()>& report) {
  if (terminated_) return;
  try {
    std::wstring text;
    try {
      report();
      return;
    } catch (const TError& error) {
      text = FormatMessageText(Message(error.Message()), ShortenedName(error.Detail()));
    } catch (const std::exception&) {
      // Running out of memory, for one: nothing is known that would help the user further.
      text = Message(messages::kErrorUnexpected);
    }
    const FlagGuard busy(busy_, true);
    if (!terminated_) boxes_.Show(text, title_, kBoxError);
  } catch (const std::exception&) {
    // Not even that can be told; the program works on.
  }
}

void TApplication::Listen(const std::function<void()>& wait) {
  const FlagGuard busy(busy_, false);
  wait();
}

}  // namespace tarvelin
