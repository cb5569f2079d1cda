// Rigid-body restraint: the three boundary nodes, the freedoms of the wedge nodes, the frame of the plane.
// Called once by the model stage.
#pragma once

namespace keld {

/// Takes the three given numbers or, when one of them is 0, chooses all three: nearest to the mean of the
/// part's nodes, farthest from it, largest triangle with both. Runs before the renumbering, in geometry
/// numbers. A given number out of range or of a node in no triangle ends the run.
void selectBoundaryNodes();

/// nodeRestraint, nodeDofCount, nodeFirstDof, dofCount and nodeMate of the wedge nodes.
void numberFreedoms();

/// Restraint codes of the boundary nodes, dofRestrained, freeDofCount, RestraintFrame, volume pass. Ends the
/// run with D5014 when the boundary nodes span no triangle.
void setUpRestraint();

/// Unknowns of a wedge node by its restraint code: 3, 0, 1 or 2.
constexpr int unknownsOf(int restraint) {
  return restraint == 1 ? 3 : restraint == -2 ? 1 : restraint == -3 ? 2 : 0;
}

}  // namespace keld
