// Material constants of the polymer kinds; see the header.
#include "model/material/material.h"

#include <cmath>
#include <cstdlib>

#include "input/process_record.h"
#include "run/base/failure.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

constexpr double largeBulkModulus = 1e20;  // stands for that of an incompressible matrix
constexpr double shapeFactor = 50.0;       // of the fibres' length in the longitudinal modulus

double meanOf(const CountedList& list) {
  double sum = 0.0;
  for (int i = 1; i <= list.count; ++i) sum += list(i);
  return sum / list.count;
}

struct Phase {
  double e = 0.0, nu = 0.0, expansion = 0.0;
  double shear() const { return e / (2.0 * (1.0 + nu)); }
  double bulk() const {
    const double divisor = 3.0 * (1.0 - 2.0 * nu);
    return std::abs(divisor) > 1e-10 ? e / divisor : largeBulkModulus;
  }
};

Phase fillerPhase() {
  return {fillerValues.fillerModulus, fillerValues.fillerPoisson, fillerValues.fillerExpansion};
}
Phase matrixPhase(const PolymerRecord& polymer) {
  return {meanOf(polymer.modulus), meanOf(polymer.poisson), meanOf(polymer.thermalExpansion)};
}

/// Elastic constants of aligned fibres of volume fraction v in an isotropic matrix: Halpin-Tsai for E11 and
/// E22, composite cylinders for G12, Hill's bound in its dilute form for G23, the rule of mixtures for nu12.
ElasticConstants filledElastic(const Phase& matrix, const Phase& filler, double v) {
  const double gm = matrix.shear(), gf = filler.shear(), km = matrix.bulk();
  const double ratio = filler.e / matrix.e;
  const double eta = (ratio - 1.0) / (ratio + shapeFactor);
  const double g = v * (ratio - 1.0) / (ratio + 1.0);
  ElasticConstants c;
  c.e11 = matrix.e * (1.0 + shapeFactor * eta * v) / (1.0 - eta * v);
  c.e22 = matrix.e * (1.0 + g) / (1.0 - g);
  c.g12 = gm * ((1.0 - v) * gm + (1.0 + v) * gf) / ((1.0 + v) * gm + (1.0 - v) * gf);
  c.nu12 = (1.0 - v) * matrix.nu + v * filler.nu;
  const double bulkTerm = (km + 7.0 / 3.0 * gm) / (2.0 * km + 8.0 / 3.0 * gm);
  c.g23 = gm * (1.0 + v / (bulkTerm + gm / (gf - gm)));
  c.nu23 = c.e22 / (2.0 * c.g23) - 1.0;
  return c;
}

/// Longitudinal and transverse expansion of the same composite; e11 and nu12 as above.
void filledExpansion(const Phase& matrix, const Phase& filler, double v, const ElasticConstants& elastic,
                     MaterialConstants& result) {
  const double km = matrix.bulk(), kf = filler.bulk();
  const double mean = matrix.expansion * (1.0 - v) + filler.expansion * v;
  const double compliance = (1.0 - v) / matrix.e + v / filler.e;
  const double psi =
      (compliance - 1.0 / elastic.e11) / (compliance - 1.0 / ((1.0 - v) * matrix.e + v * filler.e) + 1e-20);
  const double bulkMean =
      (km * matrix.expansion * (1.0 - v) + kf * filler.expansion * v) / ((1.0 - v) * km + v * kf);
  result.expansionLongitudinal = mean + psi * (bulkMean - mean);
  result.expansionTransverse = (1.0 + matrix.nu) * matrix.expansion * (1.0 - v) +
                               (1.0 + filler.nu) * filler.expansion * v - mean * elastic.nu12;
}

ElasticConstants listedElastic(const PolymerRecord& polymer) {
  ElasticConstants c;
  c.e11 = polymer.modulus(1);
  c.e22 = polymer.modulus(2);
  c.nu12 = polymer.poisson(1);
  c.nu23 = polymer.poisson(2);
  c.g12 = polymer.shearModulus(1);
  c.g23 = c.e22 / (2.0 * (1.0 + c.nu23));
  return c;
}

void applyFillerDefaults() {
  const auto complete = [](double& value, double standard) {
    if (value < 0.0) value = standard;
  };
  complete(fillerValues.fillerValue2, 25.0);
  complete(fillerValues.fillerExpansion, 3.5e-6);
  complete(fillerValues.fillerModulus, 7e11);
  complete(fillerValues.fillerPoisson, 0.23);
  complete(fillerValues.fillerDensity, 2.5);
}

/// The kind whose density turns fractions into each other.
int lastKind() { return processRecord.secondKind == 1 ? 2 : 1; }

double blendedDensity(double polymer, double weightFraction) {
  return 1.0 / ((1.0 - weightFraction) / polymer + weightFraction / fillerValues.fillerDensity);
}

double volumeFractionOf(double weight, double rho) {
  const double filler = fillerValues.fillerDensity;
  return (weight / filler) / ((1.0 / filler - 1.0 / rho) * weight + 1.0 / rho);
}

/// Derives the fraction that wasn't given, with the density of the last kind at its melt temperature. Where
/// that gives no number the fraction isn't finite, which is a fault
/// only of kinds that follow the filler rule.
void completeFillerFractions() {
  const int kind = lastKind();
  const double rho = density(kind, 1e7, processRecord.meltTemperature[kind]);
  const double filler = fillerValues.fillerDensity;
  double& weight = processRecord.fillerWeightFraction;
  double& volume = processRecord.fillerVolumeFraction;
  if (processRecord.fractionKind == 1) {
    volume = volumeFractionOf(weight, rho);
  } else if (processRecord.fractionKind == 2) {
    weight = filler * volume / ((filler - rho) * volume + rho);
  }
}

[[noreturn]] void failOnElasticData(int kind, const char* reason) {
  vFail(
      "\n !! Error !!  No stiffness can be formed from the moduli, Poisson ratios and shear moduli of "
      "polymer kind "
      "%d in \"%s\": %s.\n",
      kind, workingFiles.mal.c_str(), reason);
}

[[noreturn]] void failOnFraction() {
  vFail(
      "\n !! Error !!  The filler's weight fraction %g can't be turned into a volume fraction: the "
      "specific-volume "
      "record in \"%s\" gives no density at the melt temperature, or the filler density %g isn't positive.\n",
      processRecord.fillerWeightFraction, workingFiles.mal.c_str(), fillerValues.fillerDensity);
}

/// A stiffness must be finite and have a positive diagonal.
bool usable(const MaterialConstants& constants) {
  for (std::size_t i = 0; i < 6; ++i) {
    for (double value : constants.stiffness[i]) {
      if (!std::isfinite(value)) return false;
    }
    if (!(constants.stiffness[i][i] > 0.0)) return false;
  }
  return std::isfinite(constants.expansionLongitudinal) && std::isfinite(constants.expansionTransverse);
}

MaterialConstants filledConstants(const PolymerRecord& polymer, double v) {
  const ElasticConstants elastic = filledElastic(matrixPhase(polymer), fillerPhase(), v);
  MaterialConstants constants;
  constants.stiffness = stiffnessOf(elastic);
  filledExpansion(matrixPhase(polymer), fillerPhase(), v, elastic, constants);
  return constants;
}

/// Volume fraction that the run would make of a given fraction, by weight or by volume as the job gives it.
double volumeOfGiven(double fraction) {
  if (processRecord.fractionKind != 1) return fraction;
  const int kind = lastKind();
  const double rho = polymerDensity(polymerRecord[kind].pvt, 1e7, processRecord.meltTemperature[kind]);
  return volumeFractionOf(fraction, blendedDensity(rho, fraction));
}

/// Ends the run with the greatest fraction below the given one that works, to a tenth of a per cent; returns
/// where none does, so that the filler isn't what is wrong.
void failOnFiller(int kind, const PolymerRecord& polymer) {
  const bool byWeight = processRecord.fractionKind == 1;
  const double given = byWeight ? processRecord.fillerWeightFraction : processRecord.fillerVolumeFraction;
  double works = 0.0, fails = given;
  if (!usable(filledConstants(polymer, 0.0)) || !(given > 0.0)) return;
  while (fails - works > 1e-6) {
    const double middle = 0.5 * (works + fails);
    (usable(filledConstants(polymer, volumeOfGiven(middle))) ? works : fails) = middle;
  }
  vFail(
      "\n !! Error !!  A filler fraction of %.4g %% by %s (values 12 and 13 in \"%s\") is more than the "
      "mixing rule "
      "can form a stiffness from with polymer kind %d in \"%s\": the greatest that works is %.1f %%.\n",
      100.0 * given, byWeight ? "weight" : "volume", workingFiles.prc.c_str(), kind, workingFiles.mal.c_str(),
      std::floor(1000.0 * works) / 10.0);
}

}  // namespace

double polymerDensity(const CountedList& c, double pressure, double temperature) {
  if (c.count == 1) return c(1);
  if (c.count == 3) return 1.0 / (temperature * c(3) / (pressure + c(1)) + 1.0 / (c(2) + 1e-30));
  const double x = temperature - c(9);
  const bool melt = temperature >= c(10) * pressure + c(9);
  const double volume = melt ? c(1) + c(2) * x : c(5) + c(6) * x;
  const double b = melt ? c(3) * std::exp(-c(4) * x) : c(7) * std::exp(-c(8) * x);
  const bool crystalline = !melt && c.count != 10;
  const double transition = crystalline ? c(11) * std::exp(c(12) * x - c(13) * pressure) : 0.0;
  return 1.0 / (volume * (1.0 - 0.0894 * std::log(1.0 + pressure / b)) + transition);
}

double density(int kind, double pressure, double temperature) {
  const double rho = polymerDensity(polymerRecord[kind].pvt, pressure, temperature);
  if (processRecord.fillerPresent != 1) return rho;
  return blendedDensity(rho, processRecord.fillerWeightFraction);
}

Matrix6 stiffnessOf(const ElasticConstants& elastic) {
  Matrix6 m{};
  m[0][0] = 1.0 / elastic.e11;
  m[1][1] = m[2][2] = 1.0 / elastic.e22;
  m[0][1] = m[0][2] = m[1][0] = m[2][0] = -elastic.nu12 / elastic.e11;
  m[1][2] = m[2][1] = -elastic.nu23 / elastic.e22;
  m[3][3] = m[4][4] = 1.0 / elastic.g12;
  m[5][5] = 1.0 / elastic.g23;
  // Gauss-Jordan in place, without pivoting.
  for (std::size_t k = 0; k < 6; ++k) {
    double pivot = m[k][k];
    if (std::abs(pivot) < 1e-30) pivot = 1e-30;
    m[k][k] = 1.0;
    for (double& value : m[k]) value /= pivot;
    for (std::size_t i = 0; i < 6; ++i) {
      if (i == k) continue;
      const double factor = m[i][k];
      m[i][k] = 0.0;
      for (std::size_t j = 0; j < 6; ++j) m[i][j] -= factor * m[k][j];
    }
  }
  return m;
}

void materialSetup() {
  applyFillerDefaults();
  const bool filled = processRecord.fillerPresent == 1;
  if (filled) completeFillerFractions();
  const double v = processRecord.fillerVolumeFraction;
  const Phase filler = fillerPhase();

  ElasticConstants elastic;  // values of the previous kind stand where a kind's lists give none
  MaterialConstants constants;
  bool haveElastic = false, haveExpansion = false;
  for (int kind = 1; kind <= 2; ++kind) {
    const PolymerRecord& polymer = polymerRecord[kind];
    const bool isotropic = std::abs(polymer.modulus(1) - polymer.modulus(2)) < 1.0;
    if (filled && isotropic) {
      if (!std::isfinite(v)) failOnFraction();
      elastic = filledElastic(matrixPhase(polymer), filler, v);
      haveElastic = true;
    } else if (polymer.modulus.count == 2) {
      elastic = listedElastic(polymer);
      haveElastic = true;
    }
    if (!haveElastic) failOnElasticData(kind, "two moduli were expected");
    constants.stiffness = stiffnessOf(elastic);

    const CountedList& expansion = polymer.thermalExpansion;
    if (filled && isotropic && std::abs(expansion(1) - expansion(2)) <= 1e-15) {
      filledExpansion(matrixPhase(polymer), filler, v, elastic, constants);
      haveExpansion = true;
    } else if (expansion.count == 2) {
      constants.expansionLongitudinal = expansion(1);
      constants.expansionTransverse = expansion(2);
      haveExpansion = true;
    }
    if (!haveExpansion) failOnElasticData(kind, "two expansion coefficients were expected");
    if (!usable(constants) && filled && isotropic) failOnFiller(kind, polymer);
    if (!usable(constants)) failOnElasticData(kind, "the result isn't finite and positive");
    materialConstants[kind] = constants;
  }
}

}  // namespace keld
