// One facet: stiffness and load of a flat triangle of a shell in global axes. Pure arithmetic.
// Called by the facet wall. Unknowns of a corner: displacement u,
// then c w, the rotation vector times a length.
#pragma once

#include <array>

#include "model/walls/element_matrix.h"
#include "model/walls/facet/facet_shape.h"
#include "model/walls/facet/plane_stress.h"

namespace keld {

/// A facet ready to be formed.
struct Facet {
  FacetShape shape;
  double thickness = 0.0;       // cm
  double rotationLength = 1.0;  // cm, the length c
  PlaneStress material;
};

/// What loads a facet, in its own axes.
struct FacetLoading {
  Vector3 strain{};               // mean free strain of cooling
  Vector3 curvature{};            // 1/cm, free curvature of cooling
  Vector3 stress{};               // dyn/cm2, frozen-in stress
  double strainAcross = 0.0;      // free strain of cooling across the wall
  std::array<Vector3, 3> turn{};  // rad, global axes: angle x axis from the corner's mean normal to this one
};

/// Upper and lower triangle in dyn/cm, exactly symmetric.
void formFacetStiffness(const Facet& facet, ElementMatrix& k);

/// Load in dyn; `k` is the facet's stiffness, read where a corner has a turn.
void formFacetLoad(const Facet& facet, const FacetLoading& loading, const ElementMatrix& k, ElementLoad& f);

/// Whether a corner of the loading has a turn, so that its load needs the stiffness.
bool hasTurn(const FacetLoading& loading);

/// Strain across the wall at the mean in-plane strain of the displacements u, of corners 1 to 3 in global
/// axes with their rotation vectors x c: strainAcross - thinning . (L^T u / (A h) - strain).
double strainAcross(const Facet& facet, const FacetLoading& loading, const ElementLoad& u);

}  // namespace keld
