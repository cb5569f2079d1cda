// Transfer between two levels: restriction of the residual and interpolation of the correction.
// Called by the cycle. Set-up has made the transposed interpolation rt, jrt, wrt of the finer level.
#pragma once

#include "tier/solve/vector_ops.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// f of `coarse` <- P^T (f - A u) of `fine`, u of `coarse` <- 0. `r` is scratch of fine's length and holds
/// the residual afterwards. A thread forms whole coarse rows, so the sums do not depend on the team.
void resc(const level& fine, level& coarse, vector r);

/// u of `fine` <- u + P u of `coarse`.
void inta(level& fine, const level& coarse);

/// The same for any vector: x <- x + P y.
void interpolate(const level& fine, const_vector y, vector x);

}  // namespace tier
