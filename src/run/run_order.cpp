// The order of a run: working files, report head, inputs, model, analysis, results, closing lines.
// Called by the entry point.
#include "run/run_order.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "input/input_stage.h"
#include "input/mesh_tables.h"
#include "model/model_stage.h"
#include "results/results_stage.h"
#include "run/base/element_warnings.h"
#include "run/base/platform.h"
#include "run/base/streams.h"
#include "run/base/thread_place.h"
#include "run/base/working_files.h"
#include "run/blas_workspace.h"

namespace keld {
namespace {

const std::string shortRule = std::string(50, '~') + "\n";
const std::string closingRule = std::string(79, '_') + "\n\n";

void removeFile(const std::string& path) { (void)std::remove(path.c_str()); }  // none there is as good

/// The report is emptied behind the banner, so that the console alone keeps it.
void writeBanner() {
  vPrintMessage(1, "%s", shortRule.c_str());
  vPrintMessage(1, "  Norvane Injection Molding Simulation     \n");
  vPrintMessage(1, "%77s\n", "");
  vPrintMessage(1, "  Free software under the MIT licence, without warranty of any kind\n");
  vPrintMessage(1, "%s", shortRule.c_str());
}

void emptyMessageFiles() {
  vOpenMessageFile(OpenMode::empty);
  vCloseMessageFile();
  vOpenLogMessageFile(OpenMode::empty);
  vCloseLogMessageFile();
}

void writeHead() {
  for (const char* line :
       {"<HTML>\n", "<HEAD>\n", "<font face= 'Arial'> \n", "<font size= '1.5'> \n", "</HEAD>\n"})
    vPrintMessage(2, "%s", line);
  vPrintMessage(1, "\n @@ Software Released Time: KELD/C-Style  %s @@\n\n", programReleaseTime().c_str());
  vPrintMessage(1, "%s", shortRule.c_str());
  vPrintMessage(1, " ** Surface KELD Report/Record File **\n\n");
  vPrintMessage(2, "<BR>&nbsp;\n");
  vPrintMessage(1, " Date/time : %s\n", localTime("%Y/%m/%d  %H:%M:%S").c_str());
  vPrintMessage(1, " File path : %s\n", workingFiles.baseName.c_str());
  vPrintMessage(1, " Software type : x64\n");
  vPrintMessage(1, "%s", shortRule.c_str());
  vPrintMessage(1, "\n# KELD ANALYSIS #\n");
}

/// Processors, threads of the runtime and the count that the limit leaves; reported, and that is all.
void writeMachine(int threadLimit) {
  const int most = mostThreads();
  vPrintMessage(1, " # System machine information - Number of processor= %3d\n\n", processorCount());
  vPrintMessage(1, " # Maximum number of treads of the run-time system= %3d\n\n", most);
  vPrintMessage(1, " # Number of processor available of running process= %3d\n\n",
                threadLimit != 0 ? std::min(most, threadLimit) : most);
}

const char* modelTitle() { return ModelKind == 1 ? "Shell" : "Surface"; }

void writeClosing(long startClock) {
  const long elapsed = processorClock() - startClock;
  vTellCountedWarnings();
  vPrintMessage(2, "<BR>&nbsp;\n");
  vPrintMessage(1, "\n ** CPU Time     **  : %.2lf sec\n", static_cast<double>(elapsed) * 0.001);
  vPrintMessage(1, " Recorded - %s\n", workingFiles.report.c_str());
  vPrintMessage(1, "%s", closingRule.c_str());
  vPrintMessage(1, "###   %s KELD V2017 Analysis has Completed   ###\n", modelTitle());
  vPrintMessage(0, "%29s\n", "");
  vPrintMessage(2, "</font> \n");
  vPrintMessage(2, "</HTML>\n");
}

}  // namespace

void runAnalysis(const CommandLine& line) {
  workingFiles = composeWorkingFiles(line.baseName, line.installRoot);
  for (const std::string& path : workingFiles.staleResults) removeFile(path);
  const long startClock = processorClock();

  writeBanner();
  emptyMessageFiles();
  writeHead();
  takeBlasWorkspace();

  inputStage();
  writeMachine(line.threadLimit);
  vPrintMessage(0, "\n # %s KELD V2017 analysis is beginning ......\n", modelTitle());
  vPrintMessage(1, "\n");
  modelStage();
  analysisDriver();
  removeFile(workingFiles.temporary);
  writeResults();

  writeClosing(startClock);
}

}  // namespace keld
