// An image control that carries a list of named pictures and shows the one chosen by an index.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "widgets/components.h"

namespace tarvelin {

// One picture of a strip; assigning a picture copies it.
class TPictureItem {
 public:
  TPictureItem(std::wstring name) : Name(std::move(name)) {}
  std::wstring Name;
  TPicture Picture;
};

// The pictures of one strip, in order. A new item is named "Picture_" and its position.
class TPictureCollection {
 public:
  TPictureItem& Add();
  [[nodiscard]] int Count() const { return static_cast<int>(items_.size()); }
  [[nodiscard]] TPictureItem& Item(int index) {
    return *items_.at(static_cast<std::size_t>(index));
  }

 private:
  std::vector<std::unique_ptr<TPictureItem>> items_;
};

class TImageNote : public TImage {
 public:
  using TImage::TImage;

  [[nodiscard]] TPictureCollection& Items() { return items_; }
  [[nodiscard]] int ImageIndex() const { return imageIndex_; }
  // Shows a copy of that item's picture, or none for -1; any other index out of range is ignored.
  void SetImageIndex(int index);

  // A locked strip keeps the bounds that it had when it was locked.
  [[nodiscard]] bool Locked() const { return locked_; }
  void SetLocked(bool locked);
  void SetBounds(const TRect& bounds) override;

  void Click();  // runs OnClick

 private:
  TPictureCollection items_;
  int imageIndex_ = -1;
  bool locked_ = false;
  TRect lockedBounds_;
};

}  // namespace tarvelin
