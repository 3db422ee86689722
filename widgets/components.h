// The components that windows are made of, as portable objects that hold all state. What the user
// sees is a peer: an optional object that shows one component as a real control and turns what the
// user does into calls of the component. Without peers the same windows run in tests.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/records.h"
#include "common/shell.h"
#include "common/text.h"
#include "widgets/display.h"
#include "widgets/pictures.h"

namespace tarvelin {

struct TRect {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const TRect&, const TRect&) = default;
};

using TColor = std::uint32_t;  // a Windows COLORREF, 0x00BBGGRR
inline constexpr TColor kWhite = 0x00FFFFFF;
inline constexpr TColor kBlack = 0x00000000;

// A text of a component that a language file may replace; `keySuffix` follows the component's name
// in the key, as in "btnClose" + ".Caption".
struct TranslatableText {
  std::wstring keySuffix;
  std::wstring current;
  std::function<void(const std::wstring&)> assign;
};

// A named object that owns further components, in the order in which they were created.
class TComponent {
 public:
  explicit TComponent(std::wstring name) : name_(std::move(name)) {}
  TComponent(const TComponent&) = delete;
  TComponent& operator=(const TComponent&) = delete;
  virtual ~TComponent() = default;

  [[nodiscard]] const std::wstring& Name() const { return name_; }

  // Creates a component that this one owns for the rest of its life.
  template <typename T, typename... Arguments>
  T& Create(Arguments&&... arguments) {
    auto component = std::make_unique<T>(std::forward<Arguments>(arguments)...);
    T& created = *component;
    components_.push_back(std::move(component));
    return created;
  }

  [[nodiscard]] const std::vector<std::unique_ptr<TComponent>>& Components() const {
    return components_;
  }

  // The texts that the translator may replace; none for classes that it leaves alone.
  [[nodiscard]] virtual std::vector<TranslatableText> TranslatableTexts() { return {}; }

 private:
  std::wstring name_;
  std::vector<std::unique_ptr<TComponent>> components_;
};

// What changed in a control, told to its peer, which then reads the control.
enum class Change { Bounds, Caption, Enabled, Visible, Color, Picture, Checked, Order, Focus };

// What a control keeps when its parent becomes higher or lower: its distance from the upper edge,
// that from the lower edge, or both, which changes its own height.
enum class Anchor { Top, Bottom, Both };

class ControlPeer {
 public:
  virtual ~ControlPeer() = default;
  virtual void Changed(Change change) = 0;
};

// A component with a place in a window. The parent is where it is shown, apart from who owns it;
// bounds are pixels within the parent's client area.
class TControl : public TComponent {
 public:
  TControl(std::wstring name, TControl* parent, TRect bounds);
  // It leaves its parent; the children stay without one.
  ~TControl() override;

  [[nodiscard]] TControl* Parent() const { return parent_; }
  // The children shown in this control, in creation order, which is the Tab order as well.
  [[nodiscard]] const std::vector<TControl*>& Controls() const { return controls_; }

  [[nodiscard]] const TRect& Bounds() const { return bounds_; }
  // The children follow as their anchors say.
  virtual void SetBounds(const TRect& bounds);
  Anchor anchor = Anchor::Top;
  [[nodiscard]] const std::wstring& Caption() const { return caption_; }
  void SetCaption(std::wstring_view caption);
  [[nodiscard]] bool Enabled() const { return enabled_; }
  void SetEnabled(bool enabled);
  [[nodiscard]] bool Visible() const { return visible_; }
  void SetVisible(bool visible);
  [[nodiscard]] TColor Color() const { return color_; }  // of the background
  void SetColor(TColor color);
  void BringToFront() { Notify(Change::Order); }
  void SetFocus() { Notify(Change::Focus); }

  void SetPeer(std::unique_ptr<ControlPeer> peer) { peer_ = std::move(peer); }
  [[nodiscard]] ControlPeer* Peer() const { return peer_.get(); }

 protected:
  void Notify(Change change);
  void StoreBounds(const TRect& bounds);                                // without telling the peer
  void StoreCaption(std::wstring_view caption) { caption_ = caption; }  // without telling the peer
  [[nodiscard]] TranslatableText CaptionText();

 private:
  TControl* parent_;
  std::vector<TControl*> controls_;
  TRect bounds_;
  std::wstring caption_;
  bool enabled_ = true;
  bool visible_ = true;
  TColor color_ = kWhite;
  std::unique_ptr<ControlPeer> peer_;
};

class TPanel : public TControl {
 public:
  using TControl::TControl;
};

enum class LabelStyle { Plain, Bold, Title };

// A text without a border, painted by the control that it lies on.
class TLabel : public TControl {
 public:
  TLabel(std::wstring name, TControl* parent, TRect bounds, std::wstring_view caption,
         LabelStyle style);
  [[nodiscard]] LabelStyle Style() const { return style_; }
  // For screen readers it is the name of the control created after it, such as an edit box; that
  // takes a window of its own.
  bool namesNext = false;
  [[nodiscard]] std::vector<TranslatableText> TranslatableTexts() override;

 private:
  LabelStyle style_;
};

// A push button. The default button answers Enter, the cancel button Escape.
class TButton : public TControl {
 public:
  TButton(std::wstring name, TControl* parent, TRect bounds, std::wstring_view caption);
  bool isDefault = false;
  bool isCancel = false;
  std::function<void()> OnClick;
  void Click();  // what a mouse click does; nothing while disabled
  [[nodiscard]] std::vector<TranslatableText> TranslatableTexts() override;
};

class TCheckBox : public TControl {
 public:
  TCheckBox(std::wstring name, TControl* parent, TRect bounds, std::wstring_view caption);
  [[nodiscard]] bool Checked() const { return checked_; }
  // Changes the mark, and runs OnClick when it differs.
  void SetChecked(bool checked);
  // Changes the mark alone (BM_SETCHECK): OnClick does not run.
  void SetMark(bool checked);
  std::function<void()> OnClick;
  [[nodiscard]] std::vector<TranslatableText> TranslatableTexts() override;

 private:
  bool checked_ = false;
};

// A one-line edit box; its text is the caption. The peer keeps it up to date while the user types.
class TEdit : public TControl {
 public:
  using TControl::TControl;
  [[nodiscard]] const std::wstring& Text() const { return Caption(); }
  void SetText(std::wstring_view text) { SetCaption(text); }
  // From the peer: the user typed, so the control shows the text already.
  void UserTyped(std::wstring_view text);
};

// A picture, at its own size or stretched over the control.
class TImage : public TControl {
 public:
  using TControl::TControl;
  [[nodiscard]] const TPicture& Picture() const { return picture_; }
  void SetPicture(TPicture picture);
  bool stretch = false;
  std::function<void()> OnClick;

 private:
  TPicture picture_;
};

// Images of 16 x 16 pixels, chosen by index. One image may stand at several indexes: adding a copy
// costs nothing but the number.
class ImageListPeer {
 public:
  virtual ~ImageListPeer() = default;
  // Each returns the number of the stored image, -1 on failure. They are numbered from 0 upward; an
  // icon may take the place of a stored image.
  virtual int AddIcon(const Icon& icon, std::optional<int> place) = 0;
  virtual int AddPicture(const TPicture& picture) = 0;
};

class TImageList : public TComponent {
 public:
  using TComponent::TComponent;
  [[nodiscard]] int Count() const { return static_cast<int>(stored_.size()); }
  // Each appends one index and returns it; -1 when the image cannot be stored. An icon takes the
  // place of the one that came from the same source before, so that reading a page again and again
  // stores no more.
  int Add(const Icon& icon, const std::wstring& source);
  int Add(TPicture picture);
  int AddCopy(int index);
  // The number of the image that the peer stored for an index, -1 out of range.
  [[nodiscard]] int StoredImage(int index) const;
  // Hands the pictures added so far to the peer. Icons are only added once a peer is there.
  void SetPeer(std::unique_ptr<ImageListPeer> peer);
  [[nodiscard]] ImageListPeer* Peer() const { return peer_.get(); }

 private:
  std::vector<TPicture> pictures_;  // kept until a peer takes them
  std::vector<int> stored_;
  std::map<std::wstring, int, TextLess> sources_;  // the stored image of each
  int storedCount_ = 0;
  std::unique_ptr<ImageListPeer> peer_;
};

struct TListColumn {
  std::wstring caption;
  int width = 0;
};

struct TListItem {
  std::wstring caption;
  std::vector<std::wstring> subItems;
  int imageIndex = -1;
  bool checked = false;
  std::shared_ptr<TRecord> data;  // a command holds on to the record of its row as well
};

// The keys by which a row's commands can be given from within a list.
enum class ListKey { Delete, AltEnter, CtrlC, CtrlA, F2 };

// An entry of the menu of a row.
struct TMenuItem {
  std::wstring caption;
  bool enabled = true;
  std::function<void()> OnClick;
};

// What a list tells its peer. A list without a window has this one, which shows nothing.
class ListViewPeer : public ControlPeer {
 public:
  void Changed(Change) override {}
  // Of a list that is laid out with that width.
  [[nodiscard]] virtual int ClientWidth(int width) { return width; }
  virtual void RowsAdded() {}        // at the end; not while an update lasts
  virtual void RowDeleted(int) {}    // it is already gone from the list
  virtual void RowChanged(int) {}    // texts
  virtual void CheckChanged(int) {}  // the row's mark
  virtual void SelectionChanged() {}
  virtual void ColumnsChanged() {}  // captions or widths
  virtual void CheckBoxesChanged() {}
};

// A report-style list with whole-row single selection. It owns its rows, and each row its record.
class TListView : public TControl {
 public:
  TListView(std::wstring name, TControl* parent, TRect bounds, std::vector<TListColumn> columns);

  [[nodiscard]] const std::vector<TListColumn>& Columns() const { return columns_; }
  void SetColumnCaption(std::size_t column, std::wstring_view caption);
  void SetColumnWidth(std::size_t column, int width);
  [[nodiscard]] int ClientWidth();

  [[nodiscard]] int Count() const { return static_cast<int>(rows_.size()); }
  [[nodiscard]] TListItem Item(int index) const;
  // The text in a column of a row, valid until the row changes; empty where it has none.
  [[nodiscard]] std::wstring_view CellText(int index, std::size_t column) const;
  [[nodiscard]] bool Checked(int index) const { return At(index).checked; }
  [[nodiscard]] int ImageIndex(int index) const { return At(index).imageIndex; }
  // The record of a row as the kind that its page attaches; null when it has none.
  template <typename Record>
  [[nodiscard]] std::shared_ptr<Record> Data(int index) const {
    return std::dynamic_pointer_cast<Record>(At(index).data);
  }
  // A row as text, with a tab between the columns and what its record adds to them.
  [[nodiscard]] std::wstring CopyOf(int index) const;
  // The row that owns a record, -1 when none does any more.
  [[nodiscard]] int IndexOf(const TRecord& record) const;

  int Add(TListItem item);  // at the end; returns its index
  // Takes the row out. A selected row is deselected first.
  void Delete(int index);
  void SetSubItem(int index, std::size_t subItem, std::wstring_view text);
  // OnItemChecked runs when the mark differs.
  void SetChecked(int index, bool checked);
  // The first row from `start` on, and then from the top, whose caption begins with `text` in any
  // case; -1 when none does.
  [[nodiscard]] int FindCaption(std::wstring_view text, int start) const;
  [[nodiscard]] int SelectedIndex() const { return selected_; }  // -1 when none is
  void SetSelectedIndex(int index);

  // What the list says instead of rows while it has none; empty for nothing.
  [[nodiscard]] const std::wstring& EmptyText() const { return emptyText_; }
  void SetEmptyText(std::wstring_view text);

  [[nodiscard]] bool CheckBoxes() const { return checkBoxes_; }
  void SetCheckBoxes(bool checkBoxes);
  [[nodiscard]] TImageList* SmallImages() const { return smallImages_; }
  void SetSmallImages(TImageList* images) { smallImages_ = images; }

  // Updates nest; the peer shows the rows added meanwhile when the last one ends.
  void BeginUpdate() { ++updates_; }
  void EndUpdate();
  [[nodiscard]] bool Updating() const { return updates_ > 0; }

  void DoubleClick();
  [[nodiscard]] std::vector<TranslatableText> TranslatableTexts() override;

  std::function<void()> OnSelectItem;  // on every change of the selection
  std::function<void()> OnItemChecked;
  std::function<void()> OnDblClick;
  std::function<void(ListKey)> OnKey;
  std::function<std::vector<TMenuItem>()> OnMenu;  // the menu of the selected row, or of the list

 private:
  // An item with its texts in one piece, before each of them its length in two characters: what
  // each string costs beside its characters would be most of the memory of a long page.
  struct Row {
    std::wstring texts;
    int imageIndex;
    bool checked;
    std::shared_ptr<TRecord> data;
  };
  [[nodiscard]] const Row& At(int index) const;
  [[nodiscard]] Row& At(int index) { return const_cast<Row&>(std::as_const(*this).At(index)); }
  [[nodiscard]] ListViewPeer& ListPeer() const;

  std::vector<TListColumn> columns_;
  std::deque<Row> rows_;  // grows without room to spare and without moving
  std::wstring emptyText_;
  int selected_ = -1;
  bool checkBoxes_ = false;
  int updates_ = 0;
  TImageList* smallImages_ = nullptr;
};

// Makes the last column fill what the other columns leave of the list's width.
void FitLastColumn(TListView& list, Display& display);

// A top-level window.
class TForm : public TControl {
 public:
  TForm(std::wstring name, int clientWidth, int clientHeight, std::wstring_view caption);

  std::function<void()> OnShow;
  std::function<void()> OnClose;
  // What gives a modal form its peer, before it is shown first.
  std::function<void()> OnFirstShow;

  // Runs OnShow, then shows the window; a modal one returns when it has been closed. Without a peer
  // a modal form stays open until Close.
  void Show();
  void ShowModal();
  // Runs OnClose and hides the window.
  void Close();

  // From the peer: the client area that the window really has, which may be lower than the one that
  // was asked for.
  void WindowResized(int clientWidth, int clientHeight);
};

class FormPeer : public ControlPeer {
 public:
  virtual void Show() = 0;
  virtual void RunModal() = 0;  // returns when Visible() became false
};

}  // namespace tarvelin
