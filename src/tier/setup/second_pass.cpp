// Second pass of the splitting.
#include "tier/setup/second_pass.h"

#include <cmath>

namespace tier {

namespace {

bool is_fine(int state) { return state < 0 && state != state_not_taking_part; }

double sum_over_fine(const couplings& m, view<const int> state, int i) {
  double sum = 0.0;
  for (int p = m.ia[i] + 1; p < m.ia[i + 1]; ++p) {
    const int j = m.ja[p];
    if (is_fine(state[j]) && (!m.kind || m.kind[j] == m.kind[i])) sum += std::abs(m.a[p]);
  }
  return sum;
}

}  // namespace

int second_pass(const couplings& m, double limit, int nprim, view<int> state, split_counts& n) {
  int changed = 0;
  for (int i = 1; i <= m.n; ++i) {
    if (!is_fine(state[i]) || (nprim > 0 && m.kind[i] != nprim)) continue;
    if (sum_over_fine(m, state, i) <= limit * m.a[m.ia[i]]) continue;
    if (state[i] == state_undecided) --n.xf;
    state[i] = state_c;
    ++changed;
  }
  n.c += changed;
  n.f -= changed;
  n.cforced += changed;
  n.ratio = static_cast<double>(n.c) / m.n;
  return changed;
}

}  // namespace tier
