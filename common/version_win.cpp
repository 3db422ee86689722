#include "common/version_win.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "common/files_win.h"
#include "common/text.h"

namespace tarvelin {
namespace {

// VerQueryValueW trusts the lengths inside of a resource, which a broken file may have wrong. They
// are 16-bit numbers and there are four levels of blocks, so a query runs past the end by less than
// this, into zeros, and never past the buffer.
constexpr std::size_t kRoomBehind = 256 * 1024;

struct PagesTraits : NullHandleTraits<std::byte*> {
  static void Close(std::byte* pages) { VirtualFree(pages, 0, MEM_RELEASE); }
};
using UniquePages = UniqueHandle<PagesTraits>;

// Zeros from VirtualAlloc, null when memory is short. Those behind a resource cost nothing as long
// as nobody reads them; clearing as many on the heap was a tenth of the time that a module takes.
UniquePages Zeros(std::size_t size) {
  return UniquePages(static_cast<std::byte*>(
      VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)));
}

class WindowsVersionResource : public VersionResource {
 public:
  // `pages` are `size` bytes, with the room behind the resource.
  WindowsVersionResource(UniquePages pages, std::size_t size, decltype(&VerQueryValueW) query)
      : pages_(std::move(pages)), block_(pages_.Get(), size), query_(query) {}

  std::optional<std::pair<std::uint16_t, std::uint16_t>> Translation() override {
    std::uint16_t words[2]{};
    if (!Copy(L"\\VarFileInfo\\Translation", words, sizeof words)) return std::nullopt;
    return {{words[0], words[1]}};
  }

  std::optional<std::wstring> Text(const std::wstring& subBlock) override {
    const auto found = Query(subBlock, sizeof(wchar_t));
    if (!found) return std::nullopt;
    std::wstring text = FromUtf16Le(*found);
    text.resize(std::min(text.find(L'\0'), text.size()));
    return text;
  }

  std::optional<std::array<std::uint32_t, 13>> FixedInfo() override {
    std::array<std::uint32_t, 13> words{};
    if (!Copy(L"\\", words.data(), sizeof words)) return std::nullopt;
    return words;
  }

 private:
  // The value of a sub-block, whose length Windows counts in units of `unit` bytes.
  std::optional<std::span<const std::byte>> Query(const std::wstring& subBlock, std::size_t unit) {
    void* value = nullptr;
    UINT length = 0;
    if (!query_(block_.data(), subBlock.c_str(), &value, &length) || !value) return std::nullopt;
    const auto start = reinterpret_cast<std::uintptr_t>(value);
    const auto begin = reinterpret_cast<std::uintptr_t>(block_.data());
    if (start < begin || start - begin > block_.size()) return std::nullopt;
    const auto rest = block_.subspan(start - begin);
    return rest.first(std::min(rest.size(), length * unit));
  }

  bool Copy(const std::wstring& subBlock, void* target, std::size_t size) {
    const auto found = Query(subBlock, 1);
    if (!found || found->size() < size) return false;
    std::memcpy(target, found->data(), size);
    return true;
  }

  UniquePages pages_;
  std::span<const std::byte> block_;
  decltype(&VerQueryValueW) query_;
};

}  // namespace

std::unique_ptr<VersionResource> VersionLibrary::Open(const std::wstring& path) {
  if (!module_) {
    const std::wstring library = SystemFolder() + L"\\version.dll";
    module_.Reset(LoadLibraryExW(library.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  }
  const HMODULE module = module_.Get();
  const auto getSize =
      FindExport<decltype(&GetFileVersionInfoSizeW)>(module, "GetFileVersionInfoSizeW");
  const auto get = FindExport<decltype(&GetFileVersionInfoW)>(module, "GetFileVersionInfoW");
  const auto query = FindExport<decltype(&VerQueryValueW)>(module, "VerQueryValueW");
  if (!getSize || !get || !query) return nullptr;

  DWORD unused = 0;
  const DWORD size = getSize(path.c_str(), &unused);
  const std::size_t all = size + kRoomBehind;
  if (size == 0 || all < size) return nullptr;  // a broken file may claim what no address reaches
  UniquePages pages = Zeros(all);
  if (!pages || !get(path.c_str(), 0, size, pages.Get())) return nullptr;
  return std::make_unique<WindowsVersionResource>(std::move(pages), all, query);
}

}  // namespace tarvelin
