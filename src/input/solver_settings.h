// Reader of the computing settings, ".CPU" or the installation's "Standard/File.CPU".
// Called by the input stage.
#pragma once

#include <string>

#include "run/base/text_reader.h"

namespace keld {

/// Waits for the job's ".CPU", else for that of the installation; without both the run ends. Returns the path
/// of the file that it has read.
std::string readSolverSettings();

/// Fills solverChoice, bcNode, cycleLimit and the choices of KELD's own
/// section and echoes all into the open report.
void readSettingLines(TextReader& file);

}  // namespace keld
