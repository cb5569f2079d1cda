// Parsing of the command line.
// Called by the entry point.
#include "run/command_line.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace keld {
namespace {

/// Leading decimal integer of a word, 0 without one, held to the range of int.
int leadingInteger(std::string_view word) {
  const long value = std::strtol(std::string(word).c_str(), nullptr, 10);
  return static_cast<int>(
      std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::string joined(std::span<const std::string_view> words, std::size_t first, std::size_t end) {
  std::string text;
  for (std::size_t i = first; i < end; ++i) {
    if (i > first) text += ' ';
    text += words[i];
  }
  return text;
}

}  // namespace

CommandLine parseCommandLine(std::span<const std::string_view> words) {
  CommandLine line;
  std::size_t m = 0, k = 0;  // positions of the markers, counted from 1 as the program's name is word 0
  for (std::size_t i = 1; i <= words.size(); ++i) {
    const std::string_view word = words[i - 1];
    if (word == "1@") m = i;
    if (word == "2@") k = i;
    if (word == "-cpu") line.threadLimit = i < words.size() ? leadingInteger(words[i]) : 0;
  }
  if (m > 0) line.baseName = joined(words, 0, m - 1);
  if (k > 0) line.installRoot = joined(words, m, k - 1);
  return line;
}

}  // namespace keld
