// The codes nrd and nru: how many passes a smoothing run makes and which steps a pass has.
// Decoded once for a solution; read by the smoothers and the report.
#pragma once

#include "tier/store/numbered.h"

namespace tier {

constexpr int most_steps = 9;
constexpr int jacobi_step = 7;  // the last; 1 to 6 are Gauss-Seidel steps

struct sweep_code {
  int passes = 0, steps = 0;
  numbered<int, most_steps> step{};  // signed step numbers in the order of their run
  bool empty() const { return passes == 0 || steps == 0; }
};

/// The leading digit of |code| is the number of passes, the others are the steps of one pass. A negative code
/// has its steps in reverse order and with the other sign: the transposed sequence.
sweep_code decode_sweeps(int code);

}  // namespace tier
