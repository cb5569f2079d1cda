// The input stage: all readers of a job in their fixed order. Called once by the entry point.
#pragma once

namespace keld {

/// Geometry pre-read, existence check, ".PRC", ".MAL", ".CPU" and ".BC1", then the main geometry read with
/// statistics and checks. Fills the tables of this folder; any fault ends the run.
void inputStage();

}  // namespace keld
