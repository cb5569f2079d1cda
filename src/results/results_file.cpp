// The results file ".WR1". Called by the results stage once.
#include "results/results_file.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <initializer_list>

#include "input/mesh_tables.h"
#include "input/prior_fields.h"
#include "model/model_tables.h"
#include "run/base/column.h"
#include "run/base/failure.h"
#include "run/base/pending_file.h"
#include "run/base/platform.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

constexpr double mm_per_cm = 10.0;

/// Ends the run unless a step of the writing was good.
void require(bool good) {
  if (good) return;
  vFail(
      "\n !! Error !!  The results file '%s' can't be written: %s. It needs a folder with room where files "
      "can be made.\n",
      workingFiles.results.c_str(), std::strerror(errno));
}

/// The first character of a text in UTF-8, with all of its bytes.
std::string firstCharacter(const std::string& text) {
  std::size_t length = text.empty() ? 0 : 1;
  while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) ++length;
  return text.substr(0, length);
}

std::string fileHead() {
  const std::string dashes = " ---------------------------------------------------------------------\n";
  const bool shell = ModelKind == 1;
  return dashes + " ** KELD/" + (shell ? "Shell3D" : "Surface") + " Keldage Results File **\n\n" +
         " Date/time : " + localTime("%a %b %e %H:%M:%S %Y\n") +
         " File path : " + firstCharacter(workingFiles.baseName) + "\n" + dashes +
         " \n \n[Type_ofStyleStr]\n" + (shell ? "00001\n" : "00002\n") +
         (residualStressValid == 1 ? "1\n" : "0\n") + "[EOF]\n\n";
}

std::string blockHead(const char* tag, const char* gap, std::initializer_list<int> strings) {
  const std::string count = std::to_string(wedgeNumbering.geometryNodeCount);
  std::string head =
      std::string("[") + tag + "]\n   Glength= " + count + gap + std::to_string(strings.size()) + "\n";
  for (int number : strings) {
    head += "   StrIndx= " + std::to_string(number) + "  |  Long= " + count +
            "  |  Wide= 1  |  NodElm= 1108  |  Color= 0\n";
  }
  return head;
}

/// Rows 1 to N in order. Threads format parts of a band of rows, the band is then written.
void writeRows(PendingFile& file, ResultBlock block) {
  constexpr int rows_of_part = 1024, parts = 32, longest_row = 96;
  const int count = wedgeNumbering.geometryNodeCount;
  Column<std::string> text(parts);
  // Room is made here: a failure within the parallel region could not be reported.
  for (std::string& part : text) part.reserve(std::size_t{rows_of_part} * longest_row);
  for (int bandStart = 1; bandStart <= count; bandStart += rows_of_part * parts) {
#pragma omp parallel for schedule(static)
    for (int part = 1; part <= parts; ++part) {
      text[part].clear();
      const int first = bandStart + (part - 1) * rows_of_part,
                end = std::min(first + rows_of_part, count + 1);
      for (int node = first; node < end; ++node) appendRow(text[part], block, node, resultRow(block, node));
    }
    for (const std::string& part : text) require(file.write(part));
  }
  require(file.write("[EOF]\n"));
}

}  // namespace

void appendRow(std::string& text, ResultBlock block, int number, const ResultRow& row) {
  static constexpr const char* main_gaps[] = {"    ", "     ", "     ", "    ", "    "};
  static constexpr const char* further_gaps[] = {"    ", "   ", "   ", "  "};
  constexpr int number_width = 8;
  const bool isMain = block == ResultBlock::main;
  char digits[32];
  char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  if (end - digits < number_width) text.append(static_cast<std::size_t>(number_width - (end - digits)), ' ');
  text.append(digits, static_cast<std::size_t>(end - digits));
  for (std::size_t i = 0; i < (isMain ? 5 : 4); ++i) {
    text += isMain ? main_gaps[i] : further_gaps[i];
    end = std::to_chars(digits, digits + sizeof digits, row[i] * mm_per_cm, std::chars_format::scientific, 3)
              .ptr;
    text.append(digits, static_cast<std::size_t>(end - digits));
  }
  text += '\n';
}

void requireFiniteRows() {
  for (const ResultBlock block : {ResultBlock::main, ResultBlock::residual, ResultBlock::thermal}) {
    for (int node = 1; node <= wedgeNumbering.geometryNodeCount; ++node) {
      const ResultRow row = resultRow(block, node);
      if (std::all_of(row.begin(), row.end(), [](double v) { return std::isfinite(v * mm_per_cm); }))
        continue;
      vFail(
          "\n !! Error !!  The results of node %d aren't finite (displacement %g, %g, %g, length %g, sink "
          "mark %g "
          "cm): the system has no usable solution. Check thickness, moduli, stress and temperatures.\n",
          node, row[0], row[1], row[2], row[3], row[4]);
    }
  }
}

void writeResultsFile() {
  PendingFile file(workingFiles.results);
  require(file.isOpen());
  require(file.write(fileHead()));
  require(file.write(
      blockHead("Keld_ResultsStr", "   |   Npen= 1   |   Item= ", {24001, 24002, 24003, 24005, 24004})));
  writeRows(file, ResultBlock::main);
  const char* const gap = "    |   Npen= 1   |  Item= ";
  if (residualStressValid == 1) {
    require(file.write(blockHead("Keld_Residual_ResultsStr", gap, {24301, 24302, 24303, 24305})));
    writeRows(file, ResultBlock::residual);
  }
  require(file.write(blockHead("Keld_Thermal_ResultsStr", gap, {24601, 24602, 24603, 24605})));
  writeRows(file, ResultBlock::thermal);
  require(file.finish());
}

}  // namespace keld
