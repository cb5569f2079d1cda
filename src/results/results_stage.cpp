// The results stage: sink mark, ".WR1", summary. Last stage of a run.
#include "results/results_stage.h"

#include "input/mesh_tables.h"
#include "model/sink_mark.h"
#include "model/skin/shell_sink_mark.h"
#include "results/result_rows.h"
#include "results/results_file.h"
#include "results/summary.h"

namespace keld {

void writeResults() {
  if (ModelKind == 1)
    shellSinkMark();
  else
    sinkMark();
  requireFiniteRows();
  writeResultsFile();
  writeSummary(resultExtremes());
}

}  // namespace keld
