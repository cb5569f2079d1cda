// Settings of smoothed aggregation; see the header.
#include "model/solvers/aggregation_tuning.h"

#include <algorithm>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "run/base/vector3.h"

namespace keld {

TriangleShapes triangleShapes() {
  constexpr double needle = 4.0;
  TriangleShapes shapes{0.0, 0.0};
  const int count = elementTable.partElementCount;
  for (int e = 1; e <= count; ++e) {
    const auto corner = cornersOf(e);
    const Vector3 first = corner[1] - corner[0], second = corner[2] - corner[0];
    const auto [shortest, longest] = std::minmax({norm(first), norm(second), distance(corner[1], corner[2])});
    shapes.shortEdgeOverWall += shortest / elementTable.thickness[e] / count;
    const double twiceArea = norm(cross(first, second));
    if (longest * longest > needle * twiceArea) shapes.needleShare += 1.0 / count;
  }
  return shapes;
}

AggregationTuning aggregationTuning(bool facets, const TriangleShapes& shapes) {
  constexpr double shortEdge = 0.2, manyNeedles = 0.2;
  AggregationTuning tuning;
  if (facets) {
    tuning.strength = 2;
    tuning.limit = 0.16;
  } else if (shapes.shortEdgeOverWall < shortEdge) {
    tuning.smoothingDegree = 3;
  }
  if (shapes.needleShare > manyNeedles) tuning.smoothingDegree = 5;
  return tuning;
}

}  // namespace keld
