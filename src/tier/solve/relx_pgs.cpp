// Point-block Gauss-Seidel.
#include "tier/solve/relx_pgs.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "tier/frame/ierr.h"
#include "tier/frame/info.h"
#include "tier/frame/parameters.h"

namespace tier {

namespace {

enum { fine_points = 1, all_points = 2, coarse_points = 3 };

bool is_coarse(const point_blocks& points, const int* icg, int p) {
  for (int q = points.start[p]; q < points.start[p + 1]; ++q)
    if (icg[points.variable[q] - 1] > 0) return true;
  return false;
}

/// Room for the system of a point; points are small, larger ones take storage once per step.
class small_system {
 public:
  explicit small_system(int m) {
    if (m <= usual) return;
    values_.resize(static_cast<std::size_t>(m) * static_cast<std::size_t>(m + 1));
    places_.resize(static_cast<std::size_t>(m));
  }
  double* matrix() { return values_.empty() ? few_.data() : values_.data(); }
  double* right(int m) { return matrix() + m * m; }
  int* order() { return places_.empty() ? few_places_.data() : places_.data(); }

 private:
  static constexpr int usual = 8;
  std::array<double, usual*(usual + 1)> few_;
  std::array<int, usual> few_places_;
  std::vector<double> values_;
  std::vector<int> places_;
};

void relax_point(level& l, const point_blocks& points, int p, small_system& room) {
  const int m = points.size_of(p), first = points.start[p];
  double *a = room.matrix(), *b = room.right(m);
  std::fill_n(a, m * m, 0.0);
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
  if (!solve_small(m, a, b, room.order(), parm::ibgs_pivot != 0))
    fail(ierr_block_pivot, "Zero pivot in block relaxation (relx_pgs)!");
  for (int q = 0; q < m; ++q) l.u[points.variable[first + q]] = b[q];
}

}  // namespace

void relx_pgs(level& l, const point_blocks& points, const int* icg, int step) {
  const int mode = std::abs(step);
  if (mode < 1 || mode > 6) fail(ierr_illegal_value, "Unknown relaxation step requested in (relx_pgs)!");
  const bool descending = (mode > 3) != (step < 0);
  const int filter = icg ? (mode - 1) % 3 + 1 : all_points;
  small_system room(points.largest);
  for (int done = 1; done <= points.points; ++done) {
    const int p = descending ? points.points + 1 - done : done;
    if (points.size_of(p) == 0) continue;
    if (filter != all_points && is_coarse(points, icg, p) != (filter == coarse_points)) continue;
    relax_point(l, points, p, room);
  }
}

}  // namespace tier
