// Scripted doubles of everything but the registry, and the platform made of them all.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/messages.h"
#include "tests/support/memory_registry.h"
#include "widgets/platform.h"

namespace tarvelin::testing {

class FakeFiles : public FileSystem {
 public:
  std::map<std::wstring, Bytes, TextLess> files;  // by full path; the current folder is C:\Current
  std::set<std::wstring, TextLess> locked;        // refuse the exclusive open
  std::set<std::wstring, TextLess> undeletable;
  std::map<std::wstring, std::vector<std::wstring>, TextLess> entries;  // by pattern
  std::map<std::wstring, std::wstring, TextLess> environment;           // "%windir%" -> value
  std::map<std::wstring, std::wstring> profile;  // "path|section|key" -> text
  std::vector<std::wstring> removed;

  void Add(const std::wstring& path, std::string_view content = {});

  bool FileExists(const std::wstring& path) override { return files.contains(FullPath(path)); }
  bool ExclusiveOpenFails(const std::wstring& path) override {
    return !FileExists(path) || locked.contains(FullPath(path));
  }
  std::wstring FullPath(const std::wstring& path) override;
  bool RemoveFile(const std::wstring& path) override;
  std::vector<std::wstring> EntryNames(const std::wstring& pattern) override;
  std::optional<Bytes> ReadWholeFile(const std::wstring& path) override;
  std::wstring DecodeAnsi(std::span<const std::byte> data) override;  // as Latin-1
  std::wstring ReadProfileText(const std::wstring& path, const std::wstring& section,
                               const std::wstring& key, const std::wstring& defaultText) override;
  std::optional<std::wstring> ExpandEnvironment(const std::wstring& text) override;
  std::wstring WindowsDirectory() override { return L"C:\\Windows"; }
  std::wstring SystemDirectory() override { return L"C:\\Windows\\system32"; }
};

class FakeModules : public ModuleRegistrar {
 public:
  std::vector<std::wstring> unregistered;
  std::function<void()> onUnregister;  // the module's own code
  void Unregister(const std::wstring& path) override {
    unregistered.push_back(path);
    if (onUnregister) onUnregister();
  }
};

class FakeIcon : public Icon {
 public:
  explicit FakeIcon(int& alive) : alive_(alive) { ++alive_; }
  ~FakeIcon() override { --alive_; }

 private:
  int& alive_;
};

class FakeShell : public Shell {
 public:
  struct Version {
    std::optional<std::pair<std::uint16_t, std::uint16_t>> translation;
    std::map<std::wstring, std::wstring> texts;  // by sub-block
  };
  std::map<std::wstring, Version, TextLess> versions;
  int versionsOpened = 0;
  // A version resource in US English with the Unicode code page.
  void AddVersion(const std::wstring& path, std::map<std::wstring, std::wstring> entries);

  std::set<std::wstring> noIcons;          // "path,index" or "type:path" that give no icon
  std::vector<std::wstring> iconRequests;  // in the same form, in order
  int iconsAlive = 0;
  std::vector<std::wstring> properties;
  std::map<int, std::wstring> folders{{26, L"C:\\Users\\u\\AppData\\Roaming"}};

  std::unique_ptr<VersionResource> OpenVersionResource(const std::wstring& path) override;
  std::unique_ptr<Icon> ExtractIconOf(const std::wstring& path, int index) override;
  std::unique_ptr<Icon> FileTypeIcon(const std::wstring& path, bool small) override;
  bool ShowProperties(const std::wstring& path) override {
    properties.push_back(path);
    return true;
  }
  std::wstring SpecialFolder(int folderId) override { return folders[folderId]; }

 private:
  std::unique_ptr<Icon> Give(std::wstring request);
};

// Answers boxes in order; a box that no answer was scripted for fails the test.
class FakeBoxes : public MessageBoxes {
 public:
  struct Box {
    std::wstring text;
    std::wstring caption;
    std::uint32_t flags;
    friend bool operator==(const Box&, const Box&) = default;
  };
  std::vector<int> answers;
  std::vector<Box> shown;
  std::function<void()> onShow;  // while a box is open
  int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t flags) override;
};

// Records what the registry editor is sent, a line for each call.
class FakeEditor : public EditorWindows {
 public:
  bool running = true;
  bool starts = true;
  std::vector<std::wstring> log;
  Window FindTopLevel(const std::wstring& className) override {
    log.push_back(L"find " + className);
    return running ? 1 : 0;
  }
  Window FindChild(Window, const std::wstring& className) override {
    return className == L"SysTreeView32" ? 2 : 3;
  }
  void StartEditor() override {
    log.emplace_back(L"start");
    running = starts;
  }
  void Maximize(Window window) override { Note(L"maximize ", window); }
  void BringToForeground(Window window) override { Note(L"foreground ", window); }
  void SetFocusTo(Window window) override { Note(L"focus ", window); }
  void SendKeyDown(Window window, Key key) override {
    Note(L"key ", window, L" " + std::to_wstring(static_cast<int>(key)));
  }
  void SendChar(Window window, wchar_t character) override {
    Note(L"char ", window, {L' ', character});
  }
  void Pause(int milliseconds) override { Note(L"pause ", static_cast<Window>(milliseconds)); }

 private:
  void Note(const std::wstring& what, Window window, const std::wstring& rest = {}) {
    log.push_back(what + std::to_wstring(window) + rest);
  }
};

// The artwork of the source tree.
class FolderResources : public Resources {
 public:
  bool none = false;  // for tests to which decoding it all would be a waste
  std::span<const std::byte> Find(std::wstring_view name) override;

 private:
  std::map<std::wstring, Bytes, std::less<>> loaded_;
};

class FakeDisplay : public Display {
 public:
  int pumped = 0;
  std::function<void()> onProcessMessages;
  int PixelsPerInch() override { return 96; }
  int VerticalScrollBarWidth() override { return 17; }
  int TextWidth(std::wstring_view text) override { return static_cast<int>(text.size()) * 6; }
  int WindowsMajorVersion() override { return 6; }
  void ProcessMessages() override {
    ++pumped;
    if (onProcessMessages) onProcessMessages();
  }
};

class FakeClipboard : public Clipboard {
 public:
  std::wstring content;
  void SetText(std::wstring_view text) override { content = text; }
};

class EnglishMessages : public MessageLookup {
 public:
  std::wstring Message(const Text& text) const override { return std::wstring(text.english); }
};

struct TestPlatform {
  MemoryRegistry registry;
  FakeFiles files;
  FakeModules modules;
  FakeShell shell;
  FakeBoxes boxes;
  FakeEditor editor;
  FolderResources resources;
  FakeDisplay display;
  FakeClipboard clipboard;
  TPlatform platform{registry, files, modules, shell, boxes, editor, resources, display, clipboard};
};

}  // namespace tarvelin::testing
