// Coarse operators as Galerkin products, in the six ways of handling memory.
// Called by create_levels, and for re-starts with new values on a kept interpolation.
#pragma once

#include <cstdint>

#include "tier/store/hierarchy.h"

namespace tier {

/// How a variant lays out its memory; the product and the order of its entries are those of all.
enum class opdfn_variant {
  standard = 1,     // one serial sweep into arrays that grow
  detrlen = 2,      // two sweeps, the first one determines the row lengths
  detrlen_mg = 3,   // the same, rows split by their work
  dynalloc = 4,     // one sweep into a buffer for each thread
  dynalloc_mg = 5,  // the same, rows split by their work
  lists = 6         // one sweep into lists of chunks for each thread
};

/// Coarse operator A_c = R A P with R the transpose of the interpolation P of `fine`: ia, ja and a of
/// `coarse`. Each row has its diagonal first, other columns in the order of their first appearance; a product
/// r a_il of exact zero makes no entry unless `keep_zeros`. One thread forms a row in a fixed order, so that
/// the result depends neither on the variant nor on the team; setup/coarse_row.h tells which. A thread needs
/// room for a marker of each coarse variable, and of each fine one where rows of R A are summed up.
/// Row-marker product: Gustavson, ACM TOMS 4 (1978) 250-269.
void opdfn(const level& fine, level& coarse, opdfn_variant variant, bool keep_zeros);

}  // namespace tier
