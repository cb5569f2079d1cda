// The results file ".WR1": one row of millimetres per geometry node in two or three blocks.
// Called by the results stage once.
#pragma once

#include <string>

#include "results/result_rows.h"

namespace keld {

/// Appends the number as "%8d  ", the values x 10 (mm) with the digits of printf's "%.3e", and a line feed:
/// five values in a row of the main block, four in the others.
void appendRow(std::string& text, ResultBlock block, int number, const ResultRow& row);

/// Ends the run where a value of a row isn't finite in mm, or its length isn't.
void requireFiniteRows();

/// Writes the file beside its place and renames it when it is whole. A fault ends the run and leaves none of
/// it; a file of an earlier run then stands unchanged.
void writeResultsFile();

}  // namespace keld
