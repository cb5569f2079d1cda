// Contexts for callers: solvers beside each other, in one thread or in several.
#include <new>
#include <string>

#include "tier/api/tier.h"
#include "tier/store/context.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace {

void answer(bool known, int number, const char* routine, int* ierr) {
  *ierr = known ? 0 : tier::ierr_illegal_value;
  if (!known)
    tier::info(tier::message_class::error,
               "No context has the number " + std::to_string(number) + " (" + routine + ")!");
}

}  // namespace

void TIER_CREATE(int* context, int* ierr) try {
  *ierr = 0;
  *context = tier::create_context();
} catch (const std::bad_alloc&) {
  *context = 0;
  *ierr = tier::ierr_allocation;
}

void TIER_USE(const int* context, int* ierr) {
  answer(tier::use_context(*context), *context, "tier_use", ierr);
}

void TIER_GET_CONTEXT(int* context) { *context = tier::context_in_use(); }

void TIER_DESTROY(const int* context, int* ierr) {
  answer(tier::destroy_context(*context), *context, "tier_destroy", ierr);
}

void TIER_GET_FAULT(char* text, const int* length) {
  const std::string& fault = tier::last_fault();
  for (int i = 0; i < *length; ++i)
    text[i] = static_cast<std::size_t>(i) < fault.size() ? fault[static_cast<std::size_t>(i)] : ' ';
}
