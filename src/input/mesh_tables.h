// The mesh: NodeTable and ElementTable, 1-based, and the scalars of the geometry file.
// Written by the reader of ".PG1", made compact by the prior-result stage, extended by model processing.
#pragma once

#include <array>
#include <vector>

#include "run/base/column.h"

namespace keld {

/// 1 Shell, 0 Surface. The geometry pre-read stores 0; the value 1 is set by tests alone.
extern int ModelKind;

/// Indexed 1..elementCount by the file's element number; after the prior-result stage compact: part elements
/// first, runner elements behind them.
struct ElementTable {
  int elementCount = 0;               // records of the file
  int partElementCount = 0;           // triangles, set by the prior-result stage; later stages walk these
  Column<int> node1, node2, node3;    // lower triangle; node3 = 0 marks a two-node runner element
  Column<int> node4, node5, node6;    // upper triangle, filled by the wedge renumbering
  Column<double> thickness;           // cm; diameter of a runner element
  Column<double> correctedThickness;  // cm, 0 without the ninth field; released by the prior-result stage
  Column<double> thicknessScale;      // 1 / ninth field, else 1.0; released likewise
  Column<int> fileOrder;              // element number of each record of the file; released likewise
  Column<double> nx, ny, nz;          // unit normal of a triangle
  Column<double> area;                // cm2
  Column<double> meanEdge;            // cm, mean length of the three edges
  Column<double> cornerCosine;        // largest |cos| of the corner angles, diagnostics only
};

/// Indexed 1..nodeCount by the file's node number; after the wedge renumbering by wedge node.
struct NodeTable {
  int nodeCount = 0;
  Column<double> x, y, z;      // cm
  std::vector<int> gateNodes;  // positions of the records whose flag is above 0, [0..gateNodeCount-1]
};

/// Scalars of the geometry stage.
struct GeometryScalars {
  double thicknessFactor = 0.0;        // to cm
  double coordinateFactor = 0.0;       // to cm
  int runnerElementCount = 0;          // elements with node3 = 0
  int thicknessCorrection = 0;         // 1: every record has a usable ninth field
  std::array<double, 3> gridCentre{};  // cm, mean centre of the occupied cells of a 100^3 grid
  double lengthMajor = 0.0, lengthMiddle = 0.0, lengthMinor = 0.0;  // cm
  int axisMajor = 1, axisMiddle = 2, axisMinor = 3;                 // x = 1, y = 2, z = 3
  double largestExtent = 0.0, smallestExtent = 0.0;  // cm, of all nodes; set by the prior-result stage
};

extern ElementTable elementTable;
extern NodeTable nodeTable;
extern GeometryScalars geometry;

}  // namespace keld
