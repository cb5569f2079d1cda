#include "input/geometry_file.h"

#include <random>

#include "input/geometry_statistics.h"
#include "support/damaged_input.h"
#include "support/input_test.h"

namespace keld {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pointwise;
using testing_support::InputTest;
using testing_support::replaced;
using testing_support::seedOf;

class GeometryFile : public InputTest {
 protected:
  void read(const std::string& text) {
    TextReader file = textOf(text);
    readGeometryRecords(file);
  }
};

TEST_F(GeometryFile, RecordsLandAtTheirOwnNumbers) {
  read(seedOf("geometry"));

  EXPECT_THAT(elementTable.node1, ElementsAre(2, 2, 3, 3, 1));
  EXPECT_THAT(elementTable.node3, ElementsAre(4, 3, 4, 5, 0));
  EXPECT_THAT(elementTable.fileOrder, ElementsAre(5, 1, 3, 2, 4));
  EXPECT_THAT(elementTable.thickness, ElementsAre(2.0, 2.0, 2.0, 2.0, 0.4));
  EXPECT_THAT(elementTable.correctedThickness, ElementsAre(2.0, 2.0, 0.0, 0.0, 0.4));
  EXPECT_THAT(elementTable.thicknessScale, ElementsAre(0.8, 1.0, 1.0, 1.0, 0.8));
  EXPECT_EQ(geometry.runnerElementCount, 1);
  EXPECT_THAT(nodeTable.x, ElementsAre(-5.0, 0.0, 10.0, 0.0, 10.0));
  EXPECT_THAT(nodeTable.gateNodes, ElementsAre(1, 2))
      << "positions of the records; the second has no fields behind";
  EXPECT_EQ(report(), "<br>\n # Thickness Correction=  0\n\n");
}

TEST_F(GeometryFile, NinthFieldInEveryRecordSwitchesTheCorrectionOn) {
  std::string text = replaced(seedOf("geometry"), " 3 3 5 4 20 0 1.0 0.0", " 3 3 5 4 20 0 1.0 0.0 1");
  text = replaced(text, "20 -1 1.0 0.0", "20 -1 1.0 0.0\t1\r");
  read(text);
  EXPECT_EQ(geometry.thicknessCorrection, 1);
  read(replaced(text, "5 5 0.1", "5 5 1e-30"));
  EXPECT_EQ(geometry.thicknessCorrection, 0) << "thickness below 1e-20";
}

TEST_F(GeometryFile, ThinElementsAreReportedUnderTheNumberOfTheOneBefore) {
  read(seedOf("geometry", "thin"));  // records 5, 1, 3, 2 and 4: the first is thick, the last exempt
  for (const char* number : {"    6", "    1", "    3"})
    EXPECT_THAT(report(),
                HasSubstr(std::string(" !! Error D4016 !!  Part element # ") + number + " has irrational"));
  EXPECT_THAT(report(), testing::Not(HasSubstr("#     2 has")));
}

struct BlankCase {
  const char *record, *named;
};

class BlankEnd : public GeometryFile, public testing::WithParamInterface<BlankCase> {};

TEST_P(BlankEnd, IsNamedWithTheRecordThatItSpoils) {
  const auto& [record, named] = GetParam();
  const std::string text = replaced(seedOf("geometry"), record, std::string(record) + " \t");
  EXPECT_THAT(refusalOf([&] { read(text); }),
              testing::AllOf(HasSubstr("found "), HasSubstr(named), HasSubstr("take the blank away")));
}

INSTANTIATE_TEST_SUITE_P(Records, BlankEnd,
                         testing::Values(BlankCase{" 3 3 5 4 20 0 1.0 0.0", "element record 3 on line 6"},
                                         BlankCase{" 2 0 0 0 1", "node record 2 on line 10"}));

struct AttemptsCase {
  int arrival;   // the first attempt that can succeed
  int attempts;  // that are made
  bool found;
};

class Attempts : public InputTest, public testing::WithParamInterface<AttemptsCase> {};

TEST_P(Attempts, FindTheFileUnlessItArrivesBetweenTheFirstTwo) {
  int made = 0;
  const auto wait = [&made] { awaitGeometry([&made] { return ++made >= GetParam().arrival; }); };
  if (GetParam().found)
    EXPECT_NO_THROW(wait());
  else
    EXPECT_THAT(refusalOf(wait), HasSubstr("D1020"));
  EXPECT_EQ(made, GetParam().attempts);
}

INSTANTIATE_TEST_SUITE_P(Arrivals, Attempts,
                         testing::Values(AttemptsCase{1, 1, true}, AttemptsCase{2, 2, false},
                                         AttemptsCase{3, 3, true}, AttemptsCase{12, 12, true},
                                         AttemptsCase{13, 12, false}));

struct HeaderCase {
  const char* header;
  std::vector<const char*> codes;
};

class Header : public GeometryFile, public testing::WithParamInterface<HeaderCase> {};

TEST_P(Header, IsCheckedAsAWholeBeforeTheRunEnds) {
  read(replaced(seedOf("geometry"), "5 5 0.1 0.1", GetParam().header));
  partCentreAndAxes();
  const std::string words = refusalOf([] { checkGeometry(); });
  for (const char* code : {"D4002", "D4003", "D4004", "D4005"})
    EXPECT_EQ(words.find(code) != std::string::npos,
              std::find(GetParam().codes.begin(), GetParam().codes.end(), std::string(code)) !=
                  GetParam().codes.end())
        << code;
}

INSTANTIATE_TEST_SUITE_P(Cases, Header,
                         testing::Values(HeaderCase{"0 5 0.1 0.1", {"D4002"}},
                                         HeaderCase{"5 -1 0.1 0.1", {"D4003"}},
                                         HeaderCase{"5 5 0 -1", {"D4004", "D4005"}},
                                         HeaderCase{"-5 0 -0.1 0", {"D4002", "D4003", "D4004", "D4005"}}));

TEST_F(GeometryFile, StatisticsOfTheMesh) {
  // Elements 1 to 3 are right or obtuse triangles; the runner is 5 long and 0.4 thick: 6.25.
  read(seedOf("geometry"));
  partCentreAndAxes();
  echoGeometry();

  EXPECT_THAT(report(), HasSubstr("runner-element with aspect ratio < 10  = 1\n"));
  EXPECT_THAT(report(), HasSubstr("No. of Part Elements.......= 4     \n"));
  // Four corner cells of a box of 10 x 10 x 4, three of them low; the runner's own node doesn't count.
  EXPECT_THAT(geometry.gridCentre, Pointwise(DoubleNear(1e-9), {5.0, 5.0, 1.01}));
  EXPECT_NEAR(geometry.lengthMajor, 10.0, 1e-9);
  EXPECT_NEAR(geometry.lengthMiddle, 10.0, 1e-9);
  EXPECT_NEAR(geometry.lengthMinor, 2.02, 1e-9);
  EXPECT_EQ(geometry.axisMinor, 3);
}

TEST(GeometryStatistics, AspectIsCircumradiusOverInradius) {
  EXPECT_DOUBLE_EQ(triangleAspect(1, 1, 1), 2.0);
  EXPECT_DOUBLE_EQ(triangleAspect(3, 4, 5), 2.5);
  EXPECT_TRUE(triangleAspect(1, 1, 2) >= 10.0) << "a triangle without area";
  EXPECT_FALSE(triangleAspect(0, 0, 0) >= 10.0);
}

TEST(GeometryStatistics, AxisOrder) {
  EXPECT_THAT(axisOrder({1, 3, 2}), ElementsAre(2, 3, 1));
  EXPECT_THAT(axisOrder({2, 3, 1}), ElementsAre(2, 1, 3));
  EXPECT_THAT(axisOrder({1, 2, 3}), ElementsAre(3, 2, 1));
  EXPECT_THAT(axisOrder({2, 1, 3}), ElementsAre(3, 1, 2));
  EXPECT_THAT(axisOrder({3, 2, 1}), ElementsAre(1, 2, 3));
  EXPECT_THAT(axisOrder({1, 2, 2}), ElementsAre(1, 3, 2)) << "no strict test holds, so x is major";
}

TEST(GeometryStatistics, AxisLengthOfAnEccentricCentre) {
  EXPECT_EQ(axisLength(5.0, 0.0, 10.0), 10.0);
  EXPECT_EQ(axisLength(4.0, 0.0, 10.0), 8.0) << "6 / 4 isn't below 1.5: twice the shorter side";
  EXPECT_EQ(axisLength(3.0, 3.0, 3.0), 0.0);
}

/// The full scan over a million cells, each against the points.
std::array<double, 3> scannedCentre(const Extent& extent, const std::vector<std::array<double, 3>>& points) {
  std::array<std::array<double, 101>, 3> plane{};
  for (std::size_t a = 0; a < 3; ++a) {
    plane[a][0] = extent.least[a];
    for (std::size_t i = 1; i <= 100; ++i)
      plane[a][i] = plane[a][i - 1] + (extent.most[a] - extent.least[a]) / 100;
  }
  const auto inside = [&](const std::array<double, 3>& p, std::size_t a, std::size_t cell) {
    return p[a] >= plane[a][cell] - 1e-10 && p[a] <= plane[a][cell + 1] + 1e-10;
  };
  std::array<double, 3> sum{};
  double count = 0;
  for (std::size_t i = 0; i < 100; ++i)
    for (std::size_t j = 0; j < 100; ++j)
      for (std::size_t k = 0; k < 100; ++k)
        for (const auto& p : points) {
          if (!inside(p, 0, i) || !inside(p, 1, j) || !inside(p, 2, k)) continue;
          const std::array cell{i, j, k};
          for (std::size_t a = 0; a < 3; ++a) sum[a] += (plane[a][cell[a]] + plane[a][cell[a] + 1]) / 2;
          ++count;
          break;
        }
  for (double& s : sum) s /= count;
  return sum;
}

class GridCentre : public testing::TestWithParam<std::array<double, 3>> {};

TEST_P(GridCentre, IsThatOfTheFullScan) {
  std::mt19937 random(7);
  std::vector<std::array<double, 3>> points;
  Extent extent{{0, 0, 0}, GetParam()};
  for (int i = 0; i < 40; ++i) {
    std::array<double, 3> p{};
    for (std::size_t a = 0; a < 3; ++a) {
      p[a] = GetParam()[a] * static_cast<double>(random() % 101) / 100;  // on planes
      if (i % 3 == 0) p[a] += (i % 2 ? 1.01e-10 : 0.99e-10);             // just beyond and just within
      extent.most[a] = std::max(extent.most[a], p[a]);
    }
    points.push_back(p);
  }
  const auto centre = occupiedCellCentre(extent, points), scanned = scannedCentre(extent, points);
  for (std::size_t a = 0; a < 3; ++a) EXPECT_NEAR(centre[a], scanned[a], 1e-12 * extent.most[a]);
}

INSTANTIATE_TEST_SUITE_P(Boxes, GridCentre,
                         testing::Values(std::array{10.0, 5.0, 2.0}, std::array{10.0, 7.0, 0.0},
                                         std::array{0.0, 3.0, 3e-9}, std::array{1e-9, 1e-9, 4.0}));

using testing_support::Damage;
using DamagedGeometry = testing_support::DamagedInput;

TEST_P(DamagedGeometry, IsNamedWithItsLine) { expectItsWords(); }

INSTANTIATE_TEST_SUITE_P(
    Places, DamagedGeometry,
    testing::Values(
        Damage{"geometry", "5 5 0.1", "5 x 0.1",
               "line 3: expected an integer (number of nodes in the header), found \"x"},
        Damage{"geometry", "5 5 0.1", "2000000000 5 0.1",
               "line 3: the file is too short for the 2000000000 elements and 5 nodes"},
        Damage{"geometry", " 5 1 2 0", " 6 1 2 0",
               "line 4: expected an integer from 1 to 5 (number of the element of record 1)"},
        Damage{"geometry", "\n 3 3 5 4", "\n 1 3 5 4",
               "line 6: element record 3 has number 1, which a record before"},
        Damage{"geometry", " 1 2 3 4 20", " 1 2 6 4 20",
               "line 5: expected an integer from 1 to 5 (second node of"},
        Damage{"geometry", " 1 2 3 4 20", " 1 2 3 -4 20", "from 0 to 5 (third node"},
        Damage{"geometry", " 1 2 3 4 20", " 1 0 3 4 20", "from 1 to 5 (first node"},
        Damage{"geometry", "2 3 4 20 0 1.0", "2 3 4 20 0.5 1.0", "an integer (flag of element of record 2)"},
        Damage{"geometry", "0 1.0 0.0 1.25", "0 - 0.0 1.25",
               "a number (seventh field of element of record 1)"},
        Damage{"geometry", "1.0 0.0 1.25", "1.0 0.0 inf", "(ninth field of element of record 1)"},
        Damage{"geometry", "1 -50 0 0 1", "0 -50 0 0 1", "from 1 to 5 (number of the node of record 1)"},
        Damage{"geometry", "\n 4 0 100", "\n 2 0 100",
               "line 11: node record 3 has number 2, which a record before"},
        Damage{"geometry", "0 100 0 0", "0 1e999 0 0",
               "line 11: expected a finite number (y of node of record 3)"}));

}  // namespace
}  // namespace keld
