// The scratch file byte by byte, of another mesh and damaged.
#include "model/skin/scratch_file.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <string>

#include "input/mesh_tables.h"
#include "model/skin/shell_connectors.h"
#include "model/skin/shell_neighbours.h"
#include "model/skin/shell_tables.h"
#include "support/skin_scenes.h"

namespace keld {
namespace {

TEST(ScratchFile, HasItsFieldsAtTheirPlacesAndComesBack) {
  makePair();
  makeConnectors(elementsAtNodes(false));
  const std::string bytes = scratchFileBytes();
  ASSERT_EQ(bytes.size(), 46u + 6 * 34 + 5 * 76);
  const auto integer = [&](std::size_t at) {
    int v;
    std::memcpy(&v, &bytes[at], 4);
    return v;
  };
  const auto real = [&](std::size_t at) {
    double v;
    std::memcpy(&v, &bytes[at], 8);
    return v;
  };
  std::string markers;
  for (const unsigned at : {0u, 5u, 10u, 27u, 36u, 45u}) markers.push_back(bytes[at]);
  EXPECT_EQ(markers, "QUARDO");
  EXPECT_EQ(integer(1), 2);
  EXPECT_EQ(integer(6), 5);
  EXPECT_EQ(integer(11), 6);
  EXPECT_EQ(integer(15), 4);
  EXPECT_EQ(real(19), 2000.2);
  EXPECT_EQ(real(46 + 34 + 4), 20.0);  // node 2: x in the unit of the geometry file
  EXPECT_EQ(integer(46 + 34 + 30), -1);
  const std::size_t e2 = 46 + 6 * 34 + 76;
  EXPECT_EQ(integer(e2 + 17), std::abs(4 + 6 - 5) + 1);
  EXPECT_EQ(integer(e2 + 21), 100);
  const double a = 0.23 * 0.2, b = 2.0, c = (3 * a + 2 * b) / 5;
  EXPECT_NEAR(real(e2 + 26), b, 1e-15);
  EXPECT_NEAR(real(e2 + 34), a, 1e-15);
  EXPECT_NEAR(real(e2 + 50), (a + b + c) / 3, 1e-15);
  EXPECT_NEAR(real(e2 + 67), ((a + b + c) + (a + b + c) / 3) / 4, 1e-15);
  EXPECT_EQ(integer(46 + 6 * 34 + 2 * 76 + 59), -2);

  makePair();
  ASSERT_TRUE(acceptScratchFile(bytes));
  EXPECT_EQ(shell.runningCount, 5);
  EXPECT_EQ(elementTable.node2[3], 4);
  EXPECT_NEAR(elementTable.thickness[1], 0.2, 1e-15);
}

TEST(ScratchFile, OfAnotherMeshIsRefusedAndDamageIsHarmless) {
  makePair();
  const std::string bytes = scratchFileBytes();
  const auto acceptedAfter = [&](const std::function<void()>& change) {
    makePair();
    change();
    return acceptScratchFile(bytes);
  };
  EXPECT_FALSE(acceptedAfter([] { nodeTable.x[1] += 2e-5; }));
  EXPECT_TRUE(acceptedAfter([] { nodeTable.x[6] += 1.0; }));  // one coordinate of the last node
  EXPECT_TRUE(acceptedAfter([] {
    nodeTable.x[2] += 1.0;
    nodeTable.y[2] += 1.0;
    nodeTable.z[2] += 1.0;
  }));
  for (const int sample : {4, 6})
    EXPECT_FALSE(acceptedAfter([&] {
      nodeTable.x[sample] += 1.0;
      nodeTable.y[sample] += 1.0;
      nodeTable.z[sample] += 1.0;
    }));
  EXPECT_FALSE(acceptedAfter([] { ++elementTable.elementCount; }));

  makePair();
  const auto x = nodeTable.x;
  for (std::size_t cut = 0; cut < bytes.size(); ++cut) ASSERT_FALSE(acceptScratchFile(bytes.substr(0, cut)));
  EXPECT_EQ(nodeTable.x, x);
  std::mt19937 random(3);
  for (int trial = 0; trial < 3000; ++trial) {
    std::string damaged = bytes;
    for (int hits = 0; hits < 3; ++hits) damaged[random() % damaged.size()] = static_cast<char>(random());
    makePair();
    if (!acceptScratchFile(damaged)) continue;
    for (int e = 1; e <= shell.runningCount; ++e) ASSERT_LE(elementTable.node1[e], nodeTable.nodeCount);
  }
}

}  // namespace
}  // namespace keld
