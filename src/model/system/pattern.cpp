// Sparse pattern of the reduced system; see the header.
#include "model/system/pattern.h"

#include <algorithm>
#include <climits>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "model/model_tables.h"
#include "model/restraint/restraint.h"
#include "run/base/failure.h"
#include "run/base/platform.h"
#include "run/base/thread_place.h"

namespace keld {

NodeAdjacency nodeAdjacency;
std::vector<std::array<int, 36>> elementBlockOffset;

namespace {

std::vector<int>
    rowWidth;  // [1..2T] entries of each row of a node; written by the search, read by the layout

/// A table of integers for each thread, numbered from 0. Room is made before the parallel region, where a
/// failure can be reported; the thread that uses a table clears it with assign(size, 0).
std::vector<std::vector<int>> threadTables(std::size_t size) {
  std::vector<std::vector<int>> tables(static_cast<std::size_t>(mostThreads()));
  for (std::vector<int>& table : tables) table.reserve(size);
  return tables;
}

int unknownsAt(int node) { return unknownsOf(freedoms.nodeRestraint[static_cast<std::size_t>(node)]); }

/// Element positions at the lower node of each pair, in element order;
/// those at its mate are the same, one layer up.
struct ElementsAtNode {
  struct Position {
    int element;
    int corner;  // 0..2
  };
  std::vector<long> start;         // [1..T + 1]
  std::vector<Position> position;  // [start(1)..start(T + 1) - 1]
};

ElementsAtNode elementsAtNodes() {
  const ElementTable& t = elementTable;
  const int layer = wedgeNumbering.wedgeNodeCount / 2;
  const std::array<const std::vector<int>*, 3> corner = {&t.node1, &t.node2, &t.node3};
  ElementsAtNode list;
  list.start.assign(static_cast<std::size_t>(layer) + 2, 0);
  for (const auto* column : corner) {
    for (int e = 1; e <= t.partElementCount; ++e) {
      ++list.start[static_cast<std::size_t>((*column)[static_cast<std::size_t>(e)])];
    }
  }
  // Ends of the nodes' stretches; filling from behind turns them into starts.
  for (std::size_t n = 1; n < list.start.size(); ++n) list.start[n] += list.start[n - 1];
  list.position.resize(3 * static_cast<std::size_t>(t.partElementCount));
  for (int e = t.partElementCount; e >= 1; --e) {
    for (int c = 2; c >= 0; --c) {
      const int node = (*corner[static_cast<std::size_t>(c)])[static_cast<std::size_t>(e)];
      list.position[static_cast<std::size_t>(--list.start[static_cast<std::size_t>(node)])] = {e, c};
    }
  }
  return list;
}

/// Lower nodes that share an element with a lower node, itself included;
/// mark is a scratch table of one thread.
int countLowerNeighbours(int node, const ElementsAtNode& list, std::vector<int>& mark) {
  int count = 0;
  const auto n = static_cast<std::size_t>(node);
  for (long p = list.start[n]; p < list.start[n + 1]; ++p) {
    const auto nodes = wedgeNodesOf(list.position[static_cast<std::size_t>(p)].element);
    for (std::size_t k = 0; k < 3; ++k) {
      int& seenBy = mark[static_cast<std::size_t>(nodes[k])];
      if (seenBy == node) continue;
      seenBy = node;
      ++count;
    }
  }
  return count;
}

void countNeighbours(const ElementsAtNode& list) {
  const int layer = wedgeNumbering.wedgeNodeCount / 2;
  std::vector<long>& start = nodeAdjacency.start;
  start.assign(static_cast<std::size_t>(2 * layer) + 2, 0);
  const std::size_t size = static_cast<std::size_t>(layer) + 1;
  std::vector<std::vector<int>> marks = threadTables(size);
#pragma omp parallel
  {
    std::vector<int>& mark = marks[static_cast<std::size_t>(threadPlace().number)];
    mark.assign(size, 0);
#pragma omp for schedule(static)
    for (int n = 1; n <= layer; ++n) {
      const int count = 2 * countLowerNeighbours(n, list, mark);
      start[static_cast<std::size_t>(n) + 1] = start[static_cast<std::size_t>(n + layer) + 1] = count;
    }
  }
  for (std::size_t n = 2; n < start.size(); ++n) {
    const int count = static_cast<int>(start[n]);
    nodeAdjacency.largestCount = std::max(nodeAdjacency.largestCount, count);
    nodeAdjacency.smallestCount = std::min(nodeAdjacency.smallestCount, count);
    nodeAdjacency.capacity += 10L * count;
    start[n] += start[n - 1];
  }
}

/// Writes the neighbours of a node and where the blocks of its elements lie in its rows.
/// offset, mark: scratch of one thread; mark(j) = node once j is found, offset(j) its place in the rows.
void fillNode(int node, int layer, const ElementsAtNode& list, std::vector<int>& mark,
              std::vector<int>& offset) {
  const bool upper = node > layer;
  const auto lower = static_cast<std::size_t>(upper ? node - layer : node);
  int* neighbour = nodeAdjacency.neighbour.data() + nodeAdjacency.start[static_cast<std::size_t>(node)];
  int width = 0;
  const auto find = [&](int j) {
    const auto k = static_cast<std::size_t>(j);
    if (mark[k] == node) return;
    mark[k] = node;
    offset[k] = width;
    width += unknownsAt(j);
    *neighbour++ = j;
  };
  find(node);
  for (long p = list.start[lower]; p < list.start[lower + 1]; ++p) {
    const auto [element, corner] = list.position[static_cast<std::size_t>(p)];
    const auto nodes = wedgeNodesOf(element);
    const auto a = static_cast<std::size_t>(upper ? corner + 3 : corner);
    for (std::size_t b = 0; b < 6; ++b) {
      find(nodes[b]);
      elementBlockOffset[static_cast<std::size_t>(element)][6 * a + b] =
          offset[static_cast<std::size_t>(nodes[b])];
    }
  }
  rowWidth[static_cast<std::size_t>(node)] = width;
}

}  // namespace

void patternSearch() {
  const int nodes = wedgeNumbering.wedgeNodeCount, layer = nodes / 2;
  nodeAdjacency = {};
  const ElementsAtNode list = elementsAtNodes();
  countNeighbours(list);
  nodeAdjacency.neighbour.resize(static_cast<std::size_t>(nodeAdjacency.start.back()));
  elementBlockOffset.resize(static_cast<std::size_t>(elementTable.partElementCount) + 1);
  rowWidth.assign(static_cast<std::size_t>(nodes) + 1, 0);
  const std::size_t size = static_cast<std::size_t>(nodes) + 1;
  std::vector<std::vector<int>> marks = threadTables(size), offsets = threadTables(size);
#pragma omp parallel
  {
    const auto thread = static_cast<std::size_t>(threadPlace().number);
    std::vector<int>&mark = marks[thread], &offset = offsets[thread];
    mark.assign(size, 0);
    offset.assign(size, 0);
#pragma omp for schedule(static)
    for (int n = 1; n <= layer; ++n) {
      fillNode(n, layer, list, mark, offset);
      fillNode(n + layer, layer, list, mark, offset);
    }
  }
  long entries = 0;
  for (int n = 1; n <= nodes; ++n)
    entries += static_cast<long>(unknownsAt(n)) * rowWidth[static_cast<std::size_t>(n)];
  if (entries >= INT_MAX) {
    vFail(
        "\n !! Error !!  The system has %ld matrix entries, more "
        "than 32-bit indices can number (%d): use a coarser mesh.\n",
        entries, INT_MAX - 1);
  }
}

template <class Number>
void reserveInLargePages(std::vector<Number>& column, std::size_t size) {
  column.reserve(size);
  preferLargePages(column.data(), size * sizeof(Number));
}

void layOutRows() {
  const int nodes = wedgeNumbering.wedgeNodeCount;
  CompressedSystem& system = systemOfPass;
  const auto rows = static_cast<std::size_t>(freedoms.freeDofCount);
  freedoms.nodeFirstRow.assign(static_cast<std::size_t>(nodes) + 1, 0);
  freedoms.freeDofList.assign(rows + 1, 0);
  system.rowStart.assign(rows + 2, 0);
  system.rowFunction.assign(rows + 1, 0);
  system.rowPoint.assign(rows + 1, 0);
  system.rowLoad.assign(rows + 1, 0.0);

  int row = 1, position = 1, point = 0;
  for (int n = 1; n <= nodes; ++n) {
    const auto node = static_cast<std::size_t>(n);
    const int unknowns = unknownsAt(n);
    if (unknowns == 0) continue;
    ++point;
    freedoms.nodeFirstRow[node] = row;
    for (int direction = 0; direction < unknowns; ++direction, ++row) {
      const auto r = static_cast<std::size_t>(row);
      freedoms.freeDofList[r] = freedoms.nodeFirstDof[node] + direction;
      system.rowFunction[r] = direction + 1;
      system.rowPoint[r] = point;
      system.rowStart[r] = position;
      position += rowWidth[node];
    }
  }
  system.rowStart[static_cast<std::size_t>(row)] = position;

  const auto size = static_cast<std::size_t>(position);
  reserveInLargePages(system.columnIndex, size);
  reserveInLargePages(system.matrixValue, size);
  system.columnIndex.resize(size);
  system.matrixValue.assign(size, 0.0);
#pragma omp parallel for schedule(static)
  for (int n = 1; n <= nodes; ++n) {
    const auto node = static_cast<std::size_t>(n);
    const int unknowns = unknownsAt(n);
    if (unknowns == 0) continue;
    const auto firstRow = static_cast<std::size_t>(freedoms.nodeFirstRow[node]);
    int* const begin = system.columnIndex.data() + system.rowStart[firstRow];
    int* end = begin;
    for (long p = nodeAdjacency.start[node]; p < nodeAdjacency.start[node + 1]; ++p) {
      const int j = nodeAdjacency.neighbour[static_cast<std::size_t>(p)];
      const int first = freedoms.nodeFirstRow[static_cast<std::size_t>(j)];
      for (int k = 0; k < unknownsAt(j); ++k) *end++ = first + k;
    }
    for (int direction = 1; direction < unknowns; ++direction) {
      std::copy(begin, end, begin + direction * (end - begin));
    }
  }
}

void releasePattern() {
  nodeAdjacency = {};
  std::vector<std::array<int, 36>>().swap(elementBlockOffset);
  std::vector<int>().swap(rowWidth);
}

}  // namespace keld
