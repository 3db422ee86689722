// A platform of which one call fails.
#pragma once

#include <new>
#include <type_traits>

#include "widgets/platform.h"

namespace tarvelin::fuzz {

// How a call fails: it does nothing and gives nothing, as when access is denied or a thing is not
// there; it runs out of memory; what it gives is cut short, or is something else than it was.
enum class Way { Refused, OutOfMemory, Cut, Changed };
inline constexpr Way kWays[] = {Way::Refused, Way::OutOfMemory, Way::Cut, Way::Changed};

// Counts the calls of a platform and lets one fail.
class Faults {
 public:
  // From now on the call of that number fails, 0 being the next one, or all calls from that one on.
  void Arm(int call, Way way, bool onwards) {
    left_ = call;
    way_ = way;
    onwards_ = onwards;
    armed_ = true;
    struck_ = false;
  }
  [[nodiscard]] bool Armed() const { return armed_; }
  // Returns whether there was such a call.
  [[nodiscard]] bool Disarm() {
    armed_ = false;
    return struck_;
  }

  // A call of the platform.
  template <typename Call>
  std::invoke_result_t<Call> Let(const Call& call) {
    using Result = std::invoke_result_t<Call>;
    if (!Strikes()) return call();
    if (way_ == Way::OutOfMemory) throw std::bad_alloc();
    if (way_ == Way::Refused) return Result();
    if constexpr (std::is_void_v<Result>) {
      call();
    } else {
      Result result = call();
      Spoil(result);
      return result;
    }
  }

 private:
  bool Strikes() {
    if (!armed_ || left_-- > 0) return false;
    if (struck_ && !onwards_) return false;
    struck_ = true;
    return true;
  }

  template <typename Result>
  void Spoil(Result& result) const {
    const bool cut = way_ == Way::Cut;
    if constexpr (std::is_same_v<Result, bool>) {
      result = cut ? result : !result;
    } else if constexpr (std::is_arithmetic_v<Result>) {
      result = cut ? Result() : static_cast<Result>(-1);
    } else if constexpr (std::is_same_v<Result, std::wstring>) {
      result = cut ? result.substr(0, result.size() / 2) : std::wstring(L"C:{|\0\\}", 7);
    } else if constexpr (std::is_same_v<Result, RegistryValue>) {
      if (cut) result.data.resize(result.data.size() / 2);
      result.type = cut ? result.type : 3;
    } else if constexpr (requires { result.has_value(); }) {
      if (result) Spoil(*result);
    } else if constexpr (requires { result.resize(0); }) {
      if (cut)
        result.resize(result.size() / 2);
      else
        result.emplace_back();
    }
  }

  bool armed_ = false;
  bool struck_ = false;
  bool onwards_ = false;
  int left_ = 0;
  Way way_ = Way::Refused;
};

// Each of its calls goes through the faults to a platform behind it, which outlives it.
class FaultyPlatform {
 public:
  FaultyPlatform(TPlatform& behind, Faults& faults)
      : registry_(behind.registry, faults),
        files_(behind.files, faults),
        modules_(behind.modules, faults),
        shell_(behind.shell, faults),
        boxes_(behind.boxes, faults),
        editor_(behind.editor, faults),
        resources_(behind.resources, faults),
        display_(behind.display, faults),
        clipboard_(behind.clipboard, faults) {}

  TPlatform& Get() { return platform_; }

 private:
  template <typename Interface>
  struct Through : Interface {
    Through(Interface& interface, Faults& through) : behind(interface), faults(through) {}
    Interface& behind;
    Faults& faults;
  };

  struct Key : RegistryKey {
    Key(std::unique_ptr<RegistryKey> key, Faults& through)
        : behind(std::move(key)), faults(through) {}
    static std::unique_ptr<RegistryKey> Of(std::unique_ptr<RegistryKey> key, Faults& faults) {
      return key ? std::make_unique<Key>(std::move(key), faults) : nullptr;
    }
    std::unique_ptr<RegistryKey> Open(const std::wstring& path,
                                      RegistryAccess access) const override {
      return faults.Let([&] { return Of(behind->Open(path, access), faults); });
    }
    std::unique_ptr<RegistryKey> Create(const std::wstring& path) const override {
      return faults.Let([&] { return Of(behind->Create(path), faults); });
    }
    std::unique_ptr<RegistryKey> OpenToRemove(const std::wstring& path) const override {
      return faults.Let([&] { return Of(behind->OpenToRemove(path), faults); });
    }
    bool RemoveTree() override {
      return faults.Let([&] { return behind->RemoveTree(); });
    }
    std::wstring RealName(const std::wstring& path) const override {
      return faults.Let([&] { return behind->RealName(path); });
    }
    std::vector<std::wstring> SubkeyNames() const override {
      return faults.Let([&] { return behind->SubkeyNames(); });
    }
    std::vector<std::wstring> ValueNames() const override {
      return faults.Let([&] { return behind->ValueNames(); });
    }
    std::optional<RegistryValue> Query(const std::wstring& name) const override {
      return faults.Let([&] { return behind->Query(name); });
    }
    bool SetText(const std::wstring& name, std::wstring_view text) override {
      return faults.Let([&] { return behind->SetText(name, text); });
    }
    bool RemoveValue(const std::wstring& name) override {
      return faults.Let([&] { return behind->RemoveValue(name); });
    }
    std::unique_ptr<RegistryKey> behind;
    Faults& faults;
  };

  // A root is no call that fails: it is there before the program is.
  struct Registry : Through<RegistryBackend> {
    using Through::Through;
    std::unique_ptr<RegistryKey> Root(RootKey root) override {
      return Key::Of(behind.Root(root), faults);
    }
  };

  struct Files : Through<FileSystem> {
    using Through::Through;
    bool FileExists(const std::wstring& path) override {
      return faults.Let([&] { return behind.FileExists(path); });
    }
    bool ExclusiveOpenFails(const std::wstring& path) override {
      return faults.Let([&] { return behind.ExclusiveOpenFails(path); });
    }
    bool RemoveFile(const std::wstring& path) override {
      return faults.Let([&] { return behind.RemoveFile(path); });
    }
    std::wstring FullPath(const std::wstring& path) override {
      return faults.Let([&] { return behind.FullPath(path); });
    }
    std::vector<std::wstring> EntryNames(const std::wstring& pattern) override {
      return faults.Let([&] { return behind.EntryNames(pattern); });
    }
    std::optional<Bytes> ReadWholeFile(const std::wstring& path) override {
      return faults.Let([&] { return behind.ReadWholeFile(path); });
    }
    std::wstring DecodeAnsi(std::span<const std::byte> data) override {
      return faults.Let([&] { return behind.DecodeAnsi(data); });
    }
    std::wstring ReadProfileText(const std::wstring& path, const std::wstring& section,
                                 const std::wstring& key,
                                 const std::wstring& defaultText) override {
      return faults.Let([&] { return behind.ReadProfileText(path, section, key, defaultText); });
    }
    std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) override {
      return faults.Let([&] { return behind.ExpandEnvironment(text); });
    }
    std::wstring WindowsDirectory() override {
      return faults.Let([&] { return behind.WindowsDirectory(); });
    }
    std::wstring SystemDirectory() override {
      return faults.Let([&] { return behind.SystemDirectory(); });
    }
  };

  struct Modules : Through<ModuleRegistrar> {
    using Through::Through;
    void Unregister(const std::wstring& path) override {
      faults.Let([&] { behind.Unregister(path); });
    }
  };

  struct Version : VersionResource {
    Version(std::unique_ptr<VersionResource> version, Faults& through)
        : behind(std::move(version)), faults(through) {}
    std::optional<std::pair<std::uint16_t, std::uint16_t>> Translation() override {
      return faults.Let([&] { return behind->Translation(); });
    }
    std::optional<std::wstring> Text(const std::wstring& subBlock) override {
      return faults.Let([&] { return behind->Text(subBlock); });
    }
    std::optional<std::array<std::uint32_t, 13>> FixedInfo() override {
      return faults.Let([&] { return behind->FixedInfo(); });
    }
    std::unique_ptr<VersionResource> behind;
    Faults& faults;
  };

  struct ShellCalls : Through<Shell> {
    using Through::Through;
    std::unique_ptr<VersionResource> OpenVersionResource(const std::wstring& path) override {
      return faults.Let([&]() -> std::unique_ptr<VersionResource> {
        auto version = behind.OpenVersionResource(path);
        return version ? std::make_unique<Version>(std::move(version), faults) : nullptr;
      });
    }
    std::unique_ptr<tarvelin::Icon> ExtractIconOf(const std::wstring& path, int index) override {
      return faults.Let([&] { return behind.ExtractIconOf(path, index); });
    }
    std::unique_ptr<tarvelin::Icon> FileTypeIcon(const std::wstring& path, bool small) override {
      return faults.Let([&] { return behind.FileTypeIcon(path, small); });
    }
    bool ShowProperties(const std::wstring& path) override {
      return faults.Let([&] { return behind.ShowProperties(path); });
    }
    std::wstring SpecialFolder(int folderId) override {
      return faults.Let([&] { return behind.SpecialFolder(folderId); });
    }
  };

  struct Boxes : Through<MessageBoxes> {
    using Through::Through;
    int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t flags) override {
      return faults.Let([&] { return behind.Show(text, caption, flags); });
    }
  };

  struct Editor : Through<EditorWindows> {
    using Through::Through;
    Window FindTopLevel(const std::wstring& className) override {
      return faults.Let([&] { return behind.FindTopLevel(className); });
    }
    Window FindChild(Window parent, const std::wstring& className) override {
      return faults.Let([&] { return behind.FindChild(parent, className); });
    }
    void StartEditor() override {
      faults.Let([&] { behind.StartEditor(); });
    }
    void Maximize(Window window) override {
      faults.Let([&] { behind.Maximize(window); });
    }
    void BringToForeground(Window window) override {
      faults.Let([&] { behind.BringToForeground(window); });
    }
    void SetFocusTo(Window window) override {
      faults.Let([&] { behind.SetFocusTo(window); });
    }
    void SendKeyDown(Window window, EditorWindows::Key key) override {
      faults.Let([&] { behind.SendKeyDown(window, key); });
    }
    void SendChar(Window window, wchar_t character) override {
      faults.Let([&] { behind.SendChar(window, character); });
    }
    void Pause(int milliseconds) override {
      faults.Let([&] { behind.Pause(milliseconds); });
    }
  };

  struct Pictures : Through<Resources> {
    using Through::Through;
    std::span<const std::byte> Find(std::wstring_view name) override {
      return faults.Let([&] { return behind.Find(name); });
    }
  };

  struct Screen : Through<Display> {
    using Through::Through;
    int PixelsPerInch() override {
      return faults.Let([&] { return behind.PixelsPerInch(); });
    }
    int VerticalScrollBarWidth() override {
      return faults.Let([&] { return behind.VerticalScrollBarWidth(); });
    }
    int TextWidth(std::wstring_view text) override {
      return faults.Let([&] { return behind.TextWidth(text); });
    }
    int WindowsMajorVersion() override {
      return faults.Let([&] { return behind.WindowsMajorVersion(); });
    }
    void ProcessMessages() override {
      faults.Let([&] { behind.ProcessMessages(); });
    }
  };

  struct CopyTarget : Through<Clipboard> {
    using Through::Through;
    void SetText(std::wstring_view text) override {
      faults.Let([&] { behind.SetText(text); });
    }
  };

  Registry registry_;
  Files files_;
  Modules modules_;
  ShellCalls shell_;
  Boxes boxes_;
  Editor editor_;
  Pictures resources_;
  Screen display_;
  CopyTarget clipboard_;
  TPlatform platform_{registry_, files_,     modules_, shell_,    boxes_,
                      editor_,   resources_, display_, clipboard_};
};

}  // namespace tarvelin::fuzz
