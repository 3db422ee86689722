// The picture decoders.
#include <zlib.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "fuzz/fuzz.h"
#include "widgets/pictures.h"

namespace tarvelin::fuzz {
namespace {

// A PNG's checksums turn away nearly every change, so they are made right again.
std::vector<std::byte> WithChecksums(Data data) {
  std::vector<std::byte> png(data.begin(), data.end());
  auto* const bytes = reinterpret_cast<unsigned char*>(png.data());
  std::size_t chunk = 8;  // after the signature
  while (chunk + 12 <= png.size()) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < 4; ++i) length = length << 8 | bytes[chunk + i];
    if (length > png.size() - chunk - 12) break;
    const uLong sum = crc32(0, bytes + chunk + 4, static_cast<uInt>(length + 4));
    for (std::size_t i = 0; i < 4; ++i) {
      bytes[chunk + 8 + length + i] = static_cast<unsigned char>(sum >> (24 - 8 * i));
    }
    chunk += length + 12;
  }
  return png;
}

// A picture that was decoded is whole and premultiplied.
void Check(const std::optional<TPicture>& picture) {
  if (!picture) return;
  const auto size =
      static_cast<std::size_t>(picture->width) * static_cast<std::size_t>(picture->height);
  Require(!picture->Empty() && picture->pixels.size() == size);
  for (const std::uint32_t pixel : picture->pixels) {
    for (const int shift : {0, 8, 16}) Require((pixel >> shift & 0xFF) <= pixel >> 24);
  }
}

}  // namespace

void Png(Data data) { Check(DecodePng(WithChecksums(data))); }

void Jpeg(Data data) { Check(DecodeJpeg(data)); }

}  // namespace tarvelin::fuzz
