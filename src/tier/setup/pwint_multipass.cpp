// Multipass interpolation.
#include <algorithm>
#include <string>

#include "tier/setup/pwint_aa.h"
#include "tier/setup/weight_assembly.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier {

namespace {

using outcome = weight_assembly::outcome;

/// A row of this pass: direct where it has strong C neighbours, else through neighbours of earlier passes.
outcome compute_row(interpolation_row& row, int i, const weight_rows& earlier) {
  if (earlier.has(i)) return row.take(i, earlier) ? outcome::weights : outcome::no_room;
  int sources = row.start(i);
  if (sources < 0) return outcome::no_room;
  if (earlier.iw) {
    const bool fits = row.for_fine_neighbours(false, [&](int j) {
      if (!earlier.has(j)) return true;
      ++sources;
      return row.eliminate_weights(j, earlier);
    });
    if (!fits) {
      row.abandon();
      return outcome::no_room;
    }
  }
  if (sources == 0) {
    row.abandon();
    return outcome::empty;
  }
  return row.finish() == interpolation_row::result::weights ? outcome::weights : outcome::empty;
}

bool waits(const level& lv, int i, int nprim) {
  if (lv.icg[i] >= 0 || lv.icg[i] == state_not_taking_part) return false;
  return lv.iw[i + 1] == lv.iw[i] && (nprim == 0 || lv.iu[i] == nprim);
}

int count_waiting(const level& lv, int nprim) {
  int count = 0;
  for (int i = 1; i <= lv.n; ++i) count += waits(lv, i, nprim);
  return count;
}

/// Passes until nobody waits or a pass reaches nobody; returns how many wait.
int run_passes(level& lv, const interpolation_options& o, bool own_unknown, bool by_points, int& passes) {
  int before = lv.n + 1, waiting = lv.n;
  lv.iw.release();
  lv.jw.release();
  lv.w.release();
  for (passes = 0; waiting > 0 && waiting < before; ++passes) {
    before = waiting;
    const detached_weights earlier(lv);
    weight_assembly rows(lv, couplings_of(lv, own_unknown), o, by_points);
    rows.run([&](interpolation_row& row, int i) { return compute_row(row, i, earlier.rows()); });
    waiting = count_waiting(lv, o.nprim);
  }
  return waiting;
}

/// Gives the waiting variables, or all variables of their points, a new state.
int turn_waiting(level& lv, const interpolation_options& o, bool by_points, int state) {
  int turned = 0;
  const auto turn = [&](int i) {
    turned += lv.icg[i] != state;
    lv.icg[i] = state;
  };
  for (int i = 1; i <= lv.n; ++i) {
    if (!waits(lv, i, o.nprim)) continue;
    if (!by_points) {
      turn(i);
    } else {
      for (int j = lv.iv[lv.ip[i]]; j < lv.iv[lv.ip[i] + 1]; ++j) turn(j);
    }
  }
  return turned;
}

/// Identity rows for variables that have become C; all others keep their rows.
void add_identities(level& lv, const interpolation_options& o, bool own_unknown, bool by_points) {
  const detached_weights earlier(lv);
  weight_assembly rows(lv, couplings_of(lv, own_unknown), o, by_points);
  rows.run([&](interpolation_row& row, int i) {
    if (!earlier.rows().has(i)) return outcome::empty;
    return row.take(i, earlier.rows()) ? outcome::weights : outcome::no_room;
  });
}

double coarse_share(const level& lv) {
  int c = 0;
  for (int i = 1; i <= lv.n; ++i) c += lv.icg[i] > 0;
  return static_cast<double>(c) / lv.n;
}

}  // namespace

multipass_counts pwint2_aa(level& lv, const interpolation_options& o, bool own_unknown, bool by_points) {
  multipass_counts n;
  for (;;) {
    ++n.attempts;
    const int waiting = run_passes(lv, o, own_unknown, by_points, n.passes);
    if (waiting == 0) return n;
    const bool become_c = coarse_share(lv) + static_cast<double>(waiting) / lv.n <= o.largest_coarse_share;
    const int turned = turn_waiting(lv, o, by_points, become_c ? state_c : state_ff);
    (become_c ? n.turned_c : n.turned_ff) += turned;
    info(message_class::note, "pwint_aa(4):   attempt #" + std::to_string(n.attempts) +
                                  " failed!  #passes=" + std::to_string(n.passes) +
                                  (become_c ? "  #vars->C=" : "  #vars->FF=") + std::to_string(turned));
    if (n.attempts < o.most_attempts) continue;
    if (become_c) {
      warn(warn_multipass, "Max. number of multipass attempts reached! Just continuing!");
      add_identities(lv, o, own_unknown, by_points);
      return n;
    }
    info(message_class::note, "Due to new FF-vars new multipass attempt even if #numtry reached!");
  }
}

}  // namespace tier
