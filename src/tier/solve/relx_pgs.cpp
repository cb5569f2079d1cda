// Point-block Gauss-Seidel.
#include "tier/solve/relx_pgs.h"

#include <algorithm>
#include <cstdlib>

#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier {

namespace {

enum { fine_points = 1, all_points = 2, coarse_points = 3 };

bool is_coarse(const point_blocks& points, const int* icg, int p) {
  for (int q = points.start[p]; q < points.start[p + 1]; ++q)
    if (icg[points.variable[q] - 1] > 0) return true;
  return false;
}

void relax_point(level& l, point_blocks& points, int p, bool pivot) {
  const int m = points.size_of(p), first = points.start[p];
  double *a = points.system.data(), *b = a + std::int64_t{m} * m;
  std::fill(a, b, 0.0);
  for (int q = 0; q < m; ++q) {
    const int i = points.variable[first + q];
    double d = l.f[i];
    for (int k = l.ia[i]; k < l.ia[i + 1]; ++k) {
      const int j = l.ja[k];
      if (l.ip[j] == p)
        a[q * m + points.place[j]] += l.a[k];
      else
        d -= l.a[k] * l.u[j];
    }
    b[q] = d;
  }
  if (!solve_small(m, a, b, points.order.data(), pivot))
    fail(ierr_block_pivot, "Zero pivot in block relaxation (relx_pgs)!");
  for (int q = 0; q < m; ++q) l.u[points.variable[first + q]] = b[q];
}

}  // namespace

void relx_pgs(level& l, point_blocks& points, const int* icg, int step, bool full_pivoting) {
  const int mode = std::abs(step);
  if (mode < 1 || mode > 6) fail(ierr_illegal_value, "Unknown relaxation step requested in (relx_pgs)!");
  const bool descending = (mode > 3) != (step < 0);
  const int filter = icg ? (mode - 1) % 3 + 1 : all_points;
  for (int done = 1; done <= points.points; ++done) {
    const int p = descending ? points.points + 1 - done : done;
    if (points.size_of(p) == 0) continue;
    if (filter != all_points && is_coarse(points, icg, p) != (filter == coarse_points)) continue;
    relax_point(l, points, p, full_pivoting);
  }
}

}  // namespace tier
