// Gauss-Seidel and Jacobi steps on one level.
#include "tier/solve/relax.h"

#include <algorithm>
#include <array>
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

/// The rows of a thread: two ranges half a level apart.
struct owned_rows {
  int lo[2], count[2];
  bool marked = false;  // the list of rows marks those that have columns elsewhere

  int hi(int range) const { return lo[range] + count[range] - 1; }
  bool has(int j) const { return static_cast<unsigned>(within(j, 0)) | static_cast<unsigned>(within(j, 1)); }

 private:
  bool within(int j, int range) const {
    return static_cast<unsigned>(j - lo[range]) < static_cast<unsigned>(count[range]);
  }
};

/// Block b of 2 * team of n rows in equal blocks: its first row.
int first_of_block(int n, int b, int team) { return b == 2 * team ? n + 1 : 1 + b * (n / (2 * team)); }

owned_rows rows_of_thread(int n, const split_rows* split, const row_chunk& c) {
  owned_rows own;
  own.marked = split && split->team == c.team;
  for (int range : {0, 1}) {
    const int b = c.tid + range * c.team;
    const auto first = [&](int block) {
      return own.marked ? split->bounds[block + 1] : first_of_block(n, block, c.team);
    };
    own.lo[range] = first(b);
    own.count[range] = first(b + 1) - first(b);
  }
  return own;
}

/// row_sum with columns of other threads read from u_start.
inline double row_sum_from_two(const int* ja, const double* a, const double* u1, const double* start1,
                               const owned_rows& own, std::int64_t count) {
  const auto value = [=](int j) { return (own.has(j) ? u1 : start1)[j - 1]; };
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

/// Positions first..last of a list.
struct stretch {
  int first, last;
};

/// Where the list of C or of F rows holds rows lo..hi; its border rows stand with a minus sign.
stretch rows_between(const split_rows& split, bool coarse, int lo, int hi) {
  const int* const list = split.row.data();
  const int from = coarse ? 0 : split.coarse, to = coarse ? split.coarse : static_cast<int>(split.row.size());
  const auto place = [=](int row) {
    const auto before = [](int entry, int wanted) { return std::abs(entry) < wanted; };
    return static_cast<int>(std::lower_bound(list + from, list + to, row, before) - list);
  };
  return {place(lo) + 1, place(hi + 1)};
}

constexpr int rows_ahead = 5;  // a row of the analysis is about 800 bytes

[[gnu::always_inline]] inline void fetch_row(const int* ia, const int* ja, const double* a, int i) {
  constexpr int line = 64;
  const int first = ia[i - 1] - 1, end = ia[i] - 1;
  for (int p = first; p < end; p += line / static_cast<int>(sizeof(double))) __builtin_prefetch(a + p);
  for (int p = first; p < end; p += line / static_cast<int>(sizeof(int))) __builtin_prefetch(ja + p);
}

/// The sweep over rows lo..hi of the thread that owns `own`; `Alone` when it owns the whole level. Rows in
/// the midst of its own are summed as by one thread.
template <rows Which, bool Alone>
void sweep(const relaxation& x, int lo, int hi, const owned_rows& own, bool descending) {
  const int* ia = x.l.ia.data();
  const int* ja = x.l.ja.data();
  const double* a = x.l.a.data();
  const double *f = x.f.data(), *start = x.u_start.data();
  double* u = x.u.data();
  const int* list = Which == rows::all ? nullptr : x.split->row.data();
  const stretch range =
      Which == rows::all ? stretch{lo, hi} : rows_between(*x.split, Which == rows::coarse, lo, hi);
  const int way = descending ? -1 : 1, count = range.last - range.first + 1;
  int at = descending ? range.last : range.first;
  for (int done = 0; done < count; ++done, at += way) {
    const int entry = Which == rows::all ? -at : list[at - 1], i = std::abs(entry);
    if (Which != rows::all && done + rows_ahead < count)
      fetch_row(ia, ja, a, std::abs(list[at - 1 + rows_ahead * way]));
    const int first = ia[i - 1], others = ia[i] - 1 - first;  // behind the diagonal, from 0
    if constexpr (Which == rows::all) fetch_ahead(ja + first, a + first, others);
    const double sum = Alone || (own.marked && entry > 0)
                           ? row_sum(ja + first, a + first, u, others)
                           : row_sum_from_two(ja + first, a + first, u, start, own, others);
    const double value = (f[i - 1] - sum) / a[first - 1];
    u[i - 1] = x.omega > 0.0 ? x.omega * value + (1.0 - x.omega) * u[i - 1] : value;
  }
}

template <rows Which>
void gauss_seidel(const relaxation& x, bool descending) {
  for_chunks(x.l.n, x.split ? x.split->team : matrix_team(x.l.n), [&x, descending](const row_chunk& c) {
    if (c.team == 1) {
      sweep<Which, true>(x, c.lo, c.hi, {}, descending);
      return;
    }
    const owned_rows own = rows_of_thread(x.l.n, x.split, c);
    for (int range : {0, 1})
      for (int i = own.lo[range]; i <= own.hi(range); ++i) x.u_start[i] = x.u[i];
    team_barrier(c);
    for (int turn : {0, 1}) {
      const int range = descending ? 1 - turn : turn;
      sweep<Which, false>(x, own.lo[range], own.hi(range), own, descending);
    }
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

split_rows::split_rows(const level& l, const split_rows* finer) : team(matrix_team(l.n)) {
  row.allocate(l.n, "split", "relx_gs");
  for (int i = 1; i <= l.n; ++i)
    if (l.icg[i] > 0) row[++coarse] = i;
  for (int i = 1, to = coarse; i <= l.n; ++i)
    if (l.icg[i] <= 0) row[++to] = i;
  if (team == 1) return;
  bounds.allocate(2 * team + 1, "split", "relx_gs");
  const bool follows = finer && finer->team == team && finer->coarse == l.n;
  for (int b = 0; b <= 2 * team; ++b)
    bounds[b + 1] = follows ? rows_between(*finer, true, finer->bounds[b + 1], finer->bounds[b + 1]).first
                            : first_of_block(l.n, b, team);
  mark_borders(l);
}

void split_rows::mark_borders(const level& l) {
  for_chunks(l.n, team, [&](const row_chunk& c) {
    const owned_rows own = rows_of_thread(l.n, this, c);
    std::array<stretch, 4> mine;
    for (int k = 0; k < 4; ++k) mine[k] = rows_between(*this, k < 2, own.lo[k % 2], own.hi(k % 2));
    team_barrier(c);  // the searches read what is marked now
    for (const stretch& part : mine)
      for (int at = part.first; at <= part.last; ++at) {
        const int i = row[at];
        const int *first = &l.ja[l.ia[i]], *end = first + (l.ia[i + 1] - l.ia[i]);
        if (!std::all_of(first, end, [&own](int j) { return own.has(j); })) row[at] = -i;
      }
  });
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
