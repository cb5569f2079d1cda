// The tables of the structural model, with units, index ranges and writers. All are 1-based, entry 0 unused.
// A "wedge node" is a node of the two-layer mesh: T lower nodes 1..T, their mates T+1..2T.
#pragma once

#include <array>

#include "run/base/column.h"
#include "run/base/vector3.h"

namespace keld {

using Matrix6 = std::array<std::array<double, 6>, 6>;

/// Written by the wedge renumbering.
struct WedgeNumbering {
  int geometryNodeCount = 0;  // N, nodes of the file
  int wedgeNodeCount = 0;     // 2T
  Column<int> nodeToNewNode;  // [1..N] lower wedge node; negative: runner node only; 0: unused
  Column<int> nodeMate;       // [1..2T] the node across the wall
};

/// The nodes at which a piece of the part is held. Chosen by the boundary selection, in geometry numbers at
/// first, in wedge numbers after the renumbering.
struct BoundaryNodes {
  int boundaryNode1 = 0, boundaryNode2 = 0, boundaryNode3 = 0;
};

/// Freedoms of the wedge nodes; written by the numbering and the restraint set-up.
struct FreedomTables {
  Column<int> nodeRestraint;  // 1 free, -1 held, -2 one unknown, -3 two unknowns
  Column<int> nodeDofCount;   // 3 for every node of a triangle
  Column<int> nodeFirstDof;   // first of the node's global degrees of freedom
  Column<int> nodeFirstRow;   // first row in the reduced system
  Column<int> nodeFrame;      // row of restraintFrames of a boundary node, else 0
  Column<int> freeDofList;    // [1..freeDofCount] global freedom of a reduced row, ascending
  int dofCount = 0;
  int freeDofCount = 0;
};

/// Axes of the plane of a piece's boundary nodes; unknowns of its nodes 2 and 3 are kept in it.
struct RestraintFrame {
  Vector3 ex{}, ey{}, ez{};
};

/// The reduced system in compressed rows, base 1, diagonal first; written by the assembly of a pass.
struct CompressedSystem {
  Column<int> rowStart;        // [1..freeDofCount + 1]
  Column<int> columnIndex;     // [1..entries]
  Column<double> matrixValue;  // [1..entries] dyn/cm
  Column<double> rowLoad;      // [1..freeDofCount] dyn
  Column<int> rowFunction;     // [1..freeDofCount] direction 1, 2, 3 within the node
  Column<int> rowPoint;        // [1..freeDofCount] running number of the node among nodes with unknowns
};

/// Written by the volume pass.
struct VolumeTables {
  Column<double> nodalTemperature;  // [1..2T] K
  Column<double> nodalVolume;       // [1..2T] cm3
  double elementVolumeTotal = 0.0;  // cm3
  double meanJacobian = 0.0;        // 0.0 until the volume pass is done
};

/// Stiffness of a polymer kind in material axes (11, 22, 33, 12, 13, 23) and its expansion.
struct MaterialConstants {
  Matrix6 stiffness{};                 // dyn/cm2
  double expansionLongitudinal = 0.0;  // 1/K
  double expansionTransverse = 0.0;    // 1/K
};

/// Full vectors over the global degrees of freedom, written by the solve stages.
struct SolutionTables {
  Column<double> displacementTotal;   // cm, last pass
  Column<double> displacementInMold;  // cm, first of two passes, else 0
  Column<double> rowSolution;         // reduced solution; at last the sink mark by wedge node, cm
};

extern WedgeNumbering wedgeNumbering;
extern Column<BoundaryNodes> boundaryNodes;  // [1..pieces]
extern FreedomTables freedoms;
extern Column<RestraintFrame> restraintFrames;  // [1..pieces], set up by the restraint
extern CompressedSystem systemOfPass;
extern VolumeTables volumes;
extern FixedColumn<MaterialConstants, 2> materialConstants;  // by kind of polymer
extern SolutionTables solution;

}  // namespace keld
