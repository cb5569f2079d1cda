// Flexible conjugate gradients.
#include "tier/aggregation/flexible_cg.h"

#include <cmath>
#include <string>

#include "tier/aggregation/block_cycle.h"
#include "tier/solve/cycle_state.h"
#include "tier/solve/gmres_kernels.h"
#include "tier/solve/matrix_ops.h"
#include "tier/solve/norms.h"
#include "tier/solve/short_recurrence.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier::aggregation {

namespace {

constexpr int most_restarts = 10;
constexpr double widening = 1.5;
constexpr accelerator_words words{"CG", "flexible_cg", warn_cg_quasi_residual, warn_cg_not_converged};

class iteration {
 public:
  iteration(accelerated_run& run, aggregation_hierarchy& h)
      : run_(run), h_(h), n_(run.fine().n), vectors_(n_, 4, "cg", words.routine) {
    h_.restarts = 0;
  }

  void iterate() {
    if (no_steps_left(run_, words)) return;
    double previous = run_.results.res_out = real_residual(run_, r_);
    while (run_.results.res_out > 0.0) {
      step();
      const double quasi = vector_norm(n_, r_, run_.s.c.norm_typ, words.routine);
      const verdict v = judge_step(run_, words, quasi, previous, z_);
      if (v == verdict::done) return;
      if (v == verdict::refresh) {
        copy(n_, z_, r_);
        first_ = true;
      }
    }
  }

 private:
  // (z, r - r_old) = -alpha (z, q), so that the old residual isn't kept.
  void step() {
    double rho = preconditioned();
    if (first_) {
      copy(n_, z_, p_);
      first_ = false;
    } else {
      scale_and_add(n_, -alpha_ * dot(n_, z_, q_) / rho_old_, z_, p_);
    }
    const double energy = multiply_and_dot(run_.fine(), p_, q_, p_);
    if (!(energy > 0.0))
      fail(ierr_cg_breakdown, "Given matrix is not positive definite (numerically)! (flexible_cg)");
    alpha_ = rho / energy;
    rho_old_ = rho;
    add_scaled(n_, alpha_, p_, run_.fine().u);
    add_scaled(n_, -alpha_, q_, r_);
  }

  /// z <- M^-1 r; (z, r), made positive by wider bounds where need be. Bounds far too small let a cycle run
  /// out of the range of single precision: that is cured like the wrong sign, unless the residual is bad.
  double preconditioned() {
    for (;;) {
      precondition(h_, r_.data(), z_.data());
      const double rho = dot(n_, z_, r_);
      if (rho > 0.0 && std::isfinite(rho)) return rho;
      if (!std::isfinite(dot(n_, r_, r_))) fail(ierr_residual_nan, "NaN detected in (flexible_cg)!");
      restart();
    }
  }

  void restart() {
    warn(warn_cg_restart,
         "Preconditioner isn't positive: restart with wider eigenvalue bounds (flexible_cg)!");
    if (++h_.restarts > most_restarts)
      fail(ierr_cg_breakdown,
           "Breakdown of CG: too many restarts: is the matrix positive definite? (flexible_cg)");
    h_.widening *= widening;
    run_.results.res_out = real_residual(run_, r_);
    first_ = true;
  }

  accelerated_run& run_;
  aggregation_hierarchy& h_;
  int n_;
  krylov_block vectors_;
  view<double> r_ = vectors_(1), z_ = vectors_(2), p_ = vectors_(3), q_ = vectors_(4);
  double rho_old_ = 1.0, alpha_ = 0.0;
  bool first_ = true;
};

}  // namespace

void flexible_cg(accelerated_run& run, aggregation_hierarchy& h) { iteration(run, h).iterate(); }

}  // namespace tier::aggregation
