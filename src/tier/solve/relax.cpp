// Gauss-Seidel and Jacobi steps on one level.
#include "tier/solve/relax.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "tier/frame/ierr.h"
#include "tier/frame/info.h"
#include "tier/solve/matrix_ops.h"
#include "tier/solve/row_loop.h"

namespace tier {

namespace {

enum class rows { fine, all, coarse };

struct relaxation {
  const level& l;
  const split_rows* split;
  const_vector f;
  vector u, u_start;
  double omega;  // SOR factor, 0: none
};

/// row_sum with columns outside lo..hi read from u_start.
inline double row_sum_from_two(const int* ja, const double* a, const double* u1, const double* start1, int lo,
                               int hi, std::int64_t count) {
  const auto width = static_cast<unsigned>(hi - lo);
  const auto value = [=](int j) {
    const double* from = static_cast<unsigned>(j - lo) <= width ? u1 : start1;
    return from[j - 1];
  };
  double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
  std::int64_t k = 0;
  for (; k + 4 <= count; k += 4) {
    s0 += a[k] * value(ja[k]);
    s1 += a[k + 1] * value(ja[k + 1]);
    s2 += a[k + 2] * value(ja[k + 2]);
    s3 += a[k + 3] * value(ja[k + 3]);
  }
  for (; k < count; ++k) s0 += a[k] * value(ja[k]);
  return (s0 + s1) + (s2 + s3);
}

/// Positions first..last of the split's list whose rows lie in the chunk; for all rows the rows themselves.
struct stretch {
  int first, last;
};
template <rows Which>
stretch rows_of_chunk(const relaxation& x, const row_chunk& c) {
  if constexpr (Which == rows::all) return {c.lo, c.hi};
  const int* list = x.split->row.data();
  const int from = Which == rows::coarse ? 0 : x.split->coarse;
  const int to = Which == rows::coarse ? x.split->coarse : x.l.n;
  const auto place = [=](int row) {
    return static_cast<int>(std::lower_bound(list + from, list + to, row) - list);
  };
  return {place(c.lo) + 1, place(c.hi + 1)};
}

constexpr int rows_ahead = 5;  // a row of the analysis is about 800 bytes

[[gnu::always_inline]] inline void fetch_row(const int* ia, const int* ja, const double* a, int i) {
  constexpr int line = 64;
  const int first = ia[i - 1] - 1, end = ia[i] - 1;
  for (int p = first; p < end; p += line / static_cast<int>(sizeof(double))) __builtin_prefetch(a + p);
  for (int p = first; p < end; p += line / static_cast<int>(sizeof(int))) __builtin_prefetch(ja + p);
}

/// The sweep over one chunk; `Alone` when the chunk is the whole level.
template <rows Which, bool Alone>
void sweep(const relaxation& x, const row_chunk& c, bool descending) {
  const int* ia = x.l.ia.data();
  const int* ja = x.l.ja.data();
  const double* a = x.l.a.data();
  const double *f = x.f.data(), *start = x.u_start.data();
  double* u = x.u.data();
  const int* list = Which == rows::all ? nullptr : x.split->row.data();
  const stretch range = rows_of_chunk<Which>(x, c);
  const int way = descending ? -1 : 1, count = range.last - range.first + 1;
  int at = descending ? range.last : range.first;
  for (int done = 0; done < count; ++done, at += way) {
    const int i = Which == rows::all ? at : list[at - 1];
    if (Which != rows::all && done + rows_ahead < count)
      fetch_row(ia, ja, a, list[at - 1 + rows_ahead * way]);
    const int diagonal = ia[i - 1] - 1;
    const int others = ia[i] - 2 - diagonal;
    if constexpr (Which == rows::all) fetch_ahead(ja + diagonal, a + diagonal, others);
    const double sum =
        Alone ? row_sum(ja + diagonal + 1, a + diagonal + 1, u, others)
              : row_sum_from_two(ja + diagonal + 1, a + diagonal + 1, u, start, c.lo, c.hi, others);
    const double value = (f[i - 1] - sum) / a[diagonal];
    u[i - 1] = x.omega > 0.0 ? x.omega * value + (1.0 - x.omega) * u[i - 1] : value;
  }
}

template <rows Which>
void gauss_seidel(const relaxation& x, bool descending) {
  for_chunks(x.l.n, matrix_team(x.l.n), [&x, descending](const row_chunk& c) {
    if (c.team == 1) {
      sweep<Which, true>(x, c, descending);
      return;
    }
    for (int i = c.lo; i <= c.hi; ++i) x.u_start[i] = x.u[i];
    team_barrier(c);
    sweep<Which, false>(x, c, descending);
  });
}

void jacobi(const relaxation& x, const jacobi_damping& damping) {
  for_chunks(x.l.n, matrix_team(x.l.n), [&](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) {
      const double omega = damping.by_function ? damping.by_function[x.l.iu ? x.l.iu[i] : 1] : damping.all;
      const double r = x.f[i] - row_product(x.l, i, x.u.data());
      x.u_start[i] = x.u[i] + omega * r / x.l.a[x.l.ia[i]];
    }
    team_barrier(c);
    for (int i = c.lo; i <= c.hi; ++i) x.u[i] = x.u_start[i];
  });
}

}  // namespace

split_rows::split_rows(int n, const int* icg) {
  row.allocate(n, "split", "relx_gs");
  for (int i = 1; i <= n; ++i)
    if (icg[i - 1] > 0) row[++coarse] = i;
  for (int i = 1, to = coarse; i <= n; ++i)
    if (icg[i - 1] <= 0) row[++to] = i;
}

void relx_gs(const level& l, const split_rows* split, const_vector f, vector u, int step,
             const jacobi_damping& damping, vector scratch, const char* routine) {
  const int mode = std::abs(step);
  if (mode < 1 || mode > 7)
    fail(ierr_illegal_value, std::string("Unknown relaxation step requested in (") + routine + ")");
  relaxation x{l, split, f, u, scratch, 0.0};
  if (mode == 7) {
    jacobi(x, damping);
    return;
  }
  const bool descending = (mode > 3) != (step < 0);
  const int filter = split ? (mode > 3 ? mode - 3 : mode) : 2;
  if (filter == 2 && mode <= 3 && step > 0) x.omega = parm::omega_sor_do;
  if (filter == 1)
    gauss_seidel<rows::fine>(x, descending);
  else if (filter == 2)
    gauss_seidel<rows::all>(x, descending);
  else
    gauss_seidel<rows::coarse>(x, descending);
}

}  // namespace tier
