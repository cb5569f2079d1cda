// Handles of report and log, and the one message writer.
// Called by all stages.
#include "run/base/streams.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <memory>
#include <system_error>

#include "run/base/failure.h"
#include "run/base/working_files.h"

namespace keld {
namespace {

constexpr std::size_t pathLimit = 1024;  // characters of a path, the end mark counted

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// A text file that is either closed or open for writing.
struct MessageFile {
  const char* openRoutine;
  std::string WorkingFileSet::*path;
  std::unique_ptr<std::FILE, FileCloser> handle{};
  bool lost = false;  // a write has failed: the message of that goes to the console alone

  void open(OpenMode mode);
  void write(std::string_view text);
  void close();
  void reportLoss();
};

MessageFile report{"vOpenMessageFile", &WorkingFileSet::report};
MessageFile logFile{"vOpenLogMessageFile", &WorkingFileSet::log};

std::size_t characterCount(const std::string& utf8) {
  std::size_t count = 0;
  for (const char c : utf8) count += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return count;
}

void vMakeFileName(const std::string& name, const char* caller) {
  if (characterCount(name) < pathLimit) return;
  vPrintMessage(-1, "Problem caused by call from %s to vMakeFileName()\n", caller);
  vFatal("vMakeFileName()", "Quality file name too long");
}

void MessageFile::open(OpenMode mode) {
  const std::string& name = workingFiles.*path;
  vMakeFileName(name, openRoutine);
  handle.reset(std::fopen(name.c_str(), mode == OpenMode::empty ? "we" : "ae"));
  if (mode == OpenMode::empty) lost = false;
  if (!handle)
    vFatal(openRoutine, mode == OpenMode::empty ? "Couldn't open message file for writing."
                                                : "Couldn't open added message file for writing.");
}

void MessageFile::write(std::string_view text) {
  if (text.empty()) return;  // perhaps no text at all, which fwrite wouldn't take
  if (handle && std::fwrite(text.data(), 1, text.size(), handle.get()) != text.size()) reportLoss();
}

void MessageFile::close() {
  if (handle && std::fclose(handle.release()) != 0) reportLoss();
}

void MessageFile::reportLoss() {
  if (lost) return;
  const std::string reason = std::generic_category().message(errno);
  lost = true;
  handle.reset();
  vFail("\n !! Error !!  Cannot write to %s: %s\n", (workingFiles.*path).c_str(), reason.c_str());
}

void writeConsole(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

void appendLine(MessageFile& file, std::string_view prefix, std::string_view text) {
  if (file.lost) return;
  const bool wasOpen = file.handle != nullptr;
  if (!wasOpen) file.open(OpenMode::append);
  file.write(prefix);
  file.write(text);
  if (!wasOpen) file.close();
}

}  // namespace

std::string formatted(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length < 0) return {};
  std::string text(static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

void vPrintMessage(int stream, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted(format, arguments);
  va_end(arguments);

  if (stream == 0 || stream == 1 || stream == 100) writeConsole(text);
  switch (stream) {
    case 1:
      appendLine(report, "<br>", text);
      break;
    case 2:
      appendLine(report, "", text);
      break;
    case -1:
    case -3:
      report.write("<br>");
      [[fallthrough]];
    case -2:
      report.write(text);
      if (stream == -1) report.close();
      break;
    case 100:
      appendLine(logFile, "", text);
      break;
    default:
      break;
  }
}

void vWriteReport(std::string_view bytes) { report.write(bytes); }

void vOpenMessageFile(OpenMode mode) { report.open(mode); }
void vOpenLogMessageFile(OpenMode mode) { logFile.open(mode); }
void vCloseMessageFile() { report.close(); }
void vCloseLogMessageFile() { logFile.close(); }

// On the way out of a failed section the loss of a line is no longer news.
ReportSection::~ReportSection() noexcept(false) {
  if (std::uncaught_exceptions() > 0)
    report.handle.reset();
  else
    report.close();
}

}  // namespace keld
