#include "app_support.h"
#include "space_filling.h"

#include <cmath>
#include <set>

#include <zarel/C_BaseDesign.h>
#include <zarel/lm_types.h>

using namespace app;

namespace {

const std::vector<Variable> square{{"a", -1, 1}, {"b", 10, 30}};

bool isOnLevels(const Points& points, int levels) {
  for (const auto& point : points)
    for (const double x : point)
      if (x != nearestLevel(x, levels)) return false;
  return true;
}

std::size_t different(const Points& points) {
  return std::set<std::vector<double>>(points.begin(), points.end()).size();
}

TEST(SpaceFilling, GivesWhatTheDesignClassChooses) {
  Zarel::C_BaseDesign design(3, 0);
  ASSERT_EQ(design.AllocateDesignMatrix(1), 0);
  design.SetSeed(5);
  ASSERT_EQ(design.AddRandomPoints(12, 0, 0, nullptr), 0);

  const Points points = spacedPoints(12, 3, 0, {{0, 0, 0}}, 5);

  ASSERT_EQ(points.size(), 12u);
  const MAT* m = design.getDesignMatrix();
  for (unsigned i = 0; i < 12; ++i)
    for (unsigned j = 0; j < 3; ++j)
      EXPECT_EQ(points[i][j], m->me[i + 1][j]);
}

TEST(SpaceFilling, BeginsWithNothingWhenNothingIsGiven) {
  // The first point is then any point, and not a corner far from some centre.
  const Points first = spacedPoints(1, 2, 0, {}, 3), other = spacedPoints(1, 2, 0, {}, 4);
  EXPECT_NE(first, other);
  EXPECT_EQ(spacedPoints(5, 2, 0, {}, 3)[0], first[0]);
  EXPECT_TRUE(spacedPoints(0, 2, 0, {}, 3).empty());
}

TEST(SpaceFilling, KeepsAwayFromWhatIsThere) {
  const Points corner{{1, 1}};
  const Points points = spacedPoints(1, 2, 0, corner, 1);
  EXPECT_LT(points[0][0], -0.9);
  EXPECT_LT(points[0][1], -0.9);
}

TEST(SpaceFilling, PointsLieFartherApartThanRandomOnes) {
  const Points points = spacedPoints(20, 2, 0, {}, 1);
  // Twenty points whose discs of this diameter fill less than the square must leave room for more:
  // the greedy choice is at least half as good as the best, which is no less than a 5 x 4 grid.
  EXPECT_GT(nearestPair(points).distance, 0.5 * 2.0 / 4);
}

TEST(SpaceFilling, FillsAllLevelsOfASmallSpace) {
  for (const int levels : {2, 3, 4}) {
    const int all = static_cast<int>(gridSize(3, levels));
    const Points points = spacedPoints(all, 3, levels, {}, 1);
    EXPECT_TRUE(isOnLevels(points, levels));
    EXPECT_EQ(different(points), static_cast<std::size_t>(all));
  }
}

// Half of a level's width lies outside at a bound, so that few candidates come down on the corners:
// the last ones are found by counting through.
TEST(SpaceFilling, FindsTheLastPointsOfALargeGrid) {
  const Points points = spacedPoints(2401, 4, 7, {}, 1);
  EXPECT_TRUE(isOnLevels(points, 7));
  EXPECT_EQ(different(points), 2401u);
}

TEST(SpaceFilling, FillsOnlyWhatIsFreeOfTheLevels) {
  const Points taken{{-1, -1}, {0, 0}, {0.3, 0.3}};
  Points points = spacedPoints(7, 2, 3, taken, 1);
  EXPECT_EQ(points.size(), 7u);
  points.insert(points.end(), taken.begin(), taken.end());
  EXPECT_EQ(different(points), 10u);
}

TEST(SpaceFilling, LevelsAreEvenlySpacedAndReachTheBounds) {
  EXPECT_EQ(nearestLevel(-0.8, 2), -1);
  EXPECT_EQ(nearestLevel(0.1, 2), 1);
  EXPECT_EQ(nearestLevel(0.1, 3), 0);
  EXPECT_EQ(nearestLevel(0.6, 3), 1);
  EXPECT_EQ(nearestLevel(-0.6, 5), -0.5);
  EXPECT_EQ(nearestLevel(7, 4), 1);
  EXPECT_EQ(nearestLevel(-7, 4), -1);
}

TEST(SpaceFilling, GridsAreCounted) {
  EXPECT_EQ(gridSize(3, 2), 8);
  EXPECT_EQ(gridSize(4, 5), 625);
  EXPECT_TRUE(std::isinf(gridSize(1000, 1000)));
}

TEST(SpaceFilling, DrawsInsideTheBounds) {
  for (const auto& p : drawPoints(1000, square, 7, 1)) {
    EXPECT_TRUE(p[0] > -1 && p[0] < 1);
    EXPECT_TRUE(p[1] > 10 && p[1] < 30);
  }
}

TEST(SpaceFilling, SeedAndStreamDecide) {
  EXPECT_EQ(drawPoints(5, square, 7, 1), drawPoints(5, square, 7, 1));
  EXPECT_NE(drawPoints(5, square, 7, 1), drawPoints(5, square, 8, 1));
  EXPECT_NE(drawPoints(5, square, 7, 1), drawPoints(5, square, 7, 2));
  EXPECT_NE(drawPoints(5, square, 7, 1), drawPoints(5, square, 7 + (1ull << 32), 1));
}

TEST(SpaceFilling, SeedZeroIsASeed) {
  EXPECT_EQ(drawPoints(3, square, 0, 1).size(), 3u);
  EXPECT_NE(designSeed(0, 0), 0u);
}

TEST(SpaceFilling, SeedsThatADesignTakesAreTakenAsTheyAre) {
  EXPECT_EQ(designSeed(1, 0), 1u);
  EXPECT_EQ(designSeed(4294967295u, 0), 4294967295u);
  EXPECT_NE(designSeed(4294967296u, 0), 0u);
  EXPECT_NE(designSeed(1, 1), designSeed(1, 2));
}

TEST(SpaceFilling, LargeDrawsComeInBlocksWithoutRepeats) {
  const Points points = drawPoints(4500, square, 1, 1);
  EXPECT_EQ(points.size(), 4500u);
  EXPECT_EQ(different(points), 4500u);
}

TEST(SpaceFilling, NearestPairIsFound) {
  const NearestPair pair = nearestPair({{0, 0}, {3, 4}, {10, 10}, {3, 3}});
  EXPECT_EQ(pair.distance, 1);
  EXPECT_EQ(pair.first, 1u);
  EXPECT_EQ(pair.second, 3u);
  EXPECT_TRUE(std::isinf(nearestPair({{1, 1}}).distance));
}

TEST(SpaceFilling, DistanceBetweenSetsIsTheSmallest) {
  EXPECT_EQ(smallestDistance({{0, 0}, {5, 5}}, {{3, 4}, {50, 5}}), std::sqrt(5.0));
  EXPECT_TRUE(std::isinf(smallestDistance({{0, 0}}, {})));
}

} // namespace
