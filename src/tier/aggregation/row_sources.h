// The sources of block rows: the caller's matrix, a level in single precision, a level in double.
// Made by set-up.
#pragma once

#include "tier/aggregation/block_rows.h"
#include "tier/aggregation/points.h"

namespace tier::aggregation {

/// The caller's matrix, gathered row by row: the double values of level 1 are nowhere stored as blocks.
class caller_source final : public block_rows {
 public:
  caller_source(caller_rows& rows, const block_pattern& pattern) : block_rows(pattern), rows_(rows) {
    room_ = std::int64_t{longest()} * pattern.block * pattern.block + padding;
    buffer_.allocate(room_ * block_team(pattern.n), 0.0, "rows", "caller_source");
  }
  const double* row(int i, int tid) override {
    double* const out = buffer_.data() + tid * room_;
    rows_.blocks(i, tid, &pattern().column[pattern().start[i]], columns_of(i), out);
    return out;
  }

 private:
  caller_rows& rows_;
  std::int64_t room_;
  from_zero<double> buffer_;
};

class stored_source final : public block_rows {
 public:
  explicit stored_source(const block_matrix<double>& a)
      : block_rows({a.n, a.rows, a.start, a.column}), a_(a) {}
  const double* row(int i, int) override { return a_.block(a_.start[i]); }

 private:
  const block_matrix<double>& a_;
};

class single_source final : public block_rows {
 public:
  explicit single_source(const block_matrix<float>& a) : block_rows({a.n, a.rows, a.start, a.column}), a_(a) {
    room_ = longest() * a.size_of_block() + padding;
    buffer_.allocate(room_ * block_team(a.n), 0.0, "rows", "single_source");
  }
  const double* row(int i, int tid) override {
    double* const out = buffer_.data() + tid * room_;
    const float* const from = a_.block(a_.start[i]);
    const std::int64_t size = columns_of(i) * a_.size_of_block();
    for (std::int64_t k = 0; k < size; ++k) out[k] = from[k];
    return out;
  }

 private:
  const block_matrix<float>& a_;
  std::int64_t room_;
  from_zero<double> buffer_;
};

}  // namespace tier::aggregation
