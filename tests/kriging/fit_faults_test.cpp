// Fits and predictions with every allocation failed in turn, stopped from another thread, and what
// a fit says of itself.
#include <atomic>
#include <cstdio>
#include <thread>

#include "kriging/fitSupport.h"

#include "kriging/Listener.h"
#include "kriging/Traces.h"
#include "support/FailingAllocation.h"

namespace {

using fit::Complex;
using fit::Probe;
using fit::Scalars;
using support::FailingAllocation;
using support::forEachFailingAllocation;
using support::Unharmed;

template <class T>
class KrigingFitFaultsOf : public ::testing::Test {
protected:
  using Model = Probe<T>;

  void configure(Model& model, int optimise) {
    fit::load(model, X, Y);
    model.PutScalingType(E_ScaleBoth);
    model.PutPolynomType(E_PolyLinear);
    model.PutKrigingKernVarType(E_KernAnisotropic);
    model.PutKrigingKernOptType(optimise);
  }

  /** A model that something failed in must fit and predict like one in which nothing did. */
  void expectPredicts(Model& model, C_MatMGe<T>& points, C_MatMGe<T>& expected, double tolerance) {
    C_MatMGe<T> values;
    C_MatMGe<double> errors;
    ASSERT_EQ(model.EvalModelAndPredictor(points, values, errors), 0);
    for (int i = 0; i < points.NbRow(); ++i) {
      EXPECT_LE(std::abs(values(i, 0) - expected(i, 0)), tolerance);
      EXPECT_FALSE(std::isnan(errors(i, 0)));
    }
  }
  void expectRecovers(Model& model, C_MatMGe<T>& expected) {
    expectPredicts(model, P, expected, 1e-9);
  }

  kriging_test::Traces traces;
  C_MatMGe<T> X = fit::randomMatrix<T>(9, 2, 1);
  C_MatMGe<T> Y = fit::responseAt(X, 1);
  C_MatMGe<T> P = fit::randomMatrix<T>(20, 2, 2);
};
TYPED_TEST_SUITE(KrigingFitFaultsOf, Scalars);

TYPED_TEST(KrigingFitFaultsOf, AFitWithoutMemoryCanBeRepeated) {
  using T = TypeParam;
  for (int optimise : {E_KernOptNone, E_KernOptPattern}) {
    // A search that goes on from where it broke off may end elsewhere; what it must do is to
    // interpolate. Without a search the model must be the same.
    Probe<T> untroubled;
    this->configure(untroubled, optimise);
    C_MatMGe<T> expected;
    ASSERT_EQ(untroubled.EvalModel(this->P, expected), 0);
    const auto recovered = [&](Probe<T>& model) {
      const Unharmed checks;
      if (optimise == E_KernOptNone) this->expectRecovers(model, expected);
      this->expectPredicts(model, this->X, this->Y, 1e-3);
    };

    const long failures = forEachFailingAllocation([&] {
      Probe<T> model;
      {
        const Unharmed setUp;
        this->configure(model, optimise);
      }
      try {
        const int result = model.Solve();
        EXPECT_EQ(result, FailingAllocation::happened() ? 1 : 0);
      } catch (...) {
        EXPECT_NE(model.GetKrigingStatus(), E_KrigingStatusSolved);
        recovered(model);
        throw;
      }
      recovered(model);
    });

    EXPECT_GT(failures, 20);
  }
}

TYPED_TEST(KrigingFitFaultsOf, APredictionWithoutMemoryCanBeRepeated) {
  using T = TypeParam;
  Probe<T> model;
  this->configure(model, E_KernOptNone);
  C_MatMGe<T> expected;
  ASSERT_EQ(model.EvalModel(this->P, expected), 0);
  ASSERT_EQ(model.PutInpTestMtx(this->P), 0);
  const auto recovered = [&] {
    const Unharmed checks;
    this->expectRecovers(model, expected);
  };

  const long inBlocks = forEachFailingAllocation([&] {
    C_MatMGe<T> values;
    C_MatMGe<double> errors;
    model.EvalModelAndPredictor(this->P, values, errors);
    recovered();
  });
  const long withCaches = forEachFailingAllocation([&] {
    C_MatMGe<T> values, points;
    int numNew = 2;
    double largest = 0.0;
    model.TestCorrStale = model.TestPolyStale = true;
    model.EvalModel(this->P, values, numNew, points, largest, true);
    recovered();
  });
  const long measures = forEachFailingAllocation([&] {
    double absolute, relative, r2;
    int count;
    model.GetPredictorError(this->P, absolute, relative, count);
    model.getR2(r2);
    model.GetRelativeError(relative);
    recovered();
  });

  EXPECT_GT(inBlocks, 10);
  EXPECT_GT(withCaches, 10);
  EXPECT_GT(measures, 10);
}

TYPED_TEST(KrigingFitFaultsOf, CachesAreRightAfterAFailureWhileTheyGrew) {
  using T = TypeParam;
  C_MatMGe<T> x = fit::randomMatrix<T>(2, 2, 30), y = fit::responseAt(x, 1);
  const long failures = forEachFailingAllocation([&] {
    Probe<T> model;
    C_MatMGe<T> values, points, plain;
    int numNew = 0;
    double largest = 0.0;
    {
      const Unharmed setUp;
      this->configure(model, E_KernOptNone);
      model.PutScalingType(E_ScaleNone);
      ASSERT_EQ(model.PutInpTestMtx(this->P), 0);
      ASSERT_EQ(model.EvalModel(this->P, values, numNew, points, largest, true), 0);
      ASSERT_EQ(model.AppendSampData(x, y, false), 0);
      ASSERT_EQ(model.Solve(), 0);
    }
    try {
      model.EvalModel(this->P, values, numNew, points, largest, true);
    } catch (...) {
      const Unharmed checks;
      ASSERT_EQ(model.EvalModel(this->P, values, numNew, points, largest, true), 0);
      ASSERT_EQ(model.EvalModel(this->P, plain), 0);
      for (int i = 0; i < this->P.NbRow(); ++i)
        EXPECT_LE(std::abs(values(i, 0) - plain(i, 0)), 1e-10);
      throw;
    }
  });
  EXPECT_GT(failures, 5);
}

// ----- stop --------------------------------------------------------------------------------------

TEST(KrigingStop, EndsAFitFromAnotherThread) {
  C_MatMGe<double> X = fit::randomMatrix<double>(120, 6, 1), Y = fit::responseAt(X, 1);
  Probe<double> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyConst);
  model.PutKrigingKernVarType(E_KernAnisotropic);
  model.PutKrigingKernOptType(E_KernOptPattern);
  std::atomic<bool> running(false);
  int result = -1, fits = 0;

  std::thread worker([&] {
    running = true;
    while ((result = model.ReSolve()) == 0) // until the request reaches a fit
      ++fits;
  });
  while (!running)
    std::this_thread::yield();
  model.Stop();
  worker.join();

  EXPECT_EQ(result, 1);
  EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusReady);
  EXPECT_EQ(model.Solve(), 1);
}

// ----- the message of a trial --------------------------------------------------------------------

TEST(KrigingReport, NamesTheMultipliersAndTheCriterion) {
  C_MatMGe<double> X = fit::randomMatrix<double>(9, 2, 1), Y = fit::responseAt(X, 1);
  Probe<double> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyConst);
  fit::setKernel(model, {1.5, 0.25});
  kriging_test::Listener listener;

  ASSERT_EQ(model.Solve(), 0);

  char expected[200];
  std::snprintf(expected, sizeof expected, "   Kernel : 1.500000 0.250000  -> %lf", model.MLEValue);
  EXPECT_EQ(listener.texts, kriging_test::Texts{expected});
}

TEST(KrigingReport, IsHeardAtItsLevelInItsScopeOnly) {
  C_MatMGe<double> X = fit::randomMatrix<double>(9, 2, 1), Y = fit::responseAt(X, 1);
  Probe<double> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyConst);
  kriging_test::Listener listener;

  listener.letThrough(2, true);
  ASSERT_EQ(model.ReSolve(), 0);
  listener.letThrough(3, false);
  ASSERT_EQ(model.ReSolve(), 0);
  EXPECT_EQ(listener.kernelLines(), 0);
}

} // namespace
