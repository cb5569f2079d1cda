// The material of an element; see the header.
#include "model/material/oriented_material.h"

namespace keld {

Matrix6 orientationAverage(const Matrix6& c, double a1) {
  const double a2 = 1.0 - a1;
  const double c11 = c[0][0], c22 = c[1][1], c12 = c[0][1], c23 = c[1][2], c44 = c[3][3];
  const double b1 = c11 + c22 - 2.0 * c12 - 4.0 * c44, b2 = c12 - c23, b3 = c44 + (c23 - c22) / 2.0;
  const double b4 = c23, b5 = (c22 - c23) / 2.0;
  Matrix6 m{};
  m[0][0] = b1 * a1 * a1 + 2.0 * b2 * a1 + 4.0 * b3 * a1 + b4 + 2.0 * b5;
  m[1][1] = b1 * a2 * a2 + 2.0 * b2 * a2 + 4.0 * b3 * a2 + b4 + 2.0 * b5;
  m[2][2] = b4 + 2.0 * b5;
  m[0][1] = m[1][0] = b1 * a1 * a2 + b2 * (a1 + a2) + b4;
  m[0][2] = m[2][0] = b2 * a1 + b4;
  m[1][2] = m[2][1] = b2 * a2 + b4;
  m[3][3] = b3 * (a1 + a2) + b5;
  m[4][4] = b3 * a1 + b5;
  m[5][5] = b3 * a2 + b5;
  return m;
}

Matrix6 strainRotation(const std::array<Vector3, 3>& axes) {
  Matrix6 t;
  for (std::size_t k = 0; k < 3; ++k) {
    const auto& a = axes[k];
    t[k] = {a[0] * a[0], a[1] * a[1], a[2] * a[2], a[0] * a[1], a[0] * a[2], a[1] * a[2]};
  }
  constexpr std::size_t pair[3][2] = {{0, 1}, {0, 2}, {1, 2}};
  for (std::size_t k = 0; k < 3; ++k) {
    const auto &a = axes[pair[k][0]], &b = axes[pair[k][1]];
    t[3 + k] = {2.0 * a[0] * b[0],         2.0 * a[1] * b[1],         2.0 * a[2] * b[2],
                a[0] * b[1] + a[1] * b[0], a[0] * b[2] + a[2] * b[0], a[1] * b[2] + a[2] * b[1]};
  }
  return t;
}

Matrix6 rotatedStiffness(const Matrix6& averaged, const std::array<Vector3, 3>& axes) {
  const Matrix6 te = strainRotation(axes);
  Matrix6 product;  // C' Te
  for (std::size_t j = 0; j < 6; ++j) {
    for (std::size_t i = 0; i < 3; ++i) {
      product[i][j] = averaged[i][0] * te[0][j] + averaged[i][1] * te[1][j] + averaged[i][2] * te[2][j];
      product[3 + i][j] = averaged[3 + i][3 + i] * te[3 + i][j];
    }
  }
  Matrix6 d;
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = i; j < 6; ++j) {
      double sum = 0.0;
      for (std::size_t m = 0; m < 6; ++m) sum += te[m][i] * product[m][j];
      d[i][j] = d[j][i] = sum;
    }
  }
  return d;
}

Vector6 rotatedExpansion(const Vector3& alpha, const std::array<Vector3, 3>& axes) {
  Vector6 beta{};
  for (std::size_t k = 0; k < 3; ++k) {
    const auto& a = axes[k];
    const Vector6 row = {a[0] * a[0],       a[1] * a[1],       a[2] * a[2],
                         2.0 * a[0] * a[1], 2.0 * a[0] * a[2], 2.0 * a[1] * a[2]};
    for (std::size_t i = 0; i < 6; ++i) beta[i] += alpha[k] * row[i];
  }
  return beta;
}

Matrix3 stressTensor(double stress1, double stress2, const Vector3& d1, const Vector3& d2) {
  Matrix3 s;
  for (std::size_t i = 0; i < 3; ++i) s[i] = (stress1 * d1[i]) * d1 + (stress2 * d2[i]) * d2;
  return s;
}

}  // namespace keld
