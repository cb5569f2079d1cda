// Skins and pairs of triangles in the tables.
#include "support/skin_scenes.h"

#include <string>

#include "input/mesh_tables.h"
#include "model/element_geometry.h"
#include "model/skin/shell_processing.h"
#include "model/skin/shell_tables.h"
#include "run/base/working_files.h"

namespace keld {

BoxSkin plateSkin(int cells) {
  BoxSkin skin{{4.0, 3.0, 0.2}, {cells, cells, 1}};
  skin.fillTables();
  elementGeometry();
  clearShellTables();
  return skin;
}

void makePair() {
  elementTable = {};
  nodeTable = {};
  nodeTable.nodeCount = 6;
  nodeTable.x = {0, 2, 0, 0, 2, 0};
  nodeTable.y = {0, 0, 2, 0, 0, 2};
  nodeTable.z = {0, 0, 0, 0.2, 0.2, 0.2};
  elementTable.elementCount = 2;
  elementTable.node1 = {1, 4};
  elementTable.node2 = {2, 6};
  elementTable.node3 = {3, 5};
  elementTable.thickness = {0.2, 0.2};
  elementTable.thicknessScale = {1.0, 1.0};
  for (auto* c : {&elementTable.nx, &elementTable.ny, &elementTable.nz, &elementTable.area,
                  &elementTable.meanEdge, &elementTable.cornerCosine, &elementTable.correctedThickness})
    c->assign(2, 0.0);
  geometry = {};
  geometry.thicknessFactor = geometry.coordinateFactor = 0.1;
  geometry.largestExtent = 2.0;
  geometry.smallestExtent = 0.2;
  elementGeometry();
  clearShellTables();
  shell.characteristicThickness = 0.4;
  shell.elementPartner[1] = 2;
}

void addElement(int a, int b, int c) {
  elementTable.node1.push_back(a);
  elementTable.node2.push_back(b);
  elementTable.node3.push_back(c);
  for (auto* column : {&elementTable.nx, &elementTable.ny, &elementTable.nz, &elementTable.area,
                       &elementTable.meanEdge, &elementTable.cornerCosine})
    column->push_back(0.0);
  elementTable.thickness.push_back(0.2);
  ++elementTable.elementCount;
  const int partner = shell.elementPartner[1];
  const auto feature = shell.featureNode;
  elementGeometry();
  clearShellTables();
  shell.characteristicThickness = 0.4;
  shell.elementPartner[1] = partner;
  shell.featureNode = feature;
}

void setFeature(std::initializer_list<int> nodes) {
  for (const int n : nodes) shell.featureNode[n] = 1;
}

void SkinFolderTest::SetUp() {
  namespace fs = std::filesystem;
  folder_ = fs::temp_directory_path() /
            ("shell_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
  fs::remove_all(folder_);
  fs::create_directories(folder_);
  workingFiles = composeWorkingFiles((folder_ / "job").string(), folder_.string() + "/");
}

void SkinFolderTest::TearDown() { std::filesystem::remove_all(folder_); }

}  // namespace keld
