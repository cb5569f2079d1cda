// The digit codes and thresholds of coarsening, decoded and checked once for a set-up.
// Written by crsng_data's decoder; read by every step of create_levels.
#pragma once

#include "tier/store/controls.h"

namespace tier {

/// What ncg, nwt, ecg, ewt and etr say.
struct setup_controls {
  // ecg, ewt: strength
  double ecg1 = 0.01, ecg2 = 0.25;  // dominance limit, strength threshold
  double ewt1 = 1e70, ewt2 = 0.2;   // limit of the off-diagonal sum, positive couplings to ignore
  int ncgtyp = 4;                   // 1..5 treatment of positive couplings

  // ncg: splitting
  int nred = 0;         // 0 standard, 1..4 aggressive with that path count
  int nred_levels = 1;  // levels from the finest on that use it
  int nxf_clean = 1;    // 1 or 2: what becomes of undecided variables
  int npcol = 0;        // second pass: 0 none, 1 limit 1.0, 2 limit 0.75
  int reduce_steps = 1;

  // nwt, etr: interpolation
  int nwtint = 2;     // 1 direct, 2 standard, 3 extended, 4 multipass
  int itint = 0;      // Jacobi improvements
  int intlev = 1;     // on levels up to this one
  int iall = 0;       // has no effect
  double etr1 = 0.2;  // truncation of the first build
  double etr2 = 0.2;  // truncation of the improvement
};

struct threshold_pair {
  double first, second;
};

/// Two numbers in one: 21.25 is 0.01 and 0.25 (exponent 2, mantissa 1), 0.2 is 0 and 0.2.
/// A negative value is replaced by `fallback`.
threshold_pair decode_thresholds(double value, double fallback);

/// Decodes and checks; a value out of range ends the call with ierr 20 and its name.
setup_controls decode_setup(const controls& c);

}  // namespace tier
