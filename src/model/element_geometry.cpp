// Geometry of the triangles of the file; see the header.
#include "model/element_geometry.h"

#include <algorithm>
#include <cmath>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"

namespace keld {

namespace {

double cosineAt(const Vector3& corner, const Vector3& a, const Vector3& b) {
  const Vector3 u = a - corner, v = b - corner;
  return std::abs(dot(u, v)) / (norm(u) * norm(v));
}

}  // namespace

void elementGeometry() {
  ElementTable& t = elementTable;
  for (auto* column : {&t.nx, &t.ny, &t.nz, &t.area, &t.meanEdge, &t.cornerCosine}) {
    column->assign(t.elementCount, 0.0);
  }
#pragma omp parallel for schedule(static)
  for (int e = 1; e <= t.elementCount; ++e) {
    if (t.node3[e] == 0) continue;
    const auto [p1, p2, p3] = cornersOf(e);
    const Vector3 normal = cross(p2 - p1, p3 - p2);
    const double length = norm(normal);
    t.area[e] = 0.5 * length;
    t.meanEdge[e] = (distance(p2, p3) + distance(p1, p2) + distance(p3, p1)) / 3.0;
    if (length > 0.0) {
      t.nx[e] = normal[0] / length;
      t.ny[e] = normal[1] / length;
      t.nz[e] = normal[2] / length;
      t.cornerCosine[e] = std::max({cosineAt(p1, p2, p3), cosineAt(p2, p3, p1), cosineAt(p3, p1, p2)});
    }
  }
}

void releaseElementGeometry() {
  ElementTable& t = elementTable;
  for (auto* column : {&t.nx, &t.ny, &t.nz, &t.area, &t.meanEdge, &t.cornerCosine}) *column = {};
}

}  // namespace keld
