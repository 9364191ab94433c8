// The eleven correlation functions: formula, kernels of every instruction set, matrices.
#include "kriging/fitSupport.h"

#include "kriging/Correlation.h"

namespace {

using fit::Complex;
using fit::Scalars;
using fit::Vec;

/** The functions once more, as a textbook writes them, for one variable. */
double factorOf(int type, double theta, double d) {
  const double xi = theta * d;
  const double t = std::min(1.0, xi);
  switch (type) {
  case E_CorrExp:
    return std::exp(-xi);
  case E_CorrGauss:
    return std::exp(-theta * d * d);
  case E_CorrLin:
    return std::max(0.0, 1.0 - xi);
  case E_CorrSpherical:
    return 1.0 - 1.5 * t + 0.5 * std::pow(t, 3);
  case E_CorrCubic:
    return 1.0 - 3.0 * t * t + 2.0 * std::pow(t, 3);
  case E_CorrMultiquadric:
    return std::hypot(theta, d);
  case E_CorrSpline:
    if (xi >= 1.0) return 0.0;
    return xi <= 0.2 ? 1.0 - 15.0 * xi * xi + 30.0 * std::pow(xi, 3) : 1.25 * std::pow(1.0 - xi, 3);
  case E_CorrMatern52:
    return (1.0 + std::sqrt(5.0) * xi + 5.0 * xi * xi / 3.0) * std::exp(-std::sqrt(5.0) * xi);
  case E_CorrQuadratic:
    return xi >= 1.0 ? 0.0 : 1.0 - xi * xi;
  case E_CorrBessel:
    return xi > 3.8317 ? 0.0 : (::j0(xi) + 0.40275939569537544) * 0.7128806287583483;
  case E_CorrSinc:
    if (xi > 4.71238898038469) return 0.0;
    return xi <= 1e-6 ? 1.0 : (std::sin(xi) / xi + 0.2122065907891938) * 0.8249418932369944;
  default:
    ADD_FAILURE();
    return 0.0;
  }
}

template <class T>
class CorrelationOf : public ::testing::Test {};
TYPED_TEST_SUITE(CorrelationOf, Scalars);

TYPED_TEST(CorrelationOf, EveryFunctionIsTheProductOfItsOneVariableForm) {
  std::mt19937 engine(7);
  for (int type = 1; type <= 11; ++type)
    for (double size : {0.1, 0.5, 1.0, 3.0})
      for (int repeat = 0; repeat < 50; ++repeat) {
        TypeParam x[3], y[3];
        double theta[3], expected = 1.0, r = -7.0;
        for (int k = 0; k < 3; ++k) {
          fit::fill(x[k], engine, -1.0, 1.0);
          fit::fill(y[k], engine, -1.0, 1.0);
          theta[k] = size * fit::uniform(engine, 0.5, 1.5);
          expected *= factorOf(type, theta[k], std::abs(x[k] - y[k]));
        }

        ASSERT_TRUE(Zarel::correlationOf(type, 3, theta, 1, x, y, r));

        EXPECT_NEAR(r, expected, 1e-13 * std::max(1.0, std::fabs(expected))) << "function " << type;
      }
}

double one(int type, double theta, double d) {
  const double x = 0.0;
  double r = -7.0;
  EXPECT_TRUE(Zarel::correlationOf(type, 1, &theta, 0, &x, &d, r));
  return r;
}

TEST(CorrelationFormula, UnknownFunctionsAreRefused) {
  const double x = 0.0, y = 1.0, theta = 1.0;
  double r = 0.25;

  for (int type : {-1, 0, 12, 1000})
    EXPECT_FALSE(Zarel::correlationOf(type, 1, &theta, 0, &x, &y, r));
  EXPECT_EQ(r, 0.25);
}

TEST(CorrelationFormula, GaussMultiplierIsNotSquared) {
  EXPECT_DOUBLE_EQ(one(E_CorrGauss, 2.0, 1.0), std::exp(-2.0));
}

TEST(CorrelationFormula, SplineBranchesMeetAtOneFifth) {
  EXPECT_NEAR(one(E_CorrSpline, 1.0, 0.2), 0.64, 1e-15);
  EXPECT_NEAR(one(E_CorrSpline, 1.0, std::nextafter(0.2, 1.0)), 0.64, 1e-15);
}

TEST(CorrelationFormula, SincIgnoresTinyDistancesAndCutsOff) {
  EXPECT_EQ(one(E_CorrSinc, 1.0, 1e-7), 1.0);
  EXPECT_EQ(one(E_CorrSinc, 1.0, 1e-6), 1.0);
  EXPECT_EQ(one(E_CorrSinc, 1.0, 4.8), 0.0);
  EXPECT_NE(one(E_CorrSinc, 1.0, 4.7), 0.0);
}

TEST(CorrelationFormula, BesselIsComputedAtTheCutOff) {
  const double atCut = one(E_CorrBessel, 1.0, 3.8317);
  EXPECT_NE(atCut, 0.0);
  EXPECT_NEAR(atCut, 0.0, 1e-9);
  EXPECT_EQ(one(E_CorrBessel, 1.0, std::nextafter(3.8317, 4.0)), 0.0);
}

TEST(CorrelationFormula, MultiquadricOfAPointWithItselfIsTheProductOfTheMultipliers) {
  const double x[2] = {0.3, -4.0};
  const double theta[2] = {2.0, 3.5};
  double r = 0.0;

  ASSERT_TRUE(Zarel::correlationOf(E_CorrMultiquadric, 2, theta, 1, x, x, r));

  EXPECT_EQ(r, 7.0);
}

TEST(CorrelationFormula, CutOffHoldsWhateverTheOtherFactorsAre) {
  const double x[2] = {0.0, 0.0}, y[2] = {std::nan(""), 5.0}, theta[2] = {1.0, 1.0};
  for (int type : {E_CorrSpline, E_CorrQuadratic, E_CorrBessel, E_CorrSinc}) {
    double r = -7.0;
    ASSERT_TRUE(Zarel::correlationOf(type, 2, theta, 1, x, y, r));
    EXPECT_EQ(r, 0.0) << "function " << type;
  }
}

// ----- kernels -----------------------------------------------------------------------------------

using NamedKernels = std::pair<const char*, const Zarel::CorrelationKernelSet*>;

std::vector<NamedKernels> runnableKernels() {
  std::vector<NamedKernels> sets = {{"baseline", &Zarel::correlationKernelsBaseline}};
#if defined(__x86_64__)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
    sets.emplace_back("avx2", &Zarel::correlationKernelsAvx2);
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("fma"))
    sets.emplace_back("avx512", &Zarel::correlationKernelsAvx512);
#endif
  return sets;
}

/** Whether the kernels evaluate a part of the function by a polynomial. */
bool isApproximated(int type) {
  return type == E_CorrExp || type == E_CorrGauss || type == E_CorrMatern52 ||
         type == E_CorrBessel || type == E_CorrSinc;
}

/** One point against several, in n variables. */
struct KernelCase {
  int n = 1;
  std::vector<double> theta = {1.0}, pointRe = {0.0}, pointIm = {0.0}, re, im, out;

  Zarel::CorrelationRequest request(bool complexPoints = false) {
    out.assign(re.size() / n, -7.0);
    const long count = static_cast<long>(out.size());
    return {n,
            theta.data(),
            pointRe.data(),
            complexPoints ? pointIm.data() : nullptr,
            re.data(),
            complexPoints ? im.data() : nullptr,
            count,
            count,
            out.data()};
  }

  template <class T>
  double expected(int type, int point) const {
    const int count = static_cast<int>(re.size()) / n;
    std::vector<T> x(n), y(n);
    for (int k = 0; k < n; ++k) {
      if constexpr (std::is_same_v<T, double>) {
        x[k] = pointRe[k];
        y[k] = re[k * count + point];
      } else {
        x[k] = T(pointRe[k], pointIm[k]);
        y[k] = T(re[k * count + point], im[k * count + point]);
      }
    }
    double r = 0.0;
    EXPECT_TRUE(Zarel::correlationOf(type, n, theta.data(), 1, x.data(), y.data(), r));
    return r;
  }
};

KernelCase randomCase(int n, int count, double size, unsigned seed) {
  std::mt19937 engine(seed);
  KernelCase c;
  c.n = n;
  c.theta.clear();
  c.pointRe.clear();
  c.pointIm.clear();
  for (int k = 0; k < n; ++k) {
    c.theta.push_back(size * fit::uniform(engine, 0.5, 1.5));
    c.pointRe.push_back(fit::uniform(engine, -1.7, 1.7));
    c.pointIm.push_back(fit::uniform(engine, -1.7, 1.7));
  }
  for (int i = 0; i < n * count; ++i) {
    c.re.push_back(fit::uniform(engine, -1.7, 1.7));
    c.im.push_back(fit::uniform(engine, -1.7, 1.7));
  }
  return c;
}

template <class T>
class CorrelationKernelsOf : public ::testing::Test {};
TYPED_TEST_SUITE(CorrelationKernelsOf, Scalars);

TYPED_TEST(CorrelationKernelsOf, AgreeWithTheScalarFormula) {
  constexpr bool complexPoints = !std::is_same_v<TypeParam, double>;
  for (const auto& [name, set] : runnableKernels())
    for (int type = 1; type <= 11; ++type)
      for (int count : {1, 2, 7, 8, 31, 61})
        for (int n : {1, 3, 10})
          for (double size : {0.05, 0.4, 1.3, 7.0}) {
            KernelCase c = randomCase(n, count, size, 11u + n);

            set->kernel[complexPoints ? 1 : 0][type - 1](c.request(complexPoints));

            for (int i = 0; i < count; ++i) {
              const double expected = c.expected<TypeParam>(type, i);
              if (isApproximated(type))
                EXPECT_NEAR(c.out[i], expected, 2e-14 * std::fabs(expected) + 4e-15)
                    << name << ", function " << type;
              else
                EXPECT_EQ(c.out[i], expected) << name << ", function " << type;
            }
          }
}

TYPED_TEST(CorrelationKernelsOf, NegativeMultipliersTakeTheScalarFormula) {
  C_MatMGe<TypeParam> X = fit::randomMatrix<TypeParam>(9, 2, 3, -6.0, 6.0);
  const double theta[2] = {-1.5, 0.1};
  for (int type = 1; type <= 11; ++type) {
    Zarel::Correlator<TypeParam> correlate(type, 2, theta, 2);
    Zarel::PointPlanes<TypeParam> points;
    points.assign(X.Adr(), X.LeadDim(), 9, 2);
    double out[9];

    correlate.run(points, 4, points, 0, 9, out);

    for (int i = 0; i < 9; ++i) {
      const TypeParam x[2] = {X(4, 0), X(4, 1)}, y[2] = {X(i, 0), X(i, 1)};
      double expected = 0.0;
      ASSERT_TRUE(Zarel::correlationOf(type, 2, theta, 1, x, y, expected));
      EXPECT_NEAR(out[i], expected, 1e-13 * std::fabs(expected)) << "function " << type;
    }
  }
}

TEST(CorrelationKernels, ExponentialsAreWithinTwoUnitsAlsoWhereTheyUnderflow) {
  KernelCase c;
  for (double d = 0.0; d < 760.0; d += 0.37)
    c.re.push_back(d);
  for (const auto& [name, set] : runnableKernels()) {
    set->kernel[0][E_CorrExp - 1](c.request());
    for (std::size_t i = 0; i < c.re.size(); ++i) {
      const double expected = std::exp(-c.re[i]);
      const double unit = std::nextafter(expected, 2.0) - expected;
      EXPECT_LE(std::fabs(c.out[i] - expected), 2.0 * unit) << name << " at " << c.re[i];
    }
  }
}

TEST(CorrelationKernels, CutOffsFallOnTheSameNumber) {
  const double belowOne = std::nextafter(1.0, 0.0);
  const std::pair<int, double> lastInside[] = {{E_CorrSpline, belowOne},
                                               {E_CorrQuadratic, belowOne},
                                               {E_CorrBessel, 3.8317},
                                               {E_CorrSinc, 4.71238898038469}};
  for (const auto& [type, last] : lastInside)
    for (const auto& [name, set] : runnableKernels()) {
      KernelCase c;
      c.re = {last, std::nextafter(last, 9.0)};

      set->kernel[0][type - 1](c.request());

      EXPECT_NE(c.out[0], 0.0) << name << ", function " << type;
      EXPECT_EQ(c.out[1], 0.0) << name << ", function " << type;
    }
}

TEST(CorrelationKernels, SincSkipsDistancesUpToAMillionth) {
  KernelCase c;
  c.re = {0.0, 1e-7, 1e-6};
  for (const auto& [name, set] : runnableKernels()) {
    set->kernel[0][E_CorrSinc - 1](c.request());
    for (double r : c.out)
      EXPECT_EQ(r, 1.0) << name;
  }
}

TEST(CorrelationKernels, MaternStaysInRangeForManyVariablesAndLongDistances) {
  for (int n : {1, 10, 64, 65, 300})
    for (double size : {0.01, 0.3, 2.0, 40.0, 1e6}) {
      KernelCase c = randomCase(n, 9, size, 5);
      for (const auto& [name, set] : runnableKernels()) {
        set->kernel[0][E_CorrMatern52 - 1](c.request());
        for (int i = 0; i < 9; ++i) {
          const double expected = c.expected<double>(E_CorrMatern52, i);
          // The scalar sum of logarithms itself loses digits in proportion to its size.
          EXPECT_NEAR(c.out[i], expected, 1e-12 * expected + 1e-320) << name << ", n = " << n;
        }
      }
    }
}

TEST(CorrelationKernels, NanGivesNanWhereTheFormulaDoes) {
  for (const auto& [name, set] : runnableKernels())
    for (int type = 1; type <= 11; ++type) {
      KernelCase c;
      c.re = {std::nan(""), 0.5};

      set->kernel[0][type - 1](c.request());

      const double expected = c.expected<double>(type, 0);
      EXPECT_EQ(std::isnan(c.out[0]), std::isnan(expected)) << name << ", function " << type;
      if (!std::isnan(expected)) {
        EXPECT_EQ(c.out[0], expected);
      }
    }
}

// ----- operations of the model -------------------------------------------------------------------

template <class T>
class KrigingCorrelationOf : public ::testing::Test {};
TYPED_TEST_SUITE(KrigingCorrelationOf, Scalars);

TYPED_TEST(KrigingCorrelationOf, MatrixHoldsTheCorrelationOfEachPair) {
  using T = TypeParam;
  C_MatMGe<T> X = fit::randomMatrix<T>(13, 3, 1);
  C_MatMGe<T> Y = fit::responseAt(X, 1);
  C_MatMGe<T> original(X);
  fit::Probe<T> model;
  fit::load(model, X, Y);
  fit::setKernel(model, {0.7, 0.4, 1.1});
  for (int type = 1; type <= 11; ++type) {
    model.PutCorrFuncType(type);
    C_MatMSym<double> R;

    ASSERT_EQ(model.EvalCorrMtx(X, R), 0);

    ASSERT_EQ(R.NbRow(), 13);
    EXPECT_NE(static_cast<int>(R.GetSide()), 0);
    Vec<T> x(3), y(3);
    for (int i = 0; i < 13; ++i)
      for (int j = 0; j <= i; ++j) {
        for (int k = 0; k < 3; ++k) {
          x[k] = X(i, k);
          y[k] = X(j, k);
        }
        double r = 0.0;
        ASSERT_EQ(model.EvalCorrVal(x, y, r), 0);
        EXPECT_NEAR(R(i, j), r, 1e-13 * std::max(1.0, std::fabs(r))) << "function " << type;
      }
  }
  for (int k = 0; k < 3; ++k)
    for (int i = 0; i < 13; ++i)
      EXPECT_EQ(X(i, k), original(i, k));
}

class KrigingCorrelation : public ::testing::Test {
protected:
  void SetUp() override { fit::load(model, X, Y); }

  C_MatMGe<double> X = fit::randomMatrix<double>(9, 2, 1);
  C_MatMGe<double> Y = fit::responseAt(X, 1);
  C_MatMSym<double> R;
  fit::Probe<double> model;
};

TEST_F(KrigingCorrelation, MatrixNeedsACheckedModel) {
  fit::Probe<double> other;
  EXPECT_EQ(other.EvalCorrMtx(X, R), 1); // fresh

  other.PutNumVar(2);
  EXPECT_EQ(other.Solve(), 1);
  EXPECT_EQ(other.GetKrigingStatus(), E_KrigingStatusIncomplete);
  EXPECT_EQ(other.EvalCorrMtx(X, R), 1);
}

TEST_F(KrigingCorrelation, StoppedAndUnknownMatricesLeaveThePointsAsColumns) {
  C_MatMGe<double> copy(X);
  fit::setKernel(model, {1.0});

  model.PutCorrFuncType(0);
  EXPECT_EQ(model.EvalCorrMtx(X, R), 1);
  EXPECT_EQ(X.NbRow(), 2);
  EXPECT_EQ(X(1, 3), copy(3, 1));

  model.PutCorrFuncType(E_CorrGauss);
  model.Stop();
  EXPECT_EQ(model.EvalCorrMtx(copy, R), 1);
  EXPECT_EQ(copy.NbRow(), 2);
}

TEST_F(KrigingCorrelation, ValueNeedsAFittingKernelAndPoints) {
  Vec<double> x = fit::vector({0.0, 0.0}), y = fit::vector({1.0, 0.0});
  Vec<double> shorter = fit::vector({1.0});
  double r = 0.5;

  EXPECT_EQ(model.EvalCorrVal(x, y, r), 1); // no kernel yet
  fit::setKernel(model, {2.0});
  EXPECT_EQ(model.EvalCorrVal(x, shorter, r), 1);
  EXPECT_EQ(model.EvalCorrVal(x, y, r), 0);
  EXPECT_DOUBLE_EQ(r, std::exp(-2.0));
  model.PutCorrFuncType(12);
  EXPECT_EQ(model.EvalCorrVal(x, y, r), 1);
}

TEST_F(KrigingCorrelation, OneMultiplierServesAllVariables) {
  Vec<double> x = fit::vector({0.0, 0.0}), y = fit::vector({1.0, 2.0});
  double r = 0.0;

  fit::setKernel(model, {0.5});
  ASSERT_EQ(model.EvalCorrVal(x, y, r), 0);
  EXPECT_DOUBLE_EQ(r, std::exp(-2.5));

  fit::setKernel(model, {0.5, 0.25});
  ASSERT_EQ(model.EvalCorrVal(x, y, r), 0);
  EXPECT_DOUBLE_EQ(r, std::exp(-1.5));
}

TEST_F(KrigingCorrelation, SamplesCorrelateWithThemselvesAndTrendFollowsTheCoefficients) {
  C_MatMGe<double> C, F, wrong(3, 3);
  model.PutScalingType(E_ScaleInputs);
  model.PutPolynomType(E_PolyLinear);

  ASSERT_EQ(model.EvalSampCorrAndPol(X, C, F), 0);

  EXPECT_EQ(model.GetKrigingStatus(), E_KrigingStatusSolved);
  ASSERT_EQ(C.NbRow(), 9);
  ASSERT_EQ(C.NbCol(), 9);
  ASSERT_EQ(F.NbCol(), 3);
  for (int i = 0; i < 9; ++i) {
    EXPECT_EQ(C(i, i), 1.0);
    EXPECT_EQ(F(i, 0), 1.0);
    EXPECT_NEAR(F(i, 1), X(i, 0) * model.InpScaleVec[0] + model.InpInterceptVec[0], 1e-14);
  }
  EXPECT_EQ(model.EvalSampCorrAndPol(wrong, C, F), 1);
}

TEST_F(KrigingCorrelation, AnIncompleteModelIsFittedWhenItsPiecesHaveCome) {
  C_MatMGe<double> C, F;
  fit::Probe<double> late;
  late.PutNumVar(2);
  late.PutNumSol(1, 1, nullptr);
  late.PutInpSampMtx(X);
  ASSERT_EQ(late.EvalSampCorrAndPol(X, C, F), 1); // no outputs
  ASSERT_EQ(late.GetKrigingStatus(), E_KrigingStatusIncomplete);
  late.PutOutSampMtx(Y);
  EXPECT_EQ(late.EvalSampCorrAndPol(X, C, F), 0);
}

TEST_F(KrigingCorrelation, MatrixIsTheSameWhateverTheLeadingDimension) {
  fit::setKernel(model, {1.0});
  C_MatMGe<double> fewer(X);
  fewer.ResizeAndKeepValues(5, 2); // its leading dimension stays 9
  C_MatMSym<double> part;

  ASSERT_EQ(model.EvalCorrMtx(X, R), 0);
  ASSERT_EQ(model.EvalCorrMtx(fewer, part), 0);

  ASSERT_EQ(part.NbRow(), 5);
  for (int i = 0; i < 5; ++i)
    for (int j = 0; j <= i; ++j)
      EXPECT_EQ(part(i, j), R(i, j));
}

} // namespace
