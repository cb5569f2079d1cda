// The summary of a run in the report. Called by the results stage, after the results file.
#pragma once

#include "results/result_rows.h"

namespace keld {

/// Writes spread of the displacement, greatest length and range of the sink mark, in mm and inches.
void writeSummary(const ResultExtremes& extremes);

}  // namespace keld
