// Single-pass interpolation from the entries of the matrix.
#include "tier/setup/pwint_aa.h"

#include "tier/setup/weight_assembly.h"

namespace tier {

namespace {

/// A row whose neighbours give no weights is tried once more with its strong F neighbours eliminated.
weight_assembly::outcome compute_row(interpolation_row& row, int i, const interpolation_options& o) {
  using outcome = weight_assembly::outcome;
  bool eliminate = o.kind != interpolation_kind::direct;
  for (;;) {
    const int interpolatory = row.start(i);
    if (interpolatory < 0) return outcome::no_room;
    eliminate = eliminate || interpolatory == 0;
    if (eliminate && !row.eliminate_rows(o.kind == interpolation_kind::extended)) {
      row.abandon();
      return outcome::no_room;
    }
    if (row.finish() == interpolation_row::result::weights) return outcome::weights;
    if (eliminate) return outcome::becomes_c;
    eliminate = true;
  }
}

}  // namespace

int pwint1_aa(level& lv, const interpolation_options& o, bool own_unknown, bool by_points) {
  weight_assembly rows(lv, couplings_of(lv, own_unknown), o, by_points);
  return rows.run([&o](interpolation_row& row, int i) { return compute_row(row, i, o); });
}

}  // namespace tier
