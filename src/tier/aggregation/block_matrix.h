// Sparse matrices of small dense blocks, the levels' storage of smoothed aggregation.
// Used by every file of this folder. All numbers of points, rows and positions in this folder count from 0.
#pragma once

#include <cstdint>

#include "tier/store/threads.h"
#include "tier/store/work_arrays.h"

namespace tier::aggregation {

constexpr int most_block = 12;  // rows of a block, and near-null vectors
constexpr int padding = 8;      // elements behind blocks and vectors, so that wide loads stay inside

/// A work array that counts from 0.
template <class T>
class from_zero : public work_array<T> {
 public:
  T& operator[](std::int64_t i) { return this->data()[i]; }
  const T& operator[](std::int64_t i) const { return this->data()[i]; }
  /// At least n elements, of any content.
  void need(std::int64_t n, const char* name, const char* routine) {
    if (this->size() < n) this->allocate(n, name, routine);
  }
};

/// n block rows; blocks of rows x columns numbers, each stored by columns, so that products run along them.
template <class T>
struct block_matrix {
  int n = 0, rows = 0, columns = 0;
  from_zero<int> start;   // [0..n] first block of a block row
  from_zero<int> column;  // [0..blocks-1] block column; the diagonal first in a square matrix
  from_zero<T> value;     // [blocks * rows * columns + padding]

  int blocks() const { return start[n]; }
  std::int64_t size_of_block() const { return std::int64_t{rows} * columns; }
  T* block(std::int64_t k) { return value.data() + k * size_of_block(); }
  const T* block(std::int64_t k) const { return value.data() + k * size_of_block(); }
  void allocate_blocks(const char* name, const char* routine) {
    value.allocate(blocks() * size_of_block() + padding, name, routine);
    for (int i = 1; i <= padding; ++i) value[value.size() - i] = T(0);
  }
};

/// Threads for a loop over n block rows; small levels are not worth a team.
inline int block_team(int n) {
  constexpr int least_rows = 1000;
  return team_size(n, least_rows);
}

}  // namespace tier::aggregation
