// Readers and makers of hierarchies for tests.
#include "support/tier/known_hierarchy.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <tuple>

#ifdef _OPENMP
#include <omp.h>
#endif

#include "support/tier/systems.h"
#include "tier/codes/solve_data.h"
#include "tier/setup/prepare_opdfn.h"
#include "tier/solve/tier_solve.h"
#include "tier/store/info.h"
#include "tier/store/numbered.h"
#include "tier/store/threads.h"

namespace {

std::vector<double>* steps_of_run = nullptr;

}  // namespace

extern "C" void TIER_CURRENT_RESIDUAL(const int*, const double* res) {
  if (steps_of_run) steps_of_run->push_back(*res);
}

namespace testing_support {

namespace {

using entry = std::tuple<int, int, double>;

std::vector<entry> read_entries(const std::string& path) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error("cannot read " + path);
  std::vector<entry> entries;
  for (entry e; in >> std::get<0>(e) >> std::get<1>(e) >> std::get<2>(e);) entries.push_back(e);
  return entries;
}

sparse_system operator_of(const std::vector<entry>& entries) {
  sparse_system s;
  for (std::size_t p = 0; p < entries.size();) {
    const int row = std::get<0>(entries[p]);
    double diagonal = 0.0;
    std::vector<std::pair<int, double>> others;
    for (; p < entries.size() && std::get<0>(entries[p]) == row; ++p) {
      const auto [i, j, value] = entries[p];
      if (j == i)
        diagonal = value;
      else
        others.emplace_back(j, value);
    }
    s.add_row(diagonal, others);
  }
  return s;
}

template <class T>
void store(tier::work_array<T>& to, const std::vector<T>& from) {
  to.allocate(static_cast<std::int64_t>(from.size()), "test", "add_level");
  std::copy(from.begin(), from.end(), to.data());
}

}  // namespace

void use_threads(int team) {
#ifdef _OPENMP
  omp_set_num_threads(team);
#endif
  tier::set_max_threads(0);
}

test_run::test_run(sparse_system fine_system) : system(std::move(fine_system)) {
  set_first_level(h, system);
  h.levels_created = h.levels_used = 1;
  c.nsys = system.nsys;
  c.nstyp = system.nsys > 1 ? tier::approach::by_unknowns : tier::approach::by_variables;
  c.nnu = system.n;
  c.nna = static_cast<int>(system.ja.size());
  c.ncgrad = tier::accelerator::gmres;
  c.ncycle = 1000;
  c.eps = 1e-8;
  c.icrits = {0, 1, 1, 0, 0};
  c.dump_level = c.out_level = -1;
  use_threads(1);
}

test_run::~test_run() { tier::release_solution_data(); }

void test_run::add_level(const sparse_system& coarse, const std::vector<int>& coarse_of,
                         const std::vector<std::vector<std::pair<int, double>>>& interpolation) {
  tier::level& fine = h(h.levels_used);
  std::vector<int> iw{1}, jw;
  std::vector<double> w;
  for (const auto& row : interpolation) {
    for (const auto& [j, weight] : row) {
      jw.push_back(j);
      w.push_back(weight);
    }
    iw.push_back(static_cast<int>(jw.size()) + 1);
  }
  store(fine.icg, coarse_of);
  store(fine.iw, iw);
  store(fine.jw, jw);
  store(fine.w, w);
  tier::transpose_weights(fine, coarse.n);
  tier::level& next = h(++h.levels_used);
  h.levels_created = h.levels_used;
  next.n = coarse.n;
  store(next.own_ia, coarse.ia);
  store(next.own_ja, coarse.ja);
  store(next.own_a, coarse.a);
  store(next.own_u, coarse.u);
  store(next.own_f, coarse.f);
  next.ia = next.own_ia;
  next.ja = next.own_ja;
  next.a = next.own_a;
  next.u = next.own_u;
  next.f = next.own_f;
}

int test_run::solve() {
  steps.clear();
  steps_of_run = &steps;
  results = {.res_in = results.res_in};
  tier::clear_warning();
  int ierr = 0;
  try {
    tier::tier_solve(h, c, tier::solve_data(c), results);
  } catch (const tier::failure& f) {
    ierr = f.ierr;
  }
  steps_of_run = nullptr;
  return ierr != 0 ? ierr : tier::last_warning();
}

// P^T A P of every second row, formed entry by entry.
void test_run::coarsen_line() {
  tier::level& fine = h(h.levels_used);
  const int n = fine.n, coarse = n / 2;
  std::vector<int> coarse_of;
  std::vector<std::vector<std::pair<int, double>>> p;
  for (int i = 1; i <= n; ++i) {
    std::vector<std::pair<int, double>> row;
    if (i % 2 == 0) row = {{i / 2, 1.0}};
    if (i % 2 == 1 && i > 1) row.emplace_back(i / 2, 0.5);
    if (i % 2 == 1 && i < n) row.emplace_back(i / 2 + 1, 0.5);
    coarse_of.push_back(i % 2 == 0 ? i / 2 : -1);
    p.push_back(row);
  }
  using row_by_number = tier::numbered_list<double>;
  tier::numbered_list<row_by_number> product(coarse + 1, row_by_number(coarse + 1));  // 0 is unused
  for (int i = 1; i <= n; ++i)
    for (int k = fine.ia[i]; k < fine.ia[i + 1]; ++k)
      for (const auto& [row, left] : p[position(i)])
        for (const auto& [column, right] : p[position(fine.ja[k])])
          product[row][column] += left * fine.a[k] * right;
  sparse_system next;
  for (int i = 1; i <= coarse; ++i) {
    std::vector<std::pair<int, double>> others;
    const row_by_number& row = product[i];
    for (int j = 1; j <= coarse; ++j)
      if (j != i && row[j] != 0.0) others.emplace_back(j, row[j]);
    next.add_row(row[i], others);
  }
  add_level(next, coarse_of, p);
}

double test_run::relative_residual() const {
  return euclidean(residual_of(system, system.u)) / euclidean(system.f);
}

void read_levels(const std::string& folder, test_run& run) {
  for (int k = 1; std::ifstream(folder + "/level" + std::to_string(k) + ".interp"); ++k) {
    const std::string stem = folder + "/level" + std::to_string(k);
    const int n = run.h(k).n;
    std::vector<int> coarse_of(static_cast<std::size_t>(n), -1);
    std::vector<std::vector<std::pair<int, double>>> interpolation(static_cast<std::size_t>(n));
    int coarse = 0;
    for (std::ifstream in(stem + ".state"); in;) {
      int i = 0, state = 0;
      if (in >> i >> state) coarse_of[position(i)] = state == 1 ? ++coarse : state;
    }
    for (const auto& [i, j, weight] : read_entries(stem + ".interp"))
      interpolation[position(i)].emplace_back(j, weight);
    run.add_level(operator_of(read_entries(folder + "/level" + std::to_string(k + 1) + ".matrix")), coarse_of,
                  interpolation);
  }
}

std::vector<double> read_expected_residuals(const std::string& folder) {
  std::vector<double> residuals;
  std::ifstream in(folder + "/expected.txt");
  for (std::string line; std::getline(in, line);) {
    std::istringstream words(line);
    std::string word;
    int step = 0;
    double value = 0.0;
    if (words >> word >> step >> value && word == "RES") residuals.push_back(value);
  }
  return residuals;
}

}  // namespace testing_support
