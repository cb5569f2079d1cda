// A file in the making has a name of its own and leaves nothing behind on any end.
#include "run/base/pending_file.h"

#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "support/input_test.h"

namespace keld {
namespace {

using testing_support::InputTest;

std::size_t filesIn(const std::filesystem::path& folder) {
  const std::filesystem::directory_iterator files(folder);
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

TEST_F(InputTest, APendingFileStandsBesideItsPlaceUntilItIsWhole) {
  const std::size_t before = filesIn(job_.folder());
  {
    PendingFile file(job_.path(".WR1"));
    ASSERT_TRUE(file.isOpen() && file.write("text"));
    EXPECT_TRUE(job_.has(".WR1." + std::to_string(::getpid())));
  }
  EXPECT_EQ(filesIn(job_.folder()), before);
  {
    PendingFile file(job_.path(".WR1"));
    EXPECT_TRUE(file.write("text") && file.finish());
  }
  EXPECT_EQ(job_.read(".WR1"), "text");
  EXPECT_EQ(filesIn(job_.folder()), before + 1);
}

TEST_F(InputTest, ASignalRemovesThePendingFile) {
  const std::size_t before = filesIn(job_.folder());
  for (const int number : {SIGTERM, SIGINT, SIGABRT}) {
    EXPECT_EXIT(
        {
          const PendingFile file(job_.path(".WR1"));
          ::raise(number);
        },
        testing::KilledBySignal(number), "");
    EXPECT_EQ(filesIn(job_.folder()), before) << number;
  }
}

}  // namespace
}  // namespace keld
