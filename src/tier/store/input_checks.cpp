// The words of faulty control values.
#include "tier/store/input_checks.h"

#include <string>

#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier {

namespace {

void require(bool fine, int ierr, const char* words, std::string_view name) {
  if (!fine) fail(ierr, words + std::string(name) + ">!");
}

}  // namespace

void require_legal(bool legal, std::string_view name) {
  require(legal, ierr_illegal_value, "Illegal value of parameter <", name);
}

void require_in_range(bool in_range, std::string_view name) {
  require(in_range, ierr_inconsistent_input, "Parameter out of range <", name);
}

void require_consistent(bool consistent, std::string_view name) {
  require(consistent, ierr_inconsistent_input, "Incorrect or inconsistent input <", name);
}

void require_countable(std::int64_t entries, std::string_view name, std::string_view routine) {
  if (entries < max_entries) return;
  fail(ierr_work_arrays_too_small,
       "Potential integer overflow for " + std::string(name) + " in (" + std::string(routine) + ")");
}

}  // namespace tier
