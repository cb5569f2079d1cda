// Bending of a facet; see the header.
#include "model/walls/facet/bending.h"

#include <cmath>

namespace keld {

namespace {

/// Integration weight of a point: h^3 / 12 x A / 3.
double pointWeight(double area, double thickness) { return thickness * thickness * thickness * area / 36.0; }

/// Curvature of b = (q, -p) that varies with gradient (gx, gy): adds the columns of p and q.
void addCornerPart(double gx, double gy, std::size_t corner, std::array<Vector3, 9>& b) {
  b[3 * corner + 1] = b[3 * corner + 1] + Vector3{0.0, -gy, -gx};
  b[3 * corner + 2] = b[3 * corner + 2] + Vector3{gx, 0.0, gy};
}

}  // namespace

CurvaturePoints curvaturePoints(const FacetShape& s) {
  std::array<double, 3> gx, gy;  // gradients of the area coordinates
  for (std::size_t i = 0; i < 3; ++i) {
    gx[i] = (s.y[behind(i)] - s.y[before(i)]) / (2.0 * s.area);
    gy[i] = (s.x[before(i)] - s.x[behind(i)]) / (2.0 * s.area);
  }
  CurvaturePoints points{};
  for (std::size_t point = 0; point < 3; ++point) {
    std::array<Vector3, 9>& b = points[point];
    std::array<double, 3> n = {1.0 / 6.0, 1.0 / 6.0, 1.0 / 6.0};
    n[point] = 2.0 / 3.0;
    for (std::size_t i = 0; i < 3; ++i) addCornerPart(gx[i], gy[i], i, b);
    for (std::size_t i = 0; i < 3; ++i) {
      const std::size_t j = behind(i);
      const double dx = s.x[j] - s.x[i], dy = s.y[j] - s.y[i], length = std::sqrt(dx * dx + dy * dy);
      const double tx = dx / length, ty = dy / length;
      // The bubble 4 Ni Nj along the tangent, times the side rotation
      // -3/2 ((wj - wi) / l + t . (bi + bj) / 2) with b = (q, -p).
      const double bx = 4.0 * (n[i] * gx[j] + n[j] * gx[i]), by = 4.0 * (n[i] * gy[j] + n[j] * gy[i]);
      const Vector3 bubble = {bx * tx, by * ty, by * tx + bx * ty};
      const std::array<double, 3> ofCorner = {1.5 / length, 0.75 * ty, -0.75 * tx};
      for (std::size_t m = 0; m < 3; ++m) {
        b[3 * i + m] = b[3 * i + m] + ofCorner[m] * bubble;
        b[3 * j + m] = b[3 * j + m] + (m == 0 ? -ofCorner[m] : ofCorner[m]) * bubble;
      }
    }
  }
  return points;
}

void bendingStiffness(const CurvaturePoints& points, double area, double thickness, const Matrix3& q,
                      Matrix9& k) {
  k = {};
  const double weight = pointWeight(area, thickness);
  for (const std::array<Vector3, 9>& b : points) {
    for (std::size_t column = 0; column < 9; ++column) {
      const Vector3 c = weight * b[column];
      const Vector3 moment = {dot(q[0], c), dot(q[1], c), dot(q[2], c)};
      for (std::size_t row = 0; row <= column; ++row) k[row][column] += dot(b[row], moment);
    }
  }
}

std::array<double, 9> bendingLoad(const CurvaturePoints& points, double area, double thickness,
                                  const Matrix3& q, const Vector3& curvature) {
  const Vector3 c = pointWeight(area, thickness) * curvature;
  const Vector3 moment = {dot(q[0], c), dot(q[1], c), dot(q[2], c)};
  std::array<double, 9> load{};
  for (const std::array<Vector3, 9>& b : points) {
    for (std::size_t row = 0; row < 9; ++row) load[row] += dot(b[row], moment);
  }
  return load;
}

}  // namespace keld
