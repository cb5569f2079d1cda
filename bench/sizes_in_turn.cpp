// What recycled memory costs TIER: one process solves systems of several sizes in turn, with its long arrays
// from the heap or in mappings of their own. Prints a Markdown table; needs no benchmark library.
//   sizes_in_turn [ROUNDS]     default 3; each round runs both kinds of storage, in processes of their own
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <vector>

#include "scalar_systems.h"
#include "tier/store/array_storage.h"
#include "tier_call.h"

namespace {

constexpr int sides[] = {316, 1000, 100, 500, 700, 1000};  // of square grids, in the order of their solution
constexpr std::size_t calls = std::size(sides);

struct call_figures {
  double processor = std::numeric_limits<double>::infinity();  // s of set-up and solution
  double solution = processor;                                 // s by the clock
  double system = processor;                                   // s of the operating system in `processor`
  long faults = std::numeric_limits<long>::max();
};

void keep_least(call_figures& least, const call_figures& next) {
  least.processor = std::min(least.processor, next.processor);
  least.solution = std::min(least.solution, next.solution);
  least.system = std::min(least.system, next.system);
  least.faults = std::min(least.faults, next.faults);
}

double system_seconds(const rusage& use) {
  return static_cast<double>(use.ru_stime.tv_sec) + 1e-6 * static_cast<double>(use.ru_stime.tv_usec);
}

call_figures call_of(int side) {
  const bench::linear_system s = bench::poisson_5_point(side);
  rusage before{}, after{};
  getrusage(RUSAGE_SELF, &before);
  const bench::tier_outcome outcome = bench::call_tier(s, {});
  getrusage(RUSAGE_SELF, &after);
  return {outcome.processor_seconds, outcome.solution, system_seconds(after) - system_seconds(before),
          after.ru_minflt - before.ru_minflt};
}

/// All sizes in turn, in a process of its own.
std::vector<call_figures> run_apart(bool own_mappings) {
  std::vector<call_figures> figures(calls);
  int ends[2];
  if (pipe(ends) != 0) return figures;
  const pid_t child = fork();
  if (child == 0) {
    if (!own_mappings) tier::leave_all_to_heap();
    for (std::size_t i = 0; i < calls; ++i) figures[i] = call_of(sides[i]);
    const auto bytes = static_cast<ssize_t>(calls * sizeof(call_figures));
    _exit(write(ends[1], figures.data(), calls * sizeof(call_figures)) == bytes ? 0 : 1);
  }
  close(ends[1]);
  if (read(ends[0], figures.data(), calls * sizeof(call_figures)) <= 0) std::fprintf(stderr, "no figures\n");
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return figures;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 3;
  std::vector<call_figures> least[2] = {std::vector<call_figures>(calls), std::vector<call_figures>(calls)};
  for (int round = 0; round < rounds; ++round)
    for (int own : {0, 1}) {
      const std::vector<call_figures> figures = run_apart(own == 1);
      for (std::size_t i = 0; i < calls; ++i) keep_least(least[own][i], figures[i]);
    }
  std::printf(
      "| call: unknowns | heap s | own mappings s | ratio | of that the operating system | solution by the "
      "clock | page faults |\n|---|---|---|---|---|---|---|\n");
  for (std::size_t i = 0; i < calls; ++i) {
    const call_figures &heap = least[0][i], &own = least[1][i];
    std::printf("| %zu: %d | %.3f | %.3f | %.2f | %.3f, %.3f | %.3f, %.3f | %ld, %ld |\n", i + 1,
                sides[i] * sides[i], heap.processor, own.processor, own.processor / heap.processor,
                heap.system, own.system, heap.solution, own.solution, heap.faults, own.faults);
  }
  return 0;
}
