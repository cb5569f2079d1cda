// First pass of the coarse/fine splitting, by Ruge and Stueben, with bucketed measures.
// Called by driver_split for a level's matrix or its primary matrix.
#pragma once

#include "tier/setup/couplings.h"
#include "tier/store/choices.h"

namespace tier {

// States of a variable during splitting; C is above 0 from the numbering of the coarse level on.
constexpr int state_c = 1;
constexpr int state_ff = 0;          // no strong coupling, needs no interpolation
constexpr int state_f = -1;          // has a strong C neighbour
constexpr int state_undecided = -2;  // a variable left so is an extra fine one, XF
constexpr int state_reduced = -3;    // a C-variable that `reduce` has turned fine
constexpr int state_not_taking_part = -1000000001;

struct pcol_options {
  clean_up_kind clean_up = clean_up_kind::without_f_neighbour;  // of undecided variables (nxf_clean)
  bool unusable_become_c = true;  // rows that can't be interpolated; else FF (iset_vio_dd)
  int nprim = 0;                  // above 0: only variables of this kind take part
  bool threads = false;
};

struct split_counts {
  int c = 0, f = 0, ff = 0;      // C, fine variables that are interpolated (XF too), FF
  int xf = 0, fc = 0;            // of these: extra fine, forced C
  int switched = 0;              // XF -> C by the clean-up
  int reduced = 0, cforced = 0;  // C -> F by aggressive coarsening, F -> C by the second pass
  double ratio = 0.0;            // C-variables / variables
};

/// Splits 1..n into C and F. state [1..n] gets the states above. Without any strong coupling all counts are
/// 0. The variable of the highest measure (rows that depend on it, F ones twice) becomes C, the rows that
/// depend on it F; among equals the one that has waited longest. Linear in the number of strong couplings.
/// Ruge and Stueben, in Multigrid Methods, SIAM 1987, algorithm A2.
/// With threads, each works on its own block of consecutive rows and leaves couplings out of it aside; F
/// variables of different blocks that depend on each other and on no common C variable, and what stays
/// undecided, are settled over all blocks. The result then depends on the number of threads. Where blocks
/// are closely tied, one thread does the first pass, with the result of a serial run.
split_counts pcol(const couplings& m, const pcol_options& o, view<int> state);

void print_split_counts(const split_counts& n, approach kind);

}  // namespace tier
