// Angles at which facets meet, for the spring-in of bent walls: per triangle and corner, the turn from the
// mean normal of the wall at the node to the triangle's own. Called by the facet wall, once per part.
#pragma once

#include <array>

#include "run/base/column.h"
#include "run/base/vector3.h"

namespace keld {

/// Angle x axis in rad, [1..triangle count], corners 1 to 3; 0 where the walls at a node go on straight.
/// The wall at a node is split into sectors, triangles joined by edges that exactly two triangles share;
/// edges of three and more end them. The mean normal of a sector weighs each triangle by its angle at the
/// node, neighbours that are turned over with the other sign. triangle   node numbers of the corners, [1..],
/// from 1 to nodeCount; corner [1..] their places A triangle without area joins nothing and has no turn.
Column<std::array<Vector3, 3>> foldTurns(const Column<std::array<int, 3>>& triangle,
                                         const Column<Vector3>& node);

}  // namespace keld
