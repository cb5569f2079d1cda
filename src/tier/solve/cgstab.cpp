// BiCGstab with restarts on level 1.
#include <cmath>
#include <limits>
#include <string>

#include "tier/solve/cycle_state.h"
#include "tier/solve/gmres_kernels.h"
#include "tier/solve/matrix_ops.h"
#include "tier/solve/norms.h"
#include "tier/solve/short_recurrence.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier {

namespace {

constexpr const char* routine = "cgstab";
constexpr accelerator_words words{"BiCGstab", routine, warn_bicgstab_quasi_residual,
                                  warn_bicgstab_not_converged, 1};

enum class outcome { go_on, done, refresh, breakdown, singular };

/// A scalar product that is rounding against its factors.
bool vanishes(double product, double length_x, double length_y) {
  return !(std::abs(product) > std::numeric_limits<double>::epsilon() * length_x * length_y);
}

class cgstab_run {
 public:
  explicit cgstab_run(accelerated_run& run)
      : run_(run), n_(run.fine().n), vectors_(n_, 6, "cgstab", routine) {}

  void iterate() {
    if (no_steps_left(run_, words)) return;
    const double first = previous_ = run_.results.res_out = real_residual(run_, r_);
    begin();
    while (run_.results.res_out > 0.0) {
      const outcome end = step();
      if (end == outcome::done) return;
      if (end == outcome::refresh) begin();
      if (end == outcome::breakdown || end == outcome::singular) {
        if (++restarts_ > run_.s.o.acceleration.most_restarts) return give_up(first, end);
        restart();
      }
    }
  }

 private:
  void begin() {
    copy(n_, r_, rbar_);
    rho_ = alpha_ = omega_ = 1.0;
    fill(n_, 0.0, p_);
    fill(n_, 0.0, v_);
  }

  double checked(double product) {
    finish_norm(std::abs(product), norm_kind::sum, routine);
    return product;
  }

  outcome step() {
    const double rho = checked(dot(n_, rbar_, r_));
    if (vanishes(rho, length(n_, rbar_), length(n_, r_)) || omega_ == 0.0) return outcome::breakdown;
    const double beta = rho / rho_ * (alpha_ / omega_);
    rho_ = rho;
    add_scaled(n_, -omega_, v_, p_);
    scale_and_add(n_, beta, r_, p_);
    precondition(run_, p_, phat_, "preconditioning_bicgstab_step1");
    const double slope = checked(multiply_and_dot(run_.fine(), phat_, v_, rbar_));
    const double length_v = length(n_, v_);
    if (length_v == 0.0) return outcome::singular;
    if (vanishes(slope, length_v, length(n_, rbar_))) return outcome::breakdown;
    alpha_ = rho / slope;
    add_scaled(n_, alpha_, phat_, run_.fine().u);
    add_scaled(n_, -alpha_, v_, r_);

    const double half = vector_norm(n_, r_, run_.s.c.norm_typ, routine);
    if (run_.rules.reached(half) && run_.results.ncyc_done + 1 >= run_.s.o.stopping.least_steps) {
      const outcome end = judge(half);
      return end == outcome::go_on ? outcome::refresh : end;  // half a step has no omega to go on with
    }
    precondition(run_, r_, phat_, "preconditioning_bicgstab_step2");
    const double ts = checked(multiply_and_dot(run_.fine(), phat_, t_, r_)), tt = checked(dot(n_, t_, t_));
    if (tt == 0.0) return half > 0.0 ? outcome::singular : judge(half);
    omega_ = ts / tt;
    add_scaled(n_, omega_, phat_, run_.fine().u);
    add_scaled(n_, -omega_, t_, r_);
    return judge(vector_norm(n_, r_, run_.s.c.norm_typ, routine));
  }

  outcome judge(double quasi) {
    switch (judge_step(run_, words, quasi, previous_, t_)) {
      case verdict::done:
        return outcome::done;
      case verdict::refresh:
        copy(n_, t_, r_);
        return outcome::refresh;
      case verdict::go_on:
        break;
    }
    return outcome::go_on;
  }

  /// Another shadow residual first, then a new residual alone, then a new guess.
  void restart() {
    level& l = run_.fine();
    const char* kind = "Re-start of BI-CGSTAB on level 1 (cgstab)!";
    if (restarts_ == 1) kind = "Re-start with modified <rbar> on level 1 (cgstab)!";
    if (restarts_ > 2) {
      kind = "Re-start with new initial guess on level 1 (cgstab)!";
      fill(n_, 0.0, l.u);
    }
    info(message_class::warning, kind);
    run_.results.res_out = real_residual(run_, r_);
    begin();
    if (restarts_ == 1) precondition(run_, r_, rbar_, "preconditioning_bicgstab_step1");
  }

  void give_up(double first, outcome end) {
    run_.results.res_out = real_residual(run_, r_);
    if (run_.rules.reached(run_.results.res_out)) return;
    if (run_.results.res_out < 0.9 * first) {
      warn(warn_bicgstab_restarts, "BiCGstab on level 1 (cgstab) stopped: too many restarts!");
      return;
    }
    if (end == outcome::singular)
      fail(ierr_bicgstab_breakdown, "Breakdown of BiCGstab on level 1 (cgstab): Given matrix is singular!");
    fail(ierr_bicgstab_breakdown, "BiCGstab failed on level 1 (cgstab) after repeated restart!");
  }

  accelerated_run& run_;
  int n_, restarts_ = 0;
  krylov_block vectors_;
  view<double> r_ = vectors_(1), rbar_ = vectors_(2), p_ = vectors_(3), v_ = vectors_(4), phat_ = vectors_(5),
               t_ = vectors_(6);
  double rho_ = 1.0, alpha_ = 1.0, omega_ = 1.0, previous_ = 0.0;
};

}  // namespace

void cgstab(accelerated_run& run) { cgstab_run(run).iterate(); }

}  // namespace tier
