// Reading of ".CPU": ten value lines behind "[Keld_ComputeData]", then KELD's own section.
// Called by the input stage.
#include "input/solver_settings.h"

#include "input/extension_settings.h"
#include "input/input_echo.h"
#include "input/process_record.h"
#include "run/base/failure.h"
#include "run/base/reading.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {
namespace {

constexpr int defaultCycleLimit = 3000;

int settingLine(TextReader& file, ValueUse use) {
  const int found = vReadValueLine(file, use);
  vPrintMessage(-2, "\n");
  return found;
}

int usedSetting(TextReader& file, const char* what) {
  settingLine(file, ValueUse::used);
  return lastValueAsInt(file, what);
}

}  // namespace

void readSettingLines(TextReader& file) {
  file.needLineStartingWith("[Keld_ComputeData]");
  file.skipLine();
  file.skipLine();
  vPrintMessage(-2, "\n\n");

  settingLine(file, ValueUse::echoed);  // 1
  processRecord.solverChoice = usedSetting(file, "solver choice");
  settingLine(file, ValueUse::echoed);  // 3
  settingLine(file, ValueUse::echoed);  // 4
  for (std::size_t i = 1; i <= 3; ++i) processRecord.bcNode[i] = usedSetting(file, "boundary node");
  settingLine(file, ValueUse::echoed);  // 8
  settingLine(file, ValueUse::echoed);  // 9
  const bool known = settingLine(file, ValueUse::used) == 1;
  processRecord.cycleLimit = known ? lastValueAsInt(file, "cycle limit") : defaultCycleLimit;
  readExtensionSettings(file);
}

std::string readSolverSettings() {
  echoHeading("\n # Solver parameter information ......   \n");
  vPrintMessage(2, "<br>\n");
  const bool ofJob = waitForFile(workingFiles.cpu);
  if (!ofJob && !waitForFile(workingFiles.standardCpu))
    vFail("\n !! Error !!  Cannot open the solver settings %s, nor %s of the installation.\n",
          workingFiles.cpu.c_str(), workingFiles.standardCpu.c_str());
  TextReader file = TextReader::open(ofJob ? workingFiles.cpu : workingFiles.standardCpu);
  const ReportSection section;
  readSettingLines(file);
  return file.name();
}

}  // namespace keld
