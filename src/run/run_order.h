// The stages of a run in their fixed order, with the head and the closing lines of the report.
// Called by the entry point.
#pragma once

#include "run/command_line.h"

namespace keld {

/// One whole analysis. Returns when it is finished; a failure throws RunEnded.
void runAnalysis(const CommandLine& line);

}  // namespace keld
