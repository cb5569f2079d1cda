// Contexts: calls beside each other give the bits of calls one after the other; parameters, hierarchy and
// faults of one context aren't seen in another.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "support/tier/systems.h"
#include "tier/api/tier.h"
#include "tier/store/context.h"

namespace {

using testing_support::sparse_system;

constexpr int keep = 4140, reuse = 1140;

struct outcome {
  int ierr = -7, cycles = -7;
  std::vector<double> u;
  bool operator==(const outcome&) const = default;
};

outcome call(sparse_system s, int iswtch, int ncyc = 1100100) {
  outcome o;
  o.u.assign(s.f.size(), 0.0);
  const int nnu = s.n, nna = static_cast<int>(s.ja.size()), one = 1, matrix = 12, none = 0, silent = -1;
  const double eps = 1e-10, chktol = 0.0;
  double estimate = 0.0, res_in = 0.0, res_out = 0.0;
  TIER(&nnu, &nna, &one, s.ia.data(), s.ja.data(), s.a.data(), s.f.data(), o.u.data(), &one, &one, &one, &one,
       &matrix, &none, &res_in, &res_out, &o.cycles, &o.ierr, &none, &one, &eps, &ncyc, &iswtch, &estimate,
       &estimate, &estimate, &estimate, &chktol, &silent, &silent);
  return o;
}

sparse_system poisson(int m) {
  sparse_system s = testing_support::five_point(m);
  testing_support::set_known_solution(s);
  return s;
}

int created() {
  int number = 0, ierr = -7;
  TIER_CREATE(&number, &ierr);
  EXPECT_EQ(ierr, 0);
  return number;
}

int use(int number) {
  int ierr = -7;
  TIER_USE(&number, &ierr);
  return ierr;
}

int destroy(int number) {
  int ierr = -7;
  TIER_DESTROY(&number, &ierr);
  return ierr;
}

std::string fault() {
  std::string text(200, '?');
  const int length = static_cast<int>(text.size());
  TIER_GET_FAULT(text.data(), &length);
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

void be_serial() {  // teams have tests of their own
  const int many = 1000;
  TIER_SET_OMP_NUM_THREADS_EXTERNAL(&many);
}

/// Set-up of two systems in a context each, then re-starts in turn.
std::vector<outcome> two_systems(int first_size, int second_size) {
  const sparse_system first = poisson(first_size), second = poisson(second_size);
  const int one = created(), two = created();
  std::vector<outcome> all;
  for (int round = 0; round < 3; ++round) {
    for (const int number : {one, two}) {
      EXPECT_EQ(use(number), 0);
      be_serial();
      all.push_back(call(number == one ? first : second, round == 0 ? keep : reuse));
    }
  }
  EXPECT_EQ(destroy(one), 0);
  EXPECT_EQ(destroy(two), 0);
  return all;
}

TEST(Contexts, ThreadsWithTwoSystemsEachGiveTheBitsOfOneAfterTheOther) {
  const std::vector<outcome> here = two_systems(20, 31), there = two_systems(27, 24);

  std::vector<outcome> left, right;
  std::thread a([&] { left = two_systems(20, 31); }), b([&] { right = two_systems(27, 24); });
  a.join();
  b.join();

  EXPECT_EQ(left, here);
  EXPECT_EQ(right, there);
  for (const outcome& o : here) EXPECT_EQ(o.ierr, 0);
}

TEST(Contexts, KeepParametersHierarchyAndFaultForThemselves) {
  const int other = created();
  const int graded = 17;
  be_serial();
  TIER_SET_NPTMN(&graded);
  EXPECT_EQ(call(poisson(20), keep).ierr, 0);
  ASSERT_EQ(use(other), 0);

  int nptmn = 0;
  TIER_GET_NPTMN(&nptmn);
  EXPECT_NE(nptmn, graded);
  EXPECT_EQ(call(poisson(20), reuse).ierr, 51);  // this context has set up nothing
  EXPECT_EQ(fault(), "TIER re-start requires an initial call with iswit=4!");
  ASSERT_EQ(use(0), 0);
  EXPECT_EQ(fault(), "");
  EXPECT_EQ(call(poisson(20), reuse).ierr, 0);
  TIER_GET_NPTMN(&nptmn);
  EXPECT_EQ(nptmn, graded);
}

TEST(Contexts, CountTheirOwnMemoryUntilTheyGo) {
  const int number = created();
  ASSERT_EQ(use(number), 0);
  be_serial();
  EXPECT_EQ(call(poisson(30), keep).ierr, 0);
  EXPECT_GT(tier::memory().ndsum, 0);
  std::thread user([&] {
    EXPECT_EQ(use(number), 0);
    EXPECT_EQ(destroy(number), 0);  // the thread that set up still has it
    EXPECT_EQ(tier::memory().ndsum, 0);
  });
  user.join();
  EXPECT_GT(tier::memory().ndsum, 0);
  EXPECT_EQ(call(poisson(30), reuse).ierr, 0);
  EXPECT_EQ(use(number), 20);
  EXPECT_EQ(use(0), 0);
  EXPECT_EQ(tier::memory().ndsum, 0);
}

TEST(Contexts, RefuseNumbersThatTheyDoNotHave) {
  const int number = created();
  EXPECT_EQ(destroy(number), 0);
  for (const int wrong : {number, number + 1, -1}) EXPECT_EQ(use(wrong), 20) << wrong;
  for (const int wrong : {number, 0}) EXPECT_EQ(destroy(wrong), 20) << wrong;
}

}  // namespace
