// A state that lasts as long as a scope.
#pragma once

#include <utility>

namespace tarvelin {

// Sets a flag and puts its former state back at the end.
class FlagGuard {
 public:
  FlagGuard(bool& flag, bool state) : flag_(flag), former_(std::exchange(flag, state)) {}
  FlagGuard(const FlagGuard&) = delete;
  FlagGuard& operator=(const FlagGuard&) = delete;
  ~FlagGuard() { flag_ = former_; }

 private:
  bool& flag_;
  bool former_;
};

}  // namespace tarvelin
