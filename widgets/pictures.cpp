#include "widgets/pictures.h"

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

std::uint32_t PremultipliedPixel(const unsigned char* rgba) {
  const std::uint32_t alpha = rgba[3];
  const auto scaled = [alpha](std::uint32_t colour) { return (colour * alpha + 127) / 255; };
  return alpha << 24 | scaled(rgba[0]) << 16 | scaled(rgba[1]) << 8 | scaled(rgba[2]);
}

TPicture BlankPicture(unsigned width, unsigned height) {
  return {static_cast<int>(width), static_cast<int>(height),
          std::vector<std::uint32_t>(std::size_t{width} * height)};
}

// libjpeg reports errors by longjmp, which runs no destructors. So its reader offers small steps
// that own nothing, every step is its own landing place, and memory is taken between the steps,
// where an exception meets no C frame. TurboJPEG would need none of that, but brings a compressor
// along.

class JpegReader {
 public:
  JpegReader() {
    info_.err = jpeg_std_error(&errors_.manager);
    errors_.manager.error_exit = Leave;
    errors_.manager.emit_message = LeaveIfCorrupt;
    if (!setjmp(errors_.landing)) jpeg_create_decompress(&info_);
  }
  ~JpegReader() { jpeg_destroy_decompress(&info_); }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;

  [[nodiscard]] bool Start(std::span<const std::byte> data) {
    if (!info_.mem || !std::in_range<unsigned long>(data.size())) return false;
    if (setjmp(errors_.landing)) return false;
    jpeg_mem_src(&info_, reinterpret_cast<const unsigned char*>(data.data()),
                 static_cast<unsigned long>(data.size()));
    jpeg_read_header(&info_, TRUE);
    if (Width() > kMaxSide || Height() > kMaxSide) return false;
    // libjpeg converts greyscale as well, and refuses the colours of print.
    info_.out_color_space = JCS_RGB;
    jpeg_start_decompress(&info_);
    return info_.output_components == 3;
  }

  // Reads the next row of Width() * 3 bytes R, G, B.
  [[nodiscard]] bool ReadRow(unsigned char* row) {
    if (setjmp(errors_.landing)) return false;
    return jpeg_read_scanlines(&info_, &row, 1) == 1;
  }

  // Reads to the end mark.
  [[nodiscard]] bool Finish() {
    if (setjmp(errors_.landing)) return false;
    return jpeg_finish_decompress(&info_) != FALSE;
  }

  [[nodiscard]] unsigned Width() const { return info_.image_width; }
  [[nodiscard]] unsigned Height() const { return info_.image_height; }

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
};

}  // namespace

std::optional<TPicture> DecodePng(std::span<const std::byte> data) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  const std::unique_ptr<png_image, decltype(&png_image_free)> freed(&image, png_image_free);
  if (!png_image_begin_read_from_memory(&image, data.data(), data.size())) return std::nullopt;
  if (image.width > kMaxSide || image.height > kMaxSide) return std::nullopt;
  // Every kind of picture comes out as four bytes R, G, B, A, which become one pixel in place.
  image.format = PNG_FORMAT_RGBA;
  image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // without it, 16 bits would mean linear light
  TPicture picture = BlankPicture(image.width, image.height);
  auto* const rgba = reinterpret_cast<unsigned char*>(picture.pixels.data());
  if (!png_image_finish_read(&image, nullptr, rgba, 0, nullptr)) return std::nullopt;
  for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
    picture.pixels[i] = PremultipliedPixel(rgba + i * 4);
  }
  return picture;
}

std::optional<TPicture> DecodeJpeg(std::span<const std::byte> data) {
  JpegReader reader;
  if (!reader.Start(data)) return std::nullopt;
  TPicture picture = BlankPicture(reader.Width(), reader.Height());
  std::vector<unsigned char> row(std::size_t{reader.Width()} * 3);
  auto pixel = picture.pixels.begin();
  for (unsigned y = 0; y < reader.Height(); ++y) {
    if (!reader.ReadRow(row.data())) return std::nullopt;
    for (std::size_t x = 0; x < row.size(); x += 3) {
      *pixel++ =
          0xFF000000u | std::uint32_t{row[x]} << 16 | std::uint32_t{row[x + 1]} << 8 | row[x + 2];
    }
  }
  if (!reader.Finish()) return std::nullopt;
  return picture;
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
