// Material constants of the polymer kinds: filler rule, stiffness, expansion and density.
// materialSetup is the last act of the model stage; density serves it and the sink mark.
#pragma once

#include "input/polymer.h"
#include "model/model_tables.h"

namespace keld {

/// Fills materialConstants 1 and 2, the defaults of negative filler values and the missing one of the two
/// filler fractions. Data from which no finite stiffness can be formed end the run.
void materialSetup();

/// Density in g/cm3 of polymer kind 1 or 2 at a pressure (dyn/cm2) and a temperature (K), blended with the
/// filler by weight. The form follows the count of the kind's pvt list: 1 constant, 3 Spencer-Gilmore, any
/// other the two-domain Tait equation.
double density(int kind, double pressure, double temperature);

/// Density of the unfilled polymer from its coefficients alone.
double polymerDensity(const CountedList& pvt, double pressure, double temperature);

/// Elastic constants of a unidirectional, transversely isotropic material, axis 1 along the orientation.
struct ElasticConstants {
  double e11 = 0.0, e22 = 0.0, g12 = 0.0, g23 = 0.0;  // dyn/cm2
  double nu12 = 0.0, nu23 = 0.0;
};

/// Stiffness as the inverse of the compliance, in the order 11, 22, 33, 12, 13, 23.
Matrix6 stiffnessOf(const ElasticConstants& elastic);

}  // namespace keld
