// The Windows registry behind the interface that the scans and removals use.
#pragma once

#include "common/registry.h"

namespace tarvelin {

// The live registry, in the view of the program's own bitness (no KEY_WOW64 flag is given).
class WindowsRegistry : public RegistryBackend {
 public:
  [[nodiscard]] std::unique_ptr<RegistryKey> Root(RootKey root) override;
};

}  // namespace tarvelin
