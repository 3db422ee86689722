// A batch update of a list, as while a scan fills it.
#pragma once

#include "widgets/components.h"

namespace tarvelin {

// Begins a batch update and ends it when the scan is left, be it by an error.
class ListUpdate {
 public:
  explicit ListUpdate(TListView& list) : list_(&list) { list.BeginUpdate(); }
  ListUpdate(const ListUpdate&) = delete;
  ListUpdate& operator=(const ListUpdate&) = delete;
  ~ListUpdate() {
    if (list_) list_->EndUpdate();
  }

  // Never ends the update.
  void LeaveOpen() { list_ = nullptr; }

 private:
  TListView* list_;
};

}  // namespace tarvelin
