// Rows into points, and the caller's compressed rows into block rows.
#include "tier/aggregation/points.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"

namespace tier::aggregation {

namespace {

constexpr const char* routine = "lay_out_points";

void sort_rows_by_point(point_layout& l) {
  l.first.allocate(l.points + 1, 0, "first", routine);
  for (int r = 0; r < l.rows; ++r) ++l.first[l.point[r] + 1];
  for (int p = 0; p < l.points; ++p) l.first[p + 1] += l.first[p];
  l.member.allocate(l.rows, "member", routine);
  for (int r = 0; r < l.rows; ++r) l.member[l.first[l.point[r]]++] = r;
  for (int p = l.points; p > 0; --p) l.first[p] = l.first[p - 1];
  l.first[0] = 0;
}

}  // namespace

point_layout lay_out_points(const level& fine) {
  point_layout l;
  l.rows = fine.n;
  l.points = fine.ip ? fine.npnts : fine.n;
  l.point.allocate(l.rows, "point", routine);
  for (int r = 0; r < l.rows; ++r) l.point[r] = fine.ip ? fine.ip[r + 1] - 1 : r;
  sort_rows_by_point(l);
  for (int p = 0; p < l.points; ++p) {
    const int size = l.first[p + 1] - l.first[p];
    if (size > most_block)
      fail(ierr_inconsistent_input, "Point " + std::to_string(p + 1) + " has " + std::to_string(size) +
                                        " variables, aggregation takes at most " +
                                        std::to_string(most_block) + " (lay_out_points)");
    l.block = std::max(l.block, size);
  }
  require_in_range(std::int64_t{l.points} * l.block < max_entries, "ip");
  l.place.allocate(l.rows, "place", routine);
  for (int p = 0; p < l.points; ++p)
    for (int k = l.first[p]; k < l.first[p + 1]; ++k) l.place[l.member[k]] = p * l.block + k - l.first[p];
  return l;
}

caller_rows::caller_rows(const level& fine, const point_layout& layout, double scale)
    : fine_(fine), layout_(layout), scale_(scale) {
  mark_.allocate(std::int64_t{block_team(layout.points)} * layout.points, -1, "mark", "caller_rows");
}

// The second visit of a row, which writes, has another stamp than the first, which counts.
int caller_rows::columns(int i, int tid, int* columns) {
  int* const mark = mark_.data() + std::int64_t{tid} * layout_.points;
  const int stamp = columns ? -2 - i : i;
  int count = 1;
  mark[i] = stamp;
  if (columns) columns[0] = i;
  for (int m = layout_.first[i]; m < layout_.first[i + 1]; ++m) {
    const int row = layout_.member[m] + 1;
    for (int k = fine_.ia[row]; k < fine_.ia[row + 1]; ++k) {
      const int p = layout_.point[fine_.ja[k] - 1];
      if (mark[p] == stamp) continue;
      mark[p] = stamp;
      if (columns) columns[count] = p;
      ++count;
    }
  }
  return count;
}

void caller_rows::blocks(int i, int tid, const int* columns, int count, double* out) {
  int* const mark = mark_.data() + std::int64_t{tid} * layout_.points;
  const int b = layout_.block, size = b * b, filled = layout_.first[i + 1] - layout_.first[i];
  for (int k = 0; k < count; ++k) mark[columns[k]] = k;
  std::fill_n(out, std::int64_t{count} * size, 0.0);
  double trace = 0.0;
  for (int s = 0; s < filled; ++s) {
    const int row = layout_.member[layout_.first[i] + s] + 1;
    for (int k = fine_.ia[row]; k < fine_.ia[row + 1]; ++k) {
      const int column = fine_.ja[k] - 1, p = layout_.point[column];
      out[mark[p] * size + (layout_.place[column] - p * b) * b + s] += scale_ * fine_.a[k];
    }
    trace += out[s * b + s];
  }
  for (int s = filled; s < b; ++s) out[s * b + s] = trace > 0.0 ? trace / b : 1.0;
  for (int k = 0; k < count; ++k) mark[columns[k]] = -1;
}

double scale_of(const level& fine) {
  double largest = 0.0;
  for (int r = 1; r <= fine.n; ++r) largest = std::max(largest, std::abs(fine.a[fine.ia[r]]));
  int exponent = 0;
  std::frexp(largest, &exponent);
  return std::ldexp(1.0, std::clamp(-exponent, -1000, 1000));
}

}  // namespace tier::aggregation
