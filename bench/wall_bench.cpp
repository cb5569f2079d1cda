// Both wall models against quadratic bricks: the table of docs/model.md. Every case is meshed with edges of
// about 7, 2.5 and 1 wall thicknesses and deformed by the stages of the analysis and the direct solver.
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "input/process_record.h"
#include "run/base/failure.h"
#include "run/base/working_files.h"
#include "support/brick_cases.h"

int main() {
  using namespace keld;
  using namespace keld::testing_support;
  constexpr double wall = 2.0;  // mm
  workingFiles =
      composeWorkingFiles((std::filesystem::temp_directory_path() / "keld_wall_bench").string(), "");
  std::FILE* const table = fdopen(dup(1), "w");
  if (table == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr)
    return 1;  // what the stages print
  std::fprintf(table, "largest error in %% of the largest answer at edges of 7, 2.5 and 1 walls\n\n");
  std::fprintf(table, "| case | wedge | facet |\n|---|---|---|\n");
  try {
    for (const BrickAnswer& brick : brickAnswers()) {
      std::fprintf(table, "| %s", brick.name.c_str());
      for (const int model : {wedge_walls, facet_walls}) {
        for (const double edge : {7.0, 2.5, 1.0}) {
          std::fprintf(table, "%s%.1f", edge == 7.0 ? " | " : " / ",
                       largestError(measured(brick.which, model, edge * wall), brick.answer));
          std::fflush(table);
        }
      }
      std::fprintf(table, " |\n");
    }
  } catch (const RunEnded& end) {
    return end.status;
  }
  return 0;
}
