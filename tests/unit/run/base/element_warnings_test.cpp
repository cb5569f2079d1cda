// Warnings about single elements: written out up to a limit for each kind, then counted.
#include "run/base/element_warnings.h"

#include "support/input_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using testing_support::InputTest;

TEST_F(InputTest, WarningsOfAKindAreCountedBehindTheFirstHundred) {
  for (int e = 1; e <= 105; ++e) vWarnOfElement(ElementWarning::D5016, "negative %d\n", e);
  vWarnOfElement(ElementWarning::D5015, "degenerate\n");

  EXPECT_THAT(report(), HasSubstr("negative 100\n<br>degenerate\n"));
  vTellCountedWarnings();
  EXPECT_THAT(report(),
              testing::EndsWith("<br>\n !! Warning !!  5 further messages D5016 were counted and not "
                                "written out.\n"));
  const std::string before = report();
  vTellCountedWarnings();
  EXPECT_EQ(report(), before);
}

}  // namespace
}  // namespace keld
