// Solution phase of TIER by its kernels, each beside its yardstick in the same run: products against a plain
// bandwidth test, Gauss-Seidel sweeps and whole steps against products, a diagonal GMRES step against its
// traffic. Ratios are of medians over interleaved repetitions.
#include <benchmark/benchmark.h>
#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

#include "stage_systems.h"
#include "tier/codes/setup_data.h"
#include "tier/codes/solve_data.h"
#include "tier/setup/create_levels.h"
#include "tier/solve/ilu.h"
#include "tier/solve/matrix_ops.h"
#include "tier/solve/relax.h"
#include "tier/solve/rows_by_state.h"
#include "tier/solve/tier_solve.h"
#include "tier/store/controls.h"
#include "tier/store/parameters.h"
#include "tier/store/row_loop.h"
#include "tier/store/threads.h"
#include "tier/store/timers.h"

namespace {

using namespace bench;

void use_threads(long threads) {
#ifdef _OPENMP
  omp_set_num_threads(static_cast<int>(threads));
#endif
  tier::set_max_threads(1);
}

/// Seconds of the work: processor seconds with one thread,
/// where other processes then count less, else elapsed.
double seconds_of(const std::function<void()>& work) {
  const bool alone = tier::max_threads() == 1;
  const double start = alone ? tier::cpu_time() : tier::elapsed_time();
  work();
  return (alone ? tier::cpu_time() : tier::elapsed_time()) - start;
}

double median(std::vector<double> x) {
  std::nth_element(x.begin(), x.begin() + static_cast<long>(x.size() / 2), x.end());
  return x[x.size() / 2];
}

/// Runs work and yardstick in turn while the benchmark lasts; returns their medians.
struct medians {
  double work, yardstick;
};
medians interleaved(benchmark::State& state, const std::function<void()>& work,
                    const std::function<void()>& yardstick) {
  std::vector<double> a, b;
  yardstick();
  for ([[maybe_unused]] auto step : state) {
    b.push_back(seconds_of(yardstick));
    a.push_back(seconds_of(work));
    state.SetIterationTime(a.back());
  }
  return {median(a), median(b)};
}

/// A system with what a solution needs: right-hand side 1, first guess 0.
struct system_of_run {
  explicit system_of_run(linear_system given, long threads) : s(std::move(given)) {
    use_threads(threads);
    tier::parm().mode_mess = -2;
    set_first_level(h, s);
    f.assign(static_cast<std::size_t>(s.n), 1.0);
    u.assign(f.size(), 0.0);
    work.assign(f.size(), 0.0);
    h(1).f = tier::vector(f.data());
    h(1).u = tier::vector(u.data());
    h.levels_used = h.levels_created = 1;
    c.nsys = s.functions;
    c.nstyp = s.functions > 1 ? tier::approach::by_unknowns : tier::approach::by_variables;
    c.nnu = s.n;
    c.ncg = s.functions > 1 ? 4 : 1;
    c.ntyp_galerkin = threads > 1 ? 6 : 2;
    c.dump_level = c.out_level = -1;
    c.ncgrad = tier::accelerator::gmres;
    c.icrits = {0, 1, 1, 0, 0};
    c.eps = 1e-300;
  }
  tier::vector scratch() { return tier::vector(work.data()); }
  void product() { tier::multiply(h(1), h(1).f, scratch()); }
  double bytes_of_product() const { return 12.0 * static_cast<double>(s.ja.size()) + 4.0 * s.n + 16.0 * s.n; }
  /// The residual after `steps` steps of GMRES from zero.
  void gmres_steps(int steps) {
    std::fill(u.begin(), u.end(), 0.0);
    c.ncycle = steps;
    tier::run_results r;
    tier::tier_solve(h, c, tier::solve_data(c), r);
  }

  linear_system s;
  tier::hierarchy h;
  tier::controls c;
  std::vector<double> f, u, work;
};

linear_system grid(long rows, int dimensions) {
  const double m = dimensions == 2 ? std::sqrt(rows) : std::cbrt(rows);
  return poisson(static_cast<int>(std::lround(m)), dimensions);
}

/// The plain bandwidth test: the sum of a large vector, read as four streams at once, which is what it takes
/// to keep the machine's prefetchers busy, with enough running sums to wait for memory alone.
double read_all(const std::vector<double>& x) {
  constexpr int streams = 4;
  const int length = static_cast<int>(x.size()) / streams;
  return tier::sum_chunks(length, tier::max_threads(), [&](const tier::row_chunk& c) {
    double s[streams][4] = {};
    for (int i = c.lo - 1; i + 4 <= c.hi; i += 4)
      for (int stream = 0; stream < streams; ++stream) {
        const double* const p = x.data() + stream * static_cast<long>(length) + i;
        for (int k = 0; k < 4; ++k) s[stream][k] += p[k];
      }
    double sum = 0.0;
    for (const auto& stream : s)
      for (double part : stream) sum += part;
    return sum;
  });
}

void product_against_bandwidth(benchmark::State& state, linear_system given) {
  system_of_run run(std::move(given), state.range(1));
  const std::vector<double> large(static_cast<std::size_t>(run.bytes_of_product() / 8.0), 1.0);
  double sum = 0.0;
  const medians t = interleaved(
      state, [&] { run.product(); }, [&] { sum += read_all(large); });
  benchmark::DoNotOptimize(sum);
  state.counters["GB/s"] = run.bytes_of_product() / t.work * 1e-9;
  state.counters["read GB/s"] = run.bytes_of_product() / t.yardstick * 1e-9;
  state.counters["of bandwidth"] = t.yardstick / t.work;
}

/// A sweep over all rows, and the analysis's pass of C rows and then F rows of the set-up's own split.
void sweeps_against_product(benchmark::State& state, linear_system given) {
  system_of_run run(std::move(given), state.range(1));
  tier::create_levels(run.h, run.c, tier::options_of_setup(run.c));
  std::vector<double> copies(run.f.size() * static_cast<std::size_t>(state.range(1)));
  tier::level& l = run.h(1);
  const tier::vector scratch(copies.data());
  const auto run_steps = [&](const tier::sweep_rows& rows, std::span<const int> steps) {
    tier::relx_gs(l, rows, l.f, l.u, steps, {}, scratch);
  };
  const auto product = [&] { run.product(); };
  const tier::sweep_rows unsorted(l, nullptr, nullptr, scratch);
  const medians t = interleaved(
      state, [&] { run_steps(unsorted, std::array{2}); }, product);
  state.counters["products"] = t.work / t.yardstick;

  std::vector<double> store(static_cast<std::size_t>(tier::entries_of_coarse_rows(l)));
  const tier::rows_by_state sorted(l, tier::vector(store.data()));
  const tier::sweep_rows rows(l, &sorted, nullptr, scratch);
  std::vector<double> passes, products;
  for (std::size_t i = 0; i < 15; ++i) {
    passes.push_back(seconds_of([&] { run_steps(rows, std::array{3, 1}); }));
    products.push_back(seconds_of(product));
  }
  state.counters["C then F"] = median(passes) / median(products);
}

/// C rows and then F rows in threads, by so many rounds against a single one: the least time of each, as
/// threads that meet wait for a neighbour's work too.
void rounds_against_one(benchmark::State& state, linear_system given) {
  system_of_run run(std::move(given), state.range(1));
  tier::create_levels(run.h, run.c, tier::options_of_setup(run.c));
  std::vector<double> copies(run.f.size() * static_cast<std::size_t>(state.range(1)));
  tier::level& l = run.h(1);
  const tier::vector scratch(copies.data());
  std::vector<double> store(static_cast<std::size_t>(tier::entries_of_coarse_rows(l)));
  const tier::rows_by_state sorted(l, tier::vector(store.data()));
  constexpr int counts[] = {1, 2, 4, 8, 32};
  std::vector<tier::sweep_rows> shared;
  for (const int rounds : counts) shared.emplace_back(l, &sorted, nullptr, scratch, rounds);
  std::vector<double> seconds[std::size(counts)];
  const auto least = [](const std::vector<double>& x) { return *std::min_element(x.begin(), x.end()); };
  for ([[maybe_unused]] auto step : state) {
    for (std::size_t k = 0; k < shared.size(); ++k)
      seconds[k].push_back(seconds_of([&] {
        tier::relx_gs(l, shared[k], l.f, l.u, std::array{3, 1}, {}, scratch);
      }));
    state.SetIterationTime(seconds[0].back());
  }
  for (std::size_t k = 1; k < shared.size(); ++k)
    state.counters[std::to_string(counts[k]) + " rounds"] = least(seconds[k]) / least(seconds[0]);
}

// Necessary traffic of step j of GMRES: the product, the diagonal, z written and read once, w and v(j)
// scaled, and for each earlier column w read and written and two columns read; averaged over 30 steps, with
// the update of u.
void diagonal_step_against_traffic(benchmark::State& state, linear_system given) {
  constexpr int steps = 30;
  system_of_run run(std::move(given), state.range(1));
  run.c.igam = tier::cycle_kind::diagonal;
  const double n = run.s.n;
  double bytes = 0.0;
  for (int j = 1; j <= steps; ++j)
    bytes += run.bytes_of_product() + 24.0 * n + 8.0 * n + j * 32.0 * n + 16.0 * n;
  bytes += steps * 8.0 * n + 2.0 * run.bytes_of_product();
  const std::vector<double> large(static_cast<std::size_t>(bytes / steps / 8.0), 1.0);
  double sum = 0.0;
  const medians t = interleaved(
      state, [&] { run.gmres_steps(steps); }, [&] { sum += read_all(large); });
  benchmark::DoNotOptimize(sum);
  state.counters["of traffic"] = t.work / steps / t.yardstick;
}

void multigrid_step_against_product(benchmark::State& state, linear_system given) {
  constexpr int steps = 30;
  system_of_run run(std::move(given), state.range(1));
  tier::create_levels(run.h, run.c, tier::options_of_setup(run.c));
  run.gmres_steps(1);  // factors and first touch
  const medians t = interleaved(
      state, [&] { run.gmres_steps(steps); }, [&] { run.product(); });
  double entries = 0.0;
  for (int k = 1; k <= run.h.levels_created; ++k) entries += run.h(k).entries();
  state.counters["levels"] = run.h.levels_created;
  state.counters["coarsest"] = run.h(run.h.levels_created).n;
  state.counters["complexity"] = entries / run.h(1).entries();
  state.counters["products/step"] = t.work / steps / t.yardstick;
  state.counters["ms/step"] = 1e3 * t.work / steps;
  state.counters["relax"] = 1e3 * tier::accumulated(tier::phase::relaxation);
  state.counters["coarse"] = 1e3 * tier::accumulated(tier::phase::coarsest_solution);
  tier::release_solution_data();
}

void ilut(benchmark::State& state, linear_system given) {
  system_of_run run(std::move(given), 1);
  tier::ilu_factors factors;
  const tier::ilu_options options{tier::ilu_kind::threshold, false, 1.0, 9, 0.005};
  const medians t = interleaved(
      state, [&] { factors.decompose(run.h(1), options); }, [&] { run.product(); });
  std::vector<double> solves;
  solves.reserve(5);
  for (int i = 0; i < 5; ++i) solves.push_back(seconds_of([&] { factors.solve(run.h(1).f, run.scratch()); }));
  state.counters["products"] = t.work / t.yardstick;
  state.counters["solve products"] = median(solves) / t.yardstick;
  state.counters["fill"] = static_cast<double>(factors.entries()) / run.h(1).entries();
}

void sizes(benchmark::internal::Benchmark* bench, const std::vector<long>& list, const char* name,
           const std::vector<long>& threads = {1, 2}) {
  bench->Unit(benchmark::kMillisecond)->UseManualTime()->ArgNames({name, "threads"});
  for (long size : list)
    for (long team : threads) bench->Args({size, team});
}
void rows(benchmark::internal::Benchmark* bench) { sizes(bench, {100000, 1000000}, "rows"); }
void triangles(benchmark::internal::Benchmark* bench) { sizes(bench, {10000, 40000}, "triangles"); }

void threaded_rows(benchmark::internal::Benchmark* bench) { sizes(bench, {100000, 1000000}, "rows", {2}); }
void threaded_triangles(benchmark::internal::Benchmark* bench) {
  sizes(bench, {10000, 40000}, "triangles", {2});
}

void product_poisson(benchmark::State& s) { product_against_bandwidth(s, grid(s.range(0), 2)); }
void product_plate(benchmark::State& s) { product_against_bandwidth(s, ribbed_plate(s.range(0))); }
void sweep_poisson(benchmark::State& s) { sweeps_against_product(s, grid(s.range(0), 3)); }
void sweep_plate(benchmark::State& s) { sweeps_against_product(s, ribbed_plate(s.range(0))); }
void rounds_poisson(benchmark::State& s) { rounds_against_one(s, grid(s.range(0), 3)); }
void rounds_plate(benchmark::State& s) { rounds_against_one(s, ribbed_plate(s.range(0))); }
void diagonal_gmres_poisson(benchmark::State& s) { diagonal_step_against_traffic(s, grid(s.range(0), 2)); }
void diagonal_gmres_plate(benchmark::State& s) { diagonal_step_against_traffic(s, ribbed_plate(s.range(0))); }
void gmres_step_poisson(benchmark::State& s) { multigrid_step_against_product(s, grid(s.range(0), 2)); }
void gmres_step_plate(benchmark::State& s) { multigrid_step_against_product(s, ribbed_plate(s.range(0))); }
void ilut_poisson(benchmark::State& s) { ilut(s, grid(s.range(0), 3)); }
void ilut_plate(benchmark::State& s) { ilut(s, ribbed_plate(s.range(0))); }

BENCHMARK(product_poisson)->Apply(rows);
BENCHMARK(product_plate)->Apply(triangles);
BENCHMARK(sweep_poisson)->Apply(rows);
BENCHMARK(sweep_plate)->Apply(triangles);
BENCHMARK(rounds_poisson)->Apply(threaded_rows);
BENCHMARK(rounds_plate)->Apply(threaded_triangles);
BENCHMARK(diagonal_gmres_poisson)->Apply(rows);
BENCHMARK(diagonal_gmres_plate)->Apply(triangles);
BENCHMARK(gmres_step_poisson)->Apply(rows);
BENCHMARK(gmres_step_plate)->Apply(triangles);
BENCHMARK(ilut_poisson)->Apply([](auto* b) { sizes(b, {100000}, "rows", {1}); });
BENCHMARK(ilut_plate)->Apply([](auto* b) { sizes(b, {10000}, "triangles", {1}); });

}  // namespace
