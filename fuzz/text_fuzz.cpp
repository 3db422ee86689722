// Fuzzing of everything that takes a text apart: libFuzzer calls it with bytes that it makes up.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "common/Corvane_Routine_New.h"
#include "common/registry.h"

namespace tarvelin {
namespace {

// A system in which every variable expands and every other file exists, so that all branches of
// the path resolution are taken.
class FuzzFiles : public FileSystem {
 public:
  bool FileExists(const std::wstring& path) override { return path.size() % 2 == 0; }
  bool ExclusiveOpenFails(const std::wstring&) override { return false; }
  bool RemoveFile(const std::wstring&) override { return false; }
  std::wstring FullPath(const std::wstring& path) override { return path; }
  void ForEachEntry(const std::wstring&, const std::function<void(const std::wstring&)>&) override {
  }
  std::optional<Bytes> ReadWholeFile(const std::wstring&) override { return std::nullopt; }
  std::wstring DecodeAnsi(std::span<const std::byte>) override { return {}; }
  std::wstring ReadProfileText(const std::wstring&, const std::wstring&, const std::wstring&,
                               const std::wstring& text) override {
    return text;
  }
  std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) override {
    if (text == L"%windir%") return std::nullopt;
    return L"C:\\" + text;
  }
  std::wstring WindowsDirectory() override { return L"C:\\Windows"; }
  std::wstring SystemDirectory() override { return L"C:\\Windows\\system32"; }
};

void Require(bool holds) {
  if (!holds) std::abort();
}

void TakeApart(const std::wstring& text) {
  FuzzFiles files;
  const auto path = CommandLineToFilePath(files, text);
  Require(path.find(L'/') == std::wstring::npos && path.find(L'"') == std::wstring::npos);
  (void)ExtractFileExt(ExtractFileName(path));
  const auto key = ParseKeyLocation(text);
  Require(text.ends_with(key.path));
  const auto value = ParseValueLocation(text);
  Require(value.value ? text.ends_with(*value.value) : text.find(L'|') == std::wstring::npos);
  Require(UpperCase(text).size() == text.size() && LowerCase(text).size() == text.size());
  Require(SameText(text, UpperCase(text)));
}

}  // namespace
}  // namespace tarvelin

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarvelin;
  const auto bytes = std::as_bytes(std::span(data, size));
  const std::wstring utf8 = FromUtf8(bytes);
  const std::string encoded = ToUtf8(utf8);
  Require(FromUtf8(std::as_bytes(std::span(encoded))) == utf8);
  const std::wstring utf16 = FromUtf16Le(bytes);
  const Bytes again = ToUtf16Le(utf16);
  Require(std::equal(again.begin(), again.end(), bytes.begin(), bytes.begin() + (size & ~1U)));
  (void)FromUtf16Be(bytes);
  TakeApart(utf8);
  TakeApart(utf16);
  return 0;
}
