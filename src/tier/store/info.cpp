// Message classes and their filter, trace lines, and the two ways in which a call ends early.
#include "tier/store/info.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tier/store/ierr.h"
#include "tier/store/log_file.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

/// What a call said last.
struct last_words {
  int warning = 0;    // its number, 0: none
  std::string fault;  // text of the last error or warning
};
const per_context<last_words> latest;

struct class_of_message {
  const char* prefix;
  int least_mode;  // printed if mode_mess is at least this
};

class_of_message describe(message_class cls) {
  switch (cls) {
    case message_class::error:
      return {"*** ERROR: ", -2};
    case message_class::warning:
      return {"+++ WARNG: ", -1};
    case message_class::control:
      return {">>> CNTRL: ", 1};
    case message_class::note:
      break;
  }
  return {">>> MESSG: ", 0};
}

/// The topic's own level.
int trace_level(trace_topic topic) {
  switch (topic) {
    case trace_topic::call:
      return parm().itrace_amgmain;
    case trace_topic::splitting:
      return parm().itrace_split;
    case trace_topic::smoothing:
      return parm().itrace_smo;
    case trace_topic::solution:
      return parm().itrace_sol;
    case trace_topic::coarsest_solver:
      return parm().itrace_clsol;
    case trace_topic::set_up:
      break;
  }
  return 0;
}

void blank_lines(int count) {
  for (int i = 0; i < count; ++i) write_line("");
}

}  // namespace

void info(message_class cls, std::string_view text, int blank_before, int blank_after) {
  const class_of_message kind = describe(cls);
  if (parm().mode_mess < kind.least_mode) return;
  message(kind.prefix + std::string(text), blank_before, blank_after);
}

void message(std::string_view text, int blank_before, int blank_after) {
  blank_lines(blank_before);
  if (!text.empty()) write_line(text);
  blank_lines(blank_after);
}

bool traces(trace_topic topic) { return std::max(parm().itracelevel, trace_level(topic)) > 0; }

void trace(trace_topic topic, std::string_view text) {
  if (traces(topic)) write_line(text);
}

void fail(int ierr, std::string_view text) {
  latest().fault = text;
  info(message_class::error, text);
  throw failure{ierr};
}

void warn(int ierr, std::string_view text) {
  latest().fault = text;
  info(message_class::warning, text);
  note_warning(ierr);
}

void note_warning(int ierr) { latest().warning = ierr; }
int last_warning() { return latest().warning; }
void clear_warning() { latest() = {}; }
const std::string& last_fault() { return latest().fault; }

void not_released(std::string_view what) {
  fail(ierr_not_released, "Parameter setting not yet permitted <" + std::string(what) + ">");
}

void emergency_stop(std::string_view text) {
  message(text);
  message(">>> Emergency STOP! <<<");
  flush_output();
  std::exit(EXIT_FAILURE);
}

}  // namespace tier
