// The shortest height of a triangle over its longest edge, and the warning that names the worst.
// Called by the input stage.
#include "input/needle_triangles.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "input/mesh_access.h"
#include "run/base/streams.h"

namespace keld {
namespace {

/// The shortest height stands on the longest edge: twice the area over its square.
/// 0 where all nodes lie at one place.
double heightRatio(const std::array<Vector3, 3>& p) {
  const Vector3 a = p[1] - p[0], b = p[2] - p[0], c = p[2] - p[1];
  const double longest = std::max({norm(a), norm(b), norm(c)});
  return longest > 0.0 ? norm(cross(a / longest, b / longest)) : 0.0;
}

}  // namespace

void warnOfNeedles() {
  constexpr std::size_t most_named = 10;
  std::vector<std::pair<double, int>> needles;  // ratio, element
  for (int e = 1; e <= elementTable.elementCount; ++e) {
    if (!isTriangle(e)) continue;
    const double ratio = heightRatio(cornersOf(e));
    if (ratio < leastHeightRatio) needles.emplace_back(ratio, e);
  }
  if (needles.empty()) return;
  const std::size_t named = std::min(needles.size(), most_named);
  std::partial_sort(needles.begin(), needles.begin() + static_cast<std::ptrdiff_t>(named), needles.end());
  std::string list;
  for (std::size_t i = 0; i < named; ++i) {
    char text[64];
    std::snprintf(text, sizeof text, "%selement %d (%.1e)", i > 0 ? ", " : "", needles[i].second,
                  needles[i].first);
    list += text;
  }
  vPrintMessage(
      1,
      "\n !! Warning !!  Triangles that are needles or nearly empty, with a shortest height below %g "
      "times the longest edge: %zu. They make the result inexact around them and may keep the multigrid "
      "solver from its target: mend the mesh there. Worst first: %s%s\n",
      leastHeightRatio, needles.size(), list.c_str(), needles.size() > named ? ", ..." : "");
}

}  // namespace keld
