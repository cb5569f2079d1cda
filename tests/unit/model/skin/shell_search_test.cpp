// Searches of the processing of closed skins against full scans.
#include "model/skin/shell_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace keld {
namespace {

TEST(ShellSearch, FindsTheNearestPointAndTheBoxesAsAFullScanDoes) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(-3.0, 5.0), extent(0.001, 1.5);
  std::uniform_int_distribution<int> coarse(-4, 4);
  Column<Vector3> points(400), low(400), high(400);
  std::vector<int> members;
  for (int k = 1; k <= 400; ++k) {
    points[k] = {0.5 * coarse(random), 0.5 * coarse(random), k % 3 * 0.1};  // many ties
    if (k % 5) members.push_back(k);
    low[k] = {place(random), place(random), place(random)};
    for (std::size_t axis = 0; axis < 3; ++axis) high[k][axis] = low[k][axis] + extent(random);
  }
  const PointGrid points_grid(points, members);
  const BoxGrid boxes(low, high);
  std::vector<int> found;
  for (int trial = 0; trial < 500; ++trial) {
    const Vector3 at{place(random), place(random), place(random)};
    const double radius = trial % 2 ? 0.7 : 50.0;
    int nearest = 0;
    double best = radius;
    for (const int m : members)
      if (const double d = distance(points[m], at); d < radius && d <= best) best = d, nearest = m;
    ASSERT_EQ(points_grid.nearest(at, radius), nearest);

    boxes.candidates(at, found);
    for (int k = 1; k <= 400; ++k) {
      bool inside = true;
      for (std::size_t axis = 0; axis < 3; ++axis)
        inside = inside && low[k][axis] <= at[axis] && at[axis] <= high[k][axis];
      ASSERT_TRUE(!inside || std::find(found.begin(), found.end(), k) != found.end()) << k;
    }
  }
}

}  // namespace
}  // namespace keld
