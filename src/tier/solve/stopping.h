// The stopping rules within accelerators: residual, stagnation, approximations, and their combination.
// Made by tier_solve for one solution; asked by the accelerators after each step.
#pragma once

#include <string_view>

#include "tier/store/controls.h"
#include "tier/store/work_arrays.h"

namespace tier {

enum class decision { go_on, converged, stagnation };

class stopping_rules {
 public:
  /// Allocates the stores that the controls ask for; n is the length of an approximation.
  stopping_rules(const controls& c, int n, double target);

  bool reached(double res) const { return res <= target_; }

  /// Takes the residual norm of a new step into the store of the last num_old_res + 1.
  void store_residual(double res);

  /// Tests a new approximation against the last num_old_apps ones, then stores it.
  void check_approximations(view<const double> u);

  /// Combines the flags by icrits. In force from step ncyc_min on.
  decision decide(int niter, double res) const;

  /// Whether the norms of the updated and of the freshly computed residual are apart by factor_quasi_res or
  /// more; tells both.
  bool quasi_differs(double quasi, double real) const;

 private:
  enum class status { none, not_converged, stagnation, oscillation, divergence };
  bool small_variation() const;
  status of_residuals() const;
  double kept(int steps_ago) const;

  const controls& c_;
  int n_;
  double target_;
  int residuals_ = 0, approximations_ = 0;  // taken so far
  bool stagnating_ = false;
  status approximation_ = status::none;
  work_array<double> old_res_;   // ring of num_old_res + 1
  work_array<double> old_apps_;  // ring of num_old_apps vectors
};

}  // namespace tier
