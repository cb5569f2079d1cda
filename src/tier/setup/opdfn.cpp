// Galerkin products by rows of the coarse operator.
#include "tier/setup/opdfn.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "tier/setup/coarse_row.h"
#include "tier/setup/couplings.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/numbered.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

/// The name in messages.
const char* routine_of(opdfn_variant variant) {
  switch (variant) {
    case opdfn_variant::detrlen:
      return "opdfn_detrlen";
    case opdfn_variant::detrlen_mg:
      return "opdfn_detrlen_mg";
    case opdfn_variant::dynalloc:
      return "opdfn_dynalloc";
    case opdfn_variant::dynalloc_mg:
      return "opdfn_dynalloc_mg";
    case opdfn_variant::lists:
      return "opdfn_lists";
    default:
      return "opdfn";
  }
}

/// Whether a first sweep determines the row lengths.
bool counts_first(opdfn_variant variant) {
  return variant == opdfn_variant::detrlen || variant == opdfn_variant::detrlen_mg;
}

/// First coarse row of each thread and the end, thread t has bounds[t] .. bounds[t + 1] - 1.
numbered_list<int> equal_rows(int nc, int team) {
  numbered_list<int> bounds;
  for (int t = 0; t < team; ++t) {
    int lo = 1, hi = nc;
    chunk_of_thread(1, nc, t, team, lo, hi);
    bounds.push_back(lo);
  }
  bounds.push_back(nc + 1);
  return bounds;
}

/// The same with equal numbers of products r a_il.
numbered_list<int> equal_work(const level& fine, int nc, int team) {
  const auto work_of = [&fine](int c) {
    std::int64_t work = 0;
    for (int t = fine.rt[c]; t < fine.rt[c + 1]; ++t) work += fine.ia[fine.jrt[t] + 1] - fine.ia[fine.jrt[t]];
    return work;
  };
  std::int64_t total = 0;
  for (int c = 1; c <= nc; ++c) total += work_of(c);
  numbered_list<int> bounds{1};
  std::int64_t sum = 0;
  for (int c = 1; c <= nc; ++c) {
    while (bounds.count() < team && sum >= total * bounds.count() / team) bounds.push_back(c);
    sum += work_of(c);
  }
  while (bounds.count() <= team) bounds.push_back(nc + 1);
  return bounds;
}

/// The work arrays that all variants share.
struct product {
  const level& fine;
  level& coarse;
  bool keep_zeros;
  const char* routine;
  numbered_list<int> bounds;
  int marked = 0;            // fine variables with a marker: all, or none where no row of R A is formed
  int room = 0;              // of a row of R A
  work_array<int> integers;  // markers and columns of each thread
  work_array<double> sums;   // of a row of R A, for each thread

  product(const level& f, level& c, opdfn_variant variant, bool zeros, numbered_list<int> parts)
      : fine(f), coarse(c), keep_zeros(zeros), routine(routine_of(variant)), bounds(std::move(parts)) {
    if (!counts_first(variant) && !sums_restricted_rows(fine)) return;
    const std::int64_t longest = std::int64_t{longest_row(fine.rt, coarse.n)} * longest_row(fine.ia, fine.n);
    room = static_cast<int>(std::min<std::int64_t>(longest, fine.n));
    marked = fine.n;
  }
  int team() const { return bounds.count() - 1; }
  int lo(int tid) const { return bounds[tid]; }
  int hi(int tid) const { return bounds[tid + 1] - 1; }
  std::int64_t integers_of_thread() const { return std::int64_t{marked} + coarse.n + room; }
  void allocate_scratch() {
    integers.allocate(integers_of_thread() * team(), "marker", routine);
    sums.allocate(std::int64_t{room} * team(), "sums", routine);
  }
  coarse_row_former former(int tid) {
    int* const own = integers.data() + integers_of_thread() * tid;
    int* const columns = own + marked + coarse.n;
    std::fill(own, columns, 0);
    return {fine,
            coarse.n,
            keep_zeros,
            {view<int>(own), view<int>(own + marked), view<int>(columns),
             view<double>(sums.data() + std::int64_t{room} * tid)}};
  }
  /// Runs step(tid) for each part, one to a thread.
  template <class Step>
  void for_parts(Step step) {
    for_chunks(team(), team(), [&](const row_chunk& parts) {
      for (int t = parts.lo; t <= parts.hi; ++t) step(t - 1);
    });
  }
};

[[noreturn]] void too_many_entries() {
  fail(ierr_extension_failed, "Memory extension failed (integer overflow for size of array a in opdfn)");
}

/// Row lengths to row pointers.
void prefix_sum(level& coarse) {
  std::int64_t next = 1;
  coarse.own_ia[1] = 1;
  for (int c = 1; c <= coarse.n; ++c) {
    next += coarse.own_ia[c + 1];
    if (next > std::numeric_limits<int>::max()) too_many_entries();
    coarse.own_ia[c + 1] = static_cast<int>(next);
  }
}

void two_sweeps(product& g) {
  level& coarse = g.coarse;
  g.allocate_scratch();
  g.for_parts([&g, &coarse](int tid) {
    coarse_row_former rows = g.former(tid);
    for (int c = g.lo(tid); c <= g.hi(tid); ++c) coarse.own_ia[c + 1] = rows.count(c);
  });
  prefix_sum(coarse);
  const std::int64_t entries = coarse.own_ia[coarse.n + 1] - 1;
  coarse.own_ja.allocate(entries, "ja", g.routine);
  coarse.own_a.allocate(entries, "a", g.routine);
  const view<int> ja = coarse.own_ja;
  const view<double> a = coarse.own_a;
  g.for_parts([&](int tid) {
    coarse_row_former rows = g.former(tid);
    for (int c = g.lo(tid); c <= g.hi(tid); ++c)
      rows.form(c, coarse.own_ia[c], std::numeric_limits<std::int64_t>::max(), ja, a);
  });
}

constexpr std::int64_t most_entries = std::numeric_limits<int>::max() - 1;

/// Room for a whole sweep, by the rows that are done.
std::int64_t expected_room(std::int64_t used, int done, int rows) {
  const double share = static_cast<double>(rows) / std::max(1, done);
  return std::min(static_cast<std::int64_t>(1.05 * share * static_cast<double>(used)) + 1000, most_entries);
}

void one_serial_sweep(product& g) {
  level& coarse = g.coarse;
  g.allocate_scratch();
  coarse_row_former rows = g.former(0);
  const level& fine = g.fine;
  std::int64_t room = expected_room(fine.ia[fine.n + 1] - 1, fine.n, coarse.n);
  coarse.own_ja.allocate(room, "ja", g.routine);
  coarse.own_a.allocate(room, "a", g.routine);
  coarse.own_ia[1] = 1;
  for (int c = 1; c <= coarse.n;) {
    const std::int64_t start = coarse.own_ia[c];
    const std::int64_t next = rows.form(c, start, room, coarse.own_ja, coarse.own_a);
    if (next > 0) {
      coarse.own_ia[++c] = static_cast<int>(next);
      continue;
    }
    if (room == most_entries) too_many_entries();
    room = std::min(std::max(expected_room(start, c, coarse.n), room + room / 8), most_entries);
    coarse.own_ja.resize(room, "ja", g.routine);
    coarse.own_a.resize(room, "a", g.routine);
  }
  const std::int64_t entries = coarse.own_ia[coarse.n + 1] - 1;
  coarse.own_ja.resize(entries, "ja", g.routine);
  coarse.own_a.resize(entries, "a", g.routine);
}

/// Rows lo..hi-1 of one thread, in a store that is never copied.
struct chunk {
  int lo, hi;
  std::int64_t used = 0;
  work_array<int> ja;
  work_array<double> a;
};

struct chunk_list {
  int next;  // row to be formed
  std::vector<std::unique_ptr<chunk>> chunks;
};

/// A new chunk for each thread that has rows left; false when there are none.
bool add_chunks(const product& g, numbered_list<chunk_list>& lists) {
  bool any = false;
  const level& fine = g.fine;
  const std::int64_t average = (fine.ia[fine.n + 1] - 1) / fine.n + 1;
  for (int tid = 0; tid < g.team(); ++tid) {
    chunk_list& list = lists[tid];
    const int rest = g.hi(tid) - list.next + 1;
    if (rest <= 0) continue;
    any = true;
    std::int64_t room = average * rest + 1000;
    const bool first_row_failed = !list.chunks.empty() && list.chunks.back()->lo == list.next;
    if (first_row_failed) {
      if (list.chunks.back()->ja.size() == most_entries) too_many_entries();
      room = std::max(room, 2 * list.chunks.back()->ja.size());
      list.chunks.pop_back();
    }
    room = std::min(room, most_entries);
    auto c = std::make_unique<chunk>();
    c->lo = c->hi = list.next;
    c->ja.allocate(room, "chunk", g.routine);
    c->a.allocate(room, "chunk", g.routine);
    list.chunks.push_back(std::move(c));
  }
  return any;
}

void join_chunks(product& g, numbered_list<chunk_list>& lists) {
  level& coarse = g.coarse;
  prefix_sum(coarse);
  const std::int64_t entries = coarse.own_ia[coarse.n + 1] - 1;
  coarse.own_ja.allocate(entries, "ja", g.routine);
  coarse.own_a.allocate(entries, "a", g.routine);
  for (chunk_list& list : lists) {
    for (auto& c : list.chunks) {
      if (c->used > 0) {
        const std::int64_t start = coarse.own_ia[c->lo];
        std::memcpy(&coarse.own_ja[start], c->ja.data(), static_cast<std::size_t>(c->used) * sizeof(int));
        std::memcpy(&coarse.own_a[start], c->a.data(), static_cast<std::size_t>(c->used) * sizeof(double));
      }
      c.reset();
    }
  }
}

void one_sweep_in_chunks(product& g) {
  level& coarse = g.coarse;
  g.allocate_scratch();
  numbered_list<chunk_list> lists;
  lists.reserve(g.team());
  for (int tid = 0; tid < g.team(); ++tid) lists.push_back({g.lo(tid), {}});
  while (add_chunks(g, lists)) {
    g.for_parts([&](int tid) {
      chunk_list& list = lists[tid];
      if (list.next > g.hi(tid)) return;
      chunk& here = *list.chunks.back();
      coarse_row_former rows = g.former(tid);
      while (list.next <= g.hi(tid)) {
        const std::int64_t after = rows.form(list.next, here.used + 1, here.ja.size(), here.ja, here.a);
        if (after == 0) return;
        coarse.own_ia[list.next + 1] = static_cast<int>(after - 1 - here.used);
        here.used = after - 1;
        here.hi = ++list.next;
      }
    });
  }
  g.integers.release();
  g.sums.release();
  join_chunks(g, lists);
}

}  // namespace

void opdfn(const level& fine, level& coarse, opdfn_variant variant, bool keep_zeros) {
  const bool serial = variant == opdfn_variant::standard;
  const bool balanced = variant == opdfn_variant::detrlen_mg || variant == opdfn_variant::dynalloc_mg;
  const int team = serial ? 1 : setup_team(coarse.n);
  product g(fine, coarse, variant, keep_zeros,
            balanced ? equal_work(fine, coarse.n, team) : equal_rows(coarse.n, team));
  coarse.own_ia.allocate(std::int64_t{coarse.n} + 1, "ia", g.routine);
  if (serial) {
    one_serial_sweep(g);
  } else if (counts_first(variant)) {
    two_sweeps(g);
  } else {
    one_sweep_in_chunks(g);
  }
  coarse.ia = coarse.own_ia;
  coarse.ja = coarse.own_ja;
  coarse.a = coarse.own_a;
}

}  // namespace tier
