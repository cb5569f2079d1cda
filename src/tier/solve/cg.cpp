// Conjugate gradients: old_cgc, new_cgc and the flexible form.
#include <algorithm>
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

enum class ratio { fletcher_reeves, polak_ribiere };

constexpr const char* preconditioning[] = {"preconditioning_old_cgc", "preconditioning_new_cgc",
                                           "preconditioning_flexcg"};

/// Restarts after a product that a positive definite matrix and preconditioner cannot give.
class breakdowns {
 public:
  breakdowns(accelerated_run& run, const char* routine) : run_(run), routine_(routine) {}

  /// True when `product` is positive. Else warns and counts; past maxop_restart the run fails.
  bool positive(double product, const char* name) {
    finish_norm(product < 0.0 ? -product : product, norm_kind::sum, routine_);
    if (product > 0.0) return true;
    const std::string where = std::string(" on level 1 (") + routine_ + ")";
    warn(warn_cg_restart, std::string(product < 0.0 ? "Negative (" : "Zero (") + name + ")" + where + "!");
    if (++count_ > run_.s.o.acceleration.most_restarts)
      fail(ierr_cg_breakdown,
           "Breakdown of CG" + where +
               ": too many restarts: Given matrix is not positive definite (numerically)!");
    return false;
  }

  /// A step along z gives the restart another residual.
  void modify_guess(view<const double> z, view<double> r) {
    warn(warn_cg_restart, std::string("Modification of initial guess (") + routine_ + ").");
    level& l = run_.fine();
    add_scaled(l.n, 1.0, z, l.u);
    run_.results.res_out = real_residual(run_, r);
  }

 private:
  accelerated_run& run_;
  const char* routine_;
  int count_ = 0;
};

class cg_run {
 public:
  cg_run(accelerated_run& run, ratio kind)
      : run_(run),
        n_(run.fine().n),
        kind_(kind),
        words_{"CG", kind == ratio::fletcher_reeves ? "old_cgc" : "new_cgc", warn_cg_quasi_residual,
               warn_cg_not_converged},
        vectors_(n_, kind == ratio::polak_ribiere ? 5 : 4, "cg", words_.routine),
        breakdowns_(run, words_.routine) {}

  void iterate() {
    if (no_steps_left(run_, words_)) return;
    double previous = run_.results.res_out = real_residual(run_, r_);
    bool first = true;
    while (run_.results.res_out > 0.0) {
      const bool moved = step(first);
      first = !moved;
      if (!moved) {
        breakdowns_.modify_guess(z_, r_);
        continue;
      }
      const double quasi = vector_norm(n_, r_, run_.s.c.norm_typ, words_.routine);
      const verdict v = judge_step(run_, words_, quasi, previous, ap_);
      if (v == verdict::done) return;
      if (v == verdict::refresh) {
        copy(n_, ap_, r_);
        first = true;
      }
    }
  }

 private:
  bool step(bool first) {
    const bool old_kind = kind_ == ratio::fletcher_reeves;
    precondition(run_, r_, z_, preconditioning[old_kind ? 0 : 1]);
    const double rho = dot(n_, r_, z_);
    if (!breakdowns_.positive(rho, "rho_old")) return false;
    if (first) {
      copy(n_, z_, p_);
    } else {
      const double beta = old_kind ? rho / rho_old_ : (rho - dot(n_, r_old(), z_)) / rho_old_;
      scale_and_add(n_, beta, z_, p_);
    }
    rho_old_ = rho;
    const double pap = multiply_and_dot(run_.fine(), p_, ap_, p_);
    if (!breakdowns_.positive(pap, "Ap,p")) return false;
    double along = rho;
    if (old_kind) {
      along = dot(n_, r_, p_);
      if (!breakdowns_.positive(along, "res,p")) return false;
    } else {
      copy(n_, r_, r_old());
    }
    add_scaled(n_, along / pap, p_, run_.fine().u);
    add_scaled(n_, -along / pap, ap_, r_);
    return true;
  }

  view<double> r_old() { return vectors_(5); }

  accelerated_run& run_;
  int n_;
  ratio kind_;
  accelerator_words words_;
  krylov_block vectors_;
  view<double> r_ = vectors_(1), z_ = vectors_(2), p_ = vectors_(3), ap_ = vectors_(4);
  breakdowns breakdowns_;
  double rho_old_ = 1.0;
};

class flexible_cg_run {
 public:
  explicit flexible_cg_run(accelerated_run& run)
      : run_(run),
        n_(run.fine().n),
        most_(std::max(1, std::min(run.s.o.acceleration.dimension, run.s.c.ncycle - run.results.ncyc_done))),
        words_{"CG", "flexcg_skcycle", warn_cg_quasi_residual, warn_cg_not_converged},
        p_(n_, most_, "p", words_.routine),
        ap_(n_, most_, "ap", words_.routine),
        vectors_(n_, 2, "cg", words_.routine),
        breakdowns_(run, words_.routine) {
    pap_.allocate(most_, "pap", words_.routine);
  }

  void iterate() {
    if (no_steps_left(run_, words_)) return;
    double previous = run_.results.res_out = real_residual(run_, r_);
    while (run_.results.res_out > 0.0) {
      if (!step()) {
        kept_ = 0;
        breakdowns_.modify_guess(z_, r_);
        continue;
      }
      const double quasi = vector_norm(n_, r_, run_.s.c.norm_typ, words_.routine);
      const verdict v = judge_step(run_, words_, quasi, previous, z_);
      if (v == verdict::done) return;
      if (v == verdict::refresh) {
        copy(n_, z_, r_);
        kept_ = 0;
      }
    }
  }

 private:
  /// The new direction is z made A-orthogonal to all kept ones; a full store begins again with the newest.
  bool step() {
    precondition(run_, r_, z_, preconditioning[2]);
    if (!breakdowns_.positive(dot(n_, r_, z_), "rho_old")) return false;
    if (kept_ == most_) begin_again();
    const view<double> p = p_(kept_ + 1), ap = ap_(kept_ + 1);
    copy(n_, z_, p);
    for (int i = 1; i <= kept_; ++i) add_scaled(n_, -dot(n_, z_, ap_(i)) / pap_[i], p_(i), p);
    const double pap = multiply_and_dot(run_.fine(), p, ap, p);
    if (!breakdowns_.positive(pap, "Ap,p")) return false;
    pap_[++kept_] = pap;
    const double along = dot(n_, r_, p) / pap;
    add_scaled(n_, along, p, run_.fine().u);
    add_scaled(n_, -along, ap, r_);
    return true;
  }

  void begin_again() {
    if (most_ == 1) {
      kept_ = 0;
      return;
    }
    copy(n_, p_(most_), p_(1));
    copy(n_, ap_(most_), ap_(1));
    pap_[1] = pap_[most_];
    kept_ = 1;
  }

  accelerated_run& run_;
  int n_, most_, kept_ = 0;
  accelerator_words words_;
  krylov_block p_, ap_, vectors_;
  view<double> r_ = vectors_(1), z_ = vectors_(2);
  work_array<double> pap_;
  breakdowns breakdowns_;
};

}  // namespace

void old_cgc(accelerated_run& run) { cg_run(run, ratio::fletcher_reeves).iterate(); }
void new_cgc(accelerated_run& run) { cg_run(run, ratio::polak_ribiere).iterate(); }
void flexcg_skcycle(accelerated_run& run) { flexible_cg_run(run).iterate(); }

}  // namespace tier
