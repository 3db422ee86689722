// The in-memory reader of language files.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "common/files.h"

namespace tarvelin {

// A list of "key=value" lines with fast lookup by key, without regard to case.
class TValueLines {
 public:
  void Add(std::wstring_view line);  // "key=value", or a key alone
  [[nodiscard]] bool Contains(std::wstring_view key) const;
  // The value of a key; null when the key is not there, empty for a key without "=".
  [[nodiscard]] const std::wstring* Value(std::wstring_view key) const;
  void Set(std::wstring_view key, std::wstring_view value);
  [[nodiscard]] const std::vector<std::pair<std::wstring, std::wstring>>& Lines() const {
    return lines_;
  }

 private:
  // Folded key -> line. It follows the lines when a key is looked up: at the start each language
  // is loaded, and only its name is asked for.
  std::unordered_map<std::wstring, std::size_t>& Index() const;

  std::vector<std::pair<std::wstring, std::wstring>> lines_;
  mutable std::unordered_map<std::wstring, std::size_t> index_;
  mutable std::size_t indexed_ = 0;  // lines that the index knows
};

class TExtIniFile {
 public:
  // Replaces the contents by those of a file: UTF-8 or UTF-16 with a byte-order mark, else the
  // system's ANSI code page. False, with the contents dropped, when it cannot be read.
  bool LoadFromFile(FileSystem& files, const std::wstring& path);
  [[nodiscard]] std::wstring ReadText(std::wstring_view section, std::wstring_view key,
                                      std::wstring_view defaultText) const;
  [[nodiscard]] bool ValueExists(std::wstring_view section, std::wstring_view key) const;
  // Fills `target` with the lines of a section; emptied when there is no such section.
  void ReadSectionValues(std::wstring_view section, TValueLines& target) const;
  // In memory only.
  void WriteText(std::wstring_view section, std::wstring_view key, std::wstring_view value);
  void Clear();

 private:
  [[nodiscard]] const TValueLines* Find(std::wstring_view section) const;
  TValueLines& FindOrAdd(std::wstring_view section);

  std::vector<std::pair<std::wstring, TValueLines>> sections_;
  std::unordered_map<std::wstring, std::size_t> index_;  // folded name -> section
};

}  // namespace tarvelin
