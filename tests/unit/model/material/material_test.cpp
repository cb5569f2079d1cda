// Material constants against closed forms, densities of every model, faults of the polymer data.
#include "model/material/material.h"

#include <gmock/gmock.h>

#include <cmath>

#include "input/process_record.h"
#include "support/model_test.h"

namespace keld {
namespace {

using testing::HasSubstr;

CountedList listOf(std::initializer_list<double> values) {
  CountedList list;
  for (double value : values) list.value[++list.count] = value;
  return list;
}

TEST(Stiffness, IsotropicConstantsGiveLame) {
  const double e = 2e10, nu = 0.3, g = e / (2.0 * (1.0 + nu)),
               lambda = e * nu / ((1.0 + nu) * (1.0 - 2.0 * nu));
  const Matrix6 c = stiffnessOf({.e11 = e, .e22 = e, .g12 = g, .g23 = g, .nu12 = nu, .nu23 = nu});
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = 0; j < 6; ++j) {
      const double exact = i < 3 && j < 3 ? lambda + (i == j ? 2.0 * g : 0.0) : i == j ? g : 0.0;
      EXPECT_NEAR(c[i][j], exact, 1e-12 * e) << i << ' ' << j;
    }
  }
}

struct DensityCase {
  std::string name;
  CountedList pvt;
  double pressure, temperature;  // dyn/cm2, K
  double density;                // g/cm3, by the formulas in bc or by hand
};

class Density : public testing::TestWithParam<DensityCase> {};

TEST_P(Density, FollowsTheFormOfTheList) {
  const DensityCase& c = GetParam();
  EXPECT_NEAR(polymerDensity(c.pvt, c.pressure, c.temperature), c.density, 1e-9);
}

// A two-domain polymer with transition at 400 K + 1e-8 x pressure; melt and solid branch meet in neither
// case, so that a wrong branch shows.
const CountedList tait = listOf({1.0, 1e-3, 2e9, 4e-3, 0.9, 5e-4, 3e9, 3e-3, 400.0, 1e-8, 0.05, 0.1, 1e-9});
CountedList taitOfTen() {
  CountedList list = tait;
  list.count = 10;
  return list;
}

INSTANTIATE_TEST_SUITE_P(
    Forms, Density,
    testing::Values(
        DensityCase{"Constant", listOf({1.04}), 1e7, 500.0, 1.04},
        DensityCase{"SpencerGilmore", listOf({1.5e9, 1.25, 7e5}), 5e8, 400.0,
                    1.0 / (400.0 * 7e5 / 2e9 + 0.8)},
        DensityCase{"Melt", tait, 0.0, 450.0, 1.0 / 1.05},
        DensityCase{"MeltAtTheTransition", tait, 1e9, 410.0,
                    1.0 / (1.01 * (1.0 - 0.0894 * std::log(1.0 + 1e9 / (2e9 * std::exp(-0.04)))))},
        DensityCase{"SolidBelowTheTransition", tait, 1e9, 409.0,
                    1.0 / (0.9045 * (1.0 - 0.0894 * std::log(1.0 + 1e9 / (3e9 * std::exp(-0.027)))) +
                           0.05 * std::exp(0.9 - 1.0))},
        DensityCase{"TenCoefficientsHaveNoTransitionTerm", taitOfTen(), 0.0, 300.0, 1.0 / 0.85}),
    [](const auto& test) { return test.param.name; });

class MaterialSetup : public testing_support::ModelTest {
 protected:
  void SetUp() override {
    ModelTest::SetUp();
    testing_support::loadModel(testing_support::plateMesh(1, 1, 1.0, 1.0));
    fillerValues = {-1.0, -1.0, -1.0, -1.0, -1.0};
  }
  void fill(int kind, double weight, double volume) {
    processRecord.fillerPresent = 1;
    processRecord.fractionKind = kind;
    processRecord.fillerWeightFraction = weight;
    processRecord.fillerVolumeFraction = volume;
  }
};

TEST_F(MaterialSetup, NoFillerInTheFillerRuleGivesThePolymer) {
  materialSetup();
  const MaterialConstants plain = materialConstants[1];
  fill(2, 0.0, 0.0);
  materialSetup();
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = 0; j < 6; ++j) {
      EXPECT_NEAR(materialConstants[1].stiffness[i][j], plain.stiffness[i][j], 1e-9 * 2e10);
    }
  }
  EXPECT_NEAR(materialConstants[1].expansionLongitudinal, 7e-5, 1e-15);
  EXPECT_NEAR(materialConstants[1].expansionTransverse, 7e-5, 1e-15);
}

TEST_F(MaterialSetup, VolumeFractionAndWeightFractionAreInverseForAPolymerOfKnownDensity) {
  fill(2, 0.0, 0.2);
  materialSetup();
  // 0.2 cm3 of 2.5 g/cm3 in 0.8 cm3 of 1 g/cm3
  EXPECT_NEAR(processRecord.fillerWeightFraction, 0.5 / 1.3, 1e-14);
  EXPECT_NEAR(density(1, 0.0, 300.0), 1.3, 1e-14);
}

TEST_F(MaterialSetup, WeightFractionTakesTheDensityThatIsBlendedAlready) {
  fill(1, 0.3, 0.0);
  materialSetup();
  const double blended = 1.0 / (0.7 + 0.3 / 2.5);
  EXPECT_NEAR(processRecord.fillerVolumeFraction, 0.12 / ((0.4 - 1.0 / blended) * 0.3 + 1.0 / blended),
              1e-14);
}

// v = 0.2 of 70 GPa, 0.23, 3.5e-6 / K in 2 GPa, 0.3, 7e-5 / K. Halpin-Tsai across: g = 0.2 x 34 / 36.
// Polymer: G = 2 / 2.6, K = 2 / 1.2 GPa; G23 = G (1 + v / ((K + 7/3 G) / (2 K + 8/3 G) + G / (Gf - G))), Gf =
// 70 / 2.46.
TEST_F(MaterialSetup, AcrossTheFibresTheFilledMaterialHasItsClosedForms) {
  fill(2, 0.0, 0.2);
  materialSetup();
  const Matrix6& m = materialConstants[1].stiffness;
  const double difference = 1.0 / (m[1][1] - m[1][2]);
  const double sum = 1.0 / (m[1][1] + m[1][2] - 2.0 * m[0][1] * m[0][1] / m[0][0]);
  const double g = 0.2 * 34.0 / 36.0, e22 = 2e10 * (1.0 + g) / (1.0 - g);
  EXPECT_NEAR(2.0 / (difference + sum), e22, 1e-9 * e22);
  const double shear = 2e10 / 2.6, bulk = 2e10 / 1.2, fillerShear = 7e11 / 2.46;
  const double g23 = shear * (1.0 + 0.2 / ((bulk + 7.0 / 3.0 * shear) / (2.0 * bulk + 8.0 / 3.0 * shear) +
                                           shear / (fillerShear - shear)));
  EXPECT_NEAR(m[5][5], g23, 1e-9 * g23);
}

TEST_F(MaterialSetup, FilledMaterialIsStifferAndShrinksLessAlongTheFibres) {
  fill(2, 0.0, 0.2);
  materialSetup();
  const MaterialConstants& m = materialConstants[1];
  // Ef/Em = 35: eta = 34/85 = 0.4, E11 = Em (1 + 50 x 0.08) / (1 - 0.08)
  const double e11 = 2e10 * 5.0 / 0.92;
  // Compliance back from stiffness by Cramer's rule on the upper left block (rows 2 and 3 are alike).
  const double sum = m.stiffness[1][1] + m.stiffness[1][2];
  EXPECT_NEAR(m.stiffness[0][0] - 2.0 * m.stiffness[0][1] * m.stiffness[0][1] / sum, e11, 1e-9 * e11);
  const double nu12 = 0.8 * 0.3 + 0.2 * 0.23;
  EXPECT_NEAR(m.stiffness[0][1] / sum, nu12, 1e-12);
  EXPECT_LT(m.expansionLongitudinal, 2.5e-5);
  EXPECT_GT(m.expansionTransverse, m.expansionLongitudinal);
}

TEST_F(MaterialSetup, ListsOfAnotherLengthTakeThePreviousKind) {
  polymerRecord[2].modulus = listOf({3e10, 2e10, 1e10});
  materialSetup();
  EXPECT_EQ(materialConstants[2].stiffness, materialConstants[1].stiffness);
}

struct FillerCase {
  int kind;  // 1 by weight, 2 by volume
  double fraction;
  const char* words;
};

class TooMuchFiller : public MaterialSetup, public testing::WithParamInterface<FillerCase> {};

TEST_P(TooMuchFiller, IsToldWithTheGreatestFractionThatWorks) {
  const FillerCase& filler = GetParam();
  const auto fillBy = [&](double part) {
    fill(filler.kind, filler.kind == 1 ? part : 0.0, filler.kind == 2 ? part : 0.0);
  };
  fillBy(filler.fraction);
  const std::string message = failureOf(materialSetup);
  ASSERT_THAT(message, HasSubstr(filler.words));
  const std::string mark = "the greatest that works is ";
  const double greatest = std::stod(message.substr(message.find(mark) + mark.size())) / 100.0;
  fillBy(greatest);
  materialSetup();
  fillBy(greatest + 1e-3);
  EXPECT_THAT(failureOf(materialSetup), HasSubstr("filler fraction"));
}

INSTANTIATE_TEST_SUITE_P(Fractions, TooMuchFiller,
                         testing::Values(FillerCase{2, 0.6, "A filler fraction of 60 % by volume"},
                                         FillerCase{1, 0.9, "A filler fraction of 90 % by weight"},
                                         FillerCase{2, 1.2, "A filler fraction of 120 % by volume"}));

TEST_F(MaterialSetup, DataWithoutAStiffnessEndTheRun) {
  const PolymerRecord good = polymerRecord[1];
  polymerRecord[1].modulus = listOf({3e10, 2e10, 1e10});
  EXPECT_THAT(failureOf(materialSetup), HasSubstr("polymer kind 1"));

  polymerRecord[1] = good;
  polymerRecord[2].modulus = listOf({0.0, 0.0});
  EXPECT_THAT(failureOf(materialSetup), HasSubstr("polymer kind 2"));

  polymerRecord[2] = good;
  polymerRecord[1].pvt = listOf({0.0});
  fill(1, 0.3, 0.0);
  EXPECT_THAT(failureOf(materialSetup), HasSubstr("volume fraction"));
  // Where the lists hold the composite's own constants the fraction isn't needed.
  polymerRecord[1].modulus = polymerRecord[2].modulus = listOf({3e10, 2e10});
  materialSetup();
}

}  // namespace
}  // namespace keld
