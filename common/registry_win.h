// The Windows registry behind the interface that the scans and removals use.
#pragma once

#include "common/registry.h"

namespace tarvelin {

// The live registry, in the view of the program's own bitness (no KEY_WOW64 flag is given).
class WindowsRegistry : public RegistryBackend {
 public:
  [[nodiscard]] std::unique_ptr<RegistryKey> Open(RootKey root, const RegistryKey* base,
                                                  const std::wstring& path,
                                                  RegistryAccess access) override;
  [[nodiscard]] std::unique_ptr<RegistryKey> Create(RootKey root, const RegistryKey* base,
                                                    const std::wstring& path) override;
  [[nodiscard]] bool RemoveTree(RootKey root, const RegistryKey* base,
                                const std::wstring& path) override;
};

}  // namespace tarvelin
