// Rows, their digits, the file's place, and disks that are full.
#include "results/results_file.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdio>

#include "input/prior_fields.h"
#include "model/model_tables.h"
#include "support/faults.h"

namespace keld {
namespace {

using testing_support::ScratchJob;

/// Four geometry nodes: 1 is wedge node 2, 2 is unused, 3 belongs to a runner, 4 is wedge node 1.
void loadResults() {
  wedgeNumbering.geometryNodeCount = 4;
  wedgeNumbering.wedgeNodeCount = 4;
  wedgeNumbering.nodeToNewNode = {2, 0, -5, 1};
  wedgeNumbering.nodeMate = {3, 4, 1, 2};
  freedoms.nodeDofCount = {3, 3, 3, 3};
  freedoms.nodeFirstDof = {1, 4, 7, 10};
  solution.displacementTotal = {1, 2, 2, -3, 0, 4, 3, 4, 10, -5, 0, 12};
  solution.displacementInMold = {1, 0, 0, 0, 0, 0, 1, 0, 0, 2, 0, 4};
  solution.rowSolution = {0.25, 0.5, 0, 0};
}

TEST(ResultRow, IsTheMeanOfTheTwoWedgeNodes) {
  loadResults();

  EXPECT_EQ(resultRow(ResultBlock::main, 1), (ResultRow{-4, 0, 8, std::sqrt(80.0), 0.5}));
  EXPECT_EQ(resultRow(ResultBlock::residual, 1), (ResultRow{1, 0, 2, std::sqrt(5.0), 0}));
  EXPECT_EQ(resultRow(ResultBlock::thermal, 1), (ResultRow{-5, 0, 6, std::sqrt(61.0), 0}));
  EXPECT_EQ(resultRow(ResultBlock::main, 2), ResultRow{});
  EXPECT_EQ(resultRow(ResultBlock::main, 3), ResultRow{});
  EXPECT_EQ(resultRow(ResultBlock::main, 4), (ResultRow{2, 3, 6, 7, 0.25}));
}

TEST(ResultExtremes, StartAsTheyDoWithoutRowsOfTheirSign) {
  ResultExtremes extremes;
  extremes.include({2.0, -3.0, 0.0, 3.6, 0.0});

  EXPECT_EQ(extremes.maximum, (std::array<double, 3>{2.0, 1e-20, 1e-20}));
  EXPECT_EQ(extremes.minimum, (std::array<double, 3>{2.0, -3.0, 0.0}));
  EXPECT_EQ(extremes.greatestSink, 1e-20);
  EXPECT_EQ(extremes.leastSink, 0.0);
}

class ResultDigits : public testing::TestWithParam<double> {};

TEST_P(ResultDigits, AreThoseOfPrintf) {
  const double v = GetParam() * 10.0;
  char expected[400];

  std::string text;
  appendRow(text, ResultBlock::main, 7, {GetParam(), -GetParam(), 0.0, GetParam(), 1.0});
  std::snprintf(expected, sizeof expected, "%8d    %-6.3le     %-6.3le     %-6.3le    %-6.3le    %-6.3le\n",
                7, v, -v, 0.0, v, 10.0);
  EXPECT_EQ(text, expected);

  text.clear();
  appendRow(text, ResultBlock::thermal, 123456789, {GetParam(), -GetParam(), 0.0, GetParam(), 1.0});
  std::snprintf(expected, sizeof expected, "%8d    %6.3le   %6.3le   %6.3le  %6.3le\n", 123456789, v, -v, 0.0,
                v);
  EXPECT_EQ(text, expected);
}

INSTANTIATE_TEST_SUITE_P(Values, ResultDigits,
                         testing::Values(0.0, -0.0, 1.0, 0.00312345, 9.9995e-3, 9.99949e-3, 1.0005,
                                         1.00050000001, 123456.0, 3e99, 4e100, 2.5e-101, 4.9e-324));

TEST(ResultsFile, StandsWholeOrNotAtAll) {
  loadResults();
  residualStressValid = 1;
  const ScratchJob job("a name");
  testing_support::startRun(job);
  job.write(".WR1", "of an earlier run");

  ::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit full{1024, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
  const std::string console = testing_support::faultOf(writeResultsFile);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);

  EXPECT_THAT(console, testing::HasSubstr("The results file '" + job.path(".WR1") + "' can't be written"));
  EXPECT_EQ(job.read(".WR1"), "of an earlier run");
  EXPECT_FALSE(job.has(".WR1." + std::to_string(::getpid())));

  writeResultsFile();

  EXPECT_EQ(testing_support::resultBlock(job.read(".WR1"), "Keld_ResultsStr")[4],
            (std::vector<double>{20, 30, 60, 70, 2.5}));
  EXPECT_FALSE(job.has(".WR1." + std::to_string(::getpid())));
}

TEST(ResultsFile, ValuesBeyondWhatCanBeToldEndTheRun) {
  const ScratchJob job;
  testing_support::startRun(job);
  loadResults();
  requireFiniteRows();
  for (const double value : {1e160, 1e308, std::nan("")}) {  // the first two overflow in length and in mm
    loadResults();
    solution.displacementTotal[4] = value;
    EXPECT_THAT(testing_support::faultOf(requireFiniteRows),
                testing::HasSubstr("The results of node 1 aren't finite"));
  }
  loadResults();
  solution.rowSolution[1] = std::nan("");
  EXPECT_THAT(testing_support::faultOf(requireFiniteRows), testing::HasSubstr("The results of node 4"));
}

TEST(ResultsFile, NeedsItsFolder) {
  loadResults();
  const ScratchJob job;
  testing_support::startRun(job);
  workingFiles.results = job.path("-missing/job.WR1");

  EXPECT_THAT(testing_support::faultOf(writeResultsFile), testing::HasSubstr("No such file or directory"));
}

}  // namespace
}  // namespace keld
