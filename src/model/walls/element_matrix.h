// Stiffness and load of one element, and their turn into the frame of the boundary nodes.
// Filled by the wall models, read by the assembly.
#pragma once

#include <array>

#include "model/model_tables.h"

namespace keld {

/// Row i, column j at [18 i + j]; freedoms node by node, three each: lower or first triples of corners 1 to
/// 3, then upper or second ones.
using ElementMatrix = std::array<double, 324>;
using ElementLoad = std::array<double, 18>;

/// Copies the upper triangle onto the lower one.
void mirrorUpperTriangle(ElementMatrix& k);

/// Turns the three freedoms of local nodes marked in `inFrame` into the axes of the frame: transpose(T) K T
/// (k may be null) and transpose(T) f. Keeps k exactly symmetric.
void changeBasis(const std::array<bool, 6>& inFrame, const RestraintFrame& frame, ElementMatrix* k,
                 ElementLoad& f);

}  // namespace keld
