// Assembly of the reduced system from the wedge elements. Called by the analysis driver, once per pass.
// The same bits for any number of threads: every sum runs in element order.
#pragma once

namespace keld {

/// Lays out the rows and leaves `systemOfPass` complete: matrix with the diagonal first in each row, rows
/// with a negative diagonal turned over, load, row labels. Thermal terms stand in the load of the last pass
/// alone (stressPass == passCount). Needs patternSearch. Reports D5015 and D5016. An entry that isn't finite
/// ends the run.
void assemblePass(int stressPass, int passCount);

/// The load of a further pass alone, bit for bit that of assemblePass, for a solver that has kept its factor
/// or hierarchy: rowLoad is written anew, nothing else is touched or read of the matrix. Needs an
/// assemblePass before it, but no pattern. Reports as assemblePass does.
void assembleLoad(int stressPass, int passCount);

}  // namespace keld
