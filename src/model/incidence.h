// Which elements meet at a node, as compressed lists.
// Called by the model processing of skins and by the search for pieces.
#pragma once

#include "run/base/column.h"

namespace keld {

/// Lists of variable length, one per index 1..n: items(i) in the order of their making.
struct IncidenceLists {
  Column<int> start;  // [1..n + 1] row of the first item
  Column<int> item;   // [1..start(n + 1) - 1]
  const int* begin(int i) const { return item.origin() + start[i]; }
  const int* end(int i) const { return item.origin() + start[i + 1]; }
  int count(int i) const { return start[i + 1] - start[i]; }
};

/// Elements at each geometry node, ascending, each once; runner elements take part where asked for.
IncidenceLists elementsAtNodes(bool withRunners);

}  // namespace keld
