// Makers and reader of sparse test systems.
#include "support/tier/sparse_system.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>

#include "tier/store/numbered.h"

namespace testing_support {

void sparse_system::add_row(double diagonal, const std::vector<std::pair<int, double>>& others) {
  ja.push_back(++n);
  a.push_back(diagonal);
  for (const auto& [column, value] : others) {
    ja.push_back(column);
    a.push_back(value);
  }
  ia.push_back(static_cast<int>(ja.size()) + 1);
  f.push_back(1.0);
  u.push_back(0.0);
}

double sparse_system::entry(int i, int j) const {
  double sum = 0.0;
  const std::size_t row = position(i);
  for (std::size_t p = position(ia[row]); p < position(ia[row + 1]); ++p)
    if (ja[p] == j) sum += a[p];
  return sum;
}

sparse_system read_system(const std::string& path) {
  std::ifstream in(path);
  int rows = 0, entries = 0;
  sparse_system s;
  if (!(in >> rows >> entries >> s.nsys)) throw std::runtime_error("cannot read " + path);
  for (int i = 0; i < rows; ++i) {
    int function = 0, point = 0, count = 0, column = 0;
    double f = 0.0, value = 0.0, diagonal = 0.0;
    in >> function >> point >> f >> count >> column >> diagonal;
    std::vector<std::pair<int, double>> others;
    while (--count > 0 && in >> column >> value) others.emplace_back(column, value);
    s.add_row(diagonal, others);
    s.f.back() = f;
    s.iu.push_back(function);
    s.ip.push_back(point);
  }
  if (!in || static_cast<int>(s.ja.size()) != entries) throw std::runtime_error("wrong count in " + path);
  return s;
}

namespace {

sparse_system grid_star(int m, double west_east, double north_south, bool boundary) {
  sparse_system s;
  for (int y = 1; y <= m; ++y) {
    for (int x = 1; x <= m; ++x) {
      const int i = x + (y - 1) * m;
      std::vector<std::pair<int, double>> others;
      if (y > 1) others.emplace_back(i - m, north_south);
      if (x > 1) others.emplace_back(i - 1, west_east);
      if (x < m) others.emplace_back(i + 1, west_east);
      if (y < m) others.emplace_back(i + m, north_south);
      double diagonal = -2.0 * (west_east + north_south);
      if (!boundary) {
        diagonal = 0.0;
        for (const auto& other : others) diagonal -= other.second;
      }
      s.add_row(diagonal, others);
    }
  }
  return s;
}

}  // namespace

sparse_system five_point(int m, double west_east, double north_south) {
  return grid_star(m, west_east, north_south, true);
}

sparse_system five_point_neumann(int m) { return grid_star(m, -1.0, -1.0, false); }

sparse_system coupled(const sparse_system& scalar, int nsys, double coupling) {
  sparse_system s;
  s.nsys = nsys;
  for (int i = 1; i <= scalar.n; ++i) {
    const std::size_t first = position(scalar.ia[position(i)]), end = position(scalar.ia[position(i + 1)]);
    for (int function = 1; function <= nsys; ++function) {
      std::vector<std::pair<int, double>> others;
      for (std::size_t p = first; p < end; ++p) {
        for (int g = 1; g <= nsys; ++g) {
          const int column = (scalar.ja[p] - 1) * nsys + g;
          if (g == function && p > first) others.emplace_back(column, scalar.a[p]);
          if (g != function) others.emplace_back(column, coupling * scalar.a[p]);
        }
      }
      s.add_row(scalar.a[first], others);
      s.iu.push_back(function);
      s.ip.push_back(i);
    }
  }
  return s;
}

sparse_system random_system(int n, int degree, double positive_share, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> row(1, n);
  std::uniform_real_distribution<double> size(0.05, 1.0), share(0.0, 1.0);
  tier::numbered_list<std::map<int, double>> others(n + 1);  // row 0 is empty
  for (int edge = 0; edge < n * degree / 2; ++edge) {
    const int i = row(random), j = row(random);
    if (i == j) continue;
    const double v = size(random) * (share(random) < positive_share ? 0.5 : -1.0);
    others[i][j] = others[j][i] = v;
  }
  sparse_system s;
  for (int i = 1; i <= n; ++i) {
    double diagonal = 0.01;
    std::vector<std::pair<int, double>> row_of(others[i].begin(), others[i].end());
    for (const auto& [column, v] : row_of) diagonal += std::abs(v);
    std::shuffle(row_of.begin(), row_of.end(), random);
    s.add_row(diagonal, row_of);
  }
  return s;
}

void set_first_level(tier::hierarchy& h, sparse_system& s) {
  tier::level& lv = h(1);
  lv = tier::level();
  lv.n = s.n;
  lv.ia = tier::view<int>(s.ia.data());
  lv.ja = tier::view<int>(s.ja.data());
  lv.a = tier::view<double>(s.a.data());
  lv.u = tier::view<double>(s.u.data());
  lv.f = tier::view<double>(s.f.data());
  if (s.nsys > 1) lv.iu = tier::view<int>(s.iu.data());
  if (s.nsys > 1 && !s.ip.empty()) {
    lv.ip = tier::view<int>(s.ip.data());
    lv.npnts = *std::max_element(s.ip.begin(), s.ip.end());
  }
}

}  // namespace testing_support
