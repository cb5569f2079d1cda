// Membrane of a facet; see the header.
#include "model/walls/facet/membrane.h"

namespace keld {

namespace {

Vector3 times(const Matrix3& m, const Vector3& v) { return {dot(m[0], v), dot(m[1], v), dot(m[2], v)}; }

/// a^T q a
Matrix3 congruence(const Matrix3& a, const Matrix3& q) {
  Matrix3 column, result;  // rows of `column` are the columns of a
  for (std::size_t j = 0; j < 3; ++j) column[j] = {a[0][j], a[1][j], a[2][j]};
  for (std::size_t j = 0; j < 3; ++j) {
    const Vector3 qa = times(q, column[j]);
    for (std::size_t i = 0; i <= j; ++i) result[i][j] = result[j][i] = dot(column[i], qa);
  }
  return result;
}

/// Side lengths squared: l21, l32, l13.
Vector3 squaredSides(const FacetShape& s) {
  Vector3 l;
  for (std::size_t i = 0; i < 3; ++i) {
    const double dx = s.x[behind(i)] - s.x[i], dy = s.y[behind(i)] - s.y[i];
    l[i] = dx * dx + dy * dy;
  }
  return l;
}

/// Natural to Cartesian strains; column i belongs to the side from corner i to the one behind it.
Matrix3 naturalStrains(const FacetShape& s, const Vector3& side) {
  Matrix3 t;
  const double scale = 1.0 / (4.0 * s.area * s.area);
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t j = behind(i), k = before(i);
    const double yjk = s.y[j] - s.y[k], yik = s.y[i] - s.y[k];
    const double xjk = s.x[j] - s.x[k], xik = s.x[i] - s.x[k];
    t[0][i] = scale * side[i] * yjk * yik;
    t[1][i] = scale * side[i] * xjk * xik;
    t[2][i] = -scale * side[i] * (yjk * xik + xjk * yik);
  }
  return t;
}

/// Natural strains at corner 1, 2 or 3 of the rotations that are left without the rigid one.
Matrix3 cornerStrains(std::size_t corner, const Vector3& side, double area) {
  constexpr std::array<std::array<std::array<int, 3>, 3>, 3> b = {{{{{1, 2, 1}, {0, 1, -1}, {-1, -1, -2}}},
                                                                   {{{-2, -1, -1}, {1, 1, 2}, {-1, 0, 1}}},
                                                                   {{{1, -1, 0}, {-1, -2, -1}, {2, 1, 1}}}}};
  Matrix3 q;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) q[i][j] = 2.0 * area / (3.0 * side[i]) * b[corner][i][j];
  }
  return q;
}

/// Stiffness of the three rotations without the rigid one, per thickness: energy at the sides' midpoints.
Matrix3 rotationStiffness(const FacetShape& s, const Matrix3& q) {
  const Vector3 side = squaredSides(s);
  const Matrix3 natural = congruence(naturalStrains(s, side), q);
  std::array<Matrix3, 3> corner;
  for (std::size_t i = 0; i < 3; ++i) corner[i] = cornerStrains(i, side, s.area);
  Matrix3 sum{};
  for (std::size_t i = 0; i < 3; ++i) {
    Matrix3 middle;
    for (std::size_t r = 0; r < 3; ++r) middle[r] = 0.5 * (corner[i][r] + corner[behind(i)][r]);
    const Matrix3 energy = congruence(middle, natural);
    for (std::size_t r = 0; r < 3; ++r) sum[r] = sum[r] + s.area * energy[r];
  }
  return sum;
}

/// Row of the rigid rotation that each corner's rotation is measured from, without the 1 at r of that corner.
std::array<double, 9> rigidRotation(const FacetShape& s) {
  std::array<double, 9> row{};
  for (std::size_t i = 0; i < 3; ++i) {
    row[3 * i] = (s.x[before(i)] - s.x[behind(i)]) / (4.0 * s.area);
    row[3 * i + 1] = (s.y[before(i)] - s.y[behind(i)]) / (4.0 * s.area);
  }
  return row;
}

/// k += scale T^T kt T for T = one row for all + unit columns at the rotations.
void addRotations(const FacetShape& s, const Matrix3& kt, double scale, Matrix9& k) {
  const std::array<double, 9> rigid = rigidRotation(s);
  Vector3 rowSum{};
  for (std::size_t i = 0; i < 3; ++i) rowSum[i] = kt[i][0] + kt[i][1] + kt[i][2];
  const double total = rowSum[0] + rowSum[1] + rowSum[2];
  // Column a of kt T is rowSum x rigid[a], plus column i of kt where a is the rotation of corner i.
  for (std::size_t a = 0; a < 9; ++a) {
    for (std::size_t b = a; b < 9; ++b) {
      double value = rigid[a] * total * rigid[b];
      if (a % 3 == 2) value += rowSum[a / 3] * rigid[b];
      if (b % 3 == 2) value += rigid[a] * rowSum[b / 3];
      if (a % 3 == 2 && b % 3 == 2) value += kt[a / 3][b / 3];
      k[a][b] += scale * value;
    }
  }
}

}  // namespace

Lumping membraneLumping(const FacetShape& s) {
  constexpr double alpha = 1.5;
  Lumping l;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t j = behind(i), k = before(i);
    const double yjk = s.y[j] - s.y[k], xkj = s.x[k] - s.x[j];
    const double yik = s.y[i] - s.y[k], yji = s.y[j] - s.y[i];
    const double xki = s.x[k] - s.x[i], xij = s.x[i] - s.x[j];
    l[3 * i] = {0.5 * yjk, 0.0, 0.5 * xkj};
    l[3 * i + 1] = {0.0, 0.5 * xkj, 0.5 * yjk};
    l[3 * i + 2] = {alpha / 12.0 * yjk * (yik - yji), alpha / 12.0 * xkj * (xki - xij),
                    alpha / 6.0 * (xki * yik - xij * yji)};
  }
  return l;
}

void membraneStiffness(const FacetShape& shape, double thickness, const PlaneStress& material, Matrix9& k) {
  const Lumping l = membraneLumping(shape);
  const double basic = thickness / shape.area;
  for (std::size_t b = 0; b < 9; ++b) {
    const Vector3 stress = basic * times(material.q, l[b]);
    for (std::size_t a = 0; a <= b; ++a) k[a][b] = dot(l[a], stress);
  }
  addRotations(shape, rotationStiffness(shape, material.q), 0.75 * material.drilling * thickness, k);
}

}  // namespace keld
