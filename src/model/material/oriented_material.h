// The material of an element: stiffness averaged over the fibre orientation, turned into other axes.
// Called by the wall models.
#pragma once

#include <array>

#include "model/model_tables.h"
#include "run/base/vector3.h"

namespace keld {

using Matrix3 = std::array<Vector3, 3>;
using Vector6 = std::array<double, 6>;

/// Orientation average of a unidirectional stiffness c for second-order orientation (a1, 1 - a1, 0), the
/// fourth-order moment closed as a(ij) a(kl); Advani and Tucker, J. Rheology 31 (1987) 751-784.
Matrix6 orientationAverage(const Matrix6& c, double a1);

/// Rows map global strains (engineering shears) to strains in the axes e1, e2, e3.
Matrix6 strainRotation(const std::array<Vector3, 3>& axes);

/// D = transpose(Te) C' Te, exactly symmetric; `averaged` has the zeros of orientationAverage.
Matrix6 rotatedStiffness(const Matrix6& averaged, const std::array<Vector3, 3>& axes);

/// beta = transpose(Ts) (alpha1, alpha2, alpha3, 0, 0, 0): expansion in global axes, 1/K.
Vector6 rotatedExpansion(const Vector3& alpha, const std::array<Vector3, 3>& axes);

/// S = stress1 d1 d1^T + stress2 d2 d2^T.
Matrix3 stressTensor(double stress1, double stress2, const Vector3& d1, const Vector3& d2);

}  // namespace keld
