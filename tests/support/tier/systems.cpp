// Generators of test systems.
#include "support/tier/systems.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <random>

#include "tier/store/numbered.h"

namespace testing_support {

namespace {

using row_map = std::map<int, double>;          // values by column, from 1
using row_list = tier::numbered_list<row_map>;  // from 0

sparse_system from_rows(const row_list& rows) {
  sparse_system s;
  for (const row_map& row : rows) {
    const int i = s.n + 1;
    std::vector<std::pair<int, double>> others;
    for (const auto& [j, value] : row)
      if (j != i) others.emplace_back(j, value);
    s.add_row(row.at(i), others);
  }
  return s;
}

/// Star of 3 x 3 weights, rows from south to north, on m x m with zero boundary values.
sparse_system nine_point(int m, const double (&star)[9]) {
  row_list rows(m * m);
  for (int y = 0; y < m; ++y)
    for (int x = 0; x < m; ++x)
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
          const bool inside = x + dx >= 0 && x + dx < m && y + dy >= 0 && y + dy < m;
          const double value = star[3 * (dy + 1) + dx + 1];
          if (inside && value != 0.0) rows[y * m + x][(y + dy) * m + x + dx + 1] = value;
        }
  return from_rows(rows);
}

/// Stiffness of a unit square of bilinear plane stress, 2 x 2 Gauss points; nodes (0,0) (1,0) (1,1) (0,1).
tier::numbered<tier::numbered<double, 8>, 8> square_stiffness() {
  constexpr double nu = 0.3, scale = 1.0 / (1.0 - nu * nu);
  constexpr double corner[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  tier::numbered<tier::numbered<double, 8>, 8> k{};
  for (const auto& gauss : corner) {
    const double x = gauss[0] / std::sqrt(3.0), y = gauss[1] / std::sqrt(3.0);
    double b[3][8] = {};
    for (int n = 0; n < 4; ++n) {
      const double dx = 0.5 * corner[n][0] * (1 + corner[n][1] * y);
      const double dy = 0.5 * corner[n][1] * (1 + corner[n][0] * x);
      b[0][2 * n] = b[2][2 * n + 1] = dx;
      b[1][2 * n + 1] = b[2][2 * n] = dy;
    }
    const double d[3][3] = {{scale, nu * scale, 0}, {nu * scale, scale, 0}, {0, 0, 0.5 * (1 - nu) * scale}};
    for (int i = 0; i < 8; ++i)
      for (int j = 0; j < 8; ++j)
        for (int p = 0; p < 3; ++p)
          for (int q = 0; q < 3; ++q) k[i][j] += 0.25 * b[p][i] * d[p][q] * b[q][j];
  }
  return k;
}

}  // namespace

sparse_system line(int n) {
  sparse_system s;
  for (int i = 1; i <= n; ++i) {
    std::vector<std::pair<int, double>> others;
    if (i > 1) others.emplace_back(i - 1, -1.0);
    if (i < n) others.emplace_back(i + 1, -1.0);
    s.add_row(2.0, others);
  }
  return s;
}

sparse_system seven_point(int m) {
  sparse_system s;
  for (int z = 0; z < m; ++z)
    for (int y = 0; y < m; ++y)
      for (int x = 0; x < m; ++x) {
        const int i = x + m * (y + m * z) + 1;
        std::vector<std::pair<int, double>> others;
        if (z > 0) others.emplace_back(i - m * m, -1.0);
        if (y > 0) others.emplace_back(i - m, -1.0);
        if (x > 0) others.emplace_back(i - 1, -1.0);
        if (x + 1 < m) others.emplace_back(i + 1, -1.0);
        if (y + 1 < m) others.emplace_back(i + m, -1.0);
        if (z + 1 < m) others.emplace_back(i + m * m, -1.0);
        s.add_row(6.0, others);
      }
  return s;
}

sparse_system convection_diffusion(int m, double velocity) {
  const double v = velocity / (m + 1);
  return nine_point(m, {0, -1, 0, -1 - v, 4 + v, -1, 0, -1, 0});
}

sparse_system turned_anisotropy(int m, double degrees, double epsilon) {
  const double c = std::cos(degrees * M_PI / 180), s = std::sin(degrees * M_PI / 180);
  const double xx = c * c + epsilon * s * s, yy = s * s + epsilon * c * c, xy = (1 - epsilon) * c * s;
  const double turn = 0.5 * xy;  // central differences of the mixed derivative
  return nine_point(m, {-turn, -yy, turn, -xx, 2 * (xx + yy), -xx, turn, -yy, -turn});
}

sparse_system plane_stress(int mx, int my) {
  const auto k = square_stiffness();
  const auto free_number = [my](int x, int y, int function) {
    return 2 * ((x - 1) * (my + 1) + y) + function;
  };
  row_list rows(2 * mx * (my + 1));
  constexpr int corner[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  for (int ex = 0; ex < mx; ++ex)
    for (int ey = 0; ey < my; ++ey)
      for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) {
          const int xi = ex + corner[i / 2][0], xj = ex + corner[j / 2][0];
          if (xi == 0 || xj == 0) continue;  // clamped
          const int row = free_number(xi, ey + corner[i / 2][1], i % 2 + 1);
          rows[row - 1][free_number(xj, ey + corner[j / 2][1], j % 2 + 1)] += k[i][j];
        }
  sparse_system s = from_rows(rows);
  s.nsys = 2;
  for (int i = 0; i < s.n; ++i) {
    s.iu.push_back(i % 2 + 1);
    s.ip.push_back(i / 2 + 1);
    s.f[position(i + 1)] = i % 2 == 1 && i / 2 >= (mx - 1) * (my + 1) ? -1.0 : 0.0;
  }
  return s;
}

sparse_system random_rows(int n, int per_row, double diagonal, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::uniform_int_distribution<int> column(1, n);
  row_list rows(n);
  for (int i = 1; i <= n; ++i) {
    row_map& row = rows[i - 1];
    for (int k = 1; k < per_row; ++k) row[column(random)] = value(random);
    row[i] = diagonal * (1.0 + 0.5 * value(random));
  }
  return from_rows(rows);
}

sparse_system two_faces(int m) {
  const sparse_system face = five_point(m);
  sparse_system s;
  for (int i = 0; i < 2 * face.n; ++i) {
    const std::size_t row = position(i % face.n + 1);
    const int shift = i < face.n ? 0 : face.n;
    std::vector<std::pair<int, double>> others;
    for (std::size_t p = position(face.ia[row]) + 1; p < position(face.ia[row + 1]); ++p)
      others.emplace_back(face.ja[p] + shift, face.a[p]);
    others.emplace_back(i < face.n ? i + 1 + face.n : i + 1 - face.n, -20.0);
    s.add_row(24.0, others);
  }
  return s;
}

sparse_system normal_equations(int n, int per_row, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::uniform_int_distribution<int> column(1, n);
  row_list rows(n);
  for (int i = 1; i <= n; ++i) rows[i - 1][i] = 0.1;
  for (int k = 0; k < n; ++k) {
    row_map b;
    for (int e = 0; e < per_row; ++e) b[column(random)] = value(random);
    for (const auto& [i, x] : b)
      for (const auto& [j, y] : b) rows[i - 1][j] += x * y;
  }
  return from_rows(rows);
}

sparse_system renumbered(const sparse_system& s, unsigned seed) {
  const int per_point = s.ip.empty() ? 1 : s.nsys, points = s.n / per_point;
  tier::numbered_list<int> place(points);
  std::iota(place.begin(), place.end(), 0);
  std::shuffle(place.begin(), place.end(), std::mt19937(seed));
  const auto number = [&](int i) { return place[(i - 1) / per_point] * per_point + (i - 1) % per_point + 1; };
  row_list rows(s.n);
  for (int i = 1; i <= s.n; ++i)
    for (std::size_t p = position(s.ia[position(i)]); p < position(s.ia[position(i + 1)]); ++p)
      rows[number(i) - 1][number(s.ja[p])] = s.a[p];
  sparse_system t = from_rows(rows);
  t.nsys = s.nsys;
  t.iu = s.iu;
  t.ip = s.ip;
  for (int i = 1; i <= s.n; ++i) t.f[position(number(i))] = s.f[position(i)];
  return t;
}

void set_known_solution(sparse_system& s) {
  std::vector<double> x(s.f.size());
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = std::sin(static_cast<double>(i + 1));
  std::fill(s.f.begin(), s.f.end(), 0.0);
  const std::vector<double> minus = residual_of(s, x);
  for (std::size_t i = 0; i < x.size(); ++i) s.f[i] = -minus[i];  // in place: views of f stay
}

std::vector<double> residual_of(const sparse_system& s, const std::vector<double>& u) {
  std::vector<double> r(s.f);
  for (std::size_t i = 0; i < r.size(); ++i)
    for (std::size_t p = position(s.ia[i]); p < position(s.ia[i + 1]); ++p)
      r[i] -= s.a[p] * u[position(s.ja[p])];
  return r;
}

double euclidean(const std::vector<double>& x) {
  double sum = 0.0;
  for (double value : x) sum += value * value;
  return std::sqrt(sum);
}

}  // namespace testing_support
