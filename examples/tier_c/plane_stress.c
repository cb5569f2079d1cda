/* Bends a cantilever of plane stress by its end, solved with TIER by smoothed aggregation and the strip's
   three rigid motions, and checks the residual and the deflection of beam theory itself. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <tier.h>

enum { length = 240, height = 24, nodes = length * (height + 1), rows = 2 * nodes, most_entries = 18 * rows };

static const double nu = 0.3; /* E = 1, thickness 1, squares of side 1 */
static const int corner[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
static double stiffness[8][8];
static int ia[rows + 1], ja[most_entries], iu[rows], ip[rows];
static double a[most_entries], f[rows], u[rows], modes[3][rows];

/* Bilinear square, 2 x 2 Gauss points: B^T D B, strains xx, yy, xy. */
static void fill_stiffness(void) {
  const double e = 1.0 / (1.0 - nu * nu);
  const double d[3][3] = {{e, nu * e, 0.0}, {nu * e, e, 0.0}, {0.0, 0.0, 0.5 * (1.0 - nu) * e}};
  for (int gauss = 0; gauss < 4; ++gauss) {
    const double x = (2 * corner[gauss][0] - 1) / sqrt(3.0), y = (2 * corner[gauss][1] - 1) / sqrt(3.0);
    double b[3][8] = {{0.0}};
    for (int n = 0; n < 4; ++n) {
      const int sx = 2 * corner[n][0] - 1, sy = 2 * corner[n][1] - 1;
      b[0][2 * n] = b[2][2 * n + 1] = 0.5 * sx * (1.0 + sy * y);
      b[1][2 * n + 1] = b[2][2 * n] = 0.5 * sy * (1.0 + sx * x);
    }
    for (int i = 0; i < 8; ++i)
      for (int j = 0; j < 8; ++j)
        for (int p = 0; p < 3; ++p)
          for (int q = 0; q < 3; ++q) stiffness[i][j] += 0.25 * b[p][i] * d[p][q] * b[q][j];
  }
}

/* Node (x, y) from 1, or 0 on the clamped side and outside. */
static int node_at(int x, int y) {
  return x < 1 || x > length || y < 0 || y > height ? 0 : (x - 1) * (height + 1) + y + 1;
}

/* Stiffness between function p of node (x, y) and function q of its neighbour, over the squares of both. */
static double coupling(int x, int y, int p, int dx, int dy, int q) {
  double sum = 0.0;
  for (int own = 0; own < 4; ++own)
    for (int other = 0; other < 4; ++other) {
      const int left = x - corner[own][0], low = y - corner[own][1];
      const int inside = left >= 0 && left < length && low >= 0 && low < height;
      if (inside && corner[other][0] - corner[own][0] == dx && corner[other][1] - corner[own][1] == dy)
        sum += stiffness[2 * own + p][2 * other + q];
    }
  return sum;
}

static void add(int* entries, int column, double value) {
  ja[*entries] = column;
  a[(*entries)++] = value;
}

/* Point by point, two functions each; every row starts with its diagonal. Returns the entries. */
static int fill_matrix(void) {
  int entries = 0, row = 0;
  for (int x = 1; x <= length; ++x)
    for (int y = 0; y <= height; ++y)
      for (int p = 0; p < 2; ++p, ++row) {
        ia[row] = entries + 1;
        iu[row] = p + 1;
        ip[row] = node_at(x, y);
        add(&entries, row + 1, coupling(x, y, p, 0, 0, p));
        for (int dx = -1; dx <= 1; ++dx)
          for (int dy = -1; dy <= 1; ++dy)
            for (int q = 0; q < 2; ++q) {
              const int node = node_at(x + dx, y + dy), column = 2 * node - 1 + q;
              if (node > 0 && column != row + 1) add(&entries, column, coupling(x, y, p, dx, dy, q));
            }
      }
  ia[rows] = entries + 1;
  return entries;
}

/* Two translations and a rotation about the middle: what the strip without its clamp does without any force.
 */
static void fill_modes(void) {
  for (int row = 0; row < rows; ++row) {
    const int node = row / 2, function = row % 2;
    const double x = node / (height + 1) + 1 - 0.5 * length, y = node % (height + 1) - 0.5 * height;
    modes[function][row] = 1.0;
    modes[2][row] = function == 0 ? -y : x;
  }
}

static double residual_norm(void) {
  double sum = 0.0;
  for (int i = 0; i < rows; ++i) {
    double r = f[i];
    for (int j = ia[i] - 1; j < ia[i + 1] - 1; ++j) r -= a[j] * u[ja[j] - 1];
    sum += r * r;
  }
  return sqrt(sum);
}

static int solve(int nna, int* steps) {
  const int nnu = rows, nsys = 2, count = 3, chosen = 1;
  const int matrix = 12;    /* symmetric, which aggregation asks for */
  const int nsolve = 0;     /* doesn't count here */
  const int ifirst = 1;     /* first guess zero */
  const int ncyc = 1100100; /* a multigrid cycle, at most 100 steps */
  const int iswtch = 5140;  /* set up, solve, clean up */
  const int none[2] = {0, 0}, silent = -1;
  const double eps = 1e-8, chktol = 0.0;
  double a_cmplx = 0.0, g_cmplx = 0.0, p_cmplx = 0.0, w_avrge = 0.0, res_in, res_out;
  int ierr;

  TIER_SET_NAGGREGATION(&chosen);
  TIER_MODES_SET(&nnu, &count, modes[0], &ierr);
  if (ierr != 0) return ierr;
  TIER(&nnu, &nna, &nsys, ia, ja, a, f, u, iu, &nnu, ip, &nnu, &matrix, none, &res_in, &res_out, steps, &ierr,
       &nsolve, &ifirst, &eps, &ncyc, &iswtch, &a_cmplx, &g_cmplx, &p_cmplx, &w_avrge, &chktol, &silent,
       &silent);
  return ierr;
}

/* Bending and shear of a beam with a force of 1 at its end; 5/6 is the shear factor of a rectangle. */
static double beam_deflection(void) {
  const double inertia = pow(height, 3) / 12.0, shear = 0.5 / (1.0 + nu);
  return pow(length, 3) / (3.0 * inertia) + length / (5.0 / 6.0 * shear * height);
}

int main(void) {
  fill_stiffness();
  const int entries = fill_matrix();
  fill_modes();
  for (int y = 0; y <= height; ++y)
    f[2 * node_at(length, y) - 1] = (y == 0 || y == height ? 0.5 : 1.0) / height;
  const double before = residual_norm();
  int steps = 0;

  const int ierr = solve(entries, &steps);

  const double reduction = residual_norm() / before, deflection = u[rows - 1] / beam_deflection();
  printf("ierr %d, %d steps, residual reduced by %.1e, deflection %.4f of a beam's\n", ierr, steps, reduction,
         deflection);
  return ierr == 0 && steps <= 20 && reduction < 1.1e-8 && fabs(deflection - 1.0) < 0.01 ? EXIT_SUCCESS
                                                                                         : EXIT_FAILURE;
}
