// One wedge element: the closed form against point-by-point integration, rigid motions.
#include "model/walls/wedge/wedge_element.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "model/material/material.h"
#include "support/model_maker.h"

namespace keld {
namespace {

struct Wedge {
  std::array<Vector3, 3> corner;
  double thickness;
  double meanJacobian;
};

// Three shapes: slanted in space, a sliver with a thick wall, and one with a negative thickness, which takes
// the mean determinant.
const Wedge slanted{{{{0.1, 0.2, 0.3}, {1.4, 0.5, -0.2}, {0.6, 1.7, 0.9}}}, 0.25, 0.0};
const Wedge sliver{{{{0.0, 0.0, 0.0}, {3.0, 0.1, 0.0}, {1.0, 0.15, 0.05}}}, 1.5, 0.0};
const Wedge inverted{{{{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.2}}}, -0.3, 0.17};

Matrix6 fibreStiffness() {
  return stiffnessOf(
      {.e11 = 9e10, .e22 = 4e10, .g12 = 1.6e10, .g23 = 4e10 / 2.86, .nu12 = 0.35, .nu23 = 0.43});
}
Matrix6 skewStiffness() {
  return rotatedStiffness(orientationAverage(fibreStiffness(), 0.7), testing_support::skewRotation());
}

ElementLoading someLoading() {
  ElementLoading loading;
  loading.stress = stressTensor(3e7, -1e7, {0.6, 0.8, 0.0}, {-0.8, 0.6, 0.0});
  loading.unitThermal = {{{2e6, 3e5, -1e5}, {3e5, 1e6, 2e5}, {-1e5, 2e5, 3e6}}};
  loading.nodeTemperature = {320.0, 350.0, 290.0,
                             280.0, 310.0, 330.0};  // crosses ambient: the change is clamped
  loading.ambientTemperature = 305.0;
  loading.thermal = true;
  return loading;
}

/// Reference: the Jacobian anew at every point, strain columns node by node, 21 points.
struct Integrated {
  ElementMatrix k{};
  ElementLoad f{};
};

std::array<Vector3, 3> inverse(const std::array<Vector3, 3>& m, double det) {
  const auto c0 = cross(m[1], m[2]), c1 = cross(m[2], m[0]), c2 = cross(m[0], m[1]);
  std::array<Vector3, 3> r;
  for (std::size_t i = 0; i < 3; ++i) r[i] = (1.0 / det) * Vector3{c0[i], c1[i], c2[i]};
  return r;
}

void addPoint(const Wedge& wedge, const Matrix6& d, const ElementLoading& loading, const ShapeValues& shape,
              double weight, Integrated& sum) {
  const Vector3 offset = wedgeOffset(wedge.corner, wedge.thickness).d;
  std::array<Vector3, 3> jacobian{};
  for (std::size_t n = 0; n < 6; ++n) {
    const Vector3 x = n < 3 ? wedge.corner[n] - offset : wedge.corner[n - 3] + offset;
    for (std::size_t p = 0; p < 3; ++p) jacobian[p] = jacobian[p] + shape.derivative[n][p] * x;
  }
  double det = dot(jacobian[0], cross(jacobian[1], jacobian[2]));
  if (det <= 0.0 && wedge.meanJacobian > 0.0) det = wedge.meanJacobian;
  const auto inv = inverse(jacobian, det);
  const double w = weight * det;

  double temperature = 0.0;
  for (std::size_t n = 0; n < 6; ++n) temperature += shape.value[n] * loading.nodeTemperature[n];
  const double change = loading.thermal ? std::min(loading.ambientTemperature - temperature, 0.0) : 0.0;

  std::array<std::array<double, 18>, 6> b{};
  for (std::size_t n = 0; n < 6; ++n) {
    const Vector3 g = {dot(inv[0], shape.derivative[n]), dot(inv[1], shape.derivative[n]),
                       dot(inv[2], shape.derivative[n])};
    b[0][3 * n] = b[3][3 * n + 1] = b[4][3 * n + 2] = g[0];
    b[3][3 * n] = b[1][3 * n + 1] = b[5][3 * n + 2] = g[1];
    b[4][3 * n] = b[5][3 * n + 1] = b[2][3 * n + 2] = g[2];
    for (std::size_t i = 0; i < 3; ++i) {
      sum.f[3 * n + i] += w * (change * dot(loading.unitThermal[i], g) - dot(loading.stress[i], g));
    }
  }
  for (std::size_t i = 0; i < 18; ++i) {
    for (std::size_t j = 0; j < 18; ++j) {
      for (std::size_t p = 0; p < 6; ++p) {
        for (std::size_t q = 0; q < 6; ++q) sum.k[18 * i + j] += w * b[p][i] * d[p][q] * b[q][j];
      }
    }
  }
}

Integrated integrated(const Wedge& wedge, const Matrix6& d, const ElementLoading& loading) {
  Integrated sum;
  const IntegrationTable& table = integrationTable;
  for (std::size_t i = 0; i < 7; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      addPoint(wedge, d, loading, shapeValues(table.r[i], table.s[i], table.t[j]),
               table.triangleWeight[i] * table.thicknessWeight[j], sum);
    }
  }
  return sum;
}

template <class Values>
double largest(const Values& values) {
  double result = 0.0;
  for (double v : values) result = std::max(result, std::abs(v));
  return result;
}

class WedgeElement : public testing::TestWithParam<Wedge> {
 protected:
  WedgeElement() {
    fillIntegrationTables();
    geometry = wedgeGeometry(GetParam().corner, GetParam().thickness, GetParam().meanJacobian);
    formStiffness(geometry, skewStiffness(), k);
  }
  WedgeGeometry geometry;
  ElementMatrix k{};
};

TEST_P(WedgeElement, AgreesWithIntegrationPointByPoint) {
  ElementLoad f{};
  formLoad(geometry, someLoading(), f);

  const Integrated reference = integrated(GetParam(), skewStiffness(), someLoading());

  for (std::size_t i = 0; i < 324; ++i) EXPECT_NEAR(k[i], reference.k[i], 1e-13 * largest(reference.k));
  for (std::size_t i = 0; i < 18; ++i) EXPECT_NEAR(f[i], reference.f[i], 1e-13 * largest(reference.f));
}

TEST_P(WedgeElement, RigidMotionsTakeNoForceAndTheMatrixIsSymmetric) {
  const auto& [corner, thickness, mean] = GetParam();
  const Vector3 offset = wedgeOffset(corner, thickness).d;
  const int motions = mean > 0.0 ? 3 : 6;  // with a replaced determinant translations alone are exact
  for (int motion = 0; motion < motions; ++motion) {
    const Vector3 axis = {motion % 3 == 0 ? 1.0 : 0.0, motion % 3 == 1 ? 1.0 : 0.0,
                          motion % 3 == 2 ? 1.0 : 0.0};
    std::array<double, 18> u{};
    for (std::size_t n = 0; n < 6; ++n) {
      const Vector3 x = n < 3 ? corner[n] - offset : corner[n - 3] + offset;
      const Vector3 v = motion < 3 ? axis : cross(axis, x);
      std::copy(v.begin(), v.end(), u.begin() + 3 * static_cast<std::ptrdiff_t>(n));
    }
    for (std::size_t i = 0; i < 18; ++i) {
      double force = 0.0;
      for (std::size_t j = 0; j < 18; ++j) force += k[18 * i + j] * u[j];
      EXPECT_NEAR(force, 0.0, 1e-13 * largest(k) * largest(u)) << "motion " << motion << " freedom " << i;
    }
  }
  for (std::size_t i = 0; i < 18; ++i) {
    for (std::size_t j = 0; j < 18; ++j) ASSERT_EQ(k[18 * i + j], k[18 * j + i]);
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, WedgeElement, testing::Values(slanted, sliver, inverted));

TEST(WedgeShape, UnitWedgeHasItsVolumeAndSumsOfShapeFunctions) {
  fillIntegrationTables();
  const std::array<Vector3, 3> corner = {{{0, 0, 0}, {2, 0, 0}, {0, 3, 0}}};  // area 3, wall 0.5
  const WedgeJacobian jacobian = wedgeJacobian(corner, wedgeOffset(corner, 0.5).d);
  EXPECT_DOUBLE_EQ(jacobian.determinant * integrationTable.weightSum, 1.5);

  const ShapeValues shape = shapeValues(0.2, 0.5, -0.4);
  double sum = 0.0;
  Vector3 slope{};
  for (std::size_t n = 0; n < 6; ++n) {
    sum += shape.value[n];
    slope = slope + shape.derivative[n];
  }
  EXPECT_DOUBLE_EQ(sum, 1.0);
  EXPECT_NEAR(norm(slope), 0.0, 1e-15);
}

TEST(WedgeShape, TriangleWithoutAreaIsMarkedAndHasNoOffset) {
  const WedgeOffset offset = wedgeOffset({{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}}, 0.3);
  EXPECT_TRUE(offset.degenerate);
  EXPECT_EQ(norm(offset.d), 0.0);
}

}  // namespace
}  // namespace keld
