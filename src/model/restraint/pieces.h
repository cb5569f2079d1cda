// The pieces of a part: groups of triangles that the walls' elements join.
// Called by the choice of the boundary nodes, in geometry numbers.
#pragma once

#include "model/walls/joining.h"
#include "run/base/column.h"

namespace keld {

/// Pieces are numbered from 1 in the order of their first triangle.
struct Pieces {
  int count = 0;
  Column<int> ofElement;  // [1..partElementCount]
};

/// Joins the triangles of the ElementTable until no two groups have the common nodes that the rule asks for:
/// groups that have grown together may have two with a third. Time grows with the number of triangles and of
/// nodes at which groups touch.
Pieces findPieces(Joining rule);

}  // namespace keld
