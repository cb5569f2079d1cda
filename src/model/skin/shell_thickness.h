// The thickness field of a skin mesh: gaps, statistics, thick elements, spikes, limits.
// Steps of shell model processing, in the order of their declaration.
#pragma once

#include "model/skin/shell_tables.h"

namespace keld {

/// Gives triangles without thickness the mean of their neighbours, five times over.
void fillThicknessGaps(const IncidenceLists& neighbours);

/// characteristicThickness: twice the mean of a histogram's edges, weighted by the counts to the power 1.5.
double characteristicThicknessOf(double smallestExtent);

/// Flags thick triangles, classes their nodes and gives them the thickness of the nearest thin triangle.
void repairThickElements();

/// Levels dents and spikes against all neighbours, then limits the column from below and above.
void removeThicknessSpikes(const IncidenceLists& neighbours);
void limitThickness(const IncidenceLists& neighbours);

}  // namespace keld
