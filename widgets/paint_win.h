// What the windows are painted with.
#pragma once

#include <windows.h>

#include <string>

#include "common/handles_win.h"
#include "widgets/components.h"

namespace tarvelin {

// The fonts of the windows; their height in pixels is fixed, as the windows' sizes are.
class Fonts {
 public:
  Fonts();
  [[nodiscard]] HFONT Of(LabelStyle style) const;
  [[nodiscard]] HFONT Plain() const { return plain_.Get(); }

 private:
  UniqueFont plain_;
  UniqueFont bold_;
  UniqueFont title_;
};

// Whether the windows show the colours of the user's scheme and none of the program's own, which
// were chosen for black on white: in high contrast (SPI_GETHIGHCONTRAST), and under every scheme
// that writes in other colours.
[[nodiscard]] bool SchemeColors();
[[nodiscard]] COLORREF BackgroundColor(TColor color);
[[nodiscard]] COLORREF TextColor(TColor color);

[[nodiscard]] RECT ToRect(const TRect& bounds);
[[nodiscard]] SIZE TextExtent(HFONT font, const std::wstring& text);

void Fill(HDC dc, const RECT& area, COLORREF color);
// One line of text, taken literally, centred vertically or at the top; what does not fit ends in an
// ellipsis.
void DrawTextLine(HDC dc, HFONT font, COLORREF color, const std::wstring& text, RECT area,
                  UINT placement = DT_VCENTER);

// Paints into memory and copies the finished area to the target when it goes out of scope, so that
// no half-painted state is seen. Text is not for it: on a screen for which Windows enlarges the
// program it is drawn sharply on the window itself only, and what comes from memory is stretched.
class BufferedDc {
 public:
  BufferedDc(HDC target, const RECT& area, bool buffered);
  BufferedDc(const BufferedDc&) = delete;
  BufferedDc& operator=(const BufferedDc&) = delete;
  ~BufferedDc();
  // Coordinates are those of the target. It is the target itself when nothing is to be
  // buffered, or memory is short.
  [[nodiscard]] HDC Get() const { return memory_ ? memory_.Get() : target_; }

 private:
  HDC target_;
  RECT area_;
  UniqueMemoryDc memory_;
  UniqueBitmap bitmap_;
  HGDIOBJ before_ = nullptr;
};

// A picture in the form that Windows draws: a DIB section.
class PictureBitmap {
 public:
  PictureBitmap() = default;
  // `premultiplied` keeps the pixels as they are; image lists want the plain colours instead.
  explicit PictureBitmap(const TPicture& picture, bool premultiplied = true);
  [[nodiscard]] HBITMAP Get() const { return bitmap_.Get(); }
  // Draws with its transparency (AlphaBlend), at its own size from the area's corner or stretched.
  void Draw(HDC dc, const RECT& area, bool stretch) const;

 private:
  UniqueBitmap bitmap_;
  int width_ = 0;
  int height_ = 0;
};

}  // namespace tarvelin
