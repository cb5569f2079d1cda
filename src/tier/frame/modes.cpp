// Exported entries that take near-null vectors and coordinates for smoothed aggregation.
#include <algorithm>
#include <cmath>
#include <new>

#include "tier/aggregation/near_null.h"
#include "tier/api/tier.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace {

using tier::aggregation::modes_of_caller;

bool all_finite(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(), [](double x) { return std::isfinite(x); });
}

/// Copies rows x columns numbers; the former modes go first, whatever happens.
int take(std::vector<double>& place, int rows, int columns, const double* values) try {
  modes_of_caller() = {};
  place.assign(values, values + static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
  if (all_finite(place)) return 0;
  place = {};
  tier::info(tier::message_class::error, "Modes or coordinates that aren't finite numbers");
  return tier::ierr_illegal_value;
} catch (const std::bad_alloc&) {
  tier::info(tier::message_class::error, "Allocation failed for <modes> in (modes_set)");
  return tier::ierr_allocation;
}

}  // namespace

void TIER_MODES_SET(const int* n, const int* count, const double* values, int* ierr) {
  *ierr = tier::ierr_illegal_value;
  if (*n < 1 || *count < 1 || *count > tier::aggregation::most_block) return;
  *ierr = take(modes_of_caller().values, *n, *count, values);
  if (*ierr != 0) return;
  modes_of_caller().rows = *n;
  modes_of_caller().count = *count;
}

void TIER_COORDINATES_SET(const int* n, const int* dimension, const double* values, int* ierr) {
  *ierr = tier::ierr_illegal_value;
  if (*n < 1 || *dimension < 2 || *dimension > 3) return;
  *ierr = take(modes_of_caller().coordinates, *n, *dimension, values);
  if (*ierr != 0) return;
  modes_of_caller().rows = *n;
  modes_of_caller().dimension = *dimension;
}

void TIER_MODES_CLEAR(void) { modes_of_caller() = {}; }
