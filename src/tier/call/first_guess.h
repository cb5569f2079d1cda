// The first guess that ifirst asks for. Called by tier_main before the solution.
#pragma once

#include "tier/store/work_arrays.h"

namespace tier {

/// ifirst at most 0: u stays. Kind (first digit) 1: zero, 2: one, 3: random of Euclidean length 1, with a
/// seed from the other digits; any other kind leaves u.
void first(int ifirst, int n, view<double> u);

/// The kind of first guess: 0 where u stays.
int first_guess_kind(int ifirst);

}  // namespace tier
