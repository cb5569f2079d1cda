// Rigid-body restraint: three boundary nodes for each piece, the freedoms of the wedge nodes, the frame of
// the plane. Called once by the model stage.
#pragma once

#include "model/restraint/pieces.h"

namespace keld {

/// Takes the three given numbers or, when one of them is 0, chooses all three: nearest to the mean of the
/// part's nodes, farthest from it, largest triangle with both. A part in several pieces has three for each of
/// them, chosen among the nodes of that piece alone, and a warning; given ones count for the piece that holds
/// all three. Runs before the renumbering, in geometry numbers. A given number out of range or of a node in
/// no triangle ends the run, and so does a piece without three nodes of its own.
void selectBoundaryNodes(Joining rule);

/// nodeRestraint, nodeDofCount, nodeFirstDof, dofCount and nodeMate of the wedge nodes.
void numberFreedoms();

/// Restraint codes of the boundary nodes, nodeFrame, freeDofCount, frames, volume pass. Ends
/// the run with D5014 when the boundary nodes of a piece span no triangle.
void setUpRestraint();

/// Unknowns of a wedge node by its restraint code: 3, 0, 1 or 2.
constexpr int unknownsOf(int restraint) {
  return restraint == 1 ? 3 : restraint == -2 ? 1 : restraint == -3 ? 2 : 0;
}

}  // namespace keld
