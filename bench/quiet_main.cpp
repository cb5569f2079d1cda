// Runs the benchmarks of an executable with their table on the standard output and nothing else: the lines
// that the stages of the analysis print are dropped.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  std::ofstream table("/dev/fd/" + std::to_string(::dup(1)));
  if (!table || std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
  reporter.SetOutputStream(&table);
  reporter.SetErrorStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return 0;
}
