// Fuzz target of TIER's strategies: valid small systems, solved by the ways of coarsening, interpolation,
// primary matrices, coarsest-level solvers and truncation that a random code hardly ever hits. Whatever is
// chosen, a call returns, keeps what it promises to keep, and reports success for solutions alone.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "fuzz/choices.h"
#include "support/tier/sparse_system.h"
#include "tier/api/tier.h"
#include "tier/store/numbered.h"
#include "tier/store/parameters.h"
#include "tier/store/work_arrays.h"

namespace {

using fuzz::choices;
using fuzz::require;
using testing_support::position;

struct system_of_points {
  int n = 0, nsys = 1;
  bool symmetric = true;
  std::vector<int> ia{1}, ja, iu, ip, iscale;
  std::vector<double> a, f, u;
};

/// Weight of the coupling of two functions at two neighbours.
double weight(choices& c, bool same) {
  if (!same) return c.below(4) == 0 ? c.of({0.05, -0.05, 0.2}) : 0.0;
  return c.below(8) == 0 ? c.of({0.3, 1.0, -100.0, -0.001}) : -1.0;
}

/// Points on a grid of `width`, nsys functions at each, weakly dominant rows: every solver can do it.
system_of_points make_system(choices& c) {
  system_of_points s;
  s.nsys = c.of({1, 1, 2, 3});
  s.symmetric = c.below(2) == 0;
  const int width = 2 + c.below(9), points = width * (2 + c.below(9));
  s.n = points * s.nsys;
  tier::numbered_list<std::vector<std::pair<int, double>>> rows(s.n + 1);  // row 0 is empty
  const auto couple = [&](int p, int q) {
    for (int i = 1; i <= s.nsys; ++i)
      for (int j = 1; j <= s.nsys; ++j) {
        const double w = weight(c, i == j);
        const int row = (p - 1) * s.nsys + i, column = (q - 1) * s.nsys + j;
        if (w == 0.0) continue;
        rows[row].emplace_back(column, w);
        rows[column].emplace_back(row, s.symmetric ? w : w * c.of({1.0, 0.5, 2.0}));
      }
  };
  for (int p = 1; p <= points; ++p) {
    if (p % width != 0) couple(p, p + 1);
    if (p + width <= points) couple(p, p + width);
  }
  for (int i = 1; i <= s.n; ++i) {
    double sum = 0.0;
    for (const auto& [column, w] : rows[i]) sum += std::abs(w);
    s.ja.push_back(i);
    s.a.push_back(sum + c.of({0.0, 0.01, 1.0}) + (i <= s.nsys ? 1.0 : 0.0));
    for (const auto& [column, w] : rows[i]) {
      s.ja.push_back(column);
      s.a.push_back(w);
    }
    s.ia.push_back(static_cast<int>(s.ja.size()) + 1);
    s.iu.push_back((i - 1) % s.nsys + 1);
    s.ip.push_back((i - 1) / s.nsys + 1);
  }
  s.f.assign(s.ip.size(), 1.0);
  s.u.assign(s.ip.size(), 0.0);
  s.iscale.assign(static_cast<std::size_t>(s.nsys), 0);
  return s;
}

void set_strategy(choices& c) {
  tier::parameters& parm = tier::parm();
  TIER_RESET_HIDDEN();
  parm.logio = 0;  // reports are made, but go nowhere
  parm.nptmn = c.of({2, 5, 20});
  parm.nptmax = c.of({1500, 1500, 10});
  parm.densx = c.of({0.2, 1.1});
  parm.eps_dd = c.of({0.9, 1.0});
  parm.ncg = c.of({1, 2, 3, 4, 5, 11, 12, 41, 42, 51, 419, 11012, 40001, 40011, 51021, 13, 14});
  parm.nwt = c.of({1, 2, 3, 4, 11, 21, 219, 31, 41, 42});
  parm.ntr = c.of({1, 0, 2, 101, 102, 108, 201});
  parm.etr = c.of({12.2, 11.1, 15.5, 0.0});
  parm.ecg = c.of({21.25, 0.25, 21.7});
  parm.ewt = c.of({0.2, 0.0, 2.2});
  parm.nrc = c.of({1, 2, 3, 4, 5, 6, 7, 8, 10, 99});
  parm.full_pivoting = c.below(2) == 0;
  parm.ntyp_galerkin = c.below(7);
  parm.glk_mult_zeros = c.below(4) == 0;
  parm.prim_norm = c.below(3);
  parm.ntr_prim = c.of({0, 0, 1, 4});
  parm.vio_dd = c.below(2);
  parm.numtry_max_set = c.below(4);
  parm.ibgs_pivot = c.below(2);
  parm.milu = c.below(2);
}

/// Approaches with and without points, by blocks and by primary matrices, with every smoother.
int approach(choices& c, const system_of_points& s) {
  if (s.nsys == 1) return c.of({1, 11, 12, 13, 3});
  const int smoother = c.of({0, 0, 1, 2, 3, 5, 6});
  switch (c.below(4)) {
    case 0:
      return c.of({10, 20}) + smoother;
    case 1:  // a primary function
      return 100000 * c.of({3, 4, 5}) + 10000 * smoother + 10 * (1 + c.below(s.nsys)) + c.below(2);
    case 2:  // a primary matrix from norms
      return 100 * c.of({3, 5}) + 10 * smoother + c.of({3, 4});
    default:
      return 1000000 * c.of({3, 4, 5}) + 100000 * smoother + 10000 * c.of({3, 4}) +
             100 * (1 + c.below(s.nsys));
  }
}

double residual(const system_of_points& s) {
  double sum = 0.0;
  for (std::size_t i = 0; i < s.f.size(); ++i) {
    double r = s.f[i];
    for (std::size_t p = position(s.ia[i]); p < position(s.ia[i + 1]); ++p)
      r -= s.a[p] * s.u[position(s.ja[p])];
    sum += r * r;
  }
  return std::sqrt(sum / static_cast<double>(s.f.size()));  // f is 1 in every row
}

void check_call(choices& c, system_of_points& s, int nsolve, int run) {
  const auto ia = s.ia;
  const int nna = static_cast<int>(s.ja.size()), matrix = s.symmetric ? 12 : 22, ifirst = 1, none = -1;
  const int ncyc = c.of({11, 12, 13, 23, 32, 43, 14}) * 100000 + 60, iswtch = 1000 * run + 120;
  const double eps = 1e-8, chktol = -1.0;
  double res_in = -1.0, res_out = -1.0, estimates[4] = {};
  int ncyc_done = 0, ierr = 0;
  TIER(&s.n, &nna, &s.nsys, s.ia.data(), s.ja.data(), s.a.data(), s.f.data(), s.u.data(), s.iu.data(), &s.n,
       s.ip.data(), &s.n, &matrix, s.iscale.data(), &res_in, &res_out, &ncyc_done, &ierr, &nsolve, &ifirst,
       &eps, &ncyc, &iswtch, &estimates[0], &estimates[1], &estimates[2], &estimates[3], &chktol, &none,
       &none);
  require(ia == s.ia, "ia has changed");
  for (int i = 1; i <= s.n; ++i)
    require(s.ja[position(s.ia[position(i)])] == i, "a diagonal isn't first in its row");
  if (ierr > 0 || run == 5) require(tier::memory().nisum == 0 && tier::memory().ndsum == 0, "memory is held");
  if (ierr != 0) return;
  require(residual(s) <= 1.01e-8, "success is reported with another residual");
  require(std::abs(res_out / res_in - residual(s)) <= 1e-10, "res_out isn't the residual");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  choices c(data, size);
  set_strategy(c);
  system_of_points s = make_system(c);
  const int nsolve = approach(c, s), first = c.of({4, 4, 5, 6});
  check_call(c, s, nsolve, first);
  for (double& x : s.a) x *= 2.0;
  std::fill(s.u.begin(), s.u.end(), 0.0);
  if (first == 4) check_call(c, s, nsolve, c.of({3, 1, 4, 6}));
  int ierr = 0;
  TIER_LEAVE(&ierr);
  require(tier::memory().nisum == 0 && tier::memory().ndsum == 0, "memory is held after TIER_LEAVE");
  return 0;
}
