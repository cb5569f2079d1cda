// Whole processing of closed skins: twice on one mesh, and in a run to the results file.
#include "model/skin/shell_processing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>

#include "input/input_stage.h"
#include "input/mesh_tables.h"
#include "model/material/material.h"
#include "model/model_stage.h"
#include "model/skin/shell_tables.h"
#include "places.h"
#include "results/results_stage.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"
#include "support/faults.h"
#include "support/job.h"
#include "support/skin_scenes.h"

namespace keld {
namespace {

using ShellProcessing = SkinFolderTest;

TEST_F(ShellProcessing, ASecondRunTakesTheScratchFileAndAppliesTheScaleAgain) {
  BoxSkin skin = plateSkin();
  const auto restore = [&] {
    plateSkin();
    elementTable.thicknessScale.assign(elementTable.elementCount, 0.9);
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
  testing::internal::CaptureStdout();
  shellProcessing();
  EXPECT_NE(testing::internal::GetCapturedStdout().find("was taken over from \"" + workingFiles.baseName),
            std::string::npos);
  EXPECT_EQ(shell.runningCount, rows);
  EXPECT_NEAR(elementTable.thickness[1], 0.162, 1e-12);
}

TEST_F(ShellProcessing, ADivisorOfZeroIsNamedWithItsElement) {
  plateSkin();
  elementTable.thicknessScale[5] = 1.0 / 0.0;
  EXPECT_NE(testing_support::faultOf(shellProcessing).find("ninth field of element 5 in"), std::string::npos);
}

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
  auto job = testing_support::ScratchJob::copyOf(places::cases / "plate-stress");
  const BoxSkin skin = plateSkin(6);
  const int elements = elementTable.elementCount, nodes = nodeTable.nodeCount;
  job.write(".PG1", geometryText());
  std::string stress = "/* skin */\n", cool = stress, pairs;
  for (int e = 1; e <= elements; ++e) {
    stress += std::to_string(e) + " 1e7 2e6 1 0.0 1.0 1 0 0 0 1 0 0 0 1\n";  // kind fraction 0
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
  ASSERT_EQ(rows.rows(), nodes);
  for (int n = 1; n <= nodes; ++n)
    ASSERT_NEAR(rows[n][4], 10.0 * std::cbrt(v) * (1.0 - v0 / v) / 3.0, 1e-4) << n;
  EXPECT_GT(rows[1][3] + rows[nodes][3], 0.01);
}

}  // namespace
}  // namespace keld
