// The power iteration against matrices whose spectrum is known, and the spectral norm that rests
// on it.
#include <cmath>
#include <cstdio>
#include <limits>

#include <zarel/C_AlgoPower.h>
#include <zarel/C_MessageTool.h>
#include <zarel/C_VecRand.h>

#include "containers/support.h"
#include "support/Capture.h"
#include "support/FailingAllocation.h"

namespace {

using Zarel::C_MessageTool;

template <class T>
C_MatMGe<T> diagonal(std::initializer_list<double> values) {
  const int n = static_cast<int>(values.size());
  C_MatMGe<T> m(n, n);
  int i = 0;
  for (double value : values) {
    m(i, i) = scalar<T>(value);
    ++i;
  }
  return m;
}

/** A run with its two vectors. */
template <class T>
struct Run {
  VecOf<T> x, y;
  T operator()(C_AlgoPower<T>& power, C_Mat<T>& A, int maxIter) {
    return power.Run(A, x, y, maxIter);
  }
};

template <class T>
class AlgoPower : public ::testing::Test {};
TYPED_TEST_SUITE(AlgoPower, BlasScalars, ScalarNames);

TYPED_TEST(AlgoPower, HasItsOptionsAndScope) {
  C_AlgoPower<TypeParam> power("name", 0.1);

  EXPECT_EQ(power.GetName(), "name");
  EXPECT_EQ(power.GetDebugScope(), 306);
  EXPECT_TRUE(power.isOption_b("A*A"));
  EXPECT_FALSE(power.getOption_b("A*A"));
  EXPECT_TRUE(power.isOption_i("StopCriteria"));
  EXPECT_EQ(power.getOption_i("StopCriteria"), 0);
}

TYPED_TEST(AlgoPower, FindsTheDominantEntryOfADiagonal) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({1, -8, 2, 0.5});
  C_AlgoPower<T> power("", 0);
  Run<T> run;

  expectClose(run(power, m, 100), -8, 8, 64);
  EXPECT_EQ(run.x.Dim(), 4);
  EXPECT_EQ(run.y.Dim(), 4);
}

TYPED_TEST(AlgoPower, SquaresTheOperatorOnRequest) {
  using T = TypeParam;
  C_MatMGe<T> tall(3, 2); // columns (3, 4, 0) and (0, 0, 1): singular values 5 and 1
  tall(0, 0) = isComplex<T> ? scalar<T>(0, 3) : scalar<T>(3);
  tall(1, 0) = scalar<T>(4);
  tall(2, 1) = scalar<T>(1);
  C_AlgoPower<T> power("", 0);
  power.setOption("A*A", true);
  Run<T> run;

  expectClose(run(power, tall, 100), 25, 25, 64);
}

TYPED_TEST(AlgoPower, AZeroMatrixGivesZeroInTheFirstRound) {
  using T = TypeParam;
  C_MatMGe<T> m(3, 3), none;
  C_AlgoPower<T> power("", 1e-3);
  Run<T> run;

  EXPECT_EQ(run(power, m, -1), T(0));
  EXPECT_EQ(run(power, none, -1), T(0));
}

/** One round gives x^H A x of the normalised random start. */
template <class T>
T firstQuotient(C_MatMGe<T>& m) {
  VecOf<T> x(m.NbCol()), y;
  C_VecRand(x, E_SeedUser, 1);
  x.Normalize(E_Nrm2, nullptr);
  m.Mv(T(1), x, T(0), y, 'N');
  return x * y;
}

TYPED_TEST(AlgoPower, OneRoundGivesTheQuotientOfTheRandomStart) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({1, 2, 3});
  const auto expected = wide(firstQuotient(m));
  C_AlgoPower<T> power("", 0);
  Run<T> run;

  power.setOption("StopCriteria", 2);
  expectClose(run(power, m, 0), expected, 3);
  power.setOption("StopCriteria", 0);
  expectClose(run(power, m, 0), expected, 3);
  power.setOption("StopCriteria", 7); // any other rule stops at once
  expectClose(run(power, m, 50), expected, 3);
}

TYPED_TEST(AlgoPower, MinusOneStandsForAsManyRoundsAsColumns) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({1, 2, 3});
  C_AlgoPower<T> power("", 0);
  power.setOption("StopCriteria", 2);
  Run<T> run;

  EXPECT_EQ(run(power, m, -1), run(power, m, 3));
  EXPECT_NE(run(power, m, -1), run(power, m, 4));
}

TYPED_TEST(AlgoPower, ALimitThatHasPassedAlreadyEndsTheFirstRound) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({1, 2, 3});
  const auto expected = wide(firstQuotient(m));
  C_AlgoPower<T> power("", 0);
  Run<T> run;

  for (const int rule : {0, 2}) {
    power.setOption("StopCriteria", rule);
    expectClose(run(power, m, -2), expected, 3);
  }
}

TYPED_TEST(AlgoPower, RuleOneGoesOnUntilTwoEstimatesAreEqual) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({1, 16});
  C_AlgoPower<T> power("", 0);
  power.setOption("StopCriteria", 1);
  Run<T> run;

  expectClose(run(power, m, 0), 16, 16);
}

using RunOfDoubles = Run<double>;

/** The iteration on a diagonal in plain words: the last estimate, and the rounds before it. */
struct Plain {
  Plain(std::initializer_list<double> diagonal, int rule, double tolerance, int maxIter) {
    const double* const entries = diagonal.begin();
    const int n = static_cast<int>(diagonal.size());
    VecOf<double> x(n), y(n);
    C_VecRand(x, E_SeedUser, 1);
    for (double former = 0;; former = estimate, ++rounds) {
      double square = 0, residual = 0;
      for (int i = 0; i < n; ++i)
        square += x[i] * x[i];
      estimate = 0;
      for (int i = 0; i < n; ++i) {
        x[i] /= std::sqrt(square);
        y[i] = entries[i] * x[i];
        estimate += x[i] * y[i];
      }
      for (int i = 0; i < n; ++i)
        residual += (y[i] - estimate * x[i]) * (y[i] - estimate * x[i]);
      const bool settled = std::abs((estimate - former) / estimate) <= tolerance;
      const bool last = rounds >= maxIter;
      if (rule == 0   ? residual / estimate <= tolerance || last
          : rule == 1 ? settled
          : rule == 2 ? settled || last
                      : true)
        return;
      for (int i = 0; i < n; ++i)
        x[i] = y[i];
    }
  }
  double estimate = 0;
  int rounds = 0;
};

TEST(AlgoPowerRules, EndWhereThePlainIterationEnds) {
  C_MatMGe<double> m = diagonal<double>({16, 4, 1});
  C_MessageTool* const tool = C_MessageTool::Instance("DefaultMessageTool");
  tool->setVerbosityLevel(3, Zarel::SCREEN);
  tool->ActivateDebugScope(306, true, Zarel::SCREEN);
  for (int rule : {0, 1, 2, 3})
    for (double tolerance : {5.0, 0.5, 0.05, 1e-6})
      for (int maxIter : {0, 2, 50}) {
        C_AlgoPower<double> power("p", tolerance);
        power.setOption("StopCriteria", rule);
        RunOfDoubles run;
        const Plain plain({16, 4, 1}, rule, tolerance, maxIter);
        char line[64];
        std::snprintf(line, sizeof line, "[p]\tIter [%3d] : Teta = %g ", plain.rounds,
                      plain.estimate);
        double estimate = 0;

        const auto said = support::capture([&] { estimate = run(power, m, maxIter); });

        EXPECT_NEAR(estimate, plain.estimate, 1e-13);
        EXPECT_EQ(said.out, line) << "rule " << rule << ", " << tolerance << ", " << maxIter;
      }
  tool->ActivateDebugScope(306, false, Zarel::SCREEN);
  tool->setVerbosityLevel(0, Zarel::SCREEN);
}

TYPED_TEST(AlgoPower, StopsBelowTheSmallestEstimateWhateverTheRule) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({8e-15, 4e-15});
  const auto expected = wide(firstQuotient(m));
  C_AlgoPower<T> power("", 0);
  power.setOption("StopCriteria", 1);
  Run<T> run;

  expectClose(run(power, m, -1), expected, 8e-15);
}

TYPED_TEST(AlgoPower, AboveTheSmallestEstimateTheRuleDecides) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({8e-14, 2e-14});
  C_AlgoPower<T> power("", 0);
  power.setOption("StopCriteria", 1);
  Run<T> run;

  expectClose(run(power, m, -1), 8e-14, 8e-14);
}

TYPED_TEST(AlgoPower, ANotANumberEndsEveryRule) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({1, 2});
  m(1, 1) = scalar<T>(std::numeric_limits<double>::quiet_NaN());
  C_AlgoPower<T> power("", 0);
  Run<T> run;

  for (int rule : {0, 1, 2}) {
    power.setOption("StopCriteria", rule);
    EXPECT_TRUE(std::isnan(std::abs(run(power, m, 1000))));
  }
}

TYPED_TEST(AlgoPower, AVanishingLaterQuotientThrowsANumber) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 2); // nilpotent: the second round has nothing left
  m(0, 1) = scalar<T>(1);
  C_AlgoPower<T> power("", 0);
  Run<T> run;

  EXPECT_THROW(run(power, m, -1), int);
}

TYPED_TEST(AlgoPower, AnOverflowingVectorThrows) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({1, 1});
  m(0, 0) = scalar<T>(std::numeric_limits<double>::infinity());
  m(1, 1) = scalar<T>(1e30);
  C_AlgoPower<T> power("", 0);
  Run<T> run;

  if (isComplex<T>) return; // the infinity meets an imaginary 0 and is no number at once
  EXPECT_EQ(codeOf([&] { run(power, m, 5); }), 13202);
}

/** Rule 2 on A^H A, a change of a thousandth, and as many rounds as columns. */
TEST(AlgoPowerRules, TheSpectralNormIsSuchARun) {
  C_MatMGe<double> settles = diagonal<double>({4, 3, 1, 1, 1, 1, 1, 1, 1, 1}),
                   runsOut = diagonal<double>({4, 3.9, 1});
  const Plain ofSettles({16, 9, 1, 1, 1, 1, 1, 1, 1, 1}, 2, 1e-3, 10),
      ofRunsOut({16, 15.21, 1}, 2, 1e-3, 3);

  ASSERT_LT(ofSettles.rounds, 10);
  ASSERT_EQ(ofRunsOut.rounds, 3);
  EXPECT_NEAR(settles.Nrm(E_Nrm2), std::sqrt(ofSettles.estimate), 1e-13);
  EXPECT_NEAR(runsOut.Nrm(E_Nrm2), std::sqrt(ofRunsOut.estimate), 1e-13);
}

TEST(AlgoPowerRules, ANormThrowsAbove1e100Only) {
  C_AlgoPower<double> power("", 0);
  RunOfDoubles run;
  C_MatMGe<double> below = diagonal<double>({0.9e100}), above = diagonal<double>({1.1e100});
  power.setOption("StopCriteria", 2); // the residual would end with the first round

  EXPECT_NEAR(run(power, below, 3) / 0.9e100, 1, 1e-14);
  EXPECT_EQ(codeOf([&] { run(power, above, 3); }), 13202);
}

TYPED_TEST(AlgoPower, TellsItsEndToThoseWhoListen) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({4});
  C_AlgoPower<T> power("name", 0.5);
  Run<T> run;
  C_MessageTool* const tool = C_MessageTool::Instance("DefaultMessageTool");
  tool->setVerbosityLevel(3, Zarel::SCREEN);
  tool->ActivateDebugScope(306, true, Zarel::SCREEN);

  const auto said = support::capture([&] { run(power, m, 5); });

  tool->ActivateDebugScope(306, false, Zarel::SCREEN);
  tool->setVerbosityLevel(0, Zarel::SCREEN);
  EXPECT_EQ(said.out, "[name]\tIter [  0] : Teta = 4 ");
  EXPECT_EQ(support::capture([&] { run(power, m, 5); }).out, "");
}

template <class T>
class AlgoPowerIntegers : public ::testing::Test {};
using Integers = ::testing::Types<short int, int>;
TYPED_TEST_SUITE(AlgoPowerIntegers, Integers, ScalarNames);

TYPED_TEST(AlgoPowerIntegers, AreNotScaled) {
  using T = TypeParam;
  C_MatMGe<T> m = diagonal<T>({1, 2});
  C_AlgoPower<T> power("", 0);
  Run<T> run;

  EXPECT_EQ(codeOf([&] { run(power, m, 5); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Nrm(E_Nrm2); }), 2871);
}

TYPED_TEST(AlgoPower, GivesTheSpectralNormOfADenseMatrix) {
  using T = TypeParam;
  C_MatMGe<T> rotation(2, 2), tall(3, 2);
  rotation(0, 1) = scalar<T>(-3); // singular values 3 and 3, eigenvalues not real
  rotation(1, 0) = scalar<T>(3);
  tall(0, 0) = scalar<T>(3);
  tall(1, 0) = scalar<T>(4);
  tall(2, 1) = scalar<T>(1);

  EXPECT_NEAR(rotation.Nrm(E_Nrm2), 3, 3e-3);
  EXPECT_NEAR(tall.Nrm(E_Nrm2), 5, 5e-3);
}

TYPED_TEST(AlgoPower, TheSpectralNormLiesWithinTheBoundsOfTheOthers) {
  using T = TypeParam;
  Noise noise;
  for (int n : {2, 5, 30}) {
    C_MatMGe<T> m(n, n);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j)
        m(i, j) = noise.template value<T>();
    const double norm = m.Nrm(E_Nrm2);

    EXPECT_LE(norm, std::sqrt(m.Nrm(E_Nrm1) * m.Nrm(E_NrmInf)));
    EXPECT_GE(norm * (1 + 0.05), m.Nrm(E_Nrm1) / std::sqrt(n));
  }
}

template <class T>
class AlgoPowerSymmetric : public ::testing::Test {};
TYPED_TEST_SUITE(AlgoPowerSymmetric, SymmetricScalars, ScalarNames);

TYPED_TEST(AlgoPowerSymmetric, IteratesOnTheMatrixItself) {
  using T = TypeParam;
  C_MatMSym<T> m(2, 1); // eigenvalues -3 and -1
  m(0, 0) = scalar<T>(-2);
  m(1, 0) = scalar<T>(-1);
  m(1, 1) = scalar<T>(-2);

  EXPECT_NEAR(m.Nrm(E_Nrm2), 3, 0.05 * 3);
}

/** The matrix (1, i; i, -1), which is symmetric and tells so: its square is 0, its singular values
 * are 2 and 0. */
template <class T>
class Nilpotent : public C_MatMGe<T> {
public:
  Nilpotent() : C_MatMGe<T>(2, 2) {
    (*this)(0, 0) = scalar<T>(1);
    (*this)(0, 1) = (*this)(1, 0) = scalar<T>(0, 1);
    (*this)(1, 1) = scalar<T>(-1);
  }
  bool Sym() override { return true; }
};

TYPED_TEST(AlgoPower, TheNormOfASymmetricMatrixWhoseQuotientVanishesComesFromItsSquare) {
  using T = TypeParam;
  if constexpr (isComplex<T>) {
    Nilpotent<T> m;
    C_AlgoPower<T> power("", 0);
    Run<T> run;

    ASSERT_TRUE(m.Sym());
    EXPECT_THROW(run(power, m, -1), int); // of the second round
    EXPECT_NEAR(m.Nrm(E_Nrm2), 2, 2e-3);
  }
}

TYPED_TEST(AlgoPower, SurvivesFailingAllocations) {
  using T = TypeParam;
  const long failed = support::forEachFailingAllocation([] {
    C_MatMGe<T> m = diagonal<T>({1, 3});
    EXPECT_NEAR(m.Nrm(E_Nrm2), 3, 0.05);
  });

  EXPECT_GT(failed, 0);
}

} // namespace
