// Which elements meet at a node, as compressed lists.
// Called by the model processing of skins and by the search for pieces.
#pragma once

#include <cstddef>
#include <vector>

namespace keld {

/// Lists of variable length, one per index 1..n: items(i) in the order of their making.
struct IncidenceLists {
  std::vector<int> start, item;
  const int* begin(int i) const { return item.data() + start[static_cast<std::size_t>(i)]; }
  const int* end(int i) const { return item.data() + start[static_cast<std::size_t>(i) + 1]; }
  int count(int i) const {
    return start[static_cast<std::size_t>(i) + 1] - start[static_cast<std::size_t>(i)];
  }
};

/// Elements at each geometry node, ascending, each once; runner elements take part where asked for.
IncidenceLists elementsAtNodes(bool withRunners);

}  // namespace keld
