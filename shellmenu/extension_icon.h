// The icon of a file type, from the icon specification that its program identifier registers.
#pragma once

#include <optional>
#include <string>
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

// "file,index" taken apart: the file without its double quotes, and the text of the index. An index
// of one character after the comma is not seen and counts as "0", like a missing one.
struct IconSpecification {
  std::wstring file;
  std::wstring index;
};
[[nodiscard]] IconSpecification SplitIconSpecification(std::wstring_view specification);

// A number in decimal, or in hexadecimal after "$", "x" or "0x", with blanks and a sign before it;
// nullopt for any other text and for what does not fit.
[[nodiscard]] std::optional<int> ParseInteger(std::wstring_view text);

}  // namespace tarvelin
