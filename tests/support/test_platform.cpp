#include "tests/support/test_platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "common/Corvane_Routine_New.h"

namespace tarvelin::testing {

void FakeFiles::Add(const std::wstring& path, std::string_view content) {
  const auto bytes = std::as_bytes(std::span(content));
  files[FullPath(path)] = Bytes(bytes.begin(), bytes.end());
}

std::wstring FakeFiles::FullPath(const std::wstring& path) {
  const std::wstring full = ReplaceAll(path, L"/", L"\\");
  if (full.empty() || IsAbsolutePath(full)) return full;
  if (full.starts_with(L"\\")) return L"C:" + full;
  return L"C:\\Current\\" + full.substr(full.starts_with(L"C:") ? 2 : 0);
}

bool FakeFiles::RemoveFile(const std::wstring& path) {
  if (undeletable.contains(path) || files.erase(FullPath(path)) == 0) return false;
  removed.push_back(path);
  return true;
}

std::vector<std::wstring> FakeFiles::EntryNames(const std::wstring& pattern) {
  return entries[pattern];
}

std::optional<Bytes> FakeFiles::ReadWholeFile(const std::wstring& path) {
  const auto file = files.find(FullPath(path));
  if (file == files.end()) return std::nullopt;
  return file->second;
}

std::wstring FakeFiles::DecodeAnsi(std::span<const std::byte> data) {
  std::wstring text;
  for (const std::byte byte : data) text += static_cast<wchar_t>(std::to_integer<int>(byte));
  return text;
}

std::wstring FakeFiles::ReadProfileText(const std::wstring& path, const std::wstring& section,
                                        const std::wstring& key, const std::wstring& defaultText) {
  const auto text = profile.find(path + L"|" + section + L"|" + key);
  return text == profile.end() ? defaultText : text->second;
}

std::optional<std::wstring> FakeFiles::ExpandEnvironment(const std::wstring& text) {
  const auto value = environment.find(text);
  return value == environment.end() ? text : value->second;
}

void FakeShell::AddVersion(const std::wstring& path, std::map<std::wstring, std::wstring> entries) {
  Version& version = versions[path];
  version.translation = {{std::uint16_t{0x0409}, std::uint16_t{0x04B0}}};
  for (const auto& [name, text] : entries) {
    version.texts[L"\\StringFileInfo\\040904B0\\" + name] = text;
  }
}

std::unique_ptr<VersionResource> FakeShell::OpenVersionResource(const std::wstring& path) {
  class Resource : public VersionResource {
   public:
    explicit Resource(const Version& version) : version_(version) {}
    std::optional<std::pair<std::uint16_t, std::uint16_t>> Translation() override {
      return version_.translation;
    }
    std::optional<std::wstring> Text(const std::wstring& subBlock) override {
      const auto text = version_.texts.find(subBlock);
      if (text == version_.texts.end()) return std::nullopt;
      return text->second;
    }
    std::optional<std::array<std::uint32_t, 13>> FixedInfo() override {
      return std::array<std::uint32_t, 13>{0xFEEF04BD};
    }

   private:
    Version version_;
  };
  ++versionsOpened;
  const auto version = versions.find(path);
  if (version == versions.end()) return nullptr;
  return std::make_unique<Resource>(version->second);
}

std::unique_ptr<Icon> FakeShell::Give(std::wstring request) {
  iconRequests.push_back(std::move(request));
  if (noIcons.contains(iconRequests.back())) return nullptr;
  return std::make_unique<FakeIcon>(iconsAlive);
}

std::unique_ptr<Icon> FakeShell::ExtractIconOf(const std::wstring& path, int index) {
  return Give(path + L"," + std::to_wstring(index));
}

std::unique_ptr<Icon> FakeShell::FileTypeIcon(const std::wstring& path, bool) {
  return Give(L"type:" + path);
}

int FakeBoxes::Show(const std::wstring& text, const std::wstring& caption, std::uint32_t flags) {
  shown.push_back({text, caption, flags});
  if (answers.empty()) {
    ADD_FAILURE() << "unexpected message box: " << ToUtf8(text);
    return kAnswerNo;
  }
  const int answer = answers.front();
  answers.erase(answers.begin());
  if (onShow) onShow();
  return answer;
}

std::span<const std::byte> FolderResources::Find(std::wstring_view name) {
  if (none) return {};
  auto found = loaded_.find(name);
  if (found == loaded_.end()) {
    std::ifstream file(std::string(TARVELIN_RESOURCES_DIR) + "/artwork/" + ToUtf8(name),
                       std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    const auto bytes = std::as_bytes(std::span(content));
    found = loaded_.emplace(name, Bytes(bytes.begin(), bytes.end())).first;
  }
  return found->second;
}

}  // namespace tarvelin::testing
