// Arithmetic of three-vectors for the geometry of elements and frames.
// Used throughout src/model, by the statistics of the mesh and the reader of directions.
#pragma once

#include <array>
#include <cmath>

namespace keld {

using Vector3 = std::array<double, 3>;

inline Vector3 operator+(const Vector3& a, const Vector3& b) {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Vector3 operator-(const Vector3& a, const Vector3& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vector3 operator*(double s, const Vector3& a) { return {s * a[0], s * a[1], s * a[2]}; }
inline Vector3 operator/(const Vector3& a, double s) { return {a[0] / s, a[1] / s, a[2] / s}; }
inline double dot(const Vector3& a, const Vector3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Vector3 cross(const Vector3& a, const Vector3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double norm(const Vector3& a) { return std::sqrt(dot(a, a)); }
inline double distance(const Vector3& a, const Vector3& b) { return norm(b - a); }

/// Area of a triangle from its side lengths by Heron's formula; 0 where rounding makes the product negative.
inline double heronArea(double a, double b, double c) {
  const double s = 0.5 * (a + b + c);
  const double product = (s - a) * s * (s - b) * (s - c);
  return product > 0.0 ? std::sqrt(product) : 0.0;
}
inline double triangleArea(const Vector3& p1, const Vector3& p2, const Vector3& p3) {
  return heronArea(distance(p1, p2), distance(p1, p3), distance(p2, p3));
}

}  // namespace keld
