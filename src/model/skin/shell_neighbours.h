// Which triangles share an edge. Called by shell model processing.
#pragma once

#include "model/skin/shell_tables.h"

namespace keld {

/// edgeNeighbourTable: triangles that share an edge with a triangle, by its edges 12, 23, 31 in turn and in
/// element order for each. T-junctions give more than three; one neighbour can stand twice.
IncidenceLists edgeNeighbours(const IncidenceLists& trianglesAtNode);

/// Whether some triangle holds both nodes.
bool onOneTriangle(const IncidenceLists& trianglesAtNode, int nodeA, int nodeB);

}  // namespace keld
