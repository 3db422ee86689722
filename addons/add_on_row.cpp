#include "addons/add_on_row.h"

#include <memory>
#include <utility>

namespace tarvelin {

std::wstring ModuleKey(const std::wstring& classId) {
  return kClassIds + classId + L"\\InprocServer32";
}

std::wstring ModuleName(const ModuleFacts& facts, const std::wstring& className) {
  const bool none = facts.description.empty() || facts.description == L"N/A";
  return none ? className : facts.description;
}

void AddRow(TListView& list, std::wstring caption, std::vector<std::wstring> subItems,
            std::wstring filePath, const RegistryLocation& location) {
  auto record = std::make_shared<TIESec>();
  record->FilePath = std::move(filePath);
  record->RegLocation = location.Text();
  TListItem row;
  row.caption = std::move(caption);
  row.subItems = std::move(subItems);
  row.data = std::move(record);
  list.Add(std::move(row));
}

}  // namespace tarvelin
