// The one pass of every call over the matrix, and the checks of function and point numbers.
#include "tier/codes/matrix_check.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <string>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"
#include "tier/store/threads.h"

namespace tier {

namespace {

enum class triangle { both, lower, upper };

/// The caller's matrix with 1-based access.
struct caller_matrix {
  explicit caller_matrix(const call_arguments& call) : ia(call.ia), ja(call.ja), a(call.a), n(call.nnu) {}
  view<const int> ia, ja;
  view<const double> a;
  int n;
};

[[noreturn]] void bad_array(const char* name, const std::string& why) {
  fail(ierr_bad_matrix, std::string("Array <") + name + "> not properly defined! " + why + " (matrix_check)");
}

/// The smallest i in lo..hi for which bad(i), hi + 1 if there is none;
/// the same for any team. `rows`: of each i.
template <class Predicate>
int first_bad(int lo, int hi, Predicate bad, int rows = 1) {
  std::atomic<int> first{hi + 1};
  [[maybe_unused]] const int team = team_size(std::int64_t{rows} * (hi - lo + 1), parm().nmin_matrix);
#pragma omp parallel for num_threads(team) schedule(static)
  for (int i = lo; i <= hi; ++i) {
    if (i >= first.load(std::memory_order_relaxed) || !bad(i)) continue;
    int seen = first.load();
    while (i < seen && !first.compare_exchange_weak(seen, i)) {
    }
  }
  return first;
}

void check_pointers(const caller_matrix& m, int nna) {
  if (std::int64_t{m.ia[m.n + 1]} - 1 != nna)
    fail(ierr_bad_matrix, "Wrong pointer value: ia0(nnu+1)-1 <> nna in (tier_main)!");
  if (m.ia[1] != 1) fail(ierr_bad_matrix, "ia(1)=1 expected!");
  const int row = first_bad(1, m.n, [&](int i) { return m.ia[i + 1] <= m.ia[i]; });
  if (row <= m.n) bad_array("ia", "Row " + std::to_string(row) + " has no entry");
}

/// The triangle that half storage uses: that of the first off-diagonal entry.
triangle stored_triangle(const caller_matrix& m) {
  for (int i = 1; i <= m.n; ++i)
    if (m.ia[i + 1] - m.ia[i] > 1) return m.ja[m.ia[i] + 1] < i ? triangle::lower : triangle::upper;
  return triangle::both;
}

bool outside(triangle stored, int i, int column) {
  return (stored == triangle::lower && column > i) || (stored == triangle::upper && column < i);
}

/// Whether positions first..last hold columns of the matrix and finite values. The loops don't branch, so
/// that the compiler makes vector instructions of them.
bool sound(const caller_matrix& m, std::int64_t first, std::int64_t last) {
  constexpr std::uint64_t magnitude = ~std::uint64_t{0} >> 1, exponent_step = std::uint64_t{1} << 52;
  const auto most = static_cast<unsigned>(m.n);
  unsigned strange = 0;
  for (std::int64_t p = first; p <= last; ++p) strange |= static_cast<unsigned>(m.ja[p]) - 1u >= most;
  std::uint64_t overflow = 0;  // into the sign bit, from an exponent of ones alone
  for (std::int64_t p = first; p <= last; ++p)
    overflow |= (std::bit_cast<std::uint64_t>(m.a[p]) & magnitude) + exponent_step;
  return strange == 0 && (overflow & ~magnitude) == 0;
}

bool bad_row(const caller_matrix& m, triangle stored, int i) {
  const int first = m.ia[i], last = m.ia[i + 1] - 1;
  bool bad = m.ja[first] != i || m.a[first] == 0.0;
  for (int j = first; j <= last; ++j)
    bad |= m.ja[j] < 1 || m.ja[j] > m.n || !std::isfinite(m.a[j]) || outside(stored, i, m.ja[j]);
  return bad;
}

[[noreturn]] void explain_row(const caller_matrix& m, triangle stored, int i) {
  const std::string row = "Row " + std::to_string(i) + ": ";
  const int first = m.ia[i];
  for (int j = first; j < m.ia[i + 1]; ++j) {
    const std::string place = row + "column " + std::to_string(m.ja[j]);
    if (m.ja[j] < 1 || m.ja[j] > m.n) bad_array("ja", place + " is not within 1 to " + std::to_string(m.n));
    if (j == first && m.ja[j] != i) bad_array("ja", place + " stands in the place of the diagonal");
    if (outside(stored, i, m.ja[j])) bad_array("ja", place + " belongs to the triangle that isn't stored");
    if (std::isnan(m.a[j])) fail(ierr_residual_nan, "NaN detected in (matrix_check)! " + place);
    if (std::isinf(m.a[j])) fail(ierr_residual_overflow, "Infinity detected in (matrix_check)! " + place);
  }
  bad_array("a", row + "the diagonal entry is zero");
}

}  // namespace

void check_matrix(const call_arguments& call, const controls& c) {
  const caller_matrix m(call);
  check_pointers(m, call.nna);
  const triangle stored = c.half_stored ? stored_triangle(m) : triangle::both;
  constexpr int rows_of_block = 512;
  const int blocks = (m.n - 1) / rows_of_block + 1;
  const auto bad_block = [&](int b) {
    const int lo = 1 + (b - 1) * rows_of_block, hi = std::min(m.n, b * rows_of_block);
    bool bad = c.half_stored || !sound(m, m.ia[lo], m.ia[hi + 1] - 1);
    for (int i = lo; i <= hi; ++i) bad |= m.ja[m.ia[i]] != i || m.a[m.ia[i]] == 0.0;
    return bad;
  };
  const int first = (first_bad(1, blocks, bad_block, rows_of_block) - 1) * rows_of_block + 1;
  const int row = first_bad(std::min(first, m.n + 1), m.n, [&](int i) { return bad_row(m, stored, i); });
  if (row <= m.n) explain_row(m, stored, row);

  const auto require_within = [&](const char* name, view<const int> numbers, int most) {
    const int i = first_bad(1, m.n, [&](int k) { return numbers[k] < 1 || numbers[k] > most; });
    if (i <= m.n)
      bad_array(name, "Element " + std::to_string(i) + " is not within 1 to " + std::to_string(most));
  };
  if (c.nsys > 1) require_within("iu", view<const int>(call.iu, c.nnu), c.nsys);
  if (c.has_ip) require_within("ip", view<const int>(call.ip, c.nnu), c.nnu);
}

int count_points(const call_arguments& call, const controls& c) {
  return c.has_ip ? *std::max_element(call.ip, call.ip + call.nnu) : 0;
}

void check_points(const call_arguments& call, const controls& c) {
  const bool by_points = c.nstyp == approach::by_points || c.nxtyp == smoother_kind::block_gauss_seidel ||
                         c.nxtyp == smoother_kind::block_ilu0;
  if (!c.has_ip || !by_points) return;
  const view<const int> ip(call.ip), iu(call.iu);
  for (int i = 1; i <= c.nnu; ++i) {
    const int before = i == 1 ? 0 : ip[i - 1];
    if (ip[i] != before && ip[i] != before + 1)
      fail(ierr_bad_matrix, "Variables are not point-wise ordered!");
  }
  if (c.nsys == 1 || !parm().check_allpnts) return;
  for (int i = 2; i <= c.nnu; ++i) {
    if (ip[i] != ip[i - 1]) continue;
    if (iu[i] == iu[i - 1]) fail(ierr_bad_matrix, "Unknown(s) multiply defined at a point!");
    if (c.dummy_primary && iu[i - 1] == c.nprim)
      fail(ierr_bad_matrix, "Dummy primary unknown >nprim> has to be stored last!");
    if (iu[i] < iu[i - 1] && !(c.dummy_primary && iu[i] == c.nprim))
      fail(ierr_bad_matrix, "Unknowns are not ordered consecutively at each point!");
  }
}

}  // namespace tier
