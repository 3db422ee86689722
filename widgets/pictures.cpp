#include "widgets/pictures.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>  // jpeglib.h uses FILE and size_t without including them
#include <memory>
#include <utility>

#include <jpeglib.h>
#include <png.h>

#include "common/text.h"

#ifdef _MSC_VER
// setjmp in a function with destructors: no step that may be left by longjmp has any to run.
#pragma warning(disable : 4611)
#endif

namespace tarvelin {

namespace {

// More than any screen that the window fits on; keeps a broken header from asking for gigabytes.
constexpr unsigned kMaxSide = 4096;

std::uint32_t Premultiplied(std::uint32_t pixel) {
  const std::uint32_t alpha = pixel >> 24;
  const auto scaled = [&](unsigned shift) {
    return ((pixel >> shift & 0xFF) * alpha + 127) / 255 << shift;
  };
  return alpha << 24 | scaled(16) | scaled(8) | scaled(0);
}

TPicture BlankPicture(unsigned width, unsigned height) {
  return {static_cast<int>(width), static_cast<int>(height),
          std::vector<std::uint32_t>(std::size_t{width} * height)};
}

// Whether a PNG holds all its chunks up to the end mark. libpng makes room for a chunk before it
// finds the file shorter than that: a hundred bytes could ask it for gigabytes.
bool HoldsAllChunks(std::span<const std::byte> png) {
  constexpr std::size_t signature = 8;
  constexpr std::size_t frame = 12;              // around a chunk's data: length, type and checksum
  constexpr std::uint32_t endMark = 0x49454E44;  // "IEND"
  const auto number = [&](std::size_t at) {
    std::uint32_t value = 0;
    for (const std::byte byte : png.subspan(at, 4)) {
      value = value << 8 | std::to_integer<std::uint32_t>(byte);
    }
    return value;
  };
  for (std::size_t at = signature; at + frame <= png.size();) {
    const std::size_t length = number(at);
    if (length > png.size() - at - frame) return false;
    if (number(at + 4) == endMark) return true;
    at += frame + length;
  }
  return false;
}

// A JPEG file on its way to a picture. libjpeg reports errors by longjmp, which runs no
// destructors: what has one stands here, outside of the function that is left so, and an exception
// for want of memory meets no C frame there. TurboJPEG would need none of that, but brings a
// compressor along.
class JpegReader {
 public:
  TPicture picture;

  JpegReader() {
    info_.err = jpeg_std_error(&errors_.manager);
    errors_.manager.error_exit = Leave;
    errors_.manager.emit_message = LeaveIfCorrupt;
  }
  ~JpegReader() { jpeg_destroy_decompress(&info_); }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;

  [[nodiscard]] bool Read(const unsigned char* data, unsigned long size) {
    if (setjmp(errors_.landing)) return false;
    jpeg_create_decompress(&info_);
    jpeg_mem_src(&info_, data, size);
    jpeg_read_header(&info_, TRUE);
    if (info_.image_width > kMaxSide || info_.image_height > kMaxSide) return false;
    // libjpeg converts greyscale as well, and refuses the colours of print.
    info_.out_color_space = JCS_EXT_BGRA;
    jpeg_start_decompress(&info_);
    picture = BlankPicture(info_.image_width, info_.image_height);
    while (info_.output_scanline < info_.image_height) {
      row_ = reinterpret_cast<unsigned char*>(picture.pixels.data()) +
             std::size_t{info_.output_scanline} * info_.image_width * 4;
      jpeg_read_scanlines(&info_, &row_, 1);
    }
    return jpeg_finish_decompress(&info_) != FALSE;  // reads to the end mark
  }

 private:
  struct Errors {
    jpeg_error_mgr manager;  // first, so that info_.err points at the whole
    std::jmp_buf landing;
  };

  [[noreturn]] static void Leave(j_common_ptr info) {
    std::longjmp(reinterpret_cast<Errors*>(info->err)->landing, 1);
  }

  // Warnings have level -1: the file is cut off or damaged, and libjpeg would go on with grey.
  static void LeaveIfCorrupt(j_common_ptr info, int level) {
    if (level < 0) Leave(info);
  }

  Errors errors_{};
  jpeg_decompress_struct info_{};
  unsigned char* row_ = nullptr;
};

}  // namespace

std::optional<TPicture> DecodePng(std::span<const std::byte> data) {
  if (!HoldsAllChunks(data)) return std::nullopt;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  const std::unique_ptr<png_image, decltype(&png_image_free)> freed(&image, png_image_free);
  if (!png_image_begin_read_from_memory(&image, data.data(), data.size())) return std::nullopt;
  if (image.width > kMaxSide || image.height > kMaxSide) return std::nullopt;
  image.format = PNG_FORMAT_BGRA;            // whatever the file has
  image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // without it, 16 bits would mean linear light
  TPicture picture = BlankPicture(image.width, image.height);
  auto& pixels = picture.pixels;
  if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) return std::nullopt;
  std::transform(pixels.begin(), pixels.end(), pixels.begin(), Premultiplied);
  return picture;
}

std::optional<TPicture> DecodeJpeg(std::span<const std::byte> data) {
  if (!std::in_range<unsigned long>(data.size())) return std::nullopt;
  JpegReader reader;
  if (!reader.Read(reinterpret_cast<const unsigned char*>(data.data()),
                   static_cast<unsigned long>(data.size()))) {
    return std::nullopt;
  }
  return std::move(reader.picture);
}

std::span<const TPictureFormat> PictureFormats() {
  static constexpr TPictureFormat formats[] = {
      {L"PNG", DecodePng},  // Portable Network Graphics
      {L"jpeg", DecodeJpeg},
      {L"jpg", DecodeJpeg},
  };
  return formats;
}

std::optional<TPicture> DecodePicture(std::wstring_view extension,
                                      std::span<const std::byte> data) {
  for (const TPictureFormat& format : PictureFormats()) {
    if (SameText(extension, format.extension)) return format.decode(data);
  }
  return std::nullopt;
}

}  // namespace tarvelin
