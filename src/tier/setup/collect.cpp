// Points in a split.
#include "tier/setup/collect.h"

#include "tier/setup/pcol.h"

namespace tier {

namespace {

void set_point(level& lv, int point, int state) {
  for (int i = lv.iv[point]; i < lv.iv[point + 1]; ++i) lv.icg[i] = state;
}

}  // namespace

void collect(level& lv, int nprim) {
  for (int point = 1; point <= lv.npnts; ++point) {
    int state = state_c;
    for (int i = lv.iv[point]; i < lv.iv[point + 1]; ++i)
      if (lv.iu[i] == nprim) state = lv.icg[i];
    set_point(lv, point, state);
  }
}

void collect_i(level& lv) {
  for (int point = 1; point <= lv.npnts; ++point) set_point(lv, point, lv.ibcg[point]);
}

}  // namespace tier
