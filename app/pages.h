// The ten pages of the main window as data: what makes one differ from the others.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "widgets/components.h"

namespace tarvelin {

// In the order of the page control and of the navigation bar.
enum class Page : std::size_t {
  ShellExtensions,
  New,
  SendTo,
  ContextMenus,
  Bars,
  Toolbars,
  ExtraButtons,
  HelperObjects,
  ActiveX,
  Settings,
};
inline constexpr std::size_t kPageCount = 10;

enum class ButtonRole { OpenInRegEdit, Remove, Properties, Modify, Restore };

enum class EnabledWhile { RowSelected, RowChecked };

struct ButtonDescription {
  ButtonRole role;
  std::wstring_view name;
  std::wstring_view caption;
  int left;
  int width;
  EnabledWhile enabledWhile;
};

enum class NavigationGroup { ContextMenu, Tarvelin };

struct PageDescription {
  Page page;
  std::wstring_view name;
  std::wstring_view listName;
  NavigationGroup group;
  std::wstring_view itemCaption;
  int itemImage;
  bool rowImages;
  std::vector<TListColumn> columns;
  std::vector<ButtonDescription> buttons;
};

// In the order of the enumeration.
[[nodiscard]] std::span<const PageDescription> PageTable();

}  // namespace tarvelin
