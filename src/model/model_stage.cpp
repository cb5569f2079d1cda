// The model stage: its steps in their fixed order.
#include "model/model_stage.h"

#include "input/input_stage.h"
#include "model/element_geometry.h"
#include "model/material.h"
#include "model/restraint.h"
#include "model/wedge_numbering.h"
#include "model/wedge_shape.h"

namespace keld {

void modelStage() {
  fillIntegrationTables();
  readPriorResults();  // in a Shell run it calls the shell model processing on its way
  releaseElementGeometry();
  selectBoundaryNodes();
  renumberWedgeNodes();
  numberFreedoms();
  setUpRestraint();
  materialSetup();
}

}  // namespace keld
