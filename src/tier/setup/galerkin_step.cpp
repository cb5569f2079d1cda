// Galerkin step of a level.
#include "tier/setup/galerkin_step.h"

#include <string>

#include "tier/setup/correct.h"
#include "tier/setup/galerkin_truncate.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier {

namespace {

constexpr int most_halvings = 20;  // of the columns of bad rows: a millionth of the weights is left

/// Ends the call when repairing is hopeless.
void check_repair(const galerkin_options& o, int attempt, int nneg, int earlier) {
  const std::string count = std::to_string(nneg);
  if (nneg > 2 * o.most_bad_diagonals)
    fail(ierr_setup_internal, "Maximum number of allowed exceptions exceeded (opdfn) : " + count + " > " +
                                  std::to_string(2 * o.most_bad_diagonals));
  if (attempt > 1 && nneg > o.most_bad_diagonals && nneg > earlier)
    fail(ierr_setup_internal,
         "still " + count + " negative diagonals with second attempt: increasing current value of neg_diag=" +
             std::to_string(o.most_bad_diagonals) + " might help (opdfn)");
  if (attempt > o.most_repairs + most_halvings)
    fail(ierr_setup_internal, "Maximum number of allowed re-starts exceeded (opdfn) : " +
                                  std::to_string(o.most_repairs + most_halvings) +
                                  ", non-positive diagonals: " + count);
}

/// First without the negative weights that feed bad rows, then with their columns halved.
void repair(const galerkin_options& o, level& fine, int coarse_variables, int attempt, view<const int> bad) {
  const auto begin = [](const char* starting, const char* again, int count) {
    info(message_class::note, count == 1 ? starting : again + std::to_string(count - 1));
  };
  if (attempt <= o.most_repairs) {
    begin("correct_f:     starting   ", "correct_f:     re-start # ", attempt);
    correct_f(fine, coarse_variables, bad);
    return;
  }
  if (attempt == o.most_repairs + 1) {
    info(message_class::note, "               Too many restarts with faster method");
    info(message_class::note, "               --> switching to method tier_correct_w,");
    info(message_class::note, "                   but only scaling of already changed weights possible!");
  }
  begin("correct_w: starting ...", "correct_w:     re-start # ", attempt - o.most_repairs);
  correct_w(fine, coarse_variables, bad);
  info(message_class::note, "correct_w: ... done");
}

bool has_nonpositive(const level& lv) {
  for (int i = 1; i <= lv.n; ++i)
    if (!(lv.a[lv.ia[i]] > 0.0)) return true;
  return false;
}

void repair_diagonals(level& fine, level& coarse, int k, const galerkin_options& o) {
  if (!has_nonpositive(coarse)) return;
  work_array<int> bad;
  bad.allocate(coarse.n, "bad", "opdfn");
  int earlier = 0;
  for (int attempt = 1;; ++attempt) {
    const int nneg = count_nonpositive(coarse, bad);
    if (nneg == 0) return;
    info(message_class::note, "opdfn:         " + std::to_string(nneg) +
                                  " non-positive diagonal(s) on level " + std::to_string(k + 1));
    check_repair(o, attempt, nneg, earlier);
    earlier = nneg;
    repair(o, fine, coarse.n, attempt, bad);
    opdfn(fine, coarse, o.variant, o.keeps_zeros);
  }
}

}  // namespace

void form_operator(hierarchy& h, int k, const galerkin_options& o) {
  level& fine = h(k);
  level& coarse = h(k + 1);
  opdfn(fine, coarse, o.variant, o.keeps_zeros);
  repair_diagonals(fine, coarse, k, o);
  if (o.truncation > 0.0) galerkin_truncate(coarse, o.truncation, !o.symmetric);
}

}  // namespace tier
