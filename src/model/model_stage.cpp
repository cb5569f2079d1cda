// The model stage: its steps in their fixed order.
#include "model/model_stage.h"

#include "model/element_geometry.h"
#include "model/material/material.h"
#include "model/prior_stage.h"
#include "model/restraint/restraint.h"
#include "model/walls/wall_model.h"
#include "model/walls/wedge/wedge_numbering.h"
#include "model/walls/wedge/wedge_shape.h"

namespace keld {

void modelStage() {
  fillIntegrationTables();
  chooseWalls();
  readPriorResults();  // in a Shell run it calls the shell model processing on its way
  releaseElementGeometry();
  selectBoundaryNodes(wallModel().joining());
  renumberWedgeNodes();
  numberFreedoms();
  setUpRestraint();
  materialSetup();
  prepareWalls();
}

}  // namespace keld
