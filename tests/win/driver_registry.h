// The real registry and disk for tests: writing what a test needs, whatever its shape, and telling
// what the program changed. A path is a root, long or short ("HKEY_CURRENT_USER", "HKCU"), and a
// key path. What fails throws DriverError.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/handles_win.h"
#include "common/text.h"
#include "tests/win/driver.h"

namespace tarvelin::testing {

// Where add-ons are registered, and where the sample's modules tell that they were unregistered.
inline const std::wstring kClass = L"HKLM\\SOFTWARE\\Classes\\CLSID\\";
inline const std::wstring kUnit =
    L"HKLM\\SOFTWARE\\Microsoft\\Code Store Database\\Distribution Units\\";
inline const std::wstring kToolbar = L"HKLM\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar";
inline const std::wstring kExtensions = L"HKLM\\SOFTWARE\\Microsoft\\Internet Explorer\\Extensions";
inline const std::wstring kBars = L"HKCU\\Software\\Microsoft\\Internet Explorer\\Explorer Bars";
inline const std::wstring kMenuExt = L"HKCU\\Software\\Microsoft\\Internet Explorer\\MenuExt";
inline const std::wstring kStats =
    L"HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats";
inline const std::wstring kTraces = L"HKCU\\Software\\Tarvelin Sample";

// Each creates the key when it is missing. The empty value name is the default value.
void MakeKey(const std::wstring& path);
void WriteText(const std::wstring& path, const std::wstring& name, std::wstring_view text,
               DWORD type = REG_SZ);
void WriteInteger(const std::wstring& path, const std::wstring& name, DWORD number);
void WriteValue(const std::wstring& path, const std::wstring& name, DWORD type, const Bytes& data);

// The text of a value; nullopt when it is missing or no text.
[[nodiscard]] std::optional<std::wstring> ReadText(const std::wstring& path,
                                                   const std::wstring& name);
void DeleteKey(const std::wstring& path);  // with everything below it; a missing key is no error

// A class that is registered machine-wide with a module, as add-ons are. An empty module registers
// none.
void RegisterClass(const std::wstring& classId, std::wstring_view name, std::wstring_view module);

// A child whose name holds a NUL character somewhere; it is created empty.
void MakeOddKey(const std::wstring& parent, std::wstring_view name);

// A symbolic link at `path` to the key `target`, or to none when nothing is there.
void MakeLink(const std::wstring& path, const std::wstring& target);

// Refuses access to a key, which it makes when it is missing, until it is destroyed.
inline constexpr wchar_t kNoAccess[] = L"D:(D;;KA;;;WD)";
inline constexpr wchar_t kReadOnly[] = L"D:P(A;;KR;;;WD)";
class AccessRule {
 public:
  AccessRule(const std::wstring& path, const wchar_t* rule);
  AccessRule(const AccessRule&) = delete;
  AccessRule& operator=(const AccessRule&) = delete;
  ~AccessRule();

 private:
  bool Set(const wchar_t* rule);
  UniqueRegistryKey key_;
};

// Copies a module of the sample (TARVELIN_SAMPLE) to a path, whose folders are made.
void InstallModule(const std::wstring& sampleName, const std::wstring& path);
// Imports the sample's registry, without installing any module.
void ImportSample();
void WriteFileBytes(const std::wstring& path, std::string_view bytes);

// One line for each key ("path") and value ("path|name=type:data", data as text or bytes) of some
// branches, or for each file of a folder ("path size"), sorted. Links are named and not followed.
using Lines = std::vector<std::wstring>;
[[nodiscard]] Lines DumpRegistry(const std::wstring& path);
[[nodiscard]] Lines DumpRegistry(const std::vector<std::wstring>& paths);
[[nodiscard]] Lines ListFiles(const std::wstring& folder);

// What became of it: "- line" for each line that has gone, "+ line" for each new one.
[[nodiscard]] Lines Differences(const Lines& before, const Lines& after);

}  // namespace tarvelin::testing
