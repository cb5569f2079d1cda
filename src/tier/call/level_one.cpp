// Copies and transformations of the caller's system.
#include "tier/call/level_one.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

constexpr const char* routine = "level_one";

void view_own_matrix(level& l) {
  l.ia = l.own_ia;
  l.ja = l.own_ja;
  l.a = l.own_a;
}

void allocate_copy(level& l, std::int64_t entries) {
  l.own_ja.allocate(entries, "ja", routine);
  l.own_a.allocate(entries, "a", routine);
}

/// Both triangles from one: row i gets its stored entries, then a_ji of the rows j that store (j, i).
void expand_half(level& l, int n) {
  work_array<int> ia;
  ia.allocate(n + 1, 0, "ia", routine);
  for (int i = 1; i <= n; ++i) {
    ia[i] += l.ia[i + 1] - l.ia[i];
    for (int j = l.ia[i] + 1; j < l.ia[i + 1]; ++j) ++ia[l.ja[j]];
  }
  std::int64_t next = 1;
  for (int i = 1; i <= n + 1; ++i) {
    require_in_range(next <= max_entries, "nna");
    next += std::exchange(ia[i], static_cast<int>(next));
  }
  allocate_copy(l, ia[n + 1] - 1);
  work_array<int> fill;
  fill.allocate(n, "fill", routine);
  for (int i = 1; i <= n; ++i) {  // the stored rows first, so that the diagonal leads
    const int count = l.ia[i + 1] - l.ia[i];
    std::copy_n(&l.ja[l.ia[i]], count, &l.own_ja[ia[i]]);
    std::copy_n(&l.a[l.ia[i]], count, &l.own_a[ia[i]]);
    fill[i] = ia[i] + count;
  }
  for (int i = 1; i <= n; ++i)
    for (int j = l.ia[i] + 1; j < l.ia[i + 1]; ++j) {
      const int k = fill[l.ja[j]]++;
      l.own_ja[k] = i;
      l.own_a[k] = l.a[j];
    }
  l.own_ia.swap(ia);
  view_own_matrix(l);
}

void copy_without_zeros(level& l, int n) {
  work_array<int> ia;
  ia.allocate(n + 1, "ia", routine);
  ia[1] = 1;
  for (int i = 1; i <= n; ++i) {
    int kept = 1;
    for (int j = l.ia[i] + 1; j < l.ia[i + 1]; ++j) kept += l.a[j] != 0.0;
    ia[i + 1] = ia[i] + kept;
  }
  const int removed = l.ia[n + 1] - ia[n + 1];
  info(message_class::note, "Number of zero entries removed: " + std::to_string(removed));
  work_array<int> ja;
  work_array<double> a;
  ja.allocate(ia[n + 1] - 1, "ja", routine);
  a.allocate(ia[n + 1] - 1, "a", routine);
  int k = 0;
  for (int i = 1; i <= n; ++i)
    for (int j = l.ia[i]; j < l.ia[i + 1]; ++j) {
      if (j > l.ia[i] && l.a[j] == 0.0) continue;
      ja[++k] = l.ja[j];
      a[k] = l.a[j];
    }
  l.own_ia.swap(ia);
  l.own_ja.swap(ja);
  l.own_a.swap(a);
  view_own_matrix(l);
}

void copy_matrix(level& l, int n) {
  const int entries = l.ia[n + 1] - 1;
  allocate_copy(l, entries);
  l.own_ia.allocate(n + 1, "ia", routine);
  std::copy_n(l.ia.data(), n + 1, l.own_ia.data());
  std::copy_n(l.ja.data(), entries, l.own_ja.data());
  std::copy_n(l.a.data(), entries, l.own_a.data());
  view_own_matrix(l);
}

void increase_diagonals(level& l, int n) {
  const double factor = 1.0 + parm().eps_diag;
  info(message_class::note, formatted("Matrix diagonals are modified now (increased by %f ) !", factor));
  for (int i = 1; i <= n; ++i) l.a[l.ia[i]] *= factor;
}

/// Divides each row by its largest magnitude; returns how far the magnitudes were from 1.
double scale_rows(level& l, int n, work_array<double>& row) {
  double factor = 1.0;
  for (int i = 1; i <= n; ++i) {
    double largest = 0.0;
    for (int j = l.ia[i]; j < l.ia[i + 1]; ++j) largest = std::max(largest, std::abs(l.a[j]));
    for (int j = l.ia[i]; j < l.ia[i + 1]; ++j) l.a[j] /= largest;
    row[i] /= largest;
    factor = std::max({factor, largest, 1.0 / largest});
  }
  return factor;
}

double scale_columns(level& l, int n, work_array<double>& column) {
  work_array<double> largest;
  largest.allocate(n, 0.0, "largest", routine);
  const int entries = l.ia[n + 1] - 1;
  for (int j = 1; j <= entries; ++j) largest[l.ja[j]] = std::max(largest[l.ja[j]], std::abs(l.a[j]));
  for (int j = 1; j <= entries; ++j) l.a[j] /= largest[l.ja[j]];
  double factor = 1.0;
  for (int i = 1; i <= n; ++i) {
    column[i] /= largest[i];
    factor = std::max({factor, largest[i], 1.0 / largest[i]});
  }
  return factor;
}

void modify_mat(level& l, int n, int digits, system_scaling& scaling, const controls& c) {
  if (c.ifirst > 1) fail(ierr_inconsistent_input, "Only ifirst=0 or 1 possible now (modify_mat)");
  if (!(parm().factor_matrix_scale >= 1.0 && parm().factor_matrix_scale <= 1.1))
    fail(ierr_illegal_value, "modify_mat: scale factor not in range [1.0:1.1]");
  const std::string steps = std::to_string(digits);
  require_legal(digits > 0 && steps.find_first_not_of("123") == std::string::npos, "modify_mat");

  const bool rows = steps.find('2') != std::string::npos, columns = steps.find('3') != std::string::npos;
  const bool fixed_count = parm().factor_matrix_scale < 1.000000000001;
  if (steps.find('1') != std::string::npos) increase_diagonals(l, n);
  if (!rows && !columns) return;
  if (rows) info(message_class::note, "Performing row scaling (modify_mat)");
  if (columns) info(message_class::note, "Performing column scaling (modify_mat)");
  if (fixed_count)
    info(message_class::note, "using: factor_matrix_scale=1.0d0  (fixed number of iterations selected)");
  if (rows) scaling.row.allocate(n, 1.0, "row", "modify_mat");
  if (columns) scaling.column.allocate(n, 1.0, "column", "modify_mat");
  for (int iteration = 1; iteration <= parm().iter_matrix_scale; ++iteration) {
    const double row_factor = rows ? scale_rows(l, n, scaling.row) : 1.0;
    const double column_factor = columns ? scale_columns(l, n, scaling.column) : 1.0;
    const double factor = std::max(row_factor, column_factor);
    if (factor == 1.0 || (!fixed_count && factor <= parm().factor_matrix_scale)) break;
  }
}

void scale_right_hand_side(level& l, int n, const system_scaling& scaling) {
  if (scaling.row.size() == 0) return;
  l.own_f.allocate(n, "f", "modify_mat");
  for (int i = 1; i <= n; ++i) l.own_f[i] = l.f[i] * scaling.row[i];
  l.f = l.own_f;
}

void set_points(level& l, const call_arguments& call, const controls& c) {
  l.iu = c.nsys > 1 ? view<int>(const_cast<int*>(call.iu), c.nnu) : view<int>();
  l.ip = c.has_ip ? view<int>(const_cast<int*>(call.ip), c.nnu) : view<int>();
  l.npnts = c.npnts;
  if (c.nsys > 1 || c.nstyp != approach::by_points) return;
  l.own_iu.allocate(c.nnu, 1, "iu", routine);
  l.iu = l.own_iu;
  if (c.has_ip) return;
  l.own_ip.allocate(c.nnu, "ip", routine);  // each variable is a point
  for (int i = 1; i <= c.nnu; ++i) l.own_ip[i] = i;
  l.ip = l.own_ip;
  l.npnts = c.nnu;
}

}  // namespace

void bind_level_one(level& fine, const call_arguments& call, const controls& c) {
  fine.n = c.nnu;
  // The library writes none of these but ja, a and u; its views are the same for all levels.
  fine.ia = view<int>(const_cast<int*>(call.ia), c.nnu + 1);
  fine.ja = view<int>(call.ja, call.nna);
  fine.a = view<double>(call.a, call.nna);
  fine.f = view<double>(const_cast<double*>(call.f), c.nnu);
  fine.u = view<double>(call.u, c.nnu);
  set_points(fine, call, c);
  if (c.half_stored) expand_half(fine, c.nnu);
  if (c.iforce0 == transformation::remove_zeros) copy_without_zeros(fine, c.nnu);
}

void modify_level_one(level& fine, system_scaling& scaling, const controls& c) {
  const int digits = modification(c);
  if (digits == 0) return;
  if (fine.own_ia.size() == 0) copy_matrix(fine, c.nnu);
  modify_mat(fine, c.nnu, digits, scaling, c);
  scale_right_hand_side(fine, c.nnu, scaling);
}

void release_level_one(level& fine, system_scaling& scaling) {
  fine.ia = fine.ja = fine.iu = fine.ip = view<int>();
  fine.a = fine.f = fine.u = view<double>();
  fine.own_ia.release();
  fine.own_ja.release();
  fine.own_iu.release();
  fine.own_ip.release();
  fine.own_a.release();
  fine.own_f.release();
  scaling = system_scaling();
}

void scale_first_guess(const system_scaling& scaling, int n, view<double> u) {
  if (scaling.column.size() == 0) return;
  for (int i = 1; i <= n; ++i) u[i] /= scaling.column[i];
}

void restore_solution(const system_scaling& scaling, int n, view<double> u) {
  if (scaling.column.size() == 0) return;
  for (int i = 1; i <= n; ++i) u[i] *= scaling.column[i];
}

}  // namespace tier
