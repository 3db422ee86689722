// The icons of the rows that one scan adds.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "common/text.h"
#include "widgets/components.h"
#include "widgets/platform.h"

namespace tarvelin {

// Appends an image for each row to an image list. Extracting an icon and converting it to an image
// cost as much as a dozen registry reads, so an icon that came before is copied. The memory of what
// came before lasts for one scan: by the next one the icon files may have changed.
class RowImages {
 public:
  RowImages(TPlatform& platform, TImageList& images) : platform_(platform), images_(images) {}

  // Icon `index` of a file, a negative index naming a resource. As the next function it returns the
  // image's index in the list, -1 when there is no such icon.
  int AddExtracted(const std::wstring& file, int index);

  // The shell's small icon for files named like the program in a command line.
  int AddFileType(std::wstring_view commandLine);

 private:
  template <typename Extract>
  int AddOnce(std::wstring source, Extract extract);

  TPlatform& platform_;
  TImageList& images_;
  std::map<std::wstring, int, TextLess> known_;  // the first image of each source, -1 for none
};

}  // namespace tarvelin
