// Counted storage of the work arrays.
#include "tier/frame/work_arrays.h"

#include <algorithm>
#include <string>

#include "tier/frame/ierr.h"
#include "tier/frame/info.h"
#include "tier/frame/parameters.h"

namespace tier {

memory_counters memory;

namespace {

void count_words(std::int64_t count, std::size_t size) {
  const bool reals = size == sizeof(double);
  (reals ? memory.ndsum : memory.nisum) +=
      reals ? count : count * static_cast<std::int64_t>(size / sizeof(int));
  memory.memi = std::max(memory.memi, memory.nisum);
  memory.memd = std::max(memory.memd, memory.ndsum);
}

}  // namespace

void* counted_allocate(std::size_t count, std::size_t size) {
  if (memory.allocations++ == memory.fail_at) return nullptr;
  if (count > std::numeric_limits<std::size_t>::max() / 2 / size) return nullptr;
  constexpr std::size_t line = 64;  // a cache line, so that vector loops start aligned
  void* p = std::aligned_alloc(line, (count * size + line - 1) / line * line);
  if (p) count_words(static_cast<std::int64_t>(count), size);
  return p;
}

void counted_free(void* p, std::size_t count, std::size_t size) {
  std::free(p);
  count_words(-static_cast<std::int64_t>(count), size);
}

void allocation_failed(const char* name, const char* routine) {
  const std::string what = name, place = std::string(" in (") + routine + ")";
  if (what[0] == '#') fail(ierr_allocation, "Allocation " + what + " failed" + place);  // a numbered block
  if (what == "e") fail(ierr_allocation, "Allocation for <e> failed" + place);
  fail(ierr_allocation, "Allocation failed for <" + what + ">" + place);
}

void track_allocation(const char* what, const char* name, const char* routine, std::int64_t n) {
  if (!parm::trackmem || n == 0) return;
  message(std::string(what) + " <" + name + "> in (" + routine + "), size " + std::to_string(n) +
          ", memusage, ni " + std::to_string(memory.nisum) + ", nd " + std::to_string(memory.ndsum));
}

void extension_failed(const char* name, const char* routine) {
  fail(ierr_extension_failed, std::string("Memory extension failed (") + name + " in " + routine + ")");
}

}  // namespace tier
