// Options of smoothed aggregation.
#include "tier/codes/aggregation_data.h"

#include <algorithm>

#include "tier/store/input_checks.h"
#include "tier/store/parameters.h"

namespace tier {

aggregation::options options_of_aggregation(const controls& c) {
  using aggregation::cycle_kind, aggregation::strength_measure;
  const cycle_kind cycle{parm().nagg_cycle};
  const strength_measure strength{parm().nagg_strength};
  const aggregation::options o{
      strength, parm().agg_theta,   parm().agg_safety,  parm().nagg_degree,
      cycle,    parm().nagg_points, parm().nagg_repair, std::min({c.levelx, parm().max_level, max_levels})};
  require_legal(strength == strength_measure::entries || strength == strength_measure::energy,
                "nagg_strength");
  require_legal(o.theta >= 0.0 && o.theta < 1.0, "agg_theta");
  require_legal(o.safety >= 1.0 && o.safety <= 10.0, "agg_safety");
  require_legal(o.degree >= 1 && o.degree <= 20, "nagg_degree");
  require_legal(o.cycle >= aggregation::v_cycle && o.cycle <= aggregation::k_cycle, "nagg_cycle");
  require_legal(o.coarse_points >= 1 && o.coarse_points <= 1000, "nagg_points");
  require_legal(o.repair_sweeps >= 0 && o.repair_sweeps <= 100, "nagg_repair");
  require_consistent(c.isym == symmetry::symmetric,
                     "matrix: aggregation is for symmetric positive definite ones");
  require_consistent(!is_one_level(c.igam), "ncyc: aggregation is no one-level method");
  require_consistent(c.nsys == 1 || c.has_ip, "ip: aggregation of several functions is by points");
  return o;
}

}  // namespace tier
