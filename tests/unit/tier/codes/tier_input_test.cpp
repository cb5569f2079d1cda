// Every fault of the arguments and parameters that a call finds before it sets anything up, and every setting
// that it adjusts: number, words, and the caller's arrays as they were.
#include "tier/codes/tier_input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "support/tier/tier_call.h"
#include "tier/api/tier.h"
#include "tier/store/parameters.h"
#include "tier/store/work_arrays.h"

namespace {

using testing::HasSubstr;
using testing_support::tier_call;
using tier::parm;
constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

struct Case {
  const char* name;
  int ierr;
  const char* words;
  void (*spoil)(tier_call&);
};

std::string name_of(const testing::TestParamInfo<Case>& tested) { return tested.param.name; }

template <class T>
bool same_bits(const std::vector<T>& x, const std::vector<T>& y) {
  if (x.size() != y.size()) return false;
  return x.empty() || std::memcmp(x.data(), y.data(), x.size() * sizeof(T)) == 0;
}

class Fault : public testing::TestWithParam<Case> {};

void expect_fault(tier_call call, const Case& c) {
  c.spoil(call);
  const auto before = call.s;

  call.run();

  EXPECT_EQ(call.ierr, c.ierr) << call.said;
  EXPECT_THAT(call.said, HasSubstr(std::string("*** ERROR: ") + c.words));
  EXPECT_TRUE(same_bits(call.s.ia, before.ia) && same_bits(call.s.ja, before.ja) &&
              same_bits(call.s.iu, before.iu) && same_bits(call.s.a, before.a) &&
              same_bits(call.s.f, before.f) && same_bits(call.s.u, before.u));
  EXPECT_EQ(call.ncyc_done, 0);
  EXPECT_EQ(call.res_out, -1.0);
  EXPECT_EQ(tier::memory().nisum, 0);
  EXPECT_EQ(tier::memory().ndsum, 0);
}

TEST_P(Fault, EndsTheCallWithItsNumberAndWords) { expect_fault(testing_support::poisson_call(), GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Arguments, Fault,
    testing::Values(
        Case{"NsysHigh", 50, "Parameter out of range <nsys>!",
             [](tier_call& x) { x.nsys = 1000, x.iscale = {0}; }},
        Case{"NsysAboveRows", 50, "Parameter out of range <nsys>!", [](tier_call& x) { x.nsys = 145; }},
        Case{"NoRows", 50, "Parameter out of range <nnu>!", [](tier_call& x) { x.nnu = 0; }},
        Case{"FewEntries", 50, "Parameter out of range <nnu>!", [](tier_call& x) { x.nna = 100; }},
        Case{"EpsNan", 20, "Illegal value of parameter <eps>!", [](tier_call& x) { x.eps = nan_value; }},
        Case{"ComplexityNan", 20, "Illegal value of parameter <a_cmplx>!",
             [](tier_call& x) { x.a_cmplx = nan_value; }},
        Case{"ChktolNan", 20, "Illegal value of parameter <chktol>!",
             [](tier_call& x) { x.chktol = nan_value; }},
        Case{"MatrixZero", 20, "Illegal value of parameter <matrix>!", [](tier_call& x) { x.matrix = 0; }},
        Case{"Isym", 20, "Illegal value of parameter <isym>!", [](tier_call& x) { x.matrix = 42; }},
        Case{"Irow0", 20, "Illegal value of parameter <irow0>!", [](tier_call& x) { x.matrix = 23; }},
        Case{"Iforce0NotReleased", 80, "Parameter setting not yet permitted <iforce0=3>",
             [](tier_call& x) { x.matrix = 223; }},
        Case{"ScalingDigits", 80, "Parameter setting not yet permitted <matrix: scaling digits of iforce0=6>",
             [](tier_call& x) { x.matrix = 2261; }},
        Case{"Iforce0Unknown", 20, "Illegal value of parameter <iforce0> in (tier_main)!",
             [](tier_call& x) { x.matrix = 228; }},
        Case{"Iextent", 20, "Illegal value of parameter <iextent>!", [](tier_call& x) { x.iswtch = 5420; }},
        Case{"NDefault", 20, "Illegal value of parameter <n_default>!",
             [](tier_call& x) { x.iswtch = 5114; }},
        Case{"NormTyp", 20, "Illegal value of parameter <norm_typ>!", [](tier_call& x) { x.iswtch = 51204; }},
        Case{"Iswit2", 80, "Parameter setting not yet permitted <iswit=2>",
             [](tier_call& x) { x.iswtch = 2120; }},
        Case{"Iswit9", 80, "Parameter setting not yet permitted <iswit=9>",
             [](tier_call& x) { x.iswtch = 9120; }},
        Case{"Igam", 20, "Illegal value of parameter <igam>!", [](tier_call& x) { x.ncyc = 7300100; }},
        Case{"Igam6NonSymmetric", 50, "Incorrect or inconsistent input <igam>!",
             [](tier_call& x) { x.ncyc = 6300100; }},
        Case{"Igam5HalfStored", 50, "Incorrect or inconsistent input <igam>!",
             [](tier_call& x) { x.ncyc = 5300100, x.matrix = 32; }},
        Case{"Ncgrad", 20, "Illegal value of parameter <ncgrad>!", [](tier_call& x) { x.ncyc = 1500100; }},
        Case{"KCycle", 80, "Parameter setting not yet permitted <ncyc<0: K-cycle>",
             [](tier_call& x) { x.ncyc = -1300100; }},
        Case{"Napproach", 20, "Illegal value of parameter <napproach>!", [](tier_call& x) { x.nsolve = 60; }},
        Case{"Nxtyp", 20, "Illegal value of parameter <nxtyp>!", [](tier_call& x) { x.nsolve = 17; }},
        Case{"NxtypNotReleased", 80, "Parameter setting not yet permitted <nxtyp=9>",
             [](tier_call& x) { x.nsolve = 19; }},
        Case{"Internal", 20, "Illegal value of parameter <internal>6>!",
             [](tier_call& x) { x.nsolve = 307; }},
        Case{"ScalarNorms", 50, "Norm-based approach not meaningful in scalar case!",
             [](tier_call& x) { x.nsolve = 103; }},
        Case{"Nprim", 20, "Illegal value of parameter <nprim>!", [](tier_call& x) { x.nsolve = 30005; }},
        Case{"NintWeights", 20, "Illegal value of parameter <nint_weights>5>!",
             [](tier_call& x) { x.nsolve = 3000006; }},
        Case{"NintPat", 20, "Illegal value of parameter <nint_pat>2>!",
             [](tier_call& x) { x.nsolve = 30000013; }}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Parameters, Fault,
    testing::Values(
        Case{"InnerAccel", 20, "Illegal value of parameter <inner_accel>!",
             [](tier_call&) { parm().inner_accel = 0; }},
        Case{"NstarTyp", 20, "Illegal value of parameter <nstar_typ>!",
             [](tier_call&) { parm().nstar_typ = 4; }},
        Case{"NdynSmo", 20, "Illegal value of parameter <ndyn_smo>!",
             [](tier_call&) { parm().ndyn_smo = 12; }},
        Case{"IcritsNone", 20, "Illegal value of parameter <icrits>!",
             [](tier_call&) { parm().icrits = 1000; }},
        Case{"IcritsKind", 20, "Illegal value of parameter <icrits>!",
             [](tier_call&) { parm().icrits = 310; }},
        Case{"IautoStop", 20, "Illegal value of parameter <iauto_stop>!",
             [](tier_call&) { parm().iauto_stop = 21; }},
        Case{"NtypAccel", 20, "Illegal value of parameter <ntyp_accel>!",
             [](tier_call&) { parm().ntyp_accel = 13; }},
        Case{"NtypGalerkin", 20, "Illegal value of parameter <ntyp_galerkin>!",
             [](tier_call&) { parm().ntyp_galerkin = 7; }},
        Case{"GmaxMultipass", 20, "Illegal value of parameter <gmax_multipass>!",
             [](tier_call&) { parm().gmax_multipass = 1.5; }},
        Case{"Ncg", 20, "Illegal value of parameter <ncg>!", [](tier_call&) { parm().ncg = 0; }},
        Case{"Nwt", 20, "Illegal value of parameter <nwt>!", [](tier_call&) { parm().nwt = 0; }},
        Case{"Ntr", 20, "Illegal value of parameter <ntr>!", [](tier_call&) { parm().ntr = -1; }},
        Case{"NtrDigit", 20, "Illegal value of parameter <ntr>!", [](tier_call&) { parm().ntr = 3; }},
        Case{"PrimNorm", 20, "Illegal value of parameter <prim_norm>!",
             [](tier_call&) { parm().prim_norm = 3; }},
        Case{"Ecg", 20, "Illegal value of parameter <ecg>!", [](tier_call&) { parm().ecg = 0.0; }},
        Case{"Levelx", 20, "Illegal value of parameter <levelx>!", [](tier_call&) { parm().levelx = 0; }},
        Case{"NrcTwoDigits", 20, "Illegal value of parameter <nrc>!", [](tier_call&) { parm().nrc = 12; }},
        Case{"NrcHigh", 20, "Illegal value of parameter <nrc>!", [](tier_call&) { parm().nrc = 100; }},
        Case{"IterPre", 20, "Illegal value of parameter <iter_pre>!",
             [](tier_call&) { parm().iter_pre = -1; }},
        Case{"RealInfinite", 20, "Illegal value of parameter <rho_min>!",
             [](tier_call&) { parm().rho_min = infinite; }},
        Case{"CsetRange", 20, "Illegal value of parameter <cset_unknown>!",
             [](tier_call&) { parm().cset_unknown = 3; }},
        Case{"CsetNotReleased", 80, "Parameter setting not yet permitted <cset_unknown>",
             [](tier_call&) { parm().cset_unknown = -5; }},
        Case{"ClOrder", 20, "Illegal value of parameter <cl_order>!",
             [](tier_call&) { parm().cl_order = 9; }},
        Case{"Isteering", 80, "Parameter setting not yet permitted <isteering>",
             [](tier_call&) { parm().isteering = 1; }},
        Case{"FinestSolver", 80, "Parameter setting not yet permitted <clsolver_finest>1>",
             [](tier_call&) { parm().clsolver_finest = 2; }},
        Case{"Schwarz", 80, "Parameter setting not yet permitted <nblk_solve: Schwarz blocks>",
             [](tier_call&) { parm().nblk_solve = 3; }},
        Case{"ModifyMatGuess", 50, "Only ifirst=0 or 1 possible now (modify_mat)",
             [](tier_call& x) { parm().modify_mat = 2, x.ifirst = 12; }},
        Case{"ScaleFactor", 20, "modify_mat: scale factor not in range [1.0:1.1]",
             [](tier_call&) { parm().modify_mat = 2, parm().factor_matrix_scale = 1.2; }},
        Case{"Ihuge", 10, "ihuge too small: ihuge < nna in (tier_dimensions)",
             [](tier_call&) { parm().ihuge = 200; }},
        Case{"Overflow", 10, "Potential integer overflow for nda in (tier_dimensions)",
             [](tier_call& x) { x.a_cmplx = 1e9; }},
        Case{"UnitWithoutFile", 1, "A problem with a specified logfile occurred (tier_main)!",
             [](tier_call&) { parm().logio = 5; }}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Matrix, Fault,
    testing::Values(
        Case{"LastPointer", 40, "Wrong pointer value: ia0(nnu+1)-1 <> nna in (tier_main)!",
             [](tier_call& x) { x.s.ia.back() += 1; }},
        Case{"FirstPointer", 40, "ia(1)=1 expected!", [](tier_call& x) { x.s.ia[0] = 2; }},
        Case{"EmptyRow", 40, "Array <ia> not properly defined! Row 2 has no entry",
             [](tier_call& x) { x.s.ia[2] = x.s.ia[1]; }},
        Case{"ColumnZero", 40, "Array <ja> not properly defined! Row 1: column 0 is not within 1 to 144",
             [](tier_call& x) { x.s.ja[1] = 0; }},
        Case{"ColumnHigh", 40, "Array <ja> not properly defined! Row 144: column 145",
             [](tier_call& x) { x.s.ja.back() = 145; }},
        Case{"DiagonalPlace", 40, "Array <ja> not properly defined! Row 1: column 2 stands in the place",
             [](tier_call& x) { x.s.ja[0] = 2; }},
        Case{"DiagonalZero", 40, "Array <a> not properly defined! Row 1: the diagonal entry is zero",
             [](tier_call& x) { x.s.a[0] = 0.0; }},
        Case{"EntryNan", 211, "NaN detected in (matrix_check)!", [](tier_call& x) { x.s.a[3] = nan_value; }},
        Case{"EntryInfinite", 210, "Infinity detected in (matrix_check)!",
             [](tier_call& x) { x.s.a[3] = -infinite; }},
        Case{"OtherTriangle", 40, "Array <ja> not properly defined! Row 2: column 1 belongs to the triangle",
             [](tier_call& x) { x.matrix = 32; }},
        Case{"ColumnTwice", 40, "Array <ja> not properly defined! Row 14: column 2 stands twice",
             [](tier_call& x) {
               x.chktol = 0.0, x.s.ja[static_cast<std::size_t>(x.s.ia[13])] =
                                   x.s.ja[static_cast<std::size_t>(x.s.ia[13]) + 1] = 2;
             }},
        Case{"DiagonalSign", 40, "Array <a> not properly defined! Row 1: the diagonal entry is negative",
             [](tier_call& x) { x.chktol = 0.0, x.s.a[0] = -4.0; }},
        Case{"NoCounterpart", 50, "However, it is not even symmetrically stored!",
             [](tier_call& x) { x.chktol = 0.0, x.matrix = 12, x.s.ja[1] = 100; }},
        Case{"ReStartWithoutSetUp", 51, "TIER re-start requires an initial call with iswit=4!",
             [](tier_call& x) { x.iswtch = 1120; }}),
    name_of);

class CoupledFault : public Fault {};

TEST_P(CoupledFault, EndsTheCallWithItsNumberAndWords) {
  expect_fault(testing_support::coupled_call(), GetParam());
}

void point_based(tier_call& x) { x.nsolve = 40001; }

INSTANTIATE_TEST_SUITE_P(
    Functions, CoupledFault,
    testing::Values(
        Case{"Force1Coupled", 20, "Setting of parameter <iforce0-4> only legal if NSYS=1 (tier_main)!",
             [](tier_call& x) { x.matrix = 224; }},
        Case{"ShortIu", 40, "Array <iu> not properly declared!", [](tier_call& x) { x.ndiu = 1; }},
        Case{"Iscale", 20, "Illegal value of parameter <iscale>!", [](tier_call& x) { x.iscale[1] = 2; }},
        Case{"FunctionHigh", 40, "Array <iu> not properly defined! Element 5 is not within 1 to 2",
             [](tier_call& x) { x.s.iu[4] = 3; }},
        Case{"PointHigh", 40, "Array <ip> not properly defined! Element 7 is not within 1 to 288",
             [](tier_call& x) { x.s.ip[6] = 1000000; }},
        Case{"BlockSmootherWithoutPoints", 50, "Incorrect or inconsistent input <nxtyp>!",
             [](tier_call& x) { x.nsolve = 25, x.ndip = 1; }},
        Case{"PointOrder", 40, "Variables are not point-wise ordered!",
             [](tier_call& x) { point_based(x), std::swap(x.s.ip[1], x.s.ip[2]); }},
        Case{"FunctionTwice", 40, "Unknown(s) multiply defined at a point!",
             [](tier_call& x) { point_based(x), x.s.iu[1] = 1; }},
        Case{"FunctionOrder", 40, "Unknowns are not ordered consecutively at each point!",
             [](tier_call& x) { point_based(x), std::swap(x.s.iu[0], x.s.iu[1]); }},
        Case{"DummyFirst", 40, "Dummy primary unknown >nprim> has to be stored last!",
             [](tier_call& x) { x.nsolve = 400011; }}),
    name_of);

class Adjusted : public testing::TestWithParam<Case> {};

TEST_P(Adjusted, WarnsAndSolves) {
  tier_call call = testing_support::coupled_call();
  GetParam().spoil(call);

  call.run();

  EXPECT_EQ(call.ierr, GetParam().ierr) << call.said;
  EXPECT_THAT(call.said, HasSubstr(std::string("+++ WARNG: ") + GetParam().words));
  EXPECT_LT(call.relative_residual(), 1.1e-8);
}

INSTANTIATE_TEST_SUITE_P(
    Settings, Adjusted,
    testing::Values(Case{"VariableBased", -1, "The coupled system is solved as if it were scalar",
                         [](tier_call& x) { x.nsolve = 10; }},
                    Case{"NoPoints", -1, "Using the unknown-based approach instead!",
                         [](tier_call& x) { x.nsolve = 30, x.ndip = 1; }},
                    Case{"FunctionUnused", -40, "There exist(s) 1 unknown(s) without variable attached!",
                         [](tier_call& x) { x.nsys = 3, x.chktol = 0.0; }},
                    Case{"RowSums", -50, "Parameter <irow0> may be wrong. Check!",
                         [](tier_call& x) { x.iscale[0] = 1, x.chktol = 1e-6; }},
                    Case{"Symmetry", -50, "Parameter <isym> may be wrong. Check!",
                         [](tier_call& x) { x.matrix = 12, x.chktol = 1e-6, x.s.a[1] *= 1.1; }},
                    Case{"MemoryCounters", -60, "Integers left: 0, Doubles left: 3",
                         [](tier_call&) { tier::memory().ndsum = 3; }},
                    Case{"BlockScaling", -50, "block scaling requested but not computed.",
                         [](tier_call&) { parm().block_scale = 1; }},
                    Case{"OldResiduals", -50, "num_old_res < num_old_apps! Reset: num_old_res=num_old_apps",
                         [](tier_call&) { parm().iauto_stop = 110003; }},
                    Case{"NoEffect", -50, "Parameter <tau_uzawa> has no effect in this version!",
                         [](tier_call&) { parm().tau_uzawa = 0.5; }}),
    name_of);

TEST(TierInput, DecodesTheCodesOfTheAnalysis) {
  tier::call_arguments call;
  call.nnu = 3000;
  call.nna = 90000;
  call.nsys = 3;
  call.ndiu = call.ndip = 3000;
  call.matrix = 21;
  call.nsolve = 20;
  call.eps = 1e-8;
  call.ncyc = 1300250;
  call.iswtch = 5120;

  const tier::controls c = tier::tier_input(call);

  using namespace tier;
  EXPECT_EQ(std::tuple(c.isym, c.irow0, c.nstyp, c.nxtyp, c.nint_weights, c.nint_pat),
            std::tuple(symmetry::general, 1, approach::by_unknowns, smoother_kind::gauss_seidel,
                       weight_source::entries, weight_pattern::of_matrix));
  EXPECT_EQ(std::tuple(c.igam, c.ncgrad, c.nkdim, c.ncycle),
            std::tuple(cycle_kind::v, accelerator::gmres, 30, 250));
  EXPECT_EQ(std::tuple(c.iswit, c.iextent, c.n_default, c.norm_typ, c.ncg, c.nwt),
            std::tuple(run_kind::set_up_once, 1, 20, norm_kind::euclidean, 4, 2));
  EXPECT_EQ(std::tuple(c.levelx, c.nptmn, c.nrc, c.nrd, c.nru),
            std::tuple(25, 100, coarsest_solver::sparse_gauss, 131, 131));
  EXPECT_EQ(std::tuple(c.ecg, c.ewt, c.etr, c.a_cmplx, c.one_level),
            std::tuple(21.25, 0.2, 12.2, 2.5, false));

  parm().levelx = 1;  // plain sweeps
  for (const auto& [force, ncyc, ncgrad, nrd] : {std::tuple{false, 1100250, accelerator::bicgstab, 12},
                                                 {false, 1400250, accelerator::gmres, 12},
                                                 {true, 1100250, accelerator::cg, 131}}) {
    parm().force_accel = force;
    call.ncyc = ncyc;
    const tier::controls other = tier::tier_input(call);
    EXPECT_EQ(std::tuple(other.ncgrad, other.nrd, other.one_level), std::tuple(ncgrad, nrd, true));
  }
}

// Scaling one side of a symmetric matrix leaves it non-symmetric to the choice of the accelerator.
TEST(TierInput, TakesAMatrixScaledOnOneSideForNonSymmetric) {
  using tier::accelerator;
  struct scaled {
    int matrix, modify_mat;
    accelerator chosen;
  };
  for (const scaled& s : {scaled{12, 0, accelerator::cg}, scaled{126, 0, accelerator::bicgstab},
                          scaled{127, 0, accelerator::bicgstab}, scaled{12, 2, accelerator::bicgstab},
                          scaled{12, 3, accelerator::bicgstab}, scaled{12, 23, accelerator::bicgstab}}) {
    tier::call_arguments call;
    call.nnu = call.nna = 500;
    call.matrix = s.matrix;
    call.ncyc = 1100250;
    parm().modify_mat = s.modify_mat;
    EXPECT_EQ(tier::tier_input(call).ncgrad, s.chosen) << s.matrix << ' ' << s.modify_mat;
  }
}

TEST(TierInput, ResolvesUserValues) {
  tier::call_arguments call;
  call.nnu = call.nna = 500;
  call.matrix = 12;
  call.ncyc = 1193;
  call.iswtch = 51993;
  parm().nrd = 4;
  parm().nru = 0;
  parm().nrc = 73;
  parm().levelx = -6;
  parm().ecg = -1.0;
  parm().ecg_default = 20.5;
  parm().ewt_default = 0.3;
  parm().ntr = 104;
  parm().iauto_stop = 1105;

  const tier::controls c = tier::tier_input(call);

  EXPECT_EQ(
      std::tuple(c.nrd, c.nru, c.nrc),
      std::tuple(431, -431, tier::coarsest_solver::sparse_gauss));  // conjugate gradients: symmetric sweeps
  EXPECT_EQ(std::tuple(c.nkdim, c.ncycle, c.n_default), std::tuple(20, 3, 20));
  EXPECT_EQ(std::tuple(c.levelx, c.coarse_trace, c.ecg, c.norm_typ),
            std::tuple(6, true, 20.5, tier::norm_kind::energy));
  EXPECT_EQ(c.ewt, 0.2);  // unset, so that ewt_default doesn't count
  EXPECT_DOUBLE_EQ(c.galerkin_eps, 1e-4);
  EXPECT_EQ(std::tuple(c.num_old_res, c.num_old_apps), std::tuple(5, 0));
}

}  // namespace
