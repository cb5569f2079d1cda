// Bending of a facet: the discrete Kirchhoff triangle. Pure arithmetic; called by the facet element.
// The normal's rotation is quadratic, its slope along each side follows the deflection of that side's cubic.
#pragma once

#include "model/walls/facet/facet_shape.h"
#include "model/walls/facet/membrane.h"

namespace keld {

/// Curvatures (xx, yy, xy doubled; 1/cm) of the unknowns w1 p1 q1 ... q3 at the three points of area
/// coordinates (2/3, 1/6, 1/6), which integrate products of them exactly;
/// w in cm, p and q rotations about x and y.
using CurvaturePoints = std::array<std::array<Vector3, 9>, 3>;

/// Batoz, Bathe, Ho, Int. J. Numer. Methods Eng. 15 (1980) 1771-1812.
CurvaturePoints curvaturePoints(const FacetShape& shape);

/// K = h^3 / 12 x integral of B^T q B; dyn/cm, dyn, dyn cm. Fills the upper triangle.
void bendingStiffness(const CurvaturePoints& b, double area, double thickness, const Matrix3& q, Matrix9& k);

/// Forces and moments of a free curvature: h^3 / 12 x integral of B^T q curvature.
std::array<double, 9> bendingLoad(const CurvaturePoints& b, double area, double thickness, const Matrix3& q,
                                  const Vector3& curvature);

}  // namespace keld
