// How the part was moulded and how to compute: the ProcessRecord.
// Written by the readers of ".PRC", ".CPU" and ".BC1"; read-only afterwards.
#pragma once

#include <array>

#include "run/base/column.h"

namespace keld {

inline constexpr double kelvinOfZeroCelsius = 273.15;  // files give degrees Celsius, tables hold kelvin

/// Codes of the wall model.
inline constexpr int wedge_walls = 1, facet_walls = 2;

// Choices of the solver in the section of KELD's own choices.
inline constexpr int road_as_chosen = 1, aggregation_road = 2, automatic_road = 3;

struct ProcessRecord {
  FixedColumn<double, 2> meltTemperature{};  // K, of polymer kind 1 and 2
  double ambientTemperature = 0.0;           // K
  int fillerPresent = 0;                     // 1: filled polymer
  int fractionKind = 0;                      // 1: percentage by weight, 2: by volume
  double fillerWeightFraction = 0.0;  // 0..1; the missing one of the two is derived by the material set-up
  double fillerVolumeFraction = 0.0;  // 0..1
  int secondKind = 0;                 // 1: two polymer kinds are read
  int solverChoice = 0;               // 2: direct sparse path, any other value: TIER
  std::array<int, 4> bcNode{};      // [1..3] boundary nodes in geometry numbers; any 0: chosen by the system
  int solverRoad = road_as_chosen;  // which solver, where solverChoice isn't to say it
  int cycleLimit = 3000;            // cycle limit of TIER
  bool extensionGiven = false;      // ".CPU" has the section of KELD's own choices, which follow
  int wallModel = wedge_walls;      // wedge_walls or facet_walls
};

extern ProcessRecord processRecord;

}  // namespace keld
