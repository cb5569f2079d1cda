// Sparse pattern of the reduced system; see the header.
#include "model/system/pattern.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <numeric>
#include <vector>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "model/model_tables.h"
#include "model/restraint/restraint.h"
#include "run/base/failure.h"
#include "run/base/platform.h"
#include "run/base/thread_place.h"

namespace keld {

NodeAdjacency nodeAdjacency;
Column<std::array<int, 36>> elementBlockOffset;

namespace {

Column<int> rowWidth;  // [1..2T] entries of each row of a node; written by the search, read by the layout

/// A table of integers for each thread. Room is made before the parallel region, where a failure can be
/// reported; the thread that uses a table clears it with assign(rows, 0).
Column<Column<int>> threadTables(int rows) {
  Column<Column<int>> tables(mostThreads());
  for (Column<int>& table : tables) table.reserve(rows);
  return tables;
}

Column<int>& ofThisThread(Column<Column<int>>& tables) { return tables[threadPlace().number + 1]; }

int unknownsAt(int node) { return unknownsOf(freedoms.nodeRestraint[node]); }

/// Element positions at the lower node of each pair, in element order;
/// those at its mate are the same, one layer up.
struct ElementsAtNode {
  struct Position {
    int element;
    std::uint32_t corner;  // 0..2
  };
  Column<long> start;         // [1..T + 1]
  Column<Position> position;  // [1..start(T + 1) - 1]
};

ElementsAtNode elementsAtNodes() {
  const ElementTable& t = elementTable;
  const int layer = wedgeNumbering.wedgeNodeCount / 2;
  const std::array<const Column<int>*, 3> corner = {&t.node1, &t.node2, &t.node3};
  ElementsAtNode list;
  list.start.assign(layer + 1, 0);
  list.start[1] = 1;
  for (const auto* column : corner) {
    for (int e = 1; e <= t.partElementCount; ++e) {
      ++list.start[(*column)[e]];
    }
  }
  // Ends of the nodes' stretches; filling from behind turns them into starts.
  std::partial_sum(list.start.begin(), list.start.end(), list.start.begin());
  list.position.resize(3L * t.partElementCount);
  for (int e = t.partElementCount; e >= 1; --e) {
    for (std::uint32_t c = 3; c-- > 0;) list.position[--list.start[(*corner[c])[e]]] = {e, c};
  }
  return list;
}

/// Lower nodes that share an element with a lower node, itself included;
/// mark is a scratch table of one thread.
int countLowerNeighbours(int node, const ElementsAtNode& list, Column<int>& mark) {
  int count = 0;
  for (long p = list.start[node]; p < list.start[node + 1]; ++p) {
    const auto nodes = wedgeNodesOf(list.position[p].element);
    for (std::size_t k = 0; k < 3; ++k) {
      int& seenBy = mark[nodes[k]];
      if (seenBy == node) continue;
      seenBy = node;
      ++count;
    }
  }
  return count;
}

void countNeighbours(const ElementsAtNode& list) {
  const int layer = wedgeNumbering.wedgeNodeCount / 2;
  Column<long>& start = nodeAdjacency.start;
  start.assign(2 * layer + 1, 0);
  start[1] = 1;
  Column<Column<int>> marks = threadTables(layer);
#pragma omp parallel
  {
    Column<int>& mark = ofThisThread(marks);
    mark.assign(layer, 0);
#pragma omp for schedule(static)
    for (int n = 1; n <= layer; ++n) {
      const int count = 2 * countLowerNeighbours(n, list, mark);
      start[n + 1] = start[n + layer + 1] = count;
    }
  }
  for (int n = 2; n <= start.rows(); ++n) {
    const int count = static_cast<int>(start[n]);
    nodeAdjacency.largestCount = std::max(nodeAdjacency.largestCount, count);
    nodeAdjacency.smallestCount = std::min(nodeAdjacency.smallestCount, count);
    nodeAdjacency.capacity += 10L * count;
    start[n] += start[n - 1];
  }
}

/// Writes the neighbours of a node and where the blocks of its elements lie in its rows.
/// offset, mark: scratch of one thread; mark(j) = node once j is found, offset(j) its place in the rows.
void fillNode(int node, int layer, const ElementsAtNode& list, Column<int>& mark, Column<int>& offset) {
  const bool upper = node > layer;
  const int lower = upper ? node - layer : node;
  int* neighbour = nodeAdjacency.neighbour.origin() + nodeAdjacency.start[node];
  int width = 0;
  const auto find = [&](int j) {
    if (mark[j] == node) return;
    mark[j] = node;
    offset[j] = width;
    width += unknownsAt(j);
    *neighbour++ = j;
  };
  find(node);
  for (long p = list.start[lower]; p < list.start[lower + 1]; ++p) {
    const auto [element, corner] = list.position[p];
    const auto nodes = wedgeNodesOf(element);
    const auto a = upper ? corner + 3 : corner;
    for (std::size_t b = 0; b < 6; ++b) {
      find(nodes[b]);
      elementBlockOffset[element][6 * a + b] = offset[nodes[b]];
    }
  }
  rowWidth[node] = width;
}

}  // namespace

void patternSearch() {
  const int nodes = wedgeNumbering.wedgeNodeCount, layer = nodes / 2;
  nodeAdjacency = {};
  const ElementsAtNode list = elementsAtNodes();
  countNeighbours(list);
  nodeAdjacency.neighbour.resize(nodeAdjacency.start.back() - 1);
  elementBlockOffset.resize(elementTable.partElementCount);
  rowWidth.assign(nodes, 0);
  Column<Column<int>> marks = threadTables(nodes), offsets = threadTables(nodes);
#pragma omp parallel
  {
    Column<int>&mark = ofThisThread(marks), &offset = ofThisThread(offsets);
    mark.assign(nodes, 0);
    offset.assign(nodes, 0);
#pragma omp for schedule(static)
    for (int n = 1; n <= layer; ++n) {
      fillNode(n, layer, list, mark, offset);
      fillNode(n + layer, layer, list, mark, offset);
    }
  }
  long entries = 0;
  for (int n = 1; n <= nodes; ++n) entries += static_cast<long>(unknownsAt(n)) * rowWidth[n];
  if (entries >= INT_MAX) {
    vFail(
        "\n !! Error !!  The system has %ld matrix entries, more "
        "than 32-bit indices can number (%d): use a coarser mesh.\n",
        entries, INT_MAX - 1);
  }
}

template <class Number>
void reserveInLargePages(Column<Number>& column, int rows) {
  column.reserve(rows);
  preferLargePages(column.origin(), static_cast<std::size_t>(rows) * sizeof(Number));
}

void layOutRows() {
  const int nodes = wedgeNumbering.wedgeNodeCount;
  CompressedSystem& system = systemOfPass;
  const int rows = freedoms.freeDofCount;
  freedoms.nodeFirstRow.assign(nodes, 0);
  freedoms.freeDofList.assign(rows, 0);
  system.rowStart.assign(rows + 1, 0);
  system.rowFunction.assign(rows, 0);
  system.rowPoint.assign(rows, 0);
  system.rowLoad.assign(rows, 0.0);

  int row = 1, position = 1, point = 0;
  for (int n = 1; n <= nodes; ++n) {
    const int unknowns = unknownsAt(n);
    if (unknowns == 0) continue;
    ++point;
    freedoms.nodeFirstRow[n] = row;
    for (int direction = 0; direction < unknowns; ++direction, ++row) {
      freedoms.freeDofList[row] = freedoms.nodeFirstDof[n] + direction;
      system.rowFunction[row] = direction + 1;
      system.rowPoint[row] = point;
      system.rowStart[row] = position;
      position += rowWidth[n];
    }
  }
  system.rowStart[row] = position;

  const int entries = position - 1;
  reserveInLargePages(system.columnIndex, entries);
  reserveInLargePages(system.matrixValue, entries);
  system.columnIndex.resize(entries);
  system.matrixValue.assign(entries, 0.0);
#pragma omp parallel for schedule(static)
  for (int n = 1; n <= nodes; ++n) {
    const int unknowns = unknownsAt(n);
    if (unknowns == 0) continue;
    int* const begin = system.columnIndex.origin() + system.rowStart[freedoms.nodeFirstRow[n]];
    int* end = begin;
    for (long p = nodeAdjacency.start[n]; p < nodeAdjacency.start[n + 1]; ++p) {
      const int j = nodeAdjacency.neighbour[p];
      const int first = freedoms.nodeFirstRow[j];
      for (int k = 0; k < unknownsAt(j); ++k) *end++ = first + k;
    }
    for (int direction = 1; direction < unknowns; ++direction) {
      std::copy(begin, end, begin + direction * (end - begin));
    }
  }
}

void releasePattern() {
  nodeAdjacency = {};
  elementBlockOffset = {};
  rowWidth = {};
}

}  // namespace keld
