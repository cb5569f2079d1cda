// Choice of the coarsest-level method, trivial systems, pinning, and the direct methods' life.
#include "tier/solve/cgsolve.h"

#include <cmath>
#include <limits>
#include <string>

#include "tier/solve/coarse_solvers.h"
#include "tier/solve/cycle_state.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/numbered.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

bool only_up_to_constant(const controls& c, const level& l, int i) {
  return c.iscale[l.iu ? l.iu[i] : 1] == 1;
}

/// Marks the first variable of each flagged function.
void find_pinned(const controls& c, const level& l, work_array<int>& pinned) {
  numbered<bool, 1000> open{};
  bool any = false;
  for (int f = 1; f <= c.nsys; ++f) any |= open[f] = c.iscale[f] == 1;
  if (!any) return;
  pinned.allocate(l.n, 0, "pinned", "cgsolve");
  for (int i = 1; i <= l.n; ++i) {
    bool& first = open[l.iu ? l.iu[i] : 1];
    if (first) pinned[i] = 1;
    first = false;
  }
}

/// The level's right-hand side with 0 at pinned variables.
view<const double> right_hand_side(const level& l) {
  coarse_decomposition& d = coarse_factors();
  if (d.pinned.size() == 0) return l.f;
  if (d.right.size() == 0) d.right.allocate(l.n, "right", "cgsolve");
  for (int i = 1; i <= l.n; ++i) d.right[i] = d.pinned[i] != 0 ? 0.0 : l.f[i];
  return d.right;
}

constexpr std::int64_t largest_store = std::numeric_limits<int>::max() - 1;

std::string attempt_words(int attempt, std::int64_t licn, std::int64_t lirn) {
  return "cgsolve: attempt " + std::to_string(attempt) + " licn, lirn " + std::to_string(licn) + " " +
         std::to_string(lirn);
}

[[noreturn]] void sparse_gauss_failed() {
  fail(ierr_sparse_gauss, "Error in matrix decomposition (sparse Gauss)!");
}

/// A store that was too small: the larger of what it had and what it needed, by 1.1 twice.
std::int64_t raised(std::int64_t had, std::int64_t needed) {
  const double wanted = 1.1 * (1.1 * static_cast<double>(std::max(had, needed)));
  if (had >= largest_store) sparse_gauss_failed();
  return static_cast<std::int64_t>(std::min(std::ceil(wanted) + 1.0, static_cast<double>(largest_store)));
}

std::unique_ptr<sparse_gauss> factorise_sparse(const level& l, const work_array<int>& pinned,
                                               double stability) {
  auto spg = std::make_unique<sparse_gauss>();
  spg->analyse(l.n, l.ia, l.ja);
  std::int64_t licn = spg->estimated_l(), lirn = spg->estimated_u();
  const auto sizes = [&] { return std::to_string(licn) + " " + std::to_string(lirn); };
  trace(trace_topic::coarsest_solver, "cgsolve: orig estim      : licn=lirn " + sizes());
  licn = std::min(licn, largest_store);
  lirn = std::min(lirn, largest_store);
  trace(trace_topic::coarsest_solver, "cgsolve: initial attempt : licn=lirn " + sizes());
  for (int attempt = 2;; ++attempt) {
    const int outcome = spg->factorise(l.ia, l.ja, l.a, pinned, stability, licn, lirn);
    if (outcome == sparse_gauss::done) return spg;
    if (outcome != sparse_gauss::out_of_l && outcome != sparse_gauss::out_of_u) sparse_gauss_failed();
    info(message_class::note, "Decomposition - new attempt (sparse Gauss)");
    licn = raised(licn, outcome == sparse_gauss::out_of_l ? spg->needed() : 0);
    lirn = raised(lirn, outcome == sparse_gauss::out_of_u ? spg->needed() : 0);
    trace(trace_topic::coarsest_solver, attempt_words(attempt, licn, lirn));
  }
}

dense_method dense_kind(const coarsest_options& o) {
  if (o.method == coarsest_solver::least_squares) return dense_method::least_squares;
  if (o.method == coarsest_solver::full_gauss && o.full_pivoting) return dense_method::full_pivoting;
  return dense_method::partial_pivoting;
}

}  // namespace

coarse_decomposition& coarse_factors() {
  static const per_context<coarse_decomposition> kept;
  return kept();
}

bool solve_trivial(cycle_state& s, level& l) {
  if (s.levels() > 1 || l.n > 2) return false;
  const bool singular = only_up_to_constant(s.c, l, 1);
  if (l.n == 1) {
    if (singular) fail(ierr_singular_single, "Singular system with only one unknown in (solve_trivial)!");
    l.u[1] = l.f[1] / l.a[1];
  } else {
    if (!singular || !only_up_to_constant(s.c, l, 2) || (l.iu && l.iu[1] != l.iu[2])) return false;
    l.u[1] = 0.0;
    l.u[2] = l.f[2] / l.a[l.ia[2]];
  }
  trace(trace_topic::coarsest_solver, "cgsolve: done after solve_trivial");
  return true;
}

void solve_sparse_gauss(cycle_state& s, level& l) {
  coarse_decomposition& d = coarse_factors();
  if (!d.spg) {
    const timed clock(phase::direct_decomposition);
    find_pinned(s.c, l, d.pinned);
    d.spg = factorise_sparse(l, d.pinned, s.o.coarsest.stability);
  }
  const timed clock(phase::coarsest_solution);
  d.spg->substitute(right_hand_side(l), l.u);
}

void solve_dense(cycle_state& s, level& l) {
  coarse_decomposition& d = coarse_factors();
  const bool full = s.o.coarsest.method != coarsest_solver::lapack;
  const dense_method kind = dense_kind(s.o.coarsest);
  const bool pins = kind != dense_method::least_squares;
  if (!d.dense || d.dense->method() != kind) {
    const timed clock(phase::direct_decomposition);
    if (pins) find_pinned(s.c, l, d.pinned);
    d.dense = std::make_unique<dense_solver>();
    if (!d.dense->factorise(l, pins ? view<const int>(d.pinned) : view<const int>(), kind))
      fail(full ? ierr_full_gauss : ierr_dense_direct,
           full ? "Error in matrix decomposition (full Gauss)!" : "Error in dense direct solver");
  }
  const timed clock(phase::coarsest_solution);
  d.dense->substitute(pins ? right_hand_side(l) : l.f, l.u);
}

void cgsolve(cycle_state& s, int k) {
  level& l = s.at(k);
  if (s.o.coarsest.method == coarsest_solver::none || solve_trivial(s, l)) return;
  switch (s.o.coarsest.method) {
    case coarsest_solver::smoothing:
      return cl_smo(s, k);
    case coarsest_solver::ilu_cg:
    case coarsest_solver::diagonal_cg:
      return cgc0(s, k);
    case coarsest_solver::ilut_bicgstab:
    case coarsest_solver::diagonal_bicgstab:
      return cgstab0(s, k);
    case coarsest_solver::sparse_gauss:
      return solve_sparse_gauss(s, l);
    case coarsest_solver::full_gauss:
    case coarsest_solver::least_squares:
    case coarsest_solver::lapack:
      return solve_dense(s, l);
    case coarsest_solver::of_user:
      fail(ierr_internal, "No solver currently installed by USER (user_solve)!");
    default:
      fail(ierr_illegal_value, "Illegal value of parameter nrc in (cgsolve)!");
  }
}

}  // namespace tier
