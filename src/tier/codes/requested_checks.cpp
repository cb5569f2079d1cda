// The logical and numerical tests that a caller asks for with chktol.
#include <algorithm>
#include <cmath>
#include <string>

#include "tier/codes/matrix_check.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/numbered.h"

namespace tier {

namespace {

constexpr const char* routine = "logical_check";

void check_columns_once(const call_arguments& call) {
  const view<const int> ia(call.ia), ja(call.ja);
  work_array<int> last_row;
  last_row.allocate(call.nnu, 0, "last_row", routine);
  for (int i = 1; i <= call.nnu; ++i)
    for (int j = ia[i]; j < ia[i + 1]; ++j) {
      if (last_row[ja[j]] == i)
        fail(ierr_bad_matrix, "Array <ja> not properly defined! Row " + std::to_string(i) + ": column " +
                                  std::to_string(ja[j]) + " stands twice (logical_check)");
      last_row[ja[j]] = i;
    }
}

void check_diagonal_signs(const call_arguments& call) {
  for (int i = 1; i <= call.nnu; ++i)
    if (call.a[call.ia[i - 1] - 1] < 0.0)
      fail(ierr_bad_matrix, "Array <a> not properly defined! Row " + std::to_string(i) +
                                ": the diagonal entry is negative (logical_check)");
}

void check_functions_used(const call_arguments& call, const controls& c) {
  if (c.nsys == 1) return;
  numbered<bool, most_functions + 1> used{};
  for (int i = 0; i < call.nnu; ++i) used[call.iu[i]] = true;
  const auto unused = std::count(used.begin() + 1, used.begin() + 1 + c.nsys, false);
  if (unused > 0)
    warn(warn_unknown_without_variable,
         "There exist(s) " + std::to_string(unused) + " unknown(s) without variable attached!");
}

/// Rows of the transposed matrix: columns and positions of the entries in ascending rows.
struct transpose {
  work_array<int> start, row, position;

  explicit transpose(const call_arguments& call) {
    const view<const int> ia(call.ia), ja(call.ja);
    start.allocate(call.nnu + 1, 0, "start", routine);
    row.allocate(call.nna, "row", routine);
    position.allocate(call.nna, "position", routine);
    for (int j = 1; j <= call.nna; ++j) ++start[ja[j]];
    int next = 1;
    for (int i = 1; i <= call.nnu; ++i) next = std::exchange(start[i], next) + next;
    start[call.nnu + 1] = next;
    for (int i = 1; i <= call.nnu; ++i)
      for (int j = ia[i]; j < ia[i + 1]; ++j) {
        const int k = start[ja[j]]++;
        row[k] = i;
        position[k] = j;
      }
    for (int i = call.nnu; i > 1; --i) start[i] = start[i - 1];
    start[1] = 1;
  }
};

/// Largest |a_ij - a_ji| in units of the diagonal of row i; an entry without counterpart ends the call.
double asymmetry(const call_arguments& call) {
  const view<const int> ia(call.ia), ja(call.ja);
  const view<const double> a(call.a);
  const transpose t(call);
  work_array<int> place;  // of a column in the current row
  place.allocate(call.nnu, 0, "place", routine);
  double largest = 0.0;
  for (int i = 1; i <= call.nnu; ++i) {
    for (int j = ia[i]; j < ia[i + 1]; ++j) place[ja[j]] = j;
    if (t.start[i + 1] - t.start[i] != ia[i + 1] - ia[i])
      fail(ierr_inconsistent_input, "However, it is not even symmetrically stored!");
    for (int k = t.start[i]; k < t.start[i + 1]; ++k) {
      const int j = place[t.row[k]];
      if (j < ia[i] || j >= ia[i + 1])
        fail(ierr_inconsistent_input, "However, it is not even symmetrically stored!");
      largest = std::max(largest, std::abs(a[j] - a[t.position[k]]) / std::abs(a[ia[i]]));
    }
  }
  return largest;
}

/// Largest |row sum| in units of the diagonal over the functions that are fixed only up to a constant; a row
/// counts with the entries of its own function, in half storage with those of the other triangle too.
double largest_row_sum(const call_arguments& call, const controls& c) {
  const view<const int> ia(call.ia), ja(call.ja), iu(call.iu);
  const view<const double> a(call.a);
  const auto function = [&](int i) { return c.nsys == 1 ? 1 : iu[i]; };
  work_array<double> sum;
  sum.allocate(call.nnu, 0.0, "sum", routine);
  for (int i = 1; i <= call.nnu; ++i) {
    if (c.iscale[function(i)] != 1) continue;
    for (int j = ia[i]; j < ia[i + 1]; ++j) {
      if (function(ja[j]) != function(i)) continue;
      sum[i] += a[j];
      if (c.half_stored && ja[j] != i) sum[ja[j]] += a[j];
    }
  }
  double largest = 0.0;
  for (int i = 1; i <= call.nnu; ++i) largest = std::max(largest, std::abs(sum[i] / a[ia[i]]));
  return largest;
}

}  // namespace

void test_matrix(const call_arguments& call, const controls& c) {
  if (call.chktol < 0.0) return;
  check_columns_once(call);
  check_diagonal_signs(call);
  check_functions_used(call, c);
  const double difference = c.isym == symmetry::symmetric && !c.half_stored ? asymmetry(call) : 0.0;
  if (call.chktol == 0.0) return;
  if (largest_row_sum(call, c) > call.chktol)
    warn(warn_setting_adjusted, "Parameter <irow0> may be wrong. Check!");
  if (difference > call.chktol) warn(warn_setting_adjusted, "Parameter <isym> may be wrong. Check!");
}

}  // namespace tier
