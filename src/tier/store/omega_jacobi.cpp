// The caller's damping factors of Jacobi steps.
#include "tier/store/omega_jacobi.h"

namespace tier {

const per_context<std::vector<double>> omega_jacobi_vec;

}  // namespace tier
