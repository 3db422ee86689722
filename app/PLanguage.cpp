#include "app/PLanguage.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace tarvelin {

namespace {

constexpr std::wstring_view kExtension = L".lng";
constexpr std::wstring_view kFallbackName = L"English";

std::wstring Join(std::wstring_view a, std::wstring_view b, std::wstring_view c) {
  std::wstring joined(a);
  joined += b;
  joined += c;
  return joined;
}

}  // namespace

TLanguage::TLanguage(FileSystem& files, std::wstring_view prefix, std::wstring_view folder)
    : files_(files), prefix_(prefix), folder_(folder) {
  if (folder_.ends_with(L'\\')) folder_.pop_back();
  for (const std::wstring& fileName : files_.EntryNames(Join(folder_, L"\\*", kExtension))) {
    // Windows also matches the short names that it makes up: "*.lng" finds "German.lngbak".
    const auto nameEnd = fileName.size() - std::min(fileName.size(), kExtension.size());
    if (!SameText(std::wstring_view(fileName).substr(nameEnd), kExtension)) continue;
    const std::wstring name = fileName.substr(0, nameEnd);
    names_.push_back(name);
    index_ = static_cast<int>(names_.size()) - 1;
    Load(name);
    displayNames_.push_back(ReadText(L"Main", L"DisplayName", name));
  }
}

std::wstring TLanguage::ReadLanguageName(const std::wstring& settingsFile,
                                         const std::wstring& section,
                                         const std::wstring& key) const {
  try {
    return files_.ReadProfileText(settingsFile, section, key, std::wstring(kFallbackName));
  } catch (const std::exception&) {
    // The program has to start whatever state the shared settings file is in.
    return {};
  }
}

void TLanguage::Load(std::wstring_view name) {
  for (const auto candidate : {name, kFallbackName}) {
    const auto known = std::ranges::find_if(
        names_, [&](const std::wstring& other) { return SameText(other, candidate); });
    if (known == names_.end()) continue;
    const std::wstring path = Join(folder_, L"\\", candidate) + std::wstring(kExtension);
    TExtIniFile loaded;
    // The folder of the scan may hold a directory of that name, or the file went meanwhile.
    if (!files_.FileExists(path) || !loaded.LoadFromFile(files_, path)) continue;
    index_ = static_cast<int>(known - names_.begin());
    file_ = std::move(loaded);
    file_.ReadSectionValues(prefix_ + L"_M", messages_);
    return;
  }
}

void TLanguage::Translate(TForm& form) const {
  if (form.Name().empty()) return;
  const std::wstring section = Join(prefix_, L"_", form.Name());
  form.SetCaption(ReadText(section, form.Name() + L".Caption", form.Caption()));
  // Components are all owned by their form, however deep they are nested in its window.
  for (const auto& component : form.Components()) {
    for (const TranslatableText& text : component->TranslatableTexts()) {
      text.assign(ReadText(section, component->Name() + text.keySuffix, text.current));
    }
  }
}

std::wstring TLanguage::ReadText(std::wstring_view section, std::wstring_view key,
                                 std::wstring_view defaultText) const {
  return file_.ReadText(section, key, defaultText);
}

std::wstring TLanguage::Message(const Text& text) const {
  const auto* translated = messages_.Value(text.key);
  return translated ? *translated : std::wstring(text.english);
}

}  // namespace tarvelin
