// The parameter store and its reset.
#include "tier/store/parameters.h"

namespace tier {

namespace parm {
#define TIER_INTEGER(name, NAME, initial, effect, meaning) int name = initial;
#define TIER_REAL(name, NAME, initial, effect, meaning) double name = initial;
#define TIER_LOGICAL(name, NAME, initial, effect, meaning) bool name = initial;
#define TIER_TEXT(name, NAME, width, initial, effect, meaning) std::string name = initial;
#include "tier/api/parameters.def"
}  // namespace parm

void reset_parameters() {
#define TIER_INTEGER(name, NAME, initial, effect, meaning) parm::name = initial;
#define TIER_REAL(name, NAME, initial, effect, meaning) parm::name = initial;
#define TIER_LOGICAL(name, NAME, initial, effect, meaning) parm::name = initial;
#define TIER_TEXT(name, NAME, width, initial, effect, meaning) parm::name = initial;
#include "tier/api/parameters.def"
}

}  // namespace tier
