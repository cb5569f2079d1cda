// The words of the command line as base name, installation folder and thread limit.
// Called by the entry point.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace keld {

struct CommandLine {
  std::string baseName;     // words before the last "1@", joined by single blanks
  std::string installRoot;  // words between the last "1@" and the last "2@", joined likewise
  int threadLimit = 0;      // value behind the last "-cpu", 0 without one
};

/// `words` are those behind the program's name.
CommandLine parseCommandLine(std::span<const std::string_view> words);

}  // namespace keld
