#include "input/prior_results.h"

#include "input/prior_compact.h"
#include "input/prior_fields.h"
#include "model/prior_stage.h"
#include "support/input_test.h"

namespace keld {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing_support::InputTest;
using testing_support::replaced;
using testing_support::seedOf;

class PriorResults : public InputTest {
 protected:
  void SetUp() override {
    InputTest::SetUp();
    fuzz::setTestMesh();
    nodeTable.x = {-1.0, 2.0};
    nodeTable.y = {5.0, 5.5};
    nodeTable.z = {0.0, 0.0};
  }
};

TEST_F(PriorResults, PartElementsComeFirstInFileOrderThenRunners) {
  elementTable.node3 = {11, 0, 13, 14, 0};
  const FileElements file = compactPartElements();

  EXPECT_EQ(elementTable.partElementCount, 3);
  EXPECT_THAT(elementTable.node3, ElementsAre(11, 13, 14, 14, 0)) << "the last rows are still the file's";
  appendRunnerElements(file);
  EXPECT_THAT(elementTable.node3, ElementsAre(11, 13, 14, 0, 0));
  EXPECT_THAT(elementTable.thickness, ElementsAre(0.1, 0.3, 0.4, 0.5, 0.2));
}

struct RunnerCase {
  Column<int> node3;
  Column<double> taken;  // of the temperatures 95, 91, 93, 92, 94 in the file's order, per part element
};

class RunnerTest : public PriorResults, public testing::WithParamInterface<RunnerCase> {};

TEST_P(RunnerTest, OfPartTemperaturesLooksInTheCompactTableAsItStands) {
  elementTable.node3 = GetParam().node3;
  compactPartElements();
  clearPriorFields();
  TextReader file = textOf(seedOf("part"));
  readPartTemperature(file);
  for (int e = 1; e <= elementTable.partElementCount; ++e)
    EXPECT_EQ(elementTemperatureField.sideTemperature2[e], GetParam().taken[e] + 273.15) << e;
}

INSTANTIATE_TEST_SUITE_P(
    Tables, RunnerTest,
    testing::Values(RunnerCase{{1, 1, 1, 1, 0}, {91, 93, 92, 94}},  // runner 5: row 5 is its own
                    RunnerCase{{0, 1, 1, 1, 1}, {95, 91, 93, 92}},  // runner 1: row 1 is a part
                    RunnerCase{{1, 0, 1, 0, 1}, {95, 91, 93}}));    // row 4 is the file's runner

TEST_F(PriorResults, CoolTemperaturesCrossSidesAndLookInTheSavedTable) {
  elementTable.node3 = {0, 1, 1, 1, 1};
  const FileElements saved = compactPartElements();
  clearPriorFields();
  TextReader file = textOf(seedOf("cool"));
  readCoolTemperature(file, saved.node3);

  EXPECT_EQ(temperatureFromCool, 1);
  EXPECT_THAT(elementTemperatureField.sideTemperature2,
              ElementsAre(95 + 273.15, 93 + 273.15, 92 + 273.15, 94 + 273.15));
  EXPECT_EQ(elementTemperatureField.sideTemperature1[1], 75 + 273.15);
}

TEST_F(PriorResults, DirectionsAreNormalised) {
  const FileElements saved = compactPartElements();
  clearPriorFields();
  TextReader file = textOf(replaced(seedOf("stress"), "\n1 3e7", "\n1 4e7"));
  EXPECT_TRUE(readResidualStress(file, saved.node3).consistent());

  EXPECT_THAT(residualStressField.stress1, ElementsAre(4e7, 3e7, 3e7, 3e7));
  EXPECT_THAT(residualStressField.direction2[1],
              ElementsAre(testing::DoubleNear(-0.28, 1e-15), testing::DoubleNear(0.96, 1e-15), 0.0));
  EXPECT_EQ(residualStressValid, 1);
}

struct DirectionCase {
  const char* first;  // direction of the second part element
  bool good;
};

class Directions : public PriorResults, public testing::WithParamInterface<DirectionCase> {};

TEST_P(Directions, MustBeOrthonormalWithinTheTolerances) {
  const FileElements saved = compactPartElements();
  clearPriorFields();
  std::string text = seedOf("stress");
  const std::string former = "0.96 0.28 0 -0.28 0.96 0";
  text.replace(text.find(former, text.find("\n3 ")), former.size(), GetParam().first + std::string(" 0 1 0"));
  TextReader file = textOf(text);
  readResidualStress(file, saved.node3);

  EXPECT_EQ(residualStressValid, GetParam().good);
  EXPECT_EQ(report().find("file is not correct format") == std::string::npos, GetParam().good);
  if (!GetParam().good) {
    EXPECT_EQ(residualStressField.stress1[1], 0.0);
    EXPECT_EQ(residualStressField.orientationValue[4], 1.0);
    EXPECT_THAT(residualStressField.direction2[3], ElementsAre(0, 1, 0));
  }
}

INSTANTIATE_TEST_SUITE_P(Triples, Directions,
                         testing::Values(DirectionCase{"1.019 0 0", true}, DirectionCase{"1.03 0 0", false},
                                         DirectionCase{"0.981 0 0", true}, DirectionCase{"0.97 0 0", false},
                                         DirectionCase{"1 0.019 0", true}, DirectionCase{"1 0.021 0", false},
                                         DirectionCase{"1 0 -0.021", false}, DirectionCase{"0 0 0", false}));

constexpr char stressCount[] =
    "\n !! Warring !!  Residual stress(.RS1/RS2) file element number inconsistent.\n";
constexpr char noStress[] = "\n !! Warring !! Residual stress(*.RS1/RS2) file doesn't exist.\n";
constexpr char partCount[] =
    "\n !! Warring !!  Inconsistent mold temp. element number is detected. Check element number in "
    "'filename.PT1/PT2'\n";
constexpr char noPart[] = "\n !! Warring !!  Part temperature(*.PT1/PT2) file doesn't exist.\n";
constexpr char coolCount[] =
    "\n !! Warring !!  Inconsistent mold temp. element number is detected. Check element number in "
    "'filename.CT1/CT2'\n";
constexpr char noCool[] = "\n !! Warring !!  Part temperature(*.CT1/CT2) file doesn't exist.\n";

/// Files as "valid", "few" (a record too few) or "" (absent).
struct LossCase {
  const char *stress, *part, *cool;
  std::vector<const char*> warnings;
  int stressValid, fromCool;
  double temperature;  // of the first part element's second side, 0: the run ends
};

class Losses : public PriorResults, public testing::WithParamInterface<LossCase> {
 protected:
  void give(const char* suffix, const char* reader, const std::string& kind) {
    const std::string text = seedOf(reader);
    if (kind == "valid") job_.write(suffix, text);
    if (kind == "few") job_.write(suffix, text.substr(0, text.rfind("\n4 ") + 1));
  }
};

TEST_P(Losses, AreWarnedOfAndFilledUntilBothAreLost) {
  give(".RS1", "stress", GetParam().stress);
  give(".PT1", "part", GetParam().part);
  give(".CT1", "cool", GetParam().cool);
  std::string expected = "<br>\n<br>\n<br>   Part Max. Extent= 3.00  cm\n";
  for (const char* words : GetParam().warnings) expected += std::string("<br>\n<br>") + words;
  expected += "<br>\n";

  if (GetParam().temperature == 0.0) {
    expected += "<br>\n<br>\n !! Error !!  The required files are not enough for executing KELD.\n";
    EXPECT_EQ(refusalOf([] { readPriorResults(); }), expected);
    return;
  }
  readPriorResults();
  EXPECT_EQ(report(), expected);
  EXPECT_EQ(residualStressValid, GetParam().stressValid);
  EXPECT_EQ(temperatureFromCool, GetParam().fromCool);
  EXPECT_DOUBLE_EQ(elementTemperatureField.sideTemperature1[1], GetParam().temperature);
}

constexpr double ofPart = 91 + 273.15, ofCool = 71 + 273.15, ambient = 298.15;
INSTANTIATE_TEST_SUITE_P(
    Files, Losses,
    testing::Values(LossCase{"valid", "valid", "valid", {}, 1, 0, ofPart},
                    LossCase{"valid", "", "valid", {noPart}, 1, 1, ofCool},
                    LossCase{"valid", "few", "valid", {partCount}, 1, 1, ofCool},
                    LossCase{"valid", "", "", {noPart, noCool}, 1, 0, ambient},
                    LossCase{"valid", "", "few", {noPart, noCool}, 1, 1, ambient},
                    LossCase{"valid", "few", "few", {partCount, coolCount}, 1, 1, ambient},
                    LossCase{"valid", "few", "", {partCount, coolCount}, 1, 0, ambient},
                    LossCase{"", "valid", "", {noStress}, 0, 0, ofPart},
                    LossCase{"few", "valid", "few", {stressCount}, 0, 0, ofPart},
                    LossCase{"", "", "few", {noStress, noPart, noCool}, 0, 0, 0.0},
                    LossCase{"few", "few", "", {stressCount, partCount, coolCount}, 0, 0, 0.0}));

}  // namespace
}  // namespace keld
