// Steps of TIER in one, two, three and eight threads, on systems that a sweep shared out among threads finds
// hard: dense rows, points numbered without order, conjugate gradients. Prints a Markdown table; the threads
// may be more than the processors. Needs no benchmark library.
//   thread_steps INSTALL/ [NAME]     only systems with NAME in theirs
#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <numeric>
#include <random>

#include "elastic_systems.h"
#include "tier/store/numbered.h"
#include "tier_call.h"

namespace {

using bench::linear_system;
using bench::position;
using bench::tier_settings;

/// The entries of each row by column, both from 0.
using row_list = tier::numbered_list<std::map<int, double>>;

/// Rows with the columns in ascending order behind the diagonal.
linear_system from_rows(const std::string& name, const row_list& rows) {
  linear_system s;
  s.name = name;
  s.n = rows.count();
  std::mt19937 random(7);
  std::uniform_real_distribution<double> load(-1.0, 1.0);
  for (int i = 0; i < s.n; ++i) {
    s.ja.push_back(i + 1);
    s.a.push_back(rows[i].at(i));
    for (const auto& [j, value] : rows[i]) {
      if (j == i) continue;
      s.ja.push_back(j + 1);
      s.a.push_back(value);
    }
    s.ia.push_back(static_cast<int>(s.ja.size()) + 1);
    s.f.push_back(load(random));
  }
  return s;
}

/// B^T B + 0.1 I, B with `per_row` random entries a row.
linear_system normal_equations(int n, int per_row) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::uniform_int_distribution<int> column(0, n - 1);
  row_list rows(n);
  for (int i = 0; i < n; ++i) rows[i][i] = 0.1;
  for (int k = 0; k < n; ++k) {
    std::map<int, double> b;
    for (int e = 0; e < per_row; ++e) b[column(random)] = value(random);
    for (const auto& [i, x] : b)
      for (const auto& [j, y] : b) rows[i][j] += x * y;
  }
  return from_rows("B^T B + 0.1 I", rows);
}

/// Random weak couplings without a positive one, row sums a little above zero: an M-matrix.
linear_system random_m_matrix(int n, int degree) {
  std::mt19937 random(2);
  std::uniform_real_distribution<double> value(0.0, 1.0);
  std::uniform_int_distribution<int> column(0, n - 1);
  row_list rows(n);
  for (int i = 0; i < n; ++i) rows[i][i] = 0.01;
  for (int e = 0; e < n * degree / 2; ++e) {
    const int i = column(random), j = column(random);
    if (i == j) continue;
    const double x = value(random);
    rows[i][i] += x;
    rows[j][j] += x;
    rows[i][j] -= x;
    rows[j][i] -= x;
  }
  return from_rows("M-matrix, random graph", rows);
}

/// The points of a system in random order, the functions of a point together.
linear_system shuffled(const linear_system& s) {
  const int points = *std::max_element(s.ip.begin(), s.ip.end());
  tier::numbered_list<int> order(points);
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), std::mt19937(5));
  tier::numbered_list<std::vector<std::size_t>> rows_of(points);
  for (std::size_t i = 0; i < s.ip.size(); ++i) rows_of[s.ip[i] - 1].push_back(i);
  std::vector<std::size_t> old_row;
  std::vector<int> new_row(s.ip.size());  // counted from 1
  for (const int p : order)
    for (const std::size_t i : rows_of[p]) {
      old_row.push_back(i);
      new_row[i] = static_cast<int>(old_row.size());
    }
  linear_system t;
  t.name = s.name + ", points in random order";
  t.n = s.n;
  t.functions = s.functions;
  int point = 0, before = -1;
  for (const std::size_t i : old_row) {
    for (std::size_t p = position(s.ia[i]); p < position(s.ia[i + 1]); ++p) {
      t.ja.push_back(new_row[position(s.ja[p])]);
      t.a.push_back(s.a[p]);
    }
    t.ia.push_back(static_cast<int>(t.ja.size()) + 1);
    t.f.push_back(s.f[i]);
    t.iu.push_back(s.iu[i]);
    if (s.ip[i] != before) ++point;
    before = s.ip[i];
    t.ip.push_back(point);
  }
  return t;
}

struct run {
  linear_system s;
  const char* codes;
  tier_settings settings;
};

std::vector<run> runs(const std::string& install) {
  const tier_settings cg{12, 1, 1103000, 5120, 131, 2, -131}, cg_all{12, 20, 1103000, 5120, 12, 2, -12},
      analysis = bench::analysis_settings;
  const part_maker::PartOptions plate{
      .shape = part_maker::Shape::ribbed, .length = 160, .width = 100, .wall = 2.0, .triangles = 10000};
  linear_system ribbed = bench::part_system(plate, install);
  ribbed.name = "ribbed plate";
  part_maker::PartOptions flat = plate;
  flat.shape = part_maker::Shape::plate;
  linear_system thin = bench::part_system(flat, install);
  thin.name = "flat plate";
  part_maker::PartOptions open = plate;
  open.shape = part_maker::Shape::box;
  linear_system box = bench::part_system(open, install);
  box.name = "open box";
  const linear_system cube = bench::elastic_cube(16);
  const tier_settings cube_cg{12, 20, 1103000, 5120, 131, 2, -131};
  return {{normal_equations(3000, 17), "CG", cg},
          {random_m_matrix(20000, 12), "CG", cg},
          {cube, "CG", cube_cg},
          {cube, "CG, all rows", cg_all},
          {ribbed, "CG, all rows", cg_all},
          {thin, "CG, all rows", cg_all},
          {ribbed, "analysis", analysis},
          {thin, "analysis", analysis},
          {box, "analysis", analysis},
          {shuffled(ribbed), "analysis", analysis},
          {shuffled(thin), "analysis", analysis},
          {shuffled(box), "analysis", analysis},
          {bench::poisson_5_point(150), "scalar", {}},
          {bench::poisson_7_point(30), "scalar", {}}};
}

}  // namespace

int main(int argc, char** argv) {
  std::FILE* const table = ::fdopen(::dup(1), "w");
  if (argc < 2 || table == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
    std::fputs("thread_steps INSTALL/ [NAME]\n", stderr);
    return 1;
  }
  std::fputs("| system | unknowns | codes | 1 | 2 | 3 | 8 threads |\n|---|---|---|---|---|---|---|\n", table);
  for (const run& r : runs(argv[1])) {
    if (argc > 2 && r.s.name.find(argv[2]) == std::string::npos) continue;
    std::fprintf(table, "| %s | %d | %s |", r.s.name.c_str(), r.s.n, r.codes);
    for (const int threads : {1, 2, 3, 8}) {
      omp_set_num_threads(threads);
      const bench::tier_outcome t = bench::call_tier(r.s, r.settings);
      if (t.ierr == 0)
        std::fprintf(table, " %d |", t.steps);
      else
        std::fprintf(table, " %d (%d) |", t.steps, t.ierr);
      std::fflush(table);
    }
    std::fputs("\n", table);
  }
  return 0;
}
