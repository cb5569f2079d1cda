// The ends of a run that has failed.
// Called by every stage; the entry point catches RunEnded.
#include "run/base/failure.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "run/base/element_warnings.h"
#include "run/base/streams.h"

namespace keld {

void vEndRun() {
  vTellCountedWarnings();
  vCloseMessageFile();
  vCloseLogMessageFile();
  std::fflush(stdout);
  (void)std::getchar();  // the outer application answers or closes the input; its end is an answer too
  throw RunEnded{};
}

void vFail(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted(format, arguments);
  va_end(arguments);
  vPrintMessage(1, "%s", text.c_str());
  vEndRun();
}

void vFatal(const char* routine, const char* words) {
  vPrintMessage(0, "Fatal error in %s\n%s\n", routine, words);
  std::abort();
}

}  // namespace keld
