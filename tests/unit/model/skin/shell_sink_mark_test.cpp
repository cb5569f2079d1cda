// The sink mark of closed skins: the share of each kind in the density of a mixture.
#include "model/skin/shell_sink_mark.h"

#include <gtest/gtest.h>

#include <cmath>

#include "input/polymer.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/model_tables.h"
#include "support/skin_maker.h"

namespace keld {
namespace {

constexpr double temperature = 360.0;

/// Specific volume T R / (p + 2e9) + 1 / density0 of a kind, with R in erg per gram and kelvin.
void setKind(int kind, double density0, double gas) {
  CountedList& pvt = polymerRecord[kind].pvt;
  pvt.count = 3;
  pvt.value = {2e9, density0, gas};
}

double densityOf(double density0, double gas, double kelvin) {
  return 1.0 / (kelvin * gas / (1e6 + 2e9) + 1.0 / density0);
}

TEST(ShellSinkMark, TakesTheKindFractionAsTheShareOfTheFirstKind) {
  BoxSkin{{4.0, 3.0, 0.2}, {2, 2, 1}}.fillTables();
  processRecord = {};
  processRecord.secondKind = 1;
  setKind(1, 1.1, 2e6);
  setKind(2, 0.9, 6e6);
  const int elements = elementTable.elementCount;
  elementTemperatureField.sideTemperature1.assign(elements, temperature - 5.0);
  elementTemperatureField.sideTemperature2.assign(elements, temperature + 5.0);
  wedgeNumbering.wedgeNodeCount = nodeTable.nodeCount;
  for (const double fraction : {0.25, 0.75}) {
    residualStressField.kindFraction.assign(elements, fraction);

    shellSinkMark();

    const auto v = [fraction](double kelvin) {
      return 1.0 / (fraction * densityOf(1.1, 2e6, kelvin) + (1.0 - fraction) * densityOf(0.9, 6e6, kelvin));
    };
    const double expected = std::cbrt(v(temperature)) * (1.0 - v(298.0) / v(temperature)) / 3.0;
    for (int n = 1; n <= nodeTable.nodeCount; ++n)
      EXPECT_NEAR(solution.rowSolution[n], expected, 1e-12 * expected);
  }
}

}  // namespace
}  // namespace keld
