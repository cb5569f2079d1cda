// Report of the options of a set-up: approach, primary matrix, weights, Galerkin variant.
#include <string>

#include "tier/report/solver_report.h"
#include "tier/setup/create_levels.h"
#include "tier/setup/galerkin_step.h"
#include "tier/store/formatted.h"
#include "tier/store/info.h"
#include "tier/store/numbered.h"

namespace tier {

namespace {

constexpr const char* indent = "          ";
constexpr const char* deep_indent = "                           - ";

void approach_line(const char* approach) { message(std::string("Approach: ") + approach + " Details:", 1); }

void report_primary_matrix(const controls& c) {
  const std::string head = std::string(indent) + "primary matrix P - ";
  const std::string primary = ", nprim = " + std::to_string(c.nprim);
  if (c.internal == primary_matrix::of_primary_unknown) {
    message(head + (c.nsys == 1 ? "equals A" : "equals A_[nprim,nprim]" + primary));
  } else {
    message(head + (c.nprim == 0 ? "maximal pattern" : "nprim-pattern" + primary));
    constexpr numbered<const char*, 7> made_from = {"",
                                                    "based on distances",
                                                    "based on positions",
                                                    "based on norms of the A_(i,j), diag.: sum",
                                                    "based on norms of the A_(i,j), diag.: norm",
                                                    "one of the special test approaches",
                                                    "one of the special test approaches"};
    message(deep_indent + std::string(made_from[code_of(c.internal)]));
  }
  if (c.nprim != 0)
    message(std::string(indent) + "primary unknown is " + (c.dummy_primary ? "dummy" : "normal") +
            " unknown!");
}

void report_point_based(const controls& c) {
  constexpr numbered<const char*, 4> forces = {"", "separate for all unknowns", "same for all unknowns",
                                               "block-wise"};
  approach_line("point-based.");
  report_primary_matrix(c);
  message(std::string(indent) + "strong couplings - based on P");
  message(std::string(indent) + "interpolation    - " + forces[code_of(c.nint_force)]);
  const char* pattern = "SW-pattern of P";  // blocks follow the strong points
  const bool of_blocks =
      c.nint_force == point_interpolation::block_wise && c.internal != primary_matrix::of_primary_unknown;
  if (c.nint_pat == weight_pattern::of_matrix && !of_blocks)
    pattern = c.nint_force == point_interpolation::separate ? "SW-pattern of each A_[i,i]"
                                                            : "SW-pattern of A_[nprim,nprim]";
  message(std::string(deep_indent) + pattern);
}

void report_approach(const controls& c) {
  if (c.nstyp == approach::by_variables) {
    approach_line("variable-based.");
    message(std::string(indent) + "strong couplings - based on full matrix A");
    message(std::string(indent) + "interpolation    - SW-pattern of full matrix A");
  } else if (c.nstyp == approach::by_unknowns) {
    approach_line("unknown-based.");
    message(std::string(indent) + "strong couplings - separate for all unknowns i, based on A_[i,i]");
    message(std::string(indent) + "interpolation    - SW-pattern of each A_[i,i]");
  } else {
    report_point_based(c);
  }
}

void report_weights(weight_source source) {
  constexpr numbered<const char*, 6> sources = {"",          "entries of A", "distances",
                                                "positions", "entries of P", "entries of A (spectral norm)"};
  message(std::string(deep_indent) + "weights based on " + sources[code_of(source)]);
}

void report_galerkin(const galerkin_options& o) {
  constexpr numbered<const char*, 7> variants = {"",
                                                 "standard",
                                                 "determination of row lengths",
                                                 "determination of row lengths + splitting",
                                                 "dynamic parallel memory management",
                                                 "dynamic parallel memory management + splitting",
                                                 "dynamic memory management using lists"};
  message(o.truncation > 0.0 ? formatted("Galerkin: truncation:        yes,  eps = %g", o.truncation)
                             : "Galerkin: truncation:        no");
  message(std::string("          variant:           ") + variants[code_of(o.variant)]);
}

}  // namespace

void report_choices(const controls& c, const setup_options& o) {
  if (c.dump_level < 0) return;
  message("======================", 1);
  message("AMG setup information");
  print_smoother(c);
  print_coarsest_choice(c);
  report_approach(c);
  report_weights(c.nint_weights);
  report_galerkin(o.galerkin);
  if (o.row_sum_code != 0) message("Interpolation: nint_rowsum1 = " + std::to_string(o.row_sum_code));
  const int steps = o.splitting.reduce_steps;
  if (steps > 1) message("Number of reduce steps: " + std::to_string(steps));
}

}  // namespace tier
