// Exported access to the damping factors of Jacobi steps.
#include <algorithm>
#include <new>
#include <string>

#include "tier/api/tier.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/omega_jacobi.h"
#include "tier/store/parameters.h"

void TIER_OMEGA_JACOBI_ALLOC(const int* n, int* ierr) try {
  *ierr = 0;
  if (*n < 1) {
    *ierr = tier::ierr_illegal_value;
    return;
  }
  tier::omega_jacobi_vec().assign(static_cast<std::size_t>(*n), tier::parm().omega_jacobi);
} catch (const std::bad_alloc&) {
  tier::info(tier::message_class::error, "Allocation failed for <omega_jacobi_vec> in (mod_omegajac_alloc)");
  *ierr = tier::ierr_allocation;
}

void TIER_OMEGA_JACOBI_SET(const int* n, const double* values, int* ierr) {
  *ierr = 0;
  if (*n < 1 || static_cast<std::size_t>(*n) != tier::omega_jacobi_vec().size())
    *ierr = tier::ierr_illegal_value;
  else
    std::copy_n(values, *n, tier::omega_jacobi_vec().begin());
}

void TIER_OMEGA_JACOBI_DEALLOC(int* ierr) {
  *ierr = 0;
  tier::omega_jacobi_vec() = {};
}
