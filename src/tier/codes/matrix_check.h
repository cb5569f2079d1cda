// Checks of the caller's matrix and of its function and point numbers. Called by tier_main before anything is
// set up; the arrays are only read.
#pragma once

#include "tier/codes/call_arguments.h"
#include "tier/store/controls.h"

namespace tier {

/// What every call checks, in one pass over ia, ja and a: pointers, columns within 1..nnu, the diagonal first
/// and not zero, one triangle only in half storage (ierr 40), no NaN (211), no infinity (210); with several
/// functions iu within 1..nsys, with points ip within 1..nnu (40).
void check_matrix(const call_arguments& call, const controls& c);

/// Largest point number.
int count_points(const call_arguments& call, const controls& c);

/// The order of variables at the points, where point structure is used (ierr 40).
void check_points(const call_arguments& call, const controls& c);

/// The checks of chktol >= 0. Logical: a column twice, a negative diagonal (40), a function without variable
/// (warning -40), isym 1 without the counterpart of an entry (50). Numerical, chktol > 0: row sums where
/// irow0 or iscale says that they vanish, and |a_ij - a_ji| for isym 1,
/// against chktol times the diagonal (-50).
void test_matrix(const call_arguments& call, const controls& c);

}  // namespace tier
