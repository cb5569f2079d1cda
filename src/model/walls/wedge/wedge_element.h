// One wedge element: constitutive matrix, stiffness and load. Pure arithmetic; called by the assembly.
#pragma once

#include <array>

#include "model/model_tables.h"
#include "model/walls/wedge/wedge_shape.h"
#include "run/base/vector3.h"

namespace keld {

/// Row i, column j at [18 i + j]; freedoms node by node, x, y, z each.
using ElementMatrix = std::array<double, 324>;
using ElementLoad = std::array<double, 18>;
using Matrix3 = std::array<Vector3, 3>;
using Vector6 = std::array<double, 6>;

/// Geometry in use at every point of an element: gradients of r, s, t (1/cm) and the determinant (cm3). A
/// determinant that isn't positive is replaced by meanJacobian when that is positive.
struct WedgeGeometry {
  std::array<Vector3, 3> gradient{};
  double determinant = 0.0;
};
WedgeGeometry wedgeGeometry(const std::array<Vector3, 3>& corner, double thickness, double meanJacobian);

/// Orientation average of a unidirectional stiffness c for second-order orientation (a1, 1 - a1, 0), the
/// fourth-order moment closed as a(ij) a(kl); Advani and Tucker, J. Rheology 31 (1987) 751-784.
Matrix6 orientationAverage(const Matrix6& c, double a1);

/// Rows map global strains (engineering shears) to strains in the axes e1, e2, e3.
Matrix6 strainRotation(const std::array<Vector3, 3>& axes);

/// D = transpose(Te) C' Te, exactly symmetric; `averaged` has the zeros of orientationAverage.
Matrix6 rotatedStiffness(const Matrix6& averaged, const std::array<Vector3, 3>& axes);

/// beta = transpose(Ts) (alpha1, alpha2, alpha3, 0, 0, 0): expansion in global axes, 1/K.
Vector6 rotatedExpansion(const Vector3& alpha, const std::array<Vector3, 3>& axes);

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

/// S = stress1 d1 d1^T + stress2 d2 d2^T.
Matrix3 stressTensor(double stress1, double stress2, const Vector3& d1, const Vector3& d2);

/// Turns the three freedoms of local nodes marked in `inFrame` into the axes of the frame: transpose(T) K T
/// (k may be null) and transpose(T) f. Keeps k exactly symmetric.
void changeBasis(const std::array<bool, 6>& inFrame, const RestraintFrame& frame, ElementMatrix* k,
                 ElementLoad& f);

}  // namespace keld
