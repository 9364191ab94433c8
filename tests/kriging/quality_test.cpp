// Quality measures, selection of refinement points and checks of new ones.
#include <memory>

#include "kriging/fitSupport.h"

namespace {

using fit::Complex;
using fit::Probe;
using fit::Vec;

class KrigingQuality : public ::testing::Test {
protected:
  void SetUp() override {
    fit::load(model, X, Y);
    model.PutPolynomType(E_PolyLinear);
    fit::setKernel(model, {2.0});
    ASSERT_EQ(model.Solve(), 0);
  }

  C_MatMGe<double> X = fit::randomMatrix<double>(15, 2, 1), Y = fit::responseAt(X, 2);
  C_MatMGe<double> D;
  Probe<double> model;
};

TEST_F(KrigingQuality, NearZeroAValueIsMeasuredAgainstHalfTheRange) {
  model.OutputRanges(0, 2) = 10.0;
  model.OutputRanges(1, 2) = 10.0;
  C_MatMGe<double> M = fit::matrix({{0.0005, -2.0}}), E = fit::matrix({{3.0, 3.0}});

  ASSERT_EQ(model.GetRelativePredictorError(M, E, D), 0);

  EXPECT_DOUBLE_EQ(D(0, 0), 3.0 / 5.0005);
  EXPECT_DOUBLE_EQ(D(0, 1), 1.5);
}

TEST_F(KrigingQuality, WithoutARangeTheErrorItselfIsTheMeasure) {
  model.OutputRanges(0, 2) = 0.0;
  C_MatMGe<double> M = fit::matrix({{0.0, 1.0}}), E = fit::matrix({{3.0, 3.0}});
  ASSERT_EQ(model.GetRelativePredictorError(M, E, D), 0);
  EXPECT_EQ(D(0, 0), 3.0);
}

TEST_F(KrigingQuality, GroupsAreMeasuredByTheirNorms) {
  Probe<double> grouped;
  grouped.PutNumVar(2);
  grouped.PutNumSol(2, 1, nullptr);
  grouped.PutInpSampMtx(X);
  grouped.PutOutSampMtx(Y);
  C_MatMGe<double> M = fit::matrix({{30.0, -40.0}, {0.0, 0.0}});
  C_MatMGe<double> E = fit::matrix({{3.0, 4.0}, {3.0, 4.0}});

  ASSERT_EQ(grouped.GetRelativePredictorErrorNorm(M, E, D), 0);

  ASSERT_EQ(D.NbCol(), 1);
  EXPECT_DOUBLE_EQ(D(0, 0), 0.1);
  EXPECT_DOUBLE_EQ(D(1, 0), 5.0 / (grouped.OutputGlobalRange[0] / 2));
}

TEST_F(KrigingQuality, AGroupWithoutRangeIsMeasuredAgainstTheDropLevel) {
  model.OutputGlobalRange[0] = 0.0;
  C_MatMGe<double> M = fit::matrix({{0.0, 1.0}}), E = fit::matrix({{3.0, 3.0}});
  ASSERT_EQ(model.GetRelativePredictorErrorNorm(M, E, D), 0);
  EXPECT_DOUBLE_EQ(D(0, 0), 3.0 / (model.DropToler / 2));
}

TEST_F(KrigingQuality, RelativeErrorsNeedMatchingShapes) {
  C_MatMGe<double> M(3, 2), E(4, 2), narrow(3, 1);
  EXPECT_EQ(model.GetRelativePredictorError(M, E, D), 1);
  EXPECT_EQ(model.GetRelativePredictorErrorNorm(M, E, D), 1);
  EXPECT_EQ(model.GetRelativePredictorError(narrow, narrow, D), 1);
  EXPECT_EQ(model.GetRelativePredictorErrorNorm(narrow, narrow, D), 1);
}

TEST_F(KrigingQuality, ErrorsAreColumnMaximaOfDifferences) {
  C_MatMGe<double> A = fit::matrix({{1.0, 2.0}, {3.0, 4.0}});
  C_MatMGe<double> B = fit::matrix({{1.5, 2.0}, {1.0, 4.25}});
  Vec<double> each;
  double e = -1.0;
  ASSERT_EQ(model.GetError(A, B, D), 0);
  EXPECT_EQ(D(1, 0), 2.0);
  ASSERT_EQ(model.GetError(A, B, each), 0);
  EXPECT_EQ(each[0], 2.0);
  EXPECT_EQ(each[1], 0.25);
  ASSERT_EQ(model.GetError(A, B, e), 0);
  EXPECT_EQ(e, 2.0);
}

TEST_F(KrigingQuality, RelativeErrorsAreTakenAgainstTheActualValues) {
  C_MatMGe<double> A = fit::matrix({{100.0, 200.0}}), B = fit::matrix({{110.0, 100.0}});
  Vec<double> each;
  double e = -1.0;
  ASSERT_EQ(model.GetRelativeError(A, B, D), 0);
  EXPECT_DOUBLE_EQ(D(0, 0), 0.1);
  ASSERT_EQ(model.GetRelativeError(A, B, each), 0);
  EXPECT_DOUBLE_EQ(each[1], 0.5);
  ASSERT_EQ(model.GetRelativeError(A, B, e), 0);
  EXPECT_DOUBLE_EQ(e, 0.5);
}

TEST_F(KrigingQuality, ErrorsNeedASolvedModelAndEqualShapes) {
  C_MatMGe<double> A(2, 2), B(3, 2);
  Vec<double> each;
  double e = -1.0;
  EXPECT_EQ(model.GetError(A, B, D), 1);
  EXPECT_EQ(model.GetRelativeError(A, B, D), 1);
  model.Status = E_KrigingStatusReady;
  EXPECT_EQ(model.GetError(A, A, D), 1);
  EXPECT_EQ(model.GetError(A, A, each), 1);
  EXPECT_EQ(model.GetError(A, A, e), 1);
  EXPECT_EQ(model.GetRelativeError(A, A, D), 1);
  EXPECT_EQ(model.GetRelativeError(A, A, each), 1);
  EXPECT_EQ(model.GetRelativeError(A, A, e), 1);
  EXPECT_EQ(e, -1.0);
}

TEST_F(KrigingQuality, InterpolationAtTheSamplesIsSmallButNotExact) {
  double e = -1.0;
  ASSERT_EQ(model.GetRelativeError(e), 0);
  EXPECT_GT(e, 0.0);
  EXPECT_LT(e, 1e-4);
  Probe<double> fresh;
  EXPECT_EQ(fresh.GetRelativeError(e), 1);
  EXPECT_EQ(e, 1.0);
}

TEST_F(KrigingQuality, ChecksAgainstKnownValuesIgnoreShapesThatDoNotFit) {
  C_MatMGe<double> P = fit::randomMatrix<double>(9, 2, 3), V = fit::responseAt(P, 2), wrong(9, 3);
  double e = -1.0, predicted = -1.0;
  EXPECT_EQ(model.CheckError(P, wrong, e), 0);
  EXPECT_EQ(model.CheckError(wrong, V, e), 0);
  EXPECT_EQ(model.CheckRelativeError(P, wrong, e, predicted), 0);
  EXPECT_EQ(e, -1.0);

  ASSERT_EQ(model.CheckError(P, V, e), 0);
  C_MatMGe<double> values;
  ASSERT_EQ(model.EvalModel(P, values), 0);
  double expected = 0.0;
  for (int i = 0; i < 9; ++i)
    for (int j = 0; j < 2; ++j)
      expected = std::max(expected, std::fabs(values(i, j) - V(i, j)));
  EXPECT_DOUBLE_EQ(e, expected);
  ASSERT_EQ(model.CheckRelativeError(P, V, e, predicted), 0);
  ASSERT_EQ(model.GetRelativeError(V, values, expected), 0);
  EXPECT_EQ(e, expected);
  C_MatMGe<double> worst;
  int one = 1;
  ASSERT_EQ(model.EvalModel(P, values, one, worst, expected, false), 0);
  EXPECT_EQ(predicted, expected);

  model.Status = E_KrigingStatusReady;
  EXPECT_EQ(model.CheckError(P, V, e), 1);
  EXPECT_EQ(model.CheckRelativeError(P, V, e, predicted), 1);
}

// ----- coefficient of determination --------------------------------------------------------------

TEST_F(KrigingQuality, R2OfAVectorWithItselfIsOne) {
  Vec<double> a = fit::vector({1.0, 2.0, 4.0});
  double r2 = -1.0;
  ASSERT_EQ(model.getR2(a, a, r2), 0);
  EXPECT_EQ(r2, 1.0);
}

TEST_F(KrigingQuality, R2SpreadsTheSecondVectorAroundTheMeanOfTheFirst) {
  Vec<double> a = fit::vector({0.0, 2.0}), b = fit::vector({1.0, 4.0}), shorter(1);
  double r2 = -1.0;
  ASSERT_EQ(model.getR2(a, b, r2), 0);
  EXPECT_DOUBLE_EQ(r2, 1.0 - (1.0 + 4.0) / (0.0 + 9.0));
  EXPECT_EQ(model.getR2(a, shorter, r2), 1);
  EXPECT_EQ(r2, 0.0);
}

TEST_F(KrigingQuality, R2DividesByZeroUnguarded) {
  Vec<double> a = fit::vector({0.0, 2.0}), b = fit::vector({1.0, 1.0});
  double r2 = -1.0;
  ASSERT_EQ(model.getR2(a, b, r2), 0);
  EXPECT_TRUE(std::isinf(r2));
}

TEST_F(KrigingQuality, R2OfMatricesIsTheSmallest) {
  C_MatMGe<double> A = fit::matrix({{0.0, 0.0}, {2.0, 2.0}});
  C_MatMGe<double> B = fit::matrix({{0.0, 1.0}, {2.0, 4.0}}), wrong(2, 3);
  double r2 = -1.0;
  ASSERT_EQ(model.getR2(A, B, r2), 0);
  EXPECT_DOUBLE_EQ(r2, 1.0 - 5.0 / 9.0);
  EXPECT_EQ(model.getR2(A, wrong, r2), 1);
  EXPECT_EQ(r2, 0.0);
  model.Status = E_KrigingStatusReady; // shapes alone count
  EXPECT_EQ(model.getR2(A, A, r2), 0);
  EXPECT_EQ(r2, 1.0);
}

TEST_F(KrigingQuality, R2AtTheSamplesIsAlmostOne) {
  double r2 = -1.0;
  ASSERT_EQ(model.getR2(r2), 0);
  EXPECT_NEAR(r2, 1.0, 1e-6);
  Probe<double> fresh;
  EXPECT_EQ(fresh.getR2(r2), 1);
  EXPECT_EQ(r2, 0.0);
}

TEST(KrigingQualityOfComplex, UsesModuliAndAComplexMean) {
  Probe<Complex> model;
  Vec<Complex> a = fit::vector<Complex>({{0.0, 0.0}, {0.0, 2.0}});
  Vec<Complex> b = fit::vector<Complex>({{1.0, 0.0}, {0.0, 4.0}});
  double r2 = -1.0;
  ASSERT_EQ(model.getR2(a, b, r2), 0);
  // mean i; |b - a|^2 = 1, 4; |b - i|^2 = 2, 9
  EXPECT_DOUBLE_EQ(r2, 1.0 - 5.0 / 11.0);

  C_MatMGe<Complex> X = fit::randomMatrix<Complex>(9, 1, 1), Y = fit::responseAt(X, 1);
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyConst);
  ASSERT_EQ(model.Solve(), 0);
  C_MatMGe<Complex> A(1, 1), B(1, 1);
  A(0, 0) = Complex(30.0, 40.0);
  B(0, 0) = Complex(33.0, 44.0);
  C_MatMGe<double> D;
  ASSERT_EQ(model.GetError(A, B, D), 0);
  EXPECT_DOUBLE_EQ(D(0, 0), 5.0);
  ASSERT_EQ(model.GetRelativeError(A, B, D), 0);
  EXPECT_DOUBLE_EQ(D(0, 0), 0.1);
}

// ----- refinement points -------------------------------------------------------------------------

TEST_F(KrigingQuality, ASampleIsAnInputPointWithinItsTolerance) {
  C_MatMGe<double> P = fit::matrix({{X(4, 0) + 0.9e-7, X(4, 1)}, {X(4, 0) + 1.1e-7, X(4, 1)}});
  EXPECT_TRUE(model.IsInputPoint(P, 0));
  EXPECT_FALSE(model.IsInputPoint(P, 1));
  Probe<double> empty;
  EXPECT_FALSE(empty.IsInputPoint(P, 0));
}

TEST_F(KrigingQuality, DistancesFromSamplesAreNotScaled) {
  C_MatMGe<double> P = fit::matrix({{X(4, 0) + 0.9e-7, X(4, 1)}, {X(4, 0) + 1.1e-7, X(4, 1)}});
  model.PutScalingType(E_ScaleBoth);
  ASSERT_EQ(model.Solve(), 0);
  ASSERT_GT(std::fabs(model.InpScaleVec[0] - 1.0), 0.3); // or the case shows nothing
  EXPECT_TRUE(model.IsInputPoint(P, 0));
  EXPECT_FALSE(model.IsInputPoint(P, 1));
}

class SelectLargestErrors : public KrigingQuality {
protected:
  /** Selects among points that are samples where `sample` says so. */
  std::vector<int> select(std::vector<double> errors, std::vector<bool> sample, int k) {
    const int rows = static_cast<int>(errors.size());
    C_MatMGe<double> points(rows, 2);
    Vec<double> e(rows), values;
    for (int i = 0; i < rows; ++i) {
      e[i] = errors[i];
      points(i, 0) = sample[i] ? X(i % 15, 0) : 50.0 + i;
      points(i, 1) = sample[i] ? X(i % 15, 1) : 50.0;
    }
    Kriging<double>::IndexVec ids;
    EXPECT_EQ(model.SelectLargestErrors(points, e, k, ids, values), 0);
    EXPECT_EQ(values.Dim(), k);
    std::vector<int> out;
    for (int j = 0; j < k; ++j) {
      out.push_back(ids[j]);
      EXPECT_EQ(values[j], errors[ids[j]]);
    }
    return out;
  }
};

TEST_F(SelectLargestErrors, RanksInFallingOrderAndKeepsTheLargest) {
  EXPECT_EQ(select({1, 5, 3, 4, 2}, std::vector<bool>(5), 3), (std::vector<int>{1, 3, 2}));
  EXPECT_EQ(select({1, 5, 3, 4, 2}, std::vector<bool>(5), 9), (std::vector<int>{1, 3, 2, 4, 0}));
}

TEST_F(SelectLargestErrors, AnEqualErrorRanksAboveAnEarlierOne) {
  EXPECT_EQ(select({2, 2, 2}, std::vector<bool>(3), 2), (std::vector<int>{2, 1}));
}

TEST_F(SelectLargestErrors, SkipsSamplePoints) {
  EXPECT_EQ(select({9, 1, 8, 2}, {true, false, true, false}, 3), (std::vector<int>{3, 1}));
  EXPECT_EQ(select({9, 8}, {true, true}, 2), (std::vector<int>{}));
}

TEST_F(SelectLargestErrors, ASmallerErrorBehindTheLastIsTakenWithoutTheTestOnSamples) {
  EXPECT_EQ(select({5, 4}, {false, true}, 2), (std::vector<int>{0, 1}));
}

TEST_F(SelectLargestErrors, NeedsAnErrorForEachPoint) {
  C_MatMGe<double> points(3, 2);
  Vec<double> errors(2), values;
  Kriging<double>::IndexVec ids;
  int k = 1;
  EXPECT_EQ(model.SelectLargestErrors(points, errors, k, ids, values), 1);
}

TEST_F(KrigingQuality, ProposesThePointsOfLargestRelativeError) {
  C_MatMGe<double> P = fit::randomMatrix<double>(20, 2, 9), out, newPoints;
  int numNew = 4;
  double largest = -1.0;
  ASSERT_EQ(model.PutInpTestMtx(P), 0);

  ASSERT_EQ(model.EvalModel(P, out, numNew, newPoints, largest, true), 0);

  ASSERT_EQ(numNew, 4);
  ASSERT_EQ(newPoints.NbRow(), 4);
  ASSERT_EQ(model.GetTestRelativeErrorDim(), 20);
  C_MatMGe<double> errors, relative;
  ASSERT_EQ(model.EvalModelAndPredictor(P, out, errors), 0);
  ASSERT_EQ(model.GetRelativePredictorErrorNorm(out, errors, relative), 0);
  int best = 0;
  for (int i = 0; i < 20; ++i)
    EXPECT_NEAR(model.TestRelativeError(i), std::max(relative(i, 0), relative(i, 1)), 1e-10);
  for (int i = 0; i < 20; ++i)
    if (model.TestRelativeError(i) > model.TestRelativeError(best)) best = i;
  EXPECT_EQ(largest, model.TestRelativeError(best));
  EXPECT_EQ(newPoints(0, 0), P(best, 0)); // unscaled
  EXPECT_EQ(newPoints(0, 1), P(best, 1));
}

TEST_F(KrigingQuality, ProposesNoMoreThanThePointsThatAreNotSamples) {
  C_MatMGe<double> P(4, 2), out, newPoints;
  for (int k = 0; k < 2; ++k) {
    P(0, k) = X(0, k); // errors at samples are the smallest, and come before any other here
    P(1, k) = X(1, k);
    P(2, k) = 1.7 + k;
    P(3, k) = -1.8 - k;
  }
  int numNew = 3;
  double largest = -1.0;
  ASSERT_EQ(model.EvalModel(P, out, numNew, newPoints, largest, false), 0);
  EXPECT_EQ(numNew, 2);
  EXPECT_EQ(newPoints.NbRow(), 2);

  P.Copy(X);
  numNew = 1;
  ASSERT_EQ(model.EvalModel(P, out, numNew, newPoints, largest, false), 0);
  EXPECT_EQ(numNew, 0);
  EXPECT_EQ(largest, 0.0);
  EXPECT_EQ(newPoints.NbRow(), 2); // as it was
}

// ----- checks of new points ----------------------------------------------------------------------

class CheckNewPoints : public ::testing::Test {
protected:
  void SetUp() override { fit::load(model, X, Y); }
  std::vector<int> check(C_MatMGe<double> points, double toler) {
    int* ids = nullptr;
    EXPECT_EQ(model.CheckNewPoints(points, accepted, ids, toler), 0);
    const std::unique_ptr<int[]> owned(ids);
    return std::vector<int>(ids, ids + accepted.NbRow());
  }

  C_MatMGe<double> X = fit::matrix({{0.0}, {10.0}, {20.0}});
  C_MatMGe<double> Y = fit::matrix({{1.0}, {2.0}, {3.0}}), accepted;
  Probe<double> model;
};

TEST_F(CheckNewPoints, AcceptsPointsFarFromSamplesAndFromEachOther) {
  EXPECT_EQ(check(fit::matrix({{5.0}, {10.5}, {5.5}, {15.0}}), 1.0), (std::vector<int>{0, 3}));
  EXPECT_EQ(accepted(1, 0), 15.0);
}

TEST_F(CheckNewPoints, StartsFromNothing) {
  accepted = fit::matrix({{77.0}});
  EXPECT_EQ(check(fit::matrix({{5.0}}), 1.0), (std::vector<int>{0}));
  EXPECT_EQ(accepted(0, 0), 5.0);
  EXPECT_EQ(check(fit::matrix({{0.0}}), 1.0), (std::vector<int>{}));
  EXPECT_EQ(accepted.NbRow(), 0);
}

TEST_F(CheckNewPoints, ADistanceOfExactlyTheToleranceRejectsOnlyAsTheLastOne) {
  EXPECT_EQ(check(fit::matrix({{-1.0}}), 1.0), (std::vector<int>{0})); // from the first sample
  EXPECT_EQ(check(fit::matrix({{21.0}}), 1.0), (std::vector<int>{}));  // from the last
}

TEST_F(CheckNewPoints, WithoutToleranceOnlyTheLastOfEachKindCounts) {
  EXPECT_EQ(check(fit::matrix({{0.0}, {10.0}}), 0.0), (std::vector<int>{0, 1})); // duplicates
  EXPECT_EQ(check(fit::matrix({{20.0}}), 0.0), (std::vector<int>{}));
  EXPECT_EQ(check(fit::matrix({{5.0}, {6.0}, {5.0}, {5.0}}), 0.0), (std::vector<int>{0, 1, 2}));
}

TEST_F(CheckNewPoints, UsesTheCallersIdsAndRefusesNarrowPoints) {
  int own[2] = {-1, -1};
  int* ids = own;
  C_MatMGe<double> points = fit::matrix({{0.0}, {5.0}}), narrow(2, 0);
  ASSERT_EQ(model.CheckNewPoints(points, accepted, ids, 1.0), 0);
  EXPECT_EQ(ids, own);
  EXPECT_EQ(own[0], 1);
  EXPECT_EQ(model.CheckNewPoints(narrow, accepted, ids, 1.0), 1);
}

TEST_F(CheckNewPoints, MeasuresTheModelsVariablesOnly) {
  EXPECT_EQ(check(fit::matrix({{10.5, 900.0}, {5.0, 0.0}, {5.5, 900.0}}), 1.0),
            (std::vector<int>{1}));
  EXPECT_EQ(accepted.NbCol(), 2);
}

TEST_F(CheckNewPoints, WithoutSamplesTheToleranceItselfDecidesTheFirst) {
  // Nothing to be close to: the starting value, the tolerance, is compared with its square.
  Probe<double> empty;
  empty.PutNumVar(1);
  C_MatMGe<double> points = fit::matrix({{3.0}});
  for (double toler : {0.5, 2.0}) {
    int* ids = nullptr;
    ASSERT_EQ(empty.CheckNewPoints(points, accepted, ids, toler), 0);
    delete[] ids;
    EXPECT_EQ(accepted.NbRow(), toler < 1.0 ? 1 : 0);
  }
}

} // namespace
