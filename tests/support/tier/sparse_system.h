// Sparse systems as a caller of TIER holds them, read from text or made, and level 1 of a hierarchy over
// them. Used by the tests of set-up and solution.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "tier/store/hierarchy.h"

namespace testing_support {

/// Where what is counted from 1 stands in a vector.
constexpr std::size_t position(int number) { return static_cast<std::size_t>(number - 1); }

/// 1-based compressed rows in 0-based vectors, diagonal first.
struct sparse_system {
  int n = 0, nsys = 1;
  std::vector<int> ia{1}, ja, iu, ip;
  std::vector<double> a, f, u;

  /// Appends a row: its diagonal, then the others in the order given.
  void add_row(double diagonal, const std::vector<std::pair<int, double>>& others);

  double entry(int i, int j) const;  // sum of the stored entries (i, j)
};

/// "rows entries functions", then a line a row: function, point, right-hand side, number of entries and pairs
/// of column and value, diagonal first.
sparse_system read_system(const std::string& path);

/// Star [north west centre east south] on a grid of m x m with zero boundary values.
sparse_system five_point(int m, double west_east = -1.0, double north_south = -1.0);

/// The same operator, without boundary: row sums of zero.
sparse_system five_point_neumann(int m);

/// nsys copies of a scalar system, point by point, with a small coupling across functions.
sparse_system coupled(const sparse_system& scalar, int nsys, double coupling);

/// Symmetric pattern and values, about `degree` neighbours a row,
/// a share of them positive; dominant diagonal.
sparse_system random_system(int n, int degree, double positive_share, unsigned seed);

/// Level 1 as views of the system; points and functions where the system has them.
void set_first_level(tier::hierarchy& h, sparse_system& s);

}  // namespace testing_support
