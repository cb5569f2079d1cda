// Clocks and accumulators.
#include "tier/store/timers.h"

#include <chrono>
#include <ctime>

#include "tier/store/context.h"

namespace tier {

namespace {

constexpr std::size_t phases = static_cast<std::size_t>(phase::count_of_phases);
struct accumulators {
  std::array<double, phases> sums{}, sums_at_start{};
};
const per_context<accumulators> clocks;
constexpr std::array<const char*, phases> names{"setup", "solve",  "ilu-dcmp", "cg-dcmp", "cg-solve",
                                                "relax", "rwsrt",  "primmat",  "split",   "reduce",
                                                "pwint", "pwiter", "opdfn",    "extent"};

std::size_t index(phase p) { return static_cast<std::size_t>(p); }

}  // namespace

double elapsed_time() {
  using clock = std::chrono::steady_clock;
  return std::chrono::duration<double>(clock::now().time_since_epoch()).count();
}

double cpu_time() {
  std::timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

double time_span(double t0, double t1, double clock_maximum) {
  return t0 > t1 && clock_maximum > 0.0 ? clock_maximum - t0 + t1 : t1 - t0;
}

double accumulated(phase p) { return clocks().sums[index(p)]; }
void add_time(phase p, double seconds) { clocks().sums[index(p)] += seconds; }
void clear_timers() { clocks().sums.fill(0.0); }
void start_call_timers() { clocks().sums_at_start = clocks().sums; }
double accumulated_in_call(phase p) { return clocks().sums[index(p)] - clocks().sums_at_start[index(p)]; }
const char* name_of(phase p) { return names[index(p)]; }

}  // namespace tier
