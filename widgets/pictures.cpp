#include "widgets/pictures.h"

#include <csetjmp>
#include <cstdio>  // jpeglib.h uses FILE and size_t without including them
#include <cstring>
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

// libpng and libjpeg report errors by longjmp, which runs no destructors. So each reader offers
// small steps that own nothing, every step is its own landing place, and memory is taken between
// the steps, where an exception meets no C frame.

void ReadPngBytes(png_structp png, png_bytep out, std::size_t count) {
  auto& rest = *static_cast<std::span<const std::byte>*>(png_get_io_ptr(png));
  if (count > rest.size()) png_error(png, "cut off");
  std::memcpy(out, rest.data(), count);
  rest = rest.subspan(count);
}

[[noreturn]] void LeavePng(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void IgnorePngWarning(png_structp, png_const_charp) {}

class PngReader {
 public:
  explicit PngReader(std::span<const std::byte> data)
      : rest_(data),
        png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, LeavePng, IgnorePngWarning)),
        info_(png_ ? png_create_info_struct(png_) : nullptr) {}
  ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;

  // Reads up to the pixels and has every kind of them turned into four bytes R, G, B, A.
  [[nodiscard]] bool Start() {
    if (!info_) return false;
    if (setjmp(png_jmpbuf(png_))) return false;
    png_set_read_fn(png_, &rest_, ReadPngBytes);
    png_set_user_limits(png_, kMaxSide, kMaxSide);
    png_read_info(png_, info_);
    png_set_expand(png_);
    png_set_scale_16(png_);
    png_set_gray_to_rgb(png_);
    png_set_add_alpha(png_, 0xFF, PNG_FILLER_AFTER);
    passes_ = png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    return png_get_rowbytes(png_, info_) == std::size_t{Width()} * 4;
  }

  // Reads all rows, Width() * 4 bytes each, and what follows them to the end mark.
  [[nodiscard]] bool ReadRows(unsigned char* first) {
    if (setjmp(png_jmpbuf(png_))) return false;
    for (int pass = 0; pass < passes_; ++pass) {
      for (std::size_t y = 0; y < Height(); ++y) {
        png_read_row(png_, first + y * Width() * 4, nullptr);
      }
    }
    png_read_end(png_, nullptr);
    return true;
  }

  [[nodiscard]] unsigned Width() const { return png_get_image_width(png_, info_); }
  [[nodiscard]] unsigned Height() const { return png_get_image_height(png_, info_); }

 private:
  std::span<const std::byte> rest_;
  png_structp png_;
  png_infop info_;
  int passes_ = 1;
};

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
  PngReader reader(data);
  if (!reader.Start()) return std::nullopt;
  TPicture picture = BlankPicture(reader.Width(), reader.Height());
  // libpng needs all rows of an interlaced picture; the four bytes of a pixel become one in place.
  auto* const rgba = reinterpret_cast<unsigned char*>(picture.pixels.data());
  if (!reader.ReadRows(rgba)) return std::nullopt;
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
      {L"PNG", L"Portable Network Graphics", DecodePng},
      {L"jpeg", L"JPEG Image File", DecodeJpeg},
      {L"jpg", L"JPEG Image File", DecodeJpeg},
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
