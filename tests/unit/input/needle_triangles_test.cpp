// Which triangles count as needles, and how they are named.
#include "input/needle_triangles.h"

#include <gmock/gmock.h>

#include "support/model_test.h"

namespace keld {
namespace {

using testing_support::loadModel;
using testing_support::TestMesh;

class Needles : public testing_support::ModelTest {
 protected:
  static std::string warningOf(const TestMesh& mesh) {
    loadModel(mesh);
    testing::internal::CaptureStdout();
    warnOfNeedles();
    return testing::internal::GetCapturedStdout();
  }
};

// Nodes 4 and 5 lie 0.05 and 0.15 above the side 1-2 of length 10; node 6 lies at node 2.
const std::vector<Vector3> nodes = {{0, 0, 0}, {10, 0, 0}, {0, 8, 0}, {4, 0.05, 0}, {4, 0.15, 0}, {10, 0, 0}};

TEST_F(Needles, AreNamedWorstFirstByHeightOverLongestEdge) {
  EXPECT_THAT(warningOf({nodes, {{1, 2, 3}, {1, 2, 5}}, 0.2}), "");
  EXPECT_THAT(warningOf({nodes, {{1, 2, 3}, {1, 2, 4}, {1, 2, 5}, {2, 6, 3}, {2, 2, 6}}, 0.2}),
              testing::HasSubstr("longest edge: 3. "));
  EXPECT_THAT(warningOf({nodes, {{1, 2, 3}, {4, 1, 2}, {1, 2, 5}, {2, 6, 3}}, 0.2}),
              testing::EndsWith("Worst first: element 4 (0.0e+00), element 2 (5.0e-03)\n"));
  EXPECT_THAT(warningOf({nodes, std::vector<std::array<int, 3>>(11, {1, 2, 4}), 0.2}),
              testing::EndsWith("element 10 (5.0e-03), ...\n"));
}

}  // namespace
}  // namespace keld
