// The maker's meshes: size, topology, area and shape of the triangles, and numbers in the files.
#include "part_maker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <numbers>
#include <set>
#include <sstream>

namespace {

using namespace part_maker;

struct Part {
  const char* name;
  PartOptions options;
  int euler;     // nodes - edges + triangles of the connected surface: 1 less the number of holes
  double area;   // mm2
  int junction;  // most triangles at one edge
};

/// Six holes whose rims are regular polygons of as many corners as the rim has nodes; ribs of 12 mm.
double ribbedArea(double length, double width, double height, double radius, int corners) {
  const double hole = 0.5 * corners * radius * radius * std::sin(2.0 * std::numbers::pi / corners);
  return length * width - 6.0 * hole + height * (3.0 * width + 2.0 * length);
}

class PartMaker : public testing::TestWithParam<Part> {};

double edgeLength(const Mesh& mesh, int a, int b) {
  const auto &p = mesh.node(a), &q = mesh.node(b);
  return std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
}

TEST_P(PartMaker, MeshIsOneSurfaceOfGoodTriangles) {
  const Part& part = GetParam();

  const Mesh mesh = makeMesh(part.options);

  std::map<std::pair<int, int>, int> edges;
  std::set<int> used;
  double area = 0.0, worstAspect = 0.0;
  for (const auto& t : mesh.triangles) {
    const double a = edgeLength(mesh, t[0], t[1]), b = edgeLength(mesh, t[1], t[2]),
                 c = edgeLength(mesh, t[2], t[0]);
    const double s = 0.5 * (a + b + c);
    area += std::sqrt(s * (s - a) * (s - b) * (s - c));
    worstAspect = std::max(worstAspect, a * b * c / (4.0 * (s - a) * (s - b) * (s - c)));
    for (std::size_t k = 0; k < 3; ++k) {
      used.insert(t[k]);
      ++edges[std::minmax(t[k], t[(k + 1) % 3])];
    }
  }
  const auto most =
      std::max_element(edges.begin(), edges.end(), [](auto& p, auto& q) { return p.second < q.second; });
  const std::set<std::array<double, 3>> places(mesh.nodes.begin(), mesh.nodes.end());
  EXPECT_NEAR(static_cast<double>(mesh.triangles.size()), part.options.triangles,
              0.03 * part.options.triangles);
  EXPECT_EQ(static_cast<int>(used.size() + mesh.triangles.size()) - static_cast<int>(edges.size()),
            part.euler);
  EXPECT_EQ(used.size() + mesh.runners.size(),
            mesh.nodes.size());  // a chain of runners ends at a shared node
  EXPECT_EQ(places.size(), mesh.nodes.size());
  EXPECT_EQ(most->second, part.junction);
  EXPECT_NEAR(area, part.area, 1e-9 * part.area);
  EXPECT_LT(worstAspect, 6.0);  // 2 for an equilateral triangle
}

INSTANTIATE_TEST_SUITE_P(
    Parts, PartMaker,
    testing::Values(Part{"Plate", {Shape::plate, 120, 80, 0, 2, 2000}, 1, 9600, 2},
                    Part{"SmallBox", {Shape::box, 50, 40, 30, 2, 500}, 1, 7400, 2},
                    // pockets of 18 x 14 cells, blocks of 8 x 8: a radius of 0.25 x 8 x 160 / 72, 32 corners
                    Part{"Ribbed",
                         {Shape::ribbed, 160, 100, 12, 2, 10000},
                         -5,
                         ribbedArea(160, 100, 12, 40.0 / 9, 32),
                         4}),
    [](const auto& part) { return part.param.name; });

/// Sum over the triangles of a ".PG1" of all corner coordinates: the same whatever the numbers are.
double cornerSum(const std::string& path, long& elements, long& firstNode) {
  std::ifstream file(path);
  std::string title;
  std::getline(file, title);
  long nodes = 0;
  double factor = 0.0, sum = 0.0;
  file >> elements >> nodes >> factor >> factor;
  std::vector<std::array<long, 3>> corners(static_cast<std::size_t>(elements));
  for (auto& c : corners) {
    double rest = 0.0;
    file >> rest >> c[0] >> c[1] >> c[2] >> rest >> rest >> rest >> rest;
  }
  std::map<long, double> coordinates;
  for (long k = 0; k < nodes; ++k) {
    long number = 0;
    double x = 0.0, y = 0.0, z = 0.0, gate = 0.0;
    file >> number >> x >> y >> z >> gate;
    if (k == 0) firstNode = number;
    coordinates[number] = x + 3.0 * y + 7.0 * z;
  }
  EXPECT_TRUE(file) << path;
  for (const auto& c : corners)
    if (c[2] != 0) sum += coordinates.at(c[0]) * coordinates.at(c[1]) + coordinates.at(c[2]);
  return sum;
}

TEST(PartMakerJob, ShuffledNumbersDescribeTheSamePart) {
  const Mesh mesh = makeMesh({Shape::ribbed, 160, 100, 12, 2, 1500});
  const std::string plain = testing::TempDir() + "part_plain", mixed = testing::TempDir() + "part_mixed";
  JobOptions job;

  writeJob(plain, mesh, job);
  job.shuffle = 7;
  writeJob(mixed, mesh, job);

  long plainElements = 0, mixedElements = 0, plainFirst = 0, mixedFirst = 0;
  // the product in the sum depends on which corner is third, so that corners must stay in their order
  const double sum = cornerSum(plain + ".PG1", plainElements, plainFirst);
  EXPECT_NEAR(cornerSum(mixed + ".PG1", mixedElements, mixedFirst), sum, 1e-9 * sum);
  EXPECT_EQ(plainElements, static_cast<long>(mesh.triangles.size() + mesh.runners.size()));
  EXPECT_EQ(plainElements, mixedElements);
  EXPECT_EQ(plainFirst, 1);
  EXPECT_NE(mixedFirst, 1);
}

}  // namespace
