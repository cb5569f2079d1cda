// Scalar model problems on regular grids, up to a million unknowns, for races and convergence tables.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

/// Where what a system counts from 1 (rows, columns, entries) stands in a vector.
constexpr std::size_t position(int number) { return static_cast<std::size_t>(number - 1); }

/// A system in compressed rows with base 1, diagonal first.
struct linear_system {
  std::string name;
  int n = 0;
  std::vector<int> ia{1}, ja;
  std::vector<double> a, f;
  int functions = 1;
  std::vector<int> iu, ip;  // function and point of each row, where there is more than one function
};

linear_system poisson_5_point(int m);                                   // m x m
linear_system poisson_9_point(int m);                                   // m x m, -1 to all eight neighbours
linear_system poisson_7_point(int m);                                   // m x m x m
linear_system anisotropic(int m, double epsilon);                       // -epsilon u_xx - u_yy, grid-aligned
linear_system turned_anisotropic(int m, double epsilon, double angle);  // the same turned, 9 points
linear_system jumping_coefficients(int m, double jump);  // 5 points, blocks of m/8 with 1 and `jump`

/// Euclidean norm of f - A u over that of f.
double relative_residual(const linear_system& s, const std::vector<double>& u);

}  // namespace bench
