#include "widgets/pictures.h"

#include <gtest/gtest.h>

#include <random>

#include <png.h>

#include "tests/support/test_platform.h"

namespace tarvelin {

using Pixels = std::vector<std::uint32_t>;
// A PNG whose rows hold only `fill`; palettes are half transparent red, 0x666666 is transparent.
static Bytes EncodePng(unsigned width, unsigned height, int type, int depth, int adam7, int fill) {
  Bytes out;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  const auto append = [](png_structp writer, png_bytep bytes, std::size_t count) {
    const auto data = std::as_bytes(std::span(bytes, count));
    auto& to = *static_cast<Bytes*>(png_get_io_ptr(writer));
    to.insert(to.end(), data.begin(), data.end());
  };
  png_set_write_fn(png, &out, append, nullptr);
  png_set_IHDR(png, info, width, height, depth, type, adam7, 0, 0);
  const std::vector<png_color> palette(256, png_color{255, 0, 0});
  const std::vector<png_byte> alpha(256, 128);
  const png_color_16 key{0, 0x66, 0x66, 0x66, 0};
  const int colours = type == PNG_COLOR_TYPE_PALETTE ? 1 << depth : 1;
  if (type == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette.data(), colours);
  if (!(type & PNG_COLOR_MASK_ALPHA)) png_set_tRNS(png, info, alpha.data(), colours, &key);
  std::vector<png_byte> row(std::size_t{width} * 8, static_cast<png_byte>(fill));
  std::vector<png_bytep> rows(height, row.data());
  png_set_rows(png, info, rows.data());
  png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  png_destroy_write_struct(&png, &info);
  return out;
}

TEST(Pictures, AreChosenByExtensionAndPremultiplied) {
  testing::FolderResources resources;
  const auto logo = DecodePicture(L"Png", resources.Find(L"logo.png")).value_or(TPicture{});
  EXPECT_EQ(logo.width, 48);
  EXPECT_EQ(logo.height, 48);
  EXPECT_EQ(logo.pixels.size(), 48U * 48);
  for (const auto pixel : logo.pixels) {
    for (const int shift : {0, 8, 16}) ASSERT_LE(pixel >> shift & 0xFF, pixel >> 24);
  }
  const auto background = DecodePicture(L"jpg", resources.Find(L"background.jpg"));
  ASSERT_TRUE(background);
  EXPECT_EQ(background->width, 743);
  EXPECT_EQ(background->height, 69);
  EXPECT_EQ(background->pixels[0], 0xFFFFFFFF);
  EXPECT_FALSE(DecodePicture(L"jpeg", resources.Find(L"logo.png")));
  EXPECT_FALSE(DecodePicture(L"bmp", resources.Find(L"logo.png")));
}

TEST(Pictures, DecodesEveryKindOfPng) {
  const auto expect = [](int type, std::vector<int> depths, int fill, std::uint32_t pixel) {
    for (const int depth : depths) {
      for (const int interlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
        const auto picture = DecodePng(EncodePng(9, 7, type, depth, interlace, fill));
        EXPECT_EQ(picture.value_or(TPicture{}).pixels, Pixels(63, pixel)) << type << ' ' << depth;
      }
    }
  };
  expect(PNG_COLOR_TYPE_GRAY, {1, 2, 4, 8, 16}, 0xFF, 0xFFFFFFFF);
  expect(PNG_COLOR_TYPE_PALETTE, {1, 2, 4, 8}, 0xFF, 0x80800000);
  expect(PNG_COLOR_TYPE_RGB, {8, 16}, 0x67, 0xFF676767);
  expect(PNG_COLOR_TYPE_RGB, {8}, 0x66, 0);
  expect(PNG_COLOR_TYPE_GRAY_ALPHA, {8, 16}, 0x80, 0x80404040);
  expect(PNG_COLOR_TYPE_RGB_ALPHA, {8, 16}, 0x80, 0x80404040);
  EXPECT_TRUE(DecodePng(EncodePng(4096, 1, PNG_COLOR_TYPE_GRAY, 8, 0, 0)));
  EXPECT_FALSE(DecodePng(EncodePng(4097, 1, PNG_COLOR_TYPE_GRAY, 8, 0, 0)));
  EXPECT_FALSE(DecodePng(EncodePng(1, 4097, PNG_COLOR_TYPE_GRAY, 8, 0, 0)));
}

TEST(Pictures, DecodesJpegsOfTheScreenOnly) {
  testing::FolderResources resources;
  const std::pair<std::wstring, std::size_t> widths[] = {
      {L"grey-4096x1", 4096}, {L"grey-4097x1", 0}, {L"grey-1x4097", 0}, {L"cmyk-8x8", 0}};
  for (const auto& [name, width] : widths) {
    const auto file = resources.Find(L"../../tests/widgets/pictures/" + name + L".jpg");
    EXPECT_FALSE(file.empty()) << name;
    EXPECT_EQ(DecodeJpeg(file).value_or(TPicture{}).pixels, Pixels(width, 0xFF666666)) << name;
  }
}

TEST(Pictures, RefusesDamagedFiles) {
  testing::FolderResources resources;
  const Bytes png = EncodePng(9, 7, PNG_COLOR_TYPE_RGB_ALPHA, 8, PNG_INTERLACE_ADAM7, 0x80);
  const auto jpeg = resources.Find(L"background.jpg");
  for (std::size_t at = 0; at < png.size(); ++at) {
    EXPECT_FALSE(DecodePng(std::span(png).first(at))) << at;
    if (at >= png.size() - 4) continue;  // nobody looks at the checksum of the empty end
    Bytes damaged = png;                 // all others cover every byte
    damaged[at] ^= std::byte{1} << at % 8;
    EXPECT_FALSE(DecodePng(damaged)) << at;
  }
  for (std::size_t cut = 1; cut <= jpeg.size(); cut += cut < 40 ? 1 : 199) {
    EXPECT_FALSE(DecodeJpeg(jpeg.first(jpeg.size() - cut))) << cut;
  }
  std::minstd_rand random(1);
  for (int run = 0; run < 60; ++run) {  // no checksums here: what is decoded is at least whole
    Bytes damaged(jpeg.begin(), jpeg.end());
    damaged[random() % damaged.size()] ^= std::byte{1} << random() % 8;
    const auto found = DecodeJpeg(damaged).value_or(TPicture{});
    EXPECT_EQ(found.pixels.size(), static_cast<std::size_t>(found.width * found.height));
  }
}

}  // namespace tarvelin
