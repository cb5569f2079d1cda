// Banner, input list and level statistics of a set-up. Called by tier_main.
#pragma once

#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// At a print level of 0 or more of set-up or solution the banner,
/// at 1 or more of set-up the decoded codes too.
void print_banner(const controls& c);

/// At a print level of 1 or more: the table of levels, complexities,
/// and required against provided dimensions.
void print_setup_statistics(const hierarchy& h, const controls& c);

}  // namespace tier
