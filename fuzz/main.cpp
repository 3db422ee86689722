// One program for all that can be fuzzed. Built with libFuzzer it hunts: fuzz.sh. Built with any
// other compiler it replays files, so that what was found once is never found again:
//   fuzz_targets TARGET=FOLDER...     runs a target over every file of a folder
//   fuzz_targets FOLDER               the same for every target over its own folder in that one
//   fuzz_targets --seeds FIRST COUNT  the target "registry" with bytes of that many seeds
//   fuzz_targets --faults             everything with every platform call failing in every way
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz.h"

namespace {

struct Target {
  std::string_view name;
  void (*feed)(tarvelin::fuzz::Data data);
};

constexpr Target kTargets[] = {
    {"language", tarvelin::fuzz::Language},
    {"profile", tarvelin::fuzz::Profile},
    {"command", tarvelin::fuzz::CommandLine},
    {"icon", tarvelin::fuzz::Icon},
    {"location", tarvelin::fuzz::Location},
    {"removal", tarvelin::fuzz::Removal},
    {"png", tarvelin::fuzz::Png},
    {"jpeg", tarvelin::fuzz::Jpeg},
    {"registry", tarvelin::fuzz::Registry},
};

const Target& FindTarget(std::string_view name) {
  for (const Target& target : kTargets) {
    if (target.name == name) return target;
  }
  std::cerr << "fuzz_targets: no target " << name << '\n';
  std::exit(2);
}

}  // namespace

#ifdef TARVELIN_FUZZ

static const Target* hunted = nullptr;

// The target is the first argument: --target=NAME, which libFuzzer itself ignores.
extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
  constexpr std::string_view option = "--target=";
  const std::string_view first = *count > 1 ? (*arguments)[1] : "";
  hunted = &FindTarget(first.starts_with(option) ? first.substr(option.size()) : first);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  hunted->feed(std::as_bytes(std::span(data, size)));
  return 0;
}

#else

namespace {

// Returns how many files there were.
int Replay(const Target& target, const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const auto& path : files) {
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    std::cout << path.string() << '\n' << std::flush;  // the last one, if it does not survive
    target.feed(std::as_bytes(std::span(content)));
  }
  return static_cast<int>(files.size());
}

void RunSeeds(unsigned first, unsigned count) {
  int changes = 0;
  for (unsigned seed = first; seed - first < count; ++seed) {
    std::cout << "seed " << seed << '\n' << std::flush;  // the last one, if it does not survive
    changes += tarvelin::fuzz::RegistryOfSeed(seed);
  }
  std::cout << count << " sequences, in which " << changes << " commands changed something\n";
}

}  // namespace

int main(int count, char** arguments) {
  const std::string_view option = count > 1 ? arguments[1] : "";
  if (option == "--faults") return tarvelin::fuzz::FailEveryCall(), 0;
  if (option == "--seeds" && count == 4) {
    return RunSeeds(static_cast<unsigned>(std::stoul(arguments[2])),
                    static_cast<unsigned>(std::stoul(arguments[3]))),
           0;
  }
  int files = 0;
  bool complete = count > 1;
  for (const std::string_view argument :
       std::vector<std::string_view>(arguments + 1, arguments + count)) {
    if (const auto equals = argument.find('='); equals != std::string_view::npos) {
      files += Replay(FindTarget(argument.substr(0, equals)), argument.substr(equals + 1));
      continue;
    }
    for (const Target& target : kTargets) {
      const int replayed = Replay(target, std::filesystem::path(argument) / target.name);
      complete = complete && replayed > 0;
      files += replayed;
    }
  }
  std::cout << files << " files\n";
  return complete ? 0 : 1;
}

#endif
