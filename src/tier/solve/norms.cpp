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
inline double take(double s, double r, int norm_typ) {
  if (norm_typ == 1) return s + std::abs(r);
  if (norm_typ == 2) return std::abs(r) <= s ? s : (std::isnan(s) ? s : std::abs(r));
  return s + r * r;
}

/// Norm of n numbers before finish_norm; terms(chunk, add) calls add(r) for those of a chunk.
template <class Terms>
double accumulate(int n, int team, int norm_typ, Terms terms) {
  const auto part = [&](const row_chunk& c) {
    double s = 0.0;
    terms(c, [&s, norm_typ](double r) { s = take(s, r, norm_typ); });
    return s;
  };
  if (norm_typ != 2 || team <= 1) return sum_chunks(n, team, part);
  thread_parts parts;
  int ran = 1;
#pragma omp parallel num_threads(team)
  {
    const row_chunk c = chunk_here(n);
    parts.put(c.tid, part(c));
    if (c.tid == 0) ran = c.team;
  }
  return parts.largest(ran);
}

}  // namespace

double finish_norm(double s, int norm_typ, const char* routine) {
  if (s != s) fail(ierr_residual_nan, std::string("NaN detected in (") + routine + ")!");
  if (s > std::numeric_limits<double>::max())
    fail(ierr_residual_overflow, std::string("Residual overflow caught in (") + routine + ")!");
  return norm_typ == 1 || norm_typ == 2 ? s : std::sqrt(s);
}

double resid(const level& l, const_vector f, const_vector u, int norm_typ) {
  const double s = accumulate(l.n, matrix_team(l.n), norm_typ, [&](const row_chunk& c, auto add) {
    for_row_products(l, c, u.data(), [&](int i, double product) { add(f[i] - product); });
  });
  return finish_norm(s, norm_typ, "resid");
}

double compute_residual_norm(const level& l, const_vector f, const_vector u, vector r, int norm_typ) {
  const double s = accumulate(l.n, matrix_team(l.n), norm_typ, [&](const row_chunk& c, auto add) {
    for_row_products(l, c, u.data(), [&](int i, double product) { add(r[i] = f[i] - product); });
  });
  return finish_norm(s, norm_typ, "compute_residual_norm");
}

double vector_norm(int n, const_vector r, int norm_typ, const char* routine) {
  const double s = accumulate(n, vector_team(n), norm_typ, [r](const row_chunk& c, auto add) {
    for (int i = c.lo; i <= c.hi; ++i) add(r[i]);
  });
  return finish_norm(s, norm_typ, routine);
}

double unknowns_resids(const level& l, const_vector f, const_vector u, int nsys, int norm_typ,
                       vector by_function) {
  constexpr const char* routine = "unknowns_resids";
  for (int s = 1; s <= nsys; ++s) by_function[s] = 0.0;
  double whole = 0.0;
  for_row_products(l, row_chunk{1, l.n, 0, 1}, u.data(), [&](int i, double product) {
    const double r = f[i] - product;
    double& own = by_function[l.iu ? l.iu[i] : 1];
    own = take(own, r, norm_typ);
    whole = take(whole, r, norm_typ);
  });
  for (int s = 1; s <= nsys; ++s) by_function[s] = finish_norm(by_function[s], norm_typ, routine);
  return finish_norm(whole, norm_typ, routine);
}

}  // namespace tier
