// Predictions, caches and standard errors.
#include "kriging/fitSupport.h"

namespace {

using fit::Complex;
using fit::DenseFit;
using fit::Probe;
using fit::Scalars;
using fit::Table;
using fit::Vec;

template <class T>
class KrigingPredictOf : public ::testing::Test {};
TYPED_TEST_SUITE(KrigingPredictOf, Scalars);

/** Predictions of the dense fit at P: r gamma + f beta. */
template <class T>
Table densePrediction(const DenseFit& dense, C_MatMGe<T>& P, const Table& r, const Table& f) {
  Table out = fit::product(r, dense.gamma);
  if (fit::columnsOf(f) == 0) return out;
  const Table trend = fit::product(f, dense.beta);
  for (int i = 0; i < P.NbRow(); ++i)
    for (std::size_t j = 0; j < out[i].size(); ++j)
      out[i][j] += trend[i][j];
  return out;
}

template <class T>
Table correlationRows(C_MatMGe<T>& P, C_MatMGe<T>& X, const std::vector<double>& theta) {
  const fit::Correlation correlation = fit::gaussOf(P, X, theta);
  Table out(P.NbRow(), std::vector<fit::Wide>(X.NbRow()));
  for (int i = 0; i < P.NbRow(); ++i)
    for (int s = 0; s < X.NbRow(); ++s)
      out[i][s] = correlation(i, s);
  return out;
}

/** Mean squared error over the variance, from the bordered system of the universal predictor. */
long double borderedError(const DenseFit& dense, const std::vector<fit::Wide>& r,
                          const std::vector<fit::Wide>& f) {
  const std::size_t m = r.size(), p = f.size();
  Table bordered(m + p, std::vector<fit::Wide>(m + p)), right(m + p, std::vector<fit::Wide>(1));
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j < m; ++j)
      bordered[i][j] = dense.R[i][j];
    for (std::size_t k = 0; k < p; ++k) {
      bordered[i][m + k] = std::conj(dense.F[i][k]);
      bordered[m + k][i] = dense.F[i][k];
    }
    right[i][0] = r[i];
  }
  for (std::size_t k = 0; k < p; ++k)
    right[m + k][0] = f[k];
  const Table solution = fit::eliminate(bordered, right);
  fit::Wide sum = 1.0L;
  for (std::size_t i = 0; i < m; ++i)
    sum -= r[i] * solution[i][0];
  for (std::size_t k = 0; k < p; ++k)
    sum -= std::conj(f[k]) * solution[m + k][0];
  return sum.real();
}

TYPED_TEST(KrigingPredictOf, MeansAndErrorsAreThoseOfTheDensePredictor) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(20, 2, 1), Y = fit::responseAt(X, 2);
  Probe<T> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyLinear);
  fit::setKernel(model, {4.0, 2.5});
  ASSERT_EQ(model.Solve(), 0);
  const DenseFit dense(fit::correlationTable(20, fit::gaussOf(X, X, {4.0, 2.5})),
                       fit::linearTerms(X), fit::tableOf(Y));
  // Few points take the packed road, many the one in blocks, with a block that is not full.
  for (int count : {1, 5, 40, 300}) {
    C_MatMGe<T> P = fit::randomMatrix<T>(count, 2, 77), predicted, plain;
    C_MatMGe<double> errors;

    ASSERT_EQ(model.EvalModelAndPredictor(P, predicted, errors), 0);
    ASSERT_EQ(model.EvalModel(P, plain), 0);

    const Table r = correlationRows(P, X, {4.0, 2.5}), f = fit::linearTerms(P);
    fit::expectNear(predicted, densePrediction(dense, P, r, f), 1e-9);
    fit::expectNear(plain, densePrediction(dense, P, r, f), 1e-9);
    for (int i = 0; i < std::min(count, 40); ++i)
      for (int j = 0; j < 2; ++j) {
        const double expected = static_cast<double>(
            std::sqrt(std::fabs(borderedError(dense, r[i], f[i]) * dense.variance[j])));
        EXPECT_NEAR(errors(i, j), expected, 1e-7 * std::sqrt(double(dense.variance[j])));
      }
  }
}

TYPED_TEST(KrigingPredictOf, WithoutATrendTheErrorIsFreeOfScale) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(12, 2, 1), Y = fit::responseAt(X, 2);
  for (int i = 0; i < 12; ++i)
    Y(i, 1) *= 1000.0;
  C_MatMGe<T> P = fit::randomMatrix<T>(30, 2, 5), predicted;
  C_MatMGe<double> errors;
  Probe<T> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyNone);
  fit::setKernel(model, {3.0});

  ASSERT_EQ(model.EvalModelAndPredictor(P, predicted, errors), 0);

  const Table R = fit::correlationTable(12, fit::gaussOf(X, X, {3.0}));
  const Table r = correlationRows(P, X, {3.0});
  for (int i = 0; i < 30; ++i) {
    Table column(12, std::vector<fit::Wide>(1));
    for (int s = 0; s < 12; ++s)
      column[s][0] = r[i][s];
    const Table solution = fit::eliminate(R, column);
    long double a2 = 0.0L;
    for (int s = 0; s < 12; ++s)
      a2 += (r[i][s] * solution[s][0]).real();
    EXPECT_NEAR(errors(i, 0), static_cast<double>(std::sqrt(1.0L - a2)), 1e-7);
    EXPECT_EQ(errors(i, 0), errors(i, 1));
  }
}

TYPED_TEST(KrigingPredictOf, ErrorsVanishAtSamples) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(25, 2, 1, 3.0, 8.0), Y = fit::responseAt(X, 1), predicted;
  C_MatMGe<double> errors;
  Probe<T> model;
  fit::load(model, X, Y);
  model.PutScalingType(E_ScaleBoth);
  model.PutPolynomType(E_PolyLinear);
  ASSERT_EQ(model.EvalModelAndPredictor(X, predicted, errors), 0);
  for (int i = 0; i < 25; ++i)
    EXPECT_LT(errors(i, 0), 1e-2 * std::sqrt(model.ProcVarnc[0]));
}

TEST(KrigingScaledPredict, ScalingChangesNeitherMeansNorErrorsMuch) {
  // With multipliers moved along (theta / s^2), input scaling is only a change of units.
  C_MatMGe<double> X = fit::randomMatrix<double>(18, 1, 1, 10.0, 20.0), Y = fit::responseAt(X, 1);
  C_MatMGe<double> P = fit::randomMatrix<double>(20, 1, 2, 10.0, 20.0), a, b;
  C_MatMGe<double> ea, eb;
  Probe<double> plain, scaled;
  fit::load(plain, X, Y);
  fit::load(scaled, X, Y);
  for (Probe<double>* model : {&plain, &scaled})
    model->PutPolynomType(E_PolyLinear);
  scaled.PutScalingType(E_ScaleBoth);
  fit::setKernel(plain, {2.0});
  fit::setKernel(scaled, {2.0});
  ASSERT_EQ(scaled.Solve(), 0);
  const double s = scaled.InpScaleVec[0];
  Vec<double> moved = fit::vector({2.0 / (s * s)});
  scaled.PutKernVec(moved);
  ASSERT_EQ(plain.EvalModelAndPredictor(P, a, ea), 0);
  ASSERT_EQ(scaled.EvalModelAndPredictor(P, b, eb), 0);
  for (int i = 0; i < 20; ++i) {
    EXPECT_NEAR(a(i, 0), b(i, 0), 1e-5);
    EXPECT_NEAR(ea(i, 0), eb(i, 0), 1e-5);
  }
}

class KrigingPredict : public ::testing::Test {
protected:
  void SetUp() override {
    fit::load(model, X, Y);
    model.PutPolynomType(E_PolyLinear);
    fit::setKernel(model, {2.0});
  }
  int evalTest(int& numNew) { return model.EvalModel(X, out, numNew, newPoints, largest, true); }

  C_MatMGe<double> X = fit::randomMatrix<double>(15, 2, 1), Y = fit::responseAt(X, 2);
  C_MatMGe<double> P = fit::randomMatrix<double>(6, 2, 2), out, newPoints, E;
  double largest = -1.0;
  Probe<double> model;
};

TEST_F(KrigingPredict, SolvesAReadyModelAndRefusesAnIncompleteOne) {
  EXPECT_EQ(model.EvalModel(P, out), 0);
  EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusSolved);
  Probe<double> fresh;
  EXPECT_EQ(fresh.EvalModel(P, out), 1);
  EXPECT_EQ(fresh.EvalModelAndPredictor(P, out, E), 1);
}

TEST_F(KrigingPredict, PointsNeedTheModelsColumns) {
  C_MatMGe<double> wrong(4, 3), empty(0, 2);
  EXPECT_EQ(model.EvalModel(wrong, out), 1);
  EXPECT_EQ(model.EvalModel(empty, out), 1);
  EXPECT_EQ(model.EvalModelAndPredictor(wrong, out, E), 1);
}

TEST_F(KrigingPredict, AModelThatMissesItsFactorsPredictsWithoutARefit) {
  ASSERT_EQ(model.EvalModel(P, out), 0);
  C_MatMGe<double> again;
  model.SolveRequired = true; // as after reading or copying
  ASSERT_EQ(model.EvalModel(P, again), 0);
  EXPECT_TRUE(model.ISSolveRequired());
  EXPECT_EQ(model.NumSolves, 1);
  for (int i = 0; i < 6; ++i)
    EXPECT_EQ(again(i, 0), out(i, 0));

  double absolute, relative;
  int count = 0;
  ASSERT_EQ(model.GetPredictorError(P, absolute, relative, count), 0);
  EXPECT_FALSE(model.ISSolveRequired());
  EXPECT_EQ(model.NumSolves, 2);
  EXPECT_EQ(count, 15);
}

TEST_F(KrigingPredict, ErrorsAndRowsFitAgainWhenTheFactorsAreMissing) {
  C_MatMGe<double> C, F;
  int wanted = 1;
  const auto refits = [this](const std::function<int()>& ask) {
    const int before = model.NumSolves;
    model.SolveRequired = true;
    EXPECT_EQ(ask(), 0);
    return model.NumSolves - before;
  };
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_EQ(refits([&] { return model.EvalModelAndPredictor(P, out, E); }), 1);
  EXPECT_EQ(refits([&] { return model.EvalSampCorrAndPol(P, C, F); }), 1);
  EXPECT_EQ(refits([&] { return model.EvalModel(P, out, wanted, newPoints, largest, false); }), 1);
  EXPECT_EQ(refits([&] { return model.EvalModel(P, out); }), 0);
  model.KeepPredictorError = true;
  EXPECT_EQ(refits([&] { return model.EvalModel(P, out); }), 1);
}

TEST_F(KrigingPredict, PointsAndValuesMayBeTheSameMatrix) {
  ASSERT_EQ(model.EvalModel(P, out), 0);
  C_MatMGe<double> both(P);
  ASSERT_EQ(model.EvalModel(both, both), 0);
  ASSERT_EQ(model.EvalModelAndPredictor(P, P, E), 0);
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(both(i, 1), out(i, 1));
    EXPECT_EQ(P(i, 1), out(i, 1));
  }
}

TEST_F(KrigingPredict, APointsPredictionDoesNotDependOnItsCompany) {
  C_MatMGe<double> many = fit::randomMatrix<double>(700, 2, 3), all, single;
  ASSERT_EQ(model.EvalModel(many, all), 0);
  for (int i : {0, 255, 256, 511, 512, 699}) {
    C_MatMGe<double> point = fit::matrix({{many(i, 0), many(i, 1)}});
    ASSERT_EQ(model.EvalModel(point, single), 0);
    EXPECT_NEAR(single(0, 0), all(i, 0), 1e-11);
  }
}

TEST_F(KrigingPredict, TestPointsMustHaveBeenGiven) {
  int numNew = 0;
  EXPECT_EQ(evalTest(numNew), 1);
  ASSERT_EQ(model.PutInpTestMtx(P), 0);
  EXPECT_EQ(evalTest(numNew), 0);
  ASSERT_EQ(out.NbRow(), 6);
  C_MatMGe<double> plain;
  ASSERT_EQ(model.EvalModel(P, plain), 0);
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 2; ++j)
      EXPECT_NEAR(out(i, j), plain(i, j), 1e-11);
}

TEST_F(KrigingPredict, CachedCorrelationsAreReusedAndExtendedByNewSamples) {
  int numNew = 0;
  ASSERT_EQ(model.PutInpTestMtx(P), 0);
  ASSERT_EQ(evalTest(numNew), 0);
  ASSERT_EQ(model.TestCorrMtx.NbCol(), 15);
  C_MatMGe<double> x = fit::matrix({{0.9, -0.8}}), y = fit::responseAt(x, 2);
  ASSERT_EQ(model.AppendSampData(x, y, false), 0);
  ASSERT_EQ(model.Solve(), 0); // without optimisation nor scaling the caches stay valid
  model.TestCorrMtx(2, 3) = 0.125;

  ASSERT_EQ(evalTest(numNew), 0);

  ASSERT_EQ(model.TestCorrMtx.NbCol(), 16);
  EXPECT_EQ(model.TestCorrMtx(2, 3), 0.125); // old columns are not computed again
  double expected = 0.0;
  for (int k = 0; k < 2; ++k)
    expected += 2.0 * (P(4, k) - x(0, k)) * (P(4, k) - x(0, k));
  EXPECT_NEAR(model.TestCorrMtx(4, 15), std::exp(-expected), 1e-15);
}

TEST_F(KrigingPredict, AKernelComputedAnewMakesTheCachesStale) {
  int numNew = 0;
  ASSERT_EQ(model.PutInpTestMtx(P), 0);
  ASSERT_EQ(evalTest(numNew), 0);
  C_MatMGe<double> x = fit::matrix({{0.9, -0.8}}), y = fit::responseAt(x, 2), plain;
  ASSERT_EQ(model.AppendSampData(x, y, true), 0);
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_TRUE(model.TestCorrStale);
  EXPECT_TRUE(model.TestPolyStale);
  ASSERT_EQ(evalTest(numNew), 0);
  ASSERT_EQ(model.EvalModel(P, plain), 0);
  for (int i = 0; i < 6; ++i)
    EXPECT_NEAR(out(i, 0), plain(i, 0), 1e-11);
}

TEST_F(KrigingPredict, NewTestPointsOfTheSameCountSeeTheOldCorrelations) {
  int numNew = 0;
  ASSERT_EQ(model.PutInpTestMtx(P), 0);
  ASSERT_EQ(evalTest(numNew), 0);
  const double before = model.TestCorrMtx(0, 0);
  C_MatMGe<double> others = fit::randomMatrix<double>(6, 2, 40);
  ASSERT_EQ(model.PutInpTestMtx(others), 0);
  ASSERT_EQ(evalTest(numNew), 0);
  EXPECT_EQ(model.TestCorrMtx(0, 0), before);
}

TEST_F(KrigingPredict, NewTestPointsOfAnotherCountRebuildTheCaches) {
  int numNew = 0;
  ASSERT_EQ(model.PutInpTestMtx(P), 0);
  ASSERT_EQ(evalTest(numNew), 0);
  C_MatMGe<double> others = fit::randomMatrix<double>(9, 2, 40), plain;
  ASSERT_EQ(model.PutInpTestMtx(others), 0);
  ASSERT_EQ(evalTest(numNew), 0);
  ASSERT_EQ(model.EvalModel(others, plain), 0);
  ASSERT_EQ(out.NbRow(), 9);
  for (int i = 0; i < 9; ++i)
    EXPECT_NEAR(out(i, 0), plain(i, 0), 1e-11);
}

TEST_F(KrigingPredict, TrendTermsAreRebuiltWhenTheSamplesCarryMoreOfThem) {
  // Samples on a line carry the constant alone; the one beside it makes them carry the linear
  // trend.
  C_MatMGe<double> line = fit::matrix({{0.0, 0.0}, {0.25, 0.25}, {0.5, 0.5}, {1.0, 1.0}});
  C_MatMGe<double> x = fit::matrix({{0.75, 0.125}}), y = fit::responseAt(x, 2);
  C_MatMGe<double> values = fit::responseAt(line, 2), plain;
  Probe<double> growing;
  fit::load(growing, line, values);
  growing.PutPolynomType(E_PolyLinear);
  fit::setKernel(growing, {2.0});
  int numNew = 0;
  ASSERT_EQ(growing.PutInpTestMtx(P), 0);
  ASSERT_EQ(growing.EvalModel(P, out, numNew, newPoints, largest, true), 0);
  ASSERT_EQ(growing.TestPolyMtx.NbCol(), 1);
  ASSERT_EQ(growing.AppendSampData(x, y, false), 0);
  ASSERT_EQ(growing.Solve(), 0);
  ASSERT_FALSE(growing.TestPolyStale);
  ASSERT_EQ(growing.PolyCoeff.NbRow(), 3);

  ASSERT_EQ(growing.EvalModel(P, out, numNew, newPoints, largest, true), 0);

  ASSERT_EQ(growing.EvalModel(P, plain), 0);
  for (int i = 0; i < 6; ++i)
    EXPECT_NEAR(out(i, 0), plain(i, 0), 1e-11);
}

TEST_F(KrigingPredict, CachedTrendTermsAreReused) {
  int numNew = 0;
  ASSERT_EQ(model.PutInpTestMtx(P), 0);
  ASSERT_EQ(evalTest(numNew), 0);
  model.TestPolyMtx(3, 1) = 0.125;
  ASSERT_EQ(evalTest(numNew), 0);
  EXPECT_EQ(model.TestPolyMtx(3, 1), 0.125);
  model.TestPolyStale = true;
  ASSERT_EQ(evalTest(numNew), 0);
  EXPECT_EQ(model.TestPolyMtx(3, 1), P(3, 0));
}

TEST_F(KrigingPredict, KeepsItsErrorsWhenAsked) {
  ASSERT_EQ(model.EvalModelAndPredictor(P, out, E), 0);
  ASSERT_EQ(model.PutInpTestMtx(P), 0);
  for (int wanted : {0, 1})
    for (bool const useTest : {false, true}) {
      int numNew = wanted;
      model.LastPredictorError.Release();
      model.KeepPredictorError = true;
      ASSERT_EQ(model.EvalModel(P, out, numNew, newPoints, largest, useTest), 0);
      ASSERT_EQ(model.LastPredictorError.NbRow(), 6);
      for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(model.LastPredictorError(i, 1), E(i, 1), 1e-11);
    }
  model.KeepPredictorError = false;
  model.LastPredictorError.Release();
  ASSERT_EQ(model.EvalModel(P, out), 0);
  EXPECT_EQ(model.LastPredictorError.NbRow(), 0);
}

TEST_F(KrigingPredict, ErrorsFromRowsAreThoseFromPoints) {
  C_MatMGe<double> many = fit::randomMatrix<double>(300, 2, 3), C, F, fromRows;
  ASSERT_EQ(model.EvalModelAndPredictor(many, out, E), 0);
  ASSERT_EQ(model.EvalSampCorrAndPol(many, C, F), 0);
  C_MatMGe<double> before(C);

  ASSERT_EQ(model.GetPredictorError(C, F, fromRows), 0);

  for (int i = 0; i < 300; ++i)
    EXPECT_NEAR(fromRows(i, 0), E(i, 0), 1e-9);
  EXPECT_EQ(C(7, 7), before(7, 7));
}

TEST_F(KrigingPredict, ErrorsNeedRowsThatFitTheFactors) {
  C_MatMGe<double> C(4, 15), F(4, 3), wrongC(4, 14), wrongF(4, 4), shortF(3, 3), noF(4, 0);
  EXPECT_EQ(model.GetPredictorError(C, F, E), 1); // no fit yet
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_EQ(model.GetPredictorError(C, F, E), 0);
  EXPECT_EQ(model.GetPredictorError(wrongC, F, E), 1);
  EXPECT_EQ(model.GetPredictorError(C, wrongF, E), 1);
  EXPECT_EQ(model.GetPredictorError(C, shortF, E), 1);
  EXPECT_EQ(model.GetPredictorError(C, noF, E), 1); // the factor has 3 terms
}

TEST_F(KrigingPredict, WithoutATrendALongWhitenedRowGivesNan) {
  model.PutPolynomType(E_PolyNone);
  ASSERT_EQ(model.Solve(), 0);
  for (int rows : {1, 40}) {
    C_MatMGe<double> C(rows, 15), F;
    C.Init(3.0);
    ASSERT_EQ(model.GetPredictorError(C, F, E), 0);
    EXPECT_TRUE(std::isnan(E(0, 0)));
  }
}

TEST_F(KrigingPredict, TheWorstErrorsAreThoseOfThePointsOneByOne) {
  C_MatMGe<double> relative;
  double largestAbsolute = 0.0, largestRelative = 0.0;
  ASSERT_EQ(model.EvalModelAndPredictor(P, out, E), 0);
  ASSERT_EQ(model.GetRelativePredictorError(out, E, relative), 0);
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 2; ++j) {
      largestAbsolute = std::max(largestAbsolute, E(i, j));
      largestRelative = std::max(largestRelative, relative(i, j));
    }
  for (bool const keep : {false, true}) {
    double absolute = -1.0, worst = -1.0;
    int count = 0;
    model.KeepPredictorError = keep;

    ASSERT_EQ(model.GetPredictorError(P, absolute, worst, count), 0);

    EXPECT_EQ(absolute, largestAbsolute);
    EXPECT_EQ(worst, largestRelative);
    EXPECT_EQ(count, 15); // the samples, not the points
    EXPECT_EQ(model.KeepPredictorError, keep);
  }
}

TEST_F(KrigingPredict, AFailedErrorLeavesTheKeepFlagSet) {
  C_MatMGe<double> wrong(4, 3);
  double absolute, relative;
  int count;
  EXPECT_EQ(model.GetPredictorError(wrong, absolute, relative, count), 1);
  EXPECT_TRUE(model.KeepPredictorError);
}

TEST_F(KrigingPredict, ClearedFactorsFailWhereTheyAreNeeded) {
  ASSERT_EQ(model.Solve(), 0);
  model.ClearTemporaryMatrices();
  EXPECT_EQ(model.EvalModel(P, out), 0);
  EXPECT_EQ(model.EvalModelAndPredictor(P, out, E), 1);
  ASSERT_EQ(model.ReSolve(), 0);
  EXPECT_EQ(model.EvalModelAndPredictor(P, out, E), 0);
}

// ----- published functions -----------------------------------------------------------------------

constexpr double pi = 3.14159265358979323846;

/** Branin (1972) on [-5, 10] x [0, 15], as in Dixon and Szego, Towards Global Optimisation 2. */
double branin(double x, double y) {
  const double a = y - 5.1 / (4.0 * pi * pi) * x * x + 5.0 / pi * x - 6.0;
  return a * a + 10.0 * (1.0 - 1.0 / (8.0 * pi)) * std::cos(x) + 10.0;
}

/** Friedman, Multivariate adaptive regression splines (1991), eq. 56, on the unit cube. */
double friedman(C_MatMGe<double>& X, int i) {
  return 10.0 * std::sin(pi * X(i, 0) * X(i, 1)) + 20.0 * (X(i, 2) - 0.5) * (X(i, 2) - 0.5) +
         10.0 * X(i, 3) + 5.0 * X(i, 4);
}

double rootMeanSquare(C_MatMGe<double>& a, C_MatMGe<double>& b) {
  double sum = 0.0;
  for (int i = 0; i < a.NbRow(); ++i)
    sum += (a(i, 0) - b(i, 0)) * (a(i, 0) - b(i, 0));
  return std::sqrt(sum / a.NbRow());
}

TEST(KrigingAccuracy, LearnsBranin) {
  const auto sample = [](int count, unsigned seed, C_MatMGe<double>& Y) {
    C_MatMGe<double> X = fit::randomMatrix<double>(count, 2, seed, 0.0, 15.0);
    Y.Resize(count, 1);
    for (int i = 0; i < count; ++i) {
      X(i, 0) -= 5.0;
      Y(i, 0) = branin(X(i, 0), X(i, 1));
    }
    return X;
  };
  C_MatMGe<double> Y, V, predicted;
  C_MatMGe<double> X = sample(80, 1, Y), P = sample(200, 2, V);
  Probe<double> model;
  fit::load(model, X, Y);
  model.PutScalingType(E_ScaleBoth);
  model.PutPolynomType(E_PolyConst);
  model.PutKrigingKernVarType(E_KernAnisotropic);
  model.PutKrigingKernOptType(E_KernOptPattern);
  ASSERT_EQ(model.Solve(), 0);
  ASSERT_EQ(model.EvalModel(P, predicted), 0);
  EXPECT_LT(rootMeanSquare(predicted, V), 1.5); // of values that run from 0.4 to 300
}

TEST(KrigingAccuracy, LearnsFriedman) {
  C_MatMGe<double> X = fit::randomMatrix<double>(150, 5, 1, 0.0, 1.0), Y(150, 1), predicted;
  C_MatMGe<double> P = fit::randomMatrix<double>(200, 5, 2, 0.0, 1.0), V(200, 1);
  for (int i = 0; i < 150; ++i)
    Y(i, 0) = friedman(X, i);
  for (int i = 0; i < 200; ++i)
    V(i, 0) = friedman(P, i);
  for (int type : {E_CorrGauss, E_CorrMatern52}) {
    Probe<double> model;
    fit::load(model, X, Y);
    model.PutScalingType(E_ScaleBoth);
    model.PutPolynomType(E_PolyLinear);
    model.PutCorrFuncType(type);
    model.PutKrigingKernVarType(E_KernAnisotropic);
    model.PutKrigingKernOptType(E_KernOptPattern);
    ASSERT_EQ(model.Solve(), 0);
    ASSERT_EQ(model.EvalModel(P, predicted), 0);
    EXPECT_LT(rootMeanSquare(predicted, V), 0.8) << "function " << type; // of values up to 30
  }
}

} // namespace
