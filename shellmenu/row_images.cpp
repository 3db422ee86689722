#include "shellmenu/row_images.h"

#include <memory>
#include <utility>

#include "common/Corvane_Routine_New.h"

namespace tarvelin {

template <typename Extract>
int RowImages::AddOnce(std::wstring source, Extract extract) {
  const auto [known, isNew] = known_.try_emplace(std::move(source), -1);
  if (isNew) {
    if (const std::unique_ptr<Icon> icon = extract())
      known->second = images_.Add(*icon, known->first);
    return known->second;
  }
  return images_.AddCopy(known->second);
}

int RowImages::AddExtracted(const std::wstring& file, int index) {
  return AddOnce(file + L"|" + std::to_wstring(index),
                 [&] { return platform_.shell.ExtractIconOf(file, index); });
}

int RowImages::AddFileType(std::wstring_view commandLine) {
  // A bare name gets the icon of its extension. With a folder in front Windows may look into the
  // file, since programs and icon files bring their own.
  const std::wstring path = CommandLineToFilePath(platform_.files, commandLine);
  const bool bare = path.find(L'\\') == std::wstring::npos;
  return AddOnce(L"|" + (bare ? ExtractFileExt(path) : path),
                 [&] { return GetFileIcon(platform_.files, platform_.shell, commandLine, true); });
}

}  // namespace tarvelin
