// Points that are given, the mapping, the printed form, and what a design says.
#include <cmath>
#include <limits>
#include <type_traits>

#include <zarel/C_Trace.h>

#include "design/support.h"
#include "support/FailingAllocation.h"

namespace {

using namespace design;
using support::capture;

// Only the names matter: designs belong to nobody but their owner.
static_assert(!std::is_copy_constructible_v<Zarel::C_BaseDesign>);
static_assert(std::has_virtual_destructor_v<Zarel::C_BaseDesign>);
static_assert(std::is_base_of_v<Zarel::C_ZarelBase, Zarel::C_BaseDesign>);

TEST(BaseDesign, StartsWithoutPoints) {
  Design none, some(3, 5);

  EXPECT_EQ(none.NumFactors, 0);
  EXPECT_EQ(none.NumLevels, 0);
  EXPECT_EQ(some.NumFactors, 3);
  EXPECT_EQ(some.NumLevels, 5);
  EXPECT_EQ(some.NumPoints, 0);
  EXPECT_EQ(some.getDesignMatrix(), nullptr);
  EXPECT_FALSE(some.Normalized);
  EXPECT_EQ(some.GetDebugScope(), 452);
}

TEST(BaseDesign, AllocationGivesRowsOfZerosAndKeepsValues) {
  Design design(2, 0);

  EXPECT_EQ(design.AllocateDesignMatrix(1), 0);
  design.DesignMatrix->me[0][1] = 7;
  EXPECT_EQ(design.AllocateDesignMatrix(3), 0);

  EXPECT_EQ(design.rows(), (Rows{{0, 7}, {0, 0}, {0, 0}}));
  EXPECT_EQ(design.NumPoints, 0);
}

TEST(BaseDesign, AllocationOfNoRowsGivesOneRowOfZeros) {
  Design design(3, 0);

  EXPECT_EQ(design.AllocateDesignMatrix(0), 0);

  EXPECT_EQ(design.rows(), (Rows{{0, 0, 0}}));
}

TEST(BaseDesign, AllocationOfFewerThanNoRowsFails) {
  const Quiet quiet;
  Design design(2, 0), negative(-2, 0);
  design.set({{1, 2}});

  EXPECT_EQ(design.AllocateDesignMatrix(-1), -1);
  EXPECT_EQ(negative.AllocateDesignMatrix(1), -1);

  EXPECT_EQ(design.rows(), (Rows{{1, 2}}));
}

TEST(BaseDesign, GivenPointsStandWhereTheyAreTold) {
  Design design(2, 0);
  design.set({{1, 1}, {2, 2}});
  int error = 9;

  EXPECT_TRUE(design.AddSpecificPoint(Point({3, 3}).get(), 1, &error));
  EXPECT_EQ(error, 0);
  EXPECT_TRUE(design.AddSpecificPoint(Point({4, 4}).get(), -5, &error));
  EXPECT_TRUE(design.AddSpecificPoint(Point({5, 5}).get(), 99, &error));
  EXPECT_TRUE(design.AddSpecificPoint(Point({6, 6}).get(), 5, &error));

  EXPECT_EQ(design.rows(), (Rows{{4, 4}, {1, 1}, {3, 3}, {2, 2}, {5, 5}, {6, 6}}));
  EXPECT_EQ(design.NumPoints, 6);
}

TEST(BaseDesign, APointThatIsThereIsRejected) {
  Design design(2, 0);
  design.set({{1, 2}, {3, 4}});
  int error = 9;

  EXPECT_FALSE(design.AddSpecificPoint(Point({3, 4}).get(), 0, &error));

  EXPECT_EQ(error, 0);
  EXPECT_EQ(design.rows(), (Rows{{1, 2}, {3, 4}}));
  EXPECT_EQ(design.NumPoints, 0);
}

TEST(BaseDesign, NotANumberIsNeverTheSame) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Design design(2, 0);
  design.set({{1, nan}});
  int error = 9;

  EXPECT_TRUE(design.AddSpecificPoint(Point({1, nan}).get(), 0, &error));

  EXPECT_EQ(design.rows().size(), 2u);
  EXPECT_EQ(error, 0);
}

TEST(BaseDesign, PointsThatDoNotFitAreRefused) {
  Design design(2, 0), empty(2, 0);
  design.set({{0, 0}});
  int error = 9;

  EXPECT_FALSE(design.AddSpecificPoint(nullptr, 0, &error));
  EXPECT_EQ(error, -1);
  EXPECT_FALSE(design.AddSpecificPoint(nullptr, 0, nullptr));
  for (const auto& wrong : {std::vector<double>{1}, {1, 2, 3}, {}}) {
    error = 9;
    EXPECT_FALSE(design.AddSpecificPoint(Point(wrong).get(), 0, &error));
    EXPECT_EQ(error, -1);
  }
  error = 9;
  EXPECT_FALSE(empty.AddSpecificPoint(Point({1, 2}).get(), 0, &error));
  EXPECT_EQ(error, -1);

  EXPECT_EQ(design.rows(), (Rows{{0, 0}}));
}

TEST(BaseDesign, TheCentreIsAPointOfZeros) {
  Design design(2, 0);
  design.set({{1, 1}, {2, 2}});
  int error = 9;

  EXPECT_TRUE(design.AddCentralPoint(1, &error));
  EXPECT_EQ(error, 0);
  EXPECT_FALSE(design.AddCentralPoint(&error));

  EXPECT_EQ(design.rows(), (Rows{{1, 1}, {0, 0}, {2, 2}}));
  EXPECT_EQ(design.NumPoints, 3);
}

TEST(BaseDesign, TheCentreGoesInFrontUnlessToldOtherwise) {
  Design design(1, 0);
  design.set({{1}});
  int error = 9;

  EXPECT_TRUE(design.AddCentralPoint(&error));

  EXPECT_EQ(design.rows(), (Rows{{0}, {1}}));
}

TEST(BaseDesign, TheCentreNeedsAnErrorToTell) {
  Design design(2, 0);
  design.set({{1, 1}});

  EXPECT_FALSE(design.AddCentralPoint(nullptr));
  EXPECT_FALSE(design.AddCentralPoint(0, nullptr));

  EXPECT_EQ(design.rows(), (Rows{{1, 1}}));
}

TEST(BaseDesign, ACentreThatCannotBeAddedLeavesNoErrorAllTheSame) {
  Design empty(2, 0);
  int error = 9;

  EXPECT_FALSE(empty.AddCentralPoint(&error));

  EXPECT_EQ(error, 0);
}

TEST(BaseDesign, KindsOtherThanRandomAreNotKnown) {
  Design design(2, 0);
  design.set({{0, 0}});

  for (const char kind : {'x', 'S', '\0', ' '})
    EXPECT_EQ(design.AugmentDesign(kind, 3, nullptr), -1);

  EXPECT_EQ(design.rows().size(), 1u);
}

TEST(BaseDesign, DistanceIsTheSmallestSquare) {
  Design design(2, 0);
  Matrix m(3, 2);
  m.get()->me[0][0] = 3; // 9 away from the origin
  m.get()->me[1][0] = 1, m.get()->me[1][1] = 2;
  m.get()->me[2][1] = 10;
  double origin[] = {0, 0};

  EXPECT_EQ(design.ComputeDistMin(0, 3, origin, m.get()), 5);
  EXPECT_EQ(design.ComputeDistMin(0, 1, origin, m.get()), 9);
  EXPECT_EQ(design.ComputeDistMin(2, 3, origin, m.get()), 100);
}

TEST(BaseDesign, NoRowsAreFarAway) {
  Design design(1, 0);
  Matrix m(4, 1);
  double point[] = {0};

  EXPECT_EQ(design.ComputeDistMin(3, 3, point, m.get()), 1e30);
  EXPECT_EQ(design.ComputeDistMin(3, 1, point, m.get()), 1e30);
  point[0] = 1e16;
  EXPECT_EQ(design.ComputeDistMin(0, 4, point, m.get()), 1e30);
}

TEST(BaseDesign, NormalizeMapsByTheLevels) {
  Design design(2, 5);
  design.set({{-1, 0}, {1, 0.5}});
  int error = 9;

  design.Normalize(10, 18, &error);

  EXPECT_EQ(error, 0);
  EXPECT_TRUE(design.Normalized);
  EXPECT_EQ(design.rows(), (Rows{{8, 10}, {12, 11}}));
}

TEST(BaseDesign, NormalizeOfOneFactorTakesStepOneWhateverTheLevels) {
  Design design(1, 5);
  design.set({{-1}, {0.5}});
  int error = 9;

  design.Normalize(10, 18, &error);

  EXPECT_EQ(design.rows(), (Rows{{9}, {10.5}}));
}

TEST(BaseDesign, NormalizeRefusesARangeTheWrongWayRoundOnce) {
  Design design(2, 3);
  design.set({{-1, 1}});
  int error = 9;

  design.Normalize(1.0, 0.0, &error);
  EXPECT_EQ(error, -1);
  EXPECT_FALSE(design.Normalized);
  EXPECT_EQ(design.rows(), (Rows{{-1, 1}}));

  design.Normalize(0.0, 0.0, &error);
  EXPECT_EQ(error, 0);
  EXPECT_TRUE(design.Normalized);
  design.DesignMatrix->me[0][0] = 2;
  design.Normalize(1.0, 0.0, &error); // a mapped design is not asked
  EXPECT_EQ(error, 0);
  EXPECT_EQ(design.rows(), (Rows{{0, 1}}));
}

TEST(BaseDesign, ASecondNormalizeMapsAgain) {
  Design design(2, 3);
  design.set({{1, 0}});
  int error = 9;

  design.Normalize(1, 5, &error);
  design.Normalize(1, 5, &error);

  EXPECT_EQ(design.rows(), (Rows{{7, 3}})); // 2 (2 x + 1) + 1
}

TEST(BaseDesign, NormalizeWithFewerThanTwoLevelsIsWhatTheDivisionGives) {
  Design one(2, 1), none(2, 0);
  one.set({{1, -1}});
  none.set({{1, -1}});
  int error = 9;

  one.Normalize(0, 4, &error);
  EXPECT_EQ(error, 0);
  none.Normalize(0, 4, &error);

  EXPECT_EQ(one.rows()[0][0], std::numeric_limits<double>::infinity());
  EXPECT_EQ(none.rows(), (Rows{{-4, 4}}));
}

TEST(BaseDesign, NormalizeWithoutPointsIsRemembered) {
  Design design(2, 3);
  int error = 9;

  design.Normalize(0, 1, &error);

  EXPECT_EQ(error, 0);
  EXPECT_TRUE(design.Normalized);
}

std::string printed(int levels, const Rows& rows) {
  Design design(static_cast<int>(rows.front().size()), levels);
  design.set(rows);
  return capture([&design] {
           design.Print(stdout);
           std::fflush(stdout);
         })
      .out;
}

TEST(BaseDesign, PrintsByLevels) {
  const Rows rows = {{1, -0.25}, {0, 12.34}};

  EXPECT_EQ(printed(2, rows), "\n 1.00 -0.25\n 0.00  12.34\n");
  EXPECT_EQ(printed(0, rows), printed(2, rows));
  EXPECT_EQ(printed(9, rows), printed(2, rows));
  EXPECT_EQ(printed(10, rows), "\n  1.0 -0.2\n  0.0  12.3\n");
  EXPECT_EQ(printed(99, rows), printed(10, rows));
  EXPECT_EQ(printed(100, rows), "\n   1.0  -0.2\n   0.0   12.3\n");
  EXPECT_EQ(printed(999, rows), printed(100, rows));
  EXPECT_EQ(printed(1000, rows), "\n 1.0 -0.2\n 0.0  12.3\n");
  EXPECT_EQ(printed(-1, rows), printed(1000, rows));
}

TEST(BaseDesign, PrintsALineFeedAndNothingWithoutPoints) {
  Design design(2, 2);

  EXPECT_EQ(capture([&design] {
              design.Print(stdout);
              std::fflush(stdout);
            }).out,
            "\n");
}

TEST(BaseDesign, TellsWhatItDoesInItsScope) {
  const Listening listening;
  Design design(1, 0);
  design.set({{1}});
  int error = 0;

  const std::string said = capture([&] {
                             design.AddCentralPoint(&error);
                             design.AddSpecificPoint(Point({1}).get(), 0, &error);
                             design.AddSpecificPoint(Point({4}).get(), 0, &error);
                           }).out;

  EXPECT_EQ(said, "[BASE DOE] : Ajout du point central\n"
                  "[BASE DOE] : Ajout d'un point au plan d'experience : Point ajoute. (Nb = 2)\n"
                  "[BASE DOE] : Ajout d'un point au plan d'experience : Point deja present -> "
                  "rejete\n"
                  "[BASE DOE] : Ajout d'un point au plan d'experience : Point ajoute. (Nb = 3)\n");
}

TEST(BaseDesign, SaysNothingOutOfItsScope) {
  const Listening listening(false);
  Design design(1, 0);
  design.set({{1}});
  int error = 0;

  EXPECT_EQ(capture([&] { design.AddCentralPoint(&error); }).out, "");
}

std::vector<std::string> entered;
void noteEntry(char* function) {
  entered.emplace_back(function);
}

TEST(BaseDesign, EveryOperationStandsInAFrameOfItsName) {
  Design design(1, 0);
  Matrix target(1, 1);
  int error = 0;
  double at[] = {0};
  entered.clear();
  SetXternalTrackFuncs(noteEntry, nullptr);

  design.AllocateDesignMatrix(1);
  design.getDesignMatrix();
  design.AddCentralPoint(&error);
  design.AugmentDesign('r', 1, target.get());
  design.ComputeDistMin(0, 1, at, target.get());
  design.Normalize(0, 1, &error);
  capture([&design] { design.Print(stdout); });
  SetXternalTrackFuncs(nullptr, nullptr);

  EXPECT_THAT(entered, testing::ElementsAre(
                           "C_BaseDesign::AllocateDesignMatrix", "C_BaseDesign::getDesignMatrix",
                           "C_BaseDesign::AddCentralPoint:2", "C_BaseDesign::AddCentralPoint:1",
                           "C_BaseDesign::AddSpecificPoint", "C_BaseDesign::AugmentDesign",
                           "C_BaseDesign::AddRandomPoints", "C_BaseDesign::ComputeDistMin",
                           "C_BaseDesign::Normalize", "C_BaseDesign::Print"));
}

TEST(BaseDesign, WithoutMemoryADesignStaysAsItWas) {
  const Quiet quiet;

  Point point({1, 2});

  const long failures = support::forEachFailingAllocation([&point] {
    Design design(2, 0);
    int error = 9;
    if (design.AllocateDesignMatrix(1) != 0) {
      EXPECT_EQ(design.DesignMatrix, nullptr);
      return;
    }
    if (!design.AddSpecificPoint(point.get(), 1, &error)) {
      const support::Unharmed unharmed;
      EXPECT_EQ(error, -1);
      EXPECT_EQ(design.rows(), (Rows{{0, 0}}));
    }
  });

  EXPECT_GT(failures, 3);
}

TEST(BaseDesign, WithoutMemoryForTheCentreThereIsAnError) {
  const Quiet quiet;
  Design design(2, 0);
  design.set({{1, 1}});
  bool refused = false;

  for (long n = 1; n < 20 && !refused; ++n) {
    int error = 9;
    const support::FailingAllocation failing(n);
    try {
      refused = !design.AddCentralPoint(&error) && error == -1;
    } catch (const std::bad_alloc&) {
      continue;
    }
    if (!refused) break;
  }

  EXPECT_TRUE(refused);
  EXPECT_EQ(design.rows(), (Rows{{1, 1}}));
}

} // namespace
