// The minimisation step of the V*-cycle.
#include "tier/solve/minimize.h"

#include "tier/solve/matrix_ops.h"
#include "tier/solve/transfer.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier {

namespace {

[[noreturn]] void zero_pivot() {
  fail(ierr_solution_internal, "Zero pivot in improving corrections (minimize)");
}

bool next_level_counts(const cycle_state& s, int level_start) {
  return s.o.cycle.star == star_cycle::two_directions && level_start + 1 < s.h.levels_used;
}

}  // namespace

void keep_before_correction(cycle_state& s, int level_start, int k) {
  if (k == level_start)
    copy(s.at(k).n, s.at(k).u, s.copy1);
  else if (k == level_start + 1 && next_level_counts(s, level_start))
    copy(s.at(k).n, s.at(k).u, s.copy2);
}

void minimize(cycle_state& s, int level_start) {
  level& l = s.at(level_start);
  const int n = l.n;
  residual(l, l.f, s.copy1, s.r);
  subtract(n, l.u, s.copy1, s.e1);
  const double scale = dot(n, s.e1, s.e1);
  if (scale == 0.0) return;  // nothing was corrected
  const double a11 = multiply_and_dot(l, s.e1, s.ae, s.e1), b1 = dot(n, s.e1, s.r);
  if (!next_level_counts(s, level_start)) {
    if (a11 == 0.0) zero_pivot();
    copy(n, s.copy1, l.u);
    add_scaled(n, b1 / a11, s.e1, l.u);
    return;
  }
  level& coarse = s.at(level_start + 1);
  subtract(coarse.n, coarse.u, s.copy2, s.copy2);
  fill(n, 0.0, s.e2);
  interpolate(l, s.copy2, s.e2);
  const double a21 = dot(n, s.e2, s.ae), b2 = dot(n, s.e2, s.r);
  const double a22 = multiply_and_dot(l, s.e2, s.ae, s.e2), a12 = dot(n, s.e1, s.ae);
  double x1 = 0.0, x2 = 0.0;
  if (dot(n, s.e2, s.e2) == 0.0) {
    if (a11 == 0.0) zero_pivot();
    x1 = b1 / a11;
  } else {
    const double determinant = a11 * a22 - a12 * a21;
    if (a11 == 0.0 || determinant == 0.0) zero_pivot();
    x1 = (b1 * a22 - b2 * a12) / determinant;
    x2 = (a11 * b2 - a21 * b1) / determinant;
  }
  copy(n, s.copy1, l.u);
  add_scaled(n, x1, s.e1, l.u);
  add_scaled(n, x2, s.e2, l.u);
}

}  // namespace tier
