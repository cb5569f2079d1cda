// Files with one place damaged, each of which must end the run in a message of its own. Used by the tests of
// the readers, which hold the tables.
#pragma once

#include "support/input_test.h"

namespace keld::testing_support {

/// A seed of a reader in which `what` stands as `by`; the message holds `words`.
struct Damage {
  const char *reader, *what, *by, *words;
};

class DamagedInput : public InputTest, public testing::WithParamInterface<Damage> {
 protected:
  void expectItsWords() {
    const Damage& damage = GetParam();
    const std::string text = replaced(seedOf(damage.reader), damage.what, damage.by);
    EXPECT_THAT(refusalOf([&] { fuzz::readerNamed(damage.reader).read(text); }),
                testing::HasSubstr(damage.words));
  }
};

}  // namespace keld::testing_support
