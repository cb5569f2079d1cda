// Formatted report lines. Used by the reports.
#pragma once

#include "tier/store/formatted.h"
#include "tier/store/info.h"

namespace tier {

/// Prints one report line by a printf format.
template <class... Values>
void print_line(const char* format, Values... values) {
  message(formatted(format, values...));
}

}  // namespace tier
