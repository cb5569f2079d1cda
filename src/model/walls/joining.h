// What a wall model says of patches of triangles that meet. Asked by the finder of pieces.
#pragma once

namespace keld {

/// What joins two patches of triangles, which depends on the unknowns of a node: two common nodes where it
/// has displacements alone (one is a hinge), one where it has rotations too.
enum class Joining { byTwoNodes, byOneNode };

}  // namespace keld
