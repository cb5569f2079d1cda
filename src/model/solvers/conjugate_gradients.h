// Conjugate gradients in double precision, step by step, under a preconditioner that is all but a solution.
// Called by the direct solver, whose factor in single precision is one.
#pragma once

#include "model/model_tables.h"
#include "run/base/column.h"

namespace keld {

/// Solves A x = f from x = 0, all [1..n], till the true residual is at most `target` times the load. The
/// caller puts z = M r into preconditioned() and calls advance(), as long as there is something to do; so
/// that several solutions can share one pass over M. M may differ from step to step by its rounding: a
/// direction is made conjugate to the last one by its product with A (flexible conjugate gradients, Golub and
/// Ye, SIAM J. Sci. Comput. 21 (1999) 1305-1320).
class ConjugateGradients {
 public:
  ConjugateGradients(const CompressedSystem& triangle, const Column<double>& load, double target,
                     Column<double>& x);

  enum class State { running, solved, failed };  // failed: A or M isn't positive definite
  State state() const { return state_; }
  int steps() const { return steps_; }

  const Column<double>& residual() const { return r_; }  // [1..n]
  Column<double>& preconditioned() { return z_; }        // [1..n]
  void advance();

  /// Of the present x, by the residual as the steps have carried it on.
  double relativeResidual() const;

  /// The share of the way to the target that is done, in powers of ten: 0 at the start, 1 at the end.
  double progress() const;

 private:
  void takeStep();

  const CompressedSystem& triangle_;
  const Column<double>& load_;
  Column<double>& x_;
  const double target_, goal_;
  Column<double> r_, z_, p_, minusAp_;  // [1..n]
  double curvature_ = 0.0;              // p.Ap of the last step; 0: the next goes along z
  int steps_ = 0;
  State state_ = State::running;
};

}  // namespace keld
