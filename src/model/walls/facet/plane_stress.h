// Plane stress of a wall: the three-dimensional stiffness with the stresses across the wall set to 0.
// Pure arithmetic; called by the facet element.
#pragma once

#include <array>

#include "model/material/oriented_material.h"

namespace keld {

/// Material of a facet in its own axes x, y, n; in-plane strains are ordered xx, yy, xy (engineering shear).
struct PlaneStress {
  Matrix3 q{};            // dyn/cm2, in-plane stress of in-plane strain
  Matrix3 inverse{};      // cm2/dyn
  Vector3 thinning{};     // minus the strain across the wall of in-plane strain free of stress across it
  double drilling = 0.0;  // factor of the membrane's higher-order part
  bool definite = false;  // whether stresses across can be set to 0 and q is positive definite
};

/// q = D_mm - D_ms D_ss^-1 D_sm with m = (xx, yy, xy), s = (zz, xz, yz); thinning is the zz row of D_ss^-1
/// D_sm. `d` is the stiffness in the facet's axes in the order xx, yy, zz, xy, xz, yz. Where `definite` is
/// false the other values mean nothing. drilling = max(0.01, (1 - 4 nu^2) / 2) with the Poisson ratio of the
/// isotropic part of q: Felippa, Comput. Methods Appl. Mech. Eng. 192 (2003) 2125-2168.
PlaneStress planeStress(const Matrix6& d);

}  // namespace keld
