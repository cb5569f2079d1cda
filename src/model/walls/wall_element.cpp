// An element of a wall, gathered from the tables; see the header.
#include "input/mesh_access.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/model_tables.h"
#include "model/walls/wall_model.h"

namespace keld {

WallElement wallElement(int element, bool thermal) {
  const int e = element;
  const ResidualStressField& field = residualStressField;
  const MaterialConstants& material = materialConstants[field.kindFraction[e] > 0.5 ? 1 : 2];
  const double a1 = field.orientationValue[e];
  const double across = material.expansionTransverse, along = material.expansionLongitudinal - across;

  WallElement wall;
  wall.number = element;
  wall.corner = cornersOf(element);
  wall.thickness = elementTable.thickness[e];
  wall.axes = {field.direction1[e], field.direction2[e], field.direction3[e]};
  wall.stiffness = orientationAverage(material.stiffness, a1);
  wall.expansion = {across + along * a1, across + along * (1.0 - a1), across};
  wall.stress1 = field.stress1[e];
  wall.stress2 = field.stress2[e];
  wall.side = {elementTemperatureField.sideTemperature1[e], elementTemperatureField.sideTemperature2[e]};
  const auto nodes = wedgeNodesOf(element);
  for (std::size_t i = 0; i < 6; ++i) {
    wall.nodeTemperature[i] = volumes.nodalTemperature[nodes[i]];
  }
  wall.ambientTemperature = processRecord.ambientTemperature;
  wall.thermal = thermal;
  return wall;
}

}  // namespace keld
