// Steps of flexible conjugate gradients; see the header.
#include "model/solvers/conjugate_gradients.h"

#include <algorithm>
#include <cmath>

#include "model/solvers/upper_triangle.h"

namespace keld {

namespace {

double dot(const Column<double>& a, const Column<double>& b) {
  double sum = 0.0;
  for (int i = 1; i <= a.rows(); ++i) sum += a[i] * b[i];
  return sum;
}

double norm(const Column<double>& a) { return std::sqrt(dot(a, a)); }

}  // namespace

ConjugateGradients::ConjugateGradients(const CompressedSystem& triangle, const Column<double>& load,
                                       double target, Column<double>& x)
    : triangle_(triangle),
      load_(load),
      x_(x),
      target_(target),
      goal_(target * norm(load)),
      r_(load),
      z_(load.rows()),
      p_(load.rows()),
      minusAp_(load.rows()) {
  std::fill(x_.begin(), x_.end(), 0.0);
  if (norm(r_) <= goal_) state_ = State::solved;  // a zero load
}

/// A residual that seems small enough is formed anew, as rounding may have parted it from the true one; then
/// the steps begin anew from that.
void ConjugateGradients::advance() {
  takeStep();
  if (state_ == State::failed || norm(r_) > goal_) return;
  trueResidual(triangle_, load_, x_, r_);
  if (norm(r_) <= goal_) state_ = State::solved;
  curvature_ = 0.0;
}

void ConjugateGradients::takeStep() {
  const double beta = curvature_ > 0.0 ? dot(z_, minusAp_) / curvature_ : 0.0;
  for (int i = 1; i <= p_.rows(); ++i) p_[i] = z_[i] + beta * p_[i];
  std::fill(minusAp_.begin(), minusAp_.end(), 0.0);
  subtractProduct(triangle_, p_, minusAp_);
  curvature_ = -dot(p_, minusAp_);
  if (!(dot(z_, r_) > 0.0 && curvature_ > 0.0)) {  // NaN too
    state_ = State::failed;
    return;
  }
  const double length = dot(p_, r_) / curvature_;
  for (int i = 1; i <= p_.rows(); ++i) {
    x_[i] += length * p_[i];
    r_[i] += length * minusAp_[i];
  }
  ++steps_;
}

double ConjugateGradients::relativeResidual() const { return norm(r_) / norm(load_); }

double ConjugateGradients::progress() const { return std::log(relativeResidual()) / std::log(target_); }

}  // namespace keld
