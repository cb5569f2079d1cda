// Restriction and interpolation between two levels.
#include "tier/solve/transfer.h"

#include "tier/solve/matrix_ops.h"
#include "tier/store/row_loop.h"

namespace tier {

void resc(const level& fine, level& coarse, vector r) {
  const int n = fine.n, nc = coarse.n;
  const vector fc = coarse.f, uc = coarse.u;
  for_chunks(n, restriction_team(n), [&, nc, fc, uc](const row_chunk& c) {
    for_row_products(fine, c, fine.u.data(),
                     [r, f = fine.f](int i, double product) { r[i] = f[i] - product; });
    team_barrier(c);
    const row_chunk rows = chunk_like(c, nc);
    for (int i = rows.lo; i <= rows.hi; ++i) {
      const int first = fine.rt[i];
      fc[i] =
          row_sum(fine.jrt.data() + first - 1, fine.wrt.data() + first - 1, r.data(), fine.rt[i + 1] - first);
      uc[i] = 0.0;
    }
  });
}

void interpolate(const level& fine, const_vector y, vector x) {
  for_chunks(fine.n, matrix_team(fine.n), [&fine, x, y](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) {
      double s = 0.0;
      for (int k = fine.iw[i]; k < fine.iw[i + 1]; ++k) s += fine.w[k] * y[fine.jw[k]];
      x[i] += s;
    }
  });
}

void inta(level& fine, const level& coarse) { interpolate(fine, coarse.u, fine.u); }

}  // namespace tier
