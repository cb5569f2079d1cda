// Dense factors by LAPACK.
#include "tier/solve/dense_solver.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tier/solve/lapack.h"

namespace tier {

namespace {

constexpr const char* routine = "gauss_alloc";

}  // namespace

bool dense_solver::factorise(const level& l, view<const int> pinned, dense_method method) {
  n_ = l.n;
  method_ = method;
  a_.allocate(static_cast<std::int64_t>(n_) * n_, 0.0, "gauss", routine);
  x_.allocate(n_, "x", routine);
  rows_.allocate(n_, 0, "rows", routine);
  columns_.allocate(n_, 0, "columns", routine);
  for (int i = 1; i <= n_; ++i) {
    const bool pin = pinned && pinned[i] != 0;
    const int end = pin ? l.ia[i] + 1 : l.ia[i + 1];
    for (int k = l.ia[i]; k < end; ++k) a_[i + static_cast<std::int64_t>(l.ja[k] - 1) * n_] += l.a[k];
  }
  int outcome = 0;
  switch (method) {
    case dense_method::partial_pivoting:
      dgetrf_(&n_, &n_, a_.data(), &n_, rows_.data(), &outcome);
      break;
    case dense_method::full_pivoting:
      dgetc2_(&n_, a_.data(), &n_, rows_.data(), columns_.data(), &outcome);
      break;
    case dense_method::least_squares:
      return factorise_qr();
  }
  return outcome == 0 && std::isfinite(a_[static_cast<std::int64_t>(n_) * n_]);
}

// A P = Q R with column pivoting; the rank is where R's diagonal falls to rounding.
bool dense_solver::factorise_qr() {
  int outcome = 0, query = -1;
  double wanted = 1.0;
  tau_.allocate(n_, "tau", routine);
  dgeqp3_(&n_, &n_, a_.data(), &n_, columns_.data(), tau_.data(), &wanted, &query, &outcome);
  work_.allocate(static_cast<std::int64_t>(wanted) + 32 * std::int64_t{n_}, "work", routine);
  const int room = static_cast<int>(work_.size());
  dgeqp3_(&n_, &n_, a_.data(), &n_, columns_.data(), tau_.data(), work_.data(), &room, &outcome);
  const double least = std::abs(a_[1]) * n_ * std::numeric_limits<double>::epsilon();
  rank_ = 0;
  while (rank_ < n_ && std::abs(a_[rank_ + 1 + static_cast<std::int64_t>(rank_) * n_]) > least) ++rank_;
  return outcome == 0;
}

void dense_solver::substitute_qr(view<double> u) {
  const int one = 1, room = static_cast<int>(work_.size());
  int outcome = 0;
  dormqr_("L", "T", &n_, &one, &n_, a_.data(), &n_, tau_.data(), x_.data(), &n_, work_.data(), &room,
          &outcome);
  dtrtrs_("U", "N", "N", &rank_, &one, a_.data(), &n_, x_.data(), &n_, &outcome);
  for (int i = 1; i <= n_; ++i) u[columns_[i]] = i <= rank_ ? x_[i] : 0.0;
}

void dense_solver::substitute(view<const double> f, view<double> u) {
  const int one = 1;
  int outcome = 0;
  double shrink = 1.0;  // dgesc2 scales the right-hand side to keep the solution representable
  std::copy_n(f.data(), n_, x_.data());
  if (method_ == dense_method::least_squares) return substitute_qr(u);
  if (method_ == dense_method::full_pivoting)
    dgesc2_(&n_, a_.data(), &n_, x_.data(), rows_.data(), columns_.data(), &shrink);
  else
    dgetrs_("N", &n_, &one, a_.data(), &n_, rows_.data(), x_.data(), &n_, &outcome);
  for (int i = 1; i <= n_; ++i) u[i] = x_[i] / shrink;
}

}  // namespace tier
