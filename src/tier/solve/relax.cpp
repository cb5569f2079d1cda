// Gauss-Seidel and Jacobi steps on one level.
#include "tier/solve/relax.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "tier/solve/matrix_ops.h"
#include "tier/solve/sweep_code.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

struct relaxation {
  const level& l;
  const sweep_rows& rows;
  const_vector f;
  vector u, scratch;
  double sor_factor;
};

/// A Gauss-Seidel step, decoded.
struct sweep_kind {
  bool fine = true, coarse = true, descending = false;
  double omega = 0.0;  // SOR factor, 0: none
};

sweep_kind decode_step(const relaxation& x, int step) {
  const bool by_state = x.rows.by_state();
  const int mode = std::abs(step), filter = by_state ? (mode - 1) % 3 + 1 : 2;
  sweep_kind kind{filter != 3, filter != 1, (mode > 3) != (step < 0)};
  if (filter == 2 && mode <= 3 && step > 0) kind.omega = x.sor_factor;
  return kind;
}

/// body(place) for two ascending stretches, merged by the numbers of their rows.
template <class Body>
void for_places(const level& l, stretch x, stretch y, bool descending, Body body) {
  if (descending) {
    while (!y.empty() && !x.empty()) body(l.row_at(x.last) > l.row_at(y.last) ? x.last-- : y.last--);
    if (x.empty()) std::swap(x, y);
    for (int place = x.last; place >= x.first; --place) body(place);
  } else {
    while (!y.empty() && !x.empty()) body(l.row_at(x.first) < l.row_at(y.first) ? x.first++ : y.first++);
    if (x.empty()) std::swap(x, y);
    for (int place = x.first; place <= x.last; ++place) body(place);
  }
}

/// The sweep over a range of rows in the vector v. In threads v is a thread's own: x.u gets the new values
/// too, and diagonals have what the rows add to them: u_i <- u_i + r_i / (a_ii + added_i).
template <bool in_threads>
void sweep(const relaxation& x, const row_block& part, const sweep_kind& kind, double* v) {
  const int* const ia = x.l.ia.data();
  const int* const ja = x.l.ja.data();
  const double* const a = x.l.a.data();
  const double* const f = x.f.data();
  const double* const added = x.rows.added().data();
  double* const shared = x.u.data();
  const auto relax_row = [=, &l = x.l](int place) {
    const int i = l.row_at(place) - 1, first = ia[place - 1];
    const int others = ia[place] - 1 - first;  // behind the diagonal, from 0
    fetch_ahead(ja + first, a + first, others, kind.descending);
    const double extra = in_threads ? added[place - 1] : 0.0;
    const double inverse = -1.0 / (a[first - 1] + extra);  // in time, while the sum waits for the row before
    const double start = in_threads ? -f[i] - extra * v[i] : -f[i];
    const double value = row_sum(ja + first, a + first, v, others, start) * inverse;
    v[i] = kind.omega > 0.0 ? kind.omega * value + (1.0 - kind.omega) * v[i] : value;
    if (in_threads) shared[i] = v[i];
  };
  for_places(x.l, kind.fine ? part.fine : stretch{}, kind.coarse ? part.coarse : stretch{}, kind.descending,
             relax_row);
}

/// One thread's own copy of u, with those rows of other threads that it reads.
class private_copy {
 public:
  private_copy(const relaxation& x, int thread)
      : x_(x),
        rows_(x.rows.of_thread(thread)),
        v_(x.scratch.data() + static_cast<std::int64_t>(thread) * x.l.n) {}

  void load() {
    const double* const u = x_.u.data();
    for (const row_block& block : rows_.block) std::copy(u + block.lo - 1, u + block.hi, v_ + block.lo - 1);
    load_foreign({1, static_cast<int>(rows_.foreign.size())});
  }
  /// What other threads have smoothed in a round.
  void load_foreign(int round) { load_foreign(rows_.foreign_of_round[round]); }
  void run(const sweep_kind& kind, int round) { sweep<true>(x_, rows_.block[round], kind, v_); }

 private:
  void load_foreign(const stretch& columns) {
    const int* const foreign = rows_.foreign.data();
    for (int k = columns.first - 1; k < columns.last; ++k) v_[foreign[k] - 1] = x_.u[foreign[k]];
  }

  const relaxation& x_;
  const thread_rows& rows_;
  double* v_;
};

void gauss_seidel_in_threads(const relaxation& x, std::span<const int> steps) {
  const int team = x.rows.team(), rounds = x.rows.rounds();
  for_chunks(x.l.n, team, [&x, steps, team, rounds](const row_chunk& c) {
    // The runtime may give fewer threads than the rows were shared out for.
    const auto for_own = [&](auto work) {
      for (int t = c.tid; t < team; t += c.team) {
        private_copy copy(x, t);
        work(copy);
      }
    };
    for_own([](private_copy& copy) { copy.load(); });
    team_barrier(c);
    int last_round = -1;
    for (const int step : steps) {
      const sweep_kind kind = decode_step(x, step);
      for (int turn = 0; turn < rounds; ++turn) {
        const int round = kind.descending ? rounds - 1 - turn : turn;
        if (round == last_round) team_barrier(c);  // the sweep turns: others may still read these rows
        last_round = round;
        for_own([&](private_copy& copy) { copy.run(kind, round); });
        team_barrier(c);
        for_own([&](private_copy& copy) { copy.load_foreign(round); });
      }
    }
  });
}

void gauss_seidel(const relaxation& x, std::span<const int> steps) {
  if (x.rows.team() > 1) return gauss_seidel_in_threads(x, steps);
  for (const int step : steps) sweep<false>(x, x.rows.all(), decode_step(x, step), x.u.data());
}

void jacobi(const relaxation& x, const jacobi_damping& damping) {
  for_chunks(x.l.n, matrix_team(x.l.n), [&](const row_chunk& c) {
    for (int place = c.lo; place <= c.hi; ++place) {
      const int i = x.l.row_at(place);
      const double omega = damping.by_function ? damping.by_function[x.l.iu ? x.l.iu[i] : 1] : damping.all;
      const double r = x.f[i] - row_product(x.l, place, x.u.data());
      x.scratch[i] = x.u[i] + omega * r / x.l.a[x.l.ia[place]];
    }
    team_barrier(c);
    for (int i = c.lo; i <= c.hi; ++i) x.u[i] = x.scratch[i];
  });
}

}  // namespace

void relx_gs(const level& l, const sweep_rows& rows, const_vector f, vector u, std::span<const int> steps,
             const sweep_options& o, vector scratch) {
  for (const int step : steps)
    if (step == 0 || std::abs(step) > jacobi_step)
      fail(ierr_illegal_value, std::string("Unknown relaxation step requested in (") + o.routine + ")");
  const relaxation x{l, rows, f, u, scratch, o.sor_factor};
  const auto is_jacobi = [](int step) { return std::abs(step) == jacobi_step; };
  for (auto step = steps.begin(); step != steps.end();) {
    if (is_jacobi(*step)) {
      jacobi(x, o.damping);
      ++step;
      continue;
    }
    const auto end = std::find_if(step, steps.end(), is_jacobi);
    gauss_seidel(x, {step, end});
    step = end;
  }
}

}  // namespace tier
