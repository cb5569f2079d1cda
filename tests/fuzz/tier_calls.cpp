// Fuzz target of TIER: control codes, parameters and small matrices from random bytes, two calls of one
// problem, then TIER_LEAVE. Whatever comes in, a call returns, keeps ia and f, holds no memory after an error
// or a full clean-up, and gives finite numbers when it reports success.
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "fuzz/choices.h"
#include "tier/api/tier.h"
#include "tier/store/parameter_list.h"
#include "tier/store/parameters.h"
#include "tier/store/work_arrays.h"

namespace {

using fuzz::choices;
using fuzz::require;

struct problem {
  int n = 1, nsys = 1;
  std::vector<int> ia{1}, ja, iu, ip, iscale;
  std::vector<double> a, f, u;
};

double value(choices& c) {
  if (c.seldom())
    return c.of({0.0, 1e300, -1e300, 1e-300, std::numeric_limits<double>::quiet_NaN(),
                 std::numeric_limits<double>::infinity()});
  return c.below(13) - 9.0;
}

/// A chain of rows with some further columns: mostly dominant, now and then anything.
problem make_problem(choices& c) {
  problem p;
  p.n = 1 + c.below(60);
  p.nsys = c.of({1, 1, 2, 3});
  const bool dominant = !c.seldom();
  for (int i = 1; i <= p.n; ++i) {
    const std::size_t diagonal = p.ja.size();
    p.ja.push_back(i);
    p.a.push_back(1.0);
    double sum = 0.0;
    for (const int column : {i - p.nsys, i + p.nsys, 1 + c.below(p.n)}) {
      if (column < 1 || column > p.n || column == i) continue;
      p.ja.push_back(column);
      p.a.push_back(value(c));
      sum += std::abs(p.a.back());
    }
    p.a[diagonal] = dominant ? sum + (c.below(4) == 0) : value(c);
    p.ia.push_back(static_cast<int>(p.ja.size()) + 1);
    p.iu.push_back((i - 1) % p.nsys + 1);
    p.ip.push_back((i - 1) / p.nsys + 1);
    p.f.push_back(c.seldom() ? value(c) : 1.0);
    p.u.push_back(c.seldom() ? value(c) : 0.0);
  }
  p.iscale.assign(1000, 0);
  for (int i = 0; i < p.nsys; ++i) p.iscale[static_cast<std::size_t>(i)] = c.below(8) == 1 ? c.below(3) : 0;
  if (!c.seldom()) return p;
  std::vector<int>& spoiled = *c.of({&p.ia, &p.ja, &p.iu, &p.ip});
  spoiled[static_cast<std::size_t>(c.below(static_cast<int>(spoiled.size())))] =
      c.of({0, -1, 1, 61, 1000000000});
  return p;
}

void set_parameters(choices& c) {
  const auto all = tier::parameter_list();
  for (int count = c.below(2) * c.below(5); count > 0; --count) {
    const tier::parameter_entry& p =
        all[static_cast<std::size_t>(256 * c.below(2) + c.below(256)) % all.size()];
    const tier::parameter_reference place = p.place();
    if (int* const* i = std::get_if<int*>(&place))
      **i = c.of({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 20, 21, 31, 99, 110, 131, 211, -1, -131, 77});
    if (double* const* d = std::get_if<double*>(&place))
      **d = c.of({0.0, 0.1, 0.5, 0.99, 1.0, 1.1, 12.2, 21.25, -1.0, 1e-12, 1e10, std::nan("")});
    if (bool* const* b = std::get_if<bool*>(&place)) **b = !**b;
  }
  tier::parm().logio = 0;  // reports are made, but go nowhere
  tier::parm().allow_private_in = false;
}

int digits(choices& c, std::initializer_list<int> limits) {
  int code = 0;
  for (const int limit : limits) code = 10 * code + c.below(limit);
  return code;
}

int run_call(choices& c, problem& p, int iswtch) {
  int nna = static_cast<int>(p.ja.size()), ndiu = p.n, ndip = c.of({1, p.n});
  int matrix = c.seldom() ? c.of({0, 44, 23, 229}) : c.of({21, 22, 22, 11, 12, 32, 222, 226}),
      nsolve = digits(c, {6, 8, 7, 1, 4, 2, 6, 3});
  if (!c.seldom()) nsolve = c.of({0, 1, 10, 11, 12, 13, 2, 20, 25, 26, 300010, 40011, 400100, 5010141});
  int ifirst = c.of({0, 1, 2, 3, 35, -1, 7}),
      ncyc = (100 * (1 + c.below(6)) + 10 * c.below(5) + c.below(3)) * 100 + c.below(20);
  if (c.seldom()) ncyc = -ncyc;
  int idump = c.of({-1, 0, 1}), iout = c.of({-1, 0, 1, 2, 3}), ncyc_done = 0, ierr = 0;
  double eps = c.of({1e-8, 1e-2, -1e-6, 0.0}), chktol = c.of({-1.0, 0.0, 1e-8});
  double res_in = c.seldom() ? std::nan("") : c.of({1.0, 0.0, -1.0}), res_out = 0.0;
  double estimates[] = {0.0, c.seldom() ? 1e9 : c.of({0.0, 1.0, 3.0}), 0.0, c.of({0.0, 1.0})};
  const auto ia = p.ia;
  const auto f = p.f;
  TIER(&p.n, &nna, &p.nsys, p.ia.data(), p.ja.data(), p.a.data(), p.f.data(), p.u.data(), p.iu.data(), &ndiu,
       p.ip.data(), &ndip, &matrix, p.iscale.data(), &res_in, &res_out, &ncyc_done, &ierr, &nsolve, &ifirst,
       &eps, &ncyc, &iswtch, &estimates[0], &estimates[1], &estimates[2], &estimates[3], &chktol, &idump,
       &iout);
  require(ia == p.ia, "ia has changed");
  require(std::equal(f.begin(), f.end(), p.f.begin(),
                     [](double x, double y) { return x == y || (x != x && y != y); }),
          "f has changed");
  if (ierr > 0 || iswtch / 1000 == 5)
    require(tier::memory().nisum == 0 && tier::memory().ndsum == 0, "memory is held");
  if (ierr == 0 && ncyc_done > 0) {
    for (const double u : p.u) require(std::isfinite(u), "u is not finite though the call reports success");
  }
  return ierr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  choices c(data, size);
  set_parameters(c);
  tier::parm().nptmn = c.of({2, 5, 20, 100});
  problem p = make_problem(c);
  const int strategy = c.seldom() ? 14 : c.of({20, 40, 0, 13, 23, 35, 48}), extent = c.below(4);
  const int rest = 100 * extent + strategy;
  run_call(c, p, 1000 * c.of({5, 4, 4, 6, 7}) + rest);
  run_call(c, p, 1000 * c.of({5, 1, 3, 6, 7, 8, 2}) + rest);
  int ierr = 0;
  TIER_LEAVE(&ierr);
  require(tier::memory().nisum == 0 && tier::memory().ndsum == 0, "memory is held after TIER_LEAVE");
  tier::parm().logio = 6;
  return 0;
}
