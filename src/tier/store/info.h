// The solver's one text channel: four message classes filtered by mode_mess, unfiltered report lines, trace
// lines. Called by every routine of TIER.
#pragma once

#include <new>
#include <string>
#include <string_view>

namespace tier {

enum class message_class { error = 1, warning = -1, note = 0, control = -2 };

/// Prints prefix and text where mode_mess lets the class through, with blank lines around it.
void info(message_class cls, std::string_view text, int blank_before = 0, int blank_after = 0);

/// Prints a trimmed line without filter or prefix; an empty text prints the blank lines alone.
void message(std::string_view text, int blank_before = 0, int blank_after = 0);

/// What a trace line is about: itracelevel above 0 shows all of them, a parameter of its own each topic.
enum class trace_topic { set_up, call, splitting, smoothing, solution, coarsest_solver };

bool traces(trace_topic topic);
/// Prints a trace line where its topic is traced.
void trace(trace_topic topic, std::string_view text);

/// What a routine throws when the call must end: tier_main turns it into ierr and cleans up.
/// Never thrown inside a parallel region.
struct failure {
  int ierr;
};

/// Prints an error and ends the call.
[[noreturn]] void fail(int ierr, std::string_view text);

/// Prints a warning and notes `ierr` (negative) as the last warning of the call.
void warn(int ierr, std::string_view text);

/// Notes a warning number without a text; the last one in time stays (see last_warning).
void note_warning(int ierr);
int last_warning();
void clear_warning();

/// Text of the last error or warning of a call, empty when there was none.
const std::string& last_fault();

/// Runs say(), which makes texts, on the way out of a call: where memory is out the text is lost, no more.
template <class Say>
void say_if_possible(Say say) noexcept {
  try {
    say();
  } catch (const std::bad_alloc&) {
  }
}

/// Ends the call: "Parameter setting not yet permitted <what>", ierr 80.
[[noreturn]] void not_released(std::string_view what);

/// Programming faults: the text, ">>> Emergency STOP! <<<", end of the process.
[[noreturn]] void emergency_stop(std::string_view text);

}  // namespace tier
