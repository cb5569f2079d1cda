// The multigrid path. Called by the analysis driver for any solverChoice other than 2.
#include "model/solve_tier.h"

#include "run/failure.h"

namespace keld {

int solveTier(CompressedSystem&, std::span<double>) {
  vFail(
      "\n !! Error !!  This build holds no multigrid solver. Choose the direct one: value 2 of section "
      "[Keld_ComputeData] in the .CPU file is to be 2.\n");
}

}  // namespace keld
