#include "widgets/platform_win.h"

#include <windows.h>

#include <algorithm>

#include "common/clipboard_win.h"
#include "common/com_win.h"
#include "common/files_win.h"
#include "common/modules_win.h"
#include "common/registry_editor_win.h"
#include "common/registry_win.h"
#include "common/shell_win.h"
#include "common/text.h"

namespace tarvelin {
namespace {

// What winternl.h leaves out. GetVersionEx tells programs what their manifest wants to hear.
extern "C" LONG NTAPI RtlGetVersion(OSVERSIONINFOW* version);

class WindowsResources : public Resources {
 public:
  std::span<const std::byte> Find(std::wstring_view name) override {
    // "header-ie-0.png" is the resource HEADER_IE_0_PNG: identifiers hold neither "." nor "-".
    std::wstring id = UpperCase(name);
    std::replace_if(
        id.begin(), id.end(), [](wchar_t c) { return c == L'.' || c == L'-'; }, L'_');
    const HRSRC resource = FindResourceW(nullptr, id.c_str(), RT_RCDATA);
    if (!resource) return {};
    // Part of the mapped executable: there is nothing to free.
    const void* data = LockResource(LoadResource(nullptr, resource));
    if (!data) return {};
    return {static_cast<const std::byte*>(data), SizeofResource(nullptr, resource)};
  }
};

class WindowsDisplay : public Display {
 public:
  explicit WindowsDisplay(PeerContext& context) : context_(context) {}

  int PixelsPerInch() override { return GetDeviceCaps(WindowDc(nullptr).Get(), LOGPIXELSX); }

  int VerticalScrollBarWidth() override { return GetSystemMetrics(SM_CXVSCROLL); }

  int TextWidth(std::wstring_view text) override {
    return TextExtent(context_.fonts.Plain(), std::wstring(text)).cx;
  }

  int WindowsMajorVersion() override {
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    RtlGetVersion(&version);
    return static_cast<int>(version.dwMajorVersion);
  }

  void ProcessMessages() override {
    context_.commands.Listen([this] { context_.loop.ProcessWaiting(); });
  }

 private:
  PeerContext& context_;
};

}  // namespace

struct WindowsPlatform::Parts {
  Parts(MessageBoxes& boxes, PeerContext& context) : boxes(boxes), display(context) {}

  Com com;
  WindowsRegistry registry;
  std::unique_ptr<FileSystem> files = MakeWindowsFiles();
  std::unique_ptr<ModuleRegistrar> modules = MakeWindowsModules(com);
  std::unique_ptr<Shell> shell = MakeWindowsShell(com);
  MessageBoxes& boxes;
  std::unique_ptr<EditorWindows> editor = MakeWindowsEditor(com);
  WindowsResources resources;
  WindowsDisplay display;
  WindowsClipboard clipboard;
  TPlatform platform{registry, *files,    *modules, *shell,   boxes,
                     *editor,  resources, display,  clipboard};
};

WindowsPlatform::WindowsPlatform(MessageBoxes& boxes, PeerContext& context)
    : parts_(std::make_unique<Parts>(boxes, context)) {}

WindowsPlatform::~WindowsPlatform() = default;

TPlatform& WindowsPlatform::Get() { return parts_->platform; }

}  // namespace tarvelin
