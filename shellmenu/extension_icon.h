// The icon of a file type, from the icon specification that its program identifier registers.
#pragma once

#include <string_view>

#include "common/platform.h"
#include "shellmenu/row_images.h"

namespace tarvelin {

// Appends the icon of a file type to the images; a file type without one gets an icon of the
// shell's own. `programId` is the default value of the extension's key as it stands there. Returns
// the image's index, -1 when no icon could be extracted. Throws TError when an icon index in the
// registry is no number.
int AddExtensionIcon(TPlatform& platform, RowImages& images, std::wstring_view extension,
                     std::wstring_view programId);

}  // namespace tarvelin
