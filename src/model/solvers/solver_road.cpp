// The choice of a solver; see the header.
#include "model/solvers/solver_road.h"

namespace keld {

Road roadOf(const ProcessRecord& record, int unknowns, std::uint64_t availableBytes) {
  constexpr int direct_path = 2;
  constexpr double bytesPerUnknown =
      2200.0;  // of the direct solver, 1900 to 2100 for 0.5 to 2 million unknowns
  if (record.solverRoad == aggregation_road) return Road::aggregation;
  if (record.solverRoad == automatic_road) {
    const bool fits = bytesPerUnknown * unknowns < 0.9 * static_cast<double>(availableBytes);
    return unknowns < automatic_limit && fits ? Road::direct : Road::aggregation;
  }
  return record.solverChoice == direct_path ? Road::direct : Road::classical;
}

}  // namespace keld
