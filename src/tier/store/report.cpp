// Lines of the residual tables.
#include "tier/store/report.h"

#include "tier/api/tier.h"
#include "tier/store/print_line.h"

// The default hook does nothing; a program that links the library may define its own.
[[gnu::weak]] void TIER_CURRENT_RESIDUAL(const int*, const double*) {}

namespace tier {

namespace {

constexpr int level_of_cycles = 2, level_of_processes = 3;

}  // namespace

std::string_view norm_tag(norm_kind norm) {
  constexpr std::string_view tags = "L2L1MXL2";
  return tags.substr(2 * static_cast<std::size_t>(norm), 2);
}

void print_residual_head(const controls& c) {
  if (c.out_level < level_of_cycles) return;
  if (c.show_un_res > 0) message("Residual calculation: full residuals");
  if (c.out_level >= level_of_processes)
    message("grid    norm  residual        process", 1);
  else
    message("cycle   norm  residual        factor", 1);
}

void print_residual_line(const controls& c, int cycle, double residual, double previous,
                         view<const double> by_function) {
  if (c.out_level < level_of_cycles) return;
  const std::string_view tag = norm_tag(c.norm_typ);
  if (c.out_level >= level_of_processes)
    print_line("%4d    %.2s    %12.5e    cycle %d", 1, tag.data(), residual, cycle);
  else if (previous > 0.0)
    print_line("%5d   %.2s    %12.5e    %8.5f", cycle, tag.data(), residual, residual / previous);
  else
    print_line("%5d   %.2s    %12.5e", cycle, tag.data(), residual);
  if (!by_function) return;
  for (int i = 1; i <= c.show_un_res; ++i)
    print_line("        %.2s    %12.5e    function %d", tag.data(), by_function[i], i);
}

void print_process_line(const controls& c, int grid, double residual, std::string_view process) {
  if (c.out_level < level_of_processes) return;
  print_line("%4d    %.2s    %12.5e    %.*s", grid, norm_tag(c.norm_typ).data(), residual,
             static_cast<int>(process.size()), process.data());
}

void current_residual(int cycle, double residual) { TIER_CURRENT_RESIDUAL(&cycle, &residual); }

}  // namespace tier
