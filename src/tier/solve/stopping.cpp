// Stopping rules of the accelerators.
#include "tier/solve/stopping.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tier/store/formatted.h"
#include "tier/store/info.h"
#include "tier/store/report.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

constexpr double tiny = 2.2250738585072014e-308, tiny_approximation = 2.2250738585072014e-307;

/// max |x - y| and max(|x|, |y|)
struct distance {
  double difference = 0.0, size = 0.0;
};
distance between(int n, const double* x, view<const double> y) {
  distance d;
  for (int i = 1; i <= n; ++i) {
    d.difference = std::max(d.difference, std::abs(x[i - 1] - y[i]));
    d.size = std::max({d.size, std::abs(x[i - 1]), std::abs(y[i])});
  }
  return d;
}

}  // namespace

double stop_target(double eps, double floor, double reference) {
  constexpr double least_floor = 1e-20;
  const double target = eps >= 0.0 ? eps * reference : -eps;
  return floor > least_floor ? std::max(target, floor) : target;
}

stopping_rules::stopping_rules(const stopping_options& o, int n, double target)
    : o_(o), n_(n), target_(target) {
  if (o.old_residuals > 0) old_res_.allocate(o.old_residuals + 1, "resids", "resids_alloc");
  if (o.old_approximations > 0)
    old_apps_.allocate(static_cast<std::int64_t>(o.old_approximations) * n, "apps", "apps_alloc");
}

double stopping_rules::kept(int steps_ago) const {
  const int size = o_.old_residuals + 1;
  return old_res_[(residuals_ - 1 - steps_ago) % size + 1];
}

bool stopping_rules::small_variation() const {
  if (o_.old_residuals < 1 || residuals_ <= o_.old_residuals) return false;
  double most = kept(0), least = most;
  for (int ago = 1; ago <= o_.old_residuals; ++ago) {
    most = std::max(most, kept(ago));
    least = std::min(least, kept(ago));
  }
  return most <= o_.residual_spread * least;
}

void stopping_rules::store_residual(double res) {
  if (o_.old_residuals < 1) return;
  old_res_[residuals_ % (o_.old_residuals + 1) + 1] = res;
  ++residuals_;
  const bool was = stagnating_;
  stagnating_ = small_variation();
  if (stagnating_ && !was)
    info(message_class::note, "Small variation of residual norms (num_old_res+1=" +
                                  std::to_string(o_.old_residuals + 1) + "): stagnation?!");
}

stopping_rules::status stopping_rules::of_residuals() const {
  if (o_.old_residuals < 1 || residuals_ < 2) return status::not_converged;
  if (stagnating_) return status::stagnation;
  const int steps = std::min(residuals_ - 1, o_.old_residuals);
  int up = 0;
  for (int ago = 0; ago < steps; ++ago) up += kept(ago) > kept(ago + 1) ? 1 : 0;
  if (up == 0) return status::not_converged;
  return up == steps ? status::divergence : status::oscillation;
}

// The approximations stand still when all of the kept ones are close to the new one; what that means
// is told by the residuals.
void stopping_rules::check_approximations(view<const double> u) {
  if (o_.old_approximations < 1) return;
  bool close = approximations_ >= o_.old_approximations, decided = true;
  for (int m = 0; m < std::min(approximations_, o_.old_approximations); ++m) {
    const distance d = between(n_, old_apps_.data() + static_cast<std::int64_t>(m) * n_, u);
    if (d.size < tiny_approximation) {
      info(message_class::note, "Max. values of current and previous approximation are zero!");
      decided = false;
      break;
    }
    close = close && d.difference < o_.change * d.size;
  }
  double* place = old_apps_.data() + static_cast<std::int64_t>(approximations_ % o_.old_approximations) * n_;
  std::copy_n(u.data(), n_, place);
  ++approximations_;
  approximation_ = status::none;
  if (!decided || !close) return;
  info(message_class::note, "Approximation criterion fulfilled (with current value of factor_app_var)!");
  approximation_ = of_residuals();
  const char* words[] = {"", "not converged", "stagnation", "oscillation", "divergence"};
  info(message_class::note,
       std::string("==> overall status: ") + words[static_cast<int>(approximation_)] + "!");
}

decision stopping_rules::decide(int niter, double res) const {
  if (niter < o_.least_steps) return decision::go_on;
  const bool still = approximation_ == status::stagnation || approximation_ == status::oscillation;
  const bool any = (o_.by_residual && reached(res)) || (o_.by_approximations && still);
  const bool all = (!o_.by_residual || reached(res)) && (!o_.by_approximations || still);
  if (o_.all ? all : any) return reached(res) ? decision::converged : decision::stagnation;
  return stagnating_ ? decision::stagnation : decision::go_on;
}

bool stopping_rules::quasi_differs(double quasi, double real) const {
  const double smaller = std::min(quasi, real), larger = std::max(quasi, real);
  if (!(larger > tiny) || larger < o_.quasi_ratio * smaller) return false;
  const std::string tag(norm_tag(o_.norm));
  info(message_class::warning, formatted("norm of quasi %s-residual = %.5e", tag.c_str(), quasi));
  info(message_class::warning, formatted("norm of real  %s-residual = %.5e", tag.c_str(), real));
  return true;
}

}  // namespace tier
