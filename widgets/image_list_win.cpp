#include <windows.h>

#include <commctrl.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "common/shell_win.h"
#include "widgets/controls_win.h"

namespace tarvelin {

namespace {

constexpr int kSide = 16;  // pixels

class WindowsImageList : public ImageListPeer {
 public:
  WindowsImageList() : images_(ImageList_Create(kSide, kSide, ILC_COLOR32 | ILC_MASK, 16, 64)) {}

  [[nodiscard]] HIMAGELIST Get() const { return images_.Get(); }

  int AddIcon(const Icon& icon, std::optional<int> place) override {
    const auto* handle = dynamic_cast<const WindowsIcon*>(&icon);
    return handle ? ImageList_ReplaceIcon(images_.Get(), place.value_or(-1), handle->Handle()) : -1;
  }

  int AddPicture(const TPicture& picture) override {
    if (picture.width != kSide || picture.height != kSide) return -1;
    const PictureBitmap colors(picture, false);
    // Where every pixel is transparent Windows takes the picture for one without alpha and goes by
    // the mask: one bit for each pixel, the leftmost in the highest bit of the first byte.
    std::array<std::uint8_t, kSide * kSide / 8> bits{};
    for (std::size_t pixel = 0; pixel < picture.pixels.size(); ++pixel) {
      if (picture.pixels[pixel] >> 24 == 0) {
        bits[pixel / 8] = static_cast<std::uint8_t>(bits[pixel / 8] | 0x80 >> pixel % 8);
      }
    }
    const UniqueBitmap mask(CreateBitmap(kSide, kSide, 1, 1, bits.data()));
    return ImageList_Add(images_.Get(), colors.Get(), mask.Get());
  }

 private:
  UniqueImageList images_;
};

}  // namespace

std::unique_ptr<ImageListPeer> MakeImageListPeer() { return std::make_unique<WindowsImageList>(); }

HIMAGELIST ImagesOf(const TImageList* images) {
  const auto* peer = images ? dynamic_cast<const WindowsImageList*>(images->Peer()) : nullptr;
  return peer ? peer->Get() : nullptr;
}

}  // namespace tarvelin
