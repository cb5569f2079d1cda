// The direct solver on systems with a chosen solution: in memory, over the disk, and where it must refuse.
#include "model/solvers/solve_direct.h"

#include <gmock/gmock.h>

#include <climits>
#include <cmath>
#include <filesystem>
#include <functional>
#include <numeric>

#include "support/faults.h"

namespace keld {
namespace {

using testing_support::ScratchJob;

/// Full rows, diagonal first, as the assembly leaves them.
CompressedSystem systemOf(const std::vector<std::vector<std::pair<int, double>>>& rows) {
  CompressedSystem system;
  system.rowStart = {1};
  for (std::size_t row = 1; row < rows.size(); ++row) {
    for (const auto& [column, value] : rows[row]) {
      system.columnIndex.push_back(column);
      system.matrixValue.push_back(value);
    }
    system.rowStart.push_back(system.columnIndex.rows() + 1);
  }
  system.rowLoad.assign(system.rowStart.rows() - 1, 0.0);
  return system;
}

struct GridSystem {
  CompressedSystem system;
  Column<int> rowBlock;
};

/// Points of an m x m grid with three unknowns each, all coupled with those of the four neighbours:
/// -1 straight, -0.25 across. The diagonal exceeds the sum of the others by `shift`.
GridSystem gridSystem(int m, double shift) {
  std::vector<std::vector<std::pair<int, double>>> rows(1);
  GridSystem grid;
  for (int point = 0; point < m * m; ++point) {
    const int i = point % m, j = point / m;
    for (int direction = 1; direction <= 3; ++direction) {
      std::vector<std::pair<int, double>> row{{3 * point + direction, shift}};
      const auto couple = [&](int neighbour) {
        for (int d = 1; d <= 3; ++d) {
          const double a = d == direction ? -1.0 : -0.25;
          row.emplace_back(3 * neighbour + d, a);
          row[0].second -= a;
        }
      };
      if (i > 0) couple(point - 1);
      if (i < m - 1) couple(point + 1);
      if (j > 0) couple(point - m);
      if (j < m - 1) couple(point + m);
      rows.push_back(row);
      grid.rowBlock.push_back(point + 1);
    }
  }
  grid.system = systemOf(rows);
  return grid;
}

Column<double> product(const CompressedSystem& system, const Column<double>& u) {
  Column<double> f(u.rows(), 0.0);
  for (int row = 1; row <= u.rows(); ++row) {
    for (int p = system.rowStart[row]; p < system.rowStart[row + 1]; ++p) {
      f[row] += system.matrixValue[p] * u[system.columnIndex[p]];
    }
  }
  return f;
}

struct Way {
  const char* name;
  FactorPrecision precision;
  int memoryLimit;  // MB; the library asks 7 for the grid below, and 3 on the way over the disk; in single
                    // precision 5 and 2
  bool outOfCore, inSingle;
};
void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }

class DirectSolverWay : public testing::TestWithParam<Way> {};

TEST_P(DirectSolverWay, FindsTheChosenSolutionsOfBothPasses) {
  const ScratchJob job, scratch;
  testing_support::startRun(job);
  GridSystem grid = gridSystem(60, 1e-3);
  const CompressedSystem full = grid.system;
  const int rows = grid.rowBlock.rows();
  Column<double> chosen(rows), found(rows);
  {
    DirectSolver solver(grid.system, grid.rowBlock, GetParam().memoryLimit, scratch.folder().string(),
                        GetParam().precision);

    EXPECT_EQ(solver.outOfCore(), GetParam().outOfCore);
    EXPECT_EQ(solver.inSingle(), GetParam().inSingle);
    EXPECT_EQ(!std::filesystem::is_empty(scratch.folder()), GetParam().outOfCore);
    for (double pass : {1.0, 2.0}) {
      for (int i = 1; i <= rows; ++i) chosen[i] = std::sin(pass * i);
      grid.system.rowLoad = product(full, chosen);
      EXPECT_LT(solver.solve(found), GetParam().inSingle ? 1e-12 : 1e-13);
      EXPECT_EQ(solver.steps() > 1, GetParam().inSingle);
      for (int i = 1; i <= rows; ++i) ASSERT_NEAR(found[i], chosen[i], 1e-9) << i;
    }
    grid.system.rowLoad.assign(rows, 0.0);
    EXPECT_EQ(solver.solve(found), 0.0);
  }
  EXPECT_TRUE(std::filesystem::is_empty(scratch.folder()));
  EXPECT_EQ(job.read(".WLG1").find("it goes to disk in '" + scratch.folder().string()) != std::string::npos,
            GetParam().outOfCore);
}

INSTANTIATE_TEST_SUITE_P(Ways, DirectSolverWay,
                         testing::Values(Way{"InMemory", FactorPrecision::bySize, 1000, false, false},
                                         Way{"OverTheDisk", FactorPrecision::inDouble, 5, true, false},
                                         Way{"Single", FactorPrecision::inSingle, 1000, false, true},
                                         Way{"ShortOfMemory", FactorPrecision::bySize, 5, false, true},
                                         Way{"SingleOverTheDisk", FactorPrecision::bySize, 3, true, true}),
                         [](const auto& way) { return std::string(way.param.name); });

TEST(DirectSolverFolder, IsThatOfTheEnvironmentElseOfTheJob) {
  ::unsetenv("MUMPS_OOC_TMPDIR");
  EXPECT_EQ(scratchFolder("/a b/job"), "/a b");
  EXPECT_EQ(scratchFolder("job"), ".");
  ::setenv("MUMPS_OOC_TMPDIR", "/elsewhere", 1);
  EXPECT_EQ(scratchFolder("/a b/job"), "/elsewhere");
}

TEST(DirectSolverLimit, IsNineTenthsOfTheMemoryAsFarAsAnIntegerGoes) {
  EXPECT_EQ(inCoreLimit(4'000'000'000), 3600);
  EXPECT_EQ(inCoreLimit(1'999'999), 1);
  EXPECT_EQ(inCoreLimit(UINT64_MAX), INT_MAX);  // unknown
}

struct Refusal {
  const char* name;
  std::function<CompressedSystem()> system;
  int memoryLimit;
  const char* folder;
  const char* words;
};

class DirectSolverRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(DirectSolverRefusal, EndsTheRunWithItsFigures) {
  const ScratchJob job;
  testing_support::startRun(job);
  CompressedSystem system = GetParam().system();
  Column<int> rowBlock(system.rowLoad.rows());
  std::iota(rowBlock.begin(), rowBlock.end(), 1);
  Column<double> found(system.rowLoad.rows());

  const std::string console = testing_support::faultOf([&] {
    DirectSolver solver(system, rowBlock, GetParam().memoryLimit, GetParam().folder);
    solver.solve(found);
  });

  EXPECT_THAT(console, testing::ContainsRegex(GetParam().words));
}

/// [[1, b], [c, d]] with the load (1.1, 0.3)
CompressedSystem twoByTwo(double b, double c, double d) {
  CompressedSystem system = systemOf({{}, {{1, 1.0}, {2, b}}, {{2, d}, {1, c}}});
  system.rowLoad = {1.1, 0.3};
  return system;
}

INSTANTIATE_TEST_SUITE_P(
    Faults, DirectSolverRefusal,
    testing::Values(Refusal{"Unsymmetric", [] { return twoByTwo(0.5, -0.5, 1.0); }, 1000, ".",
                            "isn't symmetric in row 2"},
                    Refusal{"Indefinite", [] { return twoByTwo(2.0, 2.0, 1.0); }, 1000, ".",
                            "isn't positive definite: 1 negative pivot"},
                    Refusal{"Singular", [] { return twoByTwo(1.0, 1.0, 1.0); }, 1000, ".",
                            "singular .INFOG.1.= -10"},
                    Refusal{"Loose", [] { return twoByTwo(1.0, 1.0, 1.0 + 0x1p-52); }, 1000, ".",
                            "grows by [1-9].[0-9]e.1[45]"},
                    Refusal{"Inaccurate", [] { return twoByTwo(1.0, 1.0, 1.0 + 0x1p-40); }, 1000, ".",
                            "relative residual is [0-9.]+e[-+0-9]+"},
                    Refusal{"NoMemory", [] { return gridSystem(60, 1e-3).system; }, 1, ".",
                            "on disk still [0-9]+ MB, and 1 MB"},
                    Refusal{"NoFolder", [] { return gridSystem(60, 1e-3).system; }, 3, "/nowhere/at/all",
                            "can't be written to disk.*INFOG.1.= -90"}),
    [](const auto& refusal) { return std::string(refusal.param.name); });

}  // namespace
}  // namespace keld
