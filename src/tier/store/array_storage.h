// Storage of the work arrays: short ones from the heap, long ones in mappings of their own on large pages.
// Called by the counted allocation alone.
#pragma once

#include <cstddef>

namespace tier {

/// From so many bytes on an array has a mapping of its own. From the heap it would now and then get pages
/// that an earlier, shorter array has left there: small ones, as they were when that was written, so that
/// every pass over it waits for address translation.
inline constexpr std::size_t own_mapping_size = std::size_t{4} << 20;

/// Whether arrays get such mappings at all: on Linux, and not under sanitizers, which watch the heap alone.
#if !defined(__linux__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool own_mappings = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
inline constexpr bool own_mappings = false;
#else
inline constexpr bool own_mappings = true;
#endif
#else
inline constexpr bool own_mappings = true;
#endif

/// Storage that starts at a cache line, so that vector loops start aligned; null where it can't be had.
void* take_storage(std::size_t bytes);
void return_storage(void* p, std::size_t bytes);

/// Gives the end of the storage back, `fewer` bytes stay; returns where they begin then, mostly `p`. Null
/// where a long array that becomes a short one finds no place on the heap: then it stays as it is.
void* shrink_storage(void* p, std::size_t bytes, std::size_t fewer);

/// For benchmarks, before the first array is made: long arrays come from the heap, too.
void leave_all_to_heap();

}  // namespace tier
