// The flat triangle of a facet: its axes and its corners in them.
// Called by the parts of the facet element.
#pragma once

#include <array>

#include "model/material/oriented_material.h"

namespace keld {

struct FacetShape {
  Matrix3 axes{};                  // rows x, y, n in global axes; n by the order of the corners
  std::array<double, 3> x{}, y{};  // cm, corners in the plane, from corner 1
  double area = 0.0;               // cm2; 0 marks a triangle without area, whose axes mean nothing
};

/// x is the direction `along` less its part along n; the edge from corner 1 to 2 where nothing is left of it.
FacetShape facetShape(const std::array<Vector3, 3>& corner, const Vector3& along);

/// Corner behind corner i, and the one before it.
constexpr std::size_t behind(std::size_t i) { return (i + 1) % 3; }
constexpr std::size_t before(std::size_t i) { return (i + 2) % 3; }

}  // namespace keld
