// The pattern search for the kernel multipliers.
#include <memory>
#include <utility>

#include "kriging/fitSupport.h"

#include "kriging/KrigingWorkspace.h"
#include "kriging/Listener.h"

namespace {

using fit::Complex;
using fit::Probe;
using fit::Scalars;
using fit::Vec;

using Point = std::vector<double>;

/** The search once more, as one function over any objective, written from its description. */
struct LiteralSearch {
  std::function<double(const Point&)> objective;
  Point low, high, theta, D;
  double f = 0.0;
  int evaluations = 0;

  double evaluate(const Point& at) {
    ++evaluations;
    return objective(at);
  }

  bool accept(const Point& trial, Point& best) {
    const double value = evaluate(trial);
    if (!(f > value && std::fabs(f - value) > 1e-15)) return false;
    f = value;
    best = trial;
    return true;
  }

  void explore() {
    Point best = theta;
    for (std::size_t i = 0; i < theta.size(); ++i) {
      if (high[i] <= low[i]) continue;
      Point trial = best;
      if (best[i] <= low[i] + 1e-13)
        trial[i] = std::sqrt(D[i]) * low[i];
      else if (best[i] >= high[i] - 1e-13)
        trial[i] = high[i] / std::sqrt(D[i]);
      else
        trial[i] = std::min(high[i], D[i] * best[i]);
      if (accept(trial, best)) continue;
      trial[i] = std::max(low[i], best[i] / D[i]);
      accept(trial, best);
    }
    theta = best;
  }

  void move(const Point& old) {
    double power = 0.2;
    if (theta != old) {
      power = 0.25;
      Point best = theta, v(theta.size());
      for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = best[i] / old[i];
      for (;;) {
        Point trial = best;
        for (std::size_t i = 0; i < v.size(); ++i)
          trial[i] = std::min(high[i], std::max(low[i], v[i] * best[i]));
        if (!accept(trial, best)) break;
        for (double& ratio : v)
          ratio *= ratio;
      }
      theta = best;
    }
    for (double& factor : D)
      factor = std::pow(factor, power);
  }

  void run() {
    const std::size_t p = theta.size();
    for (std::size_t i = 0; i < p; ++i) {
      D.push_back(low[i] == high[i] ? 1.0 : std::pow(2.0, (i + 1.0) / (p + 2.0)));
      if (low[i] == high[i]) theta[i] = high[i];
    }
    f = evaluate(theta);
    const std::size_t passes = p < 2 ? 2 : std::min<std::size_t>(p, 4);
    for (std::size_t pass = 0; pass < passes; ++pass) {
      const Point old = theta;
      explore();
      move(old);
      std::rotate(D.begin(), D.end() - 1, D.end());
    }
  }
};

/** Criterion of a fresh model with the kernel given. */
template <class T>
double criterionAt(C_MatMGe<T>& X, C_MatMGe<T>& Y, const Point& theta) {
  Kriging<T> model;
  fit::load(model, X, Y);
  model.PutPolynomType(E_PolyConst);
  model.PutKrigingKernVarType(theta.size() == 1 ? E_KernIsotropic : E_KernAnisotropic);
  Vec<double> kernel(static_cast<int>(theta.size()));
  std::copy(theta.begin(), theta.end(), kernel.Adr(0));
  EXPECT_EQ(model.PutKernVec(kernel), 0);
  EXPECT_EQ(model.Solve(), 0);
  double value = 0.0;
  EXPECT_EQ(model.GetMLE(value), 0);
  return value;
}

template <class T>
class KernSearchOf : public ::testing::Test {};
TYPED_TEST_SUITE(KernSearchOf, Scalars);

TYPED_TEST(KernSearchOf, TakesTheStepsOfTheLiteralSearch) {
  using T = TypeParam;
  // The usual bounds, and such that the start lies at the upper or at the lower one.
  const std::pair<double, double> multiples[] = {{0.01, 20.0}, {0.01, 1.0}, {1.0, 20.0}};
  for (const auto& [lowest, highest] : multiples)
    for (int n : {1, 2, 3, 5}) {
      C_MatMGe<T> X = fit::randomMatrix<T>(22, n, 10u + n), Y = fit::responseAt(X, 1);
      Probe<T> model;
      fit::load(model, X, Y);
      model.PutPolynomType(E_PolyConst);
      model.PutKrigingKernVarType(E_KernAnisotropic);
      model.PutKrigingKernOptType(E_KernOptPattern);
      model.PutLowerKernelMultiplierBound(lowest);
      model.PutUpperKernelMultiplierBound(highest);
      Vec<double> start;
      ASSERT_EQ(model.EvalStartKernel(X, start), 0);
      LiteralSearch literal;
      literal.objective = [&](const Point& theta) { return criterionAt(X, Y, theta); };
      literal.theta.assign(start.Adr(0), start.Adr(0) + n);
      for (int i = 0; i < n; ++i) {
        literal.low.push_back(lowest * start[i]);
        literal.high.push_back(highest * start[i]);
      }

      kriging_test::Listener listener;
      ASSERT_EQ(model.Solve(), 0);
      const int fits = listener.kernelLines();
      literal.run();

      EXPECT_EQ(fits, literal.evaluations + 1) << "the trials, and the fit at the best";
      for (int i = 0; i < n; ++i)
        EXPECT_NEAR(model.KernVec[i], literal.theta[i], 1e-12 * literal.theta[i]) << "n = " << n;
      EXPECT_NEAR(model.MLEValue, literal.f, 1e-8 * literal.f);
    }
}

class KernSearch : public ::testing::Test {
protected:
  void SetUp() override {
    fit::load(model, X, Y);
    model.PutPolynomType(E_PolyConst);
    model.PutKrigingKernOptType(E_KernOptPattern);
  }

  C_MatMGe<double> X = fit::randomMatrix<double>(15, 3, 1);
  C_MatMGe<double> Y = fit::responseAt(X, 1);
  Probe<double> model;
};

TEST_F(KernSearch, LowersTheCriterionOfTheStart) {
  Vec<double> start;
  ASSERT_EQ(model.EvalStartKernel(X, start), 0);
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_LT(model.MLEValue, criterionAt(X, Y, {start[0]}));
}

TEST_F(KernSearch, AStartBelowTheBoundsIsAFailure) {
  fit::setKernel(model, {0.5});
  model.PutLowerKernelMultiplierBound(2.0);
  EXPECT_EQ(model.Solve(), 1);
  EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusReady);
  // The point that would have repaired it stays behind: (lo hi^7)^(1/8).
  EXPECT_NEAR(model.KernVec[0], std::pow(1.0 * std::pow(10.0, 7.0), 0.125), 1e-12);
}

TEST_F(KernSearch, AStartAboveTheBoundsIsAFailure) {
  model.PutUpperKernelMultiplierBound(0.5);
  EXPECT_EQ(model.Solve(), 1);
}

TEST_F(KernSearch, EqualBoundsEndAtTheBound) {
  fit::setKernel(model, {0.5, 0.6, 0.7});
  model.PutLowerKernelMultiplierBound(3.0);
  model.PutUpperKernelMultiplierBound(3.0);
  kriging_test::Listener listener;
  ASSERT_EQ(model.Solve(), 0);
  EXPECT_EQ(listener.kernelLines(), 2); // the start alone, and the fit there
  EXPECT_DOUBLE_EQ(model.KernVec[0], 1.5);
  EXPECT_DOUBLE_EQ(model.KernVec[1], 3.0 * 0.6);
  EXPECT_DOUBLE_EQ(model.KernVec[2], 3.0 * 0.7);
}

TEST_F(KernSearch, ResultStaysWithinTheBounds) {
  model.PutKrigingKernVarType(E_KernAnisotropic);
  model.PutLowerKernelMultiplierBound(0.9);
  model.PutUpperKernelMultiplierBound(1.1);
  Vec<double> start;
  ASSERT_EQ(model.EvalStartKernel(X, start), 0);
  ASSERT_EQ(model.Solve(), 0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_GE(model.KernVec[i], 0.9 * start[i]);
    EXPECT_LE(model.KernVec[i], 1.1 * start[i]);
  }
}

TEST_F(KernSearch, RunsOnEveryStepthSolveOnly) {
  model.SetStep(3);
  model.PutScalingType(E_ScaleInputs);
  C_MatMGe<double> more = fit::randomMatrix<double>(7, 3, 9, -4.0, 4.0);
  C_MatMGe<double> values = fit::responseAt(more, 1);
  double kernel = 0.0, scale = 0.0;
  for (int solve = 1; solve <= 7; ++solve) {
    if (solve > 1) {
      C_MatMGe<double> x(1, 3), y(1, 1);
      for (int k = 0; k < 3; ++k)
        x(0, k) = more(solve - 1, k);
      y(0, 0) = values(solve - 1, 0);
      ASSERT_EQ(model.AppendSampData(x, y, false), 0);
    }
    ASSERT_EQ(model.Solve(), 0);
    EXPECT_EQ(model.NumSolves, solve);
    const bool optimises = solve == 1 || solve == 4 || solve == 7;
    EXPECT_EQ(model.RescaleOnSolve, optimises) << solve;
    if (!optimises) {
      EXPECT_EQ(model.KernVec[0], kernel) << solve;
      EXPECT_EQ(model.InpScaleVec[0], scale) << solve;
    } else if (solve > 1) {
      EXPECT_NE(model.InpScaleVec[0], scale) << solve;
    }
    kernel = model.KernVec[0];
    scale = model.InpScaleVec[0];
  }
}

TEST_F(KernSearch, StepsBelowOneAreIgnored) {
  EXPECT_EQ(model.SetStep(0), 0);
  EXPECT_EQ(model.SetStep(-4), 0);
  EXPECT_EQ(model.Solve(), 0);
}

TEST_F(KernSearch, AppendedSamplesRecentreTheBoundsAndClampTheKernel) {
  ASSERT_EQ(model.Solve(), 0);
  C_MatMGe<double> x = fit::randomMatrix<double>(15, 3, 4, -400.0, 400.0);
  C_MatMGe<double> y = fit::responseAt(x, 1);
  ASSERT_EQ(model.AppendSampData(x, y, false), 0);
  EXPECT_TRUE(model.KernRecentre);
  // The data have spread by far: the old kernel lies above 20 times the new start.
  Vec<double> start;
  ASSERT_EQ(model.EvalStartKernel(model.InpSampMtx, start), 0);
  ASSERT_GT(model.KernVec[0], 20.0 * start[0]);

  ASSERT_EQ(model.Solve(), 0);

  EXPECT_LE(model.KernVec[0], 20.0 * start[0]);
  EXPECT_GE(model.KernVec[0], 0.01 * start[0]);
  EXPECT_TRUE(model.KernRecentre); // and stays so
}

TEST_F(KernSearch, MakesTheTestCachesStale) {
  C_MatMGe<double> test = fit::randomMatrix<double>(5, 3, 8), out, none;
  ASSERT_EQ(model.Solve(), 0);
  ASSERT_EQ(model.PutInpTestMtx(test), 0);
  int numNew = 0;
  double largest = 0.0;
  ASSERT_EQ(model.EvalModel(test, out, numNew, none, largest, true), 0);
  EXPECT_FALSE(model.TestCorrStale);
  ASSERT_EQ(model.ReSolve(), 0);
  EXPECT_TRUE(model.TestCorrStale);
  EXPECT_TRUE(model.TestPolyStale);
}

TEST_F(KernSearch, ACriterionThatIsNoNumberIsNeverLeftAndNeverTaken) {
  X(4, 1) = std::nan("");
  Probe<double> other;
  fit::load(other, X, Y);
  other.PutPolynomType(E_PolyConst);
  other.PutKrigingKernOptType(E_KernOptPattern);
  fit::setKernel(other, {0.7});

  EXPECT_EQ(other.Solve(), 0);

  EXPECT_EQ(other.KernVec[0], 0.7);
  EXPECT_TRUE(std::isnan(other.MLEValue));
}

TEST_F(KernSearch, MultiquadricSearchComesToAnEnd) {
  model.PutCorrFuncType(E_CorrMultiquadric);
  EXPECT_EQ(model.Solve(), 0);
}

TEST_F(KernSearch, AnImprovementWithinRoundingIsNone) {
  for (int i = 0; i < Y.NbRow(); ++i)
    Y(i, 0) *= 0.01; // a criterion far below 1, so that doubles tell such differences
  ASSERT_EQ(model.PutOutSampMtx(Y), 0);
  Vec<double> trial = fit::vector({0.7}), best = fit::vector({0.5});
  model.PutKernVec(best);
  double value = 0.0;
  ASSERT_EQ(model.EvalKernel(trial, value), 0);
  ASSERT_LT(value, 0.1);
  Zarel::KernSearch search;
  bool better = true;

  search.best = value + 5e-16;
  ASSERT_EQ(model.TryKernel(search, best, trial, better), 0);
  EXPECT_FALSE(better);
  EXPECT_EQ(best[0], 0.5);

  search.best = value + 3e-15;
  ASSERT_EQ(model.TryKernel(search, best, trial, better), 0);
  EXPECT_TRUE(better);
  EXPECT_EQ(best[0], 0.7);
  EXPECT_EQ(search.best, value);
}

TEST_F(KernSearch, StepFactorsShiftTowardsTheLast) {
  Zarel::KernSearch search;
  search.factors = fit::vector({1.0, 2.0, 3.0});
  model.KernSearchRotate(search);
  EXPECT_EQ(search.factors[0], 3.0);
  EXPECT_EQ(search.factors[1], 1.0);
  EXPECT_EQ(search.factors[2], 2.0);
}

} // namespace
