// Heap and mappings; see the header.
#include "tier/store/array_storage.h"

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace tier {

namespace {

constexpr std::size_t line = 64, large_page = std::size_t{1} << 21;

std::size_t rounded_up(std::size_t bytes, std::size_t unit) { return (bytes + unit - 1) / unit * unit; }

void* from_heap(std::size_t bytes) { return std::aligned_alloc(line, rounded_up(bytes, line)); }

#ifdef __linux__

std::size_t page_size() {
  static const auto size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  return size;
}

/// A mapping that begins at a large page: what lies before and behind of one that is a page longer goes back.
void* map(std::size_t bytes) {
  const std::size_t length = rounded_up(bytes, page_size());
  void* const whole =
      ::mmap(nullptr, length + large_page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (whole == MAP_FAILED) return nullptr;
  char* const begin = static_cast<char*>(whole);
  const std::size_t before = (large_page - reinterpret_cast<std::uintptr_t>(whole) % large_page) % large_page;
  if (before > 0) ::munmap(begin, before);
  if (before < large_page) ::munmap(begin + before + length, large_page - before);
#ifdef MADV_HUGEPAGE
  ::madvise(begin + before, length, MADV_HUGEPAGE);  // a wish; where it isn't granted nothing is lost
#endif
  return begin + before;
}

void unmap(void* p, std::size_t bytes) { ::munmap(p, rounded_up(bytes, page_size())); }

void unmap_behind(void* p, std::size_t bytes, std::size_t fewer) {
  const std::size_t kept = rounded_up(fewer, page_size()), length = rounded_up(bytes, page_size());
  if (kept < length) ::munmap(static_cast<char*>(p) + kept, length - kept);
}

#else

void* map(std::size_t bytes) { return from_heap(bytes); }
void unmap(void* p, std::size_t) { std::free(p); }
void unmap_behind(void*, std::size_t, std::size_t) {}

#endif

std::size_t mapped_from = own_mapping_size;  // bytes

bool mapped(std::size_t bytes) { return own_mappings && bytes >= mapped_from; }

}  // namespace

void* take_storage(std::size_t bytes) { return mapped(bytes) ? map(bytes) : from_heap(bytes); }

void return_storage(void* p, std::size_t bytes) {
  if (mapped(bytes)) return unmap(p, bytes);
  std::free(p);
}

void* shrink_storage(void* p, std::size_t bytes, std::size_t fewer) {
  if (!mapped(bytes)) {
    void* const shrunk = std::realloc(p, fewer);  // in place, unlike a copy to new storage
    return shrunk ? shrunk : p;
  }
  if (mapped(fewer)) {
    unmap_behind(p, bytes, fewer);
    return p;
  }
  void* const shrunk = from_heap(fewer);
  if (!shrunk) return nullptr;
  std::memcpy(shrunk, p, fewer);
  unmap(p, bytes);
  return shrunk;
}

void leave_all_to_heap() { mapped_from = std::numeric_limits<std::size_t>::max(); }

}  // namespace tier
