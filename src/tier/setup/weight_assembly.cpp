// Stores of interpolation rows by thread and their joining.
#include "tier/setup/weight_assembly.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "tier/store/info.h"
#include "tier/store/input_checks.h"

namespace tier {

namespace {

constexpr const char* routine = "pwint1_aa";

}  // namespace

couplings couplings_of(const level& lv, bool own_unknown) {
  return {lv.n, lv.ia, lv.ja, lv.a, own_unknown ? view<const int>(lv.iu) : view<const int>()};
}

weight_assembly::weight_assembly(level& lv, const couplings& m, const interpolation_options& o,
                                 bool by_points)
    : lv_(lv), m_(m), o_(o), by_points_(by_points) {
  const int count = setup_team(lv.n);
  const int longest = longest_row(lv.ia, lv.n);
  lv.iw.allocate(std::int64_t{lv.n} + 1, "iw", routine);
  for (int tid = 0; tid < count; ++tid) {
    auto p = std::make_unique<part>();
    if (by_points) {  // ranges end with a point
      chunk_of_thread(1, lv.npnts, tid, count, p->lo, p->hi);
      p->lo = lv.iv[p->lo];
      p->hi = lv.iv[p->hi + 1] - 1;
    } else {
      chunk_of_thread(1, lv.n, tid, count, p->lo, p->hi);
    }
    p->next = p->lo;
    p->slots = 4 * longest + 16;
    p->slot_of.allocate(lv.n, 0, "ifg,ipatt,nflag_thread", routine);
    allocate_row(*p);
    const std::int64_t estimate = std::int64_t{2} * (p->hi - p->lo + 1) + 16;
    p->columns.allocate(estimate, "storage", routine);
    p->values.allocate(estimate, "storage", routine);
    parts_.push_back(std::move(p));
  }
}

void weight_assembly::allocate_row(part& p) {
  p.row_columns.allocate(p.slots, "ifg,ipatt,nflag_thread", routine);
  p.row_flags.allocate(p.slots, "ifg,ipatt,nflag_thread", routine);
  p.row_values.allocate(p.slots, "ifg,ipatt,nflag_thread", routine);
}

bool weight_assembly::grow_stalled() {
  bool finished = true;
  for (const auto& p : parts_) {
    if (p->next <= p->hi) finished = false;
    if (p->row_full) {
      p->slots += p->slots / 2;
      allocate_row(*p);
    }
    if (p->store_full) {
      const int done = p->next - p->lo + 1, rows = p->hi - p->lo + 1;
      const auto expected = static_cast<std::int64_t>(1.1 * static_cast<double>(p->used) * rows / done);
      const std::int64_t room = std::max(expected, p->columns.size() + p->columns.size() / 4) + p->slots;
      p->columns.resize(room, "storage", routine);
      p->values.resize(room, "storage", routine);
    }
    p->row_full = p->store_full = false;
  }
  return finished;
}

bool weight_assembly::put_identities(part& p, int lo, int hi) {
  if (p.used + hi - lo + 1 > p.columns.size()) {
    p.store_full = true;
    return false;
  }
  for (int i = lo; i <= hi; ++i) {
    ++p.used;
    p.columns[p.used] = i;
    p.values[p.used] = 1.0;
    lv_.iw[i + 1] = 1;
  }
  return true;
}

bool weight_assembly::keep(part& p, const interpolation_row& row) {
  const int entries = row.size() - 1;
  if (p.used + entries > p.columns.size()) {
    p.store_full = true;
    return false;
  }
  for (int s = 2; s <= row.size(); ++s) {
    ++p.used;
    p.columns[p.used] = row.column(s);
    p.values[p.used] = row.weight(s);
  }
  lv_.iw[row.row() + 1] = entries;
  p.zero_row_sums += row.zero_row_sum();
  return true;
}

// Variable i, or all variables of its point, whose earlier rows are rewritten,
// become C. `last` is the last one.
bool weight_assembly::turn(part& p, int i, int& last) {
  int lo = i, hi = i;
  if (by_points_) {
    lo = lv_.iv[lv_.ip[i]];
    hi = lv_.iv[lv_.ip[i] + 1] - 1;
  }
  std::int64_t rewritten = 0;
  for (int j = lo; j < i; ++j) rewritten += lv_.iw[j + 1];
  p.used -= rewritten;
  if (!put_identities(p, lo, hi)) {
    p.used += rewritten;
    return false;
  }
  p.turned += hi - lo + 1;
  if (team() == 1)
    for (int j = lo; j <= hi; ++j) lv_.icg[j] = state_c;
  last = hi;
  return true;
}

// In threads a changed variable shows by its identity row.
void weight_assembly::apply_pending() {
  for (int i = 1; i <= lv_.n; ++i) {
    const int p = lv_.iw[i];
    if (lv_.icg[i] <= 0 && lv_.iw[i + 1] == p + 1 && lv_.jw[p] == i) lv_.icg[i] = state_c;
  }
}

int weight_assembly::join() {
  std::int64_t entries = 0;
  for (const auto& p : parts_) entries += p->used;
  require_countable(entries, "jw", routine);
  lv_.iw[1] = 1;
  for (int i = 1; i <= lv_.n; ++i) lv_.iw[i + 1] += lv_.iw[i];
  int turned = 0, zero_row_sums = 0;
  for (const auto& p : parts_) {
    turned += p->turned;
    zero_row_sums += p->zero_row_sums;
  }
  if (zero_row_sums > 0) info(message_class::note, "wrowsum=0 in rows: " + std::to_string(zero_row_sums));
  if (team() == 1) {
    lv_.jw.swap(parts_[0]->columns);
    lv_.w.swap(parts_[0]->values);
    parts_.clear();
    lv_.jw.resize(entries, "jw", routine);
    lv_.w.resize(entries, "w", routine);
    return turned;
  }
  lv_.jw.allocate(entries, "jw", routine);
  lv_.w.allocate(entries, "w", routine);
  std::int64_t offset = 0;
  for (auto& p : parts_) {
    const auto count = static_cast<std::size_t>(p->used);
    if (count > 0) {
      std::memcpy(lv_.jw.data() + offset, p->columns.data(), count * sizeof(int));
      std::memcpy(lv_.w.data() + offset, p->values.data(), count * sizeof(double));
    }
    offset += p->used;
    p.reset();
  }
  if (turned > 0) apply_pending();
  return turned;
}

}  // namespace tier
