// The level hierarchy: per level the matrix, interpolation, states and vectors. Level 1 is the caller's
// system. Made by set-up, used by the cycles, freed by clean-up.
#pragma once

#include <cstdint>

#include "tier/store/numbered.h"
#include "tier/store/work_arrays.h"

namespace tier {

constexpr int max_levels = 25;

/// One level. Index arrays are 1-based and local to the level: rows 1..n, positions from 1.
struct level {
  int n = 0;      // variables
  int npnts = 0;  // points, 0 without point structure

  // matrix: rows ia[i] .. ia[i+1]-1, diagonal first; views of the caller's arrays on level 1, of own_* else.
  // During set-up of the next level ja[ia[i]] holds the position of the row's last strong coupling.
  view<int> ia, ja;
  view<double> a;
  // While the cycles smooth by state, row order[p] stands at place p: ia[p] .. ia[p+1]-1
  // (solve/rows_by_state.h).
  view<const int> order;  // [1..n], empty: each row stands at its own number
  view<int> iu, ip;       // function and point of a variable; empty when not given
  view<double> u, f;

  // next level's making: states, then coarse numbers (C above 0), and the interpolation to this level
  work_array<int> icg;      // [1..n]
  work_array<int> iw, jw;   // rows iw[i] .. iw[i+1]-1; jw holds coarse numbers 1..n of the next level
  work_array<double> w;     // C rows have the one entry 1.0, FF rows none
  work_array<int> rt, jrt;  // transposed interpolation: rows of the next level's variables
  work_array<double> wrt;

  // points
  work_array<int> iv;      // [1..npnts+1] first variable of a point
  work_array<int> ibcg;    // [1..npnts]
  work_array<int> ib, jb;  // primary matrix
  work_array<double> b;
  std::int64_t primary_rows = 0, primary_entries = 0;  // of the primary matrix that set-up has freed

  work_array<int> own_ia, own_ja, own_iu, own_ip;
  work_array<double> own_a, own_u, own_f;

  int row_at(int place) const { return order ? order[place] : place; }
  int entries() const { return ia[n + 1] - 1; }
  bool has_states() const { return icg.size() > 0; }
};

struct hierarchy {
  int levels_created = -1, levels_used = -1;  // -1: none
  numbered<level, max_levels + 1> at;         // [1..levels_created]
  level& operator()(int k) { return at[k]; }
  const level& operator()(int k) const { return at[k]; }
};

}  // namespace tier
