// Decoding of the smoothing codes.
#include "tier/solve/sweep_code.h"

#include <algorithm>
#include <cstdint>

namespace tier {

sweep_code decode_sweeps(int code) {
  sweep_code s;
  std::int64_t rest = code < 0 ? -std::int64_t{code} : code;
  numbered<int, most_steps + 1> digit{};
  int digits = 0;
  for (; rest > 0; rest /= 10) digit[digits++] = static_cast<int>(rest % 10);
  if (digits == 0) return s;
  std::reverse(digit.begin(), digit.begin() + digits);
  s.passes = digit[0];
  s.steps = digits - 1;
  std::copy_n(digit.begin() + 1, s.steps, s.step.begin());
  if (code < 0) {
    std::reverse(s.step.begin(), s.step.begin() + s.steps);
    for (int& step : s.step) step = -step;
  }
  return s;
}

}  // namespace tier
