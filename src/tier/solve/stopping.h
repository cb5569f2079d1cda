// The stopping rules within accelerators: residual, stagnation, approximations, and their combination.
// Made by tier_solve for one solution; asked by the accelerators after each step.
#pragma once

#include <string_view>

#include "tier/store/choices.h"
#include "tier/store/work_arrays.h"

namespace tier {

/// What ends a solution.
struct stopping_options {
  bool all = true;                 // all enabled tests must agree, else any of them (icrits, first digit)
  bool by_residual = true;         // the residual is tested (second and fourth digit)
  bool by_approximations = false;  // whether approximations move is tested (third digit)
  int old_residuals = 0;           // norms that are kept beside the newest, for stagnation (iauto_stop)
  int old_approximations = 0;      // approximations that are kept (iauto_stop)
  double residual_spread = 1.01;   // largest over smallest kept norm that is stagnation (factor_res_var)
  double change = 1e-10;           // relative, below it approximations stand still (factor_app_var)
  double quasi_ratio = 1.5;  // from it on updated and real residual are too different (factor_quasi_res)
  double floor = 0.0;        // target of the residual at least, where it is above 1e-20 (eps_abs)
  int least_steps = 0;       // before them nothing ends the solution (ncyc_min)
  norm_kind norm = norm_kind::euclidean;  // that the residuals are measured in
};

/// The residual that ends a solution whose first one is `reference`: eps times that, or -eps where eps is
/// negative, and not below `floor`.
double stop_target(double eps, double floor, double reference);

enum class decision { go_on, converged, stagnation };

class stopping_rules {
 public:
  /// Allocates the stores that the options ask for; n is the length of an approximation.
  stopping_rules(const stopping_options& o, int n, double target);

  bool reached(double res) const { return res <= target_; }

  /// Takes the residual norm of a new step into the store of the last old_residuals + 1.
  void store_residual(double res);

  /// Tests a new approximation against the last old_approximations ones, then stores it.
  void check_approximations(view<const double> u);

  /// Combines the tests. In force from step least_steps on.
  decision decide(int niter, double res) const;

  /// Whether the norms of the updated and of the freshly computed residual are apart by quasi_ratio or
  /// more; tells both.
  bool quasi_differs(double quasi, double real) const;

 private:
  enum class status { none, not_converged, stagnation, oscillation, divergence };
  bool small_variation() const;
  status of_residuals() const;
  double kept(int steps_ago) const;

  const stopping_options o_;
  int n_;
  double target_;
  int residuals_ = 0, approximations_ = 0;  // taken so far
  bool stagnating_ = false;
  status approximation_ = status::none;
  work_array<double> old_res_;   // ring of old_residuals + 1
  work_array<double> old_apps_;  // ring of old_approximations vectors
};

}  // namespace tier
