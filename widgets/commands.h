// How what the user does becomes a command of the program.
#pragma once

#include <functional>

namespace tarvelin {

// One command at a time. A command may show a box or call into an add-on's code, and both let
// messages through: whatever else is asked for meanwhile, by the user, by another program or by
// that code, would work on rows and windows that the command still needs. So it is dropped.
class Commands {
 public:
  virtual ~Commands() = default;

  // Runs a command, unless another one is at work. An error that ends it is shown.
  virtual void Run(const std::function<void()>& command) = 0;

  // Takes over what a control reports of its own state, such as a selection, at any time. An error
  // is shown as well: no exception may unwind through a window procedure.
  virtual void Report(const std::function<void()>& report) = 0;

  [[nodiscard]] virtual bool Busy() const = 0;  // whether a command is at work

  // Lets commands through while `wait` runs: in a modal window, in a long listing.
  virtual void Listen(const std::function<void()>& wait) = 0;
};

}  // namespace tarvelin
