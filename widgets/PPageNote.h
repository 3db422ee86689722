// A page control without tabs: exactly one of its pages is visible, chosen by the program.
#pragma once

#include <string>
#include <vector>

#include "widgets/components.h"

namespace tarvelin {

class TPageNote;

// A page without border. It leaves its page control when it is destroyed.
class TPageTab : public TControl {
 public:
  TPageTab(std::wstring name, TPageNote* pageNote);
  ~TPageTab() override;
  std::wstring TabName;
  [[nodiscard]] bool Active() const { return active_; }

 private:
  friend class TPageNote;
  TPageNote* pageNote_ = nullptr;  // that holds it in its list
  bool active_ = false;
};

class TPageNote : public TControl {
 public:
  TPageNote(std::wstring name, TControl* parent, TRect bounds);
  ~TPageNote() override;

  bool EditTabs = false;  // stored for the form's description; nothing reads it

  [[nodiscard]] int TabCount() const { return static_cast<int>(pages_.size()); }
  [[nodiscard]] int TabIndex() const { return tabIndex_; }
  // Shows the page at that index and hides the one before; an index out of range, or the current
  // one, changes nothing.
  void SetTabIndex(int index);
  [[nodiscard]] TPageTab* ActivePage() const;  // null without pages
  void SetActivePage(const TPageTab* page);    // ignored when it is not one of the pages
  [[nodiscard]] const std::vector<TPageTab*>& Pages() const { return pages_; }

  // Adds a page right after the current one and shows it.
  void InsertPage(TPageTab& page);
  // Takes a page out. With exactly one page left, a request for any page empties the list.
  void RemovePage(const TPageTab& page);
  // Shows a child; a page becomes the current one first.
  void ShowControl(TControl& control);
  void SetBounds(const TRect& bounds) override;

 private:
  [[nodiscard]] int IndexOf(const TControl* page) const;

  std::vector<TPageTab*> pages_;
  int tabIndex_ = -1;
};

}  // namespace tarvelin
