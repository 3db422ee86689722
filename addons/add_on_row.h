// What the add-on scans share: where a class is registered and how a row is put together.
#pragma once

#include <string>
#include <vector>

#include "common/Corvane_Routine_New.h"
#include "common/registry.h"
#include "common/shell.h"
#include "widgets/components.h"

namespace tarvelin {

// The classes of the machine, below HKEY_LOCAL_MACHINE, and the classes as programs see them, below
// HKEY_CLASSES_ROOT. A class identifier follows.
inline constexpr wchar_t kMachineClassIds[] = L"\\SOFTWARE\\Classes\\CLSID\\";
inline constexpr wchar_t kClassIds[] = L"\\CLSID\\";

// What the browser downloaded and installed, below HKEY_LOCAL_MACHINE.
inline constexpr wchar_t kDistributionUnits[] =
    L"\\SOFTWARE\\Microsoft\\Code Store Database\\Distribution Units\\";

// The key below HKEY_CLASSES_ROOT whose default value is the module of a class.
[[nodiscard]] std::wstring ModuleKey(const std::wstring& classId);

// What a control or helper object is called: its module's description, or the name of its class
// when the module has none.
[[nodiscard]] std::wstring ModuleName(const ModuleFacts& facts, const std::wstring& className);

// Adds a row with its record at the end of a list.
void AddRow(TListView& list, std::wstring caption, std::vector<std::wstring> subItems,
            std::wstring filePath, const RegistryLocation& location);

}  // namespace tarvelin
