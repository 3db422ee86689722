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

TEST(Pictures, DecodesTheArtworkPremultiplied) {
  testing::FolderResources resources;
  const auto expect = [&](const std::wstring& name, int width, int height, std::uint32_t first) {
    const auto extension = name.substr(name.size() - 3);
    const auto picture = DecodePicture(extension, resources.Find(name)).value_or(TPicture{});
    EXPECT_TRUE(picture.width == width && picture.height == height) << name;
    EXPECT_EQ(picture.pixels.at(0), first) << name;
    for (const auto pixel : picture.pixels) {
      for (const int shift : {0, 8, 16}) ASSERT_LE(pixel >> shift & 0xFF, pixel >> 24) << name;
    }
  };
  expect(L"logo.png", 48, 48, 0);  // nothing beyond a rounded corner
  expect(L"navigation.png", 160, 16, 0);
  expect(L"categories.png", 96, 16, 0);
  for (const auto* header : {L"menu-0", L"menu-1", L"ie-0", L"ie-1", L"ie-2", L"ie-3"}) {
    expect(L"header-" + std::wstring(header) + L".png", 162, 24, 0);
  }
  expect(L"background.jpg", 743, 69, 0xFFFFFFFF);
  EXPECT_TRUE(DecodePicture(L"Png", resources.Find(L"logo.png")));
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
  const auto decode = [&](const std::wstring& name) {
    const auto file = resources.Find(L"../../tests/widgets/pictures/" + name);
    EXPECT_FALSE(file.empty()) << name;
    return DecodeJpeg(file).value_or(TPicture{}).pixels;
  };
  EXPECT_EQ(decode(L"grey-4096x1.jpg"), Pixels(4096, 0xFF666666));
  EXPECT_TRUE(decode(L"grey-4097x1.jpg").empty());
  EXPECT_TRUE(decode(L"grey-1x4097.jpg").empty());
  EXPECT_TRUE(decode(L"cmyk-8x8.jpg").empty());
}

TEST(Pictures, RefusesDamagedFiles) {
  testing::FolderResources resources;
  const auto png = resources.Find(L"header-ie-0.png");
  const auto jpeg = resources.Find(L"background.jpg");
  for (std::size_t size = 0; size < png.size(); ++size) EXPECT_FALSE(DecodePng(png.first(size)));
  for (std::size_t cut = 1; cut <= jpeg.size(); cut += cut < 40 ? 1 : 19) {
    EXPECT_FALSE(DecodeJpeg(jpeg.first(jpeg.size() - cut))) << cut;
  }
  Bytes damaged(png.begin(), png.end());
  for (std::size_t bit = 0; bit < png.size() * 8; ++bit) {  // checksums cover every byte
    damaged[bit / 8] ^= std::byte{1} << bit % 8;
    EXPECT_FALSE(DecodePng(damaged)) << bit;
    damaged[bit / 8] ^= std::byte{1} << bit % 8;
  }
  std::minstd_rand random(1);
  for (int run = 0; run < 300; ++run) {  // no checksums here: what is decoded is at least whole
    damaged.assign(jpeg.begin(), jpeg.end());
    damaged[random() % damaged.size()] ^= std::byte{1} << random() % 8;
    const auto found = DecodeJpeg(damaged).value_or(TPicture{});
    EXPECT_EQ(found.pixels.size(), static_cast<std::size_t>(found.width * found.height));
  }
}

}  // namespace tarvelin
