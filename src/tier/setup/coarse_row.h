// One row of the coarse operator: products of a transposed interpolation row, rows of the matrix and rows of
// interpolation. Used by all variants of opdfn, one object for each thread.
#pragma once

#include <cstdint>

#include "tier/store/hierarchy.h"

namespace tier {

/// A row that grows from place `first` on. The marker holds the last place of each column; those below
/// `first` are of earlier rows.
struct growing_row;

/// Whether rows are formed as (R A) P: a row of R A is summed up first, so that each of its entries meets its
/// row of weights once. Where functions are given, and entries often cancel, each product r a_il w_lm is
/// added by itself: which sums end as exact zeros, and so the pattern of the next level, hangs on the order.
inline bool sums_restricted_rows(const level& fine) { return !fine.iu; }

/// Forms coarse rows of `fine`, whose interpolation and its transpose are complete. The loops over products
/// are functions of their own, which keeps what they need in registers.
class coarse_row_former {
 public:
  /// Memory of a thread: markers [1..fine variables] and [1..coarse variables], zero at first, and a row of
  /// R A with room for all its entries. A former that neither counts nor sums
  /// up rows of R A needs the coarse marker alone.
  struct scratch {
    view<int> fine_marker, coarse_marker, columns;
    view<double> sums;
  };

  coarse_row_former(const level& fine, int coarse_rows, bool keep_zeros, const scratch& s)
      : fine_(fine), coarse_rows_(coarse_rows), keep_zeros_(keep_zeros), s_(s) {}

  /// Entries of coarse row c. Not to be mixed with form() on the same scratch.
  int count(int c);

  /// Writes row c from position `start` on; returns the next free position,
  /// or 0 when the row might end behind `limit`.
  std::int64_t form(int c, std::int64_t start, std::int64_t limit, view<int> ja, view<double> a);

 private:
  void restrict_rows(int c);
  bool add_restricted_row(int c, growing_row& result, std::int64_t limit);
  bool add_products(int c, growing_row& result, std::int64_t limit);
  void fetch_ahead(int c) const;

  const level& fine_;
  int coarse_rows_;
  bool keep_zeros_;
  scratch s_;
  int length_ = 0;  // of the row of R A
};

}  // namespace tier
