// Reports of the set-up.
#include "tier/report/setup_report.h"

#include <algorithm>
#include <cinttypes>

#include "tier/api/tier.h"
#include "tier/store/dimensions.h"
#include "tier/store/print_line.h"
#include "tier/store/results_of_run.h"

namespace tier {

namespace {

constexpr const char* rule = "==============================================================================";

void print_input_list(const controls& c) {
  print_line("nnu    = %d, nna = %d, nsys = %d, npnts = %d", c.nnu, c.nna, c.nsys, c.npnts);
  print_line("isym   = %d, irow0 = %d, iforce0 = %d", code_of(c.isym), c.irow0, code_of(c.iforce0));
  print_line("nstyp  = %d, nint_force = %d, nxtyp = %d, internal = %d, nprim = %d", code_of(c.nstyp),
             code_of(c.nint_force), code_of(c.nxtyp), code_of(c.internal), c.nprim);
  print_line("iswit  = %d, iextent = %d, n_default = %d, norm_typ = %d", code_of(c.iswit), c.iextent,
             c.n_default, code_of(c.norm_typ));
  print_line("igam   = %d, ncgrad = %d, nkdim = %d, ncycle = %d, eps = %.3e, ifirst = %d", code_of(c.igam),
             code_of(c.ncgrad), c.nkdim, c.ncycle, c.eps, c.ifirst);
  print_line("levelx = %d, nptmn = %d, ncg = %d, nwt = %d, ntr = %d, np_opt = %d", c.levelx, c.nptmn, c.ncg,
             c.nwt, c.ntr, c.np_opt);
  print_line("nrd    = %d, nru = %d, nrc = %d, ecg = %g, ewt = %g, etr = %g", c.nrd, c.nru, code_of(c.nrc),
             c.ecg, c.ewt, c.etr);
}

void print_levels(const hierarchy& h) {
  message(" level    variables      points       entries  row length  entries of interpolation", 1);
  for (int k = 1; k <= h.levels_created; ++k) {
    const level& l = h(k);
    print_line("%6d %12d %11d %13d %11.2f %12" PRId64, k, l.n, l.npnts, l.entries(),
               static_cast<double>(l.entries()) / l.n, k < h.levels_created ? l.w.size() : std::int64_t{0});
  }
}

void print_complexities(const complexities& m) {
  constexpr const char* estimated = "  (depends on dimensioning!)";
  message("complexities and average row-lengths:", 1);
  print_line("a_cmplx:  %10.4f     a_avrge:  %10.4f", m.a_cmplx, m.a_avrge);
  print_line("b_cmplx:  %10.4f     b_avrge:  %10.4f", m.b_cmplx, m.b_avrge);
  print_line("ib_cmplx: %10.4f", m.ib_cmplx);
  print_line("g_cmplx:  %10.4f     t_cmplx:  %10.4f", m.g_cmplx, m.t_cmplx);
  print_line("w_avrge:  %10.4f     c_cmplx:  %10.4f%s", m.w_avrge, m.c_cmplx, estimated);
  print_line("p_cmplx:  %10.4f     e_cmplx:  %10.4f%s", m.p_cmplx, m.e_cmplx, estimated);
}

void print_dimension(const char* name, std::int64_t required, std::int64_t provided) {
  print_line("  %-6s >= %12" PRId64 "   provided: %12" PRId64 "    extended by: %12" PRId64
             "   wasted: %12" PRId64,
             name, required, provided, std::max<std::int64_t>(required - provided, 0),
             std::max<std::int64_t>(provided - required, 0));
}

void print_dimensions(const hierarchy& h, const controls& c) {
  const work_dimensions provided = tier_dimensions(c), used = used_dimensions(h, h.levels_created);
  std::int64_t b = 0, ib = 0;
  for (int k = 1; k <= h.levels_created; ++k) {
    b += h(k).primary_entries;
    ib += h(k).primary_rows;
  }
  const auto share = [](double complexity, std::int64_t base) {
    return static_cast<std::int64_t>(complexity * static_cast<double>(base));
  };
  message("req. dimensioning:", 1);
  print_line("1st level:  nna = %d, nnu = %d", c.nna, c.nnu);
  print_dimension("ndima", used.a, provided.a);
  print_dimension("ndimb", b, share(c.b_cmplx, h(1).primary_entries));
  print_dimension("ndimib", ib, share(c.ib_cmplx, h(1).primary_rows));
  print_dimension("ndimu", used.u, provided.u);
  print_dimension("ndimv", used.v, provided.v);
  print_dimension("ndimw", used.w, provided.w);
}

}  // namespace

void print_banner(const controls& c) {
  if (std::max(c.dump_level, c.out_level) < 0) return;
  message(formatted("TIER, Release %d.%d", TIER_VERSION_MAJOR, TIER_VERSION_MINOR), 1, 1);
  if (c.dump_level >= 1) print_input_list(c);
}

void print_setup_statistics(const hierarchy& h, const controls& c) {
  if (c.dump_level < 1) return;
  print_levels(h);
  print_complexities(measure(h, c));
  print_dimensions(h, c);
  message(rule);
}

}  // namespace tier
