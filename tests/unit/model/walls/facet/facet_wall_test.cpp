// Facets through the stages of the analysis: closed forms, the wedge where it is exact, quadratic bricks,
// place and numbers that mustn't matter, and what can't be formed.
#include "model/walls/facet/facet_wall.h"

#include <gmock/gmock.h>
#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "input/mesh_tables.h"
#include "input/polymer.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "support/brick_cases.h"
#include "support/model_test.h"
#include "support/shell_body.h"
#include "support/wall_parts.h"

namespace keld {
namespace {

using testing_support::Deformation;
using testing_support::deformed;
using testing_support::joinedSheets;
using testing_support::ModelTest;
using testing_support::TestMesh;

constexpr double cooling = 100.0, expansion = 7e-5;  // K and 1/K of loadModel

double longest(const Column<Vector3>& vectors) {
  double result = 0.0;
  for (const Vector3& v : vectors) result = std::max(result, norm(v));
  return result;
}

/// Largest difference of two displacement fields beside a rigid motion, over the longest displacement.
double difference(const Column<Vector3>& place, Column<Vector3> a, const Column<Vector3>& b) {
  const double length = longest(b);
  for (int n = 1; n <= a.rows(); ++n) a[n] = a[n] - b[n];
  return longest(testing_support::withoutRigidMotion(place, a)) / length;
}

struct FlatPart {
  const char* name;
  TestMesh mesh;
};

TestMesh lMesh() {
  return joinedSheets({{{0, -1, 0}, {3, 0, 0}, {0, 2, 0}, 4, 3}, {{0, -1, 0}, {0, 2, 0}, {0, 0, 3}, 3, 4}})
      .mesh;
}
TestMesh tMesh() {
  return joinedSheets({{{-3, -1, 0}, {3, 0, 0}, {0, 2, 0}, 4, 3},
                       {{0, -1, 0}, {3, 0, 0}, {0, 2, 0}, 4, 3},
                       {{0, -1, 0}, {0, 2, 0}, {0, 0, 2}, 3, 2}})
      .mesh;
}
/// An open box of 4 x 3 x 2 cm, cells a centimetre.
TestMesh boxMesh(int cells) {
  const int x = 4 * cells, y = 3 * cells, z = 2 * cells;
  return joinedSheets({{{0, 0, 0}, {4, 0, 0}, {0, 3, 0}, x, y},
                       {{0, 0, 0}, {4, 0, 0}, {0, 0, 2}, x, z},
                       {{0, 3, 0}, {4, 0, 0}, {0, 0, 2}, x, z},
                       {{0, 0, 0}, {0, 3, 0}, {0, 0, 2}, y, z},
                       {{4, 0, 0}, {0, 3, 0}, {0, 0, 2}, y, z}})
      .mesh;
}
const FlatPart flatParts[] = {{"Plate", testing_support::plateMesh(6, 4, 3.0, 2.0, 0.3)},
                              {"L", lMesh()},
                              {"T", tMesh()},
                              {"Box", boxMesh(1)},
                              {"Ribs", testing_support::ribbedMesh(9, 6, 3)}};

/// Turns over every third triangle.
TestMesh turnedOver(TestMesh mesh) {
  for (std::size_t t = 0; t < mesh.triangle.size(); t += 3)
    std::swap(mesh.triangle[t][1], mesh.triangle[t][2]);
  return mesh;
}

class FacetPart : public ModelTest, public testing::WithParamInterface<FlatPart> {};

void setUnevenWalls() {
  for (int e = 1; e <= elementTable.elementCount; ++e)
    elementTable.thickness[e] = 0.1 + 0.05 * static_cast<double>(e % 4);
}

/// Difference from the part as it was, smaller by what it cools.
double differenceFromScale(const Deformation& d) {
  Column<Vector3> scaled(d.place.rows());
  for (int n = 1; n <= scaled.rows(); ++n) scaled[n] = -expansion * cooling * d.place[n];
  return difference(d.place, d.total, scaled);
}

TEST_P(FacetPart, ShrinksToScaleWhateverTheWallsAndTheNormals) {
  EXPECT_LT(differenceFromScale(deformed(turnedOver(GetParam().mesh), facet_walls, setUnevenWalls)), 1e-9);
}

/// Gradient, stress and fibres that are not along the edges; `rotation` turns the directions with the part.
void setUnevenFields(const std::array<Vector3, 3>& rotation, bool overturned) {
  const auto turned = [&](const Vector3& v) {
    return Vector3{dot(rotation[0], v), dot(rotation[1], v), dot(rotation[2], v)};
  };
  testing_support::setStress(5e7, 2e7);
  polymerRecord[1].modulus.value[1] = 6e10;
  polymerRecord[1].thermalExpansion.value[1] = 2e-5;
  const auto fibre = testing_support::skewRotation();
  for (int e = 1; e <= elementTable.elementCount; ++e) {
    ResidualStressField& field = residualStressField;
    field.direction1[e] = turned(fibre[0]);
    field.direction2[e] = turned(fibre[1]);
    field.direction3[e] = turned(fibre[2]);
    field.orientationValue[e] = 0.8;
    const bool swapped = overturned && e % 3 == 1;
    elementTemperatureField.sideTemperature1[e] = swapped ? 380.0 : 400.0;
    elementTemperatureField.sideTemperature2[e] = swapped ? 400.0 : 380.0;
  }
}

TEST_P(FacetPart, HasOneShapeWhateverHoldsItWhereverItLiesAndHoweverItIsNumbered) {
  const std::array<Vector3, 3> asItIs = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  const auto rotation = testing_support::skewRotation();
  const TestMesh& mesh = GetParam().mesh;
  const Deformation first = deformed(mesh, facet_walls, [&] { setUnevenFields(asItIs, false); });

  const Deformation held = deformed(mesh, facet_walls, [&] {
    setUnevenFields(asItIs, false);
    processRecord.bcNode = {0, 1, 2, static_cast<int>(mesh.node.size())};
  });
  EXPECT_LT(difference(first.place, held.total, first.total), 1e-9);
  EXPECT_LT(difference(first.place, held.inMold, first.inMold), 1e-9);
  for (int n = 1; n <= first.sinkMark.rows(); ++n)
    EXPECT_NEAR(held.sinkMark[n], first.sinkMark[n], 1e-9 * 0.2) << n;

  const Deformation overturned =
      deformed(turnedOver(mesh), facet_walls, [&] { setUnevenFields(asItIs, true); });
  EXPECT_LT(difference(first.place, overturned.total, first.total), 1e-9);

  TestMesh shuffled = mesh;
  std::shuffle(shuffled.triangle.begin(), shuffled.triangle.end(), std::mt19937(5));
  const Deformation renumbered = deformed(shuffled, facet_walls, [&] { setUnevenFields(asItIs, false); });
  EXPECT_LT(difference(first.place, renumbered.total, first.total), 1e-9);

  const Deformation moved = deformed(testing_support::moved(mesh, rotation, {3, -2, 5}), facet_walls,
                                     [&] { setUnevenFields(rotation, false); });
  Column<Vector3> turnedBack(moved.total.rows());
  for (int n = 1; n <= turnedBack.rows(); ++n) {
    const Vector3& u = moved.total[n];
    turnedBack[n] = u[0] * rotation[0] + u[1] * rotation[1] + u[2] * rotation[2];
  }
  EXPECT_LT(difference(first.place, turnedBack, first.total), 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Parts, FacetPart, testing::ValuesIn(flatParts),
                         [](const auto& part) { return std::string(part.param.name); });

/// Meshes of more nodes than the coarsest level of multigrid may have.
class FacetMultigrid : public ModelTest, public testing::WithParamInterface<FlatPart> {};

TEST_P(FacetMultigrid, ShrinksToScale) {
  const TestMesh mesh = turnedOver(GetParam().mesh);
  testing::internal::CaptureStdout();
  const Deformation d = deformed(mesh, facet_walls, [] {
    setUnevenWalls();
    processRecord.solverRoad = aggregation_road;
  });
  const std::string console = testing::internal::GetCapturedStdout();

  EXPECT_THAT(console, testing::HasSubstr("Solver= TIER by aggregation"));
  EXPECT_LT(differenceFromScale(d), 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Parts, FacetMultigrid,
                         testing::Values(FlatPart{"Plate", testing_support::plateMesh(40, 30, 6.0, 4.5, 0.3)},
                                         FlatPart{"Box", boxMesh(5)},
                                         FlatPart{"Ribs", testing_support::ribbedMesh(36, 24, 6)}),
                         [](const auto& part) { return std::string(part.param.name); });

class FacetWallTest : public ModelTest {};

// Uniform stress and shrinkage leave a flat plate flat: there the wedge is exact too, its sink mark included.
TEST_F(FacetWallTest, IsEqualToTheWedgeOnAFlatPlateOfFibresUnderStress) {
  const auto fields = [] {
    testing_support::setStress(12e7, 7e7);
    for (int kind : {1, 2}) {
      PolymerRecord& polymer = polymerRecord[kind];
      polymer.modulus.value[1] = 6e10;
      polymer.modulus.value[2] = 3e10;
      polymer.poisson.value[2] = 0.4;
      polymer.thermalExpansion.value[1] = 2e-5;
    }
    for (auto& value : residualStressField.orientationValue) value = 0.7;
    for (auto& d : residualStressField.direction1) d = {0.6, 0.8, 0.0};
    for (auto& d : residualStressField.direction2) d = {-0.8, 0.6, 0.0};
  };
  const TestMesh mesh = testing_support::plateMesh(8, 5, 4.0, 2.5, 0.3);
  const Deformation wedge = deformed(mesh, wedge_walls, fields), facet = deformed(mesh, facet_walls, fields);

  EXPECT_LT(difference(wedge.place, facet.total, wedge.total), 1e-9);
  EXPECT_LT(difference(wedge.place, facet.inMold, wedge.inMold), 1e-9);
  const double deepest = *std::max_element(wedge.sinkMark.begin(), wedge.sinkMark.end());
  EXPECT_GT(deepest, 0.0);
  for (int n = 1; n <= wedge.sinkMark.rows(); ++n)
    EXPECT_NEAR(facet.sinkMark[n], wedge.sinkMark[n], 1e-9 * deepest) << n;
}

// Free of stress: curvature expansion x 20 K / wall in every direction, bowed towards the hotter side.
TEST_F(FacetWallTest, APlateHotterAboveBecomesABowlOfTheExactCurvature) {
  const TestMesh mesh = testing_support::plateMesh(7, 5, 6.0, 4.0, 0.35);
  const Deformation d = deformed(mesh, facet_walls, [] {
    for (double& t : elementTemperatureField.sideTemperature2) t = 420.0;
  });
  const double curvature = expansion * 20.0 / 0.2;
  Column<Vector3> bowl(d.place.rows());
  for (int n = 1; n <= bowl.rows(); ++n) {
    const auto& [x, y, z] = d.place[n];
    bowl[n] = {-expansion * 110.0 * x, -expansion * 110.0 * y, 0.5 * curvature * (x * x + y * y)};
  }
  EXPECT_LT(difference(d.place, d.total, bowl), 1e-9);
}

// Strains of -3e-3 along the walls and -8e-3 across: a right angle closes
// by pi / 2 (e_t - e_r), free of stress.
TEST_F(FacetWallTest, ARightAngleSpringsInByTheDifferenceOfItsShrinkages) {
  const TestMesh mesh = lMesh();
  const Deformation d = deformed(mesh, facet_walls, [] {
    polymerRecord[1].thermalExpansion.value[1] = -2e-5;
    polymerRecord[1].thermalExpansion.value[2] = 8e-5;
    for (int e = 1; e <= elementTable.elementCount; ++e) {
      residualStressField.orientationValue[e] = 0.5;
      const bool upright = nodeTable.z[elementTable.node1[e]] + nodeTable.z[elementTable.node3[e]] > 0.0;
      if (!upright) continue;
      residualStressField.direction1[e] = {0, 0, 1};
      residualStressField.direction3[e] = {-1, 0, 0};
    }
  });
  const double lifted = (d.at({3, 0, 0})[2] - d.at({1.5, 0, 0})[2]) / 1.5;
  const double leaned = (d.at({0, 0, 3})[0] - d.at({0, 0, 1.5})[0]) / 1.5;
  EXPECT_NEAR(lifted + leaned, 0.5 * std::numbers::pi * 5e-3, 1e-9);
}

class Bricks : public ModelTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(Bricks, AreMetByFacetsOfSevenWalls) {
  const testing_support::BrickAnswer& brick = testing_support::brickAnswers()[GetParam()];
  const std::vector<double> found = testing_support::measured(brick.which, facet_walls, 14.0);
  EXPECT_LT(testing_support::largestError(found, brick.answer), 1.1 * brick.allowed) << brick.name;
}

INSTANTIATE_TEST_SUITE_P(Cases, Bricks, testing::Range(std::size_t{0}, std::size_t{5}));

// The parts of the closed forms: only the six rigid motions are free of force (the rest is positive definite
// once six freedoms are held, or the direct solver would refuse it).
TEST_F(FacetWallTest, PartsHaveTheSixRigidMotionsAndNoOther) {
  for (const FlatPart& part : flatParts) {
    testing_support::ShellBody body;
    body.node = part.mesh.node;
    for (const auto& t : part.mesh.triangle) body.addTriangle(t[0] - 1, t[1] - 1, t[2] - 1);
    body.form(0.2, testing_support::isotropicStiffness(2e10, 0.4));
    for (std::size_t motion = 0; motion < 6; ++motion) {
      Vector3 shift{}, spin{};
      (motion < 3 ? shift : spin)[motion % 3] = 1.0;
      std::vector<double> q;
      for (const Vector3& p : body.node) {
        const Vector3 u = shift + cross(spin, p);
        q.insert(q.end(), u.begin(), u.end());
        q.insert(q.end(), spin.begin(), spin.end());
      }
      EXPECT_LT(body.forceOf(q), 1e-12) << part.name << " motion " << motion;
    }
    body.held = {0, 1, 2, 3, 4, 5};
    EXPECT_EQ(body.solve().size(), 6 * body.node.size()) << part.name;
  }
}

// A strip with a moment at its ends bends with M / (E I), whatever Poisson's ratio: its long sides are free.
TEST_F(FacetWallTest, AStripUnderEndMomentsHasTheCurvatureOfABeam) {
  constexpr std::size_t along = 9, across = 2;
  auto strip = testing_support::ShellBody::grid(along, across, [](double s, double t) {
    return Vector3{10.0 * s, t, 0.0};
  });
  strip.form(0.2, testing_support::isotropicStiffness(2e10, 0.4));
  strip.held = {0, 1, 2, 3, 4, 5};
  for (std::size_t j = 0; j <= across; ++j) {
    const double share = (j == 0 || j == across ? 0.5 : 1.0) / across;
    strip.force[6 * j + 4] = -share;
    strip.force[6 * (along * (across + 1) + j) + 4] = share;
  }
  const std::vector<double> u = strip.solve();
  const double inertia = 0.2 * 0.2 * 0.2 / 12.0;
  const std::size_t end = 6 * along * (across + 1);
  EXPECT_NEAR(-u[end + 2] * 2.0 / 100.0 / (1.0 / (2e10 * inertia)), 1.0, 1e-6);
}

#ifdef _OPENMP
TEST_F(FacetWallTest, AssemblyHasTheSameBitsOnAnyNumberOfThreads) {
  const auto assembled = [](int threads) {
    omp_set_num_threads(threads);
    testing_support::loadModel(testing_support::ribbedMesh(20, 12, 4));
    processRecord.wallModel = facet_walls;
    setUnevenFields({{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, false);
    testing_support::runModelStages();
    patternSearch();
    assemblePass(2, 2);
    return std::pair{systemOfPass.matrixValue, systemOfPass.rowLoad};
  };
  const auto one = assembled(1);
  for (int threads : {2, 3, 8}) EXPECT_EQ(assembled(threads), one) << threads;
  assembleLoad(2, 2);
  EXPECT_EQ(systemOfPass.rowLoad, one.second) << "the load alone";
}
#endif

// Two plates that share one node: a hinge of wedges, which are two pieces; with rotations the corner holds.
TEST_F(FacetWallTest, OneCommonNodeJoins) {
  const TestMesh mesh =
      joinedSheets({{{0, 0, 0}, {2, 0, 0}, {0, 1, 0}, 4, 2}, {{2, 1, 0}, {2, 0, 0}, {0, 1, 0}, 4, 2}}).mesh;
  for (const int model : {wedge_walls, facet_walls}) {
    testing::internal::CaptureStdout();
    deformed(mesh, model, [] {});
    const bool inPieces =
        testing::internal::GetCapturedStdout().find("pieces that don't hang together") != std::string::npos;
    EXPECT_EQ(inPieces, model == wedge_walls);
  }
}

TEST_F(FacetWallTest, RefusesWhatItCannotForm) {
  const TestMesh mesh = testing_support::plateMesh(3, 2, 3.0, 2.0);
  const auto failure = [&](const std::function<void()>& damage) {
    return failureOf([&] { deformed(mesh, facet_walls, damage); });
  };
  EXPECT_THAT(failure([] { ModelKind = 1; }),
              testing::HasSubstr("which a closed skin (Shell model) can't have"));
  ModelKind = 0;
  EXPECT_THAT(
      failure([] {
        polymerRecord[1].poisson.value[1] = 1.1;
        polymerRecord[1].poisson.value[2] = 1.5;
      }),
      testing::HasSubstr("Part element 1 can't be formed as a facet: with no stress across the wall"));
  EXPECT_THAT(failure([] { elementTable.thickness.assign(elementTable.elementCount, 0.0); }),
              testing::HasSubstr("has a positive volume"));
  EXPECT_THAT(failure([] {
                for (int e = 1; e <= elementTable.elementCount; ++e)
                  if (elementTable.node1[e] == 1 || elementTable.node2[e] == 1 || elementTable.node3[e] == 1)
                    elementTable.thickness[e] = 0.0;
              }),
              testing::HasSubstr("belongs to no triangle with area and thickness"));
}

TEST_F(FacetWallTest, LeavesOutAndReportsASingleTriangleWithoutThickness) {
  TestMesh mesh = testing_support::plateMesh(4, 4, 2.0, 2.0);
  testing::internal::CaptureStdout();
  const Deformation d = deformed(mesh, facet_walls, [] { elementTable.thickness[12] = 0.0; });
  const std::string console = testing::internal::GetCapturedStdout();

  EXPECT_THAT(console, testing::HasSubstr("D5016"));
  EXPECT_LT(differenceFromScale(d), 1e-9) << "a hole shrinks to scale";
}

}  // namespace
}  // namespace keld
