// Which solver a job takes: what its settings say, or by the size of the part. Called by the analysis driver.
#pragma once

#include <cstdint>

#include "input/process_record.h"

namespace keld {

enum class Road { direct, classical, aggregation };

/// By solverRoad; where that leaves it to value 2, by solverChoice. The automatic choice is the direct solver
/// for small parts and aggregation where that takes less time, or where the direct solver's factor would not
/// fit into `availableBytes` (docs/performance.md has the figures).
Road roadOf(const ProcessRecord& record, int unknowns, std::uint64_t availableBytes);

/// From so many unknowns on the automatic choice is aggregation.
inline constexpr int automatic_limit = 60000;

}  // namespace keld
