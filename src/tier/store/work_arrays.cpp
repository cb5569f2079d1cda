// Counted storage of the work arrays.
#include "tier/store/work_arrays.h"

#include <algorithm>
#include <string>

#include "tier/store/array_storage.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

void count_words(std::int64_t count, std::size_t size) {
  const bool reals = size == sizeof(double);
  (reals ? memory().ndsum : memory().nisum) +=
      reals ? count : count * static_cast<std::int64_t>(size / sizeof(int));
  memory().memi = std::max(memory().memi, memory().nisum);
  memory().memd = std::max(memory().memd, memory().ndsum);
}

}  // namespace

void* counted_allocate(std::size_t count, std::size_t size) {
  if (memory().allocations++ == memory().fail_at) return nullptr;
  if (count > std::numeric_limits<std::size_t>::max() / 2 / size) return nullptr;
  void* const p = take_storage(count * size);
  if (p) count_words(static_cast<std::int64_t>(count), size);
  return p;
}

void counted_free(void* p, std::size_t count, std::size_t size) {
  return_storage(p, count * size);
  count_words(-static_cast<std::int64_t>(count), size);
}

void* counted_shrink(void* p, std::size_t count, std::size_t fewer, std::size_t size) {
  void* const shrunk = shrink_storage(p, count * size, fewer * size);
  if (!shrunk) extension_failed("a shorter array", "counted_shrink");  // the array stays as it is
  count_words(static_cast<std::int64_t>(fewer) - static_cast<std::int64_t>(count), size);
  return shrunk;
}

// The routines word it each in its own way.
void allocation_failed(const char* name, const char* routine) {
  const std::string what = name, where = routine, place = " in (" + where + ")";
  if (where == "rwsrt") fail(ierr_allocation, "Allocation error" + place);
  if (where == "prepare_opdfn") fail(ierr_allocation, "Allocation error (" + where + ")");
  if (where.starts_with("opdfn")) fail(ierr_allocation, "Allocation error (" + what + ")" + place + "!");
  if (what[0] == '#') fail(ierr_allocation, "Allocation " + what + " failed" + place);  // a numbered block
  if (what == "e") fail(ierr_allocation, "Allocation for <e> failed" + place);
  fail(ierr_allocation, "Allocation failed for <" + what + ">" + place);
}

void track_allocation(const char* what, const char* name, const char* routine, std::int64_t n) {
  if (!parm().trackmem || n == 0) return;
  message(std::string(what) + " <" + name + "> in (" + routine + "), size " + std::to_string(n) +
          ", memusage, ni " + std::to_string(memory().nisum) + ", nd " + std::to_string(memory().ndsum));
}

void extension_failed(const char* name, const char* routine) {
  fail(ierr_extension_failed, std::string("Memory extension failed (") + name + " in " + routine + ")");
}

}  // namespace tier
