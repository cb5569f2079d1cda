// One wedge element: stiffness and load. Pure arithmetic; called by the wedge wall.
#pragma once

#include <array>

#include "model/material/oriented_material.h"
#include "model/model_tables.h"
#include "model/walls/element_matrix.h"
#include "model/walls/wedge/wedge_shape.h"
#include "run/base/vector3.h"

namespace keld {

/// Geometry in use at every point of an element: gradients of r, s, t (1/cm) and the determinant (cm3). A
/// determinant that isn't positive is replaced by meanJacobian when that is positive.
struct WedgeGeometry {
  std::array<Vector3, 3> gradient{};
  double determinant = 0.0;
};
WedgeGeometry wedgeGeometry(const std::array<Vector3, 3>& corner, double thickness, double meanJacobian);

/// Stiffness in dyn/cm, the integral of transpose(B) D B over the wedge, exactly symmetric.
/// The determinant is constant over the element and the integrand of degree 2 in the plane and through the
/// thickness, so that the integral is taken in closed form; the 21 points give the same to rounding.
void formStiffness(const WedgeGeometry& geometry, const Matrix6& d, ElementMatrix& k);

/// What the load of an element depends on.
struct ElementLoading {
  Matrix3 stress{};             // dyn/cm2, frozen-in stress in global axes
  Matrix3 unitThermal{};        // dyn/(cm2 K), D beta as a tensor: stress of a unit temperature change
  Vector6 nodeTemperature{};    // K, nodes 1 to 6
  double ambientTemperature{};  // K
  bool thermal = false;         // thermal terms stand beside the stress terms
};

/// Load in dyn. Temperature change at a point: ambient minus the interpolated temperature, at most 0.
void formLoad(const WedgeGeometry& geometry, const ElementLoading& loading, ElementLoad& f);

}  // namespace keld
