// Reference numbers from a text file: a line of words, then lists of "name count" and so many numbers.
// Used by the tests of the facet.
#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace keld::testing_support {

using NumberLists = std::map<std::string, std::vector<double>>;

inline NumberLists readNumberLists(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::string words, name;
  std::getline(file, words);
  NumberLists lists;
  for (std::size_t count = 0; file >> name >> count;) {
    std::vector<double>& list = lists[name];
    list.resize(count);
    for (double& value : list) file >> value;
  }
  if (!file.eof() || lists.empty()) throw std::runtime_error("unreadable numbers in " + path.string());
  return lists;
}

}  // namespace keld::testing_support
