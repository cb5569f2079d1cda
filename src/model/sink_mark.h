// The sink mark of each wedge node, from how much the deformed wall has thinned.
// First act of the results stage.
#pragma once

namespace keld {

/// Leaves the sink mark by wedge node in solution.rowSolution, cm, [1..2T]; the upper layer holds 0. Reports
/// D5015 of degenerate triangles. Needs both displacement vectors.
void sinkMark();

/// Volume that a wall of thickness h (cm) and triangle area A (cm2) loses where its deformed thickness is L:
/// A h (L - h) / 3 per corner, cm4; 0 for a wall that has thickened.
double sinkVolume(double thickness, double deformedThickness, double area);

}  // namespace keld
