// Version resources of files.
#pragma once

#include <memory>
#include <string>

#include "common/platform.h"

namespace tarvelin {

// The version resource of a file (GetFileVersionInfoW), null when it has none that can be read.
// The file may be broken or made to do harm.
[[nodiscard]] std::unique_ptr<VersionResource> OpenVersionResourceOf(const std::wstring& path);

}  // namespace tarvelin
