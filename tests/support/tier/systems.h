// Generated test systems beside the five-point stars: three dimensions, convection, turned anisotropy,
// elasticity, random rows. Used by the tests of TIER and the benchmarks.
#pragma once

#include "support/tier/sparse_system.h"

namespace testing_support {

/// tridiag(-1, 2, -1) of n rows.
sparse_system line(int n);

/// Seven-point star on m x m x m with zero boundary values.
sparse_system seven_point(int m);

/// -laplace u + velocity u_x, upwind, on m x m.
sparse_system convection_diffusion(int m, double velocity);

/// Nine-point discretisation of diffusion 1 along `degrees` and epsilon across, on m x m.
sparse_system turned_anisotropy(int m, double degrees, double epsilon);

/// Plane stress of a strip of mx x my bilinear squares, E = 1, nu = 0.3, clamped at the left, pulled down at
/// the right end; two functions, point by point.
sparse_system plane_stress(int mx, int my);

/// Random columns and values in (-1, 1), about `per_row` entries, diagonal around `diagonal`; not symmetric.
sparse_system random_rows(int n, int per_row, double diagonal, unsigned seed);

/// Two grids of m x m, numbered one after the other, tied point by point as the faces of a wall are.
sparse_system two_faces(int m);

/// B^T B + 0.1 I, B with about `per_row` random entries a row: long rows without order.
sparse_system normal_equations(int n, int per_row, unsigned seed);

/// The same system with its points, or its rows where it has none, in random order.
sparse_system renumbered(const sparse_system& s, unsigned seed);

/// f = A x with x_i = sin(i).
void set_known_solution(sparse_system& s);

/// f - A u, formed here.
std::vector<double> residual_of(const sparse_system& s, const std::vector<double>& u);
double euclidean(const std::vector<double>& x);

}  // namespace testing_support
