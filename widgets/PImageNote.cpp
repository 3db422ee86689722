#include "widgets/PImageNote.h"

namespace tarvelin {

TPictureItem& TPictureCollection::Add() {
  items_.push_back(std::make_unique<TPictureItem>(L"Picture_" + std::to_wstring(Count())));
  return *items_.back();
}

void TImageNote::SetImageIndex(int index) {
  if (index == -1) {
    SetPicture({});
  } else if (index >= 0 && index < items_.Count()) {
    SetPicture(items_.Item(index).Picture);
  } else {
    return;
  }
  imageIndex_ = index;
}

void TImageNote::SetLocked(bool locked) {
  locked_ = locked;
  if (locked) lockedBounds_ = Bounds();
}

void TImageNote::SetBounds(const TRect& bounds) {
  TControl::SetBounds(locked_ ? lockedBounds_ : bounds);
}

void TImageNote::Click() {
  if (OnClick) OnClick();
}

}  // namespace tarvelin
