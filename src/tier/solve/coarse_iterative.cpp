// Iterative coarsest-level solvers: smoothing steps, preconditioned CG and BiCGstab.
#include <algorithm>
#include <cmath>
#include <string>

#include "tier/solve/coarse_solvers.h"
#include "tier/solve/cycle_state.h"
#include "tier/solve/gmres_kernels.h"
#include "tier/solve/level_factors.h"
#include "tier/solve/matrix_ops.h"
#include "tier/solve/norms.h"
#include "tier/solve/smoother.h"
#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

sweep_code four_full_steps() {
  sweep_code code;
  code.passes = 1;
  code.steps = 4;
  code.step.fill(2);
  return code;
}

void trace_residual(const char* method, double residual, int iterations) {
  trace(trace_topic::coarsest_solver, formatted("%sresidual= %.5e, iter=%d", method, residual, iterations));
}

/// z <- M^-1 v by incomplete factors or the diagonal.
struct coarse_preconditioner {
  const level& l;
  ilu_factors* factors = nullptr;
  void apply(view<const double> v, view<double> z) const {
    if (factors) return factors->solve(v, z);
    for (int i = 1; i <= l.n; ++i) z[i] = v[i] / l.a[l.ia[i]];
  }
};

/// The vectors of cgc0 and cgstab0, kept with the coarsest level's other data.
krylov_block& coarse_vectors(int n) {
  coarse_decomposition& d = coarse_factors();
  if (!d.vectors) d.vectors = std::make_unique<krylov_block>(n, 7, "iccg", "iccg_alloc");
  return *d.vectors;
}

class coarse_cg {
 public:
  coarse_cg(level& l, const coarse_preconditioner& m, const coarsest_options& o, krylov_block& v)
      : l_(l), m_(m), o_(o), r_(v(1)), z_(v(2)), p_(v(3)), ap_(v(4)) {}

  void solve() {
    residual(l_, l_.f, l_.u, r_);
    const double first = norm();
    bool fresh = true;
    int restarts = 0;
    for (int it = 1; it <= o_.most_iterations && norm() > o_.reduction * first; ++it) {
      if (step(fresh)) {
        fresh = false;
        trace_residual("cl precond. conj. gradient ", norm(), it);
        continue;
      }
      if (++restarts > o_.most_restarts)
        fail(ierr_coarsest_cg,
             "Breakdown of CG on coarsest level in (cgc0): Coarsest level matrix is not positive definite!");
      warn(warn_coarsest_cg, "Modification of initial guess (cgc0).");
      add_scaled(l_.n, 1.0, z_, l_.u);
      residual(l_, l_.f, l_.u, r_);
      fresh = true;
    }
  }

 private:
  double norm() { return vector_norm(l_.n, r_, norm_kind::euclidean, "cgc0"); }

  bool positive(double product, const char* name) {
    if (product > 0.0) return true;
    warn(warn_coarsest_cg,
         std::string(product < 0.0 ? "Negative (" : "Zero (") + name + ") on coarsest level (cgc0)!");
    return false;
  }

  bool step(bool fresh) {
    const int n = l_.n;
    m_.apply(r_, z_);
    const double rho = dot(n, r_, z_);
    if (fresh)
      copy(n, z_, p_);
    else
      scale_and_add(n, rho / rho_, z_, p_);
    rho_ = rho;
    const double along = dot(n, r_, p_);
    if (!positive(along, "res,p")) return false;
    const double pap = multiply_and_dot(l_, p_, ap_, p_);
    if (!positive(pap, "Ap,p")) return false;
    add_scaled(n, along / pap, p_, l_.u);
    add_scaled(n, -along / pap, ap_, r_);
    return true;
  }

  level& l_;
  const coarse_preconditioner& m_;
  const coarsest_options& o_;
  view<double> r_, z_, p_, ap_;
  double rho_ = 1.0;
};

class coarse_bicgstab {
 public:
  coarse_bicgstab(level& l, const coarse_preconditioner& m, const coarsest_options& o, krylov_block& v)
      : l_(l), m_(m), o_(o), r_(v(1)), rbar_(v(2)), p_(v(3)), v_(v(4)), z_(v(5)), t_(v(6)) {}

  void solve() {
    residual(l_, l_.f, l_.u, r_);
    const double first = norm();
    begin();
    for (int it = 1; it <= o_.most_iterations && norm() > o_.reduction * first; ++it) {
      if (step())
        trace_residual("cl precond. BI-CGSTAB ", norm(), it);
      else
        restart(first);
    }
  }

 private:
  double norm() { return vector_norm(l_.n, r_, norm_kind::euclidean, "cgstab0"); }

  void begin() {
    copy(l_.n, r_, rbar_);
    rho_ = alpha_ = omega_ = 1.0;
    fill(l_.n, 0.0, p_);
    fill(l_.n, 0.0, v_);
  }

  void restart(double first) {
    if (++restarts_ > o_.most_restarts) {
      if (!singular_)
        fail(ierr_coarsest_bicgstab, "BI-CGSTAB failed on coarsest level (cgstab0) after repeated restart!");
      fail(ierr_coarsest_bicgstab,
           "Breakdown of BI-CGSTAB on coarsest level (cgstab0): Coarsest level matrix is singular!");
    }
    const bool diverged = norm() > first;
    info(message_class::warning, restarts_ == 1 ? "Re-start with modified <rbar> on coarsest level (cgstab0)!"
                                 : diverged ? "Re-start with new initial guess on coarsest level (cgstab0)!"
                                            : "Re-start of precond. BI-CGSTAB on coarsest level (cgstab0)!");
    if (restarts_ > 1 && diverged) fill(l_.n, 0.0, l_.u);
    residual(l_, l_.f, l_.u, r_);
    begin();
    if (restarts_ == 1) m_.apply(r_, rbar_);
  }

  bool step() {
    const int n = l_.n;
    const double rho = dot(n, rbar_, r_);
    if (rho == 0.0 || omega_ == 0.0) return false;
    add_scaled(n, -omega_, v_, p_);
    scale_and_add(n, rho / rho_ * (alpha_ / omega_), r_, p_);
    rho_ = rho;
    m_.apply(p_, z_);
    const double slope = multiply_and_dot(l_, z_, v_, rbar_);
    singular_ = dot(n, v_, v_) == 0.0;
    if (slope == 0.0) return false;
    alpha_ = rho / slope;
    add_scaled(n, alpha_, z_, l_.u);
    add_scaled(n, -alpha_, v_, r_);
    m_.apply(r_, z_);
    const double ts = multiply_and_dot(l_, z_, t_, r_), tt = dot(n, t_, t_);
    singular_ = tt == 0.0 && norm() > 0.0;
    if (tt == 0.0) return !singular_;
    omega_ = ts / tt;
    add_scaled(n, omega_, z_, l_.u);
    add_scaled(n, -omega_, t_, r_);
    return true;
  }

  level& l_;
  const coarse_preconditioner& m_;
  const coarsest_options& o_;
  view<double> r_, rbar_, p_, v_, z_, t_;
  double rho_ = 1.0, alpha_ = 1.0, omega_ = 1.0;
  int restarts_ = 0;
  bool singular_ = false;
};

}  // namespace

int coarse_fill_limit(const level& l, int fill) {
  if (fill > 0) return std::min(fill, l.n);
  if (fill == 0) return l.n;
  const double row_length = static_cast<double>(l.entries()) / l.n;
  return static_cast<int>(std::min<double>(row_length * -static_cast<double>(fill) / 10.0 + 0.5, l.n));
}

void cl_smo(cycle_state& s, int k) {
  level& l = s.at(k);
  const sweep_code &pre = s.o.smoothing.pre, &post = s.o.smoothing.post;
  const coarsest_options& o = s.o.coarsest;
  const bool steps = !pre.empty() || !post.empty();
  const sweep_code plain = four_full_steps();
  const double first = resid(l, l.f, l.u, norm_kind::euclidean);
  if (first == 0.0) return;
  for (int sweep = 1; sweep <= o.most_iterations; ++sweep) {
    if (steps) {
      smoother(s, k, pre);
      smoother(s, k, post);
    } else {
      smoother(s, k, plain);
    }
    if (sweep % o.sweeps_between_tests != 0) continue;
    const double now = resid(l, l.f, l.u, norm_kind::euclidean);
    if (s.c.out_level > 4) trace_residual("cl_smo: ", now, sweep);
    if (now < o.reduction * first) return;
  }
}

void cgc0(cycle_state& s, int k) {
  level& l = s.at(k);
  coarse_preconditioner m{l};
  if (s.o.coarsest.method == coarsest_solver::ilu_cg) {
    m.factors =
        ilu_of_level(l, k, ilu_options_of(s.o.smoothing, smoother_kind::ilu0), ilu_user::coarsest_solver);
    if (!m.factors) fail(ierr_coarsest_cg, "ILU(0) decomposition failed in (cgc0)");
  }
  const timed clock(phase::coarsest_solution);
  coarse_cg(l, m, s.o.coarsest, coarse_vectors(l.n)).solve();
}

void cgstab0(cycle_state& s, int k) {
  level& l = s.at(k);
  coarse_preconditioner m{l};
  if (s.o.coarsest.method == coarsest_solver::ilut_bicgstab) {
    const int lfil = coarse_fill_limit(l, s.o.coarsest.fill);
    const ilu_options options{ilu_kind::threshold, false, s.o.smoothing.weight, lfil, s.o.coarsest.drop,
                              s.o.smoothing.speed};
    m.factors = ilu_of_level(l, k, options, ilu_user::coarsest_solver);
    if (!m.factors) fail(ierr_coarsest_bicgstab, "ILUT decomposition failed in (cgstab0)");
  }
  const timed clock(phase::coarsest_solution);
  coarse_bicgstab(l, m, s.o.coarsest, coarse_vectors(l.n)).solve();
}

}  // namespace tier
