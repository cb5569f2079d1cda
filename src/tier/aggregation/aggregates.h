// Aggregates of points that a front over the strong couplings makes.
// Called by set-up once per level.
#pragma once

#include "tier/aggregation/block_matrix.h"

namespace tier::aggregation {

/// Aggregates of the points: aggregate[i] from 0, or -1 for a point without any coupling, which smoothing
/// alone solves. Point j is strong for i when |A_ij| > theta sqrt(|A_ii| |A_jj|), with the norms of blocks in
/// `norm`.
/// A front passes through the strong couplings, all components in one queue: a point whose strong neighbours
/// are all free becomes a root and takes them, but for one with at most half as many couplings as such a
/// neighbour, where all couplings of both are more than 1.5 times as strong as need be. What it leaves joins
/// the neighbour j of the front's aggregates with the largest |A_ij|^2 / |A_jj|^2; the rest forms aggregates
/// of its own with its free strong neighbours. Returns their number. Vanek, Mandel, Brezina, Computing 56
/// (1996) 179-196.
int form_aggregates(int n, const from_zero<int>& start, const from_zero<int>& column,
                    const from_zero<float>& norm, double theta, from_zero<int>& aggregate);

}  // namespace tier::aggregation
