// The prior-result stage: what the earlier stages of the process have left in the elements. Called by the
// model stage; in a Shell run it calls the processing of closed skins on its way.
#pragma once

namespace keld {

/// Prior-stage results ".RS1", ".PT1", ".CT1" and the compact ElementTable; second action of the model stage.
void readPriorResults();

}  // namespace keld
