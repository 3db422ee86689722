// Removal of an entry of the "Shell Extensions" or the "New" page.
#include "common/registry.h"
#include "shellmenu/shellmenu.h"

namespace tarvelin {

void RemoveShellKey(RegistryBackend& registry, std::wstring_view keyPath) {
  TRegistry access(registry, RootKey::ClassesRoot);
  access.DeleteKey(keyPath);
}

}  // namespace tarvelin
