// The language of the user interface: finds the language files, loads one and translates windows
// and messages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/ExtIniFiles.h"
#include "common/files.h"
#include "common/messages.h"
#include "widgets/components.h"

namespace tarvelin {

class TLanguage : public MessageLookup {
 public:
  // Scans `folder` for "*.lng" files and leaves the last one found loaded. `prefix` begins the
  // names of the sections. `files` must outlive the object.
  TLanguage(FileSystem& files, std::wstring_view prefix, std::wstring_view folder);

  // The language named in a settings file, "English" when it names none.
  [[nodiscard]] std::wstring ReadLanguageName(const std::wstring& settingsFile,
                                              const std::wstring& section,
                                              const std::wstring& key) const;

  // Loads that language, or English where there is no such file; with neither nothing changes.
  void Load(std::wstring_view name);

  // Replaces the captions of a form and of the components that it owns.
  void Translate(TForm& form) const;

  [[nodiscard]] std::wstring ReadText(std::wstring_view section, std::wstring_view key,
                                      std::wstring_view defaultText) const;
  [[nodiscard]] std::wstring Message(const Text& text) const override;

  [[nodiscard]] int Index() const { return index_; }  // of the loaded language, -1 while none is
  [[nodiscard]] const std::vector<std::wstring>& Names() const { return names_; }
  [[nodiscard]] const std::vector<std::wstring>& DisplayNames() const { return displayNames_; }

 private:
  FileSystem& files_;
  std::wstring prefix_;
  std::wstring folder_;
  int index_ = -1;
  std::vector<std::wstring> names_;
  std::vector<std::wstring> displayNames_;
  TExtIniFile file_;
  TValueLines messages_;
};

}  // namespace tarvelin
