// The pieces of a part: groups of triangles that the walls' elements join.
// Called by the choice of the boundary nodes, in geometry numbers.
#pragma once

#include <vector>

namespace keld {

/// What joins two patches of triangles, which depends on the unknowns of a node: two common nodes where it
/// has displacements alone (one is a hinge), one where it has rotations too.
enum class Joining { byTwoNodes, byOneNode };

/// Pieces are numbered from 1 in the order of their first triangle.
struct Pieces {
  int count = 0;
  std::vector<int> ofElement;  // [1..partElementCount]
};

/// Joins the triangles of the ElementTable until no two groups have the common nodes that the rule asks for:
/// groups that have grown together may have two with a third. Time grows with the number of triangles and of
/// nodes at which groups touch.
Pieces findPieces(Joining rule);

}  // namespace keld
