// The choice of the wall model; see the header.
#include "model/walls/wall_model.h"

#include <memory>

#include "input/mesh_tables.h"
#include "input/process_record.h"
#include "model/walls/facet/facet_wall.h"
#include "model/walls/wedge/wedge_wall.h"
#include "run/base/failure.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

std::unique_ptr<WallModel> model = std::make_unique<WedgeWall>();

std::unique_ptr<WallModel> chosenModel() {
  if (processRecord.wallModel != facet_walls) return std::make_unique<WedgeWall>();
  if (ModelKind == 1) {
    vFail(
        "\n !! Error !!  The wall model of \"%s\" is 2 (facet), which a closed skin (Shell model) can't "
        "have: "
        "set value 1 of section [Keld_Extension] to 1 (wedge).\n",
        workingFiles.cpu.c_str());
  }
  return std::make_unique<FacetWall>();
}

}  // namespace

std::array<Vector3, 2> WallModel::rigidMotion(const Vector3& shift, const Vector3& turn, const Vector3& arm,
                                              const Vector3& offset, double) const {
  return {shift + cross(turn, arm - offset), shift + cross(turn, arm + offset)};
}

const WallModel& wallModel() { return *model; }

void chooseWalls() {
  model = chosenModel();
  if (processRecord.extensionGiven) {
    vPrintMessage(2, "<br>   Wall model= %s\n", model->name());
    vPrintMessage(100, "   Wall model= %s\n", model->name());
  }
}

void prepareWalls() { model->prepare(); }

}  // namespace keld
