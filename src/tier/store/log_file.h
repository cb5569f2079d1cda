// Where the solver's text goes: a unit number `logio` with an optional file `logfile`.
// Opened by tier_main and TIER_OPEN_LOGFILE, written by the message routines.
#pragma once

#include <string_view>

namespace tier {

/// Connects the channel as logio and logfile ask for. Returns 0, or 1 after a message on the former channel.
///   logio 6 without a file: standard output; logio 0 without a file: no output; another unit needs a file.
///   A file that exists is continued at its end.
int open_logfile();

/// Flushes and disconnects a log file; the channel goes back to what logio alone means.
void close_logfile();

/// Writes one line, without its trailing blanks and at most 200 characters of it.
void write_line(std::string_view text);

void flush_output();

}  // namespace tier
