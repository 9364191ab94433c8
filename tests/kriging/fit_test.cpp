// The fit at one kernel, against an independent solution, and the life of Solve.
#include "kriging/fitSupport.h"

#include "kriging/dense.h"

namespace {

using fit::Complex;
using fit::DenseFit;
using fit::Probe;
using fit::Scalars;
using fit::Table;
using fit::Vec;

template <class T>
class KrigingFitOf : public ::testing::Test {};
TYPED_TEST_SUITE(KrigingFitOf, Scalars);

TYPED_TEST(KrigingFitOf, IsTheGeneralisedLeastSquaresSolution) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(25, 2, 1);
  C_MatMGe<T> Y = fit::responseAt(X, 3);
  Probe<T> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyLinear);
  fit::setKernel(model, {6.0, 3.0});

  ASSERT_EQ(model.Solve(), 0);

  const DenseFit dense(fit::correlationTable(25, fit::gaussOf(X, X, {6.0, 3.0})),
                       fit::linearTerms(X), fit::tableOf(Y));
  fit::expectNear(model.PolyCoeff, dense.beta, 1e-9);
  fit::expectNear(model.CorrCoeff, dense.gamma, 1e-9);
  double sum = 0.0;
  for (int j = 0; j < 3; ++j) {
    EXPECT_NEAR(model.MLEVec[j], dense.criterion(j), 1e-9 * dense.criterion(j));
    EXPECT_NEAR(model.ProcVarnc[j], static_cast<double>(dense.variance[j]),
                1e-9 * model.ProcVarnc[j]);
    sum += dense.criterion(j);
  }
  EXPECT_NEAR(model.MLEValue, sum, 1e-9 * sum);
  EXPECT_FALSE(model.ISSolveRequired());
}

TYPED_TEST(KrigingFitOf, FactorsAreThoseOfTheWhitenedProblem) {
  using T = TypeParam;
  const int m = 14;
  C_MatMGe<T> X = fit::randomMatrix<T>(m, 2, 1);
  C_MatMGe<T> Y = fit::responseAt(X, 1);
  Probe<T> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyLinear);
  fit::setKernel(model, {5.0});

  ASSERT_EQ(model.Solve(), 0);

  // C^-1 R C^-T = I and W^T = (C^-1 F)^T and G^T conj(G) = W^T conj(W).
  const Table R = fit::correlationTable(m, fit::gaussOf(X, X, {5.0}));
  Table inverse(m, std::vector<fit::Wide>(m));
  for (int i = 0; i < m; ++i)
    for (int j = 0; j <= i; ++j)
      inverse[i][j] = model.InvCholFactor(i, j);
  const Table identity = fit::product(fit::product(inverse, R), fit::transposed(inverse, false));
  for (int i = 0; i < m; ++i)
    for (int j = 0; j < m; ++j)
      EXPECT_NEAR(static_cast<double>(std::abs(identity[i][j])), i == j ? 1.0 : 0.0, 1e-10);
  const Table whitenedT = fit::transposed(fit::product(inverse, fit::linearTerms(X)), false);
  fit::expectNear(model.WhitenedRegrT, whitenedT, 1e-10);
  ASSERT_TRUE(model.RegrFactorIsTri);
  ASSERT_EQ(model.RegrFactor.NbRow(), 3);
  Table lower(3, std::vector<fit::Wide>(3));
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j <= i; ++j)
      lower[i][j] = fit::wide(model.RegrFactor(i, j));
  C_MatMGe<T> gram(3, 3);
  const Table product = fit::product(lower, fit::transposed(lower, true));
  const Table expected = fit::product(whitenedT, fit::transposed(whitenedT, true));
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      EXPECT_LE(static_cast<double>(std::abs(product[i][j] - expected[i][j])),
                1e-10 * static_cast<double>(std::abs(expected[i][i])));
}

TYPED_TEST(KrigingFitOf, WithoutATrendTheResidualIsTheOutput) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(15, 2, 1);
  C_MatMGe<T> Y = fit::responseAt(X, 2);
  Probe<T> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyNone);
  fit::setKernel(model, {5.0});

  ASSERT_EQ(model.Solve(), 0);

  const DenseFit dense(fit::correlationTable(15, fit::gaussOf(X, X, {5.0})), Table(),
                       fit::tableOf(Y));
  EXPECT_EQ(model.PolyCoeff.NbRow(), 0);
  EXPECT_FALSE(model.RegrFactorIsTri);
  fit::expectNear(model.CorrCoeff, dense.gamma, 1e-9);
  EXPECT_NEAR(model.MLEValue, dense.criterion(0) + dense.criterion(1), 1e-9 * model.MLEValue);
}

TYPED_TEST(KrigingFitOf, InterpolatesItsSamples) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(30, 2, 1, 2.0, 5.0);
  C_MatMGe<T> Y = fit::responseAt(X, 2), predicted;
  for (int type : {E_CorrExp, E_CorrGauss, E_CorrLin, E_CorrSpherical, E_CorrCubic, E_CorrSpline,
                   E_CorrMatern52}) {
    Probe<T> model;
    fit::load(model, X, Y);
    model.PutScalingType(E_ScaleBoth);
    model.PutPolynomType(E_PolyLinear);
    model.PutCorrFuncType(type);
    fit::setKernel(model, {2.0});

    ASSERT_EQ(model.Solve(), 0) << "function " << type;
    ASSERT_EQ(model.EvalModel(X, predicted), 0);

    for (int j = 0; j < 2; ++j)
      for (int i = 0; i < 30; ++i)
        EXPECT_LE(std::abs(predicted(i, j) - Y(i, j)), 1e-4) << "function " << type;
  }
}

TEST(KrigingFit, OutputScalingLeavesVariancesInOutputUnits) {
  C_MatMGe<double> X = fit::randomMatrix<double>(20, 2, 1);
  C_MatMGe<double> Y = fit::responseAt(X, 2);
  Probe<double> plain, scaled;
  for (Probe<double>* model : {&plain, &scaled}) {
    fit::load(*model, X, Y);
    model->PutPolynomType(E_PolyConst);
    fit::setKernel(*model, {4.0});
  }
  scaled.PutScalingType(E_ScaleOutputs);
  ASSERT_EQ(plain.Solve(), 0);
  ASSERT_EQ(scaled.Solve(), 0);

  const double s = scaled.OutScaleVec[0];
  for (int j = 0; j < 2; ++j) {
    EXPECT_NEAR(scaled.ProcVarnc[j], plain.ProcVarnc[j], 1e-9 * plain.ProcVarnc[j]);
    EXPECT_NEAR(scaled.MLEVec[j], plain.MLEVec[j] * s * s, 1e-9 * scaled.MLEVec[j]);
  }
}

TEST(KrigingFit, SmallCorrelationsAreDropped) {
  // Two far clusters: with the drop the matrix falls apart into blocks, which the dense fit
  // follows.
  C_MatMGe<double> X = fit::matrix({{0.0}, {0.3}, {0.7}, {4.0}, {4.4}, {4.5}});
  C_MatMGe<double> Y = fit::responseAt(X, 1);
  Probe<double> model;
  fit::load(model, X, Y);
  model.PutDropToler(1e-3);
  model.PutPolynomType(E_PolyConst);
  fit::setKernel(model, {1.0});
  ASSERT_EQ(model.Solve(), 0);

  Table F(6, std::vector<fit::Wide>(1, 1.0L));
  const DenseFit dense(fit::correlationTable(6, fit::gaussOf(X, X, {1.0}), 1e-3), F,
                       fit::tableOf(Y));
  fit::expectNear(model.CorrCoeff, dense.gamma, 1e-10);
  EXPECT_EQ(model.InvCholFactor(4, 1), 0.0);
}

TEST(KrigingFit, CriterionMultipliesInGroupsThatStayInRange) {
  // The product of all 45 entries underflows, that of 20 does not, nor does its (2/45)-th power.
  C_MatMSym<double> factor(45, 1);
  for (int i = 0; i < 45; ++i)
    factor(i, i) = i % 2 == 0 ? 1e-14 : 1e-15;
  Probe<double> model;

  EXPECT_EQ(model.GetFittingCriteria(factor), 0);

  const double log10 = (-14.0 * 23 - 15.0 * 22) * 2.0 / 45.0;
  EXPECT_NEAR(std::log10(model.MLEValue), log10, 1e-12);
}

TEST(KrigingFit, ACorrelationOfExactlyTheDropLevelIsKept) {
  C_MatMGe<double> X = fit::matrix({{0.0}, {0.75}}), Y = fit::matrix({{1.0}, {2.0}});
  for (const double level : {0.25, 0.2500001}) {
    Probe<double> model;
    fit::load(model, X, Y);
    model.PutPolynomType(E_PolyNone);
    model.PutCorrFuncType(E_CorrLin); // 1 - 0.75
    model.PutDropToler(level);
    fit::setKernel(model, {1.0});
    ASSERT_EQ(model.Solve(), 0);
    EXPECT_EQ(model.InvCholFactor(1, 0) != 0.0, level == 0.25);
  }
}

TEST(KrigingFit, CriterionCountsEveryEntryWhereverTheGroupsEnd) {
  for (int order : {1, 2, 20, 21, 22, 41}) {
    C_MatMSym<double> factor(order, 1);
    double logSum = 0.0;
    for (int i = 0; i < order; ++i) {
      factor(i, i) = 1.0 + 0.1 * i;
      logSum += std::log(factor(i, i));
    }
    Probe<double> model;
    model.GetFittingCriteria(factor);
    EXPECT_NEAR(std::log(model.MLEValue), 2.0 * logSum / order, 1e-12) << order;
  }
}

// ----- the state of a fit ------------------------------------------------------------------------

class KrigingSolve : public ::testing::Test {
protected:
  void SetUp() override {
    fit::load(model, X, Y);
    model.PutPolynomType(E_PolyConst);
  }

  C_MatMGe<double> X = fit::randomMatrix<double>(12, 2, 1);
  C_MatMGe<double> Y = fit::responseAt(X, 1);
  Probe<double> model;
};

TEST_F(KrigingSolve, DoesNothingOnASolvedModel) {
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_EQ(model.NumSolves, 1);
  EXPECT_EQ(model.Solve(), 0);
  EXPECT_EQ(model.NumSolves, 1);
  EXPECT_EQ(model.ReSolve(), 0);
  EXPECT_EQ(model.NumSolves, 2);
}

TEST_F(KrigingSolve, RefusesOtherSolutionTypes) {
  model.PutSolnType(1);
  EXPECT_EQ(model.Solve(), 1);
  EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusReady);
  EXPECT_EQ(model.NumSolves, 0); // finished fits alone count
}

TEST_F(KrigingSolve, ASolvedModelThatLostItsSamplesIsIncompleteWhenItIsFittedAgain) {
  ASSERT_EQ(model.Solve(), 0);
  model.PutNumVar(3);
  EXPECT_EQ(model.Solve(), 0); // solved still: there is nothing to do
  EXPECT_EQ(model.ReSolve(), 1);
  EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusIncomplete);
}

TEST_F(KrigingSolve, NeedsSamplesOfTheSizesItHas) {
  Probe<double> empty;
  EXPECT_EQ(empty.Solve(), 1);
  EXPECT_EQ(empty.GetKrigingStatus(), E_KrigingStatusIncomplete);
  EXPECT_EQ(empty.ReSolve(), 1);

  ASSERT_EQ(model.Solve(), 0);
  model.PutNumSamp(7); // the samples are still 12
  C_MatMGe<double> out;
  EXPECT_EQ(model.EvalModel(X, out), 1);
  EXPECT_EQ(model.ReSolve(), 1);
}

TEST_F(KrigingSolve, FailsForUnknownCorrelationsAndStaysReady) {
  model.PutCorrFuncType(0);
  EXPECT_EQ(model.Solve(), 1);
  EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusReady);
}

TEST_F(KrigingSolve, FailsWithFewerSamplesThanVariables) {
  C_MatMGe<double> few = fit::randomMatrix<double>(2, 3, 1);
  C_MatMGe<double> values = fit::responseAt(few, 1);
  Probe<double> other;
  fit::load(other, few, values);
  EXPECT_EQ(other.Solve(), 1);
}

TEST_F(KrigingSolve, StartKernelIsTheInverseOfTheVariance) {
  Vec<double> variances;
  ASSERT_EQ(model.DiagOfCovarMtx(X, variances), 0);

  ASSERT_EQ(model.Solve(), 0);
  ASSERT_EQ(model.KernVec.Dim(), 1);
  EXPECT_DOUBLE_EQ(model.KernVec[0], 2.0 / (variances[0] + variances[1]));

  Probe<double> other;
  fit::load(other, X, Y);
  other.PutPolynomType(E_PolyConst);
  other.PutKrigingKernVarType(E_KernAnisotropic);
  ASSERT_EQ(other.Solve(), 0);
  ASSERT_EQ(other.KernVec.Dim(), 2);
  for (int k = 0; k < 2; ++k)
    EXPECT_DOUBLE_EQ(other.KernVec[k], 1.0 / variances[k]);
}

TEST_F(KrigingSolve, ConstantColumnGivesAnInfiniteStart) {
  for (int i = 0; i < 12; ++i)
    X(i, 1) = 4.0; // whose sum of squares is exact, so that the variance is exactly 0
  Probe<double> other;
  fit::load(other, X, Y);
  other.PutPolynomType(E_PolyConst);
  other.PutKrigingKernVarType(E_KernAnisotropic);

  EXPECT_EQ(other.Solve(), 0);

  EXPECT_TRUE(std::isinf(other.KernVec[1]));
  EXPECT_TRUE(std::isnan(other.MLEValue)); // infinity times a distance of 0
}

TEST_F(KrigingSolve, UnknownKernelVariableTypesFail) {
  model.PutKrigingKernVarType(2);
  EXPECT_EQ(model.Solve(), 1);
}

TEST_F(KrigingSolve, AKernelOfAnotherLengthIsAsGoodAsPending) {
  fit::setKernel(model, {1.0, 2.0});
  model.PutKrigingKernVarType(E_KernIsotropic);
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_EQ(model.KernVec.Dim(), 1);

  fit::setKernel(model, {1.0, 2.0});
  C_MatMGe<double> three = fit::randomMatrix<double>(12, 3, 5);
  ASSERT_EQ(model.PutInpSampMtx(three), 0); // more columns than multipliers
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_EQ(model.KernVec.Dim(), 3);

  Probe<double> narrow;
  C_MatMGe<double> one = fit::randomMatrix<double>(12, 1, 5);
  fit::load(narrow, one, Y);
  narrow.PutKrigingKernVarType(E_KernAnisotropic);
  Vec<double> single = fit::vector({3.0});
  ASSERT_EQ(narrow.PutKernVec(single), 0);
  ASSERT_EQ(narrow.PutInpSampMtx(three), 0); // one multiplier for each of three variables
  ASSERT_EQ(narrow.PutOutSampMtx(Y), 0);
  ASSERT_EQ(narrow.Solve(), 0);
  EXPECT_EQ(narrow.KernVec.Dim(), 3);
}

TEST_F(KrigingSolve, ReportsCriterionAndVarianceOnlyWhenSolved) {
  double value = -1.0;
  Vec<double> each;
  EXPECT_EQ(model.GetMLE(value), 1);
  EXPECT_EQ(model.GetMLE(each), 1);
  EXPECT_EQ(model.GetProcVarnc(value, 0), 1);
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_EQ(model.GetMLE(value), 0);
  EXPECT_EQ(value, model.MLEValue);
  EXPECT_EQ(model.GetMLE(each), 0);
  EXPECT_EQ(each[0], model.MLEVec[0]);
  EXPECT_EQ(model.GetProcVarnc(value, 1), 0); // one past the last is accepted
  EXPECT_EQ(value, 1.0);
  EXPECT_EQ(model.GetProcVarnc(value, 2), 1);
  EXPECT_EQ(model.GetProcVarnc(value, -1), 1);
}

TEST_F(KrigingSolve, StopEndsThisAndAllLaterFits) {
  model.Stop();
  EXPECT_EQ(model.Solve(), 1);
  EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusReady);
  EXPECT_EQ(model.Solve(), 1);
}

TEST_F(KrigingSolve, AStoppedFitLeavesTheFormerCoefficients) {
  ASSERT_EQ(model.Solve(), 0);
  C_MatMGe<double> before(model.CorrCoeff);
  fit::setKernel(model, {17.0});
  model.Stop();
  ASSERT_EQ(model.Solve(), 1);
  for (int i = 0; i < 12; ++i)
    EXPECT_EQ(model.CorrCoeff(i, 0), before(i, 0));
}

TEST_F(KrigingSolve, PolynomNoneAfterATrendGoesOnUsingTheOldCoefficients) {
  model.PutPolynomType(E_PolyLinear);
  ASSERT_EQ(model.Solve(), 0);
  C_MatMGe<double> old(model.PolyCoeff);
  model.PutPolynomType(E_PolyNone);
  ASSERT_EQ(model.Solve(), 0);

  ASSERT_EQ(model.PolyCoeff.NbRow(), 3);
  C_MatMGe<double> predicted;
  ASSERT_EQ(model.EvalModel(X, predicted), 0);
  for (int i = 0; i < 12; ++i) {
    const double trend = old(0, 0) + old(1, 0) * X(i, 0) + old(2, 0) * X(i, 1);
    EXPECT_NEAR(predicted(i, 0), Y(i, 0) + trend, 1e-4);
  }
}

TEST_F(KrigingSolve, DuplicatedSamplesAreHeldApartByTheDiagonal) {
  for (int k = 0; k < 2; ++k)
    X(11, k) = X(3, k);
  Y(11, 0) = Y(3, 0);
  Probe<double> other;
  fit::load(other, X, Y);
  other.PutPolynomType(E_PolyConst);
  C_MatMGe<double> predicted;

  ASSERT_EQ(other.Solve(), 0);
  ASSERT_EQ(other.EvalModel(X, predicted), 0);

  for (int i = 0; i < 12; ++i)
    EXPECT_NEAR(predicted(i, 0), Y(i, 0), 1e-4);
}

// ----- the form of Solve that adds samples -------------------------------------------------------

class KrigingSolveAdding : public KrigingSolve {
protected:
  void SetUp() override {
    KrigingSolve::SetUp();
    ASSERT_EQ(model.Solve(), 0);
  }
  int add(C_MatMGe<double> candidates, C_MatMGe<double> values) {
    return model.Solve(candidates, values, relative, absolute, numNew, newPoints, numSamp, all,
                       0.01);
  }

  C_MatMGe<double> newPoints, all;
  double relative = -1.0, absolute = -1.0;
  int numNew = -1, numSamp = -1;
};

TEST_F(KrigingSolveAdding, TakesFarCandidatesAndReports) {
  C_MatMGe<double> candidates = fit::matrix({{3.0, 3.0}, {-3.0, 2.0}});

  ASSERT_EQ(add(candidates, fit::responseAt(candidates, 1)), 0);

  EXPECT_EQ(numNew, 2);
  EXPECT_EQ(numSamp, 14);
  ASSERT_EQ(all.NbRow(), 14);
  EXPECT_EQ(all(12, 0), 3.0);
  EXPECT_EQ(newPoints(1, 1), 2.0);
  double expectedRelative = -1.0, expectedAbsolute = -1.0;
  int count = 0;
  ASSERT_EQ(model.GetPredictorError(all, expectedAbsolute, expectedRelative, count), 0);
  EXPECT_EQ(absolute, expectedAbsolute);
  EXPECT_EQ(relative, expectedRelative);
  EXPECT_NE(absolute, relative);
  EXPECT_LT(absolute, 1e-2); // at samples
}

TEST_F(KrigingSolveAdding, TakesTheFirstOutputsForTheAcceptedCandidates) {
  C_MatMGe<double> out;

  ASSERT_EQ(add(fit::matrix({{X(0, 0), X(0, 1)}, {3.0, 3.0}}), fit::matrix({{111.0}, {222.0}})), 0);

  EXPECT_EQ(numNew, 1);
  ASSERT_EQ(model.GetOutSampMtx(out), 0);
  EXPECT_EQ(out(12, 0), 111.0); // not 222, which belongs to the accepted point
}

TEST_F(KrigingSolveAdding, ReportsNothingWhenNoCandidateIsFar) {
  const C_MatMGe<double> sample = fit::matrix({{X(0, 0), X(0, 1)}});

  EXPECT_EQ(add(sample, fit::matrix({{1.0}})), 0);

  EXPECT_EQ(numNew, 0);
  EXPECT_EQ(numSamp, -1);
  EXPECT_EQ(relative, -1.0);
  EXPECT_EQ(absolute, -1.0);
  EXPECT_EQ(all.NbRow(), 0);
  EXPECT_EQ(add(sample, C_MatMGe<double>(1, 2)), 1) << "two outputs for a model of one";
}

// ----- matrices that are not positive definite ---------------------------------------------------

/** The packed factorisation of reference LAPACK, column by column, stopping at a pivot <= 0. */
void referencePackedCholesky(int n, std::vector<double>& ap) {
  for (int j = 0, jj = 0; j < n; ++j) {
    if (ap[jj] <= 0.0) return;
    ap[jj] = std::sqrt(ap[jj]);
    const int rest = n - j - 1;
    for (int i = 1; i <= rest; ++i)
      ap[jj + i] *= 1.0 / ap[jj];
    int at = jj + rest + 1;
    for (int c = 1; c <= rest; ++c)
      for (int r = c; r <= rest; ++r)
        ap[at++] -= ap[jj + r] * ap[jj + c];
    jj += rest + 1;
  }
}

/** Inverse of a packed lower triangle by forward substitution; false for a zero on the diagonal. */
bool referencePackedInverse(int n, std::vector<double>& ap) {
  const auto at = [n](int i, int j) { return n * j - j * (j + 1) / 2 + i; };
  for (int j = 0; j < n; ++j)
    if (ap[at(j, j)] == 0.0) return false;
  std::vector<double> inverse(ap.size());
  for (int j = 0; j < n; ++j) {
    inverse[at(j, j)] = 1.0 / ap[at(j, j)];
    for (int i = j + 1; i < n; ++i) {
      double sum = 0.0;
      for (int k = j; k < i; ++k)
        sum += ap[at(i, k)] * inverse[at(k, j)];
      inverse[at(i, j)] = -sum / ap[at(i, i)];
    }
  }
  ap = inverse;
  return true;
}

/** One fit without a trend along the literal packed road. */
struct PackedRoad {
  double criterion;
  std::vector<double> inverse, gamma;

  PackedRoad(C_MatMSym<double>& R, C_MatMGe<double>& Y, double dropToler, double nugget) {
    const int m = R.NbRow();
    std::vector<double> ap(R.Adr(), R.Adr() + m * (m + 1) / 2);
    const auto at = [m](int i, int j) { return m * j - j * (j + 1) / 2 + i; };
    for (int j = 0; j < m; ++j)
      for (int i = j; i < m; ++i)
        if (i == j)
          ap[at(i, j)] += std::sqrt(double(m)) * dropToler + (m + 10) * nugget;
        else if (std::fabs(ap[at(i, j)]) < dropToler)
          ap[at(i, j)] = 0.0;
    referencePackedCholesky(m, ap);
    double determinant = 1.0, group = 1.0;
    for (int i = 0; i < m; ++i) {
      group *= ap[at(i, i)];
      if (i % 20 == 0 || i == m - 1) {
        determinant *= std::pow(group, 2.0 / m);
        group = 1.0;
      }
    }
    referencePackedInverse(m, ap);
    inverse = ap;
    std::vector<double> e(m, 0.0);
    double squares = 0.0;
    for (int i = 0; i < m; ++i) {
      for (int j = 0; j <= i; ++j)
        e[i] += ap[at(i, j)] * Y(j, 0);
      squares += e[i] * e[i];
    }
    criterion = determinant * squares / m;
    gamma.assign(m, 0.0);
    for (int j = 0; j < m; ++j)
      for (int i = j; i < m; ++i)
        gamma[j] += ap[at(i, j)] * e[i];
  }
};

/** Fits a model without a trend to samples at X and compares it with the literal packed road. */
void expectPackedRoad(Probe<double>& model, C_MatMGe<double> X, int correlation, double theta,
                      double tolerance) {
  C_MatMGe<double> Y = fit::responseAt(X, 1);
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyNone);
  model.PutCorrFuncType(correlation);
  fit::setKernel(model, {theta});
  ASSERT_EQ(model.Solve(), 0);
  C_MatMSym<double> R;
  ASSERT_EQ(model.EvalCorrMtx(X, R), 0);
  const PackedRoad road(R, Y, model.DropToler, model.NuggetFactor);
  if (std::isnan(road.criterion))
    EXPECT_TRUE(std::isnan(model.MLEValue));
  else
    EXPECT_NEAR(model.MLEValue, road.criterion, tolerance * std::fabs(road.criterion));
  double scale = 0.0, gammaScale = 0.0;
  for (double value : road.inverse)
    scale = std::max(scale, std::fabs(value));
  for (double value : road.gamma)
    gammaScale = std::max(gammaScale, std::fabs(value));
  for (std::size_t i = 0; i < road.inverse.size(); ++i)
    EXPECT_NEAR(model.InvCholFactor.Adr()[i], road.inverse[i], tolerance * scale);
  for (std::size_t i = 0; i < road.gamma.size(); ++i)
    EXPECT_NEAR(model.CorrCoeff(static_cast<int>(i), 0), road.gamma[i], tolerance * gammaScale);
}

TEST(KrigingFit, FastRoadGivesThePackedRoadsFigures) {
  for (int m : {1, 2, 20, 21, 60}) {
    Probe<double> model;
    expectPackedRoad(model, fit::randomMatrix<double>(m, 1, 1, 0.0, 10.0), E_CorrExp, 3.0, 1e-11);
  }
}

TEST(KrigingFit, MultiquadricEndsAsThePackedRoutinesLeaveIt) {
  for (int m : {2, 3, 5, 8, 12}) {
    Probe<double> model;
    expectPackedRoad(model, fit::randomMatrix<double>(m, 2, 1), E_CorrMultiquadric, 0.8, 1e-9);
  }
}

TEST(KrigingFit, AKernelThatIsNotPositiveDefiniteFurtherInEndsTheSameWay) {
  // The truncated quadratic is not positive definite once several points lie within its support.
  Probe<double> model;
  expectPackedRoad(model, fit::matrix({{0.0}, {5.0}, {9.0}, {9.3}, {9.5}, {9.9}, {10.1}}),
                   E_CorrQuadratic, 0.8, 1e-9);
  bool negative = false;
  for (int i = 0; i < 7; ++i)
    negative = negative || model.InvCholFactor(i, i) < 0.0;
  EXPECT_TRUE(negative); // or the case does not show what it should
}

TEST(KrigingFit, NotANumberReachesTheCriterion) {
  C_MatMGe<double> X = fit::randomMatrix<double>(30, 1, 1);
  C_MatMGe<double> Y = fit::responseAt(X, 1);
  X(17, 0) = std::nan("");
  Probe<double> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyConst);
  fit::setKernel(model, {1.0});

  EXPECT_EQ(model.Solve(), 0);

  EXPECT_TRUE(std::isnan(model.MLEValue));
  EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusSolved);
}

// ----- complex models ----------------------------------------------------------------------------

TEST(KrigingFit, ARealProblemInComplexScalarsGivesTheRealFit) {
  C_MatMGe<double> X = fit::randomMatrix<double>(20, 2, 1), Y = fit::responseAt(X, 2);
  C_MatMGe<Complex> Z(20, 2), W(20, 2);
  for (int j = 0; j < 2; ++j)
    for (int i = 0; i < 20; ++i) {
      Z(i, j) = X(i, j);
      W(i, j) = Y(i, j);
    }
  Probe<double> real;
  Probe<Complex> complexModel;
  fit::load(real, X, Y);
  fit::load(complexModel, Z, W);
  for (int scaling = E_ScaleNone; scaling <= E_ScaleBoth; ++scaling) {
    real.PutScalingType(scaling);
    complexModel.PutScalingType(scaling);
    real.PutPolynomType(E_PolyFullQuad);
    complexModel.PutPolynomType(E_PolyFullQuad);
    ASSERT_EQ(real.ReSolve(), 0);
    ASSERT_EQ(complexModel.ReSolve(), 0);

    EXPECT_NEAR(complexModel.MLEValue, real.MLEValue, 1e-8 * real.MLEValue);
    fit::expectNear(complexModel.PolyCoeff, fit::tableOf(real.PolyCoeff), 1e-6);
  }
}

} // namespace
