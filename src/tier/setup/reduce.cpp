// Graph of C-variables over two strong steps, and the first pass on it.
#include "tier/setup/reduce.h"

#include <algorithm>
#include <numeric>
#include <string>

#include "tier/setup/first_pass.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/numbered.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

constexpr int least_c_variables = 6;

/// Finds the neighbours of one C-variable after the other.
class path_counter {
 public:
  /// number [1..n]: number of a C-variable, 0 for others; paths: scratch [1..n] of zeros.
  path_counter(const couplings& m, view<const int> number, int least, view<int> paths)
      : m_(m), number_(number), least_(least), paths_(paths) {}

  /// Calls take(number) for each neighbour of variable i, in the order in which their paths are complete.
  template <class Take>
  void visit(int i, Take take) {
    const auto for_strong = [this](int row, auto step) {
      for (int p = m_.ia[row] + 1; p <= m_.last_strong(row); ++p) step(m_.ja[p]);
    };
    for_strong(i, [&](int j) {
      if (number_[j] == 0 || paths_[j] >= least_) return;
      paths_[j] = least_;
      take(number_[j]);
    });
    for_strong(i, [&](int between) {
      for_strong(between, [&](int j) {
        if (j == i || number_[j] == 0 || paths_[j] >= least_) return;
        if (++paths_[j] == least_) take(number_[j]);
      });
    });
    for_strong(i, [&](int between) {
      paths_[between] = 0;
      for_strong(between, [&](int j) { paths_[j] = 0; });
    });
  }

 private:
  const couplings& m_;
  view<const int> number_;
  int least_;
  view<int> paths_;
};

/// The C-variables, their numbers and the graph of neighbours, laid out like a sorted matrix.
struct c_graph {
  int n = 0;
  work_array<int> number, variable, start, columns;
};

void number_c_variables(view<const int> state, int n, c_graph& g) {
  g.number.allocate(n, "number", "reduce");
  for (int i = 1; i <= n; ++i) g.number[i] = state[i] > 0 ? ++g.n : 0;
  g.variable.allocate(g.n, "variable", "reduce");
  for (int i = 1; i <= n; ++i)
    if (g.number[i] > 0) g.variable[g.number[i]] = i;
}

enum class graph_outcome { built, without_neighbours, too_large };

// Where many rows share a neighbour with a long row, everybody is everybody's neighbour: the graph, and the
// work of finding it, grow with the square of that row.
constexpr std::int64_t most_entries_per_coupling = 32;

/// Counts, then fills: both runs find the same neighbours.
graph_outcome build_graph(const couplings& m, int least, int team, c_graph& g) {
  const std::int64_t most =
      std::min<std::int64_t>(most_entries_per_coupling * (m.ia[m.n + 1] - 1), max_entries - 1);
  work_array<int> paths;
  paths.allocate(std::int64_t{m.n} * team, 0, "paths", "reduce");
  g.start.allocate(std::int64_t{g.n} + 1, "start", "reduce");
  numbered_list<std::int64_t> found(team, 0);  // entries by thread
  const auto counter = [&](int tid) {
    return path_counter(m, g.number, least, view<int>(paths.data() + std::int64_t{m.n} * tid));
  };
  for_chunks(g.n, team, [&](const row_chunk& rows) {
    path_counter paths_of = counter(rows.tid);
    std::int64_t sum = 0;
    for (int c = rows.lo; c <= rows.hi; ++c) {
      int entries = 1;
      if (sum <= most) paths_of.visit(g.variable[c], [&entries](int) { ++entries; });
      sum += entries;
      g.start[c + 1] = entries;
    }
    found[rows.tid] = sum;
  });
  const std::int64_t entries = std::accumulate(found.begin(), found.end(), std::int64_t{0});
  if (entries > most) return graph_outcome::too_large;
  if (entries == g.n) return graph_outcome::without_neighbours;
  g.start[1] = 1;
  for (int c = 1; c <= g.n; ++c) g.start[c + 1] += g.start[c];
  g.columns.allocate(entries, "columns", "reduce");
  for_chunks(g.n, team, [&](const row_chunk& rows) {
    path_counter paths_of = counter(rows.tid);
    for (int c = rows.lo; c <= rows.hi; ++c) {
      const int first = g.start[c];
      int last = first;
      paths_of.visit(g.variable[c], [&g, &last](int d) { g.columns[++last] = d; });
      g.columns[first] = last > first ? last : 0;
    }
  });
  return graph_outcome::built;
}

/// First pass on the graph.
void rcol(const couplings& graph, view<int> state, bool threads) {
  bool any = false;
  for (int c = 1; c <= graph.n; ++c) {
    const bool has_neighbours = graph.last_strong(c) > 0;
    state[c] = has_neighbours ? state_undecided : state_c;
    any = any || has_neighbours;
  }
  if (!any) fail(ierr_no_strong_connections, "No strong connections found (rcol)");
  run_first_pass(graph, state, threads);
  if (threads) settle_interfaces(graph, state);
}

}  // namespace

void reduce(const couplings& m, const reduce_options& o, view<int> state, split_counts& n) {
  const std::string head = "reduc(" + std::to_string(code_of(o.kind)) + "):      ";
  const auto report = [&](const std::string& text) {
    if (o.report) message(head + text);
  };
  if (n.c < least_c_variables) {
    report("aggressive coarsening skipped (low # C-variables)");
    return;
  }
  c_graph g;
  number_c_variables(state, m.n, g);
  const int team = o.threads ? setup_team(m.n) : 1;
  switch (build_graph(m, o.paths, team, g)) {
    case graph_outcome::without_neighbours:
      return report("+++ no aggressive coarsening possible");
    case graph_outcome::too_large:
      return report("aggressive coarsening skipped (graph of C-variables too large)");
    case graph_outcome::built:
      break;
  }
  work_array<int> c_state;
  c_state.allocate(g.n, "#1", "rcol");
  rcol(couplings{g.n, g.start, g.columns, {}, {}}, c_state, o.threads);
  for (int c = 1; c <= g.n; ++c) {
    if (c_state[c] != state_f) continue;
    state[g.variable[c]] = state_reduced;
    --n.c;
    ++n.f;
    ++n.reduced;
  }
  n.ratio = static_cast<double>(n.c) / m.n;
  report("gratio= " + std::to_string(n.ratio));
}

}  // namespace tier
