// Aggressive coarsening: a second splitting on the C-variables alone.
// Called by driver_split.
#pragma once

#include "tier/setup/couplings.h"
#include "tier/setup/pcol.h"

namespace tier {

struct reduce_options {
  int paths = 1;                           // two-step paths that make a neighbour, 1..4
  approach kind = approach::by_variables;  // for the report
  bool report = false;
  bool threads = false;
};

/// Thins the C-variables of `state` once. Two C-variables are neighbours by a strong coupling or by at least
/// `paths` paths of two strong couplings; a first pass on the graph of neighbours keeps some of them C, the
/// rest gets state_reduced. Those without neighbours and those left undecided stay C. Updates the counts.
/// Stueben, GMD Report 70 (1999), section 7.1.2 (A1 and A2 coarsening).
void reduce(const couplings& m, const reduce_options& o, view<int> state, split_counts& n);

}  // namespace tier
