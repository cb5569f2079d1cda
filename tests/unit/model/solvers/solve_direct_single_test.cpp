// The direct solver with a factor in single precision: its answers against those in double, and where double
// takes over.
#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <cmath>

#include "input/process_record.h"
#include "model/solve_stages.h"
#include "model/solvers/solve_direct.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "support/model_test.h"

namespace keld {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using namespace testing_support;

/// A second plate beside the first, with no node of it.
TestMesh twoPlates() {
  TestMesh mesh = plateMesh(12, 8, 6.0, 4.0, 0.2);
  const TestMesh second = moved(mesh, skewRotation(), {9.0, 1.0, 2.0});
  const auto first = static_cast<int>(mesh.node.size());
  mesh.node.insert(mesh.node.end(), second.node.begin(), second.node.end());
  for (const auto& [a, b, c] : second.triangle) mesh.triangle.push_back({a + first, b + first, c + first});
  return mesh;
}

/// A strip of cells of 100:1.
TestMesh needles() {
  TestMesh mesh = plateMesh(4, 400, 10.0, 10.0);
  mesh.thickness = 2e-3;
  return mesh;
}

struct Part {
  const char* name;
  TestMesh (*mesh)();
  int wallModel;
  bool inSingle;  // whether that suffices
};
void PrintTo(const Part& part, std::ostream* out) { *out << part.name; }

class SingleFactorOfPart : public ModelTest, public testing::WithParamInterface<Part> {
 protected:
  void SetUp() override {
    ModelTest::SetUp();
    loadModel(moved(GetParam().mesh(), skewRotation(), {3.0, -1.0, 2.0}));
    processRecord.wallModel = GetParam().wallModel;
    setStress(2e7, -1e7);
    runModelStages();
    patternSearch();
  }

  struct Answers {
    Column<double> inMold, total;
    double worstResidual;
    int steps;
    bool inSingle;
  };
  static Answers answersIn(FactorPrecision precision) {
    assemblePass(1, 2);
    DirectSolver solver(systemOfPass, rowBlocks(freedoms, wedgeNumbering.nodeMate), INT_MAX, ".", precision);
    Answers a{Column<double>(systemOfPass.rowLoad.rows()), {}, 0.0, 0, false};
    a.total = a.inMold;
    a.worstResidual = solver.solve(a.inMold);
    a.steps = solver.steps();
    assembleLoad(2, 2);
    a.worstResidual = std::max(a.worstResidual, solver.solve(a.total));
    a.inSingle = solver.inSingle();
    return a;
  }
};

double apart(const Column<double>& found, const Column<double>& expected) {
  double size = 0.0, difference = 0.0;
  for (int i = 1; i <= expected.rows(); ++i) {
    size = std::max(size, std::abs(expected[i]));
    difference = std::max(difference, std::abs(found[i] - expected[i]));
  }
  return difference / size;
}

TEST_P(SingleFactorOfPart, GivesTheAnswersOfDoubleOrLeavesThePartToIt) {
  const Answers expected = answersIn(FactorPrecision::inDouble);
  testing::internal::CaptureStdout();

  const Answers found = answersIn(FactorPrecision::inSingle);

  const std::string said = testing::internal::GetCapturedStdout();
  EXPECT_EQ(found.inSingle, GetParam().inSingle) << said;
  EXPECT_EQ(occurrences(said, "one in double precision takes its place"), GetParam().inSingle ? 0 : 1);
  EXPECT_LE(found.worstResidual, 1e-12);
  EXPECT_EQ(found.steps > 1, GetParam().inSingle);
  EXPECT_LE(found.steps, 10);
  EXPECT_LT(apart(found.inMold, expected.inMold), 1e-10);
  EXPECT_LT(apart(found.total, expected.total), 1e-10);
}

INSTANTIATE_TEST_SUITE_P(
    Parts, SingleFactorOfPart,
    testing::Values(Part{"Wedges", [] { return ribbedMesh(24, 16, 6); }, wedge_walls, true},
                    Part{"Facets", [] { return ribbedMesh(24, 16, 6); }, facet_walls, true},
                    Part{"TwoPieces", twoPlates, wedge_walls, true},
                    Part{"TwoPiecesOfFacets", twoPlates, facet_walls, true},
                    Part{"Needles", needles, wedge_walls, false}),
    [](const auto& part) { return std::string(part.param.name); });

/// tridiag(-1, 2 + shift, -1) of n rows
CompressedSystem chain(int n, double shift) {
  CompressedSystem system;
  system.rowStart = {1};
  const auto add = [&](int column, double value) {
    system.columnIndex.push_back(column);
    system.matrixValue.push_back(value);
  };
  for (int row = 1; row <= n; ++row) {
    add(row, 2.0 + shift);
    if (row > 1) add(row - 1, -1.0);
    if (row < n) add(row + 1, -1.0);
    system.rowStart.push_back(system.columnIndex.rows() + 1);
  }
  system.rowLoad.assign(n, 1.0);
  return system;
}

Column<int> blocksOfFifty(const CompressedSystem& system) {
  Column<int> block(system.rowLoad.rows());
  for (int row = 1; row <= block.rows(); ++row) block[row] = (row + 49) / 50;
  return block;
}

class SingleBySize : public ModelTest, public testing::WithParamInterface<int> {};

TEST_P(SingleBySize, BeginsAtItsLimit) {
  CompressedSystem system = chain(GetParam(), 0.5);
  Column<double> found(system.rowLoad.rows());

  DirectSolver solver(system, blocksOfFifty(system), INT_MAX, ".");

  EXPECT_EQ(solver.inSingle(), GetParam() >= 500000);
  EXPECT_LE(solver.solve(found), 1e-12);
  EXPECT_NEAR(found[found.rows() / 2], 2.0, 1e-10);  // far from the ends u is constant: 0.5 u = 1
}
INSTANTIATE_TEST_SUITE_P(Sizes, SingleBySize, testing::Values(499999, 500000));

// A factor that has grown stale stands for one that is too coarse for a further load alone.
TEST_F(ModelTest, SinglePrecisionGivesWayInAFurtherPassToo) {
  CompressedSystem system = chain(2000, 0.5);
  Column<double> found(system.rowLoad.rows());
  DirectSolver solver(system, blocksOfFifty(system), INT_MAX, ".", FactorPrecision::inSingle);
  solver.solve(found);
  ASSERT_TRUE(solver.inSingle());
  for (int row = 1; row <= 2000; ++row) system.matrixValue[system.rowStart[row]] += 1000.0 * (row % 50);
  testing::internal::CaptureStdout();

  const double residual = solver.solve(found);

  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              AllOf(HasSubstr("leaves a relative residual of"), HasSubstr("in step 10:")));
  EXPECT_FALSE(solver.inSingle());
  EXPECT_LE(residual, 1e-12);
  EXPECT_EQ(solver.steps(), 1);
}

// Two chains, one of them held by nothing: only its own load is balanced. Single precision can't tell; double
// must end the run.
TEST_F(ModelTest, SinglePrecisionPassesNoLoosePiece) {
  CompressedSystem system = chain(200, 0.0);
  const auto entry = [&](int row, int column) -> double& {
    int p = system.rowStart[row];
    while (system.columnIndex[p] != column) ++p;
    return system.matrixValue[p];
  };
  entry(101, 100) = entry(100, 101) = 0.0;
  entry(101, 101) = entry(200, 200) = 1.0;
  for (int row = 101; row <= 200; ++row) system.rowLoad[row] = row <= 150 ? 1.0 : -1.0;
  Column<double> found(system.rowLoad.rows());

  const std::string console = failureOf([&] {
    DirectSolver solver(system, blocksOfFifty(system), INT_MAX, ".", FactorPrecision::inSingle);
    solver.solve(found);
  });

  EXPECT_THAT(console, HasSubstr("one in double precision takes its place"));
  EXPECT_THAT(console, testing::AnyOf(HasSubstr("singular"), HasSubstr("negative pivot")));
}

}  // namespace
}  // namespace keld
