// Galerkin step of a level.
#include "tier/setup/galerkin_step.h"

#include <string>

#include "tier/setup/correct.h"
#include "tier/setup/galerkin_truncate.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

constexpr int most_halvings = 20;  // of the columns of bad rows: a millionth of the weights is left

/// With a structure that re-starts share, the pattern must not depend on values.
bool keeps_zeros(const controls& c) {
  const bool for_re_starts = c.iswit == run_kind::new_operators || c.iswit == run_kind::set_up_and_keep;
  return parm().glk_mult_zeros || (parm().struct_ident && for_re_starts);
}

/// Ends the call when repairing is hopeless.
void check_repair(int attempt, int nneg, int earlier) {
  const std::string count = std::to_string(nneg);
  if (nneg > 2 * parm().neg_diag)
    fail(ierr_setup_internal, "Maximum number of allowed exceptions exceeded (opdfn) : " + count + " > " +
                                  std::to_string(2 * parm().neg_diag));
  if (attempt > 1 && nneg > parm().neg_diag && nneg > earlier)
    fail(ierr_setup_internal,
         "still " + count + " negative diagonals with second attempt: increasing current value of neg_diag=" +
             std::to_string(parm().neg_diag) + " might help (opdfn)");
  if (attempt > parm().maxop_restart + most_halvings)
    fail(ierr_setup_internal, "Maximum number of allowed re-starts exceeded (opdfn) : " +
                                  std::to_string(parm().maxop_restart + most_halvings) +
                                  ", non-positive diagonals: " + count);
}

/// First without the negative weights that feed bad rows, then with their columns halved.
void repair(level& fine, int coarse_variables, int attempt, view<const int> bad) {
  const auto begin = [](const char* starting, const char* again, int count) {
    info(message_class::note, count == 1 ? starting : again + std::to_string(count - 1));
  };
  if (attempt <= parm().maxop_restart) {
    begin("correct_f:     starting   ", "correct_f:     re-start # ", attempt);
    correct_f(fine, coarse_variables, bad);
    return;
  }
  if (attempt == parm().maxop_restart + 1) {
    info(message_class::note, "               Too many restarts with faster method");
    info(message_class::note, "               --> switching to method tier_correct_w,");
    info(message_class::note, "                   but only scaling of already changed weights possible!");
  }
  begin("correct_w: starting ...", "correct_w:     re-start # ", attempt - parm().maxop_restart);
  correct_w(fine, coarse_variables, bad);
  info(message_class::note, "correct_w: ... done");
}

bool has_nonpositive(const level& lv) {
  for (int i = 1; i <= lv.n; ++i)
    if (!(lv.a[lv.ia[i]] > 0.0)) return true;
  return false;
}

void repair_diagonals(level& fine, level& coarse, int k, const controls& c) {
  if (!has_nonpositive(coarse)) return;
  work_array<int> bad;
  bad.allocate(coarse.n, "bad", "opdfn");
  int earlier = 0;
  for (int attempt = 1;; ++attempt) {
    const int nneg = count_nonpositive(coarse, bad);
    if (nneg == 0) return;
    info(message_class::note, "opdfn:         " + std::to_string(nneg) +
                                  " non-positive diagonal(s) on level " + std::to_string(k + 1));
    check_repair(attempt, nneg, earlier);
    earlier = nneg;
    repair(fine, coarse.n, attempt, bad);
    opdfn(fine, coarse, galerkin_variant(c), keeps_zeros(c));
  }
}

}  // namespace

opdfn_variant galerkin_variant(const controls& c) {
  const auto wanted = static_cast<opdfn_variant>(c.ntyp_galerkin);
  const bool dynamic = wanted == opdfn_variant::dynalloc || wanted == opdfn_variant::dynalloc_mg;
  return dynamic && keeps_zeros(c) ? opdfn_variant::lists : wanted;
}

void form_operator(hierarchy& h, int k, const controls& c) {
  level& fine = h(k);
  level& coarse = h(k + 1);
  opdfn(fine, coarse, galerkin_variant(c), keeps_zeros(c));
  repair_diagonals(fine, coarse, k, c);
  if (c.galerkin_eps > 0.0) galerkin_truncate(coarse, c.galerkin_eps, !symmetric_as_solved(c));
}

}  // namespace tier
