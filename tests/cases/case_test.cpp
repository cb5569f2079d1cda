// Every folder beside this file is a whole job with an independently computed answer. Each is run twice: its
// stages in memory, where full accuracy is seen, and the program, whose files hold four digits.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "expected.h"
#include "input/input_stage.h"
#include "input/prior_fields.h"
#include "model/model_stage.h"
#include "model/model_tables.h"
#include "model/system/pattern.h"
#include "places.h"
#include "results/result_rows.h"
#include "results/results_stage.h"
#include "support/faults.h"
#include "support/job.h"

namespace keld::testing_support {

namespace fs = std::filesystem;

struct CaseRun {
  std::string name;
  int solverChoice;
};

std::vector<CaseRun> runsWith(int solverChoice) {
  std::vector<CaseRun> runs;
  for (const auto& entry : fs::directory_iterator(places::cases)) {
    if (fs::exists(entry.path() / "expected.txt"))
      runs.push_back({entry.path().filename().string(), solverChoice});
  }
  std::sort(runs.begin(), runs.end(), [](auto& a, auto& b) { return a.name < b.name; });
  return runs;
}

class Case : public testing::TestWithParam<CaseRun> {
 protected:
  Case() : job_(ScratchJob::copyOf(folder())), answer_(readExpected(folder() / "expected.txt")) {
    job_.chooseSolver(GetParam().solverChoice);
  }
  static fs::path folder() { return places::cases / GetParam().name; }

  ScratchJob job_;
  ExpectedAnswer answer_;
};

void expectRelative(double found, double expected, double tolerance, const std::string& what) {
  EXPECT_NEAR(found, expected, tolerance * std::abs(expected)) << what;
}

void expectModel(const ExpectedAnswer& answer) {
  const auto wedgeNode = [](int node) { return wedgeNumbering.nodeToNewNode[node]; };
  EXPECT_EQ(boundaryNodes[1].boundaryNode1, wedgeNode(answer.boundary[0]));
  EXPECT_EQ(boundaryNodes[1].boundaryNode2, wedgeNode(answer.boundary[1]));
  EXPECT_EQ(boundaryNodes[1].boundaryNode3, wedgeNode(answer.boundary[2]));
  EXPECT_EQ(freedoms.freeDofCount, answer.freeFreedoms);
  EXPECT_EQ(residualStressValid, answer.stressValid);
  EXPECT_EQ(temperatureFromCool, answer.fromCool);
  expectRelative(volumes.elementVolumeTotal, answer.volume, 1e-9, "volume");
  expectRelative(volumes.meanJacobian, answer.jacobian, 1e-9, "jacobian");
  for (int kind = 1; kind <= 2; ++kind) {
    const MaterialConstants& material = materialConstants[kind];
    for (std::size_t i = 0; i < 36; ++i) {
      expectRelative(material.stiffness[i / 6][i % 6], answer.stiffness[kind][i], 1e-9, "stiffness");
    }
    expectRelative(material.expansionLongitudinal, answer.expansion[kind][0], 1e-9, "expansion along");
    expectRelative(material.expansionTransverse, answer.expansion[kind][1], 1e-9, "expansion across");
  }
}

int storedEntries() {
  patternSearch();
  layOutRows();
  return systemOfPass.rowStart[freedoms.freeDofCount + 1] - 1;
}

/// All values of all rows, against the answer, cm.
void expectDisplacements(const ExpectedAnswer& answer, double tolerance) {
  ASSERT_EQ(wedgeNumbering.geometryNodeCount, answer.node.rows());
  for (int n = 1; n <= wedgeNumbering.geometryNodeCount; ++n) {
    const ResultRow total = resultRow(ResultBlock::main, n), inMold = resultRow(ResultBlock::residual, n);
    const ExpectedNode& expected = answer.node[n];
    for (std::size_t c = 0; c < 3; ++c) {
      EXPECT_NEAR(total[c], expected.total[c], tolerance) << "total, node " << n << " component " << c;
      EXPECT_NEAR(inMold[c], expected.inMold[c], tolerance) << "in-mold, node " << n << " component " << c;
    }
    EXPECT_NEAR(total[4], expected.sinkMark, tolerance) << "sink mark, node " << n;
  }
}

/// The line that holds `key`, from the number behind "=" on.
std::vector<double> summaryNumbers(const std::string& report, const std::string& key) {
  const std::size_t line = report.find(key);
  if (line == std::string::npos) return {};
  std::vector<double> numbers(2, NAN);
  const char* values = report.c_str() + report.find('=', line) + 1;
  EXPECT_GE(std::sscanf(values, "%lf ~ %lf", &numbers[0], &numbers[1]), 1) << key;
  return numbers;
}

void expectReport(const ExpectedAnswer& answer, const std::string& report, double tolerance) {
  for (const std::string& line : answer.report) EXPECT_THAT(report, testing::HasSubstr(line));
  const char* const keys[] = {"25201 :", "25202 :", "25203 :", "25204 :"};
  for (std::size_t i = 0; i < 4; ++i) {
    const std::vector<double> found = summaryNumbers(report, keys[i]);
    ASSERT_EQ(found.size(), 2u) << keys[i];
    EXPECT_NEAR(found[0], answer.summary[i], 0.51e-4 + tolerance) << keys[i];
  }
  const std::vector<double> sink = summaryNumbers(report, "25205 :");
  ASSERT_EQ(sink.size(), 2u);
  EXPECT_NEAR(sink[0], answer.summary[4], 0.51e-4 + tolerance);
  EXPECT_NEAR(sink[1], answer.summary[5], 0.51e-4 + tolerance);
}

TEST_P(Case, StagesAgreeInMemory) {
  const double tolerance = 1e-7 * greatestLength(answer_);
  startRun(job_);

  inputStage();
  modelStage();
  expectModel(answer_);
  EXPECT_EQ(storedEntries(), answer_.entries);
  analysisDriver();
  writeResults();

  expectDisplacements(answer_, tolerance);
  expectReport(answer_, job_.read(".WD1"), 10.0 * tolerance);
  const ResultExtremes extremes = resultExtremes();
  for (std::size_t c = 0; c < 3; ++c) {
    EXPECT_NEAR(10.0 * (extremes.maximum[c] - extremes.minimum[c]), answer_.summary[c],
                1e-6 * answer_.summary[3]);
  }
}

/// Half a unit of the last of four digits.
double halfUnit(double value) {
  return value == 0.0 ? 0.0 : 0.5e-3 * std::pow(10.0, std::floor(std::log10(std::abs(value))));
}

class CaseFiles : public Case {};

TEST_P(CaseFiles, HoldTheDigits) {
  const double tolerance = 2e-4 * 10.0 * greatestLength(answer_);  // mm

  const ScratchJob::Outcome outcome = job_.run();

  ASSERT_EQ(outcome.status, 0) << outcome.console;
  const std::string results = job_.read(".WR1");
  const auto main = resultBlock(results, "Keld_ResultsStr");
  const auto thermal = resultBlock(results, "Keld_Thermal_ResultsStr");
  ASSERT_EQ(main.rows(), answer_.node.rows());
  ASSERT_EQ(thermal.rows(), answer_.node.rows());
  EXPECT_EQ(results.find("[Keld_Residual_ResultsStr]") != std::string::npos, answer_.stressValid == 1);
  Column<std::vector<double>> residual(main.rows(), std::vector<double>(4, 0.0));
  if (answer_.stressValid == 1) residual = resultBlock(results, "Keld_Residual_ResultsStr");
  for (int n = 1; n <= main.rows(); ++n) {
    const ExpectedNode& expected = answer_.node[n];
    ASSERT_EQ(main[n].size(), 5u);
    ASSERT_EQ(residual[n].size(), 4u);
    ASSERT_EQ(thermal[n].size(), 4u);
    const auto expectDigits = [&](double found, double centimetres) {
      EXPECT_NEAR(found, 10.0 * centimetres, halfUnit(found) + tolerance) << "node " << n;
    };
    for (std::size_t c = 0; c < 3; ++c) {
      expectDigits(main[n][c], expected.total[c]);
      expectDigits(residual[n][c], expected.inMold[c]);
      expectDigits(thermal[n][c], expected.total[c] - expected.inMold[c]);
    }
    expectDigits(main[n][3], std::hypot(expected.total[0], expected.total[1], expected.total[2]));
    expectDigits(main[n][4], expected.sinkMark);
  }
  expectReport(answer_, job_.read(".WD1"), tolerance);
}

std::string nameOf(const testing::TestParamInfo<CaseRun>& run) {
  std::string name = run.param.name;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Direct, Case, testing::ValuesIn(runsWith(2)), nameOf);
INSTANTIATE_TEST_SUITE_P(Direct, CaseFiles, testing::ValuesIn(runsWith(2)), nameOf);
INSTANTIATE_TEST_SUITE_P(Multigrid, CaseFiles, testing::ValuesIn(runsWith(1)), nameOf);

}  // namespace keld::testing_support
