// COM.
#pragma once

#include <windows.h>
// After windows.h, on which it depends.
#include <ole2.h>

namespace tarvelin {

// COM for this thread, from its first use on (OleInitialize); icons, property sheets and add-ons
// rely on it. To start it takes longer than to read a page that needs none of them.
class Com {
 public:
  Com() = default;
  Com(const Com&) = delete;
  Com& operator=(const Com&) = delete;
  ~Com() {
    if (started_) OleUninitialize();
  }

  void Start() {
    if (!started_) started_ = SUCCEEDED(OleInitialize(nullptr));
  }

 private:
  bool started_ = false;
};

}  // namespace tarvelin
