// Counted storage of the work arrays.
#include "tier/store/work_arrays.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

#include <algorithm>
#include <string>

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

/// Storage that starts at a cache line, so that vector loops start aligned. Long arrays ask the system for
/// large pages: that spares most page faults, a seventh of the time of set-up,
/// and most misses of address translation.
void* aligned_bytes(std::size_t bytes) {
  constexpr std::size_t line = 64, large_page = std::size_t{1} << 21;
  const bool large = bytes >= 2 * large_page;
  const std::size_t alignment = large ? large_page : line;  // of which the size must be a multiple
  void* const p = std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
#ifdef MADV_HUGEPAGE
  if (p && large) madvise(p, bytes, MADV_HUGEPAGE);  // a wish; where it isn't granted nothing is lost
#endif
  return p;
}

}  // namespace

void* counted_allocate(std::size_t count, std::size_t size) {
  if (memory().allocations++ == memory().fail_at) return nullptr;
  if (count > std::numeric_limits<std::size_t>::max() / 2 / size) return nullptr;
  void* const p = aligned_bytes(count * size);
  if (p) count_words(static_cast<std::int64_t>(count), size);
  return p;
}

void counted_free(void* p, std::size_t count, std::size_t size) {
  std::free(p);
  count_words(-static_cast<std::int64_t>(count), size);
}

void* counted_shrink(void* p, std::size_t count, std::size_t fewer, std::size_t size) {
  count_words(static_cast<std::int64_t>(fewer) - static_cast<std::int64_t>(count), size);
  void* const shrunk = std::realloc(p, fewer * size);  // in place, unlike a copy to new storage
  return shrunk ? shrunk : p;
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
