// Feeds arbitrary bytes to the picture decoders. To hunt for a minute with the artwork as seeds:
//   clang++ -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -I. fuzz/pictures_fuzz.cpp
//       widgets/pictures.cpp common/text.cpp common/text_posix.cpp -lpng -ljpeg -lz -o hunt
//   mkdir -p found && ./hunt -max_total_time=60 -max_len=8192 found resources/artwork
// With -DTARVELIN_REPLAY and without "fuzzer", any compiler makes a program that replays files.
#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <span>
#include <string>

#include "widgets/pictures.h"

namespace {

// A PNG's checksums turn away nearly every change, so they are made right again.
void FixChecksums(std::string& png) {
  auto* const bytes = reinterpret_cast<unsigned char*>(png.data());
  std::size_t chunk = 8;  // after the signature
  while (chunk + 12 <= png.size()) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < 4; ++i) length = length << 8 | bytes[chunk + i];
    if (length > png.size() - chunk - 12) return;
    const uLong sum = crc32(0, bytes + chunk + 4, static_cast<uInt>(length + 4));
    for (std::size_t i = 0; i < 4; ++i) {
      bytes[chunk + 8 + length + i] = static_cast<unsigned char>(sum >> (24 - 8 * i));
    }
    chunk += length + 12;
  }
}

// A picture that was decoded is whole and premultiplied.
void Check(const std::optional<tarvelin::TPicture>& picture) {
  if (!picture) return;
  const auto size =
      static_cast<std::size_t>(picture->width) * static_cast<std::size_t>(picture->height);
  if (picture->Empty() || picture->pixels.size() != size) std::abort();
  for (const std::uint32_t pixel : picture->pixels) {
    for (const int shift : {0, 8, 16}) {
      if ((pixel >> shift & 0xFF) > pixel >> 24) std::abort();
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string input(data, data + size);
  Check(tarvelin::DecodeJpeg(std::as_bytes(std::span(input))));
  FixChecksums(input);
  Check(tarvelin::DecodePng(std::as_bytes(std::span(input))));
  return 0;
}

#ifdef TARVELIN_REPLAY
int main(int count, char** names) {
  for (int i = 1; i < count; ++i) {
    std::ifstream file(names[i], std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    std::cout << names[i] << ": " << input.size() << " bytes\n";
  }
}
#endif
