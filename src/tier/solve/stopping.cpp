// Stopping rules of the accelerators.
#include "tier/solve/stopping.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tier/store/formatted.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"
#include "tier/store/report.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

constexpr double tiny = 2.2250738585072014e-308, tiny_approximation = 2.2250738585072014e-307;

std::string figure(double x) { return formatted("%.5e", x); }

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

stopping_rules::stopping_rules(const controls& c, int n, double target) : c_(c), n_(n), target_(target) {
  if (c.num_old_res > 0) old_res_.allocate(c.num_old_res + 1, "resids", "resids_alloc");
  if (c.num_old_apps > 0)
    old_apps_.allocate(static_cast<std::int64_t>(c.num_old_apps) * n, "apps", "apps_alloc");
}

double stopping_rules::kept(int steps_ago) const {
  const int size = c_.num_old_res + 1;
  return old_res_[(residuals_ - 1 - steps_ago) % size + 1];
}

bool stopping_rules::small_variation() const {
  if (c_.num_old_res < 1 || residuals_ <= c_.num_old_res) return false;
  double most = kept(0), least = most;
  for (int ago = 1; ago <= c_.num_old_res; ++ago) {
    most = std::max(most, kept(ago));
    least = std::min(least, kept(ago));
  }
  return most <= parm().factor_res_var * least;
}

void stopping_rules::store_residual(double res) {
  if (c_.num_old_res < 1) return;
  old_res_[residuals_ % (c_.num_old_res + 1) + 1] = res;
  ++residuals_;
  const bool was = stagnating_;
  stagnating_ = small_variation();
  if (stagnating_ && !was)
    info(message_class::note, "Small variation of residual norms (num_old_res+1=" +
                                  std::to_string(c_.num_old_res + 1) + "): stagnation?!");
}

stopping_rules::status stopping_rules::of_residuals() const {
  if (c_.num_old_res < 1 || residuals_ < 2) return status::not_converged;
  if (stagnating_) return status::stagnation;
  const int steps = std::min(residuals_ - 1, c_.num_old_res);
  int up = 0;
  for (int ago = 0; ago < steps; ++ago) up += kept(ago) > kept(ago + 1) ? 1 : 0;
  if (up == 0) return status::not_converged;
  return up == steps ? status::divergence : status::oscillation;
}

// The approximations stand still when all of the last num_old_apps are close to the new one; what that means
// is told by the residuals.
void stopping_rules::check_approximations(view<const double> u) {
  if (c_.num_old_apps < 1) return;
  bool close = approximations_ >= c_.num_old_apps, decided = true;
  for (int m = 0; m < std::min(approximations_, c_.num_old_apps); ++m) {
    const distance d = between(n_, old_apps_.data() + static_cast<std::int64_t>(m) * n_, u);
    if (d.size < tiny_approximation) {
      info(message_class::note, "Max. values of current and previous approximation are zero!");
      decided = false;
      break;
    }
    close = close && d.difference < parm().factor_app_var * d.size;
  }
  double* place = old_apps_.data() + static_cast<std::int64_t>(approximations_ % c_.num_old_apps) * n_;
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

// Digit 2 of icrits enables the residual, 3 the status of the approximations, 4 the scaled residual, which is
// the residual here. Digit 1: 2 takes the largest enabled flag, 1 their product.
decision stopping_rules::decide(int niter, double res) const {
  if (niter < parm().ncyc_min) return decision::go_on;
  const bool still = approximation_ == status::stagnation || approximation_ == status::oscillation;
  const bool flags[] = {reached(res), still, reached(res)};
  bool any = false, all = true;
  for (std::size_t digit = 2; digit <= 4; ++digit) {
    if (c_.icrits[digit] == 0) continue;
    any = any || flags[digit - 2];
    all = all && flags[digit - 2];
  }
  if (c_.icrits[1] == 2 ? any : all) return reached(res) ? decision::converged : decision::stagnation;
  return stagnating_ ? decision::stagnation : decision::go_on;
}

bool stopping_rules::quasi_differs(double quasi, double real) const {
  const double smaller = std::min(quasi, real), larger = std::max(quasi, real);
  if (!(larger > tiny) || larger < parm().factor_quasi_res * smaller) return false;
  const std::string tag(norm_tag(c_.norm_typ));
  info(message_class::warning, "norm of quasi " + tag + "-residual = " + figure(quasi));
  info(message_class::warning, "norm of real  " + tag + "-residual = " + figure(real));
  return true;
}

}  // namespace tier
