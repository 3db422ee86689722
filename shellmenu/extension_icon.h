// The icon of a file type, from the icon location that its program identifier registers.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "shellmenu/row_images.h"
#include "widgets/components.h"
#include "widgets/platform.h"

namespace tarvelin {

// Appends the icons of file types to an image list, for one scan.
class ExtensionIcons {
 public:
  ExtensionIcons(TPlatform& platform, TImageList& images)
      : platform_(platform), images_(images), rowImages_(platform, images) {}

  // Appends the icon of one file type; a type without one gets an icon of the shell's own.
  // `programId` is the default value of the extension's key as it stands there. Returns the image's
  // index, -1 when no icon could be extracted. Throws TError when an icon index in the registry is
  // no number.
  int GetExtensionIcon(std::wstring_view extension, std::wstring_view programId);

 private:
  int AddLocated(const std::wstring& location);
  int AddShellIcon(int index);

  TPlatform& platform_;
  TImageList& images_;
  RowImages rowImages_;
  std::map<std::wstring, int> located_;  // the first image of each location
};

}  // namespace tarvelin
