// The headings that each section of the input stage writes into the report.
#pragma once

#include "run/base/streams.h"

namespace keld {

/// A heading in bold type.
inline void echoHeading(const char* words) {
  vPrintMessage(2, "<b>\n");
  vPrintMessage(1, "%s", words);
  vPrintMessage(2, "</b>\n");
}

}  // namespace keld
