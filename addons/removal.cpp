// The removal of what the scanner lists.
#include "addons/UnitIEBrowserHelp.h"
#include "addons/add_on_row.h"
#include "common/Corvane_Routine_New.h"
#include "common/registry.h"
#include "common/text.h"

namespace tarvelin {

std::wstring RemovalString(RemovalMode mode, const TIESec& record) {
  switch (mode) {
    case RemovalMode::UnregisterHelperObject:
    case RemovalMode::UnregisterControl:
      return record.FilePath + L"|" + record.RegLocation;
    case RemovalMode::DeleteValueAndFile:
      return record.RegLocation + L"|" + record.FilePath;
    case RemovalMode::DeleteKey:
    case RemovalMode::DeleteContextEntry:
    case RemovalMode::DeleteExtraButton:
      break;
  }
  return record.RegLocation;
}

int TScanIeBrowser::RemoveAddon(RemovalMode mode, std::wstring_view removal) {
  switch (mode) {
    case RemovalMode::UnregisterHelperObject:
    case RemovalMode::UnregisterControl:
      UnregisterActiveX(removal);
      break;
    case RemovalMode::DeleteValueAndFile:
      return RemoveValueAndFile(removal);
    case RemovalMode::DeleteKey:
    case RemovalMode::DeleteContextEntry:
    case RemovalMode::DeleteExtraButton:
      DeleteLocationKey(platform_.registry, removal);
      break;
  }
  return 0;
}

// The string is a module path, "|" and the location of a class. Unregistering runs the module's own
// code in this process, so only a library on a lettered drive that nothing holds open is let in;
// any other stays as it is, keys included. What is tested is the file that will be loaded; only the
// drive letter has to be in the path as it was registered.
void TScanIeBrowser::UnregisterActiveX(std::wstring_view removal) {
  FileSystem& files = platform_.files;
  const std::wstring registered =
      ReplaceAll(LeftOfChar(removal, 255, L'|'), L"%SYSTEMROOT%", GetWindowsDir(files));
  const std::wstring module = files.FullPath(registered);
  if (!files.FileExists(module) || IsFileInUse(files, module)) return;
  const std::wstring extension = ExtractFileExt(registered);
  if (!SameText(extension, L".DLL") && !SameText(extension, L".OCX")) return;
  if (registered.size() < 2 || registered[1] != L':') return;

  platform_.modules.Unregister(module);

  // Without a class identifier the paths below would name the parents of all classes and units, and
  // one that ends in NUL would name another class once it is trimmed.
  const auto brace = removal.find(L'{');
  if (brace == std::wstring_view::npos) return;
  if (removal.find(L'\0', brace) != std::wstring_view::npos) return;
  const std::wstring classId(Trim(removal.substr(brace)));
  TRegistry registry(platform_.registry, RootKey::LocalMachine);
  registry.DeleteKey(kMachineClassIds + classId);
  registry.DeleteKey(kDistributionUnits + classId);
}

// The string is the location of a key, a value's name in braces, "|" and a file. It is split at its
// braces, because the location and the name have nothing else between them.
int TScanIeBrowser::RemoveValueAndFile(std::wstring_view removal) {
  const auto firstBrace = removal.find(L'{');
  if (firstBrace == std::wstring_view::npos) return 0;
  const std::wstring_view nameAndFile = removal.substr(removal.rfind(L'{'));
  const auto nameEnd = nameAndFile.find(L'|');
  // The last brace belongs to the file's path: neither the name nor the file can be told.
  if (nameEnd == std::wstring_view::npos) return 0;

  DeleteLocationValue(platform_.registry, removal.substr(0, firstBrace),
                      nameAndFile.substr(0, nameEnd));

  const std::wstring file(nameAndFile.substr(nameAndFile.rfind(L'|') + 1));
  // A bar may name its module without a folder ("mscoree.dll"). A file of that name in the current
  // folder is another one.
  if (!IsAbsolutePath(file) || !platform_.files.FileExists(file)) return 0;
  return platform_.files.RemoveFile(file) ? 0 : -1;
}

}  // namespace tarvelin
