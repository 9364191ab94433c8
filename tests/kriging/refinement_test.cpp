// Test points of a list and the choice of new samples among them.
#include <cmath>

#include "kriging/ListFixture.h"

using namespace kriging_test;

namespace {

/// A smooth function of two variables whose fits have errors that differ from place to place.
template <class T>
T response(double x, double y, int output) {
  return T(std::sin(1.3 * x + output) + 0.5 * y * y + 0.2 * x * y * (output + 1));
}

template <class T>
C_MatMGe<T> grid(int perSide, double width) {
  C_MatMGe<T> points(perSide * perSide, 2);
  for (int i = 0; i < points.NbRow(); ++i) {
    points(i, 0) = T(width * (i % perSide) / (perSide - 1));
    points(i, 1) = T(width * (i / perSide) / (perSide - 1));
  }
  return points;
}

template <class T>
C_MatMGe<T> responses(C_MatMGe<T>& points, int outputs) {
  C_MatMGe<T> result(points.NbRow(), outputs);
  for (int i = 0; i < points.NbRow(); ++i) {
    for (int j = 0; j < outputs; ++j)
      result(i, j) = response<T>(std::real(points(i, 0)), std::real(points(i, 1)), j);
  }
  return result;
}

/// A fitted list of two models, one and two outputs, over 3 x 3 samples in [0, 3]^2.
template <class T>
void fitList(KrigingList<T>& list) {
  int sizes[] = {1, 2};
  C_MatMGe<T> x = grid<T>(3, 3.0);
  C_MatMGe<T> y = responses<T>(x, 3);
  ASSERT_EQ(list.PutNumKriging(2), 0);
  ASSERT_EQ(list.PutNumVar(2), 0);
  ASSERT_EQ(list.PutNumSol(3, 2, sizes), 0);
  ASSERT_EQ(list.PutInpSampMtx(x), 0);
  ASSERT_EQ(list.PutOutSampMtx(y), 0);
  ASSERT_EQ(list.PutPolynomType(E_PolyConst, -1), 0);
  ASSERT_EQ(list.Solve(), 0);
}

} // namespace

template <class T>
class KrigingRefinement : public ::testing::Test {
protected:
  /// A fitted list with those test points.
  void fitAndTestAt(C_MatMGe<T> points) {
    fitList(list_);
    ASSERT_EQ(list_.PutInpTestMtx(points, -1), 0);
  }
  int evalTest(int wanted) {
    count_ = wanted;
    worst_ = -1.0;
    return list_.EvalTestModel(values_, count_, proposed_, worst_);
  }

  OpenList<T> list_;
  int count_ = -1;
  double worst_ = -1.0;
  C_MatMGe<T> values_;
  C_MatMGe<T> proposed_;
};
TYPED_TEST_SUITE(KrigingRefinement, Scalars);

// ----- test points -------------------------------------------------------------------------------

TYPED_TEST(KrigingRefinement, TakesTestPointsForOneModelOrAll) {
  auto& list = this->list_;
  makeList(list, {1, 1}, 4, 2);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(6, 2, 0.9);
  C_MatMGe<TypeParam> none(0, 2);
  C_MatMGe<TypeParam> wide = pattern<TypeParam>(6, 3, 0.9);

  EXPECT_EQ(list.PutInpTestMtx(none, -1), 1);
  EXPECT_EQ(list.PutInpTestMtx(wide, -1), 1);
  EXPECT_EQ(list.PutInpTestMtx(points, 2), 1);
  EXPECT_EQ(list.InpTestMtx.NbRow(), 0);
  auto const given = [&](int i) { return list.Models[i].*&OpenModel<TypeParam>::InpTestSet; };
  EXPECT_EQ(list.PutInpTestMtx(points, 1), 0);
  EXPECT_FALSE(given(0));
  EXPECT_TRUE(given(1));
  EXPECT_EQ(list.PutInpTestMtx(points, -1), 0);
  EXPECT_TRUE(given(0));

  expectEqual(list.InpTestMtx, points);
}

TYPED_TEST(KrigingRefinement, MeasuresTestPointsByTheirLastColumnAlone) {
  auto& list = this->list_;
  list.NumVar = 2;
  C_MatMGe<TypeParam> points = matrix<TypeParam>({{TypeParam(0), TypeParam(-2)},
                                                  {TypeParam(100), TypeParam(3)},
                                                  {TypeParam(50), TypeParam(2.5)}});
  list.InpTestMtx.Copy(points);

  EXPECT_EQ(list.ComputeSizeOfTestMtx(), 1.0) << "magnitudes from 2 to 3";

  list.NumVar = 3;
  EXPECT_EQ(list.ComputeSizeOfTestMtx(), 0.0);
}

TYPED_TEST(KrigingRefinement, SetsTheSizeWithTheTestPoints) {
  auto& list = this->list_;
  makeList(list, {1}, 4, 2);
  C_MatMGe<TypeParam> points =
      matrix<TypeParam>({{TypeParam(0), TypeParam(1)}, {TypeParam(9), TypeParam(5)}});

  ASSERT_EQ(list.PutInpTestMtx(points, -1), 0);

  EXPECT_EQ(list.TestSize, 4.0);
}

TEST(KrigingRefinementComplex, MeasuresByModuli) {
  using C = std::complex<double>;
  OpenList<C> list;
  list.NumVar = 1;
  C_MatMGe<C> points = matrix<C>({{C(3, 4)}, {C(0, 1)}});
  list.InpTestMtx.Copy(points);

  EXPECT_DOUBLE_EQ(list.ComputeSizeOfTestMtx(), 4.0);
  double atFive = 18.0 + 1e-9; // |3 + 3i|^2 is 18
  double below = 18.0;
  EXPECT_TRUE(list.IsCloseToExistingPoint(0, 1, atFive));
  EXPECT_FALSE(list.IsCloseToExistingPoint(0, 1, below));
}

TYPED_TEST(KrigingRefinement, TellsCloseTestPoints) {
  auto& list = this->list_;
  C_MatMGe<TypeParam> points =
      matrix<TypeParam>({{TypeParam(0), TypeParam(0)}, {TypeParam(3), TypeParam(4)}});
  list.InpTestMtx.Copy(points);
  double equal = 25.0;
  double larger = 25.5;

  EXPECT_FALSE(list.IsCloseToExistingPoint(0, 1, equal));
  EXPECT_TRUE(list.IsCloseToExistingPoint(0, 1, larger));
}

// ----- the choice --------------------------------------------------------------------------------

namespace {

/// Calls the search for the next point with errors that a test gives.
template <class T>
struct Search {
  explicit Search(OpenList<T>& inList) : list(inList) {}

  int next(std::vector<double> const& given, double t) {
    RealVec errors(static_cast<int>(given.size()));
    std::copy(given.begin(), given.end(), errors.Adr(0));
    return list.searchNextNewPoint(errors, 10, count, ids, chosen, found, t);
  }

  OpenList<T>& list;
  int count = 0;
  int ids[10] = {};
  RealVec chosen;
  bool found = true;
};

} // namespace

template <class T>
class KrigingSearch : public ::testing::Test {
protected:
  /// Samples at 0 and 10; test points at 1, 2, 3, 4, 10.
  void SetUp() override {
    int sizes[] = {1};
    C_MatMGe<T> x = matrix<T>({{T(0)}, {T(10)}});
    C_MatMGe<T> points = matrix<T>({{T(1)}, {T(2)}, {T(3)}, {T(4)}, {T(10)}});
    list_.PutNumKriging(1);
    list_.PutNumVar(1);
    list_.PutNumSol(1, 1, sizes);
    ASSERT_EQ(list_.PutInpSampMtx(x), 0);
    ASSERT_EQ(list_.PutInpTestMtx(points, -1), 0);
  }

  OpenList<T> list_;
};
TYPED_TEST_SUITE(KrigingSearch, Scalars);

TYPED_TEST(KrigingSearch, TakesTheLargestError) {
  Search<TypeParam> search(this->list_);

  EXPECT_EQ(search.next({1, 5, 3, 2, 0}, 0.0), 0);

  EXPECT_TRUE(search.found);
  EXPECT_EQ(search.count, 1);
  EXPECT_EQ(search.ids[0], 1);
  EXPECT_EQ(values(search.chosen), (std::vector<double>{5}));
}

TYPED_TEST(KrigingSearch, TakesTheLaterOfEqualErrors) {
  Search<TypeParam> search(this->list_);

  search.next({5, 1, 5, 2, 0}, 0.0);

  EXPECT_EQ(search.ids[0], 2);
}

TYPED_TEST(KrigingSearch, LeavesSamplesOut) {
  Search<TypeParam> search(this->list_);

  search.next({1, 2, 3, 4, 9}, 0.0);

  EXPECT_EQ(search.ids[0], 3) << "the last test point is a sample";
}

TYPED_TEST(KrigingSearch, TakesEachPointOnceAndKeepsTheDistance) {
  Search<TypeParam> search(this->list_);
  std::vector<double> const errors{4, 5, 4.5, 1, 0};

  search.next(errors, 1.5); // squared: 1 apart is too close, 2 apart is not
  search.next(errors, 1.5);
  search.next(errors, 1.5);

  EXPECT_EQ(search.count, 2);
  EXPECT_EQ(search.ids[0], 1);
  EXPECT_EQ(search.ids[1], 3) << "the neighbours at 1 and 3 are too close to 2";
  EXPECT_FALSE(search.found);
  EXPECT_EQ(values(search.chosen), (std::vector<double>{5, 1}));
}

TYPED_TEST(KrigingSearch, TakesErrorsOfZeroButNotWhatIsNoNumber) {
  Search<TypeParam> search(this->list_);
  double const nan = std::nan("");

  search.next({0, nan, nan, nan, 0}, 0.0);

  EXPECT_TRUE(search.found);
  EXPECT_EQ(search.ids[0], 0);
}

TYPED_TEST(KrigingSearch, NeedsOneErrorForEachTestPoint) {
  Search<TypeParam> search(this->list_);

  EXPECT_EQ(search.next({1, 2, 3}, 0.0), 1);

  EXPECT_FALSE(search.found);
  EXPECT_EQ(search.count, 0);
}

TYPED_TEST(KrigingSearch, NeedsTheErrorsOfAllModels) {
  int count = 2;
  int ids[2];
  RealVec chosen;

  EXPECT_EQ(this->list_.searchNewPoints(count, ids, chosen, 0.0), 1) << "nothing was evaluated";
}

// ----- the whole evaluation ----------------------------------------------------------------------

TYPED_TEST(KrigingRefinement, ProposesWhatBruteForceFinds) {
  auto& list = this->list_;
  C_MatMGe<TypeParam> points = grid<TypeParam>(7, 3.0);
  this->fitAndTestAt(points);

  ASSERT_EQ(this->evalTest(6), 0);

  std::vector<double> errors(points.NbRow(), 0.0);
  for (int i = 0; i < points.NbRow(); ++i) {
    for (int model = 0; model < 2; ++model)
      errors[i] = std::max(errors[i], list.GetItemKriging(model)->TestRelativeError(i));
  }
  double const spacing = 0.02 * 3.0;
  std::vector<int> expected;
  while (expected.size() < 6) {
    int best = -1;
    for (int i = 0; i < points.NbRow(); ++i) {
      bool free = !list.GetItemKriging(0)->IsInputPoint(points, i);
      for (int id : expected) {
        double const dx = std::abs(points(i, 0) - points(id, 0));
        double const dy = std::abs(points(i, 1) - points(id, 1));
        free = free && i != id && std::hypot(dx, dy) >= spacing;
      }
      if (free && (best < 0 || errors[i] >= errors[best])) best = i;
    }
    expected.push_back(best);
  }
  ASSERT_EQ(this->count_, 6);
  for (int k = 0; k < 6; ++k) {
    int id = -1;
    EXPECT_EQ(list.GetIdOfNewPoint(k, id), 0);
    EXPECT_EQ(id, expected[k]);
    EXPECT_EQ(this->proposed_(k, 0), points(expected[k], 0));
    EXPECT_EQ(this->proposed_(k, 1), points(expected[k], 1));
  }
  EXPECT_EQ(this->worst_, errors[expected[0]]);
  EXPECT_EQ(this->values_.NbRow(), points.NbRow());
  EXPECT_EQ(this->values_.NbCol(), 3);
  int id = 0;
  EXPECT_EQ(list.GetIdOfNewPoint(6, id), 1);
  EXPECT_EQ(id, -1);
  id = 0;
  EXPECT_EQ(list.GetIdOfNewPoint(-1, id), 1);
  EXPECT_EQ(id, -1);
}

TYPED_TEST(KrigingRefinement, ProposesNothingWhenNothingIsWanted) {
  this->fitAndTestAt(grid<TypeParam>(5, 3.0));
  this->list_.NumNewPoints = 4;

  EXPECT_EQ(this->evalTest(0), 0);

  EXPECT_EQ(this->count_, 0);
  EXPECT_EQ(this->list_.NumNewPoints, 0);
  EXPECT_EQ(this->values_.NbRow(), 25);
  EXPECT_GT(this->worst_, 0.0);
}

TYPED_TEST(KrigingRefinement, ProposesAsManyPointsAsThereAre) {
  C_MatMGe<TypeParam> points = grid<TypeParam>(3, 3.0); // the samples
  points(4, 0) += TypeParam(0.5);                       // and one that is none
  this->fitAndTestAt(points);

  EXPECT_EQ(this->evalTest(5), 0);

  EXPECT_EQ(this->count_, 1);
  int id = -1;
  EXPECT_EQ(this->list_.GetIdOfNewPoint(0, id), 0);
  EXPECT_EQ(id, 4);
}

TYPED_TEST(KrigingRefinement, ProposesAtMostAHundredPoints) {
  this->fitAndTestAt(grid<TypeParam>(14, 2.9));

  for (int wanted : {100, 150, 2147483647}) {
    EXPECT_EQ(this->evalTest(wanted), 0);
    EXPECT_EQ(this->count_, 100);
    EXPECT_EQ(this->proposed_.NbRow(), 100);
    int id = -1;
    EXPECT_EQ(this->list_.GetIdOfNewPoint(99, id), 0);
    EXPECT_GE(id, 0);
  }
}

TYPED_TEST(KrigingRefinement, NeedsTestPoints) {
  fitList(this->list_);
  this->list_.NumNewPoints = 4; // of an earlier evaluation

  EXPECT_EQ(this->evalTest(2), 1);
  EXPECT_EQ(this->list_.NumNewPoints, 0);
}

TYPED_TEST(KrigingRefinement, SeesNewSamplesInTheNextRound) {
  auto& list = this->list_;
  C_MatMGe<TypeParam> points = grid<TypeParam>(7, 3.0);
  this->fitAndTestAt(points);
  ASSERT_EQ(this->evalTest(3), 0);
  ASSERT_EQ(this->count_, 3);
  C_MatMGe<TypeParam> simulated = responses<TypeParam>(this->proposed_, 3);

  ASSERT_EQ(list.AppendSampData(this->proposed_, simulated), 0);
  ASSERT_EQ(list.Solve(), 0);
  ASSERT_EQ(this->evalTest(3), 0);

  C_MatMGe<TypeParam> plain;
  ASSERT_EQ(list.EvalModel(points, plain), 0);
  for (int i = 0; i < plain.NbRow(); ++i) {
    for (int j = 0; j < plain.NbCol(); ++j)
      EXPECT_NEAR(std::abs(this->values_(i, j) - plain(i, j)), 0.0, 1e-9)
          << "with caches and without";
  }
  for (int k = 0; k < this->count_; ++k) {
    for (int model = 0; model < 2; ++model)
      EXPECT_FALSE(list.GetItemKriging(model)->IsInputPoint(this->proposed_, k));
  }
}

// ----- how many points ---------------------------------------------------------------------------

TYPED_TEST(KrigingRefinement, EstimatesHowManyPointsTheTargetTakes) {
  auto& list = this->list_;
  list.NumVar = 5;
  auto const required = [&](double before, double now, int added, double target) {
    return list.EvaluateNumberOfNewPointsRequired(before, now, added, target);
  };

  EXPECT_EQ(required(0.5, 0.1, 4, 0.2), 1) << "reached";
  EXPECT_EQ(required(0.5, 0.2, 3, 0.1), 1) << "0.1 a point, 0.1 to go";
  EXPECT_EQ(required(0.1, 0.2, 1, 0.05), 5) << "it got worse";
  EXPECT_EQ(required(0.75, 0.5, 2, 0.0), 4) << "0.125 a point, 0.5 to go";
  EXPECT_EQ(required(0.75, 0.5, 2, 0.0625), 3) << "3.5 points are cut to 3";
  EXPECT_EQ(required(1.0, 0.5, 1, 0.25), 1) << "half a point is still one";
  EXPECT_EQ(required(0.6, 0.5, 1, 0.0001), 4);
  EXPECT_EQ(required(0.501, 0.5, 1, 0.0), 5) << "never more than the variables";
  EXPECT_EQ(required(0.5, 0.5, 3, 0.1), 5) << "nothing was gained";
  EXPECT_EQ(required(0.5, 0.5, 3, 0.5), 5) << "nothing was gained, and nothing is to go";
  EXPECT_EQ(required(0.5, 0.2, 0, 0.1), 1) << "a gain from no point at all";
}
