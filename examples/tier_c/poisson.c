/* Solves Poisson's equation on a square grid with TIER and checks the residual itself. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <tier.h>

enum { side = 200, rows = side * side, most_entries = 5 * rows };

static int ia[rows + 1], ja[most_entries];
static double a[most_entries], f[rows], u[rows];

/* Five-point star with zero boundary values; every row starts with its diagonal. Returns the entries. */
static int fill_matrix(void) {
  int entries = 0;
  for (int i = 0; i < rows; ++i) {
    const int x = i % side, y = i / side;
    const int neighbours[4] = {y > 0 ? i - side : -1, x > 0 ? i - 1 : -1, x < side - 1 ? i + 1 : -1,
                               y < side - 1 ? i + side : -1};
    ia[i] = entries + 1;
    ja[entries] = i + 1;
    a[entries++] = 4.0;
    for (int k = 0; k < 4; ++k) {
      if (neighbours[k] < 0) continue;
      ja[entries] = neighbours[k] + 1;
      a[entries++] = -1.0;
    }
  }
  ia[rows] = entries + 1;
  return entries;
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

int main(void) {
  const int nnu = rows, nna = fill_matrix();
  for (int i = 0; i < rows; ++i) f[i] = 1.0;

  const int nsys = 1, one = 1, none = 0;
  const int matrix = 12;     /* symmetric, row sums that don't vanish */
  const int nsolve = 0;      /* default approach and smoother */
  const int ifirst = 1;      /* first guess zero */
  const int ncyc = 1100100;  /* V-cycle, conjugate gradients, at most 100 cycles */
  const int iswtch = 5140;   /* set up, solve, clean up; work arrays may grow; strategy 40 */
  const int silent = -1;
  const double eps = 1e-8, chktol = 0.0;
  double a_cmplx = 0.0, g_cmplx = 0.0, p_cmplx = 0.0, w_avrge = 0.0; /* default estimates */
  double res_in, res_out;
  int cycles, ierr;

  TIER(&nnu, &nna, &nsys, ia, ja, a, f, u, &one, &one, &one, &one, &matrix, &none, &res_in, &res_out, &cycles,
       &ierr, &nsolve, &ifirst, &eps, &ncyc, &iswtch, &a_cmplx, &g_cmplx, &p_cmplx, &w_avrge, &chktol, &silent,
       &silent);

  const double reduction = residual_norm() / sqrt((double)rows);
  printf("ierr %d, %d cycles, residual reduced by %.1e\n", ierr, cycles, reduction);
  return ierr == 0 && reduction < 1.1e-8 ? EXIT_SUCCESS : EXIT_FAILURE;
}
