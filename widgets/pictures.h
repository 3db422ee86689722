// Pictures of the window's artwork, decoded from PNG and JPEG.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarvelin {

// The artwork that the executable carries.
class Resources {
 public:
  virtual ~Resources() = default;
  // The bytes of a picture by its file name, such as "logo.png"; empty when there is none. They
  // stay valid as long as this object.
  [[nodiscard]] virtual std::span<const std::byte> Find(std::wstring_view name) = 0;
};

// A picture in memory: rows from top to bottom, each pixel 0xAARRGGBB with the colour premultiplied
// by alpha, which in memory is the order B, G, R, A that AlphaBlend wants.
struct TPicture {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;
  [[nodiscard]] bool Empty() const { return pixels.empty(); }
};

// The pixels of a PNG (libpng) or JPEG (libjpeg) file in memory; nullopt when it is broken, cut off
// before its end mark or larger than 4096 pixels in a direction.
[[nodiscard]] std::optional<TPicture> DecodePng(std::span<const std::byte> data);
[[nodiscard]] std::optional<TPicture> DecodeJpeg(std::span<const std::byte> data);

// The picture formats by file extension, without the dot and in any case.
struct TPictureFormat {
  std::wstring_view extension;
  std::optional<TPicture> (*decode)(std::span<const std::byte> data);
};
[[nodiscard]] std::span<const TPictureFormat> PictureFormats();

// Decodes by the format of that extension; nullopt for an unknown one.
[[nodiscard]] std::optional<TPicture> DecodePicture(std::wstring_view extension,
                                                    std::span<const std::byte> data);

}  // namespace tarvelin
