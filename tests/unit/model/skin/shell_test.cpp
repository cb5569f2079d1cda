// Shell model processing: searches against full scans, thickness steps and connector rules on hand-made
// scenes, the scratch file byte by byte, and the pairing program.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>

#include "input/input_stage.h"
#include "input/mesh_tables.h"
#include "model/element_geometry.h"
#include "model/material/material.h"
#include "model/model_stage.h"
#include "model/skin/pairing_table.h"
#include "model/skin/scratch_file.h"
#include "model/skin/shell_connectors.h"
#include "model/skin/shell_neighbours.h"
#include "model/skin/shell_processing.h"
#include "model/skin/shell_search.h"
#include "model/skin/shell_thickness.h"
#include "results/results_stage.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"
#include "support/job.h"
#include "support/skin_maker.h"

namespace keld {
namespace {

namespace fs = std::filesystem;

void prepareShellTables() {
  const std::size_t elements = elementTable.node1.size(), nodes = nodeTable.x.size();
  shell = {};
  shell.runningCount = elementTable.elementCount;
  shell.elementPartner.assign(elements, 0);
  shell.elementSplitFlag.assign(elements, 0);
  shell.elementKind.assign(elements, 1);
  shell.thicknessClass.assign(nodes, 0);
  shell.featureNode.assign(nodes, 0);
  shell.connectorUse.assign(nodes, 0);
}

BoxSkin plateSkin(int cells = 8) {
  BoxSkin skin{{4.0, 3.0, 0.2}, {cells, cells, 1}};
  skin.fillTables();
  elementGeometry();
  prepareShellTables();
  return skin;
}

class ShellTest : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::temp_directory_path() /
              ("shell_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    workingFiles = composeWorkingFiles((folder_ / "job").string(), folder_.string() + "/");
  }
  void TearDown() override { fs::remove_all(folder_); }
  fs::path folder_;
};

// ---- searches against full scans

TEST(ShellSearch, FindsTheNearestPointAndTheBoxesAsAFullScanDoes) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(-3.0, 5.0), extent(0.001, 1.5);
  std::uniform_int_distribution<int> coarse(-4, 4);
  std::vector<Vector3> points(401), low(401), high(401);
  std::vector<int> members;
  for (int k = 1; k <= 400; ++k) {
    points[k] = {0.5 * coarse(random), 0.5 * coarse(random), k % 3 * 0.1};  // many ties
    if (k % 5) members.push_back(k);
    low[k] = {place(random), place(random), place(random)};
    for (int axis = 0; axis < 3; ++axis) high[k][axis] = low[k][axis] + extent(random);
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
      for (int axis = 0; axis < 3; ++axis)
        inside = inside && low[k][axis] <= at[axis] && at[axis] <= high[k][axis];
      ASSERT_TRUE(!inside || std::find(found.begin(), found.end(), k) != found.end()) << k;
    }
  }
}

TEST(ShellNeighbours, AClosedSkinHasThreeAndATJunctionMore) {
  plateSkin();
  const IncidenceLists atNode = elementsAtNodes(false);
  const IncidenceLists neighbours = edgeNeighbours(atNode);
  for (int e = 1; e <= elementTable.elementCount; ++e) ASSERT_EQ(neighbours.count(e), 3) << e;

  // Element 1 once more over its own edge 12, with a runner at the same nodes that does not count.
  const int a = elementTable.node1[1], b = elementTable.node2[1];
  elementTable.node1.insert(elementTable.node1.end(), {b, a});
  elementTable.node2.insert(elementTable.node2.end(), {a, b});
  elementTable.node3.insert(elementTable.node3.end(), {nodeTable.nodeCount, 0});
  elementTable.elementCount += 2;
  EXPECT_EQ(edgeNeighbours(elementsAtNodes(false)).count(1), 4);
  EXPECT_EQ(elementsAtNodes(true).count(a), elementsAtNodes(false).count(a) + 1);
}

// ---- thickness steps

TEST(ShellThickness, FillsGapsFromNeighboursAndIslandsFromTheMean) {
  plateSkin(2);
  const IncidenceLists neighbours = edgeNeighbours(elementsAtNodes(false));
  elementTable.thickness[1] = 0.0;
  const int* k = neighbours.begin(1);
  elementTable.thickness[k[0]] = 0.1;
  elementTable.thickness[k[1]] = 0.3;
  elementTable.thickness[k[2]] = 0.0;

  fillThicknessGaps(neighbours);

  EXPECT_DOUBLE_EQ(elementTable.thickness[1], 0.2);
  EXPECT_GT(elementTable.thickness[k[2]], 0.1);
}

TEST(ShellThickness, CharacteristicThicknessWeighsTheCommonWallMost) {
  plateSkin();
  EXPECT_NEAR(characteristicThicknessOf(0.2), 2.0 * 0.2, 1e-12);  // one value: every bin edge is that value

  // Three quarters at 0.1, a quarter at 0.2: bins 1 and 999 hold 3m and m triangles.
  for (int e = 1; e <= elementTable.elementCount; ++e) elementTable.thickness[e] = e % 4 ? 0.1 : 0.2;
  const double w1 = std::pow(0.75 * elementTable.elementCount, 1.5),
               w2 = std::pow(0.25 * elementTable.elementCount, 1.5);
  const double edge999 = 0.1 + 998 * 0.1 / 999;
  EXPECT_NEAR(characteristicThicknessOf(1.0), 2.0 * (w1 * 0.1 + w2 * edge999) / (w1 + w2), 1e-12);
}

TEST(ShellThickness, ThickElementsTakeTheNearestThinOneAndClassTheirNodes) {
  plateSkin();
  shell.characteristicThickness = 0.4;
  elementTable.thickness[5] = 0.45;
  elementTable.thickness[40] = 0.5;  // at 1.25 times the characteristic thickness

  repairThickElements();

  EXPECT_EQ(shell.elementSplitFlag[5], 1);
  EXPECT_EQ(shell.thicknessClass[elementTable.node2[5]], 1);
  EXPECT_EQ(shell.thicknessClass[elementTable.node2[40]], 2);
  EXPECT_DOUBLE_EQ(elementTable.thickness[5], 0.2);
  for (int e = 1; e <= elementTable.elementCount; ++e) elementTable.thickness[e] = 0.5 + e * 1e-3;
  const std::vector<double> before = elementTable.thickness;
  repairThickElements();  // all thick: nothing to take from
  EXPECT_EQ(elementTable.thickness, before);
}

TEST(ShellThickness, LevelsDentsAndSpikesAndLimitsTheRest) {
  plateSkin();
  const IncidenceLists neighbours = edgeNeighbours(elementsAtNodes(false));
  shell.characteristicThickness = 0.4;
  elementTable.thickness[3] = 0.05;
  elementTable.thickness[60] = 0.9;
  elementTable.thickness[90] = 0.10001;  // not below half of its neighbours

  removeThicknessSpikes(neighbours);

  EXPECT_DOUBLE_EQ(elementTable.thickness[3], 0.2);
  EXPECT_DOUBLE_EQ(elementTable.thickness[60], 0.2);
  EXPECT_DOUBLE_EQ(elementTable.thickness[90], 0.10001);

  elementTable.thickness[3] = 0.0019;  // below a hundredth of a neighbour
  elementTable.thickness[60] = 1.3;    // above three characteristic thicknesses
  limitThickness(neighbours);
  EXPECT_DOUBLE_EQ(elementTable.thickness[3], 0.2);
  EXPECT_LT(elementTable.thickness[60], 0.21);
}

// ---- connectors: a pair of triangles 1 2 3 and 4 5 6, the second 0.2 cm above the first

void makePair() {
  elementTable = {};
  nodeTable = {};
  nodeTable.nodeCount = 6;
  nodeTable.x = {0, 0, 2, 0, 0, 2, 0};
  nodeTable.y = {0, 0, 0, 2, 0, 0, 2};
  nodeTable.z = {0, 0, 0, 0, 0.2, 0.2, 0.2};
  elementTable.elementCount = 2;
  elementTable.node1 = {0, 1, 4};
  elementTable.node2 = {0, 2, 6};
  elementTable.node3 = {0, 3, 5};
  elementTable.thickness = {0, 0.2, 0.2};
  elementTable.thicknessScale = {0, 1.0, 1.0};
  for (auto* c : {&elementTable.nx, &elementTable.ny, &elementTable.nz, &elementTable.area,
                  &elementTable.meanEdge, &elementTable.cornerCosine, &elementTable.correctedThickness})
    c->assign(3, 0.0);
  geometry = {};
  geometry.thicknessFactor = geometry.coordinateFactor = 0.1;
  geometry.largestExtent = 2.0;
  geometry.smallestExtent = 0.2;
  elementGeometry();
  prepareShellTables();
  shell.characteristicThickness = 0.4;
  shell.elementPartner[1] = 2;
}

void setFeature(std::initializer_list<int> nodes) {
  for (const int n : nodes) shell.featureNode[n] = 1;
}

void addElement(int a, int b, int c) {
  elementTable.node1.push_back(a);
  elementTable.node2.push_back(b);
  elementTable.node3.push_back(c);
  for (auto* column : {&elementTable.nx, &elementTable.ny, &elementTable.nz, &elementTable.area,
                       &elementTable.meanEdge, &elementTable.cornerCosine})
    column->push_back(0.0);
  elementTable.thickness.push_back(0.2);
  ++elementTable.elementCount;
  const int partner = shell.elementPartner[1];
  const auto feature = shell.featureNode;
  elementGeometry();
  prepareShellTables();
  shell.characteristicThickness = 0.4;
  shell.elementPartner[1] = partner;
  shell.featureNode = feature;
}

struct Scene {
  const char* name;
  std::function<void()> change;
  std::vector<int> kinds;  // of the rows that are made
};

class Connectors : public testing::TestWithParam<Scene> {};

TEST_P(Connectors, MakesTheRowsOfThePasses) {
  makePair();
  GetParam().change();

  makeConnectors(elementsAtNodes(false));

  ASSERT_EQ(shell.runningCount - elementTable.elementCount, static_cast<int>(GetParam().kinds.size()));
  for (std::size_t r = 0; r < GetParam().kinds.size(); ++r) {
    const int row = elementTable.elementCount + 1 + static_cast<int>(r);
    EXPECT_EQ(shell.elementKind[row], GetParam().kinds[r]);
    EXPECT_EQ(elementTable.node3[row], 0);
    EXPECT_EQ(elementTable.thickness[row], 0.0);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rules, Connectors,
    testing::Values(Scene{"PlainEndsInTheThirdPass", [] {}, {-2, -2, -2}},
                    Scene{"FeatureEndsInTheFirst",
                          [] {
                            setFeature({1, 2, 3, 4, 5, 6});
                          },
                          {-1, -1, -1}},
                    Scene{"MixedEndsInTheSecond",
                          [] {
                            setFeature({1, 5});
                          },
                          {-1, -1, -2}},
                    Scene{"NoPartner", [] { shell.elementPartner[1] = 0; }, {}},
                    Scene{"ThickElement", [] { shell.elementSplitFlag[1] = 1; }, {}},
                    Scene{"ThickPartner", [] { shell.elementSplitFlag[2] = 1; }, {}},
                    Scene{"EndInUse", [] { shell.connectorUse[4] = 1; }, {-2, -2}},
                    Scene{"FeatureOfClassTwo",
                          [] {
                            setFeature({1, 2, 3, 4, 5, 6});
                            shell.thicknessClass[1] = 2;
                          },
                          {-1, -1}},
                    Scene{"FeatureEndOfClassTwoWithPlainEndOfNone",
                          [] {
                            setFeature({1, 2, 3});
                            shell.thicknessClass[1] = 2;
                            shell.thicknessClass[2] = 2;
                            shell.thicknessClass[5] = 1;
                          },
                          {-1, -1}},
                    Scene{"NormalsApart",
                          [] {
                            elementTable.nx[1] = 0.6;
                            elementTable.nz[1] = 0.79;
                          },
                          {}},
                    Scene{"NormalsEnoughForPassTwoAlone",
                          [] {
                            setFeature({1, 2});
                            elementTable.nx[1] = 0.71;
                            elementTable.nz[1] = 0.7;
                          },
                          {-1, -1}},
                    Scene{"TooLongForTheWall", [] { elementTable.thickness[1] = 0.09; }, {}},
                    Scene{"LongerWallInTheFirstPass",
                          [] {
                            setFeature({1, 2, 3, 4, 5, 6});
                            elementTable.thickness[1] = 0.09;
                          },
                          {-1, -1, -1}},
                    Scene{"TooLongForThePart", [] { geometry.largestExtent = 1.0; }, {}},
                    Scene{"OutOfReach", [] { shell.characteristicThickness = 0.06; }, {}},
                    Scene{"OnOneTriangle", [] { addElement(1, 4, 2); }, {-2, -2}},
                    Scene{"MidpointInTriangle",
                          [] {
                            nodeTable.x.insert(nodeTable.x.end(), {-0.1, 0.3, -0.1});
                            nodeTable.y.insert(nodeTable.y.end(), {-0.1, -0.1, 0.2});
                            nodeTable.z.insert(nodeTable.z.end(), {0.1, 0.1, 0.1});
                            nodeTable.nodeCount = 9;
                            shell.featureNode.resize(10, 0);
                            addElement(7, 8, 9);
                          },
                          {-2, -2}}),
    [](const auto& scene) { return scene.param.name; });

TEST(Connectors, TheSameBarIsMadeOnceAndTheFeatureEndComesFirst) {
  makePair();
  shell.elementPartner[2] = 1;
  setFeature({5});

  makeConnectors(elementsAtNodes(false));

  ASSERT_EQ(shell.runningCount, 5);
  EXPECT_EQ(elementTable.node1[3], 5);  // pass 2, from element 1's corner 2
  EXPECT_EQ(elementTable.node2[3], 2);
}

TEST(Connectors, TheFilterMovesNodesAndKeepsTheKindOfTheSlot) {
  makePair();
  setFeature({1, 4});
  makeConnectors(elementsAtNodes(false));
  ASSERT_EQ(shell.runningCount, 5);
  ASSERT_EQ(shell.elementKind[3], -1);
  const int second = elementTable.node1[4];
  nodeTable.z[4] = 3.0;  // the first row is now longer than half of the part

  filterConnectors();

  ASSERT_EQ(shell.runningCount, 4);
  EXPECT_EQ(elementTable.node1[3], second);
  EXPECT_EQ(shell.elementKind[3], -1);
  EXPECT_DOUBLE_EQ(elementTable.area[3], 0.2);
}

TEST(Connectors, AClaimantReplacesAPartnerThatFacesAnotherWay) {
  makePair();
  addElement(1, 4, 2);  // stands across: its normal is at right angles to the other two
  shell.elementPartner = {0, 2, 3, 0};

  cleanUpPartners();

  EXPECT_EQ(shell.elementPartner[1], 2);
  EXPECT_EQ(shell.elementPartner[2], 1);  // from 3, at |cos| 0, to its only claimant
}

// ---- scratch file

TEST_F(ShellTest, ScratchFileHasItsFieldsAtTheirPlacesAndComesBack) {
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
  for (const int at : {0, 5, 10, 27, 36, 45}) markers.push_back(bytes[at]);
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

TEST_F(ShellTest, ScratchFileOfAnotherMeshIsRefusedAndDamageIsHarmless) {
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

// ---- pairing table and its program

struct Pairing {
  const char* name;
  const char* text;
  bool taken;
};

class PairingTable : public testing::TestWithParam<Pairing> {};

TEST_P(PairingTable, IsTakenWholeOrNotAtAll) {
  makePair();
  shell.elementPartner = {0, 0, 0};

  EXPECT_EQ(readPairingTable(TextReader::fromText(GetParam().text, "table")), GetParam().taken);

  EXPECT_EQ(shell.elementPartner[1], GetParam().taken ? 2 : 0);
  EXPECT_EQ(elementTable.thickness[2], GetParam().taken ? 0.32 : 0.2);
}

INSTANTIATE_TEST_SUITE_P(Texts, PairingTable,
                         testing::Values(Pairing{"Whole", "1 2 0.31\n2 1 0.32\n", true},
                                         Pairing{"NumbersUnread", "7 2 0.31\n9 1 0.32", true},
                                         Pairing{"OneRowShort", "1 2 0.31\n", false},
                                         Pairing{"OneRowMore", "1 2 0.31\n2 1 0.32\n3 1 0.3\n", false},
                                         Pairing{"Cut", "1 2 0.31\n2 1", false},
                                         Pairing{"PartnerOutOfRange", "1 3 0.31\n2 1 0.32\n", false},
                                         Pairing{"NotFinite", "1 2 nan\n2 1 0.32\n", false},
                                         Pairing{"Binary", "Q\x01\x02U", false}),
                         [](const auto& p) { return p.param.name; });

void writeTool(const fs::path& folder, const std::string& script) {
  const fs::path tool = folder / "Software/Favioda/Movrex/Movrex.exe";
  fs::create_directories(tool.parent_path());
  std::ofstream(tool) << script;
  fs::permissions(tool, fs::perms::owner_all);
}

TEST_F(ShellTest, TheProgramIsStartedWithItsWordsAndItsTableIsRead) {
  makePair();
  writeTool(folder_,
            "#!/bin/sh\n[ $# = 4 ] && [ \"$2$4\" = 1@2@ ] && [ -d \"$3\" ] || exit 1\n"
            "printf '1 2 0.31\\n2 1 0.32\\n' > \"$1\"\n");
  obtainPairingTable();
  EXPECT_EQ(elementTable.thickness[2], 0.32);
}

TEST_F(ShellTest, AMissingProgramOrAWrongTableLeavesTheMeshAlone) {
  makePair();
  fs::create_directory(workingFiles.baseName);
  EXPECT_FALSE(readScratchFile());
  obtainPairingTable();
  fs::remove(workingFiles.baseName);
  EXPECT_EQ(elementTable.thickness[2], 0.2);
  writeTool(folder_, "#!/bin/sh\nprintf '1 2 0.31\\n' > \"$1\"\n");
  obtainPairingTable();
  EXPECT_EQ(elementTable.thickness[2], 0.2);
}

TEST_F(ShellTest, ASecondRunTakesTheScratchFileAndAppliesTheScaleAgain) {
  BoxSkin skin = plateSkin();
  const auto restore = [&] {
    plateSkin();
    elementTable.thicknessScale.assign(elementTable.node1.size(), 0.9);
  };
  std::ofstream table(workingFiles.baseName);
  for (int e = 1; e <= elementTable.elementCount; ++e) table << e << ' ' << skin.partner[e] << " 0.2\n";
  table.close();
  restore();

  shellProcessing();
  EXPECT_GT(shell.runningCount, elementTable.elementCount);
  EXPECT_NEAR(elementTable.thickness[1], 0.18, 1e-12);
  const int rows = shell.runningCount;

  restore();
  shellProcessing();
  EXPECT_EQ(shell.runningCount, rows);
  EXPECT_NEAR(elementTable.thickness[1], 0.162, 1e-12);
}

// ---- a whole run

std::string geometryText() {
  std::ostringstream text;
  text.precision(17);
  text << "/* skin */\n" << elementTable.elementCount << ' ' << nodeTable.nodeCount << " 0.1 0.1\n";
  for (int e = 1; e <= elementTable.elementCount; ++e)
    text << e << ' ' << elementTable.node1[e] << ' ' << elementTable.node2[e] << ' ' << elementTable.node3[e]
         << " 1.0 0 1.0 0.0\n";
  for (int n = 1; n <= nodeTable.nodeCount; ++n)
    text << n << ' ' << nodeTable.x[n] * 10 << ' ' << nodeTable.y[n] * 10 << ' ' << nodeTable.z[n] * 10
         << " 0\n";
  return text.str();
}

TEST(ShellRun, GoesFromThePairingTableToTheResultsFile) {
  auto job = testing_support::ScratchJob::copyOf(std::string(TEST_DATA) + "/../cases/plate-stress");
  const BoxSkin skin = plateSkin(6);
  const int elements = elementTable.elementCount, nodes = nodeTable.nodeCount;
  job.write(".PG1", geometryText());
  std::string stress = "/* skin */\n", cool = stress, pairs;
  for (int e = 1; e <= elements; ++e) {
    stress += std::to_string(e) + " 1e7 2e6 1 1.0 1.0 1 0 0 0 1 0 0 0 1\n";
    cool += std::to_string(e) + " 90\n";
    pairs += std::to_string(e) + " " + std::to_string(skin.partner[e]) + " 0.2\n";
  }
  job.write(".RS1", stress);
  job.write(".CT1", cool);
  job.write("", pairs);
  job.remove(".PT1");
  job.remove(".BC1");
  job.chooseSolver(2);
  workingFiles = composeWorkingFiles(job.base(), job.install());
  vOpenMessageFile(OpenMode::empty);
  vCloseMessageFile();

  inputStage();
  ModelKind = 1;
  modelStage();
  analysisDriver();
  writeResults();

  const std::string report = job.read(".WD1"), results = job.read(".WR1");
  for (const char* line : {"Model Processing 1 ....", "Model Processing Complete"})
    EXPECT_NE(report.find(line), std::string::npos) << line;
  EXPECT_NE(results.find("** KELD/Shell3D Keldage Results File **"), std::string::npos);
  EXPECT_NE(results.find("[Type_ofStyleStr]\n00001\n1\n"), std::string::npos);
  EXPECT_EQ(job.read("")[0], 'Q');  // the scratch file has taken the place of the pairing table

  // One temperature and kind everywhere: every node has the same sink mark, v^(1/3) (1 - v0 / v) / 3.
  const double v = 1.0 / density(1, 1e6, 363.15), v0 = 1.0 / density(1, 1e6, 298.0);
  const auto rows = testing_support::resultBlock(results, "Keld_ResultsStr");
  ASSERT_EQ(static_cast<int>(rows.size()), nodes + 1);
  for (int n = 1; n <= nodes; ++n)
    ASSERT_NEAR(rows[n][4], 10.0 * std::cbrt(v) * (1.0 - v0 / v) / 3.0, 1e-4) << n;
  EXPECT_GT(rows[1][3] + rows[nodes][3], 0.01);
}

}  // namespace
}  // namespace keld
