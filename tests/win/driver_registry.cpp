#include "tests/win/driver_registry.h"

// After windows.h, on which they depend.
#include <sddl.h>
#include <winternl.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tarvelin::testing {

namespace {

// Those of ntdll's functions that winternl.h leaves out.
extern "C" NTSTATUS NTAPI NtCreateKey(HANDLE* key, ACCESS_MASK access, OBJECT_ATTRIBUTES* name,
                                      ULONG, UNICODE_STRING*, ULONG options, ULONG*);
extern "C" NTSTATUS NTAPI NtOpenKey(HANDLE* key, ACCESS_MASK access, OBJECT_ATTRIBUTES* name);
extern "C" NTSTATUS NTAPI NtDeleteKey(HANDLE key);
extern "C" NTSTATUS NTAPI NtQueryKey(HANDLE key, int what, void* result, ULONG size, ULONG* needed);
extern "C" NTSTATUS NTAPI NtSetValueKey(HANDLE key, UNICODE_STRING* name, ULONG, ULONG type,
                                        const void* data, ULONG size);

void Require(bool good, std::wstring_view what, const std::wstring& path) {
  if (!good) throw DriverError(std::wstring(what) + L": " + path);
}

struct Place {
  HKEY root = nullptr;
  std::wstring key;
};

Place Split(const std::wstring& path) {
  const std::pair<std::wstring_view, HKEY> roots[] = {
      {L"HKCR\\", HKEY_CLASSES_ROOT},
      {L"HKCU\\", HKEY_CURRENT_USER},
      {L"HKEY_CURRENT_USER\\", HKEY_CURRENT_USER},
      {L"HKLM\\", HKEY_LOCAL_MACHINE},
      {L"HKEY_LOCAL_MACHINE\\", HKEY_LOCAL_MACHINE}};
  for (const auto& [name, root] : roots) {
    if (path.starts_with(name)) return {root, path.substr(name.size())};
  }
  throw DriverError(L"no key below a root: " + path);
}

UniqueRegistryKey Open(const std::wstring& path, REGSAM access, DWORD options = 0) {
  const Place place = Split(path);
  UniqueRegistryKey key;
  RegOpenKeyExW(place.root, place.key.c_str(), options, access, key.Put());
  return key;
}

UniqueRegistryKey Create(const std::wstring& path, DWORD options = 0) {
  const Place place = Split(path);
  UniqueRegistryKey key;
  RegCreateKeyExW(place.root, place.key.c_str(), 0, nullptr, options,
                  options ? KEY_ALL_ACCESS | KEY_CREATE_LINK : KEY_ALL_ACCESS, nullptr, key.Put(),
                  nullptr);
  Require(static_cast<bool>(key), L"cannot create the key", path);
  return key;
}

UNICODE_STRING Unicode(std::wstring& text) {
  const auto size = static_cast<USHORT>(text.size() * sizeof(wchar_t));
  return {size, size, text.data()};
}

// By the kernel's call: RegSetValueExW may add the terminator that a text lacks.
void SetValue(const UniqueRegistryKey& key, std::wstring name, DWORD type, const Bytes& data) {
  UNICODE_STRING text = Unicode(name);
  Require(
      NtSetValueKey(key.Get(), &text, 0, type, data.data(), static_cast<ULONG>(data.size())) >= 0,
      L"cannot write the value", name);
}

// A child whose name may hold NUL characters, a link itself and not what it points to; created when
// asked for. Null when that is refused.
UniqueRegistryKey OpenChild(HKEY parent, std::wstring name, REGSAM access, bool create = false) {
  UNICODE_STRING text = Unicode(name);
  OBJECT_ATTRIBUTES attributes{};
  InitializeObjectAttributes(&attributes, &text, OBJ_CASE_INSENSITIVE | OBJ_OPENLINK, parent,
                             nullptr);
  HANDLE key = nullptr;
  create ? NtCreateKey(&key, access, &attributes, 0, nullptr, 0, nullptr)
         : NtOpenKey(&key, access, &attributes);
  return UniqueRegistryKey(static_cast<HKEY>(key));
}

// The name of one subkey or, when there is none left, nullopt.
std::optional<std::wstring> ChildName(HKEY key, DWORD index) {
  std::wstring name(256, L'\0');
  auto length = static_cast<DWORD>(name.size());
  if (RegEnumKeyExW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
      ERROR_SUCCESS) {
    return std::nullopt;
  }
  name.resize(length);
  return name;
}

// The system's own routine is led astray by names that begin with NUL.
void DeleteWithChildren(HKEY key) {
  while (auto name = ChildName(key, 0)) {
    const UniqueRegistryKey child = OpenChild(key, *name, KEY_ALL_ACCESS);
    Require(static_cast<bool>(child), L"cannot delete", *name);
    DeleteWithChildren(child.Get());
  }
  Require(NtDeleteKey(key) >= 0, L"cannot delete", L"a key");
}

std::wstring ValueText(DWORD type, const Bytes& data) {
  std::wstring text = std::to_wstring(type) + L":";
  if ((type == REG_SZ || type == REG_EXPAND_SZ) && data.size() % sizeof(wchar_t) == 0) {
    text += FromUtf16Le(data);
    if (!text.ends_with(L'\0')) return text + L" (not terminated)";
    text.pop_back();
  } else {
    for (const auto byte : data) text += std::to_wstring(std::to_integer<int>(byte)) + L" ";
  }
  return text;
}

std::filesystem::path Sample(const std::wstring& name) {
  return Environment(L"TARVELIN_SAMPLE") + L"\\" + name;
}

void DumpKey(HKEY key, const std::wstring& path, Lines& lines) {
  lines.push_back(path);
  static std::wstring name(16384, L'\0');
  static Bytes data(1 << 20);
  LSTATUS status = ERROR_SUCCESS;
  for (DWORD index = 0; status == ERROR_SUCCESS; ++index) {
    auto length = static_cast<DWORD>(name.size()), size = static_cast<DWORD>(data.size());
    DWORD type = 0;
    status = RegEnumValueW(key, index, name.data(), &length, nullptr, &type,
                           reinterpret_cast<BYTE*>(data.data()), &size);
    if (status != ERROR_SUCCESS) break;
    lines.push_back(path + L"|" + name.substr(0, length) + L"=" +
                    ValueText(type, Bytes(data.begin(), data.begin() + size)));
  }
  Require(status == ERROR_NO_MORE_ITEMS, L"cannot read the values", path);
  for (DWORD index = 0; auto child = ChildName(key, index); ++index) {
    const std::wstring childPath = path + L"\\" + *child;
    if (const UniqueRegistryKey opened = OpenChild(key, *child, KEY_READ)) {
      DumpKey(opened.Get(), childPath, lines);
    } else {
      lines.push_back(childPath + L" (not readable)");
    }
  }
}

}  // namespace

void MakeKey(const std::wstring& path) { Create(path); }

void WriteValue(const std::wstring& path, const std::wstring& name, DWORD type, const Bytes& data) {
  SetValue(Create(path), name, type, data);
}

void WriteText(const std::wstring& path, const std::wstring& name, std::wstring_view text,
               DWORD type) {
  WriteValue(path, name, type, ToUtf16Le(std::wstring(text) + L'\0'));
}

void WriteInteger(const std::wstring& path, const std::wstring& name, DWORD number) {
  const auto* bytes = reinterpret_cast<const std::byte*>(&number);
  WriteValue(path, name, REG_DWORD, Bytes(bytes, bytes + sizeof(number)));
}

std::optional<std::wstring> ReadText(const std::wstring& path, const std::wstring& name) {
  std::wstring text(65536, L'\0');
  auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  if (RegGetValueW(Open(path, KEY_READ).Get(), nullptr, name.c_str(),
                   RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND, nullptr, text.data(),
                   &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  return std::wstring(text.c_str());
}

void DeleteKey(const std::wstring& path) {
  const UniqueRegistryKey key = Open(path, KEY_ALL_ACCESS, REG_OPTION_OPEN_LINK);
  if (key) DeleteWithChildren(key.Get());
}

void RegisterClass(const std::wstring& classId, std::wstring_view name, std::wstring_view module) {
  const std::wstring key = L"HKLM\\SOFTWARE\\Classes\\CLSID\\" + classId;
  WriteText(key, L"", name);
  if (!module.empty()) WriteText(key + L"\\InprocServer32", L"", module);
}

void MakeOddKey(const std::wstring& parent, std::wstring_view name) {
  const auto created = OpenChild(Create(parent).Get(), std::wstring(name), KEY_ALL_ACCESS, true);
  Require(static_cast<bool>(created), L"cannot create an odd key", parent);
}

void MakeLink(const std::wstring& path, const std::wstring& target) {
  // The kernel's path of the target, which a link holds without a terminator.
  constexpr int nameInformation = 3;
  struct {
    ULONG size = 0;
    wchar_t text[1024]{};
  } name;
  ULONG needed = 0;
  const auto end = target.rfind(L'\\');
  Require(NtQueryKey(Create(target.substr(0, end)).Get(), nameInformation, &name, sizeof name,
                     &needed) >= 0,
          L"cannot find out the name of", target);
  SetValue(Create(path, REG_OPTION_CREATE_LINK | REG_OPTION_VOLATILE), L"SymbolicLinkValue",
           REG_LINK,
           ToUtf16Le(std::wstring(name.text, name.size / sizeof(wchar_t)) + target.substr(end)));
}

AccessRule::AccessRule(const std::wstring& path, const wchar_t* rule) : key_(Create(path)) {
  Require(Set(rule), L"cannot restrict the access to", path);
}

AccessRule::~AccessRule() { Set(L"D:P(A;;KA;;;WD)"); }

bool AccessRule::Set(const wchar_t* rule) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  const bool good =
      ConvertStringSecurityDescriptorToSecurityDescriptorW(rule, SDDL_REVISION_1, &descriptor,
                                                           nullptr) &&
      RegSetKeySecurity(key_.Get(), DACL_SECURITY_INFORMATION, descriptor) == ERROR_SUCCESS;
  LocalFree(descriptor);
  return good;
}

void InstallModule(const std::wstring& sampleName, const std::wstring& path) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::filesystem::copy_file(Sample(sampleName), path,
                             std::filesystem::copy_options::overwrite_existing);
}

void ImportSample() {
  std::ifstream source(Sample(L"sample.reg"), std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(source), {});
  const Bytes utf16 = ToUtf16Le(L'\xFEFF' + FromUtf8(std::as_bytes(std::span(text))));
  WriteFileBytes(L"C:\\sample.reg", {reinterpret_cast<const char*>(utf16.data()), utf16.size()});
  // Where Wine has both bitnesses regedit may be of the other one and fill the other view.
  const std::wstring view = sizeof(void*) == 8 ? L"64" : L"32";
  Require(RunToEnd(L"C:\\windows\\system32\\reg.exe import C:\\sample.reg /reg:" + view) == 0,
          L"cannot import", L"sample.reg");
}

void WriteFileBytes(const std::wstring& path, std::string_view bytes) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream file(std::filesystem::path(path), std::ios::binary);
  file << bytes;
  file.close();
  Require(file.good(), L"cannot write", path);
}

Lines DumpRegistry(const std::vector<std::wstring>& paths) {
  Lines lines;
  for (const auto& path : paths) {
    if (const UniqueRegistryKey key = Open(path, KEY_READ)) DumpKey(key.Get(), path, lines);
  }
  std::ranges::sort(lines);
  return lines;
}

Lines DumpRegistry(const std::wstring& path) { return DumpRegistry(std::vector{path}); }

Lines ListFiles(const std::wstring& folder) {
  Lines lines;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    lines.push_back(entry.path().wstring());
    if (entry.is_regular_file()) lines.back() += L" " + std::to_wstring(entry.file_size());
  }
  std::ranges::sort(lines);
  return lines;
}

Lines Differences(const Lines& before, const Lines& after) {
  Lines lines;
  for (const auto& line : before) {
    if (!std::ranges::binary_search(after, line)) lines.push_back(L"- " + line);
  }
  for (const auto& line : after) {
    if (!std::ranges::binary_search(before, line)) lines.push_back(L"+ " + line);
  }
  return lines;
}

}  // namespace tarvelin::testing
