// Strong couplings: sorts each row in place so that its strong couplings stand behind the diagonal.
// Called by the strength step of create_levels, for the matrix of a level or its primary matrix.
#pragma once

#include <cstdint>

#include "tier/setup/couplings.h"
#include "tier/store/choices.h"

namespace tier {

struct strength_options {
  strong_kind kind = strong_kind::eliminated;  // first digit of ncg
  double ecg1 = 0.01;  // rows with a smaller sum of couplings than this share of the diagonal have none
  double ecg2 = 0.25;  // strength threshold
  double ewt1 = 1e70;  // limit of the off-diagonal sum
  double ewt2 = 0.2;   // positive couplings up to this share of the largest negative one are ignored
  double eps = 0.9;    // all rows within it: the level is diagonally dominant; 1 or more: not tested (eps_dd)
  int nprim = 0;       // above 0: only rows of this kind are sorted
  bool report = false;  // also counts rows with large weak couplings
};

struct strength_counts {
  std::int64_t strong = 0;     // strong couplings
  bool all_dominated = false;  // every row is diagonally dominant within eps
  int dirichlet = 0, diagdom = 0, violating = 0, nonpositive = 0, only_positive = 0;
  int eliminated = 0, failed = 0, ineffective = 0;  // rows with positive elimination
  int large_weak = 0;
};

/// Classifies the couplings of every row and sorts it.
///   type 1  a_ij <= ecg2 min_k a_ik (Ruge and Stueben, in Multigrid Methods, SIAM 1987); a row with positive
///           couplings alone is unusable
///   type 2  as 1, a row with positive couplings alone takes its largest ones
///   type 3  positive couplings above ewt2 times the largest negative one are eliminated first; couplings
///   that
///           the elimination weakens are not strong; a failed elimination makes the row unusable
///   type 4  as 3, a failed elimination leaves the row as type 1 has it
///   type 5  as 4, a row with positive couplings alone takes its largest ones
/// The order of entries within a row changes for good. ja[ia[i]] becomes the position of the last strong
/// coupling, ia[i] without one, 0 where the row cannot be interpolated.
/// The result does not depend on the team.
strength_counts rwsrt(const couplings& m, const strength_options& o);

/// Writes the counters that are above 0.
void print_strength_counts(const strength_counts& n, strong_kind kind);

/// Gives every row its own number back in the slot of its diagonal.
void restore_diagonals(int n, view<const int> ia, view<int> ja);

}  // namespace tier
