// The program's message loop.
#pragma once

#include <windows.h>

#include <functional>
#include <vector>

namespace tarvelin {

// Takes the messages of the program's thread from its queue and hands them to their windows. The
// program, a modal form and a long listing that lets messages through all use this one, each
// nested in the one before.
class MessageLoop {
 public:
  // Sees every message before its window does. True says that the message is a dialog key which the
  // hook has dealt with, so that the form's own buttons do not answer it a second time; the message
  // goes on to its window in any case.
  std::function<bool(const MSG& message)> hook;

  // The forms, in which Tab, Enter and Escape work as in a dialog (IsDialogMessageW).
  void AddForm(HWND form) { forms_.push_back(form); }
  void RemoveForm(HWND form) { std::erase(forms_, form); }

  // Handles messages until the program ends (PostQuitMessage).
  void Run();
  // Handles messages until `done` holds or the program ends.
  void RunUntil(const std::function<bool()>& done);
  // Handles the messages that are waiting.
  void ProcessWaiting();

 private:
  void Handle(MSG& message);

  std::vector<HWND> forms_;
  bool quit_ = false;
};

}  // namespace tarvelin
