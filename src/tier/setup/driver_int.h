// Interpolation step of a level. Called by create_levels.
#pragma once

namespace tier {

struct setup_state;

/// Jacobi improvement of interpolation.
struct improvement_options {
  int steps = 0;            // second digit of nwt
  int levels = 1;           // from the finest on
  double truncation = 0.2;  // relative to the largest weight (etr)
};

/// Builds iw, jw, w of level k from its states; F-variables that cannot be interpolated become C in icg.
void driver_int(setup_state& t, int k);

}  // namespace tier
