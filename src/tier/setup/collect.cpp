// Points in a split.
#include "tier/setup/collect.h"

#include "tier/setup/pcol.h"

namespace tier {

namespace {

void set_point(level& lv, int point, int state) {
  for (int i = lv.iv[point]; i < lv.iv[point + 1]; ++i) lv.icg[i] = state;
}

/// A row of the point cannot be interpolated, as its sort has found.
bool has_unusable_row(const level& lv, int point) {
  for (int i = lv.iv[point]; i < lv.iv[point + 1]; ++i)
    if (lv.ja[lv.ia[i]] == 0) return true;
  return false;
}

int primary_state(const level& lv, int point, int nprim) {
  for (int i = lv.iv[point]; i < lv.iv[point + 1]; ++i)
    if (lv.iu[i] == nprim) return lv.icg[i];
  return state_c;
}

}  // namespace

void collect(level& lv, int nprim, bool force_unusable) {
  for (int point = 1; point <= lv.npnts; ++point) {
    const bool forced = force_unusable && has_unusable_row(lv, point);
    set_point(lv, point, forced ? state_c : primary_state(lv, point, nprim));
  }
}

void collect_i(level& lv, bool force_unusable) {
  for (int point = 1; point <= lv.npnts; ++point) {
    const bool forced = force_unusable && has_unusable_row(lv, point);
    set_point(lv, point, forced ? state_c : lv.ibcg[point]);
  }
}

}  // namespace tier
