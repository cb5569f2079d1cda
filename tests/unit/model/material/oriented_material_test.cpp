// Material of an element: limits of the orientation average, energy and stretch in turned axes.
#include "model/material/oriented_material.h"

#include <gtest/gtest.h>

#include "model/material/material.h"
#include "support/model_maker.h"

namespace keld {
namespace {

Matrix6 fibreStiffness() {
  return stiffnessOf(
      {.e11 = 9e10, .e22 = 4e10, .g12 = 1.6e10, .g23 = 4e10 / 2.86, .nu12 = 0.35, .nu23 = 0.43});
}

void expectEqual(const Matrix6& a, const Matrix6& b, double tolerance) {
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = 0; j < 6; ++j) EXPECT_NEAR(a[i][j], b[i][j], tolerance) << i << ' ' << j;
  }
}

TEST(OrientationAverage, LimitsAreTheAlignedTheTurnedAndTheIsotropicMaterial) {
  const Matrix6 c = fibreStiffness();
  const std::array<Vector3, 3> axes = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  const std::array<Vector3, 3> turned = {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}};

  expectEqual(orientationAverage(c, 1.0), c, 1e-3);
  // No fibre along axis 1 is all fibres along axis 2.
  expectEqual(rotatedStiffness(orientationAverage(c, 0.0), axes), rotatedStiffness(c, turned), 1e-3);

  const Matrix6 isotropic =
      stiffnessOf({.e11 = 2e10, .e22 = 2e10, .g12 = 2e10 / 2.6, .g23 = 2e10 / 2.6, .nu12 = 0.3, .nu23 = 0.3});
  expectEqual(rotatedStiffness(orientationAverage(isotropic, 0.37), testing_support::skewRotation()),
              isotropic, 1e-3);
}

TEST(RotatedMaterial, KeepsTheStrainEnergyOfTheSameStrainInOtherAxes) {
  const auto axes = testing_support::skewRotation();
  const Matrix6 c = orientationAverage(fibreStiffness(), 0.8), d = rotatedStiffness(c, axes);
  // A stretch e along direction n, given in global axes and in those of the material.
  const Vector3 n = {0.48, 0.6, 0.64};
  const auto stretch = [](const Vector3& v) {
    return Vector6{v[0] * v[0],       v[1] * v[1],       v[2] * v[2],
                   2.0 * v[0] * v[1], 2.0 * v[0] * v[2], 2.0 * v[1] * v[2]};
  };
  const auto energy = [](const Matrix6& m, const Vector6& e) {
    double sum = 0.0;
    for (std::size_t i = 0; i < 6; ++i) {
      for (std::size_t j = 0; j < 6; ++j) sum += e[i] * m[i][j] * e[j];
    }
    return sum;
  };
  const double global = energy(d, stretch(n));
  EXPECT_NEAR(global, energy(c, stretch({dot(axes[0], n), dot(axes[1], n), dot(axes[2], n)})),
              1e-12 * global);

  // Expansion is the stretch along each axis.
  const Vector6 beta = rotatedExpansion({3e-5, 5e-5, 7e-5}, axes);
  for (std::size_t k = 0; k < 3; ++k) {
    const Vector6 s = stretch(axes[k]);
    double along = 0.0;
    for (std::size_t i = 0; i < 3; ++i) along += beta[i] * s[i] + 0.5 * beta[3 + i] * s[3 + i];
    EXPECT_NEAR(along, 3e-5 + 2e-5 * static_cast<double>(k), 1e-18);
  }
}

}  // namespace
}  // namespace keld
