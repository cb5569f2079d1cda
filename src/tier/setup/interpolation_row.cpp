// Arithmetic of one interpolation row.
#include "tier/setup/interpolation_row.h"

#include <algorithm>
#include <cmath>

namespace tier {

bool interpolation_row::add(int column, double v, bool interpolatory) {
  int slot = slot_of_[column];
  if (slot == 0) {
    if (size_ == capacity_) return false;
    slot = ++size_;
    slot_of_[column] = slot;
    column_[slot] = column;
    value_[slot] = 0.0;
    interpolatory_[slot] = 0;
  }
  value_[slot] += v;
  if (interpolatory) interpolatory_[slot] = 1;
  return true;
}

int interpolation_row::start(int i, bool all_c) {
  i_ = i;
  if (m_.length(i) > capacity_) return -1;
  const int diagonal = m_.ia[i], end = m_.ia[i + 1];
  const int last = all_c ? end - 1 : m_.last_strong(i);
  column_[1] = i;
  value_[1] = m_.a[diagonal];
  slot_of_[i] = size_ = 1;
  int count = 0;
  for (int p = diagonal + 1; p < end; ++p) {
    const int l = m_.ja[p];
    if (!couples(l)) continue;
    const bool interpolatory = icg_[l] > 0 && p <= last;
    ++size_;
    slot_of_[l] = size_;
    column_[size_] = l;
    value_[size_] = m_.a[p];
    interpolatory_[size_] = interpolatory;
    count += interpolatory;
  }
  return count;
}

bool interpolation_row::eliminate_row(int j) {
  const int slot = slot_of_[j];
  const int diagonal = m_.ia[j], end = m_.ia[j + 1], last = m_.last_strong(j);
  const double factor = -value_[slot] / m_.a[diagonal];
  value_[slot] = 0.0;
  for (int p = diagonal + 1; p < end; ++p) {
    const int l = m_.ja[p];
    if (!couples(l)) continue;
    if (!add(l, m_.a[p] * factor, icg_[l] > 0 && p <= last)) return false;
  }
  return true;
}

bool interpolation_row::eliminate_rows(bool extended) {
  const int diagonal = m_.ia[i_], end = m_.ia[i_ + 1];
  if (!for_fine_neighbours(false, [this](int j) { return eliminate_row(j); })) return false;
  if (!extended || end - diagonal == 1) return true;
  const int last = std::max(diagonal, m_.last_strong(i_));  // all are weak in a row that is unusable
  const double limit = std::abs(m_.a[diagonal + 1]) * o_.ewt2;
  for (int p = last + 1; p < end; ++p)
    if (m_.a[p] > limit && couples(m_.ja[p]) && !eliminate_row(m_.ja[p])) return false;
  return true;
}

bool interpolation_row::eliminate_weights(int j, const weight_rows& old) {
  const int slot = slot_of_[j];
  const double c = value_[slot];
  value_[slot] = 0.0;
  for (int p = old.iw[j]; p < old.iw[j + 1]; ++p)
    if (!add(old.jw[p], c * old.w[p], true)) return false;
  return true;
}

bool interpolation_row::take(int i, const weight_rows& old) {
  i_ = i;
  size_ = 1;
  zero_row_sum_ = false;
  if (old.iw[i + 1] - old.iw[i] >= capacity_) return false;
  for (int p = old.iw[i]; p < old.iw[i + 1]; ++p) {
    ++size_;
    column_[size_] = old.jw[p];
    value_[size_] = old.w[p];
  }
  return true;
}

void interpolation_row::abandon() {
  for (int s = 1; s <= size_; ++s) slot_of_[column_[s]] = 0;
  size_ = 0;
}

// Non-zero interpolatory slots move to the front, behind the diagonal; returns their sums, `all` gets those
// of every slot.
interpolation_row::sums interpolation_row::pack_interpolatory(sums& all) {
  sums kept;
  slot_of_[i_] = 0;
  int packed = 1;
  for (int s = 2; s <= size_; ++s) {
    const double v = value_[s];
    slot_of_[column_[s]] = 0;
    all.add(v);
    if (!interpolatory_[s] || v == 0.0) continue;
    kept.add(v);
    ++packed;
    column_[packed] = column_[s];
    value_[packed] = v;
  }
  size_ = packed;
  return kept;
}

// Values of a sign without a kept partner go to the diagonal; those of the other sign are made up by scaling.
interpolation_row::scales interpolation_row::correct(double diagonal, const sums& kept, const sums& all) {
  scales s{diagonal, 1.0, 1.0};
  if (kept.positive <= 0.0) {
    s.diagonal += all.positive;
  } else {
    s.positive = all.positive / kept.positive;
  }
  if (kept.negative <= 0.0) {
    s.diagonal -= all.negative;
  } else {
    s.negative = all.negative / kept.negative;
  }
  return s;
}

void interpolation_row::scale(const scales& s) {
  for (int k = 2; k <= size_; ++k) value_[k] *= value_[k] > 0.0 ? s.positive : s.negative;
}

void interpolation_row::truncate(double etr, truncation limits) {
  double largest = 0.0, smallest = 0.0;
  for (int s = 2; s <= size_; ++s) {
    largest = std::max(largest, value_[s]);
    smallest = std::min(smallest, value_[s]);
  }
  if (limits == truncation::one_limit) {
    largest = std::max(largest, -smallest);
    smallest = -largest;
  }
  int packed = 1;
  for (int s = 2; s <= size_; ++s) {
    const double v = value_[s];
    if (v > etr * smallest && v < etr * largest) continue;
    ++packed;
    column_[packed] = column_[s];
    value_[packed] = v;
  }
  size_ = packed;
}

interpolation_row::sums interpolation_row::sum_slots() const {
  sums kept;
  for (int s = 2; s <= size_; ++s) kept.add(value_[s]);
  return kept;
}

void interpolation_row::scale_to_unit_row_sum() {
  double sum = 0.0;
  for (int s = 2; s <= size_; ++s) sum += value_[s];
  zero_row_sum_ = sum == 0.0;
  if (zero_row_sum_) return;
  for (int s = 2; s <= size_; ++s) value_[s] /= sum;
}

interpolation_row::result interpolation_row::finish(double etr, truncation limits) {
  const double diagonal = value_[1];
  sums all;
  const sums kept = pack_interpolatory(all);
  scales s = correct(diagonal, kept, all);
  if (size_ == 1 || s.diagonal <= 0.0) return result::no_weights;
  scale(s);
  if (etr > 0.0 && limits != truncation::none) {
    // The second correction takes the place of the first: the truncated row keeps the untruncated row's sum.
    truncate(etr, limits);
    s = correct(diagonal, sum_slots(), all);
    if (size_ == 1 || s.diagonal <= 0.0) return result::no_weights;
    scale(s);
  }
  for (int k = 2; k <= size_; ++k) value_[k] *= -1.0 / s.diagonal;
  if (o_.unit_row_sum) scale_to_unit_row_sum();
  return result::weights;
}

}  // namespace tier
