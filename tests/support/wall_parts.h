// Parts of flat walls that meet at edges, and their deformation by the stages of the analysis.
// Used by the tests of the wall models and by their benchmark.
#pragma once

#include <functional>
#include <vector>

#include "run/base/column.h"
#include "support/model_maker.h"

namespace keld::testing_support {

/// A rectangular wall: a grid of cells from a corner along two sides.
struct Sheet {
  Vector3 corner, along, across;  // cm
  int cellsAlong, cellsAcross;
};

struct WallPart {
  TestMesh mesh;
  std::vector<int> sheetOf{0};  // [1..triangles] number of the sheet, from 0
};

/// Triangles of the sheets in turn, with alternating diagonals; nodes at one place are one node.
WallPart joinedSheets(const std::vector<Sheet>& sheets);

/// Displacements of the geometry nodes, cm, with the places they had.
struct Deformation {
  Column<Vector3> place, total, inMold;
  Column<double> sinkMark;

  /// The total displacement of the node nearest to a place.
  Vector3 at(const Vector3& where) const;
};

/// Deforms a part of wall model wedge_walls or facet_walls by the stages of the analysis and the direct
/// solver. `setFields` changes the input tables that loadModel has filled.
Deformation deformed(const TestMesh& mesh, int wallModel, const std::function<void()>& setFields);

/// The displacement less the rigid motion that takes most of it away (least squares over all nodes).
Column<Vector3> withoutRigidMotion(const Column<Vector3>& place, const Column<Vector3>& displacement);

}  // namespace keld::testing_support
