// Point-block Gauss-Seidel on one level. Called by the smoother for nxtyp 5.
#pragma once

#include "tier/solve/block_ilu.h"

namespace tier {

/// One step: for each selected point the dense system of its variables is solved with the others as they are.
/// step     as in relx_gs, F and C being points: a point is C if one of its variables is; 7 is no step here
/// icg      C above 0 by variable; null where the level has no split
/// full_pivoting, else by rows. Errors: 20 unknown step, 220 zero pivot.
void relx_pgs(level& l, point_blocks& points, const int* icg, int step, bool full_pivoting);

}  // namespace tier
