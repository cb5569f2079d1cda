// The rigid motions of the part as vectors of the reduced system: what its matrix takes to zero where the
// part isn't held. Multigrid by aggregation builds its coarse levels on them.
#pragma once

#include <vector>

#include "model/walls/wall_model.h"

namespace keld {

constexpr int rigidModeCount = 6;

/// Three translations, then three rotations about the part's middle, lengths in half its extent; by reduced
/// row, one mode after the other: [0 .. 6 freeDofCount - 1]. Nodes stand at their true places: a wedge node
/// at the mid surface less or plus the mean offset of the triangles there. Rows in a restraint frame have
/// their components in it.
std::vector<double> rigidModes(const WallModel& wall);

}  // namespace keld
