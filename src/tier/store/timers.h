// Wall-clock and processor time, and the accumulators of the work table.
// Read and written on the main thread by every phase of a call.
#pragma once

#include <array>

namespace tier {

/// What is timed; the names of the set-up steps and of the rows of the work table are in timers.cpp.
enum class phase {
  setup,
  solve,
  ilu_decomposition,
  direct_decomposition,
  coarsest_solution,
  relaxation,
  rwsrt,
  primmat,
  split,
  reduce,
  pwint,
  pwiter,
  opdfn,
  extent,
  count_of_phases
};

/// Seconds of the system clock.
double elapsed_time();

/// Seconds that the process has computed, all threads together.
double cpu_time();

/// t1 - t0 on a clock that starts again from 0 after `clock_maximum` seconds.
double time_span(double t0, double t1, double clock_maximum);

double accumulated(phase p);
void add_time(phase p, double seconds);
void clear_timers();

/// What has been accumulated since the last start of a call.
void start_call_timers();
double accumulated_in_call(phase p);
const char* name_of(phase p);

/// Adds the life of the object to an accumulator.
class timed {
 public:
  explicit timed(phase p) : phase_(p), start_(elapsed_time()) {}
  ~timed() { add_time(phase_, elapsed_time() - start_); }
  timed(const timed&) = delete;
  timed& operator=(const timed&) = delete;

 private:
  phase phase_;
  double start_;
};

}  // namespace tier
