#include "addons/add_on_row.h"

#include <memory>
#include <utility>

#include "common/Corvane_Routine_New.h"

namespace tarvelin {

std::wstring ModuleKey(const std::wstring& classId) {
  return kClassIds + classId + L"\\InprocServer32";
}

std::wstring ModuleName(Shell& shell, const std::wstring& module, const std::wstring& className) {
  std::wstring description = GetFileInfoField(shell, module, FileInfoField::FileDescription);
  return description.empty() || description == L"N/A" ? className : description;
}

std::wstring ModulePublisher(Shell& shell, const std::wstring& module) {
  return GetFileInfoField(shell, module, FileInfoField::CompanyName);
}

void AddRow(TListView& list, std::wstring caption, std::vector<std::wstring> subItems,
            std::wstring filePath, const RegistryLocation& location) {
  auto record = std::make_unique<TIESec>();
  record->FilePath = std::move(filePath);
  record->RegLocation = location.Text();
  TListItem row;
  row.caption = std::move(caption);
  row.subItems = std::move(subItems);
  row.data = std::move(record);
  list.Add(std::move(row));
}

}  // namespace tarvelin
