// The random points against the rule told plainly: all candidates, all distances, every time.
#include <cmath>
#include <limits>
#include <random>
#include <set>

#include <zarel/C_ZarelException.h>

#include "design/support.h"
#include "support/FailingAllocation.h"

namespace {

using namespace design;
using support::capture;

double squaredDistance(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t k = 0; k < a.size(); ++k)
    sum += (a[k] - b[k]) * (a[k] - b[k]);
  return sum;
}

double nearest(const std::vector<double>& point, const Rows& others) {
  double smallest = 1e30;
  for (const auto& other : others)
    smallest = std::min(smallest, squaredDistance(point, other));
  return smallest;
}

Rows candidates(int factors, bool corners, unsigned seed) {
  std::mt19937 words(seed);
  Rows points(static_cast<std::size_t>(10000 * std::sqrt(static_cast<double>(factors))));
  for (auto& point : points)
    for (int k = 0; k < factors; ++k) {
      const double x = 2.0 * ((static_cast<double>(words()) + 0.5) / 4294967296.0) - 1.0;
      point.push_back(corners ? (x >= 0 ? 1.0 : -1.0) : x);
    }
  return points;
}

// Always the candidate whose nearest point is farthest, over the whole set again for each pick.
Rows chosenPlainly(int factors, int levels, Rows present, int count, unsigned seed = 1) {
  const Rows all = candidates(factors, levels == 2, seed);
  Rows chosen;
  for (int k = 0; k < count; ++k) {
    std::size_t best = 0;
    double distance = -1;
    for (std::size_t i = 0; i < all.size(); ++i) {
      const double d = nearest(all[i], present);
      if (d > distance) best = i, distance = d;
    }
    chosen.push_back(all[best]);
    present.push_back(all[best]);
  }
  return chosen;
}

struct Case {
  int factors;
  int levels;
  Rows present;
  int count;
};

class Choice : public testing::TestWithParam<Case> {};

TEST_P(Choice, IsThePlainRule) {
  const Case& c = GetParam();
  Design design(c.factors, c.levels);
  design.set(c.present);
  const Rows expected = chosenPlainly(c.factors, c.levels, c.present, c.count);

  ASSERT_EQ(design.AddRandomPoints(c.count, 0, 0, nullptr), 0);

  const Rows rows = design.rows();
  const auto added = rows.begin() + static_cast<std::ptrdiff_t>(c.present.size());
  EXPECT_EQ(Rows(added, rows.end()), expected);
}

TEST_P(Choice, IsTheSameInAMatrixOfTheCaller) {
  const Case& c = GetParam();
  Design design(c.factors, c.levels);
  design.set(c.present);
  Matrix target(c.count, c.factors);

  ASSERT_EQ(design.AddRandomPoints(c.count, 0, 0, target.get()), 0);

  EXPECT_EQ(target.rows(), chosenPlainly(c.factors, c.levels, c.present, c.count));
  EXPECT_EQ(design.rows().size(), c.present.size());
  EXPECT_EQ(design.NumPoints, c.count);
}

const double nan = std::numeric_limits<double>::quiet_NaN();

INSTANTIATE_TEST_SUITE_P(
    Small, Choice,
    testing::Values(Case{1, 0, {{0}}, 20}, Case{2, 0, {{0, 0}}, 25},
                    Case{2, 7, {{-1, -1}, {0.3, 0.2}}, 10}, Case{3, 0, {{0, 0, 0}}, 12},
                    Case{5, 0, {{0, 0, 0, 0, 0}}, 5},
                    // Corners, also when more are asked for than there are.
                    Case{3, 2, {{0, 0, 0}}, 8}, Case{2, 2, {{1, 1}}, 7},
                    // A point that is no number, or far out, keeps nobody away.
                    Case{2, 0, {{nan, 0}}, 6}, Case{1, 0, {{1e200}}, 4}));

TEST(RandomPoints, TheFirstOfAllIsTheFirstCandidateWhenNothingIsNear) {
  Design design(2, 0);
  design.set({{nan, nan}});
  Matrix target(1, 2);

  ASSERT_EQ(design.AddRandomPoints(1, 0, 0, target.get()), 0);

  EXPECT_EQ(target.rows()[0], candidates(2, false, 1)[0]);
}

TEST(RandomPoints, DistancesFallFromPointToPoint) {
  Design design(4, 0);
  design.set({{0, 0, 0, 0}});
  ASSERT_EQ(design.AddRandomPoints(60, 0, 0, nullptr), 0);
  const Rows rows = design.rows();

  double former = 1e30;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const double distance = nearest(rows[i], Rows(rows.begin(), rows.begin() + i));
    EXPECT_LE(distance, former);
    EXPECT_GT(distance, 0);
    former = distance;
  }
}

TEST(RandomPoints, LieInTheCube) {
  Design design(6, 0);
  design.AllocateDesignMatrix(1);
  ASSERT_EQ(design.AddRandomPoints(50, 0, 0, nullptr), 0);

  for (const auto& row : design.rows())
    for (const double x : row)
      EXPECT_TRUE(x > -1 && x < 1) << x;
}

TEST(RandomPoints, TwoLevelsReachEveryCornerOnce) {
  Design design(4, 2);
  design.set({{0, 0, 0, 0}});
  ASSERT_EQ(design.AddRandomPoints(16, 0, 0, nullptr), 0);

  std::set<std::vector<double>> corners;
  const Rows rows = design.rows();
  for (std::size_t i = 1; i < rows.size(); ++i) {
    for (const double x : rows[i])
      EXPECT_TRUE(x == 1.0 || x == -1.0) << x;
    corners.insert(rows[i]);
  }
  EXPECT_EQ(corners.size(), 16u);
}

TEST(RandomPoints, TwoDesignsOfTheSameSizeAreTheSame) {
  Design first(3, 0), second(3, 0);
  first.AllocateDesignMatrix(1);
  second.AllocateDesignMatrix(1);

  EXPECT_EQ(first.AugmentDesign('r', 9, nullptr), 0);
  EXPECT_EQ(second.AugmentDesign('R', 9, nullptr), 0);

  EXPECT_EQ(first.rows(), second.rows());
  EXPECT_EQ(first.rows().size(), 10u);
}

TEST(RandomPoints, AnotherSeedGivesOtherPoints) {
  Design design(2, 0);
  Matrix target(7, 2);
  design.AllocateDesignMatrix(1);
  design.SetSeed(77);

  ASSERT_EQ(design.AddRandomPoints(7, 0, 0, target.get()), 0);

  EXPECT_EQ(target.rows(), chosenPlainly(2, 0, {{0, 0}}, 7, 77));
  EXPECT_NE(target.rows(), chosenPlainly(2, 0, {{0, 0}}, 7, 1));
}

TEST(RandomPoints, ASeedOfZeroIsRefused) {
  const Quiet quiet;
  Design design(2, 0);
  design.set({{0, 0}});
  design.SetSeed(0);

  EXPECT_EQ(design.AddRandomPoints(3, 0, 0, nullptr), -1);
  EXPECT_EQ(design.rows().size(), 1u);
}

TEST(RandomPoints, NewRowsOfTheDesignAreNotCounted) {
  Design design(2, 0);
  int error = 0;
  design.set({{0, 0}});
  design.AddSpecificPoint(Point({1, 1}).get(), 9, &error);
  ASSERT_EQ(design.NumPoints, 2);

  ASSERT_EQ(design.AddRandomPoints(5, 0, 0, nullptr), 0);

  EXPECT_EQ(design.NumPoints, 2);
  EXPECT_EQ(design.rows().size(), 7u);
}

TEST(RandomPoints, TheTwoNumbersAreNotRead) {
  Design design(1, 0);
  Matrix plain(3, 1), odd(3, 1);
  design.AllocateDesignMatrix(1);

  design.AddRandomPoints(3, 0, 0, plain.get());
  design.AddRandomPoints(3, nan, -1e300, odd.get());

  EXPECT_EQ(plain.rows(), odd.rows());
}

TEST(RandomPoints, NoPointsAreAddedForNone) {
  Design design(2, 0);
  design.set({{0.5, 0.5}});

  EXPECT_EQ(design.AddRandomPoints(0, 0, 0, nullptr), 0);

  EXPECT_EQ(design.rows(), (Rows{{0.5, 0.5}}));
}

TEST(RandomPoints, WhatCannotBeMadeIsRefused) {
  Design design(2, 0), empty(2, 0), flat(0, 0);
  Matrix narrow(3, 1), low(2, 2), right(3, 2);
  design.set({{0, 0}});
  flat.AllocateDesignMatrix(1);

  EXPECT_EQ(design.AddRandomPoints(3, 0, 0, narrow.get()), -1);
  EXPECT_EQ(design.AddRandomPoints(3, 0, 0, low.get()), -1);
  EXPECT_EQ(design.AddRandomPoints(-1, 0, 0, nullptr), -1);
  EXPECT_EQ(empty.AddRandomPoints(3, 0, 0, nullptr), -1);
  EXPECT_EQ(empty.AddRandomPoints(3, 0, 0, right.get()), -1);
  EXPECT_EQ(flat.AddRandomPoints(3, 0, 0, nullptr), -1);

  EXPECT_EQ(design.rows(), (Rows{{0, 0}}));
  EXPECT_EQ(design.NumPoints, 0);
}

TEST(RandomPoints, MoreFactorsThanAMatrixOfCandidatesHoldsThrow) {
  Design design(4000, 0);
  ASSERT_EQ(design.AllocateDesignMatrix(1), 0);

  try {
    design.AddRandomPoints(1, 0, 0, nullptr);
    FAIL() << "nothing was thrown";
  } catch (const C_ZarelException& thrown) {
    EXPECT_EQ(static_cast<int>(thrown.getExceptionCode()), 2880);
  }
  EXPECT_EQ(design.rows().size(), 1u);
}

TEST(RandomPoints, AreToldOneByOne) {
  const Listening listening;
  Design design(1, 2);
  design.set({{1}});

  const std::string said = capture([&] { design.AddRandomPoints(2, 0, 0, nullptr); }).out;

  EXPECT_EQ(said, "[BASE DOE] : Appel a C_BaseDesign::AddRandomPoints\n"
                  "[BASE DOE] : On genere 10000 points random dans l'espace des variables\n"
                  "[BASE DOE] : On selectionne les 2 points les mieux places\n"
                  "[BASE DOE] : Pt 0 : distance = 4.000000\n"
                  "[BASE DOE] : Pt 1 : distance = 0.000000\n");
}

TEST(RandomPoints, TheNumberOfCandidatesGrowsWithTheRootOfTheFactors) {
  const Listening listening;
  for (const auto& [factors, count] : {std::pair(2, "14142 "), {3, "17320 "}, {10, "31622 "}}) {
    Design design(factors, 0);
    design.AllocateDesignMatrix(1);

    EXPECT_THAT(capture([&, n = 1] { design.AddRandomPoints(n, 0, 0, nullptr); }).out,
                testing::HasSubstr(count));
  }
}

TEST(RandomPoints, WithoutMemoryTheDesignStaysAsItWas) {
  const Quiet quiet;
  Design design(1, 0);
  design.set({{0.5}});

  const long failures = support::forEachFailingAllocation([&design] {
    Design fresh(1, 0);
    {
      const support::Unharmed unharmed;
      fresh.set({{0.5}});
    }
    try {
      if (fresh.AddRandomPoints(3, 0, 0, nullptr) != 0) {
        EXPECT_EQ(fresh.rows(), design.rows());
      }
    } catch (...) {
      const support::Unharmed unharmed;
      EXPECT_EQ(fresh.rows(), design.rows());
      throw;
    }
  });

  EXPECT_GT(failures, 5);
}

} // namespace
