// The polymer's properties: two PolymerRecords and the filler values.
// Written by the reader of ".MAL"; the material set-up completes the filler values; read-only otherwise.
#pragma once

#include "run/base/column.h"

namespace keld {

/// A counted list of at most `capacity` numbers, 1-based: value(1) to value(count).
struct CountedList {
  int capacity = 15;
  int count = 0;
  FixedColumn<double, 15> value{};  // [1..count]
  double operator()(int i) const { return value[i]; }
};

/// Lengths in cm, pressures and moduli in dyn/cm2, densities in g/cm3.
struct PolymerRecord {
  CountedList temperatures{2};  // K
  CountedList property2{6}, property3{6}, property4{10};
  CountedList pvt{15};  // coefficients of the density model; the count selects its form
  CountedList property6{15}, property7{15};
  CountedList thermalExpansion{15};  // 1/K
  CountedList modulus{15};           // dyn/cm2
  CountedList poisson{15};
  CountedList property11{15};
  CountedList shearModulus{15};  // dyn/cm2
};

/// Shared between the kinds, from the last kind that was read; -1.0 where the file gave none.
struct FillerValues {
  double fillerValue2 = 0.0;
  double fillerExpansion = 0.0;  // 1/K
  double fillerModulus = 0.0;    // dyn/cm2
  double fillerPoisson = 0.0;
  double fillerDensity = 0.0;  // g/cm3
};

extern FixedColumn<PolymerRecord, 2> polymerRecord;  // by kind
extern FillerValues fillerValues;
extern int polymerMode;  // 3 when property11 holds entries, else 1

}  // namespace keld
