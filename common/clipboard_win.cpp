#include "common/clipboard_win.h"

#include <windows.h>

#include <algorithm>

#include "common/handles_win.h"

namespace tarvelin {
namespace {

struct GlobalMemoryTraits : NullHandleTraits<HGLOBAL> {
  static void Close(HGLOBAL handle) { GlobalFree(handle); }
};

// Keeps the clipboard open while it lives.
class OpenedClipboard {
 public:
  OpenedClipboard() : opened_(OpenClipboard(GetActiveWindow())) {}
  OpenedClipboard(const OpenedClipboard&) = delete;
  OpenedClipboard& operator=(const OpenedClipboard&) = delete;
  ~OpenedClipboard() {
    if (opened_) CloseClipboard();
  }
  [[nodiscard]] explicit operator bool() const { return opened_; }

 private:
  BOOL opened_;
};

}  // namespace

void WindowsClipboard::SetText(std::wstring_view text) {
  UniqueHandle<GlobalMemoryTraits> memory(
      GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, (text.size() + 1) * sizeof(wchar_t)));
  if (!memory) return;
  auto* const target = static_cast<wchar_t*>(GlobalLock(memory.Get()));
  if (!target) return;
  std::copy(text.begin(), text.end(), target);
  GlobalUnlock(memory.Get());

  const OpenedClipboard clipboard;
  if (!clipboard || !EmptyClipboard()) return;
  // From here on it belongs to the clipboard.
  if (SetClipboardData(CF_UNICODETEXT, memory.Get())) static_cast<void>(memory.Release());
}

}  // namespace tarvelin
