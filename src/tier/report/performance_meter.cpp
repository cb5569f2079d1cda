// Differences of the phase accumulators.
#include "tier/report/performance_meter.h"

#include <array>

#include "tier/store/parameters.h"
#include "tier/store/print_line.h"
#include "tier/store/results_of_run.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

constexpr std::size_t phases = static_cast<std::size_t>(phase::count_of_phases);
struct sums_at_start {
  std::array<double, phases> seconds{};
};
const per_context<sums_at_start> at_start;

}  // namespace

void start_performance_meter() {
  if (!parm().perf_meter_enabled) return;
  for (std::size_t i = 0; i < phases; ++i) at_start().seconds[i] = accumulated(static_cast<phase>(i));
}

void print_performance_meter() {
  if (!parm().perf_meter_enabled) return;
  message("Performance meter", 1);
  print_line("    %-10s %10d", "levels", last_call().complexity.levels);
  for (std::size_t i = 0; i < phases; ++i)
    print_line("    %-10s %10.4f sec", name_of(static_cast<phase>(i)),
               accumulated(static_cast<phase>(i)) - at_start().seconds[i]);
}

}  // namespace tier
