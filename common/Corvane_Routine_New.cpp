#include "common/Corvane_Routine_New.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace tarvelin {
namespace {

constexpr auto kNone = std::wstring::npos;

// Keeps the text before the first `marker`, or all of it.
void CutAt(std::wstring& text, wchar_t marker) {
  text.resize(std::min(text.find(marker), text.size()));
}

void EraseFront(std::wstring& text, std::size_t count) {
  text.erase(0, std::min(count, text.size()));
}

// The token is taken to stand at the front, followed by a backslash: that is where commands have
// it, and the rows of the lists depend on what comes out when it stands elsewhere.
void ExpandToken(FileSystem& files, std::wstring& text, const std::wstring& token) {
  if (UpperCase(text).find(UpperCase(token)) == kNone) return;
  const auto expansion = files.ExpandEnvironment(token);
  if (!expansion) return;
  EraseFront(text, token.size() + 1);
  constexpr std::size_t maxPath = 260;
  text = ReplaceAll(expansion->substr(0, maxPath) + L"\\" + text, L"\\\\", L"\\");
}

// "\SystemRoot\..." is the kernel's name of the Windows directory. Of a token that stands further
// in, only as much goes as there would be room for at the front.
void ReplaceSystemRoot(FileSystem& files, std::wstring& text) {
  constexpr std::wstring_view token = L"\\systemroot";
  if (text.find(token.front()) == kNone) return;
  const auto at = LowerCase(text).find(token);
  if (at == kNone) return;
  if (at < token.size()) text.erase(at, token.size() - at);
  text.insert(0, GetWindowsDir(files));
}

// The sub-block of the texts in a resource's first translation; nullopt when it names none.
std::optional<std::wstring> StringTableOf(VersionResource& resource) {
  const auto translation = resource.Translation();
  if (!translation) return std::nullopt;
  std::wstring prefix = L"\\StringFileInfo\\";
  for (const unsigned word : {translation->first, translation->second}) {
    for (int shift = 12; shift >= 0; shift -= 4)
      prefix += L"0123456789ABCDEF"[(word >> shift) & 15];
  }
  return prefix + L'\\';
}

constexpr wchar_t kUnknown[] = L"Unknown";

// The texts that a FileInfoField selects by its number.
constexpr struct {
  const wchar_t* entry;
  std::wstring TFileInfo::*member;
} kEntries[] = {{L"Comments", &TFileInfo::Comments},
                {L"CompanyName", &TFileInfo::CompanyName},
                {L"FileDescription", &TFileInfo::FileDescription},
                {L"FileVersion", &TFileInfo::FileVersion},
                {L"InternalName", &TFileInfo::InternalName},
                {L"LegalCopyright", &TFileInfo::LegalCopyright},
                {L"LegalTrademarks", &TFileInfo::LegalTrademarks},
                {L"OriginalFileName", &TFileInfo::OriginalFileName},
                {L"ProductName", &TFileInfo::ProductName},
                {L"ProductVersion", &TFileInfo::ProductVersion}};

}  // namespace

std::wstring LeftOfChar(std::wstring_view text, std::size_t count, wchar_t stopChar) {
  if (stopChar == L'\0') return std::wstring(text.substr(0, count));
  const auto end = text.find(stopChar);
  return std::wstring(text.substr(0, end == kNone ? 0 : end));
}

std::wstring RightOfLastChar(std::wstring_view text, std::size_t count, wchar_t stopChar) {
  if (stopChar == L'\0')
    return std::wstring(text.substr(text.size() - std::min(count, text.size())));
  return std::wstring(text.substr(PositionFromRight(text, stopChar, 1)));
}

std::size_t PositionFromRight(std::wstring_view text, wchar_t charText, std::size_t n) {
  for (std::size_t at = text.size(); at > 0 && n > 0; --at) {
    if (text[at - 1] == charText && --n == 0) return at;
  }
  return 0;
}

std::wstring TrimChars(std::wstring text, wchar_t limitChar) {
  const auto stays = [limitChar](wchar_t c) { return c > limitChar; };
  text.erase(std::find_if(text.rbegin(), text.rend(), stays).base(), text.end());
  text.erase(text.begin(), std::find_if(text.begin(), text.end(), stays));
  return text;
}

std::wstring GetWindowsDir(FileSystem& files) { return files.WindowsDirectory(); }

std::wstring GetSystemDir(FileSystem& files) { return files.SystemDirectory(); }

bool IsFileInUse(FileSystem& files, const std::wstring& path) {
  return files.FileExists(path) && files.ExclusiveOpenFails(path);
}

std::wstring CommandLineToFilePath(FileSystem& files, std::wstring_view commandLine) {
  std::wstring path = ReplaceFirst(std::wstring(commandLine), L";", L"");
  CutAt(path, L'/');  // switches
  path = ReplaceFirst(std::move(path), L"\\??\\", L"");
  // Folding the case of a text takes longer than all the rest here, and most texts have no token.
  if (path.find(L'%') != kNone) {
    for (const auto* token : {L"%windir%", L"%systemroot%", L"%programfiles%"}) {
      ExpandToken(files, path, token);
    }
  }
  ReplaceSystemRoot(files, path);
  path = ReplaceFirst(std::move(path), L"%1", L"");
  CutAt(path, L',');  // a resource index or the entry point for rundll32
  // The first hyphen need not be the one that begins a switch. Rows have always been shown so.
  if (path.find(L" -") != kNone) CutAt(path, L'-');
  path = TrimChars(std::move(path), L'"');
  CutAt(path, L'"');  // arguments behind a quoted path

  // What stands before the drive letter, such as the program that a full path is given to.
  const auto colon = path.find(L":\\");
  if (colon != kNone && colon > 1) EraseFront(path, colon - 1);

  constexpr std::wstring_view rundll = L"rundll32.exe ";
  if (SameText(std::wstring_view(path).substr(0, rundll.size()), rundll)) {
    const std::wstring library = path.substr(rundll.size());
    if (!files.FileExists(library)) {
      for (const auto& folder : {GetWindowsDir(files), GetSystemDir(files)}) {
        if (auto found = folder + L"\\" + library; files.FileExists(found)) return found;
      }
    }
  }
  return path;
}

bool IsAbsolutePath(std::wstring_view path) {
  const auto separator = [&](std::size_t at) {
    return at < path.size() && (path[at] == L'\\' || path[at] == L'/');
  };
  return separator(0) ? separator(1) : path.size() > 2 && path[1] == L':' && separator(2);
}

std::wstring ExtractFileName(std::wstring_view path) {
  const auto end = path.find_last_of(L"\\:");
  return std::wstring(path.substr(end == kNone ? 0 : end + 1));
}

std::wstring ExtractFileExt(std::wstring_view path) {
  const auto at = path.find_last_of(L".\\:");
  return at != kNone && path[at] == L'.' ? std::wstring(path.substr(at)) : std::wstring();
}

bool ReadFileInfo(Shell& shell, const std::wstring& fileName, TFileInfo& info,
                  const std::wstring& extraEntryName) {
  const auto resource = shell.OpenVersionResource(fileName);
  const auto prefix = resource ? StringTableOf(*resource) : std::nullopt;
  if (!prefix) return false;
  const auto entry = [&](const std::wstring& name) {
    return resource->Text(*prefix + name).value_or(L"");
  };
  for (const auto& [name, member] : kEntries) info.*member = entry(name);
  if (const auto fixed = resource->FixedInfo()) info.FixedInfo = *fixed;
  if (!extraEntryName.empty()) info.ExtraValue = entry(extraEntryName);
  return true;
}

std::wstring GetFileInfoField(Shell& shell, const std::wstring& fileName, FileInfoField field) {
  TFileInfo info;
  if (!ReadFileInfo(shell, fileName, info, L"WOW Version")) return kUnknown;
  if (field == FileInfoField::ExtraValue) return info.ExtraValue;
  const auto at = static_cast<std::size_t>(field);
  return at < std::size(kEntries) ? info.*kEntries[at].member : std::wstring();
}

ModuleFacts GetModuleFacts(Shell& shell, const std::wstring& fileName) {
  const auto resource = shell.OpenVersionResource(fileName);
  const auto prefix = resource ? StringTableOf(*resource) : std::nullopt;
  if (!prefix) return {kUnknown, kUnknown};
  return {resource->Text(*prefix + L"FileDescription").value_or(L""),
          resource->Text(*prefix + L"CompanyName").value_or(L"")};
}

std::unique_ptr<Icon> GetFileIcon(FileSystem& files, Shell& shell, std::wstring_view path,
                                  bool small) {
  return shell.FileTypeIcon(CommandLineToFilePath(files, path), small);
}

bool ShowFileProperties(Shell& shell, const std::wstring& fileName) {
  return shell.ShowProperties(fileName);
}

std::wstring GetSpecialFolder(Shell& shell, int folderId) { return shell.SpecialFolder(folderId); }

}  // namespace tarvelin
