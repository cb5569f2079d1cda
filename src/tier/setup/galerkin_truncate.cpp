// Thinning of coarse operators.
#include "tier/setup/galerkin_truncate.h"

#include <cmath>
#include <cstdlib>
#include <string>

#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier {

namespace {

/// A negative column marks an entry that goes.
void mark_counterpart(level& lv, int i, int j) {
  for (int p = lv.ia[j] + 1; p < lv.ia[j + 1]; ++p) {
    if (std::abs(lv.ja[p]) != i) continue;
    lv.ja[p] = -i;
    return;
  }
  fail(ierr_galerkin_truncation, "Truncation of Galerkin failed: symmetric counterpart missing!");
}

void mark_small(level& lv, double eps, bool by_rows) {
  for (int i = 1; i <= lv.n; ++i) {
    const double limit = lv.a[lv.ia[i]] * eps;
    for (int p = lv.ia[i] + 1; p < lv.ia[i + 1]; ++p) {
      if (lv.ja[p] < 0 || std::abs(lv.a[p]) > limit) continue;
      const int j = lv.ja[p];
      lv.ja[p] = -j;
      if (!by_rows) mark_counterpart(lv, i, j);
    }
  }
}

/// Removes marked entries in place; returns the number of diagonals at or below 0.
int compact(level& lv) {
  int next = 1, first = 1, nonpositive = 0;
  for (int i = 1; i <= lv.n; ++i) {
    const int end = lv.ia[i + 1], diagonal = next;
    for (int p = first; p < end; ++p) {
      if (lv.ja[p] < 0) {
        lv.a[diagonal] += lv.a[p];
      } else {
        lv.ja[next] = lv.ja[p];
        lv.a[next++] = lv.a[p];
      }
    }
    nonpositive += lv.a[diagonal] <= 0.0;
    first = end;
    lv.ia[i + 1] = next;
  }
  return nonpositive;
}

}  // namespace

void galerkin_truncate(level& lv, double eps, bool by_rows) {
  mark_small(lv, eps, by_rows);
  const int nonpositive = compact(lv);
  lv.own_ja.resize(lv.entries(), "ja", "galerkin_truncate");
  lv.own_a.resize(lv.entries(), "a", "galerkin_truncate");
  lv.ja = lv.own_ja;
  lv.a = lv.own_a;
  if (nonpositive > 0)
    fail(ierr_galerkin_truncation,
         "Truncation of Galerkin failed: " + std::to_string(nonpositive) + " non-positive diagonals!");
}

}  // namespace tier
