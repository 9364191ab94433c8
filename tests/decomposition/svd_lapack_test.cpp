// The direct decomposition of sets and matrices: identities, the table of errors, what is kept.
#include <limits>

#include <zarel/C_MessageTool.h>

#include "decomposition/sets.h"
#include "support/Capture.h"
#include "support/FailingAllocation.h"

namespace {

using namespace sets;
using Zarel::C_MessageTool;

template <class T>
class AlgoSvdLapack : public ::testing::Test {};
TYPED_TEST_SUITE(AlgoSvdLapack, BlasScalars, ScalarNames);

TYPED_TEST(AlgoSvdLapack, HasNoNameAndItsScopeAndThreshold) {
  C_AlgoSvdLapack<TypeParam> svd;

  EXPECT_EQ(svd.GetName(), "");
  EXPECT_EQ(svd.GetDebugScope(), 451);
  EXPECT_EQ(svd.GetThresholdValue(), 1e-7);
  EXPECT_EQ(svd.SetThresholdValue(0.5), 0);
  EXPECT_EQ(svd.GetThresholdValue(), 0.5);
}

TYPED_TEST(AlgoSvdLapack, DecomposesASetInPlace) {
  using T = TypeParam;
  const std::vector<double> spectrum{8, 4, 2, 1};
  for (int mode : {inCore, onFile}) {
    C_MatMGe<T> a = withSpectrum<T>(30, spectrum);
    C_VSTRUCT<T> set(mode, 4, 30, nullptr);
    fillFrom(set, a);
    C_AlgoSvdLapack<T> svd;

    ASSERT_EQ(svd.Run(set, 0, 4), 0);

    ASSERT_EQ(set.getDim(), 4);
    C_MatMGe<T> u = matrixOf(set);
    const std::vector<double> s = valuesOf(svd);
    for (std::size_t i = 0; i < 4; ++i)
      EXPECT_NEAR(s[i], spectrum[i], 200 * epsilon<T>());
    EXPECT_LE(departure(u), 200 * epsilon<T>());
    EXPECT_LE(reconstructionError(svd, u, a), 200 * epsilon<T>());
    EXPECT_LE(baseError(svd, u, a), 200 * epsilon<T>());
  }
}

TYPED_TEST(AlgoSvdLapack, TheTableHoldsTheShareOfTheSumThatIsLost) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(10, {5, 3, 2});
  C_AlgoSvdLapack<T> svd;
  svd.SetThresholdValue(0.3);

  ASSERT_EQ(svd.Run(a, 0), 0);

  const std::vector<double> errors = errorsOf(svd);
  ASSERT_EQ(errors.size(), 3u);
  EXPECT_NEAR(errors[0], 0.5, 50 * epsilon<T>());
  EXPECT_NEAR(errors[1], 0.2, 50 * epsilon<T>());
  EXPECT_EQ(errors[2], 0);
  EXPECT_EQ(a.NbCol(), 2);
  EXPECT_EQ(svd.GetNbRetained(), 2);
  EXPECT_EQ(valuesOf(svd).size(), 3u); // all of them, not only the kept ones
}

TYPED_TEST(AlgoSvdLapack, ATruncatedSetMissesNoMoreThanTheFirstDroppedValue) {
  using T = TypeParam;
  const std::vector<double> spectrum = graded(8, 1, 0.25);
  C_MatMGe<T> a = withSpectrum<T>(40, spectrum);
  C_VSTRUCT<T> set(inCore, 8, 40, nullptr);
  fillFrom(set, a);
  C_AlgoSvdLapack<T> svd;
  svd.SetThresholdValue(0.01);

  ASSERT_EQ(svd.Run(set, 0, -1), 0);

  const int kept = svd.GetNbRetained();
  ASSERT_EQ(kept, 4); // 4^-4 is the first share below a hundredth
  C_MatMGe<T> u = matrixOf(set);
  EXPECT_LE(reconstructionError(svd, u, a), spectrum[static_cast<std::size_t>(kept)] * 1.01);
}

TYPED_TEST(AlgoSvdLapack, KeepsWhatItIsToldAndLeavesTheTableAlone) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(20, graded(10, 1, 0.5)), other = withSpectrum<T>(20, {1, 1});
  C_VSTRUCT<T> set(inCore, 10, 20, nullptr);
  fillFrom(set, a);
  C_AlgoSvdLapack<T> svd;
  svd.Run(other, 0);
  const std::vector<double> before = errorsOf(svd);

  ASSERT_EQ(svd.Run(set, 0, 3), 0);

  EXPECT_EQ(set.getDim(), 3);
  EXPECT_EQ(errorsOf(svd), before);
  EXPECT_EQ(valuesOf(svd).size(), 10u);
}

TYPED_TEST(AlgoSvdLapack, VectorsBeforeTheFirstStayAsTheyAre) {
  using T = TypeParam;
  for (int mode : {inCore, onFile}) {
    C_MatMGe<T> a = withSpectrum<T>(12, {3, 2, 1, 0.5, 0.25});
    C_VSTRUCT<T> set(mode, 5, 12, nullptr);
    fillFrom(set, a);
    C_AlgoSvdLapack<T> svd;

    ASSERT_EQ(svd.Run(set, 2, 1), 0);

    C_MatMGe<T> u = matrixOf(set);
    ASSERT_EQ(u.NbCol(), 3);
    for (int j = 0; j < 2; ++j)
      for (int i = 0; i < 12; ++i)
        EXPECT_EQ(u(i, j), a(i, j));
    EXPECT_EQ(valuesOf(svd).size(), 3u);
  }
}

TYPED_TEST(AlgoSvdLapack, DecomposesTheColumnsOfAMatrixFromAFirstOneOn) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(12, {3, 2, 1, 0.5}), before = a, tail(12, 3);
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 12; ++i)
      tail(i, j) = a(i, j + 1);
  C_AlgoSvdLapack<T> svd;
  svd.SetThresholdValue(0);

  ASSERT_EQ(svd.Run(a, 1), 0);

  ASSERT_EQ(a.NbCol(), 4);
  for (int i = 0; i < 12; ++i)
    EXPECT_EQ(a(i, 0), before(i, 0));
  C_MatMGe<T> u(12, 3, a[1], -1);
  EXPECT_LE(departure(u), 200 * epsilon<T>());
  EXPECT_LE(reconstructionError(svd, u, tail), 200 * epsilon<T>());
}

TYPED_TEST(AlgoSvdLapack, NoVectorsToTreatChangeNothing) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(6, {2, 1}), copy = a, none;
  C_VSTRUCT<T> set(inCore, 2, 6, nullptr), empty(inCore, 0, 6, nullptr);
  fillFrom(set, a);
  C_AlgoSvdLapack<T> svd;
  svd.Run(copy, 0);
  const int retained = svd.GetNbRetained();

  EXPECT_EQ(svd.Run(set, 2, -1), 0);
  EXPECT_EQ(svd.Run(empty, 0, -1), 0);
  EXPECT_EQ(svd.Run(a, 2), 0);
  EXPECT_EQ(svd.Run(none, 0), 0);

  EXPECT_EQ(svd.GetNbRetained(), retained);
  EXPECT_EQ(set.getDim(), 2);
  EXPECT_EQ(a.NbCol(), 2);
}

TYPED_TEST(AlgoSvdLapack, AThresholdOfOneKeepsOneVectorAndOfZeroAll) {
  using T = TypeParam;
  for (double threshold : {0.0, 1.0}) {
    C_MatMGe<T> a = withSpectrum<T>(9, {1, 1, 1});
    C_AlgoSvdLapack<T> svd;
    svd.SetThresholdValue(threshold);

    svd.Run(a, 0);

    EXPECT_EQ(a.NbCol(), threshold == 1 ? 1 : 3);
  }
}

TYPED_TEST(AlgoSvdLapack, AThresholdOfZeroDropsAZeroTail) {
  using T = TypeParam;
  C_MatMGe<T> a(4, 2); // one vector and a zero: the share after one is 1 - 5 / 5
  a(0, 0) = scalar<T>(3);
  a(1, 0) = scalar<T>(4);
  C_AlgoSvdLapack<T> svd;
  svd.SetThresholdValue(0);

  svd.Run(a, 0);

  EXPECT_EQ(a.NbCol(), 1);
}

TYPED_TEST(AlgoSvdLapack, WithFewerRowsThanVectorsTheLastValuesStayAsTheyWere) {
  using T = TypeParam;
  C_MatMGe<T> wideOne = withSpectrum<T>(3, {4, 2}), a(2, 3);
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 2; ++i)
      a(i, j) = conjugate(wideOne(j, i)); // singular values 4 and 2 in 2 x 3
  C_MatMGe<T> before = a;
  C_AlgoSvdLapack<T> svd;
  svd.SetThresholdValue(1e-5);

  ASSERT_EQ(svd.Run(a, 0), 0);

  const std::vector<double> s = valuesOf(svd);
  ASSERT_EQ(s.size(), 3u);
  EXPECT_NEAR(s[0], 4, 50 * epsilon<T>());
  EXPECT_NEAR(s[1], 2, 50 * epsilon<T>());
  EXPECT_EQ(s[2], 0);
  ASSERT_EQ(a.NbCol(), 2);
  EXPECT_LE(departure(a), 50 * epsilon<T>());
  EXPECT_LE(reconstructionError(svd, a, before), 50 * epsilon<T>());
}

TYPED_TEST(AlgoSvdLapack, WithFewerRowsThanVectorsValuesOfAnEarlierRunStand) {
  using T = TypeParam;
  C_MatMGe<T> earlier = withSpectrum<T>(6, {9, 7, 5}), a(2, 3);
  a(0, 0) = scalar<T>(4);
  a(1, 1) = scalar<T>(2);
  C_AlgoSvdLapack<T> svd;
  ASSERT_EQ(svd.Run(earlier, 0), 0);
  const double third = valuesOf(svd)[2];

  ASSERT_EQ(svd.Run(a, 0), 0);

  const std::vector<double> s = valuesOf(svd);
  ASSERT_EQ(s.size(), 3u);
  EXPECT_NEAR(s[0], 4, 50 * epsilon<T>());
  EXPECT_NEAR(s[1], 2, 50 * epsilon<T>());
  EXPECT_NEAR(third, 5, 50 * epsilon<T>());
  EXPECT_EQ(s[2], third);
}

TYPED_TEST(AlgoSvdLapack, OneObjectRunsAgainWithTheSameAndWithOtherSizes) {
  using T = TypeParam;
  C_AlgoSvdLapack<T> svd;
  for (int n : {3, 3, 5, 2}) {
    C_MatMGe<T> a = withSpectrum<T>(20, graded(n, 1, 0.5)), before = a;
    svd.SetThresholdValue(0);

    ASSERT_EQ(svd.Run(a, 0), 0);

    EXPECT_EQ(valuesOf(svd).size(), static_cast<std::size_t>(n));
    EXPECT_LE(reconstructionError(svd, a, before), 100 * epsilon<T>());
  }
}

TYPED_TEST(AlgoSvdLapack, BeforeARunThereAreNoResults) {
  using T = TypeParam;
  C_AlgoSvdLapack<T> svd;
  VecOf<T> v(3);
  C_MatMGe<T> m(2, 2);

  const auto said = support::capture([&] {
    EXPECT_EQ(svd.GetTabErr(v), -1);
    EXPECT_EQ(svd.GetSingularValues(v), -1);
  });

  const std::string line = "Il faut lancer la methode RUN pour obtenir les vp\n";
  EXPECT_EQ(said.err, line + line);
  EXPECT_EQ(v.Dim(), 3);
  EXPECT_EQ(svd.GetLinearComb(m), 0);
  EXPECT_EQ(m.NbCol(), 0);
}

TYPED_TEST(AlgoSvdLapack, CoefficientsNeedAMatrixThatCanTakeThem) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(6, {2, 1});
  T one[1];
  C_MatMGe<T> view(1, 1, one, -1);
  C_AlgoSvdLapack<T> svd;
  svd.Run(a, 0);

  EXPECT_EQ(svd.GetLinearComb(view), -1);
  EXPECT_EQ(svd.GetLinearCombFromVecToBase(view), -1);
}

TYPED_TEST(AlgoSvdLapack, NamesTheFirstVectorThatHoldsNoFiniteNumber) {
  using T = TypeParam;
  using Limits = std::numeric_limits<double>;
  for (int mode : {inCore, onFile})
    for (double bad : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()}) {
      C_MatMGe<T> a = withSpectrum<T>(7, {3, 2, 1, 0.5});
      a(5, 2) = a(0, 3) = scalar<T>(bad);
      C_VSTRUCT<T> set(mode, 4, 7, nullptr);
      fillFrom(set, a);
      C_AlgoSvdLapack<T> svd;

      const auto ofSet = support::capture([&] { EXPECT_EQ(svd.Run(set, 1, -1), -1); });
      const auto ofMatrix = support::capture([&] { EXPECT_EQ(svd.Run(a, 2), -1); });

      // Vectors count from that of the set, also where the first ones are left out.
      EXPECT_NE(ofSet.err.find("vector 2 holds a value that is not a finite number\n"),
                std::string::npos)
          << ofSet.err;
      EXPECT_NE(ofMatrix.err.find("vector 2 holds"), std::string::npos) << ofMatrix.err;
      EXPECT_EQ(set.getDim(), 4);
      C_MatMGe<T> after = matrixOf(set);
      EXPECT_EQ(after(3, 1), a(3, 1)); // nothing was changed
      EXPECT_EQ(svd.GetNbRetained(), 0);
    }
}

TYPED_TEST(AlgoSvdLapack, RefusesVectorsThatAreNoOneMatrix) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(8, {3, 2, 1});
  C_VSTRUCT<T> set(inCore, 3, 8, nullptr);
  fillFrom(set, a);
  C_VSTRUCT<T> link(set, 0, -1, 2, 6);
  T values[12];
  std::fill(values, values + 12, T(1));
  C_MatMGe<T> wider(3, 3, values, 4);
  C_AlgoSvdLapack<T> svd;

  EXPECT_EQ(svd.Run(link, 0, -1), -1);
  EXPECT_EQ(svd.Run(wider, 0), -1);

  C_MatMGe<T> after = matrixOf(set);
  EXPECT_EQ(largestDifference(after, a), 0);
}

TYPED_TEST(AlgoSvdLapack, RefusesNumbersOfVectorsThatDoNotFit) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(8, {3, 2, 1});
  C_VSTRUCT<T> set(inCore, 3, 8, nullptr);
  fillFrom(set, a);
  C_AlgoSvdLapack<T> svd;

  EXPECT_EQ(svd.Run(set, -1, -1), -1);
  EXPECT_EQ(svd.Run(set, 4, -1), -1);
  EXPECT_EQ(svd.Run(set, 0, 4), -1);
  EXPECT_EQ(svd.Run(set, 0, -2), -1);
  EXPECT_EQ(svd.Run(a, 4), -1);
  EXPECT_EQ(svd.Run(a, -1), -1);

  C_MatMGe<T> after = matrixOf(set);
  EXPECT_EQ(largestDifference(after, a), 0);
}

template <class T>
void expectNoResults(C_AlgoSvd<T>& svd) {
  VecOf<T> v(3);
  C_MatMGe<T> m(2, 2);
  support::capture([&] {
    EXPECT_EQ(svd.GetSingularValues(v), -1);
    EXPECT_EQ(svd.GetTabErr(v), -1);
  });
  EXPECT_EQ(svd.GetNbRetained(), 0);
  EXPECT_EQ(svd.GetLinearComb(m), 0);
  EXPECT_EQ(m.NbCol(), 0);
}

TYPED_TEST(AlgoSvdLapack, AFailedRunLeavesNoResultsAndTheObjectRunsAgain) {
  using T = TypeParam;
  const C_MatMGe<T> good = withSpectrum<T>(8, {3, 2});
  C_MatMGe<T> a = good, bad = good;
  bad(1, 1) = scalar<T>(std::numeric_limits<double>::quiet_NaN());
  C_VSTRUCT<T> set(inCore, 2, 8, nullptr);
  fillFrom(set, a);
  C_VSTRUCT<T> link(set, 0, -1, 0, -1), rows(set, 0, -1, 2, 6);
  T values[12] = {};
  C_MatMGe<T> wider(3, 3, values, 4);
  C_AlgoSvdLapack<T> svd;
  const auto afterASuccess = [&](const char* what, auto failure) {
    SCOPED_TRACE(what);
    C_MatMGe<T> before = good, u = good;
    ASSERT_EQ(svd.Run(u, 0), 0);
    EXPECT_EQ(svd.GetNbRetained(), 2);
    EXPECT_LE(reconstructionError(svd, u, before), 100 * epsilon<T>());
    support::capture(failure);
    expectNoResults(svd);
  };

  afterASuccess("NaN", [&] { EXPECT_EQ(svd.Run(bad, 0), -1); }); // of the same sizes
  afterASuccess("first", [&] { EXPECT_EQ(svd.Run(set, -1, -1), -1); });
  afterASuccess("keep", [&] { EXPECT_EQ(svd.Run(set, 0, 3), -1); });
  afterASuccess("gaps", [&] { EXPECT_EQ(svd.Run(rows, 0, -1), -1); });
  afterASuccess("column", [&] { EXPECT_EQ(svd.Run(a, -1), -1); });
  afterASuccess("lead", [&] { EXPECT_EQ(svd.Run(wider, 0), -1); });
  afterASuccess("cut", [&] { EXPECT_EQ(codeOf([&] { svd.Run(link, 0, 1); }), 2870); });
}

TYPED_TEST(AlgoSvdLapack, ARunThatRunsOutOfMemoryLeavesNothingMapped) {
  using T = TypeParam;
  long inTheRun = 0;
  support::forEachFailingAllocation([&] {
    C_MatMGe<T> a(6, 2);
    a(0, 0) = a(1, 1) = scalar<T>(2);
    C_VSTRUCT<T> set(onFile, 2, 6, nullptr);
    fillFrom(set, a);
    C_AlgoSvdLapack<T> svd;
    try {
      svd.Run(set, 0, -1);
    } catch (...) {
      const support::Unharmed check;
      ++inTheRun;
      EXPECT_EQ(set.Adr(), nullptr);
      EXPECT_EQ(svd.GetNbRetained(), 0);
      throw;
    }
  });

  EXPECT_GT(inTheRun, 0);
}

/** The road that solves nothing, with values that it finds there. */
template <class T>
class GramRoad : public C_AlgoSvdLapack<T> {
public:
  GramRoad() : C_AlgoSvdLapack<T>(true) {}
  void leave(std::initializer_list<double> values) {
    int i = 0;
    for (double value : values)
      this->values_[i++] = scalar<T>(value);
  }
  C_MatMGe<T>& right() { return this->rightHand_; }
};

/** The columns (1, 2, 0, 0), (0, 3, 1, 0), (2, 0, 0, 5). */
template <class T>
C_MatMGe<T> threeColumns() {
  C_MatMGe<T> a(4, 3);
  a(0, 0) = a(2, 1) = scalar<T>(1);
  a(1, 0) = a(0, 2) = scalar<T>(2);
  a(1, 1) = scalar<T>(3);
  a(3, 2) = scalar<T>(5);
  return a;
}

TYPED_TEST(AlgoSvdLapack, TheGramRoadReversesTheRootsOfOldValuesAndFormsTheGramMatrix) {
  using T = TypeParam;
  C_MatMGe<T> a = threeColumns<T>();
  C_VSTRUCT<T> set(inCore, 3, 4, nullptr);
  fillFrom(set, a);
  GramRoad<T> svd;
  support::capture([&] { ASSERT_EQ(svd.Run(set, 0, 3), 0); }); // sizes the buffers
  svd.leave({1, 4, 25});
  svd.right().Zero();

  support::capture([&] { ASSERT_EQ(svd.Run(set, 0, 3), 0); });

  EXPECT_EQ(valuesOf(svd), (std::vector<double>{5, 2, 1}));
  const double gram[3][3] = {{5, 6, 2}, {6, 10, 0}, {2, 0, 29}};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      EXPECT_EQ(svd.right()(i, j), scalar<T>(gram[i][j])) << i << ' ' << j;
}

TYPED_TEST(AlgoSvdLapack, OnAMatrixTheGramRoadOnlyEstimatesFromOldValues) {
  using T = TypeParam;
  C_MatMGe<T> a = threeColumns<T>(), first = a, before = a;
  GramRoad<T> svd;
  ASSERT_EQ(svd.Run(first, 0), 0);
  EXPECT_EQ(first.NbCol(), 3); // zeros have no share to lose
  svd.leave({6, 3, 1});
  svd.SetThresholdValue(0.15);

  ASSERT_EQ(svd.Run(a, 0), 0);

  EXPECT_EQ(valuesOf(svd), (std::vector<double>{6, 3, 1}));
  EXPECT_EQ(svd.GetNbRetained(), 2); // four tenths are lost after one, a tenth after two
  ASSERT_EQ(a.NbCol(), 2);
  for (int j = 0; j < 2; ++j)
    for (int i = 0; i < 4; ++i)
      EXPECT_EQ(a(i, j), before(i, j));
  EXPECT_EQ(svd.right()(0, 0), T(0));

  support::capture([&] { EXPECT_EQ(svd.Run(before, 1), -1); });
  expectNoResults(svd);
}

TYPED_TEST(AlgoSvdLapack, TheGramRoadPrintsAndReversesOldValuesAndSolvesNothing) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(8, {3, 2});
  C_VSTRUCT<T> set(inCore, 2, 8, nullptr);
  fillFrom(set, a);
  C_AlgoSvdLapack<T> svd(true);

  const auto said = support::capture([&] { EXPECT_EQ(svd.Run(set, 0, 2), 0); });

  EXPECT_NE(said.out.find("- Values :"), std::string::npos);
  EXPECT_EQ(valuesOf(svd), (std::vector<double>{0, 0})); // those of a new object
  C_MatMGe<T> after = matrixOf(set);
  EXPECT_EQ(largestDifference(after, a), 0);
}

TYPED_TEST(AlgoSvdLapack, TheGramRoadTakesAllVectorsOnly) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(8, {3, 2});
  C_VSTRUCT<T> set(inCore, 2, 8, nullptr);
  C_AlgoSvdLapack<T> svd(true);

  const auto said = support::capture([&] {
    EXPECT_EQ(svd.Run(set, 1, -1), -1);
    EXPECT_EQ(svd.Run(a, 1), -1);
  });

  EXPECT_NE(said.err.find("Methode : C_AlgoSvdLapack<T>::Run, Mode de fonctionnement Non prevu "
                          "pour le moment (ComputeQtQ && ifirst>0) \n"),
            std::string::npos);
}

TYPED_TEST(AlgoSvdLapack, ALinkCannotBeCut) {
  using T = TypeParam;
  C_MatMGe<T> a = withSpectrum<T>(8, {3, 2});
  C_VSTRUCT<T> set(inCore, 2, 8, nullptr);
  fillFrom(set, a);
  C_VSTRUCT<T> link(set, 0, -1, 0, -1);
  C_AlgoSvdLapack<T> svd;

  EXPECT_EQ(codeOf([&] { svd.Run(link, 0, 1); }), 2870);
}

TYPED_TEST(AlgoSvdLapack, TellsValuesAndErrorsToThoseWhoListen) {
  using T = TypeParam;
  C_MatMGe<T> a(3, 2);
  a(0, 0) = scalar<T>(3);
  a(1, 1) = scalar<T>(1);
  C_AlgoSvdLapack<T> svd;
  C_MessageTool* const tool = C_MessageTool::Instance("DefaultMessageTool");
  tool->setVerbosityLevel(3, Zarel::SCREEN);
  tool->ActivateDebugScope(451, true, Zarel::SCREEN);

  const auto said = support::capture([&] { svd.Run(a, 0); });

  tool->ActivateDebugScope(451, false, Zarel::SCREEN);
  tool->setVerbosityLevel(0, Zarel::SCREEN);
  EXPECT_EQ(said.out, "Valeurs propres : [0]:3.000000E+00\n[1]:1.000000E+00\n "
                      "Erreur Troncature : [0]:2.500000E-01\n[1]:0.000000E+00\n ");
}

/** The estimate by itself, with the mode that has no setter. */
template <class T>
class Estimate : public C_AlgoSvdLapack<T> {
public:
  Estimate(int mode, std::initializer_list<double> values) {
    this->errorMode_ = mode;
    for (double value : values)
      all_.push_back(value);
    this->values_.Resize(static_cast<int>(all_.size()));
    for (std::size_t i = 0; i < all_.size(); ++i)
      this->values_[static_cast<int>(i)] = scalar<T>(all_[i]);
  }
  using C_AlgoSvdLapack<T>::ErrorEstimation;

private:
  std::vector<double> all_;
};

TYPED_TEST(AlgoSvdLapack, ModeZeroComparesTheFirstDroppedValueWithTheLargest) {
  using T = TypeParam;
  Estimate<T> svd(0, {8, 4, 1});
  svd.SetThresholdValue(0.2);

  EXPECT_EQ(svd.ErrorEstimation(), 0);

  EXPECT_EQ(errorsOf(svd), (std::vector<double>{0.5, 0.125, 0}));
  EXPECT_EQ(svd.GetNbRetained(), 2);
}

TYPED_TEST(AlgoSvdLapack, AnyOtherModeThrows) {
  Estimate<TypeParam> svd(2, {8, 4, 1}), one(2, {8}), none(-1, {});

  EXPECT_EQ(codeOf([&] { svd.ErrorEstimation(); }), 3);
  EXPECT_EQ(codeOf([&] { one.ErrorEstimation(); }), 3);
  EXPECT_EQ(codeOf([&] { none.ErrorEstimation(); }), 3);
}

TYPED_TEST(AlgoSvdLapack, ANegativeThresholdFindsNoIndexAndKeepsAll) {
  Estimate<TypeParam> svd(1, {8, 4, 1}), one(1, {8}), none(1, {});
  svd.SetThresholdValue(-1);

  svd.ErrorEstimation();
  one.ErrorEstimation();
  none.ErrorEstimation();

  EXPECT_EQ(svd.GetNbRetained(), 3);
  EXPECT_EQ(one.GetNbRetained(), 1);
  EXPECT_EQ(none.GetNbRetained(), 0);
}

TYPED_TEST(AlgoSvdLapack, SurvivesFailingAllocations) {
  using T = TypeParam;
  const long failed = support::forEachFailingAllocation([] {
    C_MatMGe<T> a(6, 2);
    a(0, 0) = a(1, 1) = scalar<T>(2);
    C_VSTRUCT<T> set(inCore, 2, 6, nullptr);
    fillFrom(set, a);
    C_AlgoSvdLapack<T> svd;
    if (svd.Run(set, 0, -1) == 0) {
      EXPECT_EQ(svd.GetNbRetained(), set.getDim());
    }
  });

  EXPECT_GT(failed, 0);
}

} // namespace
