// The flat triangle of a facet; see the header.
#include "model/walls/facet/facet_shape.h"

namespace keld {

FacetShape facetShape(const std::array<Vector3, 3>& corner, const Vector3& along) {
  constexpr double tiny = 1e-30;        // cm2, as for the wedge
  constexpr double alongNormal = 1e-6;  // what is left of a unit direction that is the normal's
  const Vector3 edge12 = corner[1] - corner[0], edge13 = corner[2] - corner[0];
  const Vector3 normal = cross(edge12, edge13);
  const double length = norm(normal);
  FacetShape shape;
  if (!(length >= tiny)) return shape;
  const Vector3 n = (1.0 / length) * normal;
  Vector3 x = along - dot(along, n) * n;
  if (!(norm(x) > alongNormal)) x = edge12;
  x = (1.0 / norm(x)) * x;
  x = x - dot(x, n) * n;
  shape.axes = {x, cross(n, x), n};
  shape.area = 0.5 * length;
  shape.x = {0.0, dot(edge12, shape.axes[0]), dot(edge13, shape.axes[0])};
  shape.y = {0.0, dot(edge12, shape.axes[1]), dot(edge13, shape.axes[1])};
  return shape;
}

}  // namespace keld
