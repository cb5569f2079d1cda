// Texts made by printf formats, with a decimal point in every locale of the calling program.
// Called wherever a number goes into a message, a report or a dumped file.
#pragma once

#include <cstdio>
#include <string>

#include <locale.h>

namespace tier {

/// While one lives, this thread formats numbers as the locale "C" does. The program's locale stays as it is.
class decimal_point {
 public:
  decimal_point();
  ~decimal_point() { uselocale(former_); }
  decimal_point(const decimal_point&) = delete;
  decimal_point& operator=(const decimal_point&) = delete;

 private:
  locale_t former_;
};

/// One line of text, cut at 207 characters.
template <class... Values>
std::string formatted(const char* format, Values... values) {
  const decimal_point point;
  char line[208];
  std::snprintf(line, sizeof line, format, values...);
  return line;
}

}  // namespace tier
