// Entry point: the words of the command line in, the exit status out.
// The one place that catches the end of a failed run.
#include <cstdio>
#include <exception>
#include <new>
#include <string_view>
#include <vector>

#include "run/base/failure.h"
#include "run/base/platform.h"
#include "run/command_line.h"
#include "run/run_order.h"

namespace {

constexpr char help[] =
    "Usage: keld BASE... 1@ INSTALL... 2@ [-cpu N]\n"
    "\n"
    "Predicts the warpage of an injection-moulded part.\n"
    "\n"
    "  BASE      common path of the job's files: BASE.PRC, BASE.MAL, BASE.PG1, ...; words are joined by "
    "blanks\n"
    "  INSTALL   folder that holds Standard/String.STD, with a separator at its end; joined likewise\n"
    "  -cpu N    thread limit that the report names\n"
    "\n"
    "Writes the report BASE.WD1, the log BASE.WLG1 and the results BASE.WR1.\n"
    "Exit status: 0 finished; 1 failed, after a message and a wait for one character on standard input.\n"
    "\n"
    "  keld --help      this text\n"
    "  keld --version   the version\n";

/// Runs the analysis; what escapes it is told as every reported failure is.
void runReportingFailures(const keld::CommandLine& line) {
  try {
    keld::runAnalysis(line);
  } catch (const std::bad_alloc&) {
    keld::vFail(
        "\n !! Error !!  Not enough memory for this mesh: end other programs or use a coarser mesh.\n");
  } catch (const std::exception& error) {
    keld::vFail("\n !! Error !!  Unexpected failure: %s\n", error.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  keld::secureStandardStreams();
  const std::vector<std::string_view> words(argv + (argc > 0 ? 1 : 0), argv + argc);
  if (words.size() == 1 && words[0] == "--help") {
    std::fputs(help, stdout);
    return 0;
  }
  if (words.size() == 1 && words[0] == "--version") {
    std::puts("keld " KELD_VERSION);
    return 0;
  }
  try {
    runReportingFailures(keld::parseCommandLine(words));
  } catch (const keld::RunEnded& end) {
    return end.status;
  }
  return 0;
}
