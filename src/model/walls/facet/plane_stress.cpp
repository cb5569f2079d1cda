// Plane stress of a wall; see the header.
#include "model/walls/facet/plane_stress.h"

#include <algorithm>

namespace keld {

namespace {

constexpr std::array<std::size_t, 3> inPlane = {0, 1, 3}, across = {2, 4, 5};

Matrix3 part(const Matrix6& d, const std::array<std::size_t, 3>& rows,
             const std::array<std::size_t, 3>& columns) {
  Matrix3 m;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) m[i][j] = d[rows[i]][columns[j]];
  }
  return m;
}

/// Whether all leading minors of a symmetric matrix are positive; false for values that aren't numbers.
bool positiveDefinite(const Matrix3& m) {
  return m[0][0] > 0.0 && m[0][0] * m[1][1] - m[0][1] * m[1][0] > 0.0 && dot(m[0], cross(m[1], m[2])) > 0.0;
}

Matrix3 inverseOf(const Matrix3& m) {
  const double scale = 1.0 / dot(m[0], cross(m[1], m[2]));
  const Vector3 a = scale * cross(m[1], m[2]), b = scale * cross(m[2], m[0]), c = scale * cross(m[0], m[1]);
  return {{{a[0], b[0], c[0]}, {a[1], b[1], c[1]}, {a[2], b[2], c[2]}}};
}

Matrix3 product(const Matrix3& a, const Matrix3& b) {
  Matrix3 m;
  for (std::size_t i = 0; i < 3; ++i) m[i] = a[i][0] * b[0] + a[i][1] * b[1] + a[i][2] * b[2];
  return m;
}

double drillingFactor(const Matrix3& q) {
  const double u1 = (3.0 * q[0][0] + 3.0 * q[1][1] + 2.0 * q[0][1] + 4.0 * q[2][2]) / 8.0;
  const double u4 = (q[0][0] + q[1][1] + 6.0 * q[0][1] - 4.0 * q[2][2]) / 8.0;
  const double nu = std::clamp(u4 / u1, 0.0, 0.5);
  return std::max(0.01, (1.0 - 4.0 * nu * nu) / 2.0);
}

}  // namespace

PlaneStress planeStress(const Matrix6& d) {
  PlaneStress result;
  const Matrix3 ss = part(d, across, across);
  if (!positiveDefinite(ss)) return result;
  const Matrix3 released = product(inverseOf(ss), part(d, across, inPlane));
  const Matrix3 ms = part(d, inPlane, across), taken = product(ms, released);
  const Matrix3 mm = part(d, inPlane, inPlane);
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = i; j < 3; ++j) result.q[i][j] = result.q[j][i] = mm[i][j] - taken[i][j];
  }
  result.thinning = released[0];
  result.definite = positiveDefinite(result.q);
  if (!result.definite) return result;
  result.inverse = inverseOf(result.q);
  result.drilling = drillingFactor(result.q);
  return result;
}

}  // namespace keld
