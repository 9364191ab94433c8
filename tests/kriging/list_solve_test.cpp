// What a list says while it fits, and how it collects predictions.
#include "kriging/ListFixture.h"
#include "kriging/Listener.h"

using namespace kriging_test;

namespace {

template <class T>
void makeFittable(KrigingList<T>& list) {
  makeList(list, {1, 2}, 8, 2);
  ASSERT_EQ(list.PutPolynomType(E_PolyConst, -1), 0);
}

} // namespace

template <class T>
class KrigingListSolve : public ::testing::Test {
protected:
  OpenList<T> list_;
};
TYPED_TEST_SUITE(KrigingListSolve, Scalars);

TYPED_TEST(KrigingListSolve, SaysWhichModelItFits) {
  makeFittable(this->list_);
  Listener listener;

  ASSERT_EQ(this->list_.Solve(), 0);

  EXPECT_EQ(listener.otherLines(), (Texts{"\n================================================",
                                          ">> New Solve of list of Kriging models...",
                                          ">> -> Solve of 0-th Kriging model...",
                                          ">> -> Solve of 1-th Kriging model..."}));
}

TYPED_TEST(KrigingListSolve, SaysNothingBelowItsLevelOrOutOfItsScope) {
  makeFittable(this->list_);
  Listener listener;
  listener.letThrough(2, true);
  ASSERT_EQ(this->list_.Solve(), 0);
  listener.letThrough(3, false);
  ASSERT_EQ(this->list_.Solve(), 0);

  EXPECT_EQ(listener.texts, Texts{});
}

TYPED_TEST(KrigingListSolve, SaysNothingWhenItFitsAgain) {
  makeFittable(this->list_);
  ASSERT_EQ(this->list_.Solve(), 0);
  Listener listener;

  ASSERT_EQ(this->list_.ReSolve(), 0);

  EXPECT_EQ(listener.otherLines(), Texts{});
}

TYPED_TEST(KrigingListSolve, PrintsTextsAndFormats) {
  Listener listener;

  EXPECT_EQ(this->list_.Print(std::string("as it is: %d")), 0);
  EXPECT_EQ(this->list_.Print("%d of %s", 3, "many"), 0);

  EXPECT_EQ(listener.texts, (Texts{"as it is: %d", "3 of many"}));
}

TYPED_TEST(KrigingListSolve, CutsFormattedTextsThatAreTooLong) {
  Listener listener;
  std::string const endless(100000, 'x');

  EXPECT_EQ(this->list_.Print("%s", endless.c_str()), 0);

  ASSERT_EQ(listener.texts.size(), 1u);
  EXPECT_EQ(listener.texts[0], endless.substr(0, listener.texts[0].size()));
}

TYPED_TEST(KrigingListSolve, StopsAtTheFirstModelThatFails) {
  makeFittable(this->list_);
  this->list_.GetItemKriging(0)->PutSolnType(1);
  Listener listener;

  EXPECT_EQ(this->list_.Solve(), 1);

  EXPECT_EQ(listener.otherLines().back(), ">> -> Solve of 0-th Kriging model...");
  EXPECT_EQ(this->list_.GetItemKriging(1)->GetKrigingStatus(), E_KrigingStatusReady);
  EXPECT_EQ(this->list_.ReSolve(), 1);
}

// ----- predictions -------------------------------------------------------------------------------

TYPED_TEST(KrigingListSolve, PutsThePredictionsOfItsModelsSideBySide) {
  makeFittable(this->list_);
  ASSERT_EQ(this->list_.Solve(), 0);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(5, 2, 0.9);
  C_MatMGe<TypeParam> all;
  C_MatMGe<TypeParam> values;
  C_MatMGe<double> allErrors;
  C_MatMGe<double> errors;

  ASSERT_EQ(this->list_.EvalModel(points, all), 0);
  ASSERT_EQ(all.NbCol(), 3);
  int first = 0;
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(this->list_.GetItemKriging(i)->EvalModel(points, values), 0);
    C_MatMGe<TypeParam> slice(5, i + 1, all[first], 5);
    expectEqual(slice, values);
    first += i + 1;
  }
  ASSERT_EQ(this->list_.EvalModelAndPredictor(points, all, allErrors), 0);
  ASSERT_EQ(this->list_.GetItemKriging(1)->EvalModelAndPredictor(points, values, errors), 0);
  C_MatMGe<TypeParam> slice(5, 2, all[1], 5);
  C_MatMGe<double> errorSlice(5, 2, allErrors[1], 5);
  expectEqual(slice, values);
  expectEqual(errorSlice, errors);
}

TYPED_TEST(KrigingListSolve, LetsTheWorstModelNameThePoints) {
  makeFittable(this->list_);
  ASSERT_EQ(this->list_.Solve(), 0);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(6, 2, 0.9);
  C_MatMGe<TypeParam> y;
  C_MatMGe<TypeParam> chosen;
  double worst = -1.0;
  int count = 2;

  ASSERT_EQ(this->list_.EvalModel(points, y, count, chosen, worst, false), 0);

  double largest = 0.0;
  C_MatMGe<TypeParam> expected;
  for (int i = 0; i < 2; ++i) {
    C_MatMGe<TypeParam> own;
    double error = 0.0;
    int wanted = 2;
    ASSERT_EQ(this->list_.GetItemKriging(i)->EvalModel(points, y, wanted, own, error, false), 0);
    if (error > largest) {
      largest = error;
      expected.Copy(own);
    }
  }
  EXPECT_EQ(worst, largest);
  EXPECT_EQ(count, expected.NbRow());
  expectEqual(chosen, expected);
}

TYPED_TEST(KrigingListSolve, NamesNoPointsWhenNoneAreWanted) {
  makeFittable(this->list_);
  ASSERT_EQ(this->list_.Solve(), 0);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(6, 2, 0.9);
  C_MatMGe<TypeParam> y;
  C_MatMGe<TypeParam> chosen = pattern<TypeParam>(4, 2, 0.5);
  double worst = -1.0;
  int count = 0;

  ASSERT_EQ(this->list_.EvalModel(points, y, count, chosen, worst, false), 0);

  EXPECT_EQ(count, 0);
  EXPECT_EQ(worst, 0.0);
  EXPECT_EQ(chosen.NbRow(), 4) << "an error of 0 is not above 0";
}

TYPED_TEST(KrigingListSolve, FailsWithTheFirstModelThatDoes) {
  makeFittable(this->list_);
  ASSERT_EQ(this->list_.Solve(), 0);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(6, 3, 0.9);
  C_MatMGe<TypeParam> y;
  C_MatMGe<double> errors;

  EXPECT_EQ(this->list_.EvalModel(points, y), 1);
  EXPECT_EQ(this->list_.EvalModelAndPredictor(points, y, errors), 1);
}

TYPED_TEST(KrigingListSolve, FailsWhenAModelHasOtherOutputsThanTheList) {
  makeFittable(this->list_);
  ASSERT_EQ(this->list_.Solve(), 0);
  OpenModel<TypeParam> wider;
  makeSolved(wider, 8, 2, 5, E_ScaleNone, E_PolyConst);
  ASSERT_EQ(this->list_.GetItemKriging(1)->Copy(&wider), 0);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(6, 2, 0.9);
  C_MatMGe<TypeParam> y;
  C_MatMGe<double> errors;

  EXPECT_EQ(this->list_.EvalModel(points, y), 1);
  EXPECT_EQ(this->list_.EvalModelAndPredictor(points, y, errors), 1);
}

TYPED_TEST(KrigingListSolve, ChecksItsWorstRelativeError) {
  makeFittable(this->list_);
  ASSERT_EQ(this->list_.Solve(), 0);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(6, 2, 0.9);
  C_MatMGe<TypeParam> actual = pattern<TypeParam>(6, 3, 0.6);
  double error = -1.0;
  double predicted = -1.0;

  ASSERT_EQ(this->list_.CheckRelativeError(points, actual, error, predicted), 0);

  double largest = 0.0;
  double largestPredicted = 0.0;
  int first = 0;
  for (int i = 0; i < 2; ++i) {
    C_MatMGe<TypeParam> slice(6, i + 1, actual[first], 6);
    double own = 0.0;
    double ownPredicted = 0.0;
    ASSERT_EQ(this->list_.GetItemKriging(i)->CheckRelativeError(points, slice, own, ownPredicted),
              0);
    largest = std::max(largest, own);
    largestPredicted = std::max(largestPredicted, ownPredicted);
    first += i + 1;
  }
  EXPECT_EQ(error, largest);
  EXPECT_EQ(predicted, largestPredicted);
}

TYPED_TEST(KrigingListSolve, ChecksNothingWhenShapesDoNotFit) {
  makeFittable(this->list_);
  ASSERT_EQ(this->list_.Solve(), 0);
  double error = -1.0;
  double predicted = -1.0;
  auto const check = [&](int xRows, int xColumns, int yRows, int yColumns) {
    C_MatMGe<TypeParam> x = pattern<TypeParam>(xRows, xColumns, 0.2);
    C_MatMGe<TypeParam> y = pattern<TypeParam>(yRows, yColumns, 0.2);
    return this->list_.CheckRelativeError(x, y, error, predicted);
  };

  EXPECT_EQ(check(3, 2, 4, 3), 0);
  EXPECT_EQ(check(3, 3, 3, 3), 0);
  EXPECT_EQ(check(3, 2, 3, 2), 0);
  EXPECT_EQ(error, -1.0);
  EXPECT_EQ(predicted, -1.0);
}
