// The performance meter: seconds by phase since it was started, on where perf_meter_enabled is set.
// Started and printed by tier_main, or by TIER_PERFINIT and TIER_PERFOUT.
#pragma once

namespace tier {

void start_performance_meter();
void print_performance_meter();

}  // namespace tier
