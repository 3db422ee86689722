#include "widgets/paint_win.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace tarvelin {

namespace {

constexpr int kTextHeight = -11;
constexpr int kTitleHeight = -16;

UniqueFont MakeFont(int height, int weight) {
  return UniqueFont(CreateFontW(height, 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                                DEFAULT_PITCH | FF_DONTCARE, L"Tahoma"));
}

std::uint32_t PlainColors(std::uint32_t pixel) {
  const std::uint32_t alpha = pixel >> 24;
  if (alpha == 0) return 0;
  const auto plain = [&](unsigned shift) {
    return std::min(((pixel >> shift & 0xFF) * 255 + alpha / 2) / alpha, 255U) << shift;
  };
  return alpha << 24 | plain(16) | plain(8) | plain(0);
}

}  // namespace

Fonts::Fonts()
    : plain_(MakeFont(kTextHeight, FW_NORMAL)),
      bold_(MakeFont(kTextHeight, FW_BOLD)),
      title_(MakeFont(kTitleHeight, FW_BOLD)) {}

HFONT Fonts::Of(LabelStyle style) const {
  switch (style) {
    case LabelStyle::Bold:
      return bold_.Get();
    case LabelStyle::Title:
      return title_.Get();
    default:
      return plain_.Get();
  }
}

bool SchemeColors() {
  if (GetSysColor(COLOR_WINDOW) != kWhite || GetSysColor(COLOR_WINDOWTEXT) != kBlack) return true;
  HIGHCONTRASTW scheme{};
  scheme.cbSize = sizeof scheme;
  return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof scheme, &scheme, 0) &&
         (scheme.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

COLORREF BackgroundColor(TColor color) {
  return SchemeColors() ? GetSysColor(COLOR_WINDOW) : color;
}

COLORREF TextColor(TColor color) { return SchemeColors() ? GetSysColor(COLOR_WINDOWTEXT) : color; }

RECT ToRect(const TRect& bounds) {
  return {bounds.left, bounds.top, bounds.left + bounds.width, bounds.top + bounds.height};
}

SIZE TextExtent(HFONT font, const std::wstring& text) {
  const WindowDc dc(nullptr);
  const SelectGuard selected(dc.Get(), font);
  SIZE size{};
  GetTextExtentPoint32W(dc.Get(), text.data(), static_cast<int>(text.size()), &size);
  return size;
}

void Fill(HDC dc, const RECT& area, COLORREF color) {
  SetDCBrushColor(dc, color);
  FillRect(dc, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void DrawTextLine(HDC dc, HFONT font, COLORREF color, const std::wstring& text, RECT area,
                  UINT placement) {
  SelectGuard selected(dc, font);
  SetBkMode(dc, TRANSPARENT);
  SetTextColor(dc, color);
  DrawTextW(dc, text.data(), static_cast<int>(text.size()), &area,
            DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS | placement);
}

BufferedDc::BufferedDc(HDC target, const RECT& area, bool buffered) : target_(target), area_(area) {
  const int width = area.right - area.left;
  const int height = area.bottom - area.top;
  if (!buffered || width <= 0 || height <= 0) return;
  memory_.Reset(CreateCompatibleDC(target));
  bitmap_.Reset(CreateCompatibleBitmap(target, width, height));
  if (!memory_ || !bitmap_) {
    memory_.Reset();
    return;
  }
  before_ = SelectObject(memory_.Get(), bitmap_.Get());
  SetViewportOrgEx(memory_.Get(), -area.left, -area.top, nullptr);
}

BufferedDc::~BufferedDc() {
  if (!memory_) return;
  BitBlt(target_, area_.left, area_.top, area_.right - area_.left, area_.bottom - area_.top,
         memory_.Get(), area_.left, area_.top, SRCCOPY);
  SelectObject(memory_.Get(), before_);
}

PictureBitmap::PictureBitmap(const TPicture& picture, bool premultiplied)
    : width_(picture.width), height_(picture.height) {
  if (picture.Empty()) return;
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = picture.width;
  info.bmiHeader.biHeight = -picture.height;  // rows from top to bottom
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  void* bits = nullptr;
  bitmap_.Reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  if (!bitmap_) throw std::bad_alloc();
  auto* pixels = static_cast<std::uint32_t*>(bits);
  if (premultiplied) {
    std::copy(picture.pixels.begin(), picture.pixels.end(), pixels);
  } else {
    std::transform(picture.pixels.begin(), picture.pixels.end(), pixels, PlainColors);
  }
}

void PictureBitmap::Draw(HDC dc, const RECT& area, bool stretch) const {
  if (!bitmap_) return;
  UniqueMemoryDc memory(CreateCompatibleDC(dc));
  SelectGuard selected(memory.Get(), bitmap_.Get());
  const int areaWidth = area.right - area.left;
  const int areaHeight = area.bottom - area.top;
  const int sourceWidth = stretch ? width_ : std::min(width_, areaWidth);
  const int sourceHeight = stretch ? height_ : std::min(height_, areaHeight);
  const BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
  // The function behind AlphaBlend, whose library Windows would look for beside the program first.
  GdiAlphaBlend(dc, area.left, area.top, stretch ? areaWidth : sourceWidth,
                stretch ? areaHeight : sourceHeight, memory.Get(), 0, 0, sourceWidth, sourceHeight,
                blend);
}

}  // namespace tarvelin
