// Scaling of samples, the trend's terms and the reduction of the trend.
#include <limits>

#include "kriging/fitSupport.h"

namespace {

using fit::Complex;
using fit::Probe;
using fit::Scalars;
using fit::Vec;

// ----- scaling -----------------------------------------------------------------------------------

template <class T>
class KrigingScalingOf : public ::testing::Test {};
TYPED_TEST_SUITE(KrigingScalingOf, Scalars);

TYPED_TEST(KrigingScalingOf, InputsGetMeanZeroAndDeviationOne) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(12, 3, 1, 4.0, 90.0), scaled;
  C_MatMGe<T> Y = fit::responseAt(X, 2);
  Probe<T> model;
  fit::load(model, X, Y);
  model.PutScalingType(E_ScaleInputs);
  model.PutPolynomType(E_PolyLinear);
  ASSERT_EQ(model.Solve(), 0);

  ASSERT_EQ(model.ScaleSample(X, model.InpScaleVec, model.InpInterceptVec, scaled), 0);

  for (int k = 0; k < 3; ++k) {
    T sum = 0.0;
    double squares = 0.0;
    for (int i = 0; i < 12; ++i) {
      sum += scaled(i, k);
      squares += std::norm(scaled(i, k));
    }
    EXPECT_NEAR(std::abs(sum), 0.0, 1e-12);
    EXPECT_NEAR(squares / 11.0, 1.0, 1e-12);
  }
}

TYPED_TEST(KrigingScalingOf, OutputsShareOneFactorAndKeepTheirSigns) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(9, 1, 1);
  C_MatMGe<T> Y = fit::randomMatrix<T>(9, 2, 2);
  Y(3, 1) = T(-50.0);
  Probe<T> model;
  fit::load(model, X, Y);
  model.PutScalingType(E_ScaleOutputs);
  model.PutPolynomType(E_PolyConst);

  ASSERT_EQ(model.Solve(), 0);

  for (int j = 0; j < 2; ++j) {
    EXPECT_DOUBLE_EQ(model.OutScaleVec[j], 1.0 / 50.0);
    EXPECT_EQ(model.OutInterceptVec[j], T(0.0));
  }
  EXPECT_EQ(model.InpScaleVec.Dim(), 0);
}

TEST(KrigingScaling, ComplexOutputsAreMeasuredAtTheIndexThatTheBlasFinds) {
  // |re| + |im| is 7 for the one and 6 for the other, and the modulus at the first of them is 5.
  C_MatMGe<Complex> X = fit::randomMatrix<Complex>(4, 1, 1);
  C_MatMGe<Complex> Y = fit::matrix<Complex>({{{1, 0}}, {{3, 4}}, {{6, 0}}, {{0, 1}}});
  Probe<Complex> model;
  fit::load(model, X, Y);
  model.PutScalingType(E_ScaleOutputs);
  model.PutPolynomType(E_PolyConst);
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_DOUBLE_EQ(model.OutScaleVec[0], 1.0 / 5.0);
}

TEST(KrigingScaling, OutputsTooSmallOrTooLargeAreLeftAlone) {
  for (double size : {1e-9, 1e31}) {
    C_MatMGe<double> X = fit::randomMatrix<double>(6, 1, 1);
    C_MatMGe<double> Y = fit::randomMatrix<double>(6, 1, 2, 0.5 * size, size);
    Probe<double> model;
    fit::load(model, X, Y);
    model.PutScalingType(E_ScaleOutputs);
    model.PutPolynomType(E_PolyConst);
    ASSERT_EQ(model.Solve(), 0);
    EXPECT_EQ(model.OutScaleVec[0], 1.0) << size;
  }
}

TEST(KrigingScaling, SampleNeedsAFactorForEachColumn) {
  Probe<double> model;
  C_MatMGe<double> X = fit::matrix({{1.0, 2.0}, {3.0, 4.0}}), out;
  Vec<double> two = fit::vector({2.0, 10.0}), shift = fit::vector({1.0, -1.0});
  Vec<double> one = fit::vector({2.0});

  EXPECT_EQ(model.ScaleSample(X, one, shift, out), 1);
  EXPECT_EQ(model.ScaleSample(X, two, one, out), 1);
  ASSERT_EQ(model.ScaleSample(X, two, shift, out), 0);
  EXPECT_EQ(out(0, 0), 3.0);
  EXPECT_EQ(out(1, 0), 7.0);
  EXPECT_EQ(out(0, 1), 19.0);
  EXPECT_EQ(out(1, 1), 39.0);
}

TEST(KrigingScaling, InverseUndoesAndAZeroScaleOnlySubtracts) {
  Probe<double> model;
  model.PutNumSol(2, 2, nullptr);
  C_MatMGe<double> Y = fit::matrix({{7.0, 5.0}, {9.0, 6.0}}), wrong(2, 3);
  Vec<double> scale = fit::vector({2.0, 0.0}), shift = fit::vector({1.0, 4.0});
  Vec<double> three = fit::vector({1.0, 1.0, 1.0});

  EXPECT_EQ(model.InvScaleSample(wrong, scale, shift), 1);
  EXPECT_EQ(model.InvScaleSample(Y, three, shift), 1);
  ASSERT_EQ(model.InvScaleSample(Y, scale, shift), 0);
  EXPECT_EQ(Y(0, 0), 3.0);
  EXPECT_EQ(Y(1, 0), 4.0);
  EXPECT_EQ(Y(0, 1), 1.0);
  EXPECT_EQ(Y(1, 1), 2.0);
}

TEST(KrigingScaling, InverseKnowsTheOutputsOnlyAndNoScaleBelowItsLevel) {
  Probe<double> model;
  model.PutNumSol(2, 2, nullptr);
  C_MatMGe<double> Y = fit::matrix({{7.0, 5.0, 3.0}});
  Vec<double> scale = fit::vector({1e-31, 2e-31, 2.0}), shift = fit::vector({1.0, 1.0, 1.0});

  ASSERT_EQ(model.InvScaleSample(Y, scale, shift), 0);

  EXPECT_EQ(Y(0, 0), 6.0); // 1e-31 is not above the level
  EXPECT_DOUBLE_EQ(Y(0, 1), 4.0 / 2e-31);
  EXPECT_EQ(Y(0, 2), 3.0); // behind the two outputs
}

TEST(KrigingScaling, InverseReadsNoColumnThatIsNotThere) {
  Probe<double> model;
  model.PutNumSol(3, 3, nullptr);
  C_MatMGe<double> Y = fit::matrix({{7.0, 5.0}});
  Vec<double> two = fit::vector({1.0, 1.0});

  EXPECT_EQ(model.InvScaleSample(Y, two, two), 1);
}

TEST(KrigingScaling, UnknownTypesFailTheFit) {
  C_MatMGe<double> X = fit::randomMatrix<double>(6, 1, 1);
  C_MatMGe<double> Y = fit::responseAt(X, 1);
  for (int type : {-1, 4}) {
    Probe<double> model;
    fit::load(model, X, Y);
    model.PutScalingType(type);
    EXPECT_EQ(model.Solve(), 1);
    EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusReady);
  }
}

TEST(KrigingScaling, AConstantColumnGivesAnInfiniteScale) {
  C_MatMGe<double> X = fit::randomMatrix<double>(6, 2, 1);
  for (int i = 0; i < 6; ++i)
    X(i, 1) = 2.0;
  C_MatMGe<double> Y = fit::responseAt(X, 1);
  Probe<double> model;
  fit::load(model, X, Y);
  model.PutScalingType(E_ScaleInputs);
  model.PutPolynomType(E_PolyConst);

  model.Solve(); // whatever comes of it, it comes without a crash

  EXPECT_TRUE(std::isinf(model.InpScaleVec[1]));
}

TYPED_TEST(KrigingScalingOf, VarianceIsThatOfEachColumn) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(7, 2, 1, 1.0, 3.0);
  Probe<T> model;
  Vec<double> variances;

  ASSERT_EQ(model.DiagOfCovarMtx(X, variances), 0);

  ASSERT_EQ(variances.Dim(), 2);
  for (int k = 0; k < 2; ++k) {
    T mean = 0.0;
    for (int i = 0; i < 7; ++i)
      mean += X(i, k) / 7.0;
    double sum = 0.0;
    for (int i = 0; i < 7; ++i)
      sum += std::norm(X(i, k) - mean);
    EXPECT_NEAR(variances[k], sum / 6.0, 1e-13);
  }
}

TEST(KrigingScaling, VarianceNeedsAsManyRowsAsColumns) {
  Probe<double> model;
  Vec<double> variances;
  C_MatMGe<double> wide = fit::randomMatrix<double>(2, 3, 1);
  EXPECT_EQ(model.DiagOfCovarMtx(wide, variances), 1);
}

TEST(KrigingScaling, VarianceIsNotCentredBeforeSquaring) {
  // Around 1e9 with spread 1 the squares have lost the spread: that is the formula's behaviour.
  C_MatMGe<double> X = fit::matrix({{1e9}, {1e9 + 1.0}});
  Probe<double> model;
  Vec<double> variances;
  ASSERT_EQ(model.DiagOfCovarMtx(X, variances), 0);
  EXPECT_NE(variances[0], 0.5);
}

// ----- trend -------------------------------------------------------------------------------------

class KrigingTrend : public ::testing::Test {
protected:
  void prepare(C_MatMGe<double>& X, int type) {
    C_MatMGe<double> Y = fit::responseAt(X, 1);
    fit::load(model, X, Y);
    model.PutPolynomType(type);
  }
  int type() {
    int value = -1;
    model.GetPolynomType(value);
    return value;
  }

  Probe<double> model;
  C_MatMGe<double> F;
  int terms = -1;
};

TEST_F(KrigingTrend, QuadraticsHaveTheirTermsInOrder) {
  C_MatMGe<double> X = fit::randomMatrix<double>(8, 2, 1);
  for (int const trend : {E_PolyPureQuad, E_PolyFullQuad}) {
    prepare(X, trend);
    terms = -1;

    ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);

    for (int i = 0; i < 8; ++i) {
      const double x0 = X(i, 0), x1 = X(i, 1);
      const std::vector<double> pure = {1.0, x0, x1, x0 * x0, x1 * x1};
      const std::vector<double> full = {1.0, x0, x1, x0 * x0, x1 * x0, x1 * x1};
      const std::vector<double>& expected = trend == E_PolyPureQuad ? pure : full;
      ASSERT_EQ(terms, static_cast<int>(expected.size()));
      ASSERT_EQ(F.NbCol(), terms);
      for (int j = 0; j < terms; ++j)
        EXPECT_EQ(F(i, j), expected[j]);
    }
  }
}

TEST_F(KrigingTrend, LinearConstantAndNone) {
  C_MatMGe<double> X = fit::randomMatrix<double>(8, 2, 1);
  prepare(X, E_PolyLinear);
  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  EXPECT_EQ(terms, 3);
  EXPECT_EQ(F(5, 2), X(5, 1));

  model.PutPolynomType(E_PolyConst);
  terms = -1;
  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  EXPECT_EQ(terms, 1);
  EXPECT_EQ(F(7, 0), 1.0);

  model.PutPolynomType(E_PolyNone);
  terms = -1;
  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  EXPECT_EQ(terms, 0);
  EXPECT_EQ(F.NbCol(), 1); // untouched
}

TEST_F(KrigingTrend, ATermCountNamesTheType) {
  C_MatMGe<double> X = fit::randomMatrix<double>(8, 2, 1);
  prepare(X, E_PolyConst);

  terms = 6;
  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  EXPECT_EQ(F.NbCol(), 6);
  terms = 0;
  EXPECT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  terms = 7;
  EXPECT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 1);
  terms = -2;
  EXPECT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 1);
  EXPECT_EQ(type(), E_PolyConst); // a given count changes no option
}

TEST_F(KrigingTrend, RowsBeforeTheFirstAreKept) {
  C_MatMGe<double> X = fit::randomMatrix<double>(5, 1, 1);
  prepare(X, E_PolyLinear);
  C_MatMGe<double> head(X);
  head.ResizeAndKeepValues(3, 1);
  terms = 2;
  ASSERT_EQ(model.EvalQuadPolynomMtx(head, terms, F, 0), 0);
  F(0, 1) = 77.0;

  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 3), 0);

  ASSERT_EQ(F.NbRow(), 5);
  EXPECT_EQ(F(0, 1), 77.0);
  EXPECT_EQ(F(2, 1), X(2, 0));
  EXPECT_EQ(F(4, 1), X(4, 0));
}

TEST_F(KrigingTrend, PointsMustFitTheModel) {
  C_MatMGe<double> X = fit::randomMatrix<double>(5, 2, 1), wrong(5, 3), empty(0, 2);
  prepare(X, E_PolyLinear);
  EXPECT_EQ(model.EvalQuadPolynomMtx(wrong, terms, F, 0), 1);
  EXPECT_EQ(model.EvalQuadPolynomMtx(empty, terms, F, 0), 1);
}

TEST_F(KrigingTrend, UnknownTypesAreRefused) {
  C_MatMGe<double> X = fit::randomMatrix<double>(5, 2, 1);
  for (int unknown : {-1, 5}) {
    prepare(X, unknown);
    terms = -1;
    EXPECT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 1);
  }
}

TEST_F(KrigingTrend, IsReducedToWhatTheSamplesCarryAndRemembersIt) {
  C_MatMGe<double> X = fit::matrix({{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}});
  prepare(X, E_PolyFullQuad); // 6, then 5 terms are too many for 3 samples

  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);

  EXPECT_EQ(terms, 3);
  EXPECT_EQ(type(), E_PolyLinear);
}

TEST_F(KrigingTrend, CollinearSamplesFallToTheConstantWhichIsNotRemembered) {
  C_MatMGe<double> X = fit::matrix({{0.0, 0.0}, {1.0, 1.0}, {2.0, 2.0}});
  prepare(X, E_PolyFullQuad);

  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);

  EXPECT_EQ(terms, 1);
  EXPECT_EQ(F.NbCol(), 1);
  EXPECT_EQ(type(), E_PolyFullQuad);
}

TEST_F(KrigingTrend, FewerRowsThanTermsCountAsRankDeficient) {
  C_MatMGe<double> X = fit::randomMatrix<double>(8, 2, 1);
  prepare(X, E_PolyLinear);
  C_MatMGe<double> two = fit::randomMatrix<double>(2, 2, 3);

  ASSERT_EQ(model.EvalQuadPolynomMtx(two, terms, F, 0), 0);

  EXPECT_EQ(terms, 1);
}

TEST_F(KrigingTrend, NotANumberPassesTheRankCheck) {
  C_MatMGe<double> X = fit::randomMatrix<double>(8, 1, 1);
  prepare(X, E_PolyLinear);
  X(3, 0) = std::nan("");
  EXPECT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  X(3, 0) = std::numeric_limits<double>::infinity();
  EXPECT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
}

// LAPACK looks without end for the singular values of this one.
TEST_F(KrigingTrend, AColumnWithoutNumbersPassesTheRankCheckInTime) {
  C_MatMGe<double> X = fit::randomMatrix<double>(4, 2, 1);
  prepare(X, E_PolyLinear);
  for (int i = 0; i < 4; ++i) {
    X(i, 0) = std::nan("");
    X(i, 1) = 0.0;
  }
  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  EXPECT_EQ(terms, 3);
  EXPECT_EQ(type(), E_PolyLinear);
}

TEST_F(KrigingTrend, OneVariableTakesThePureQuadraticForThreeTerms) {
  C_MatMGe<double> X = fit::randomMatrix<double>(8, 1, 1);
  prepare(X, E_PolyFullQuad);
  terms = 3;
  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  EXPECT_EQ(F(2, 2), X(2, 0) * X(2, 0));
}

TEST(KrigingTrendOfComplex, TermsAndRankCheckAreComplex) {
  C_MatMGe<Complex> X = fit::randomMatrix<Complex>(8, 2, 1), F;
  C_MatMGe<Complex> Y = fit::responseAt(X, 1);
  Probe<Complex> model;
  fit::load(model, X, Y);
  int terms = -1;

  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  ASSERT_EQ(terms, 6);
  EXPECT_EQ(F(4, 4), X(4, 1) * X(4, 0)); // no conjugation

  for (int i = 0; i < 8; ++i)
    X(i, 1) = Complex(0.0, 2.0) * X(i, 0);
  terms = -1;
  ASSERT_EQ(model.EvalQuadPolynomMtx(X, terms, F, 0), 0);
  EXPECT_EQ(terms, 1);
}

} // namespace
