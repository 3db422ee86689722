// The navigation bar: collapsible groups of items, exactly one item of all groups selected.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "widgets/PImageNote.h"
#include "widgets/components.h"

namespace tarvelin {

inline constexpr TColor kSelectedItemColor = 0x00C65D21;
inline constexpr TColor kItemColor = 0x00C56A31;

class TGroup;

// One item of a group, shown as a button with an icon.
class TGroupItem : public TControl {
 public:
  TGroupItem(std::wstring name, TGroup& group, TRect bounds, std::wstring_view caption,
             int imageIndex);
  [[nodiscard]] int ImageIndex() const { return imageIndex_; }
  [[nodiscard]] bool Selected() const { return selected_; }
  [[nodiscard]] TColor FontColor() const { return fontColor_; }
  void SetSelected(bool selected, TColor fontColor);
  std::function<void()> OnClick;
  void Click();

 private:
  int imageIndex_;
  bool selected_ = false;
  TColor fontColor_ = kItemColor;
};

// A group: a header, drawn by an image strip with a label over it, and the items below. The header
// is one control for keyboard and screen readers; it bears the label's caption.
class TGroup : public TControl {
 public:
  static constexpr int kClosedHeight = 24;

  TGroup(std::wstring name, TControl* parent, TRect openBounds, std::wstring_view caption);

  // The header's parts lie in the group; the form owns them.
  void SetHeader(TImageNote& image, TLabel& label);
  [[nodiscard]] TImageNote* HeaderImage() const { return headerImage_; }
  [[nodiscard]] TLabel* HeaderLabel() const { return headerLabel_; }
  // What a click on the header does: the image's handler.
  void ClickHeader();

  [[nodiscard]] bool Opened() const { return opened_; }
  // Shows or hides the items and tells the bar to move the groups below.
  void SetOpened(bool opened);

  TGroupItem& AddItem(std::wstring_view caption, int imageIndex, std::function<void()> onClick);
  [[nodiscard]] const std::vector<TGroupItem*>& Items() const { return items_; }

  std::function<void()> OnResize;

 private:
  TImageNote* headerImage_ = nullptr;
  TLabel* headerLabel_ = nullptr;
  std::vector<TGroupItem*> items_;
  int openHeight_;
  bool opened_ = true;
};

class TGroupBar : public TControl {
 public:
  using TControl::TControl;
  TGroup& AddGroup(std::wstring name, int openHeight, std::wstring_view caption);
  [[nodiscard]] const std::vector<TGroup*>& Groups() const { return groups_; }

  // Marks one item as selected and every other item of all groups as not.
  void SelectItem(const TGroupItem& item);

  // Where the keyboard focus goes from a header or an item.
  enum class Move { Previous, Next, First, Last };
  // The control that gets the focus, of the groups (their headers) and the items of open groups
  // from top to bottom; it does not wrap around.
  [[nodiscard]] TControl* FocusTarget(const TControl& from, Move move) const;

  [[nodiscard]] TImageList* SmallImages() const { return smallImages_; }
  void SetSmallImages(TImageList* images) { smallImages_ = images; }

 private:
  void Arrange();
  [[nodiscard]] std::vector<TControl*> FocusOrder() const;

  std::vector<TGroup*> groups_;
  TImageList* smallImages_ = nullptr;
};

}  // namespace tarvelin
