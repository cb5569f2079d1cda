#include "input/process_file.h"

#include "input/boundary_file.h"
#include "input/solver_settings.h"
#include "support/damaged_input.h"
#include "support/input_test.h"

namespace keld {
namespace {

using testing_support::InputTest;
using testing_support::replaced;
using testing_support::seedOf;

TEST_F(InputTest, TemperaturesAreStoredInKelvin) {
  fuzz::readerNamed("process").read(seedOf("process"));
  EXPECT_EQ(processRecord.meltTemperature[1], 230 + 273.15);
  EXPECT_EQ(processRecord.meltTemperature[2], 215 + 273.15);
  EXPECT_EQ(processRecord.ambientTemperature, 25 + 273.15);
}

struct FillerCase {
  const char *present, *kind;
  double weight, volume;
};

class FillerFraction : public InputTest, public testing::WithParamInterface<FillerCase> {};

TEST_P(FillerFraction, FollowsPresenceAndKind) {
  std::string text = replaced(seedOf("process"), "20011  flag= 1  value= 1",
                              std::string("20011  flag= 1  value= ") + GetParam().present);
  text = replaced(text, "20012  flag= 1  value= 1", std::string("20012  flag= 1  value= ") + GetParam().kind);
  fuzz::readerNamed("process").read(text);
  EXPECT_EQ(processRecord.fillerWeightFraction, GetParam().weight);
  EXPECT_EQ(processRecord.fillerVolumeFraction, GetParam().volume);
}

INSTANTIATE_TEST_SUITE_P(Cases, FillerFraction,
                         testing::Values(FillerCase{"1", "1.9", 0.3, 0.0}, FillerCase{"1", "2", 0.0, 0.3},
                                         FillerCase{"1", "0", 0.0, 0.3}, FillerCase{"0", "1", 0.0, 0.0},
                                         FillerCase{"2", "2", 0.0, 0.0}));

TEST_F(InputTest, SettingsAreTruncatedAndTheCycleLimitHasADefault) {
  fuzz::readerNamed("settings").read(seedOf("settings"));
  EXPECT_EQ(processRecord.solverChoice, 2) << "2.9, truncated";
  EXPECT_THAT(processRecord.bcNode, testing::ElementsAre(0, 4, 5, 6));

  fuzz::readerNamed("settings").read(replaced(seedOf("settings"), "value= 3000", "value= 17.5"));
  EXPECT_EQ(processRecord.cycleLimit, 17);
  fuzz::readerNamed("settings").read(seedOf("settings", "unknown_last"));
  EXPECT_EQ(processRecord.cycleLimit, 3000) << "a string number above 30000 without a record";
  fuzz::readerNamed("settings").read(replaced(seedOf("settings"), "30500", "300"));
  EXPECT_EQ(processRecord.cycleLimit, 0) << "a smaller one takes the former value";
}

TEST_F(InputTest, TheLastTagOfFixedNodesWins) {
  TextReader file = textOf(seedOf("boundary", "twice"));
  EXPECT_TRUE(readFixedNodes(file));
  EXPECT_THAT(processRecord.bcNode, testing::ElementsAre(0, 4, 5, 6));
  EXPECT_EQ(report(),
            "<br>\n<br>    BC_node 1= 1\n<br>    BC_node 2= 2\n<br>    BC_node 3= 3\n"
            "<br>\n<br>    BC_node 1= 4\n<br>    BC_node 2= 5\n<br>    BC_node 3= 6\n");

  TextReader untagged = textOf("no tag\n1\n2\n3\n [Keld_FixBC]\n7\n8\n9\n");
  EXPECT_FALSE(readFixedNodes(untagged));
  EXPECT_EQ(processRecord.bcNode[1], 4);
}

using testing_support::Damage;
using DamagedProcess = testing_support::DamagedInput;

TEST_P(DamagedProcess, IsNamedWithItsLine) { expectItsWords(); }

INSTANTIATE_TEST_SUITE_P(
    Places, DamagedProcess,
    testing::Values(
        Damage{"process", "[Keld_ProcessData]", "[Keld_Process]", "starts with [Keld_ProcessData], found"},
        Damage{"process", "value= 230", "value= hot", "line 4: expected a finite number as the value of"},
        Damage{"process", "value= 215", "value= inf", "line 17: expected a finite number"},
        Damage{"process", "value= 215", "value= 2.1D+2", "line 17: expected a finite number"},
        Damage{"process", "value= 25\n", "value= nan\n", "string number 21001"},
        Damage{"process", "string= 20011  flag= 1  value= 1", "string= 20011  flag= 1  value= 1e10",
               "(filler present) is beyond the range"},
        Damage{"settings", "[Keld_ComputeData]", "[Keld_Data]", "starts with [Keld_ComputeData]"},
        Damage{"settings", "value= 2.9", "value= direct", "line 6: expected a finite number"},
        Damage{"boundary", "5\n", "five\n",
               "line 4: expected an integer (boundary node number of record 2)"}));

}  // namespace
}  // namespace keld
