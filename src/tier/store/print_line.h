// Formatted report lines. Used by the reports.
#pragma once

#include <cstdio>

#include "tier/store/info.h"

namespace tier {

/// Prints one report line by a printf format.
template <class... Values>
void print_line(const char* format, Values... values) {
  char line[208];
  std::snprintf(line, sizeof line, format, values...);
  message(line);
}

}  // namespace tier
