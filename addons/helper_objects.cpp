// The browser helper objects that the browser loaded for this user.
#include "addons/UnitIEBrowserHelp.h"
#include "addons/add_on_row.h"
#include "common/registry.h"

namespace tarvelin {
namespace {

// The browser's statistics of the add-ons that it loaded; a class identifier follows.
constexpr wchar_t kStatistics[] = L"\\Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats\\";

constexpr std::int32_t kHelperObject = 3;  // in the value "Type"

}  // namespace

void TScanIeBrowser::ScanHelperObjects(TListView& list) {
  if (list.Count() > 0) return;
  TRegistry registry(platform_.registry, RootKey::CurrentUser);
  if (!registry.OpenKey(kStatistics, false)) return;
  const std::vector<std::wstring> classIds = registry.GetKeyNames();
  registry.CloseKey();

  for (const std::wstring& classId : classIds) {
    registry.SetRootKey(RootKey::CurrentUser);
    if (!registry.OpenKey(kStatistics + classId + L"\\iexplore", false)) continue;
    if (registry.GetDataType(L"Type") != DataType::rdInteger) continue;
    if (registry.ReadInteger(L"Type") != kHelperObject) continue;

    registry.SetRootKey(RootKey::LocalMachine);
    if (!registry.OpenKey(kMachineClassIds + classId, false)) continue;
    if (registry.ReadString(L"").empty()) continue;

    registry.SetRootKey(RootKey::ClassesRoot);
    registry.OpenKey(kClassIds + classId, false);
    const std::wstring className = registry.ReadString(L"");
    registry.OpenKey(ModuleKey(classId), false);
    const std::wstring module = registry.ReadString(L"");
    if (!platform_.files.FileExists(module)) continue;

    const ModuleFacts facts = GetModuleFacts(platform_.shell, module);
    // The path stands twice; the second one has no column and is not shown.
    AddRow(list, ModuleName(facts, className), {facts.publisher, module, module}, module,
           {RootKey::LocalMachine, kMachineClassIds + classId, {}});
  }
}

}  // namespace tarvelin
