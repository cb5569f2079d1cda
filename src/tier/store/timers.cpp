// Clocks and accumulators.
#include "tier/store/timers.h"

#include <chrono>
#include <ctime>

namespace tier {

namespace {

constexpr std::size_t phases = static_cast<std::size_t>(phase::count_of_phases);
std::array<double, phases> sums{}, sums_at_start{};
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

double accumulated(phase p) { return sums[index(p)]; }
void add_time(phase p, double seconds) { sums[index(p)] += seconds; }
void clear_timers() { sums.fill(0.0); }
void start_call_timers() { sums_at_start = sums; }
double accumulated_in_call(phase p) { return sums[index(p)] - sums_at_start[index(p)]; }
const char* name_of(phase p) { return names[index(p)]; }

}  // namespace tier
