#include "addons/UnitIEBrowserHelp.h"

#include "settings/settings.h"

namespace tarvelin {

TScanIeBrowser::TScanIeBrowser(TPlatform& platform, const MessageLookup& messages,
                               const std::vector<std::wstring>& /*texts*/)
    : platform_(platform), messages_(messages) {}

void TScanIeBrowser::ScanIeSettings(TListView& list) {
  ScanSettings(platform_.registry, messages_, list);
}

int TScanIeBrowser::RestoreSettings(TListView& list) {
  return RestoreCheckedSettings(platform_.registry, list);
}

}  // namespace tarvelin
