// Convergence and growth of TIER: scalar problems, elasticity by unknowns, and the analysis's own systems of
// made parts. Prints Markdown tables; threads by OMP_NUM_THREADS. Needs no benchmark library.
//   convergence_bench scalar [UNKNOWNS...]          default 10000 100000 1000000
//   convergence_bench elastic [UNKNOWNS...]         default 10000 100000 400000
//   convergence_bench parts INSTALL/ [TRIANGLES...] default 10000 40000
#ifdef _OPENMP
#include <omp.h>
#endif
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

#include "elastic_systems.h"
#include "tier_call.h"

namespace {

using bench::linear_system;
using bench::tier_outcome;

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Seconds of one matrix-vector product, the median of several, in all threads.
double product_seconds(const linear_system& s) {
  std::vector<double> x(s.f), y(x), seconds;
  for (int repetition = 0; repetition < 11; ++repetition) {
    const double start = now();
#pragma omp parallel for schedule(static)
    for (std::size_t i = 0; i < y.size(); ++i) {
      double sum = 0.0;
      for (std::size_t p = bench::position(s.ia[i]); p < bench::position(s.ia[i + 1]); ++p)
        sum += s.a[p] * x[bench::position(s.ja[p])];
      y[i] = sum;
    }
    seconds.push_back(now() - start);
    std::swap(x, y);
    for (double& v : x) v *= 1e-3;  // so that repeated products don't overflow
  }
  std::nth_element(seconds.begin(), seconds.begin() + 5, seconds.end());
  return seconds[5];
}

std::FILE* table = nullptr;  // standard output, which the analysis's own lines don't reach

void print_head() {
  std::fputs(
      "| system | unknowns | levels | operator complexity | steps | relative residual | set-up s | solution "
      "s | "
      "products a step |\n|---|---|---|---|---|---|---|---|---|\n",
      table);
}

/// The best times of several calls: what else runs on a machine only adds to them.
tier_outcome measure(const linear_system& s, const bench::tier_settings& settings, int calls = 1) {
  double product = product_seconds(s);
  tier_outcome t = call_tier(s, settings);
  for (int call = 1; call < calls; ++call) {
    product = std::min(product, product_seconds(s));
    const tier_outcome again = call_tier(s, settings);
    t.setup = std::min(t.setup, again.setup);
    t.solution = std::min(t.solution, again.solution);
  }
  std::fprintf(table, "| %s | %d | %d | %.2f | %d | %.1e | %.3f | %.3f | %.1f |\n", s.name.c_str(), s.n,
               t.levels, t.operator_complexity, t.steps, t.residual, t.setup, t.solution,
               t.solution / std::max(1, t.steps) / product);
  std::fflush(table);
  return t;
}

using maker = std::function<linear_system(int unknowns)>;

/// Measures a problem at every size, and how its times grow between the last two.
void measure_growth(const std::vector<maker>& makers, const std::vector<int>& sizes,
                    const bench::tier_settings& settings, int calls) {
  print_head();
  std::vector<std::string> growth;
  for (const maker& make : makers) {
    double unknowns = 0.0, setup = 0.0, step = 0.0, solution = 0.0;
    for (const int size : sizes) {
      const linear_system s = make(size);
      const tier_outcome t = measure(s, settings, calls);
      const double per_step = t.solution / std::max(1, t.steps);
      if (size == sizes.back() && sizes.size() > 1) {
        const double scale = 1.0 / std::log(s.n / unknowns);
        char line[160];
        std::snprintf(line, sizeof line, "| %s | %.2f | %.2f | %.2f |", s.name.c_str(),
                      std::log(t.setup / setup) * scale, std::log(t.solution / solution) * scale,
                      std::log(per_step / step) * scale);
        growth.emplace_back(line);
      }
      unknowns = s.n;
      setup = t.setup;
      solution = t.solution;
      step = per_step;
    }
  }
  if (growth.empty()) return;
  std::fputs(
      "\nExponents of growth between the last two sizes:\n\n| system | set-up | solution | a step |\n"
      "|---|---|---|---|\n",
      table);
  for (const std::string& line : growth) std::fprintf(table, "%s\n", line.c_str());
}

int root(int unknowns, double functions, int power) {
  return static_cast<int>(std::lround(std::pow(unknowns / functions, 1.0 / power)));
}

std::vector<maker> scalar_makers() {
  constexpr double eighth_turn = 0.7853981633974483;
  return {[](int n) { return bench::poisson_5_point(root(n, 1, 2)); },
          [](int n) { return bench::poisson_9_point(root(n, 1, 2)); },
          [](int n) { return bench::poisson_7_point(root(n, 1, 3)); },
          [](int n) { return bench::anisotropic(root(n, 1, 2), 0.001); },
          [](int n) { return bench::turned_anisotropic(root(n, 1, 2), 0.01, eighth_turn); },
          [](int n) { return bench::jumping_coefficients(root(n, 1, 2), 1e6); }};
}

std::vector<maker> elastic_makers() {
  return {[](int n) { return bench::plane_stress(root(n, 2, 2)); },
          [](int n) { return bench::elastic_cube(root(n, 3, 3)); }};
}

/// Parts with walls of 2 mm, in mm at 10,000, 40,000 and 160,000 triangles.
void measure_parts(const std::string& install, const std::vector<int>& sizes) {
  using part_maker::Shape;
  struct kind {
    const char* name;
    Shape shape;
    double length, width, height;  // at 10,000
    double larger;                 // factor of all three at four times as many triangles
  };
  print_head();
  for (const kind& k : {kind{"ribbed plate", Shape::ribbed, 160, 100, 12, 1.375},
                        kind{"open box", Shape::box, 140, 90, 35, 1.79},
                        kind{"flat plate", Shape::plate, 120, 80, 12, 1.5}}) {
    for (const int triangles : sizes) {
      const double scale = std::pow(k.larger, std::log(triangles / 1e4) / std::log(4.0));
      const part_maker::PartOptions part{.shape = k.shape,
                                         .length = k.length * scale,
                                         .width = k.width * scale,
                                         .height = k.shape == Shape::box ? k.height * scale : k.height,
                                         .wall = 2.0,
                                         .triangles = triangles};
      linear_system s = bench::part_system(part, install);
      char name[80];
      std::snprintf(name, sizeof name, "%s %.0f x %.0f mm, %d triangles", k.name, part.length, part.width,
                    triangles);
      s.name = name;
      measure(s, bench::analysis_settings);
    }
  }
}

std::vector<int> sizes_from(int argc, char** argv, int first, std::vector<int> otherwise) {
  if (argc <= first) return otherwise;
  std::vector<int> sizes;
  for (int i = first; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
  return sizes;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 1 ? argv[1] : "";
  table = ::fdopen(::dup(1), "w");
  if (table == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  if (what == "scalar") {
    measure_growth(scalar_makers(), sizes_from(argc, argv, 2, {10000, 100000, 1000000}), {}, 5);
  } else if (what == "elastic") {
    measure_growth(elastic_makers(), sizes_from(argc, argv, 2, {10000, 100000, 400000}),
                   bench::analysis_settings, 1);
  } else if (what == "parts" && argc > 2) {
    measure_parts(argv[2], sizes_from(argc, argv, 3, {10000, 40000}));
  } else {
    std::fputs("convergence_bench scalar|elastic [UNKNOWNS...] or parts INSTALL/ [TRIANGLES...]\n", stderr);
    return 1;
  }
  return 0;
}
