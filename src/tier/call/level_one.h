// Level 1 of the hierarchy: the caller's system, or a copy of it where the call asks for another form.
// Called by tier_main before set-up and at every re-start.
#pragma once

#include "tier/codes/call_arguments.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// Scaling of the system while it is solved: A -> diag(row) A diag(column), put back afterwards.
struct system_scaling {
  work_array<double> row, column;  // empty: none
};

/// Points level 1 to the caller's arrays, or to a copy of the matrix where half storage is expanded or stored
/// zeros are removed (iforce0 2): the caller's a is never written then.
void bind_level_one(level& fine, const call_arguments& call, const controls& c);

/// Modifies the system, in a copy of its matrix and right-hand side, as modify_mat asks for.
void modify_level_one(level& fine, system_scaling& scaling, const controls& c);

/// Ends the use of the caller's arrays and frees the copies.
void release_level_one(level& fine, system_scaling& scaling);

/// u of the scaled system from the caller's first guess, and the caller's solution from it.
void scale_first_guess(const system_scaling& scaling, int n, view<double> u);
void restore_solution(const system_scaling& scaling, int n, view<double> u);

}  // namespace tier
