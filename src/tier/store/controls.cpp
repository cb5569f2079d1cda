// Splitting of digit codes.
#include "tier/store/controls.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace tier {

void idec(int value, int nnum, int& ndigit, int* digits) {
  constexpr int most_fields = 9;
  if (nnum < 1 || nnum > most_fields) emergency_stop("Illegal use of routine idec: <nnum> out of range!");

  std::int64_t rest = std::abs(std::int64_t{value});
  while (rest > 999999999) rest /= 10;
  std::int64_t power = 1;  // of the leading digit
  for (ndigit = 1; rest / power >= 10; ++ndigit) power *= 10;

  std::fill_n(digits, nnum, 0);
  for (int field = 0; field < std::min(nnum - 1, ndigit); ++field, power /= 10) {
    digits[field] = static_cast<int>(rest / power);
    rest %= power;
  }
  if (ndigit >= nnum) digits[nnum - 1] = static_cast<int>(rest);
}

int modification(const controls& c) {
  constexpr int rows = 2, columns = 3;
  if (c.iforce0 == transformation::scale_rows) return rows;
  if (c.iforce0 == transformation::scale_columns) return columns;
  return parm().modify_mat;
}

bool symmetric_as_solved(const controls& c) {
  if (c.isym != symmetry::symmetric) return false;
  for (int digits = std::abs(modification(c)); digits > 0; digits /= 10)
    if (digits % 10 > 1) return false;
  return true;
}

}  // namespace tier
