// Counts of the warnings about single elements.
// Called by the stages that look at every element, and by the ends of a run.
#include "run/base/element_warnings.h"

#include <array>
#include <cstdarg>
#include <cstddef>
#include <utility>

#include "run/base/streams.h"

namespace keld {

namespace {

constexpr std::array kinds = {"D4016", "D5015", "D5016"};
std::array<long, kinds.size()> given{};  // messages of a kind so far, written or not

}  // namespace

void vWarnOfElement(ElementWarning kind, const char* format, ...) {
  if (++given[static_cast<std::size_t>(kind)] > writtenElementWarnings) return;
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted(format, arguments);
  va_end(arguments);
  vPrintMessage(1, "%s", text.c_str());
}

void vTellCountedWarnings() {
  const auto counts = std::exchange(given, {});
  for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
    const long further = counts[kind] - writtenElementWarnings;
    if (further > 0)
      vPrintMessage(1, "\n !! Warning !!  %ld further messages %s were counted and not written out.\n",
                    further, kinds[kind]);
  }
}

}  // namespace keld
