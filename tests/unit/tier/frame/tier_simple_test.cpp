// TIER_SIMPLE and the parameter files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "support/tier/tier_call.h"
#include "tier/api/tier.h"
#include "tier/store/parameters.h"
#include "tier/store/work_arrays.h"

namespace {

using testing::HasSubstr;
using testing_support::poisson_call;
using testing_support::tier_call;
using tier::parm;

/// A folder of its own as current folder, with an input file if `text` is given.
class InFolder : public testing::Test {
 protected:
  void SetUp() override {
    former_ = std::filesystem::current_path();
    folder_ = std::filesystem::path(testing::TempDir()) / ("tier_simple_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder_);
    std::filesystem::current_path(folder_);
  }
  void TearDown() override {
    std::filesystem::current_path(former_);
    std::filesystem::remove_all(folder_);
  }
  static void write(const std::string& name, const std::string& text) { std::ofstream(name) << text; }

 private:
  std::filesystem::path former_, folder_;
};

using TierSimple = InFolder;
using ParameterFile = InFolder;

TEST_F(TierSimple, DoesNothingWithoutFile) {
  tier_call call = poisson_call();
  call.run_simple();
  EXPECT_EQ(std::tuple(call.ierr, call.ncyc_done, call.res_out), std::tuple(0, 0, -1.0));
  EXPECT_THAT(call.said, HasSubstr("+++ WARNG: Nothing to do since iswtch=0: set it"));
}

TEST_F(TierSimple, TakesCodesAndParametersFromItsFile) {
  parm().allow_private_in = true;  // the file is read once
  write(
      "tier.in",
      "control = 12\niswtch=5120\r\nncyc=1300050\nidump=-1\n\niout=-1\neps=1.d-4\nnptmn = +20\nlogfile=\"\"\n"
      "keepmem=f\nhclose=1e-3\n");
  tier_call call = poisson_call(30);
  call.run_simple();
  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_LT(call.relative_residual(), 1.1e-4);
  EXPECT_GT(call.relative_residual(), 1e-9);
  EXPECT_EQ(parm().nptmn, 20);
}

TEST_F(TierSimple, TakesCodesThatWereSet) {
  for (const auto& [name, value] :
       {std::pair{"iswtch", 5120.0}, {"ncyc", 1300100.0}, {"eps", 1e-10}, {"idump", -1.0}, {"iout", -1.0}}) {
    const int length = static_cast<int>(std::string(name).size());
    TIER_SETCONTROL(name, &length, &value);
  }
  tier_call call = poisson_call();
  call.run_simple();
  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_LT(call.relative_residual(), 1.1e-10);

  TIER_LEAVE(&call.ierr);
  call.run_simple();
  EXPECT_EQ(call.ncyc_done, 0);
}

TEST_F(TierSimple, TriesAgainWithIlu) {
  write("temp.in",
        "iswtch=4120\nncyc=1000001\nidump=-1\niout=-1\nnrc=9\nclsolver_finest=1\nmatrix=223\nlogfile='  '\n");
  tier_call call = poisson_call();
  call.run_simple();
  EXPECT_GT(call.ierr, 0);  // neither that transformation nor a user solver is there

  parm().nsimple_emergency = 1;
  call.run_simple();
  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_LT(call.relative_residual(), 1.1e-8);
  for (const char* words : {"Last TIER run was not (fully) successful!", "trying ILU-BiCGstab now ...",
                            "... for original matrix ...", "... first guess u reset to zero ..."})
    EXPECT_THAT(call.said, HasSubstr(words));
  EXPECT_EQ(std::tuple(parm().levelx, parm().nrc, parm().force_accel),
            std::tuple(tier::unset_integer, 9, false));
  // The file asked for a hierarchy that stays; the second run sets up for itself and cleans up.
  EXPECT_EQ(std::pair(tier::memory().nisum, tier::memory().ndsum),
            std::pair(std::int64_t{0}, std::int64_t{0}));
}

TEST_F(ParameterFile, IsReadOnlyWhenBothSwitchesAllowIt) {
  write("tier.in", "iscale(1)=0\nnsys=1\nncyc=1300002\n");
  tier_call call = poisson_call(20);
  call.run();
  EXPECT_EQ(call.ierr, 0);
  EXPECT_FALSE(parm().allow_filnam_in);

  parm().allow_filnam_in = parm().allow_private_in = true;
  parm().nptmn = 10;
  call.eps = 1e-14;
  call.run();
  EXPECT_EQ(std::pair(call.ierr, call.ncyc_done), std::pair(-852, 2)) << call.said;
}

struct BadLine {
  const char* name;
  const char* line;
  const char* words;
};

class ParameterFileFault : public InFolder, public testing::WithParamInterface<BadLine> {};

TEST_P(ParameterFileFault, NamesFileAndLine) {
  write("tier.in", std::string("nptmn=20\n") + GetParam().line + "\n");
  parm().allow_private_in = true;
  tier_call call = poisson_call();
  call.run();
  EXPECT_EQ(call.ierr, 1);
  EXPECT_THAT(call.said,
              HasSubstr(std::string("read_input_parms: ") + GetParam().words + " (tier.in, line 2)"));
}

INSTANTIATE_TEST_SUITE_P(
    Lines, ParameterFileFault,
    testing::Values(BadLine{"NoEquals", "nptmn 20", "a line name=value is expected"},
                    BadLine{"Unknown", "nptmm=20", "unknown variable >nptmm<"},
                    BadLine{"SimpleOnly", "control=22", "unknown variable >control<"},
                    BadLine{"Integer", "nptmn=2.5", "argument of variable >nptmn< has unexpected type!"},
                    BadLine{"TooLarge", "nptmn=99999999999",
                            "argument of variable >nptmn< has unexpected type!"},
                    BadLine{"Real", "rho_ok=fast", "argument of variable >rho_ok< has unexpected type!"},
                    BadLine{"Logical", "keepmem=1", "argument of variable >keepmem< has unexpected type!"},
                    BadLine{"Text", "logfile=x.log", "argument of variable >logfile< has unexpected type!"},
                    BadLine{"Iscale", "iscale(26)=1", "unknown variable >iscale(26)<"}),
    [](const testing::TestParamInfo<BadLine>& tested) { return tested.param.name; });

}  // namespace
