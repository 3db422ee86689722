// Toolbars, which are values below one key of the machine, and Explorer bars, which are keys of the
// user.
#include <optional>
#include <unordered_set>
#include <utility>

#include "addons/UnitIEBrowserHelp.h"
#include "addons/add_on_row.h"
#include "common/registry.h"
#include "common/text.h"

namespace tarvelin {
namespace {

constexpr wchar_t kToolbars[] = L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar\\";
constexpr wchar_t kBars[] = L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Explorer Bars\\";
constexpr wchar_t kApproved[] =
    L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Approved";

// The names of the approved shell extensions. They are read when the first bar is compared with
// them and kept as a set, because there may be thousands of both.
class ApprovedNames {
 public:
  explicit ApprovedNames(RegistryBackend& backend) : backend_(backend) {}

  [[nodiscard]] bool Contains(std::wstring_view name) {
    if (!names_) Read();
    return names_->contains(LowerCase(Trim(name)));
  }

 private:
  void Read() {
    TRegistry registry(backend_, RootKey::LocalMachine);
    registry.OpenKey(kApproved, false);
    names_.emplace();
    for (const std::wstring& name : registry.GetValueNames()) {
      names_->insert(LowerCase(Trim(name)));
    }
  }

  RegistryBackend& backend_;
  std::optional<std::unordered_set<std::wstring>> names_;  // trimmed, in lower case
};

enum class ClassKey { Open, Missing, Refused };

// Opens the key of a class. Opening is also the test of its existence, so that nearly every class
// costs one open.
ClassKey OpenClass(TRegistry& classes, std::wstring_view name) {
  const std::wstring path = kClassIds + std::wstring(name);
  if (classes.OpenKey(path, false)) return ClassKey::Open;
  return classes.KeyExists(path) ? ClassKey::Refused : ClassKey::Missing;
}

}  // namespace

void TScanIeBrowser::ScanToolbars(TListView& list) {
  if (list.Count() > 0) return;
  TRegistry toolbars(platform_.registry, RootKey::LocalMachine);
  if (!toolbars.OpenKey(kToolbars, false)) return;
  TRegistry classes(platform_.registry, RootKey::ClassesRoot);

  for (const std::wstring& name : toolbars.GetValueNames()) {
    // A toolbar goes by the path of a key that would have its name.
    const RegistryLocation toolbar{RootKey::LocalMachine, kToolbars + name, {}};
    const ClassKey found = OpenClass(classes, name);
    if (found == ClassKey::Missing) {
      const DataType type = toolbars.GetDataType(name);
      if (type != DataType::rdString && type != DataType::rdExpandString) continue;
      std::wstring text = toolbars.ReadString(name);
      if (!text.empty()) AddRow(list, std::move(text), {L""}, L"", toolbar);
      continue;
    }
    if (found == ClassKey::Refused) continue;
    std::wstring className = classes.ReadString(L"");
    if (className.empty() || !classes.OpenKey(ModuleKey(name), false)) continue;
    const std::wstring module = classes.ReadString(L"");
    if (module.empty()) continue;
    AddRow(list, std::move(className), {GetModuleFacts(platform_.shell, module).publisher, module},
           module, toolbar);
  }
}

void TScanIeBrowser::ScanExplorerBars(TListView& list) {
  if (list.Count() > 0) return;
  TRegistry bars(platform_.registry, RootKey::CurrentUser);
  if (!bars.OpenKey(kBars, false)) return;
  ApprovedNames approved(platform_.registry);
  TRegistry classes(platform_.registry, RootKey::ClassesRoot);

  for (const std::wstring& bar : bars.GetKeyNames()) {
    // A key with subkeys only groups others. One that has vanished is judged by the key before.
    bars.OpenKey(kBars + bar, false);
    if (!bars.GetKeyNames().empty() || approved.Contains(bar)) continue;

    const ClassKey found = OpenClass(classes, bar);
    if (found == ClassKey::Missing) {
      if (!bar.empty()) AddRow(list, bar, {L""}, L"", {RootKey::CurrentUser, kBars + bar, {}});
      continue;
    }
    if (found == ClassKey::Refused) continue;  // it has no name
    // A class that registers no module leaves its own key open, so its name is read once more.
    std::wstring className = classes.ReadString(L"");
    classes.OpenKey(ModuleKey(bar), false);
    std::wstring module = classes.ReadString(L"");
    classes.CloseKey();
    // The path has no column here; it stands in the record alone.
    if (!className.empty()) {
      AddRow(list, std::move(className), {GetModuleFacts(platform_.shell, module).publisher},
             module, {RootKey::CurrentUser, kBars + bar, {}});
    }
  }
}

}  // namespace tarvelin
