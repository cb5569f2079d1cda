// The summary of a run in the report. Called by the results stage.
#include "results/summary.h"

#include <string>

#include "run/base/streams.h"

namespace keld {

namespace {

constexpr double mm_per_cm = 10.0, inches_per_mm = 0.03937;

struct Length {
  double mm, inches;
};

Length lengthOf(double centimetres) {
  const double mm = centimetres * mm_per_cm;
  return {mm, mm * inches_per_mm};
}

}  // namespace

void writeSummary(const ResultExtremes& extremes) {
  const std::string dashes = " " + std::string(96, '-') + "\n";
  vPrintMessage(2, "<b>\n");
  vPrintMessage(1, "\n Keldage stage results summary : \n\n");
  vPrintMessage(1, "%s", dashes.c_str());
  for (std::size_t c = 0; c < 3; ++c) {
    const Length spread = lengthOf(extremes.maximum[c] - extremes.minimum[c]);
    vPrintMessage(1, "   %d : %c direction displacement= %6.4lf mm (%6.4lf in)\n",
                  25201 + static_cast<int>(c), "XYZ"[c], spread.mm, spread.inches);
  }
  const Length length = lengthOf(extremes.greatestLength);
  vPrintMessage(1, "   25204 : Max. total  displacement= %6.4lf mm (%6.4lf in)\n", length.mm, length.inches);
  const Length least = lengthOf(extremes.leastSink), greatest = lengthOf(extremes.greatestSink);
  vPrintMessage(1, "   25205 : Sink mark range         = %6.4lf ~ %6.4lf mm (%6.4lf ~ %6.4lf in)\n", least.mm,
                greatest.mm, least.inches, greatest.inches);
  vPrintMessage(1, "%s", dashes.c_str());
  vPrintMessage(2, "</b>\n");
}

}  // namespace keld
