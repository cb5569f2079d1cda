// The rows that set-up works on: the matrix of a level or its primary
// matrix of points, and interpolation weights.
#pragma once

#include <algorithm>

#include "tier/store/work_arrays.h"

namespace tier {

/// Rows ia[i] .. ia[i+1]-1, i = 1..n, diagonal first; columns of another kind do not couple.
/// After rwsrt the strong couplings of row i are ia[i]+1 .. ja[ia[i]], the largest one first.
struct couplings {
  int n = 0;
  view<const int> ia;
  view<int> ja;
  view<double> a;
  view<const int> kind;  // [1..n] function of a variable; null where all couple

  int length(int i) const { return ia[i + 1] - ia[i]; }
  /// Position of the last strong coupling; ia[i] where there is none, 0 where the row is unusable.
  int last_strong(int i) const { return ja[ia[i]]; }
};

/// Interpolation rows iw[j] .. iw[j+1]-1; columns are variables of the same level while weights are made,
/// then coarse numbers.
struct weight_rows {
  view<const int> iw, jw;
  view<const double> w;
  bool has(int j) const { return iw && iw[j + 1] > iw[j]; }
};

/// Entries of the longest of n rows.
inline int longest_row(view<const int> ia, int n) {
  int longest = 0;
  for (int i = 1; i <= n; ++i) longest = std::max(longest, ia[i + 1] - ia[i]);
  return longest;
}

}  // namespace tier
