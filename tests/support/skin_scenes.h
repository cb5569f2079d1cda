// Skins with their tables ready for the steps of the processing, and a folder for its files. Used by the
// tests of closed skins.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>

#include "support/skin_maker.h"

namespace keld {

/// A box of 4 x 3 x 0.2 cm with `cells` x `cells` quadrilaterals on its large faces, in all tables.
BoxSkin plateSkin(int cells = 8);

/// Triangles 1 2 3 and 4 5 6, the second 0.2 cm above the first and its partner.
void makePair();

/// Adds a triangle of nodes that stand in the tables.
void addElement(int a, int b, int c);

void setFeature(std::initializer_list<int> nodes);

/// A folder of its own, in which the working files lie.
class SkinFolderTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  std::filesystem::path folder_;
};

}  // namespace keld
