// Text files of the hierarchy for inspection. Called by tier_main at a dump level of 2 or more.
#pragma once

#include "tier/store/hierarchy.h"

namespace tier {

/// Writes, for each level k, <filnam_dump><k>.matrix.mtx and, where a coarser level exists,
/// <filnam_dump><k>.interp.mtx (Matrix Market, coordinate, numbers of the level from 1) and
/// <filnam_dump><k>.state (lines "i state", coarse number above 0 for a C-variable). A file that can't be
/// written is ierr 1.
void dump_hierarchy(const hierarchy& h);

}  // namespace tier
