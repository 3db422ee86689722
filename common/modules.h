// The libraries of add-ons.
#pragma once

#include <string>

namespace tarvelin {

class ModuleRegistrar {
 public:
  virtual ~ModuleRegistrar() = default;

  // Loads the library, calls its export "DllUnregisterServer" when there is one and unloads it.
  // `path` is a full one; any other is passed by. Nothing is reported. The library finds companions
  // in its own folder and in those of Windows, none in the program's or in the current folder.
  virtual void Unregister(const std::wstring& path) = 0;
};

}  // namespace tarvelin
