// The output channel: standard output, nothing, or a log file that stays open between calls.
#include "tier/store/log_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

constexpr std::size_t line_limit = 200;
constexpr int unit_none = 0, unit_input = 5, unit_standard = 6, unit_limit = 2147483647;

struct close_file {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

struct connection {
  std::unique_ptr<std::FILE, close_file> file;
  std::string name;
  int unit = unit_standard;
  bool failed = false;  // unit 6 stands in until the next call opens the log again
};
const per_context<connection> connected;

std::FILE* channel() {
  if (connected().file) return connected().file.get();
  return parm().logio == unit_none && !connected().failed ? nullptr : stdout;
}

int problem(std::string_view text) {
  info(message_class::error, text);
  return ierr_internal;
}

int invalid_unit(std::string_view text) {
  write_line("### PRBLM: Printing via unit 6 since logio = " + std::to_string(parm().logio) +
             " is not valid!");
  return problem(text);
}

/// A log that takes no more, as on a full disk, is told on unit 6, where all further lines go too.
void leave_failed_file() {
  if (!connected().file || !std::ferror(connected().file.get())) return;
  const std::string reason = std::strerror(errno), name = std::exchange(connected().name, {});
  connected().file.reset();
  connected().failed = true;
  write_line("### PRBLM: Printing via unit 6 since logfile <" + name +
             "> cannot be written, lines are lost: " + reason);
}

}  // namespace

int open_logfile() {
  connected().failed = false;
  const int unit = parm().logio;
  const std::string& name = parm().logfile;
  if (unit < 0 || unit == unit_limit) return invalid_unit("Specified unit does not exist (open_logfile)!");
  if (name.empty()) {
    close_logfile();
    if (unit == unit_none || unit == unit_standard) return 0;
    if (unit == unit_input)
      return problem("Unit=5: Specify a logfile or another unit number (open_logfile)!");
    return invalid_unit("Specified unit has no file: specify a logfile or unit 6 (open_logfile)!");
  }
  if (connected().file && connected().name == name) {
    if (connected().unit == unit) return 0;
    return problem("Logfile already connected to different unit (open_logfile)!");
  }
  const bool exists = access(name.c_str(), F_OK) == 0;
  std::FILE* file = std::fopen(name.c_str(), exists ? "a" : "wx");
  if (!file)
    return problem(exists ? "Logfile exists but could not be opened (open_logfile)!"
                          : "Logfile does not exist and could not be opened (open_logfile)!");
  connected().file.reset(file);
  connected().name = name;
  connected().unit = unit;
  return 0;
}

void close_logfile() {
  flush_output();
  connected().file.reset();
  connected().name.clear();
}

void write_line(std::string_view text) {
  std::FILE* out = channel();
  if (!out) return;
  text = text.substr(0, line_limit);
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  std::fwrite(text.data(), 1, text.size(), out);
  std::fputc('\n', out);
  leave_failed_file();
}

void flush_output() {
  std::FILE* out = channel();
  if (!out) return;
  std::fflush(out);
  leave_failed_file();
}

}  // namespace tier
