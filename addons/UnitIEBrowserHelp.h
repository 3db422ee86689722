// The inventory of Internet Explorer's add-ons and settings: one scan for each kind, and the
// removals.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/messages.h"
#include "common/records.h"
#include "widgets/components.h"
#include "widgets/platform.h"

namespace tarvelin {

// Which of its removals RemoveAddon carries out; the numbers are those that the pages pass.
enum class RemovalMode : int {
  UnregisterHelperObject = 0,
  DeleteValueAndFile = 1,
  DeleteKey = 2,
  DeleteContextEntry = 3,
  DeleteExtraButton = 4,
  UnregisterControl = 5,
};

// What RemoveAddon takes for a row: the file and the location, the location and the file, or the
// location alone, with one "|" between them.
[[nodiscard]] std::wstring RemovalString(RemovalMode mode, const TIESec& record);

// Fills the browser pages and removes what they list. A scan fills an empty list and leaves any
// other alone; rows stand in the registry's order, one for each entry that passes the page's
// filter. A value of the wrong type may end a scan with TRegistryError.
class TScanIeBrowser {
 public:
  // `texts` is taken for the sake of its owner and not kept. The other objects must outlive this.
  TScanIeBrowser(TPlatform& platform, const MessageLookup& messages,
                 const std::vector<std::wstring>& texts);

  void ScanDownloadedActiveX(TListView& list);
  void ScanExtraButtons(TListView& list);
  void ScanHelperObjects(TListView& list);
  void ScanExplorerBars(TListView& list);
  void ScanContextEntries(TListView& list);
  void ScanToolbars(TListView& list);

  // Carries out the removal that a text of RemovalString names. Returns -1 when DeleteValueAndFile
  // found a file that it could not delete, else 0; nothing else is reported.
  int RemoveAddon(RemovalMode mode, std::wstring_view removal);

  // The settings page: see ScanSettings and RestoreCheckedSettings.
  void ScanIeSettings(TListView& list);
  int RestoreSettings(TListView& list);

 private:
  void UnregisterActiveX(std::wstring_view removal);
  int RemoveValueAndFile(std::wstring_view removal);

  TPlatform& platform_;
  const MessageLookup& messages_;
};

}  // namespace tarvelin
