#include "support/input_test.h"

#include "places.h"

namespace keld::testing_support {

std::string seedOf(const std::string& reader, const std::string& name) {
  return readText(places::seeds / reader / name);
}

}  // namespace keld::testing_support
