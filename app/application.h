// The application object: its title, its windows and the one place where an error that ended a
// command is shown.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "common/messages.h"
#include "common/platform.h"
#include "widgets/components.h"

namespace tarvelin {

class TApplication {
 public:
  TApplication(MessageBoxes& boxes, std::wstring_view title) : boxes_(boxes), title_(title) {}

  [[nodiscard]] const std::wstring& Title() const { return title_; }

  // The windows in the order of their creation. A window is added for its whole life.
  void AddForm(TForm& form) { forms_.push_back(&form); }
  [[nodiscard]] const std::vector<TForm*>& Forms() const { return forms_; }

  // The language of error messages, English while there is none.
  void SetMessages(const MessageLookup* messages) { messages_ = messages; }

  // Runs a command. An error that ends it is shown in a message box with the error icon, titled
  // with the application's title, and the program works on.
  void Run(const std::function<void()>& command);

 private:
  MessageBoxes& boxes_;
  std::wstring title_;
  std::vector<TForm*> forms_;
  const MessageLookup* messages_ = nullptr;
};

}  // namespace tarvelin
