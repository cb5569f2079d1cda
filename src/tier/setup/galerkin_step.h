// Galerkin step of a level: product, repair of its diagonal, truncation.
// Called by create_levels and by re-starts with new values.
#pragma once

#include "tier/setup/opdfn.h"
#include "tier/store/hierarchy.h"

namespace tier {

struct galerkin_options {
  opdfn_variant variant = opdfn_variant::standard;  // ntyp_galerkin
  bool keeps_zeros =
      false;  // products of exact zero make entries too, so that patterns don't depend on values
  double truncation = 0.0;      // limit of entries, see galerkin_truncate; 0: none (ntr)
  bool symmetric = false;       // truncation keeps that
  int most_bad_diagonals = 20;  // that are repaired before the attempt counts as hopeless (neg_diag)
  int most_repairs = 2;         // by the faster method (maxop_restart)
};

/// Forms the operator of level k + 1 over the interpolation of level k; a repair changes that interpolation.
void form_operator(hierarchy& h, int k, const galerkin_options& o);

}  // namespace tier
