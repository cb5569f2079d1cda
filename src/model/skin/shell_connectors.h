// Pairs of triangles across the wall and the connector bars between them. Steps of shell model processing.
#pragma once

#include "model/skin/shell_tables.h"

namespace keld {

/// Lets the best claimant of a triangle take the place of a partner that faces another way.
void cleanUpPartners();

/// Marks nodes at which the skin turns: some normal has a cosine of at most 0.8 to the first one's.
void markFeatureNodes(const IncidenceLists& trianglesAtNode);

/// The three passes; appends connector rows to the ElementTable and raises shell.runningCount.
void makeConnectors(const IncidenceLists& trianglesAtNode);

/// Stores the length of each connector row in its area, then removes rows that are too long for the wall at
/// their ends, for the other rows or for the part.
void filterConnectors();

}  // namespace keld
