#include "app/ExtIniFiles.h"

#include <initializer_list>
#include <span>

namespace tarvelin {

namespace {

bool StartsWith(std::span<const std::byte> data, std::initializer_list<int> mark) {
  if (data.size() < mark.size()) return false;
  std::size_t index = 0;
  for (const int byte : mark) {
    if (std::to_integer<int>(data[index++]) != byte) return false;
  }
  return true;
}

std::wstring Decode(FileSystem& files, std::span<const std::byte> data) {
  if (StartsWith(data, {0xEF, 0xBB, 0xBF})) return FromUtf8(data.subspan(3));
  if (StartsWith(data, {0xFF, 0xFE})) return FromUtf16Le(data.subspan(2));
  if (StartsWith(data, {0xFE, 0xFF})) return FromUtf16Be(data.subspan(2));
  return files.DecodeAnsi(data);
}

}  // namespace

void TValueLines::Add(std::wstring_view line) {
  const auto equals = line.find(L'=');
  const auto key = Trim(line.substr(0, equals));
  const auto value =
      equals == std::wstring_view::npos ? std::wstring_view() : Trim(line.substr(equals + 1));
  lines_.emplace_back(key, value);
}

std::unordered_map<std::wstring, std::size_t>& TValueLines::Index() const {
  // Of lines with the same key the first counts, as in the profile files of Windows.
  for (; indexed_ < lines_.size(); ++indexed_) {
    index_.try_emplace(UpperCase(lines_[indexed_].first), indexed_);
  }
  return index_;
}

bool TValueLines::Contains(std::wstring_view key) const { return Value(key) != nullptr; }

const std::wstring* TValueLines::Value(std::wstring_view key) const {
  const auto& index = Index();
  const auto found = index.find(UpperCase(key));
  return found == index.end() ? nullptr : &lines_[found->second].second;
}

void TValueLines::Set(std::wstring_view key, std::wstring_view value) {
  const auto [position, added] = Index().try_emplace(UpperCase(key), lines_.size());
  if (added) {
    lines_.emplace_back(key, value);
    ++indexed_;
  } else {
    lines_[position->second].second = value;
  }
}

bool TExtIniFile::LoadFromFile(FileSystem& files, const std::wstring& path) {
  Clear();
  const auto data = files.ReadWholeFile(path);
  if (!data) return false;
  const std::wstring text = Decode(files, *data);

  TValueLines* section = nullptr;
  // The empty line between the CR and the LF of one line end is skipped like any other.
  for (std::wstring_view rest = text; !rest.empty();) {
    const auto end = rest.find_first_of(L"\r\n");
    const auto line = Trim(rest.substr(0, end));
    rest.remove_prefix(end == std::wstring_view::npos ? rest.size() : end + 1);
    if (line.empty() || line.front() == L';') continue;
    if (line.front() == L'[' && line.back() == L']') {
      section = &FindOrAdd(Trim(line.substr(1, line.size() - 2)));
    } else if (section) {
      section->Add(line);
    }
  }
  return true;
}

std::wstring TExtIniFile::ReadText(std::wstring_view section, std::wstring_view key,
                                   std::wstring_view defaultText) const {
  const auto* lines = Find(section);
  const auto* value = lines ? lines->Value(key) : nullptr;
  return value ? *value : std::wstring(defaultText);
}

bool TExtIniFile::ValueExists(std::wstring_view section, std::wstring_view key) const {
  const auto* lines = Find(section);
  return lines && lines->Contains(key);
}

void TExtIniFile::ReadSectionValues(std::wstring_view section, TValueLines& target) const {
  const auto* lines = Find(section);
  target = lines ? *lines : TValueLines();
}

void TExtIniFile::WriteText(std::wstring_view section, std::wstring_view key,
                            std::wstring_view value) {
  FindOrAdd(section).Set(key, value);
}

void TExtIniFile::Clear() {
  sections_.clear();
  index_.clear();
}

const TValueLines* TExtIniFile::Find(std::wstring_view section) const {
  const auto found = index_.find(UpperCase(section));
  return found == index_.end() ? nullptr : &sections_[found->second].second;
}

TValueLines& TExtIniFile::FindOrAdd(std::wstring_view section) {
  const auto [position, added] = index_.try_emplace(UpperCase(section), sections_.size());
  if (added) sections_.emplace_back(section, TValueLines());
  return sections_[position->second].second;
}

}  // namespace tarvelin
