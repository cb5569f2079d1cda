// Flexible GMRES with restarts on level 1.
#include <algorithm>
#include <cmath>
#include <limits>

#include "tier/solve/accelerators.h"
#include "tier/solve/cycle_state.h"
#include "tier/solve/gmres_kernels.h"
#include "tier/solve/matrix_ops.h"
#include "tier/solve/norms.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/report.h"

namespace tier {

namespace {

constexpr const char* routine = "gmres";
constexpr const char* not_converged = "GMRes stop: not converged (gmres)!";

/// The small least-squares problem of one restart: H by columns, reduced to a triangle as it grows.
class hessenberg {
 public:
  explicit hessenberg(int most) : most_(most) {
    h_.allocate(static_cast<std::int64_t>(most) * (most + 1), "#3", routine);
    for (work_array<double>* x : {&cosine_, &sine_, &g_, &y_}) x->allocate(most + 1, "#4", routine);
  }

  view<double> column(int j) {
    return view<double>(h_.data() + static_cast<std::int64_t>(j - 1) * (most_ + 1));
  }
  view<const double> y() const { return y_; }

  void start(double norm) { g_[1] = norm; }

  /// Applies the rotations so far to column j, makes a new one; returns the norm of the new residual.
  double reduce(int j) {
    const view<double> h = column(j);
    for (int i = 1; i < j; ++i) {
      const double upper = h[i];
      h[i] = cosine_[i] * upper + sine_[i] * h[i + 1];
      h[i + 1] = cosine_[i] * h[i + 1] - sine_[i] * upper;
    }
    const double d = std::hypot(h[j], h[j + 1]);
    cosine_[j] = d > 0.0 ? h[j] / d : 1.0;
    sine_[j] = d > 0.0 ? h[j + 1] / d : 0.0;
    h[j] = d;
    g_[j + 1] = -sine_[j] * g_[j];
    g_[j] *= cosine_[j];
    return std::abs(g_[j + 1]);
  }

  /// y with H y = g for the first j columns; a column without pivot takes no part.
  void solve(int j) {
    for (int i = j; i >= 1; --i) {
      double s = g_[i];
      for (int k = i + 1; k <= j; ++k) s -= column(k)[i] * y_[k];
      const double pivot = column(i)[i];
      y_[i] = pivot != 0.0 ? s / pivot : 0.0;
    }
  }

 private:
  int most_;
  work_array<double> h_, cosine_, sine_, g_, y_;
};

// dependent: the new column is rounding of the others; breakdown: it is zero
enum class inner_end { full, limit, stopped, dependent, breakdown };

class gmres_run {
 public:
  gmres_run(accelerated_run& run, int columns)
      : run_(run),
        n_(run.fine().n),
        columns_(columns),
        v_(n_, columns + 1, "#1", routine),
        z_(n_, columns, "#2", routine),
        small_(columns) {}

  void iterate() {
    double norm = first_ = restart();
    if (beta_ == 0.0) {
      info(message_class::note, "Residual already zero (gmres)!");
      run_.results.res_out = norm;
      return;
    }
    previous_ = norm;
    for (;;) {
      ratio_ = norm / beta_;
      const inner_end end = inner_loop();
      const double quasi = estimate_, before = norm;
      norm = restart();
      run_.results.res_out = norm;
      run_.rules.check_approximations(run_.fine().u);
      if (finished(end, quasi, before, norm)) return;
      previous_ = norm;
    }
  }

 private:
  /// The real residual into v(1), its length into beta_; returns its norm in the norm of the run.
  double restart() {
    const double norm = real_residual(run_, v_(1));
    const norm_kind kind = run_.s.c.norm_typ;
    const bool other = kind == norm_kind::sum || kind == norm_kind::largest;
    beta_ = other ? vector_norm(n_, v_(1), norm_kind::euclidean, routine) : norm;
    return norm;
  }

  inner_end inner_loop() {
    scale(n_, 1.0 / beta_, v_(1));
    small_.start(beta_);
    estimate_ = beta_;
    inner_end end = inner_end::full;
    int j = 0;
    while (j < columns_ && end == inner_end::full) end = step(++j);
    small_.solve(j);
    add_combination(n_, j, z_, small_.y(), run_.fine().u);
    return end;
  }

  inner_end step(int j) {
    precondition(run_, v_(j), z_(j), "preconditioning_gmres");
    const view<double> w = v_(j + 1), h = small_.column(j);
    h[1] = multiply_and_dot(run_.fine(), z_(j), w, v_(1));
    const double last = finish_norm(orthogonalise(n_, j, v_, h, w), norm_kind::euclidean, routine);
    double before = last * last;
    for (int i = 1; i <= j; ++i) before += h[i] * h[i];
    const bool dependent = !(last > std::numeric_limits<double>::epsilon() * std::sqrt(before));
    h[j + 1] = dependent ? 0.0 : last;
    estimate_ = small_.reduce(j);
    end_step(run_, estimate_ * ratio_, previous_);
    if (dependent) return last == 0.0 ? inner_end::breakdown : inner_end::dependent;
    if (run_.rules.decide(run_.results.ncyc_done, estimate_ * ratio_) != decision::go_on)
      return inner_end::stopped;
    if (run_.results.ncyc_done >= run_.s.c.ncycle) return inner_end::limit;
    if (j < columns_) scale(n_, 1.0 / last, w);
    return inner_end::full;
  }

  /// Whether the run ends with the real residual `norm`, with the warning or error that belongs to it.
  bool finished(inner_end end, double quasi, double before, double norm) {
    const stopping_rules& rules = run_.rules;
    const int steps = run_.results.ncyc_done;
    const decision now = rules.decide(steps, norm);
    const bool at_limit = steps >= run_.s.c.ncycle;
    if (rules.reached(norm) && (now != decision::go_on || at_limit || beta_ == 0.0)) return true;
    // Columns that depend on each other to rounding alone may come from what is left of a good reduction.
    const bool dependent = end == inner_end::dependent, gained = norm <= 0.5 * before;
    const bool no_way = end == inner_end::breakdown || (dependent && !gained && norm > 1e-8 * first_);
    const bool missed = !rules.reached(norm);
    if (missed && no_way)
      fail(ierr_gmres_breakdown, "Breakdown of GMRES on level 1 (gmres): Given matrix is singular!");
    const bool goes_on = dependent && gained;  // the quasi-residual of dependent columns is 0
    if (missed && !goes_on && rules.quasi_differs(quasi * ratio_, beta_ * ratio_)) {
      warn(warn_gmres_quasi_residual, "GMRes stop: quasi and real residual too different (gmres)!");
      return true;
    }
    if (now == decision::stagnation) {
      warn(warn_gmres_not_converged, "GMRes stop: stagnation (gmres)!");
      return true;
    }
    if (at_limit) warn(warn_gmres_not_converged, not_converged);
    return at_limit;
  }

  accelerated_run& run_;
  int n_, columns_;
  krylov_block v_, z_;
  hessenberg small_;
  double beta_ = 0.0;      // Euclidean length of the restart's residual
  double ratio_ = 1.0;     // norm of the run over Euclidean length, at the restart
  double estimate_ = 0.0;  // Euclidean length by the rotations
  double first_ = 0.0;     // norm at the start of the run
  double previous_ = 0.0;
};

}  // namespace

void gmres(accelerated_run& run) {
  const int steps_left = run.s.c.ncycle - run.results.ncyc_done;
  if (steps_left < 1) return warn(warn_gmres_not_converged, not_converged);
  gmres_run(run, std::min(run.s.o.acceleration.dimension, steps_left)).iterate();
}

}  // namespace tier
