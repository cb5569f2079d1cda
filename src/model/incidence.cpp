// Counting, then filling, so that every list is a stretch of one table.
// Called by the model processing of skins and by the search for pieces.
#include "model/incidence.h"

#include <numeric>

#include "input/mesh_access.h"

namespace keld {

namespace {

template <class Visit>
void forEachDistinctCorner(int e, Visit visit) {
  const auto c = cornerNodesOf(e);
  visit(c[0]);
  if (c[1] != c[0]) visit(c[1]);
  if (c[2] != 0 && c[2] != c[0] && c[2] != c[1]) visit(c[2]);
}

}  // namespace

IncidenceLists elementsAtNodes(bool withRunners) {
  IncidenceLists lists;
  lists.start.assign(nodeTable.nodeCount + 1, 0);
  lists.start[1] = 1;
  const auto takesPart = [&](int e) { return withRunners || isTriangle(e); };

  for (int e = 1; e <= elementTable.elementCount; ++e)
    if (takesPart(e)) forEachDistinctCorner(e, [&](int n) { ++lists.start[n + 1]; });
  std::partial_sum(lists.start.begin(), lists.start.end(), lists.start.begin());
  lists.item.resize(lists.start.back() - 1);

  Column<int> next(lists.start);
  for (int e = 1; e <= elementTable.elementCount; ++e)
    if (takesPart(e)) forEachDistinctCorner(e, [&](int n) { lists.item[next[n]++] = e; });
  return lists;
}

}  // namespace keld
