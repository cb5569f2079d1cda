// Splitting and checking of control values. Called by the functions that decode the codes of a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tier/store/controls.h"
#include "tier/store/numbered.h"

namespace tier {

constexpr int max_entries = 2147483647;  // positions up to nna + 1 are 32-bit integers

/// The fields of a digit code, [1..n].
template <std::size_t n>
numbered<int, n + 1> digits_of(int code) {
  numbered<int, n + 1> d{};
  int ndigit = 0;
  idec(code, static_cast<int>(n), ndigit, d.data() + 1);
  return d;
}

/// Ends the call with "Illegal value of parameter <name>!", ierr 20, unless `legal`.
void require_legal(bool legal, std::string_view name);

/// Ends the call with "Parameter out of range <name>!", ierr 50.
void require_in_range(bool in_range, std::string_view name);

/// Ends the call with "Incorrect or inconsistent input <name>!", ierr 50.
void require_consistent(bool consistent, std::string_view name);

/// Ends the call with "Potential integer overflow for <name> in (routine)", ierr 10, where an array would
/// need more positions than 32-bit pointers hold.
void require_countable(std::int64_t entries, std::string_view name, std::string_view routine);

}  // namespace tier
