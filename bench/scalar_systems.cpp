// Stencils and their assembly on regular grids with zero boundary values.
#include "scalar_systems.h"

#include <cmath>
#include <functional>
#include <random>
#include <utility>

namespace bench {

namespace {

/// Right-hand side of random numbers, so that all frequencies take part.
void fill_right_side(linear_system& s) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  s.f.resize(static_cast<std::size_t>(s.n));
  for (double& v : s.f) v = value(random);
}

using row_entries = std::vector<std::pair<int, double>>;

void add_row(linear_system& s, int row, double diagonal, const row_entries& others) {
  s.ja.push_back(row);
  s.a.push_back(diagonal);
  for (const auto& [column, value] : others) {
    s.ja.push_back(column);
    s.a.push_back(value);
  }
  s.ia.push_back(static_cast<int>(s.ja.size()) + 1);
}

/// Nine-point star, weight[1 + dy][1 + dx]; zero weights are not stored.
linear_system stencil_system(std::string name, int m, const double (&weight)[3][3]) {
  linear_system s;
  s.name = std::move(name);
  s.n = m * m;
  row_entries others;
  for (int y = 0; y < m; ++y)
    for (int x = 0; x < m; ++x) {
      others.clear();
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
          const bool inside = x + dx >= 0 && x + dx < m && y + dy >= 0 && y + dy < m;
          const double w = weight[1 + dy][1 + dx];
          if (inside && (dx != 0 || dy != 0) && w != 0.0) others.push_back({(y + dy) * m + x + dx + 1, w});
        }
      add_row(s, y * m + x + 1, weight[1][1], others);
    }
  fill_right_side(s);
  return s;
}

}  // namespace

linear_system poisson_5_point(int m) {
  return stencil_system("Poisson, 5 points", m, {{0, -1, 0}, {-1, 4, -1}, {0, -1, 0}});
}

linear_system poisson_9_point(int m) {
  return stencil_system("Poisson, 9 points", m, {{-1, -1, -1}, {-1, 8, -1}, {-1, -1, -1}});
}

linear_system anisotropic(int m, double epsilon) {
  return stencil_system("anisotropic, aligned", m,
                        {{0, -1, 0}, {-epsilon, 2 + 2 * epsilon, -epsilon}, {0, -1, 0}});
}

linear_system turned_anisotropic(int m, double epsilon, double angle) {
  // -(c^2 + e s^2) u_xx - (s^2 + e c^2) u_yy - 2 (1 - e) c s u_xy,
  // the mixed term on the falling diagonal pair.
  const double c = std::cos(angle), t = std::sin(angle);
  const double xx = c * c + epsilon * t * t, yy = t * t + epsilon * c * c, xy = (1 - epsilon) * c * t;
  return stencil_system("anisotropic, turned", m,
                        {{-xy, xy - yy, 0}, {xy - xx, 2 * (xx + yy - xy), xy - xx}, {0, xy - yy, -xy}});
}

linear_system poisson_7_point(int m) {
  linear_system s;
  s.name = "Poisson, 7 points";
  s.n = m * m * m;
  row_entries others;
  for (int z = 0; z < m; ++z)
    for (int y = 0; y < m; ++y)
      for (int x = 0; x < m; ++x) {
        const int row = (z * m + y) * m + x + 1;
        others.clear();
        if (z > 0) others.push_back({row - m * m, -1.0});
        if (y > 0) others.push_back({row - m, -1.0});
        if (x > 0) others.push_back({row - 1, -1.0});
        if (x < m - 1) others.push_back({row + 1, -1.0});
        if (y < m - 1) others.push_back({row + m, -1.0});
        if (z < m - 1) others.push_back({row + m * m, -1.0});
        add_row(s, row, 6.0, others);
      }
  fill_right_side(s);
  return s;
}

linear_system jumping_coefficients(int m, double jump) {
  linear_system s;
  s.name = "jumping coefficients";
  s.n = m * m;
  const int block = m / 8 > 0 ? m / 8 : 1;
  const auto coefficient = [&](int x, int y) { return (x / block + y / block) % 2 ? jump : 1.0; };
  const auto face = [&](int x, int y, int nx, int ny) {
    const double p = coefficient(x, y);
    if (nx < 0 || ny < 0 || nx >= m || ny >= m) return p;
    const double q = coefficient(nx, ny);
    return 2.0 * p * q / (p + q);  // harmonic mean across the face
  };
  row_entries others;
  for (int y = 0; y < m; ++y)
    for (int x = 0; x < m; ++x) {
      others.clear();
      double diagonal = 0.0;
      for (const auto& [dx, dy] : {std::pair{0, -1}, {-1, 0}, {1, 0}, {0, 1}}) {
        const double w = face(x, y, x + dx, y + dy);
        diagonal += w;
        if (x + dx >= 0 && x + dx < m && y + dy >= 0 && y + dy < m)
          others.push_back({(y + dy) * m + x + dx + 1, -w});
      }
      add_row(s, y * m + x + 1, diagonal, others);
    }
  fill_right_side(s);
  return s;
}

double relative_residual(const linear_system& s, const std::vector<double>& u) {
  double residual = 0.0, right = 0.0;
  for (std::size_t i = 0; i < s.f.size(); ++i) {
    double r = s.f[i];
    for (std::size_t j = position(s.ia[i]); j < position(s.ia[i + 1]); ++j)
      r -= s.a[j] * u[position(s.ja[j])];
    residual += r * r;
    right += s.f[i] * s.f[i];
  }
  return std::sqrt(residual / right);
}

}  // namespace bench
