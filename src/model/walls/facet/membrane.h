// Membrane of a facet: the optimal triangle with rotations about its normal. Pure arithmetic.
// Called by the facet element.
#pragma once

#include "model/walls/facet/facet_shape.h"
#include "model/walls/facet/plane_stress.h"

namespace keld {

using Matrix9 = std::array<std::array<double, 9>, 9>;

/// Rows u, v, r of corners 1 to 3: forces and moments of a constant in-plane stress x thickness (xx, yy, xy).
using Lumping = std::array<Vector3, 9>;  // cm2; rows of r cm3

/// L / h of the free formulation with alpha = 3/2: Bergan and Felippa, Comput.
/// Methods Appl. Mech. Eng. 50 (1985) 25-69.
Lumping membraneLumping(const FacetShape& shape);

/// K = L q L^T / (A h) + 3/4 drilling T^T K_theta T in the order u1 v1 r1 u2 ... r3; dyn/cm, dyn, dyn cm.
/// Exact for constant strain and, in rectangles of two triangles, for bending in the plane. No numerical
/// integration. Fills the upper triangle. Felippa, Comput. Methods Appl. Mech. Eng. 192 (2003) 2125-2168.
void membraneStiffness(const FacetShape& shape, double thickness, const PlaneStress& material, Matrix9& k);

}  // namespace keld
