// Renumbering of the used geometry nodes into the two layers of wedge nodes.
// Called once by the model stage, after the boundary nodes are chosen.
#pragma once

namespace keld {

/// Each node of a triangle becomes wedge nodes n and n + T with equal coordinates, in order of first use;
/// nodes of runner elements alone follow behind 2T. Rewrites node1 to node6,
/// NodeTable and the boundary node numbers.
void renumberWedgeNodes();

}  // namespace keld
