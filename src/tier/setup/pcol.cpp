// Coarse/fine splitting: classification of rows, first pass by blocks, clean-up.
#include "tier/setup/pcol.h"

#include <string>

#include "tier/setup/first_pass.h"
#include "tier/store/formatted.h"
#include "tier/store/info.h"

namespace tier {

namespace {

/// The state that a row's sort leaves it in.
int first_state(const couplings& m, const pcol_options& o, int i) {
  if (o.nprim > 0 && m.kind[i] != o.nprim) return state_not_taking_part;
  const int last = m.last_strong(i);
  if (last > m.ia[i]) return state_undecided;
  if (last == 0 && o.unusable_become_c) return state_c;
  return state_ff;
}

int clean_up(const couplings& m, clean_up_kind kind, view<int> state) {
  int switched = 0;
  for (int i = 1; i <= m.n; ++i) {
    if (state[i] != state_undecided) continue;
    if (kind == clean_up_kind::without_f_neighbour && has_strong(m, state, i, state_f)) continue;
    state[i] = state_c;
    ++switched;
  }
  return switched;
}

}  // namespace

split_counts pcol(const couplings& m, const pcol_options& o, view<int> state) {
  split_counts n;
  bool any_strong = false;
  for (int i = 1; i <= m.n; ++i) {
    state[i] = first_state(m, o, i);
    n.fc += state[i] == state_c;
    any_strong = any_strong || state[i] == state_undecided;
  }
  if (!any_strong) return {};  // coarsening ends for want of C-variables
  run_first_pass(m, state, o.threads);
  if (o.threads) settle_interfaces(m, state);
  n.switched = clean_up(m, o.clean_up, state);
  for (int i = 1; i <= m.n; ++i) {
    n.c += state[i] > 0;
    n.ff += state[i] == state_ff;
    n.xf += state[i] == state_undecided;
    n.f += state[i] == state_f || state[i] == state_undecided;
  }
  n.ratio = static_cast<double>(n.c) / m.n;
  return n;
}

void print_split_counts(const split_counts& n, approach kind) {
  const std::string head = "pcol(" + std::to_string(code_of(kind)) + "):       ";
  if (n.switched > 0) message(head + "# status switches XF->C=" + std::to_string(n.switched));
  message(head + formatted("gratio= %8.6f FF/XF/FC=%d/%d/%d", n.ratio, n.ff, n.xf, n.fc));
}

}  // namespace tier
