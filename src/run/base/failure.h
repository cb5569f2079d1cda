// The one ending of a run that has failed: message, wait for one character, exit status 1.
// Called by every stage; caught by the entry point alone.
#pragma once

namespace keld {

/// Carries the exit status of a run that ended early to the entry point; open files close on the way.
struct RunEnded {
  int status = 1;
};

/// Writes the message through stream 1, waits for one character (or the end) of standard input and throws
/// RunEnded with status 1. `format` is that of printf; texts of faults begin with "\n !! Error !!  ".
[[noreturn, gnu::format(printf, 1, 2)]] void vFail(const char* format, ...);

/// The wait and the throw alone, for faults whose lines are written already.
[[noreturn]] void vEndRun();

/// Abnormal termination without the wait: faults of the report, the log and the path length.
[[noreturn]] void vFatal(const char* routine, const char* words);

}  // namespace keld
