// The parameter store and its reset.
#include "tier/store/parameters.h"

namespace tier {

const per_context<parameters> parm;

void reset_parameters() { parm() = parameters(); }

}  // namespace tier
