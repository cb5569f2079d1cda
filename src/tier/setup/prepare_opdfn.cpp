// Layout of a coarse level.
#include "tier/setup/prepare_opdfn.h"

#include <algorithm>

#include "tier/store/row_loop.h"

namespace tier {

namespace {

constexpr const char* routine = "prepare_opdfn";

int number_coarse_variables(level& fine) {
  int count = 0;
  for (int i = 1; i <= fine.n; ++i)
    if (fine.icg[i] > 0) fine.icg[i] = ++count;
  return count;
}

/// Functions of the coarse variables, and their points, which are numbered anew without gaps.
void hand_on_labels(const level& fine, level& coarse) {
  if (fine.iu) {
    coarse.own_iu.allocate(coarse.n, "iu", routine);
    coarse.iu = coarse.own_iu;
  }
  if (fine.ip) {
    coarse.own_ip.allocate(coarse.n, "ip", routine);
    coarse.ip = coarse.own_ip;
  }
  int point = 0, fine_point = 0;
  for (int i = 1; i <= fine.n; ++i) {
    const int c = fine.icg[i];
    if (c <= 0) continue;
    if (fine.iu) coarse.iu[c] = fine.iu[i];
    if (!fine.ip) continue;
    if (point == 0 || fine.ip[i] != fine_point) ++point;
    fine_point = fine.ip[i];
    coarse.ip[c] = point;
  }
  coarse.npnts = point;
  if (fine.iv.size() > 0) set_points(coarse);
}

}  // namespace

void set_points(level& lv) {
  lv.iv.allocate(std::int64_t{lv.npnts} + 1, "iv", routine);
  int point = 0;
  for (int i = 1; i <= lv.n; ++i)
    while (point < lv.ip[i]) lv.iv[++point] = i;
  while (point <= lv.npnts) lv.iv[++point] = lv.n + 1;
}

void transpose_weights(level& fine, int coarse_variables) {
  const int nc = coarse_variables;
  const std::int64_t entries = fine.iw[fine.n + 1] - 1;
  // one place further on than usual, so that filling the rows leaves the pointers right
  fine.rt.allocate(std::int64_t{nc} + 2, 0, "rt", routine);
  fine.jrt.allocate(entries, "jrt", routine);
  fine.wrt.allocate(entries, "wrt", routine);
  for (std::int64_t p = 1; p <= entries; ++p) ++fine.rt[fine.jw[p] + 2];
  fine.rt[1] = fine.rt[2] = 1;
  for (int c = 3; c <= nc + 2; ++c) fine.rt[c] += fine.rt[c - 1];
  for (int i = 1; i <= fine.n; ++i) {
    for (int p = fine.iw[i]; p < fine.iw[i + 1]; ++p) {
      const int place = fine.rt[fine.jw[p] + 1]++;
      fine.jrt[place] = i;
      fine.wrt[place] = fine.w[p];
    }
  }
}

void prepare_opdfn(level& fine, level& coarse) {
  coarse.n = number_coarse_variables(fine);
  hand_on_labels(fine, coarse);
  const std::int64_t entries = fine.iw[fine.n + 1] - 1;
  for (std::int64_t p = 1; p <= entries; ++p) fine.jw[p] = fine.icg[fine.jw[p]];
  transpose_weights(fine, coarse.n);
}

}  // namespace tier
