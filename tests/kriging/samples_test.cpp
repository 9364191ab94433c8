// Samples, test points and ranges of a model.
#include <cmath>

#include "kriging/ModelFixture.h"

using namespace kriging_test;

template <class T>
class KrigingSamples : public ::testing::Test {
protected:
  void withSamples() {
    C_MatMGe<T> x = matrix<T>({{T(0), T(1)}, {T(2), T(3)}, {T(4), T(7)}});
    C_MatMGe<T> y = matrix<T>({{T(-3), T(10)}, {T(1), T(12)}, {T(2), T(-11)}});
    ASSERT_EQ(model_.PutNumVar(2), 0);
    ASSERT_EQ(model_.PutNumSol(2, 1, nullptr), 0);
    ASSERT_EQ(model_.PutInpSampMtx(x), 0);
    ASSERT_EQ(model_.PutOutSampMtx(y), 0);
  }

  std::vector<double> range(int output) {
    auto& ranges = model_.OutputRanges;
    return {ranges(output, 0), ranges(output, 1), ranges(output, 2)};
  }

  OpenModel<T> model_;
};
TYPED_TEST_SUITE(KrigingSamples, Scalars);

using Range = std::vector<double>;

TYPED_TEST(KrigingSamples, AreCopiedInAndOut) {
  this->withSamples();
  C_MatMGe<TypeParam> x;
  C_MatMGe<TypeParam> y;

  EXPECT_EQ(this->model_.GetInpSampMtx(x), 0);
  EXPECT_EQ(this->model_.GetOutSampMtx(y), 0);

  EXPECT_EQ(x(2, 1), TypeParam(7));
  EXPECT_EQ(y(0, 0), TypeParam(-3));
  x(2, 1) = TypeParam(99);
  EXPECT_EQ(this->model_.InpSampMtx(2, 1), TypeParam(7));
}

TYPED_TEST(KrigingSamples, AreNotGivenBeforeTheyAreSet) {
  C_MatMGe<TypeParam> out;
  EXPECT_EQ(this->model_.GetInpSampMtx(out), 1);
  EXPECT_EQ(this->model_.GetOutSampMtx(out), 1);
}

TYPED_TEST(KrigingSamples, OfInputsSetSizesAndMakeTheModelReady) {
  auto& model = this->model_;
  this->withSamples();
  for (int status = E_KrigingStatusInit; status <= E_KrigingStatusIncomplete; ++status) {
    model.Status = status;
    model.clearStale();
    model.KernRecentre = true;
    C_MatMGe<TypeParam> same(model.InpSampMtx);

    EXPECT_EQ(model.PutInpSampMtx(same), 0);

    EXPECT_EQ(model.Status, E_KrigingStatusReady) << "also when nothing has changed";
    EXPECT_TRUE(model.TestCorrStale);
    EXPECT_TRUE(model.TestPolyStale);
    EXPECT_FALSE(model.KernRecentre);
  }
  C_MatMGe<TypeParam> wider = pattern<TypeParam>(4, 3, 0.2);
  EXPECT_EQ(model.PutInpSampMtx(wider), 0);
  EXPECT_EQ(model.NumSamp, 4);
  EXPECT_EQ(model.NumVar, 3);
  EXPECT_TRUE(model.InpSampSet);
}

TYPED_TEST(KrigingSamples, OfInputsDoNotSetTheNumberOfMultipliers) {
  auto& model = this->model_;
  C_MatMGe<TypeParam> x = pattern<TypeParam>(4, 2, 0.2);
  C_MatMGe<TypeParam> y = pattern<TypeParam>(4, 1, 0.4);
  model.PutNumSol(1, 1, nullptr);
  model.PutInpSampMtx(x);
  model.PutOutSampMtx(y);

  EXPECT_EQ(model.CheckInputState(), E_KrigingStatusIncomplete);
  EXPECT_EQ(model.PutNumVar(2), 0) << "equal to what the samples set: nothing happens";
  EXPECT_EQ(model.CheckInputState(), E_KrigingStatusIncomplete);
  EXPECT_EQ(model.PutKrigingKernVarType(E_KernAnisotropic), 0);
  EXPECT_EQ(model.CheckInputState(), E_KrigingStatusReady);
}

TYPED_TEST(KrigingSamples, OfNoRowsOrColumnsAreRefused) {
  C_MatMGe<TypeParam> noRows(0, 2);
  C_MatMGe<TypeParam> noColumns(2, 0);
  EXPECT_EQ(this->model_.PutInpSampMtx(noRows), 1);
  EXPECT_EQ(this->model_.PutInpSampMtx(noColumns), 1);
  EXPECT_EQ(this->model_.GetKrigingStatus(), E_KrigingStatusInit);
}

TYPED_TEST(KrigingSamples, OfOutputsMustHaveTheShapeOfTheModel) {
  this->withSamples();
  C_MatMGe<TypeParam> tall = pattern<TypeParam>(4, 2, 0.2);
  C_MatMGe<TypeParam> wide = pattern<TypeParam>(3, 3, 0.2);
  this->model_.Status = E_KrigingStatusSolved;

  EXPECT_EQ(this->model_.PutOutSampMtx(tall), 1);
  EXPECT_EQ(this->model_.PutOutSampMtx(wide), 1);
  EXPECT_EQ(this->model_.OutSampMtx.NbRow(), 3);

  C_MatMGe<TypeParam> fitting = pattern<TypeParam>(3, 2, 0.2);
  EXPECT_EQ(this->model_.PutOutSampMtx(fitting), 0);
  EXPECT_EQ(this->model_.Status, E_KrigingStatusSolved);
}

TYPED_TEST(KrigingSamples, OfOutputsWithoutGroupsLeaveTheFlagAsItWas) {
  auto& model = this->model_;
  model.NumSamp = 2;
  model.NumSol = 1; // no PutNumSol, so no groups: the ranges cannot be collected
  C_MatMGe<TypeParam> y = pattern<TypeParam>(2, 1, 0.2);

  for (bool const before : {false, true}) {
    model.OutSampSet = before;
    EXPECT_EQ(model.PutOutSampMtx(y), 1);
    EXPECT_EQ(model.OutSampSet, before);
  }
}

TYPED_TEST(KrigingSamples, OfOutputsOfNoSamplesHaveNoRanges) {
  this->model_.PutNumSol(2, 2, nullptr);
  C_MatMGe<TypeParam> nothing(0, 2);
  EXPECT_EQ(this->model_.PutOutSampMtx(nothing), 1);
  EXPECT_FALSE(this->model_.OutSampSet);
}

TYPED_TEST(KrigingSamples, ViewsOfLargerMatricesAreCopiedByTheirRows) {
  C_MatMGe<TypeParam> large = pattern<TypeParam>(5, 2, 0.2);
  C_MatMGe<TypeParam> view(3, 2, large.Adr(), 5);
  this->model_.PutNumVar(2);

  EXPECT_EQ(this->model_.PutInpSampMtx(view), 0);

  expectEqual(this->model_.InpSampMtx, view);
}

// ----- ranges ------------------------------------------------------------------------------------

TYPED_TEST(KrigingSamples, RangeOverMagnitudes) {
  this->withSamples();

  EXPECT_EQ(this->range(0), (Range{1, 3, 2})) << "of -3, 1 and 2";
  EXPECT_EQ(this->range(1), (Range{10, 12, 2}));
  EXPECT_EQ(values(this->model_.OutputGlobalRange), (Range{std::sqrt(8.0)}));
}

TEST(KrigingRanges, AreOfModuliForComplexOutputs) {
  using C = std::complex<double>;
  OpenModel<C> model;
  C_MatMGe<C> x = matrix<C>({{C(0)}, {C(1)}});
  C_MatMGe<C> y = matrix<C>({{C(3, 4)}, {C(0, -1)}});
  model.PutNumVar(1);
  model.PutNumSol(1, 1, nullptr);
  model.PutInpSampMtx(x);
  ASSERT_EQ(model.PutOutSampMtx(y), 0);

  EXPECT_DOUBLE_EQ(model.OutputRanges(0, 0), 1.0);
  EXPECT_DOUBLE_EQ(model.OutputRanges(0, 1), 5.0);
  EXPECT_DOUBLE_EQ(model.OutputRanges(0, 2), 4.0);
}

TYPED_TEST(KrigingSamples, RangeByGroups) {
  auto& model = this->model_;
  int sizes[] = {1, 2};
  C_MatMGe<TypeParam> y = matrix<TypeParam>(
      {{TypeParam(0), TypeParam(0), TypeParam(1)}, {TypeParam(2), TypeParam(3), TypeParam(5)}});
  model.PutNumSol(3, 2, sizes);
  model.PutNumSamp(2);
  ASSERT_EQ(model.PutOutSampMtx(y), 0);
  RealVec ranges;

  EXPECT_EQ(model.GetOutputGlobalRange(ranges), 0);

  EXPECT_EQ(values(ranges), (Range{2, 5})) << "the norm of 3 and 4 is 5";
}

// ----- appending ---------------------------------------------------------------------------------

TYPED_TEST(KrigingSamples, AreAppendedBelow) {
  auto& model = this->model_;
  this->withSamples();
  model.Status = E_KrigingStatusSolved;
  C_MatMGe<TypeParam> x =
      matrix<TypeParam>({{TypeParam(8), TypeParam(9)}, {TypeParam(10), TypeParam(11)}});
  C_MatMGe<TypeParam> y =
      matrix<TypeParam>({{TypeParam(5), TypeParam(20)}, {TypeParam(-6), TypeParam(11)}});

  EXPECT_EQ(model.AppendSampData(x, y, true), 0);

  C_MatMGe<TypeParam> allX = matrix<TypeParam>({{TypeParam(0), TypeParam(1)},
                                                {TypeParam(2), TypeParam(3)},
                                                {TypeParam(4), TypeParam(7)},
                                                {TypeParam(8), TypeParam(9)},
                                                {TypeParam(10), TypeParam(11)}});
  expectEqual(model.InpSampMtx, allX);
  EXPECT_EQ(model.OutSampMtx(2, 1), TypeParam(-11));
  EXPECT_EQ(model.OutSampMtx(4, 0), TypeParam(-6));
  EXPECT_EQ(model.NumSamp, 5);
  EXPECT_EQ(model.Status, E_KrigingStatusReady);
  EXPECT_EQ(model.KernStartPending, 1);
  EXPECT_TRUE(model.KernRecentre);
  EXPECT_EQ(this->range(0), (Range{1, 6, 5}));
  EXPECT_EQ(this->range(1), (Range{10, 20, 10}));
  EXPECT_EQ(values(model.OutputGlobalRange), (Range{std::sqrt(125.0)}));
  EXPECT_EQ(model.AppendSampData(x, y, false), 0);
  EXPECT_EQ(model.KernStartPending, 0);
}

TYPED_TEST(KrigingSamples, AppendedInsideTheStoredRangeLeaveItAsItIs) {
  this->withSamples();
  C_MatMGe<TypeParam> x = matrix<TypeParam>({{TypeParam(8), TypeParam(9)}});
  C_MatMGe<TypeParam> y = matrix<TypeParam>({{TypeParam(2.5), TypeParam(-10.5)}});

  EXPECT_EQ(this->model_.AppendSampData(x, y, false), 0);

  EXPECT_EQ(this->range(0), (Range{1, 3, 2}));
  EXPECT_EQ(this->range(1), (Range{10, 12, 2}));
}

TYPED_TEST(KrigingSamples, FoldTheirMagnitudesIntoTheStoredOnes) {
  auto& model = this->model_;
  this->withSamples();
  // Stored values that no samples have: what counts is the larger difference after folding.
  model.OutputRanges(0, 0) = 1.0;
  model.OutputRanges(0, 1) = 3.0;
  model.OutputRanges(0, 2) = 5.0;
  C_MatMGe<TypeParam> y =
      matrix<TypeParam>({{TypeParam(0.5), TypeParam(12)}, {TypeParam(4), TypeParam(12)}});

  EXPECT_EQ(model.UpdateOutputRanges(y), 0);

  EXPECT_EQ(this->range(0), (Range{1, 3, 5})) << "0.5 to 4 is 3.5, and not above 5";
  EXPECT_EQ(this->range(1), (Range{10, 12, 2}));

  C_MatMGe<TypeParam> equal =
      matrix<TypeParam>({{TypeParam(0), TypeParam(12)}, {TypeParam(5), TypeParam(12)}});
  EXPECT_EQ(model.UpdateOutputRanges(equal), 0);
  EXPECT_EQ(this->range(0), (Range{1, 3, 5})) << "an equal difference replaces nothing";
}

TYPED_TEST(KrigingSamples, CannotBeAppendedWithoutEarlierOnes) {
  auto& model = this->model_;
  this->withSamples();
  C_MatMGe<TypeParam> x = pattern<TypeParam>(1, 2, 0.2);
  C_MatMGe<TypeParam> y = pattern<TypeParam>(1, 2, 0.2);
  for (bool* set : {&model.InpSampSet, &model.OutSampSet}) {
    *set = false;
    EXPECT_EQ(model.AppendSampData(x, y, false), 1);
    *set = true;
  }
  EXPECT_EQ(model.NumSamp, 3);
  EXPECT_EQ(model.AppendSampData(x, y, false), 0);
}

TYPED_TEST(KrigingSamples, AppendedMustFit) {
  auto& model = this->model_;
  this->withSamples();
  model.Status = E_KrigingStatusSolved;
  auto const append = [&](int xRows, int xColumns, int yRows, int yColumns) {
    C_MatMGe<TypeParam> x = pattern<TypeParam>(xRows, xColumns, 0.2);
    C_MatMGe<TypeParam> y = pattern<TypeParam>(yRows, yColumns, 0.2);
    return model.AppendSampData(x, y, false);
  };

  EXPECT_EQ(append(0, 2, 0, 2), 1);
  EXPECT_EQ(append(1, 0, 1, 2), 1);
  EXPECT_EQ(append(1, 2, 2, 2), 1);
  EXPECT_EQ(append(1, 3, 1, 2), 1);
  EXPECT_EQ(append(1, 2, 1, 3), 1);

  EXPECT_EQ(model.NumSamp, 3);
  EXPECT_EQ(model.InpSampMtx.NbRow(), 3);
  EXPECT_EQ(model.Status, E_KrigingStatusSolved);
}

TYPED_TEST(KrigingSamples, AreThereThoughTheirRangesFailed) {
  auto& model = this->model_;
  this->withSamples();
  model.OutputRanges.Release();
  C_MatMGe<TypeParam> x = pattern<TypeParam>(1, 2, 0.2);
  C_MatMGe<TypeParam> y = pattern<TypeParam>(1, 2, 0.2);

  EXPECT_EQ(model.AppendSampData(x, y, false), 1);

  EXPECT_EQ(model.NumSamp, 4);
  EXPECT_EQ(model.InpSampMtx.NbRow(), 4);
  EXPECT_EQ(model.OutSampMtx.NbRow(), 4);
}

TYPED_TEST(KrigingSamples, AreNotAppendedToSamplesThatDoNotFitTheModel) {
  auto& model = this->model_;
  this->withSamples();
  C_MatMGe<TypeParam> more = pattern<TypeParam>(5, 2, 0.3);
  ASSERT_EQ(model.PutInpSampMtx(more), 0); // five inputs now, and still three outputs
  C_MatMGe<TypeParam> x = pattern<TypeParam>(1, 2, 0.2);
  C_MatMGe<TypeParam> y = pattern<TypeParam>(1, 2, 0.2);

  EXPECT_EQ(model.AppendSampData(x, y, false), 1);
  EXPECT_EQ(model.InpSampMtx.NbRow(), 5);
  EXPECT_EQ(model.OutSampMtx.NbRow(), 3);
}

// ----- test points -------------------------------------------------------------------------------

TYPED_TEST(KrigingSamples, OfTestsLeaveTheCachesAsTheyAre) {
  auto& model = this->model_;
  this->withSamples();
  model.clearStale();
  C_MatMGe<TypeParam> points = pattern<TypeParam>(6, 2, 0.2);

  EXPECT_EQ(model.PutInpTestMtx(points), 0);

  EXPECT_TRUE(model.InpTestSet);
  expectEqual(model.InpTestMtx, points);
  EXPECT_FALSE(model.TestCorrStale);
  EXPECT_FALSE(model.TestPolyStale);
}

TYPED_TEST(KrigingSamples, OfTestsMustHaveRowsAndTheVariables) {
  this->withSamples();
  C_MatMGe<TypeParam> none(0, 2);
  C_MatMGe<TypeParam> wide = pattern<TypeParam>(2, 3, 0.2);

  EXPECT_EQ(this->model_.PutInpTestMtx(none), 1);
  EXPECT_EQ(this->model_.PutInpTestMtx(wide), 1);
  EXPECT_FALSE(this->model_.InpTestSet);
}
