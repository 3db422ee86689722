// The "Send to" page: the entries of the user's "Send to" folder.
#include <utility>

#include "common/Corvane_Routine_New.h"
#include "shellmenu/row_images.h"
#include "shellmenu/shellmenu.h"
#include "widgets/list_update.h"

namespace tarvelin {

void ScanSendTo(TPlatform& platform, TListView& list, TImageList& images,
                std::wstring_view sendToFolder) {
  if (list.Count() > 0) return;
  ScanFolderToList(platform, list, images, sendToFolder);
}

int ScanFolderToList(TPlatform& platform, TListView& list, TImageList& images,
                     std::wstring_view folder) {
  ListUpdate update(list);
  if (folder.empty()) {
    // There is never anything to show then, so the list is left in its update.
    update.LeaveOpen();
    return 0;
  }
  std::wstring prefix(folder);
  if (!prefix.ends_with(L'\\')) prefix += L'\\';

  // Every name is taken before the first message is handled, so that no search handle is open while
  // the user's clicks do what they like, removing a row or closing the window among it. Another
  // listing of this page is not among it: the window sees to that.
  const std::vector<std::wstring> names = platform.files.EntryNames(prefix + L"*.*");
  RowImages rowImages(platform, images);
  for (const std::wstring& name : names) {
    platform.display.ProcessMessages();
    if (name == L"." || name == L"..") continue;

    auto record = std::make_shared<TSendTo>();
    record->FilePath = prefix + name;
    TListItem row;
    row.caption = ReplaceAll(name, ExtractFileExt(name), L"");
    row.imageIndex = rowImages.AddFileType(name);
    row.data = std::move(record);
    row.checked = true;  // not seen: the page has no check boxes
    list.Add(std::move(row));
  }
  return 0;
}

}  // namespace tarvelin
