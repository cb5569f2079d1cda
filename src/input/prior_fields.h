// Per-element results of the earlier stages: stress, orientation and temperatures of the part elements.
// Written by the prior-result stage; read-only afterwards.
#pragma once

#include <array>

#include "run/base/column.h"

namespace keld {

using Direction = std::array<double, 3>;

/// [1..partElementCount] in the compact order of the part elements.
struct ResidualStressField {
  Column<double> stress1, stress2;                       // dyn/cm2; neutral 0
  Column<double> kindFraction;                           // above 0.5: polymer kind 1; neutral 1.0
  Column<double> orientationValue;                       // first orientation eigenvalue; neutral 1.0
  Column<Direction> direction1, direction2, direction3;  // orthonormal; neutral x, y, z
};

/// [1..partElementCount]; neutral value is the ambient temperature.
struct ElementTemperatureField {
  Column<double> sideTemperature1, sideTemperature2;  // K, lower and upper side
};

extern ResidualStressField residualStressField;
extern ElementTemperatureField elementTemperatureField;
extern int residualStressValid;  // 1: two passes and a residual section in the results
extern int temperatureFromCool;  // 1: ".CT1" was read

}  // namespace keld
