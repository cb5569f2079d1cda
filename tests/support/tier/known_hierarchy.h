// Hierarchies that tests put together themselves, from files of an independent computation or by hand, with
// the controls and the storage that the solution phase needs.
#pragma once

#include <string>
#include <vector>

#include "support/tier/sparse_system.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace testing_support {

/// Teams of the kernels from now on.
void use_threads(int team);

/// A system, its levels, and the controls of the analysis: V-cycle, flexible GMRES(30), steps C then F,
/// sparse Gauss on the coarsest level, eps 1e-8.
struct test_run {
  explicit test_run(sparse_system fine_system);
  ~test_run();
  test_run(const test_run&) = delete;
  test_run& operator=(const test_run&) = delete;

  /// Appends a level: the operator by rows, and the interpolation of the level above with its C/F split
  /// (coarse variables take their numbers in order).
  void add_level(const sparse_system& coarse, const std::vector<int>& coarse_of,
                 const std::vector<std::vector<std::pair<int, double>>>& interpolation);

  /// Appends the Galerkin level of every second variable with linear weights, for chains of odd length.
  void coarsen_line();

  int solve();  // solve_data and tier_solve; the error, else the last warning, else 0

  /// |f - A u| / |f| in the Euclidean norm, computed here.
  double relative_residual() const;

  sparse_system system;
  tier::hierarchy h;
  tier::controls c;
  tier::run_results results;
  std::vector<double> steps;  // residual norm by step, 0 first, from the library's hook
};

/// All levels of a folder with system.txt, level<k>.matrix, level<k>.interp and level<k>.state.
void read_levels(const std::string& folder, test_run& run);

/// "RES it value" lines of expected.txt.
std::vector<double> read_expected_residuals(const std::string& folder);

}  // namespace testing_support
