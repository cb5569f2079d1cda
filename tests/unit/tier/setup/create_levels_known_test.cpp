// Whole hierarchies against independently computed ones: states and patterns to the last entry, weights and
// operators to 1e-10 of the largest, counters and the rule that ended coarsening.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include "places.h"
#include "support/tier/sparse_system.h"
#include "tier/codes/setup_data.h"
#include "tier/setup/create_levels.h"
#include "tier/store/threads.h"

namespace {

using namespace testing_support;
using entries = std::map<std::pair<int, int>, double>;

const std::string data = places::data.string() + "/tier/";

struct expectation {
  tier::controls settings;
  std::map<std::string, std::string> counters;  // "STRENGTH level=1" -> the rest of its line
  int levels = 0;
  std::string stop;
};

expectation read_expected(const std::string& path) {
  std::ifstream in(path);
  expectation e;
  e.settings.ncg = 4;
  e.settings.nwt = 2;
  e.settings.dump_level = -1;
  e.settings.ntyp_galerkin = 2;
  std::string line;
  std::getline(in, line);
  std::istringstream words(line.substr(line.find("--")));
  std::string word;
  int value = 0;
  while (words >> word >> value) {
    if (word == "--nptmn") e.settings.nptmn = value;
    if (word == "--ncg") e.settings.ncg = value;
    if (word == "--nwt") e.settings.nwt = value;
  }
  while (std::getline(in, line)) {
    const auto second_blank = line.find(' ', line.find(' ') + 1);
    if (line.starts_with("STOP")) {
      e.levels = std::stoi(line.substr(line.find('=') + 1));
      const auto quote = line.find('"');
      e.stop = line.substr(quote + 1, line.rfind('"') - quote - 1);
    } else if (line.starts_with("STRENGTH") || line.starts_with("SPLIT") || line.starts_with("INTERP")) {
      e.counters[line.substr(0, second_blank)] = line.substr(second_blank + 1);
    }
  }
  return e;
}

std::vector<int> read_states(const std::string& path) {
  std::ifstream in(path);
  std::vector<int> states;
  for (int i = 0, state = 0; in >> i >> state;) states.push_back(state);
  return states;
}

entries read_entries(const std::string& path) {
  std::ifstream in(path);
  entries e;
  int i = 0, j = 0;
  for (double v = 0.0; in >> i >> j >> v;) e[{i, j}] = v;
  return e;
}

template <class Pointers, class Columns, class Values>
entries entries_of(int n, const Pointers& ia, const Columns& ja, const Values& a) {
  entries e;
  for (int i = 1; i <= n; ++i)
    for (int p = ia[i]; p < ia[i + 1]; ++p) e[{i, ja[p]}] += a[p];
  return e;
}

void expect_equal(const entries& actual, const entries& expected, const std::string& what) {
  double largest = 0.0;
  for (const auto& [place, v] : expected) largest = std::max(largest, std::abs(v));
  ASSERT_GT(largest, 0.0) << what;
  ASSERT_EQ(actual.size(), expected.size()) << what;
  auto e = expected.begin();
  for (const auto& [place, v] : actual) {
    ASSERT_EQ(place, e->first) << what;
    ASSERT_NEAR(v, e->second, 1e-10 * largest) << what << ' ' << place.first << ' ' << place.second;
    ++e;
  }
}

std::string text_of(const tier::strength_counts& n) {
  std::ostringstream out;
  out << "strong=" << n.strong << " dirichlet=" << n.dirichlet << " diagdom=" << n.diagdom
      << " violating=" << n.violating << " nonposdiag=" << n.nonpositive << " onlypos=" << n.only_positive
      << " elim=" << n.eliminated << " failed=" << n.failed << " ineffective=" << n.ineffective;
  return out.str();
}

std::string text_of(const tier::level& lv, const tier::split_counts& n) {
  std::array<char, 200> line;
  std::snprintf(line.data(), line.size(),
                "n=%d nnz=%d C=%d F=%d FF=%d XF=%d FC=%d reduced=%d cforce=%d ratio=%.6f", lv.n, lv.entries(),
                n.c, n.f, n.ff, n.xf, n.fc, n.reduced, n.cforced, n.ratio);
  return line.data();
}

std::string text_of(const tier::level& lv, const tier::level_record& r) {
  std::array<char, 120> line;
  std::snprintf(line.data(), line.size(), "gratio=%.6f meanw=%.6f toC=%d weights=%d", r.ratio, r.mean_weights,
                r.turned_c, lv.iw[lv.n + 1] - 1);
  return line.data();
}

class KnownHierarchies : public testing::TestWithParam<const char*> {};

TEST_P(KnownHierarchies, SameStatesPatternsWeightsAndOperators) {
  const std::string folder = data + GetParam() + "/";
  sparse_system s = read_system(folder + "system.txt");
  expectation e = read_expected(folder + "expected.txt");
  e.settings.nsys = s.nsys;
  e.settings.nstyp = s.nsys > 1 ? tier::approach::by_unknowns : tier::approach::by_variables;
  tier::set_max_threads(1024);
  tier::hierarchy h;
  set_first_level(h, s);

  tier::create_levels(h, e.settings, tier::options_of_setup(e.settings));

  const tier::setup_record& record = tier::latest_setup();
  ASSERT_EQ(h.levels_created, e.levels);
  EXPECT_EQ(record.stop, e.stop);
  for (int k = 1; k <= e.levels; ++k) {
    const tier::level& lv = h(k);
    const std::string at = "level=" + std::to_string(k), file = folder + "level" + std::to_string(k);
    if (k > 1)
      expect_equal(entries_of(lv.n, lv.ia, lv.ja, lv.a), read_entries(file + ".matrix"), "matrix, " + at);
    for (int i = 1; i <= lv.n; ++i) ASSERT_EQ(lv.ja[lv.ia[i]], i) << "diagonal of row " << i << ", " << at;
    if (k == e.levels) continue;
    std::vector<int> states;
    for (int i = 1; i <= lv.n; ++i) states.push_back(std::min(lv.icg[i], 1));
    EXPECT_EQ(states, read_states(file + ".state")) << at;
    expect_equal(entries_of(lv.n, lv.iw, lv.jw, lv.w), read_entries(file + ".interp"),
                 "interpolation, " + at);
    const tier::level_record& r = record.at[static_cast<std::size_t>(k)];
    EXPECT_EQ(text_of(r.strength), e.counters["STRENGTH " + at]);
    EXPECT_EQ(text_of(lv, r.split), e.counters["SPLIT " + at]);
    EXPECT_EQ(text_of(lv, r), e.counters["INTERP " + at]);
  }
}

INSTANTIATE_TEST_SUITE_P(Systems, KnownHierarchies,
                         testing::Values("diffusion", "turned-anisotropy", "turned-anisotropy-direct",
                                         "turned-anisotropy-extended", "wall-ribbed"));

}  // namespace
