// Words of the command line.
#include "run/command_line.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace keld {
namespace {

struct WordsCase {
  std::vector<std::string_view> words;
  const char *base, *install;
  int limit;
};

class CommandLineWords : public testing::TestWithParam<WordsCase> {};

TEST_P(CommandLineWords, AreJoinedBetweenTheMarkers) {
  const CommandLine line = parseCommandLine(GetParam().words);
  EXPECT_EQ(line.baseName, GetParam().base);
  EXPECT_EQ(line.installRoot, GetParam().install);
  EXPECT_EQ(line.threadLimit, GetParam().limit);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CommandLineWords,
    testing::Values(WordsCase{{"my", "", "part", "1@", "in", "stall/", "2@"}, "my  part", "in stall/", 0},
                    WordsCase{{"a", "1@", "b", "1@", "c", "2@", "d", "2@"}, "a 1@ b", "c 2@ d", 0},
                    WordsCase{{"a", "2@", "b"}, "", "a", 0}, WordsCase{{"1@", "2@x", "2@"}, "", "2@x", 0},
                    WordsCase{{"a", "2@", "1@", "b"}, "a 2@", "", 0},
                    WordsCase{{"-cpu", "12x", "a", "1@", "2@", "-cpu"}, "-cpu 12x a", "", 0},
                    WordsCase{{"a", "1@", "2@", "-cpu", "-3"}, "a", "", -3}));

}  // namespace
}  // namespace keld
