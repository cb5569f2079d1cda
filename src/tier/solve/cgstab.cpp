#include "tier/frame/info.h"
#include "tier/solve/accelerators.h"
namespace tier {
void cgstab(accelerated_run&) { not_released("cgstab"); }
void old_cgc(accelerated_run&) { not_released("old_cgc"); }
void new_cgc(accelerated_run&) { not_released("new_cgc"); }
void flexcg_skcycle(accelerated_run&) { not_released("flexcg_skcycle"); }
}  // namespace tier
