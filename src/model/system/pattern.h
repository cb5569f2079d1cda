// Sparse pattern of the reduced system: adjacency of the wedge nodes and the layout of the rows.
// Called by the analysis driver: the search once per run, the layout by the assembly of a pass.
#pragma once

#include <array>

#include "run/base/column.h"

namespace keld {

/// Neighbours of each wedge node: the node itself, then the others in order of discovery (elements at the
/// node in order, in each element nodes 1 to 6). Written by patternSearch.
struct NodeAdjacency {
  Column<long> start;     // [1..2T + 1] row of the node's first neighbour
  Column<int> neighbour;  // [start(1)..start(2T + 1) - 1]
  int largestCount = 0;
  int smallestCount = 10000;
  long capacity = 0;  // sum over the nodes of 10 x count, the estimate of matrix entries
};
extern NodeAdjacency nodeAdjacency;

/// Where an element's 3 x 3 blocks go: offset of block (a, b) in the rows of node a, 36 per element.
/// Written by patternSearch; read by the assembly.
extern Column<std::array<int, 36>> elementBlockOffset;  // [1..partElementCount]

/// Fills nodeAdjacency and elementBlockOffset. More matrix entries than a 32-bit index can count end the run.
void patternSearch();

/// Fills nodeFirstRow, rowStart, columnIndex and freeDofList, and sizes and clears matrixValue and rowLoad.
void layOutRows();

/// Releases adjacency and block offsets; after the last full assembly only loads can be formed.
void releasePattern();

}  // namespace keld
