// The sink mark of a Shell run, from the change of specific volume.
// First act of the results stage of such a run.
#pragma once

namespace keld {

/// Leaves the sink mark by wedge node in solution.rowSolution, cm, [1..2T], from the change of specific
/// volume between 298 K and the temperature of the element: v^(1/3) (v - v0) / v / 3 with means of
/// temperature and kind fraction weighted by volume. A node of no element gets 0.
void shellSinkMark();

}  // namespace keld
