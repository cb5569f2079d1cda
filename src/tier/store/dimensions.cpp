// Estimates of array sizes and their limits.
#include "tier/store/dimensions.h"

#include <algorithm>
#include <string>

#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/parameters.h"
#include "tier/store/results_of_run.h"

namespace tier {

namespace {

constexpr double reserve = 1.001, reserve_of_w = 1.005, factor_without_estimate = 1.1;

void check_huge(int size, const char* name) {
  if (parm().ihuge > 0 && size > parm().ihuge)
    fail(ierr_work_arrays_too_small,
         std::string("ihuge too small: ihuge < ") + name + " in (tier_dimensions)   ");
}

std::int64_t expected(double complexity, double factor, int base, const char* name) {
  const double size = (complexity < 1.0 ? factor_without_estimate : complexity * factor) * base;
  if (size >= static_cast<double>(max_entries))
    fail(ierr_work_arrays_too_small,
         std::string("Potential integer overflow for ") + name + " in (tier_dimensions)");
  return static_cast<std::int64_t>(size);
}

void check_group(std::int64_t used, std::int64_t provided, const char* name, const controls& c) {
  const std::string routine = std::string(name) + "_extent";
  if (parm().ihuge > 0 && used > parm().ihuge)
    fail(ierr_extension_failed,
         "Memory extension failed (integer overflow for size of array " + std::string(name) + " in " +
             routine + " (1)), limit [MB]: " + formatted("%f", megabytes_of_reals(parm().ihuge)));
  if (c.iextent > 0 || used <= provided) return;
  fail(ierr_work_arrays_too_small, "Insufficient dimensioning: <" + std::string(name) + "> in (" + routine +
                                       "). Either adjust dimensions or activate memory extension switch.");
}

}  // namespace

work_dimensions tier_dimensions(const controls& c) {
  check_huge(c.nnu, "nnu");
  check_huge(c.nna, "nna");
  return {expected(c.a_cmplx, reserve, c.nna, "nda"), expected(c.g_cmplx, reserve, c.nnu, "ndu"),
          expected(c.p_cmplx, reserve, c.nnu, "ndv"),
          expected(c.w_avrge * std::max(1.0, c.g_cmplx), reserve_of_w, c.nnu, "ndw")};
}

work_dimensions used_dimensions(const hierarchy& h, int levels) {
  work_dimensions used;
  for (int k = 1; k <= levels; ++k) {
    used.w += h(k).jw.size();
    if (k == 1) continue;
    used.a += h(k).entries();
    used.u += h(k).n;
    used.v += h(k).npnts;
  }
  return used;
}

void check_dimensions(const hierarchy& h, int levels, const controls& c) {
  const work_dimensions provided = tier_dimensions(c), used = used_dimensions(h, levels);
  check_group(used.a, provided.a, "a", c);
  check_group(used.u, provided.u, "u", c);
  check_group(used.v, provided.v, "v", c);
  check_group(used.w, provided.w, "w", c);
}

}  // namespace tier
