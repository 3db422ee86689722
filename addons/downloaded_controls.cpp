// The ActiveX controls that the browser downloaded and installed.
#include "addons/UnitIEBrowserHelp.h"
#include "addons/add_on_row.h"
#include "common/registry.h"

namespace tarvelin {

void TScanIeBrowser::ScanDownloadedActiveX(TListView& list) {
  if (list.Count() > 0) return;
  TRegistry registry(platform_.registry, RootKey::LocalMachine);
  registry.OpenKey(kDistributionUnits, true);
  const std::vector<std::wstring> units = registry.GetKeyNames();
  registry.CloseKey();

  for (const std::wstring& unit : units) {
    if (!unit.starts_with(L'{')) continue;

    // A unit whose class is not registered gets an empty class key here, and no row.
    registry.SetRootKey(RootKey::LocalMachine);
    registry.OpenKey(kMachineClassIds + unit, true);
    const std::wstring className = registry.ReadString(L"");
    if (className.empty()) continue;

    registry.SetRootKey(RootKey::ClassesRoot);
    registry.OpenKey(ModuleKey(unit), false);
    const std::wstring module = registry.ReadString(L"");
    if (!platform_.files.FileExists(module)) continue;

    const ModuleFacts facts = GetModuleFacts(platform_.shell, module);
    AddRow(list, ModuleName(facts, className), {facts.publisher, module}, module,
           {RootKey::LocalMachine, kMachineClassIds + unit, {}});
  }
}

}  // namespace tarvelin
