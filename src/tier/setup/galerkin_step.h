// Galerkin step of a level: product, repair of its diagonal, truncation.
// Called by create_levels and by re-starts with new values.
#pragma once

#include "tier/setup/opdfn.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// The variant that runs: ntyp_galerkin, but lists in place of 4 and 5 where stored zeros are kept.
opdfn_variant galerkin_variant(const controls& c);

/// Forms the operator of level k + 1 over the interpolation of level k; a repair changes that interpolation.
void form_operator(hierarchy& h, int k, const controls& c);

}  // namespace tier
