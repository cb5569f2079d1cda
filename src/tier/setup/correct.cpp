// Repair of non-positive diagonals.
#include "tier/setup/correct.h"

#include <string>

#include "tier/setup/prepare_opdfn.h"
#include "tier/store/formatted.h"
#include "tier/store/info.h"

namespace tier {

namespace {

/// Sum of a row's weights, and of those that would be left.
struct row_sums {
  double all = 0.0, rest = 0.0;
};

bool is_dropped(const level& fine, int p, view<const int> bad) { return bad[fine.jw[p]] && fine.w[p] < 0.0; }

row_sums sums_of(const level& fine, int first, int end, view<const int> bad) {
  row_sums s;
  for (int p = first; p < end; ++p) {
    s.all += fine.w[p];
    if (!is_dropped(fine, p, bad)) s.rest += fine.w[p];
  }
  return s;
}

}  // namespace

int count_nonpositive(const level& coarse, view<int> bad) {
  int count = 0;
  for (int c = 1; c <= coarse.n; ++c) {
    bad[c] = !(coarse.a[coarse.ia[c]] > 0.0);
    count += bad[c];
  }
  return count;
}

void correct_f(level& fine, int coarse_variables, view<const int> bad) {
  int next = 1, first = 1;
  for (int i = 1; i <= fine.n; ++i) {
    const int end = fine.iw[i + 1];
    const row_sums s = sums_of(fine, first, end, bad);
    const bool changes = fine.icg[i] <= 0 && s.rest != 0.0;
    const double scale = changes ? s.all / s.rest : 1.0;
    for (int p = first; p < end; ++p) {
      if (changes && is_dropped(fine, p, bad)) continue;
      fine.jw[next] = fine.jw[p];
      fine.w[next++] = fine.w[p] * scale;
    }
    first = end;
    fine.iw[i + 1] = next;
  }
  fine.jw.resize(next - 1, "jw", "correct_f");
  fine.w.resize(next - 1, "w", "correct_f");
  transpose_weights(fine, coarse_variables);
}

void correct_w(level& fine, int coarse_variables, view<const int> bad) {
  constexpr double factor = 0.5;
  for (int c = 1; c <= coarse_variables; ++c)
    if (bad[c])
      info(message_class::note,
           formatted("        scaling of column %d necessary with factor %f", c, factor));
  int ff = 0, f = 0;
  for (int i = 1; i <= fine.n; ++i) {
    if (fine.icg[i] > 0) continue;
    ++(fine.icg[i] == 0 ? ff : f);
    for (int p = fine.iw[i]; p < fine.iw[i + 1]; ++p)
      if (bad[fine.jw[p]]) fine.w[p] *= factor;
  }
  transpose_weights(fine, coarse_variables);
  info(message_class::note, "number of FF-points: " + std::to_string(ff));
  info(message_class::note, "number of normal F-points: " + std::to_string(f));
}

}  // namespace tier
