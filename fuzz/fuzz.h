// What can be fed with arbitrary bytes.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <span>

namespace tarvelin::fuzz {

using Data = std::span<const std::byte>;

// Ends the program, which is a finding, unless `holds`.
inline void Require(bool holds) {
  if (!holds) std::abort();
}

void Language(Data data);     // a language file
void Profile(Data data);      // the text that names the language in the settings file
void CommandLine(Data data);  // of a verb or an icon
void Icon(Data data);         // the icon location of a file type
void Location(Data data);     // of a key or value in the registry
void Removal(Data data);      // what a removal is told
void Png(Data data);
void Jpeg(Data data);
void Registry(Data data);  // a whole registry, and what a user does with it

// The same with bytes that a seed gives. Returns how many commands changed something.
int RegistryOfSeed(unsigned seed);
// Everything that a user does, with every platform call failing in every way.
void FailEveryCall();

}  // namespace tarvelin::fuzz
