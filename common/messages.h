// Every text that the program shows apart from the captions of its windows, and their lookup in the
// user's language.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace tarvelin {

// A message: its key in the section [Tarvelin_M] of a language file, and the text that is shown
// when no file has that key. In both "%s" stands for a name.
struct Text {
  std::wstring_view key;
  std::wstring_view english;
};

class MessageLookup {
 public:
  virtual ~MessageLookup() = default;
  [[nodiscard]] virtual std::wstring Message(const Text& text) const = 0;
};

namespace messages {

inline constexpr Text kRemoveWarning{L"M_Remove_Warning", L"Are you sure to remove \"%s\""};
inline constexpr Text kWarning{L"M_Warning", L"Warning"};
inline constexpr Text kRemoveSuccess{L"M_Remove_Success", L"Remove successfully!"};
inline constexpr Text kEntryRemoved{L"M_Remove_Success", L"Remove success!"};  // of a browser menu
inline constexpr Text kSelectNone{L"M_Select_None", L"No item selected."};
inline constexpr Text kNothingRestored{L"M_Select_None", L"No items selected!"};
inline constexpr Text kUnableDeleteFile{L"M_Unable_Delete_File", L"Unable to delete file"};
inline constexpr Text kOperationFail{L"M_Operation_Fail",
                                     L"This operation could not be completed."};
inline constexpr Text kAccessDenied{L"M_Access_Denied", L"Access is denied."};
inline constexpr Text kConfirm{L"M_Confirm", L"Confirm"};
inline constexpr Text kRestore{L"M_Restore", L"Are you sure to restore the selected items?"};
inline constexpr Text kRestoreSuccess{L"M_Restore_Success", L"Restore successfully!"};
inline constexpr Text kNonexistPath{L"M_Nonexist_Path", L"Nonexistent File Path"};
inline constexpr Text kCopy{L"M_Copy", L"Copy"};
inline constexpr Text kNothingFound{L"M_Nothing_Found", L"No entries were found."};

// Where shell extensions are attached, and their kinds.
inline constexpr Text kAllFile{L"M_All_File", L"All Files"};
inline constexpr Text kDirectory{L"M_Directory", L"Directory"};
inline constexpr Text kFolder{L"M_Folder", L"Folder"};
inline constexpr Text kDrive{L"M_Drive", L"Drive"};
inline constexpr Text kRecycleBin{L"M_Recyclebin", L"Recycle Bin"};
inline constexpr Text kShell{L"M_Shell", L"Shell"};
inline constexpr Text kContextMenu{L"M_ContextMenu", L"ContextMenu"};

// The watched settings.
inline constexpr Text kAllUser{L"M_All_User", L"All Users"};
inline constexpr Text kStartPage{L"M_Start_Page", L"Start Page"};
inline constexpr Text kSearchPage{L"M_Search_Page", L"Search Page"};
inline constexpr Text kDefaultPage{L"M_Default_Page", L"Default Page URL"};
inline constexpr Text kLocalPage{L"M_Local_Page", L"Local Page"};
inline constexpr Text kSearchBar{L"M_Search_Bar", L"Search Bar"};
inline constexpr Text kDefaultSearch{L"M_Default_Search", L"Default Search URL"};
inline constexpr Text kSearchUrl{L"M_Search_URL", L"Search URL"};
inline constexpr Text kCustomizeSearch{L"M_Customize_Search", L"Customize Search"};
inline constexpr Text kSearchAssistant{L"M_Search_Assistant", L"Search Assistant"};
inline constexpr Text kBlankPage{L"M_Blank_Page", L"Blank Page"};
inline constexpr Text kDesktopNavFail{L"M_Desktop_Nav_Fail", L"Desktop Navigation Failure"};
inline constexpr Text kNavCancel{L"M_Nav_Cancel", L"Navigation Canceled"};
inline constexpr Text kNavFail{L"M_Nav_Fail", L"Navigation Failure"};
inline constexpr Text kOfflineInfo{L"M_Offline_Info", L"Offline Information"};
inline constexpr Text kPostNotCached{L"M_Post_Not_Cached", L"Post Not Cached"};

// Errors that end a command.
inline constexpr Text kErrorValueType{L"M_Error_Value_Type",
                                      L"The registry value \"%s\" has an unexpected type."};
inline constexpr Text kErrorValueMissing{L"M_Error_Value_Missing",
                                         L"The registry value \"%s\" is missing."};
inline constexpr Text kErrorValueWrite{L"M_Error_Value_Write",
                                       L"The registry value \"%s\" could not be written."};
inline constexpr Text kErrorNumber{L"M_Error_Number", L"\"%s\" is not a valid number."};
inline constexpr Text kErrorNoItem{
    L"M_Error_No_Item", L"No setting is selected. Choose Cancel and select one in the list."};
inline constexpr Text kErrorUnexpected{L"M_Error_Unexpected",
                                       L"An unexpected error ended the command."};

// All of the above, for whoever checks that a language file is complete.
inline constexpr std::array kAll{
    kRemoveWarning,
    kWarning,
    kRemoveSuccess,
    kEntryRemoved,
    kSelectNone,
    kNothingRestored,
    kUnableDeleteFile,
    kOperationFail,
    kAccessDenied,
    kConfirm,
    kRestore,
    kRestoreSuccess,
    kNonexistPath,
    kCopy,
    kNothingFound,
    kAllFile,
    kDirectory,
    kFolder,
    kDrive,
    kRecycleBin,
    kShell,
    kContextMenu,
    kAllUser,
    kStartPage,
    kSearchPage,
    kDefaultPage,
    kLocalPage,
    kSearchBar,
    kDefaultSearch,
    kSearchUrl,
    kCustomizeSearch,
    kSearchAssistant,
    kBlankPage,
    kDesktopNavFail,
    kNavCancel,
    kNavFail,
    kOfflineInfo,
    kPostNotCached,
    kErrorValueType,
    kErrorValueMissing,
    kErrorValueWrite,
    kErrorNumber,
    kErrorNoItem,
    kErrorUnexpected,
};

}  // namespace messages
}  // namespace tarvelin
