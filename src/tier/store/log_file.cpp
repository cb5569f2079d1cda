// The output channel: standard output, nothing, or a log file that stays open between calls.
#include "tier/store/log_file.h"

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

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
} connected;

std::FILE* channel() {
  if (connected.file) return connected.file.get();
  return parm::logio == unit_none ? nullptr : stdout;
}

int problem(std::string_view text) {
  info(message_class::error, text);
  return ierr_internal;
}

int invalid_unit(std::string_view text) {
  write_line("### PRBLM: Printing via unit 6 since logio = " + std::to_string(parm::logio) +
             " is not valid!");
  return problem(text);
}

}  // namespace

int open_logfile() {
  const int unit = parm::logio;
  const std::string& name = parm::logfile;
  if (unit < 0 || unit == unit_limit) return invalid_unit("Specified unit does not exist (open_logfile)!");
  if (name.empty()) {
    close_logfile();
    if (unit == unit_none || unit == unit_standard) return 0;
    if (unit == unit_input)
      return problem("Unit=5: Specify a logfile or another unit number (open_logfile)!");
    return invalid_unit("Specified unit has no file: specify a logfile or unit 6 (open_logfile)!");
  }
  if (connected.file && connected.name == name) {
    if (connected.unit == unit) return 0;
    return problem("Logfile already connected to different unit (open_logfile)!");
  }
  const bool exists = access(name.c_str(), F_OK) == 0;
  std::FILE* file = std::fopen(name.c_str(), exists ? "a" : "wx");
  if (!file)
    return problem(exists ? "Logfile exists but could not be opened (open_logfile)!"
                          : "Logfile does not exist and could not be opened (open_logfile)!");
  connected.file.reset(file);
  connected.name = name;
  connected.unit = unit;
  return 0;
}

void close_logfile() {
  connected.file.reset();
  connected.name.clear();
}

void write_line(std::string_view text) {
  std::FILE* out = channel();
  if (!out) return;
  text = text.substr(0, line_limit);
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  std::fwrite(text.data(), 1, text.size(), out);
  std::fputc('\n', out);
}

void flush_output() {
  if (std::FILE* out = channel()) std::fflush(out);
}

}  // namespace tier
