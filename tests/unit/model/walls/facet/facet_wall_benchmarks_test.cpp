// Facets as a shell: folded parts of an independent program, beams and plates of theory,
// and the shells of the literature.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "model/walls/facet/fold_turns.h"
#include "places.h"
#include "support/model_test.h"
#include "support/number_lists.h"
#include "support/shell_body.h"

namespace keld {
namespace {

using std::numbers::pi;
using testing_support::ShellBody;

class FoldedPart : public testing_support::ModelTest, public testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    ModelTest::SetUp();
    lists =
        testing_support::readNumberLists(places::data / "facet" / (std::string(GetParam()) + "_part.txt"));
    const auto &xyz = lists.at("xyz"), &corner = lists.at("tri");
    for (std::size_t n = 0; n < xyz.size(); n += 3) body.node.push_back({xyz[n], xyz[n + 1], xyz[n + 2]});
    for (std::size_t t = 0; t < corner.size(); t += 3)
      body.addTriangle(static_cast<int>(corner[t]), static_cast<int>(corner[t + 1]),
                       static_cast<int>(corner[t + 2]));
    // The list counts three freedoms a node.
    for (const double f : lists.at("fixed")) {
      const auto freedom = static_cast<std::size_t>(f);
      body.held.insert(6 * (freedom / 3) + freedom % 3);
    }
  }

  /// Of every triangle, from 0.
  std::vector<std::array<Vector3, 3>> turns() const {
    Column<std::array<int, 3>> triangle;
    Column<Vector3> node;
    const auto number = [](std::size_t from0) { return static_cast<int>(from0) + 1; };
    for (const auto& t : body.triangle) triangle.push_back({number(t[0]), number(t[1]), number(t[2])});
    for (const Vector3& p : body.node) node.push_back(p);
    const auto turn = foldTurns(triangle, node);
    return {turn.begin(), turn.end()};
  }

  testing_support::NumberLists lists;
  ShellBody body;
};

// Isotropic 2000, 0.4; expansion 3e-5, 6e-5, 8e-5 and stress 5, 2 along the wall's axes with fibre (1, .3,
// .1); cooling 100 below, 80 above; wall 2.
TEST_P(FoldedPart, HasTheDisplacementsOfAnIndependentProgram) {
  const Vector3 fibre = {1.0, 0.3, 0.1};
  const auto turn = turns();
  for (const bool withTurns : {false, true}) {
    ShellBody part = body;
    part.rotationLength = 2.0;
    FacetLoading loading;
    loading.strain = -90.0 * Vector3{3e-5, 6e-5, 0.0};
    loading.curvature = (20.0 / 2.0) * Vector3{3e-5, 6e-5, 0.0};
    loading.stress = {5.0, 2.0, 0.0};
    loading.strainAcross = -90.0 * 8e-5;
    part.form(2.0, testing_support::isotropicStiffness(2000.0, 0.4), fibre, [&](std::size_t t) {
      if (withTurns) loading.turn = turn[t];
      return &loading;
    });
    const std::vector<double> u = part.solve();
    const auto& expected = lists.at(withTurns ? "u" : "u_without_turn");
    for (std::size_t k = 0; k < expected.size(); ++k)
      EXPECT_NEAR(u[6 * (k / 3) + k % 3], expected[k], 1e-8 * 0.3) << k << (withTurns ? " turns" : "");
  }
}

INSTANTIATE_TEST_SUITE_P(Parts, FoldedPart, testing::Values("l", "t"));

/// A shell of the literature: u at the place that is named there over its reference, which is 1 for an
/// infinitely fine mesh. What is expected here is the answer of an independent program on this mesh.
class ShellOfTheLiterature : public testing_support::ModelTest {};

// MacNeal and Harder, Finite Elements in Analysis and Design 1 (1985) 3-20: along y, then along z.
TEST_F(ShellOfTheLiterature, TwistedBeam) {
  for (const auto& [direction, reference, expected] :
       {std::tuple{2u, 0.005424, 0.995}, std::tuple{1u, 0.001754, 0.998}}) {
    const auto place = [](double s, double t) {
      const double angle = 0.5 * pi * s, y = 1.1 * (t - 0.5);
      return Vector3{12.0 * s, y * std::cos(angle), y * std::sin(angle)};
    };
    ShellBody body = ShellBody::grid(24, 4, place);
    body.hold([](const Vector3& p) { return p[0] < 1e-9; }, {0, 1, 2, 3, 4, 5});
    body.form(0.32, testing_support::isotropicStiffness(29e6, 0.22));
    const std::size_t loaded = 6 * body.nearest({12.0, 0.0, 0.0}) + direction;
    body.force[loaded] = 1.0;
    EXPECT_NEAR(body.solve()[loaded] / reference, expected, 0.005) << direction;
  }
}

// MacNeal and Harder: a quarter of the roof under its own weight, at the middle of the free edge.
TEST_F(ShellOfTheLiterature, ScordelisLoRoof) {
  const auto place = [](double s, double t) {
    const double angle = 40.0 * pi / 180.0 * t;
    return Vector3{25.0 * s, 25.0 * std::sin(angle), 25.0 * std::cos(angle)};
  };
  ShellBody body = ShellBody::grid(16, 16, place);
  body.hold([](const Vector3& p) { return p[0] < 1e-9; }, {0, 4, 5});
  body.hold([](const Vector3& p) { return p[1] < 1e-9; }, {1, 3, 5});
  body.hold([](const Vector3& p) { return p[0] > 25.0 - 1e-9; }, {1, 2});  // the diaphragm
  body.form(0.25, testing_support::isotropicStiffness(4.32e8, 0.0));
  for (const auto& t : body.triangle) {
    const Vector3 normal = cross(body.node[t[1]] - body.node[t[0]], body.node[t[2]] - body.node[t[0]]);
    for (const std::size_t n : t) body.force[6 * n + 2] -= 90.0 * norm(normal) / 6.0;
  }
  EXPECT_NEAR(body.solve()[6 * body.nearest(place(0.0, 1.0)) + 2] / -0.3024, 0.996, 0.005);
}

// Fluegge's series: an eighth of the cylinder, under the load.
TEST_F(ShellOfTheLiterature, PinchedCylinder) {
  const auto place = [](double s, double t) {
    return Vector3{300.0 * s, 300.0 * std::sin(0.5 * pi * t), 300.0 * std::cos(0.5 * pi * t)};
  };
  ShellBody body = ShellBody::grid(32, 32, place);
  body.hold([](const Vector3& p) { return p[0] < 1e-9; }, {0, 4, 5});
  body.hold([](const Vector3& p) { return p[1] < 1e-9; }, {1, 3, 5});
  body.hold([](const Vector3& p) { return p[2] < 1e-9; }, {2, 3, 4});
  body.hold([](const Vector3& p) { return p[0] > 300.0 - 1e-9; }, {1, 2});  // the diaphragm
  body.rotationLength = 3.0;
  body.form(3.0, testing_support::isotropicStiffness(3e6, 0.3));
  const std::size_t top = 6 * body.nearest({0.0, 0.0, 300.0}) + 2;
  body.force[top] = -0.25;
  EXPECT_NEAR(body.solve()[top] / -1.8248e-5, 1.003, 0.005);
}

// MacNeal and Harder: a quarter of the hemisphere with a hole of 18 degrees,
// pulled and pushed at its equator.
TEST_F(ShellOfTheLiterature, HemisphereWithHole) {
  const auto place = [](double s, double t) {
    const double around = 0.5 * pi * s, up = 72.0 * pi / 180.0 * t;
    return 10.0 * Vector3{std::cos(around) * std::cos(up), std::sin(around) * std::cos(up), std::sin(up)};
  };
  ShellBody body = ShellBody::grid(32, 32, place);
  body.hold([](const Vector3& p) { return p[1] < 1e-9; }, {1, 3, 5});
  body.hold([](const Vector3& p) { return p[0] < 1e-9; }, {0, 4, 5});
  body.rotationLength = 0.04;
  body.form(0.04, testing_support::isotropicStiffness(6.825e7, 0.3));
  const std::size_t pulled = 6 * body.nearest({10, 0, 0}), pushed = 6 * body.nearest({0, 10, 0}) + 1;
  body.held.insert(pulled + 2);
  body.force[pulled] = 1.0;
  body.force[pushed] = -1.0;
  const std::vector<double> u = body.solve();
  EXPECT_NEAR(u[pulled] / 0.094, 0.990, 0.005);
  EXPECT_NEAR(u[pushed] / -0.094, 0.990, 0.005);
}

// A rib of 120 x 10 x 2 mm, bent in its plane by a moment of 1 at its end: deflection over that of a beam.
// What is expected is the answer of an independent program with edges of 7, 2.5 and 1 wall thicknesses.
TEST_F(ShellOfTheLiterature, RibBentInItsPlane) {
  constexpr double length = 120.0, height = 10.0, wall = 2.0, modulus = 2000.0;
  for (const auto& [along, up, expected] :
       {std::tuple{9u, 1u, 1.142}, std::tuple{24u, 2u, 1.025}, std::tuple{60u, 5u, 1.004}}) {
    const auto place = [](double s, double t) { return Vector3{length * s, 0.0, height * (t - 0.5)}; };
    ShellBody body = ShellBody::grid(along, up, place);
    body.hold([](const Vector3&) { return true; }, {1, 3, 5});  // all stays in the plane
    body.hold([](const Vector3& p) { return p[0] < 1e-9; }, {0, 4});
    body.held.insert(6 * body.nearest({0.0, 0.0, -0.5 * height}) + 2);
    body.form(wall, testing_support::isotropicStiffness(modulus, 0.4));
    const double inertia = wall * height * height * height / 12.0, step = height / up;
    for (std::size_t j = 0; j < up; ++j) {  // the traction wall x z / inertia, linear between two nodes
      const std::size_t low = along * (up + 1) + j;
      const double zLow = body.node[low][2], zHigh = body.node[low + 1][2];
      body.force[6 * low] += wall * step * (2.0 * zLow + zHigh) / 6.0 / inertia;
      body.force[6 * (low + 1)] += wall * step * (zLow + 2.0 * zHigh) / 6.0 / inertia;
    }
    const double found = body.solve()[6 * along * (up + 1) + 2];
    EXPECT_NEAR(found / (-length * length / (2.0 * modulus * inertia)), expected, 0.01 * expected) << along;
  }
}

}  // namespace
}  // namespace keld
