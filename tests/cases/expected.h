// The answers of a case, as its expected.txt holds them.
#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "run/base/column.h"

namespace keld::testing_support {

/// Displacements in cm, indexed by geometry node from 1.
struct ExpectedNode {
  std::array<double, 3> total{}, inMold{};
  double sinkMark = 0.0;
};

struct ExpectedAnswer {
  std::array<int, 3> boundary{};  // geometry nodes
  int freeFreedoms = 0, entries = 0, stressValid = 0, fromCool = 0;
  double volume = 0.0, jacobian = 0.0;      // cm3
  Column<std::vector<double>> stiffness;    // [1..2] by kind, 36 values, dyn/cm2
  Column<std::array<double, 2>> expansion;  // [1..2] by kind, along and across, 1/K
  std::vector<std::string> report;          // lines that the report holds
  std::array<double, 6> summary{};          // mm: spread x y z, greatest length, sink least, greatest
  Column<ExpectedNode> node;                // [1..N]
};

/// Throws when a line isn't understood or a quantity is missing.
ExpectedAnswer readExpected(const std::filesystem::path& file);

/// Greatest length of a displacement, cm.
double greatestLength(const ExpectedAnswer& answer);

}  // namespace keld::testing_support
