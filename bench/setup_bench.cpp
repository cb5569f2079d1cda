// Set-up of TIER stage by stage: 5- and 7-point Poisson and KELD's own system of a ribbed plate. Counters
// give the milliseconds of each stage, the levels, the operator complexity and the peak of the counted memory
// over the caller's matrix and the hierarchy's own arrays.
#include <benchmark/benchmark.h>
#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <cmath>
#include <vector>

#include "stage_systems.h"
#include "tier/codes/setup_data.h"
#include "tier/setup/create_levels.h"
#include "tier/store/controls.h"
#include "tier/store/threads.h"
#include "tier/store/timers.h"

namespace {

using namespace bench;

/// Bytes that the counters say are in use, in the given counts of integers and reals.
double bytes(std::int64_t integers, std::int64_t reals) {
  return 4.0 * static_cast<double>(integers) + 8.0 * static_cast<double>(reals);
}

void run(benchmark::State& state, const linear_system& original, int variant) {
#ifdef _OPENMP
  omp_set_num_threads(static_cast<int>(state.range(1)));
#endif
  tier::set_max_threads(1);
  tier::controls c;
  c.ncg = original.functions > 1 ? 4 : 1;
  c.nsys = original.functions;
  c.nstyp = original.functions > 1 ? tier::approach::by_unknowns : tier::approach::by_variables;
  c.dump_level = -1;
  c.ntyp_galerkin = variant;
  tier::hierarchy h;
  linear_system s;
  tier::clear_timers();
  for ([[maybe_unused]] auto step : state) {
    state.PauseTiming();
    s = original;  // set-up reorders the rows
    set_first_level(h, s);
    tier::memory().memi = tier::memory().memd = 0;
    state.ResumeTiming();
    tier::create_levels(h, c, tier::options_of_setup(c));
  }
  const auto milliseconds = [&state](tier::phase p) {
    return 1e3 * tier::accumulated(p) / static_cast<double>(state.iterations());
  };
  for (const tier::phase p : {tier::phase::rwsrt, tier::phase::split, tier::phase::pwint, tier::phase::opdfn})
    state.counters[tier::name_of(p)] = milliseconds(p);
  double entries = 0.0;
  for (int k = 1; k <= h.levels_created; ++k) entries += h(k).entries();
  const double caller = bytes(s.n + h(1).entries(), h(1).entries());
  const double own = bytes(tier::memory().nisum, tier::memory().ndsum);
  state.counters["levels"] = h.levels_created;
  state.counters["complexity"] = entries / h(1).entries();
  state.counters["peak/final"] = (caller + bytes(tier::memory().memi, tier::memory().memd)) / (caller + own);
  state.counters["ns/entry"] =
      benchmark::Counter(static_cast<double>(h(1).entries()) * 1e-9,
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void poisson2(benchmark::State& state) {
  run(state, poisson(static_cast<int>(std::lround(std::sqrt(state.range(0)))), 2), 1);
}
void poisson3(benchmark::State& state) {
  run(state, poisson(static_cast<int>(std::lround(std::cbrt(state.range(0)))), 3), 1);
}
void ribbedPlate(benchmark::State& state) { run(state, ribbed_plate(state.range(0)), 2); }

void scalar_sizes(benchmark::internal::Benchmark* bench) {
  bench->Unit(benchmark::kMillisecond)->UseRealTime()->ArgNames({"rows", "threads"});
  for (long rows : {10000, 100000, 1000000})
    for (long threads : {1, 2}) bench->Args({rows, threads});
}
void plate_sizes(benchmark::internal::Benchmark* bench) {
  bench->Unit(benchmark::kMillisecond)->UseRealTime()->ArgNames({"triangles", "threads"});
  for (long triangles : {10000, 40000, 160000})
    for (long threads : {1, 2}) bench->Args({triangles, threads});
}
BENCHMARK(poisson2)->Apply(scalar_sizes);
BENCHMARK(poisson3)->Apply(scalar_sizes);
BENCHMARK(ribbedPlate)->Apply(plate_sizes);

}  // namespace
