// The application object: its title, its windows and the one place where commands are let in and
// an error that ended one is shown.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "common/messages.h"
#include "widgets/commands.h"
#include "widgets/components.h"
#include "widgets/message_boxes.h"

namespace tarvelin {

class TApplication : public Commands {
 public:
  TApplication(MessageBoxes& boxes, std::wstring_view title) : boxes_(boxes), title_(title) {}

  [[nodiscard]] const std::wstring& Title() const { return title_; }

  // The windows in the order of their creation. A window is added for its whole life.
  void AddForm(TForm& form) { forms_.push_back(&form); }
  [[nodiscard]] const std::vector<TForm*>& Forms() const { return forms_; }

  // The language of error messages, English while there is none.
  void SetMessages(const MessageLookup* messages) { messages_ = messages; }

  // An error is shown in a message box with the error icon, titled with the application's title,
  // and the program works on.
  void Run(const std::function<void()>& command) override;
  void Report(const std::function<void()>& report) override;
  [[nodiscard]] bool Busy() const override { return busy_; }
  void Listen(const std::function<void()>& wait) override;

  // The main window was closed: no command runs any more, and no error is shown.
  void Terminate() { terminated_ = true; }

 private:
  [[nodiscard]] std::wstring Message(const Text& text) const;

  MessageBoxes& boxes_;
  std::wstring title_;
  std::vector<TForm*> forms_;
  const MessageLookup* messages_ = nullptr;
  bool busy_ = false;
  bool terminated_ = false;
};

}  // namespace tarvelin
