#include "shellmenu/extension_icon.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "common/Corvane_Routine_New.h"
#include "common/registry.h"
#include "shellmenu/shellmenu.h"

namespace tarvelin {
namespace {

int DigitValue(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return 16;
}

// A number in decimal, or in hexadecimal after "$", "x" or "0x", with blanks and a sign before it;
// nullopt for any other text and for what does not fit.
std::optional<int> ParseInteger(std::wstring_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(L' '), text.size()));
  const bool negative = text.starts_with(L'-');
  if (negative || text.starts_with(L'+')) text.remove_prefix(1);
  int base = 10;
  for (const std::wstring_view prefix : {L"$", L"0x", L"0X", L"x", L"X"}) {
    if (base == 10 && text.starts_with(prefix)) {
      text.remove_prefix(prefix.size());
      base = 16;
    }
  }
  if (text.empty()) return std::nullopt;
  std::int64_t number = 0;
  for (const wchar_t c : text) {
    if (DigitValue(c) >= base) return std::nullopt;
    number = number * base + DigitValue(c);
    if (number > std::int64_t{std::numeric_limits<int>::max()} + 1) return std::nullopt;
  }
  if (negative) number = -number;
  if (number > std::numeric_limits<int>::max()) return std::nullopt;
  return static_cast<int>(number);
}

int RequireInteger(const std::wstring& text) {
  if (const auto number = ParseInteger(text)) return *number;
  throw TError(messages::kErrorNumber, text);
}

struct IconLocation {
  std::wstring file;   // without its double quotes
  std::wstring index;  // "0" when there is none
};

// Takes "file,index" apart. A single character after the comma is not seen as an index.
IconLocation SplitIconLocation(std::wstring_view location) {
  const auto comma = location.find(L',');
  IconLocation result{ReplaceAll(location.substr(0, comma), L"\"", L""), L"0"};
  if (comma != std::wstring_view::npos && comma + 2 < location.size()) {
    result.index = location.substr(comma + 1);
  }
  return result;
}

}  // namespace

std::wstring GetProgramFilesDir(RegistryBackend& registry) {
  TRegistry access(registry, RootKey::LocalMachine);
  if (!access.OpenKeyReadOnly(L"Software\\Microsoft\\Windows\\CurrentVersion")) return {};
  return TextOrEmpty(access, L"ProgramFilesDir");
}

int ExtensionIcons::GetExtensionIcon(std::wstring_view extension, std::wstring_view programId) {
  if (SameText(extension, L".exe")) return AddShellIcon(2);

  TRegistry registry(platform_.registry, RootKey::ClassesRoot);
  if (!registry.OpenKeyReadOnly(std::wstring(programId) + L"\\DefaultIcon")) return AddShellIcon(0);
  const std::wstring location = TextOrEmpty(registry, L"");
  registry.CloseKey();

  // Many types share one location; its file is looked for once.
  const auto known = located_.find(location);
  if (known != located_.end()) return images_.AddCopy(known->second);
  return located_[location] = AddLocated(location);
}

int ExtensionIcons::AddLocated(const std::wstring& location) {
  FileSystem& files = platform_.files;
  const auto orShellIcon = [&](int image) { return image >= 0 ? image : AddShellIcon(0); };

  if (files.FileExists(location)) return orShellIcon(rowImages_.AddFileType(location));

  const auto [file, index] = SplitIconLocation(location);
  if (files.FileExists(file)) {
    return orShellIcon(rowImages_.AddExtracted(file, ParseInteger(index).value_or(0)));
  }
  const std::wstring systemFile = GetSystemDir(files) + L"\\" + file;
  if (files.FileExists(systemFile)) {
    return rowImages_.AddExtracted(systemFile, RequireInteger(index));
  }
  static constexpr std::wstring_view kProgramFiles = L"%ProgramFiles%";
  const std::wstring path =
      file.find(kProgramFiles) != std::wstring::npos
          ? ReplaceFirst(file, kProgramFiles, GetProgramFilesDir(platform_.registry))
          : CommandLineToFilePath(files, file);
  if (files.FileExists(path)) return rowImages_.AddExtracted(path, RequireInteger(index));
  return AddShellIcon(0);
}

int ExtensionIcons::AddShellIcon(int index) {
  return rowImages_.AddExtracted(GetSystemDir(platform_.files) + L"\\shell32.dll", index);
}

}  // namespace tarvelin
