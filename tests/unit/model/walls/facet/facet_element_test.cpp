// One facet: reference numbers of an independent program, rigid motions, plane bending of a rectangle.
#include "model/walls/facet/facet_element.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "model/walls/facet/membrane.h"
#include "places.h"
#include "support/model_maker.h"
#include "support/number_lists.h"

namespace keld {
namespace {

using testing_support::NumberLists;

Vector3 vectorAt(const std::vector<double>& list, std::size_t row) {
  return {list[3 * row], list[3 * row + 1], list[3 * row + 2]};
}

template <class Values>
double largest(const Values& values) {
  double result = 0.0;
  for (double value : values) result = std::max(result, std::abs(value));
  return result;
}

class FacetElement : public testing::Test {
 protected:
  FacetElement() {
    for (std::size_t i = 0; i < 3; ++i) corner[i] = vectorAt(lists.at("corners"), i);
    Matrix6 d;
    for (std::size_t i = 0; i < 6; ++i) std::copy_n(&lists.at("C")[6 * i], 6, d[i].begin());
    facet = {facetShape(corner, vectorAt(lists.at("frame"), 0)), lists.at("thickness")[0], lists.at("c")[0],
             planeStress(d)};
    formFacetStiffness(facet, k);
  }

  const NumberLists lists = testing_support::readNumberLists(places::data / "facet/element.txt");
  std::array<Vector3, 3> corner;
  Facet facet;
  ElementMatrix k;
};

TEST_F(FacetElement, HasTheStiffnessOfAnIndependentProgram) {
  const std::vector<double>& expected = lists.at("K");
  EXPECT_NEAR(facet.material.drilling, lists.at("beta0")[0], 1e-14);
  for (std::size_t i = 0; i < 324; ++i) {
    ASSERT_NEAR(k[i], expected[i], 1e-12 * largest(expected)) << i / 18 << ' ' << i % 18;
    ASSERT_EQ(k[i], k[18 * (i % 18) + i / 18]) << "exactly symmetric";
  }
}

TEST_F(FacetElement, HasTheLoadOfAnIndependentProgram) {
  const auto& alpha = lists.at("alpha");
  const auto& cooling = lists.at("cooling_lower_upper");
  const Vector3 inPlane = {alpha[0], alpha[1], 0.0};
  FacetLoading loading;
  loading.strain = (-0.5 * (cooling[0] + cooling[1])) * inPlane;
  loading.curvature = (-(cooling[1] - cooling[0]) / facet.thickness) * inPlane;
  loading.stress = {lists.at("stress")[0], lists.at("stress")[1], 0.0};
  ElementLoad f;

  formFacetLoad(facet, loading, k, f);

  const std::vector<double>& expected = lists.at("F");
  for (std::size_t i = 0; i < 18; ++i) EXPECT_NEAR(f[i], expected[i], 1e-12 * largest(expected)) << i;
}

TEST_F(FacetElement, RigidMotionsTakeNoForce) {
  for (std::size_t motion = 0; motion < 6; ++motion) {
    Vector3 shift{}, spin{};
    (motion < 3 ? shift : spin)[motion % 3] = 1.0;
    ElementLoad u;
    for (std::size_t n = 0; n < 3; ++n) {
      const Vector3 moved = shift + cross(spin, corner[n]);
      for (std::size_t c = 0; c < 3; ++c) {
        u[3 * n + c] = moved[c];
        u[9 + 3 * n + c] = facet.rotationLength * spin[c];
      }
    }
    for (std::size_t i = 0; i < 18; ++i) {
      double force = 0.0;
      for (std::size_t j = 0; j < 18; ++j) force += k[18 * i + j] * u[j];
      EXPECT_NEAR(force, 0.0, 1e-13 * largest(k) * largest(u)) << "motion " << motion << " freedom " << i;
    }
  }
}

// A rectangle a x b x 1 of two triangles under u = -x y, v = x^2 / 2 + nu y^2 / 2, rotation x: the energy of
// a beam's bending, E b^3 a / 24, whatever the side ratio and the Poisson ratio.
TEST(Membrane, EnergyOfARectangleBentInItsPlaneIsExact) {
  for (const double nu : {0.0, 0.25, 0.4}) {
    for (const double ratio : {0.1, 1.0, 7.0}) {
      const double a = 2.0, b = a * ratio;
      PlaneStress material;
      const double stiff = 1.0 / (1.0 - nu * nu);
      Matrix6 d{};
      d[0][0] = d[1][1] = stiff;
      d[0][1] = d[1][0] = stiff * nu;
      d[2][2] = d[4][4] = d[5][5] = 1.0;  // nothing across: the in-plane part is plane stress as it stands
      d[3][3] = 0.5 * (1.0 - nu) * stiff;
      material = planeStress(d);
      EXPECT_NEAR(material.drilling, std::max(0.01, 0.5 - 2.0 * nu * nu), 1e-15);
      const std::array<Vector3, 4> p = {{{0, -b / 2, 0}, {a, -b / 2, 0}, {a, b / 2, 0}, {0, b / 2, 0}}};
      double energy = 0.0;
      for (const auto& t : {std::array{0u, 1u, 2u}, std::array{0u, 2u, 3u}}) {
        Matrix9 k;
        membraneStiffness(facetShape({p[t[0]], p[t[1]], p[t[2]]}, {1, 0, 0}), 1.0, material, k);
        std::array<double, 9> u;
        for (std::size_t i = 0; i < 3; ++i) {
          const double x = p[t[i]][0], y = p[t[i]][1];
          u[3 * i] = -x * y;
          u[3 * i + 1] = 0.5 * x * x + 0.5 * nu * y * y;
          u[3 * i + 2] = x;
        }
        for (std::size_t i = 0; i < 9; ++i) {
          energy += 0.5 * k[i][i] * u[i] * u[i];
          for (std::size_t j = i + 1; j < 9; ++j) energy += k[i][j] * u[i] * u[j];
        }
      }
      EXPECT_NEAR(energy / (b * b * b * a / 24.0), 1.0, 1e-10) << "nu " << nu << " ratio " << ratio;
    }
  }
}

TEST(PlaneStress, RefusesWhatHasNoPositiveDefiniteInPlaneStiffness) {
  Matrix6 d{};
  for (std::size_t i = 0; i < 6; ++i) d[i][i] = 1.0;
  EXPECT_TRUE(planeStress(d).definite);
  Matrix6 softAcross = d, softInPlane = d, coupled = d;
  softAcross[2][2] = 0.0;
  softInPlane[0][1] = softInPlane[1][0] = 1.0;
  coupled[0][2] = coupled[2][0] = 1.2;  // d_xx - d_xz d_zx / d_zz below 0
  for (const Matrix6& bad : {softAcross, softInPlane, coupled}) EXPECT_FALSE(planeStress(bad).definite);
}

}  // namespace
}  // namespace keld
