// The choice of the wall model; see the header.
#include "model/walls/wall_model.h"

#include <memory>

#include "input/process_record.h"
#include "model/walls/wedge/wedge_wall.h"

namespace keld {

namespace {

std::unique_ptr<WallModel> model = std::make_unique<WedgeWall>();

}  // namespace

const WallModel& wallModel() { return *model; }

void setUpWalls() {
  model = std::make_unique<WedgeWall>();
  model->prepare();
}

}  // namespace keld
