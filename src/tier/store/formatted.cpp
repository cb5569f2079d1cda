// The locale in which numbers are formatted.
#include "tier/store/formatted.h"

namespace tier {

decimal_point::decimal_point() {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  former_ = uselocale(plain);
}

}  // namespace tier
