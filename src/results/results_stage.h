// The results stage: sink mark, ".WR1" and the summary in the report. Last stage of a run.
#pragma once

namespace keld {

/// Writes ".WR1" under another name beside it and renames it when it is whole; a fault ends the run.
void writeResults();

}  // namespace keld
