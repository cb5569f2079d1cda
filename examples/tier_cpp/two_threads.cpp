// Two threads solve Poisson problems of their own with a solver each, twice with one set-up; then a matrix
// that can't be solved shows how faults come.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <thread>
#include <tier.hpp>
#include <vector>

namespace {

struct system {
  int n = 0;
  std::vector<int> ia{0}, ja;
  std::vector<double> a;
};

/// Five-point star on side x side points with zero boundary values, counted from 0, columns ascending.
system poisson(int side) {
  system s;
  s.n = side * side;
  for (int i = 0; i < s.n; ++i) {
    const int x = i % side, y = i / side;
    const auto add = [&s](bool there, int column, double value) {
      if (!there) return;
      s.ja.push_back(column);
      s.a.push_back(value);
    };
    add(y > 0, i - side, -1.0);
    add(x > 0, i - 1, -1.0);
    add(true, i, 4.0);
    add(x < side - 1, i + 1, -1.0);
    add(y < side - 1, i + side, -1.0);
    s.ia.push_back(static_cast<int>(s.ja.size()));
  }
  return s;
}

/// |f - A u| / |f|
double relative_residual(const system& s, const std::vector<double>& f, const std::vector<double>& u) {
  double residual = 0.0, load = 0.0;
  for (int i = 0; i < s.n; ++i) {
    double r = f[i];
    for (int k = s.ia[i]; k < s.ia[i + 1]; ++k) r -= s.a[k] * u[s.ja[k]];
    residual += r * r;
    load += f[i] * f[i];
  }
  return std::sqrt(residual / load);
}

/// Largest relative residual of two solutions over one set-up.
double solve_twice(int side) {
  const system s = poisson(side);
  tier::solver solver;
  solver.set("omp_num_threads_external", 2);  // two threads of this program call
  solver.setup(s.n, s.ia, s.ja, s.a);
  double largest = 0.0;
  for (const double load : {1.0, 3.0}) {
    std::vector<double> f(static_cast<std::size_t>(s.n), load), u(f.size(), 0.0);
    const tier::outcome o = solver.solve(f, u);
    largest = std::fmax(largest, relative_residual(s, f, u));
    std::printf("%d x %d points, load %g: %d steps\n", side, side, load, o.steps);
  }
  return largest;
}

bool tells_of_faults() try {
  const system s = poisson(3);
  std::vector<double> zero(s.a.size(), 0.0);
  tier::solver().setup(s.n, s.ia, s.ja, zero);
  return false;
} catch (const tier::fault& f) {
  std::printf("as expected: %s (%d)\n", f.what(), f.ierr());
  return f.ierr() == 40;
}

}  // namespace

int main() try {
  double left = 1.0, right = 1.0;
  std::thread other([&right] { right = solve_twice(150); });
  left = solve_twice(200);
  other.join();
  std::printf("residuals reduced to %.1e and %.1e\n", left, right);
  return left < 1.1e-8 && right < 1.1e-8 && tells_of_faults() ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& e) {
  std::fprintf(stderr, "%s\n", e.what());
  return EXIT_FAILURE;
}
