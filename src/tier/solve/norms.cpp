// Residual norms.
#include "tier/solve/norms.h"

#include <cmath>
#include <limits>
#include <string>

#include "tier/solve/matrix_ops.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

/// One term of a norm taken into the running sum or maximum; a NaN stays in either.
inline double take(double s, double r, norm_kind norm) {
  if (norm == norm_kind::sum) return s + std::abs(r);
  if (norm == norm_kind::largest) return std::abs(r) <= s ? s : (std::isnan(s) ? s : std::abs(r));
  return s + r * r;
}

/// Norm of n numbers before finish_norm; terms(chunk, add) calls add(r) for those of a chunk.
template <class Terms>
double accumulate(int n, int team, norm_kind norm, Terms terms) {
  const auto part = [&](const row_chunk& c) {
    double s = 0.0;
    terms(c, [&s, norm](double r) { s = take(s, r, norm); });
    return s;
  };
  return norm == norm_kind::largest ? largest_of_chunks(n, team, part) : sum_chunks(n, team, part);
}

}  // namespace

double finish_norm(double s, norm_kind norm, const char* routine) {
  if (s != s) fail(ierr_residual_nan, std::string("NaN detected in (") + routine + ")!");
  if (s > std::numeric_limits<double>::max())
    fail(ierr_residual_overflow, std::string("Residual overflow caught in (") + routine + ")!");
  return norm == norm_kind::sum || norm == norm_kind::largest ? s : std::sqrt(s);
}

double resid(const level& l, const_vector f, const_vector u, norm_kind norm) {
  const double s = accumulate(l.n, matrix_team(l.n), norm, [&](const row_chunk& c, auto add) {
    for_row_products(l, c, u.data(), [&](int i, double product) { add(f[i] - product); });
  });
  return finish_norm(s, norm, "resid");
}

double compute_residual_norm(const level& l, const_vector f, const_vector u, vector r, norm_kind norm) {
  const double s = accumulate(l.n, matrix_team(l.n), norm, [&](const row_chunk& c, auto add) {
    for_row_products(l, c, u.data(), [&](int i, double product) { add(r[i] = f[i] - product); });
  });
  return finish_norm(s, norm, "compute_residual_norm");
}

double vector_norm(int n, const_vector r, norm_kind norm, const char* routine) {
  const double s = accumulate(n, vector_team(n), norm, [r](const row_chunk& c, auto add) {
    for (int i = c.lo; i <= c.hi; ++i) add(r[i]);
  });
  return finish_norm(s, norm, routine);
}

double unknowns_resids(const level& l, const_vector f, const_vector u, int nsys, norm_kind norm,
                       vector by_function) {
  constexpr const char* routine = "unknowns_resids";
  for (int s = 1; s <= nsys; ++s) by_function[s] = 0.0;
  double whole = 0.0;
  for_row_products(l, row_chunk{1, l.n, 0, 1}, u.data(), [&](int i, double product) {
    const double r = f[i] - product;
    double& own = by_function[l.iu ? l.iu[i] : 1];
    own = take(own, r, norm);
    whole = take(whole, r, norm);
  });
  for (int s = 1; s <= nsys; ++s) by_function[s] = finish_norm(by_function[s], norm, routine);
  return finish_norm(whole, norm, routine);
}

}  // namespace tier
