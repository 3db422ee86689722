#include "widgets/tool_tip_win.h"

#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>

namespace tarvelin {

namespace {

constexpr LPARAM kWidestLine = 560;

// The window is the whole tool. The parent hears of it, since lists have tips of their own that
// they would mistake it for.
TTTOOLINFOW ToolOf(HWND window, std::wstring& text) {
  TTTOOLINFOW tool{};
  tool.cbSize = TTTOOLINFOW_V2_SIZE;
  tool.uFlags = TTF_IDISHWND;
  tool.hwnd = GetParent(window);
  tool.uId = reinterpret_cast<UINT_PTR>(window);
  tool.lpszText = text.data();
  return tool;
}

}  // namespace

void ToolTip::SetText(HWND window, const std::wstring& text) {
  // A registry text of any length would cover the screen.
  std::wstring shown = text.substr(0, INFOTIPSIZE - 1);
  if (shown == text_) return;
  text_ = shown;
  TTTOOLINFOW tool = ToolOf(window, shown);
  if (tip_) {
    SendMessageW(tip_, TTM_POP, 0, 0);
    SendMessageW(tip_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
    return;
  }
  tip_ = CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX, 0, 0, 0, 0,
                         GetAncestor(window, GA_ROOT), nullptr, nullptr, nullptr);
  SendMessageW(tip_, TTM_SETMAXTIPWIDTH, 0, kWidestLine);
  SendMessageW(tip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

void ToolTip::Relay(HWND window, UINT message, WPARAM wParam, LPARAM lParam) const {
  if (!tip_ || message < WM_MOUSEFIRST || message > WM_MOUSELAST) return;
  MSG told{window, message, wParam, lParam, 0, {}};
  SendMessageW(tip_, TTM_RELAYEVENT, static_cast<WPARAM>(GetMessageExtraInfo()),
               reinterpret_cast<LPARAM>(&told));
}

}  // namespace tarvelin
