// Block rows of a level's matrix in double, from wherever they are kept, and products of them.
// Called by the smoothing of interpolation and the Galerkin product.
#pragma once

#include "tier/aggregation/block_matrix.h"

namespace tier::aggregation {

/// Where the blocks of a row stand: those of the level's own matrix.
struct block_pattern {
  int n, block;
  const from_zero<int>&start, &column;
};

/// A source of block rows: count x block x block numbers of row i, in the order of the pattern.
class block_rows {
 public:
  explicit block_rows(const block_pattern& pattern) : pattern_(pattern) {}
  virtual ~block_rows() = default;
  block_rows(const block_rows&) = delete;
  block_rows& operator=(const block_rows&) = delete;

  /// The row stays until the thread asks for another. Wide loads behind it are allowed.
  virtual const double* row(int i, int tid) = 0;

  const block_pattern& pattern() const { return pattern_; }
  int columns_of(int i) const { return pattern_.start[i + 1] - pattern_.start[i]; }
  int longest() const;

 private:
  block_pattern pattern_;
};

/// Numbers of a column of a block in work space, where it is rounded up to whole registers.
int padded(int rows);

/// out += (row of A) P: place[J] says which block of `out` belongs to
/// coarse column J; blocks of padded(b) x m.
template <class T>
void add_row_product(const double* row, const int* columns, int count, int b, const block_matrix<T>& p,
                     const int* place, double* out);

/// out += P_k^T (row of A P): blocks of padded(m) x m in `out`, of padded(b) x m in `product`.
template <class T>
void add_transposed_product(const block_matrix<T>& p, int k, const int* columns, int count,
                            const double* product, const int* place, double* out);

/// out <- Q - omega D^-1 product for a row's `count` blocks of b x m, D^-1 = `inverse`: Q is the row's block
/// of `tentative`, of padded storage, at place `own` and zero elsewhere; blocks of padded(b) x m in
/// `product`.
template <class T>
void subtract_from_tentative(const T* inverse, double omega, int b, int m, int count, const double* product,
                             int own, const double* tentative, T* out);

}  // namespace tier::aggregation
