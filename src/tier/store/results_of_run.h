// Figures of the last call for the getters. Filled by tier_main and the statistics.
#pragma once

#include <array>

#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

struct complexities {
  int levels = -1;                  // -1: no set-up
  double a_cmplx = 0, a_avrge = 0;  // entries of all levels over those of level 1; average row length
  double b_cmplx = 0, b_avrge = 0;  // the same for the primary matrices
  double ib_cmplx = 0;              // rows of the primary matrices over points of level 1
  double g_cmplx = 0;               // variables of all levels over those of level 1
  double t_cmplx = 0;               // entries of matrices and interpolation over entries of level 1
  double w_avrge = 0;               // interpolation entries per variable
  double c_cmplx = 0;               // entries visited in one cycle over those of level 1
  double p_cmplx = 0;               // points of all levels over those of level 1
  double e_cmplx = 0;               // interpolation entries over entries of level 1
};

complexities measure(const hierarchy& h, const controls& c);

struct call_figures {
  complexities complexity;
  int nflag = 0;
  double setup_seconds = 0, solve_seconds = 0, total_seconds = 0;
  double integer_megabytes = 0, real_megabytes = 0, peak_megabytes = 0;
  int cycles = 0;
  double seconds_per_cycle() const { return cycles > 0 ? solve_seconds / cycles : 0.0; }
};
extern const per_context<call_figures> last_call;

/// Megabytes of so many 32-bit integers, and of so many 64-bit reals.
double megabytes_of_integers(double count);
double megabytes_of_reals(double count);
double megabytes_in_use();

}  // namespace tier
