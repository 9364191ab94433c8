// Products, sums, factors and norms of dense matrices against plain loops and identities.
#include <cmath>
#include <iostream>
#include <map>

#include "containers/OffCore.h"
#include "containers/support.h"
#include "support/Capture.h"

namespace {

/** A matrix that keeps a gap of two rows below its columns. */
template <class T>
struct Gapped {
  Gapped(int rows, int columns, Noise& noise) : m(rows + 2, columns) {
    for (int j = 0; j < columns; ++j)
      for (int i = 0; i < rows + 2; ++i)
        m(i, j) = noise.value<T>();
    m.ResizeAndKeepValues(rows, columns);
  }
  C_MatMGe<T> m;
};

template <class T>
std::complex<double> element(C_MatMGe<T>& m, char trans, int i, int j) {
  if (trans == 'N' || trans == 'n') return wide(m(i, j));
  return trans == 'C' ? std::conj(wide(m(j, i))) : wide(m(j, i));
}

template <class T>
class MatMGeBlas : public ::testing::Test {};
TYPED_TEST_SUITE(MatMGeBlas, BlasScalars, ScalarNames);

TYPED_TEST(MatMGeBlas, ProductWithAVector) {
  using T = TypeParam;
  Noise noise;
  for (char trans : {'N', 'n', 'T', 'C'}) {
    Gapped<T> a(4, 3, noise);
    const bool plain = trans == 'N' || trans == 'n';
    VecOf<T> x(plain ? 3 : 4), y(plain ? 4 : 3), before;
    for (int i = 0; i < x.Dim(); ++i)
      x[i] = noise.value<T>();
    for (int i = 0; i < y.Dim(); ++i)
      y[i] = noise.value<T>();
    before.Copy(y);
    const T alpha = noise.value<T>(), beta = noise.value<T>();

    EXPECT_EQ(a.m.Mv(alpha, x, beta, y, trans), 0);

    for (int i = 0; i < y.Dim(); ++i) {
      std::complex<double> sum = wide(beta) * wide(before[i]);
      for (int j = 0; j < x.Dim(); ++j)
        sum += wide(alpha) * element(a.m, trans, i, j) * wide(x[j]);
      expectClose(y[i], sum, 8);
    }
  }
}

TYPED_TEST(MatMGeBlas, ProductSizesItsResult) {
  using T = TypeParam;
  C_MatMGe<T> a = countedMatrix<T>(3, 2), none(0, 2);
  VecOf<T> x(2, T(1)), y, z(7, T(1));

  a.Mv(T(1), x, T(0), y, 'N');
  EXPECT_EQ(y.Dim(), 3);
  expectClose(y[2], wide(a(2, 0)) + wide(a(2, 1)), 70);
  EXPECT_EQ(none.Mv(T(1), x, T(0), z, 'N'), 0);
  EXPECT_EQ(z.Dim(), 0);
}

TYPED_TEST(MatMGeBlas, ProductOfMatricesInAllTranspositions) {
  using T = TypeParam;
  Noise noise;
  for (char ta : {'N', 'T', 'C'})
    for (char tb : {'N', 'T', 'C'}) {
      const int m = 3, k = 4, n = 5;
      Gapped<T> a(ta == 'N' ? m : k, ta == 'N' ? k : m, noise);
      Gapped<T> b(tb == 'N' ? k : n, tb == 'N' ? n : k, noise);
      Gapped<T> c(m, n, noise);
      C_MatMGe<T> before(c.m);
      const T alpha = noise.value<T>(), beta = noise.value<T>();

      EXPECT_EQ(c.m.MM(ta, tb, alpha, a.m, b.m, beta), 0);

      EXPECT_EQ(c.m.LeadDim(), m + 2);
      for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j) {
          std::complex<double> sum = wide(beta) * wide(before(i, j));
          for (int l = 0; l < k; ++l)
            sum += wide(alpha) * element(a.m, ta, i, l) * element(b.m, tb, l, j);
          expectClose(c.m(i, j), sum, 8);
        }
    }
}

TYPED_TEST(MatMGeBlas, AnEmptyProductLeavesTheReceiver) {
  using T = TypeParam;
  C_MatMGe<T> c = countedMatrix<T>(2, 3), noRows(0, 4), noColumns(4, 0), b(4, 5), a(5, 4);

  EXPECT_EQ(c.MM('N', 'N', T(1), noRows, b, T(0)), 0);
  EXPECT_EQ(c.MM('N', 'N', T(1), a, noColumns, T(0)), 0);

  EXPECT_EQ(c.NbRow(), 2);
  EXPECT_EQ(c.NbCol(), 3);
  EXPECT_EQ(c(1, 2), scalar<T>(23, -1));
}

TYPED_TEST(MatMGeBlas, AnEmptyInnerSizeLeavesBetaTimesTheReceiver) {
  using T = TypeParam;
  C_MatMGe<T> c = countedMatrix<T>(2, 3), a(2, 0), b(0, 3);

  EXPECT_EQ(c.MM('N', 'N', T(1), a, b, T(2)), 0);
  EXPECT_EQ(c(1, 2), T(2) * scalar<T>(23, -1));
  // Transposed, the first leading dimension is 0, and the product is left out.
  C_MatMGe<T> transposed(0, 2);
  EXPECT_EQ(c.MM('T', 'N', T(1), transposed, b, T(2)), 0);
  EXPECT_EQ(c(1, 2), T(2) * scalar<T>(23, -1));
}

// The receiver is resized without being cleared: with a beta the old values take part where they
// now stand.
TYPED_TEST(MatMGeBlas, AProductThatResizesKeepsOldValuesForBeta) {
  using T = TypeParam;
  C_MatMGe<T> c = countedMatrix<T>(2, 3), a(3, 2), b(2, 2);

  EXPECT_EQ(c.MM('N', 'N', T(1), a, b, T(1)), 0);

  EXPECT_EQ(c.NbRow(), 3);
  EXPECT_EQ(c(2, 0), scalar<T>(12, -1));
}

/** || A x - b || in units of rounding times || A || || x ||. */
template <class T>
double residual(C_MatMGe<T>& a, C_Vec<T, int>& x, C_Vec<T, int>& b) {
  double worst = 0, scale = 0;
  for (int i = 0; i < a.NbRow(); ++i) {
    std::complex<double> sum = -wide(b.GetVal(i));
    double size = 0;
    for (int j = 0; j < a.NbCol(); ++j) {
      sum += wide(a(i, j)) * wide(x.GetVal(j));
      size += std::abs(wide(a(i, j))) * std::abs(wide(x.GetVal(j)));
    }
    worst = std::max(worst, std::abs(sum));
    scale = std::max(scale, size);
  }
  return worst / (epsilon<T>() * scale);
}

TYPED_TEST(MatMGeBlas, FactorsSolve) {
  using T = TypeParam;
  Noise noise;
  for (int n : {1, 2, 7, 40}) {
    Gapped<T> a(n, n, noise);
    C_MatMGe<T> original(a.m);
    VecOf<T> b(n), x, inPlace;
    Pivots pivots;
    for (int i = 0; i < n; ++i)
      b[i] = noise.value<T>();
    inPlace.Copy(b);

    EXPECT_EQ(a.m.Factor(pivots, false), 0);
    EXPECT_EQ(pivots.Dim(), n);
    EXPECT_EQ(a.m.Solve(pivots, &b, &x), 0);
    EXPECT_EQ(a.m.Solve(pivots, &inPlace, nullptr), 0);

    EXPECT_LT(residual(original, x, b), 4.0 * n);
    EXPECT_TRUE(x == inPlace);
  }
}

TYPED_TEST(MatMGeBlas, FactorsAreTakenOnceUnlessForced) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 2);
  m(0, 0) = m(1, 1) = T(2);
  Pivots pivots;

  EXPECT_EQ(m.Factor(pivots, false), 0);
  m(0, 0) = T(4);
  m(1, 0) = T(4);
  EXPECT_EQ(m.Factor(pivots, false), 0);
  EXPECT_EQ(m(1, 0), T(4)); // not factored anew
  EXPECT_EQ(m.Factor(pivots, true), 0);
  EXPECT_EQ(m(1, 0), T(1));
  m.Release();
  m.Resize(2, 2);
  m(0, 0) = T(2);
  m(1, 0) = T(2);
  m(1, 1) = T(1);
  EXPECT_EQ(m.Factor(pivots, false), 0); // Release took the mark
  EXPECT_EQ(m(1, 0), T(1));
}

TYPED_TEST(MatMGeBlas, ASingularMatrixThrows2869AndIsNotMarked) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 2);
  m(0, 0) = m(0, 1) = m(1, 0) = m(1, 1) = T(1);
  Pivots pivots;

  EXPECT_EQ(codeOf([&] { m.Factor(pivots, false); }), 2869);
  EXPECT_EQ(m(1, 1), T(0)); // partly factored
  // Not marked: what stands there now, 1 1 / 1 0, is factored anew.
  EXPECT_EQ(m.Factor(pivots, false), 0);
  EXPECT_EQ(m(1, 1), T(-1));
}

TYPED_TEST(MatMGeBlas, OfNoRowsFactorAndSolveDoNothing) {
  using T = TypeParam;
  C_MatMGe<T> none;
  Pivots pivots(3);
  VecOf<T> b(2, T(5));

  EXPECT_EQ(none.Factor(pivots, true), 0);
  EXPECT_EQ(pivots.Dim(), 3);
  EXPECT_EQ(none.Solve(pivots, &b, nullptr), 0);
  EXPECT_EQ(b[1], T(5));
}

TYPED_TEST(MatMGeBlas, FactorAndSolveOpenFrames) {
  using T = TypeParam;
  using Names = std::vector<std::string>;
  C_MatMGe<T> m(1, 1), singular(1, 1);
  m(0, 0) = T(2);
  VecOf<T> b(1, T(4));
  Pivots pivots;
  const FrameProbe frames;

  m.Factor(pivots, false);
  EXPECT_EQ(frames.taken(), (Names{"+C_MatMGe<T>::Factor", "-C_MatMGe<T>::Factor"}));
  m.Solve(pivots, &b, nullptr);
  EXPECT_EQ(frames.taken(), (Names{"+C_MatMGe<T>::Solve", "-C_MatMGe<T>::Solve"}));
  m *= T(3);
  m.Mv(T(1), b, T(0), b, 'N');
  EXPECT_EQ(frames.taken(), Names{}) << "arithmetic opens none";
  try {
    singular.Factor(pivots, false);
    ADD_FAILURE();
  } catch (const C_ZarelException& e) {
    EXPECT_STREQ(e.getCallStack().GetStack().back().GetFunction(), "C_MatMGe<T>::Factor");
  }
}

TYPED_TEST(MatMGeBlas, WhatLapackRefusesIsSaidAndThrows2875) {
  using T = TypeParam;
  T block[4] = {T(1), T(2), T(3), T(4)};
  C_MatMGe<T> crooked(2, 2, block, 1); // a leading dimension below the rows
  Pivots pivots;

  const support::Captured said =
      support::capture([&] { EXPECT_EQ(codeOf([&] { crooked.Factor(pivots, false); }), 2875); });

  EXPECT_NE(said.err.find("Lapack call getrf() failed: info4is an invalid value\n"),
            std::string::npos);

  VecOf<T> b(2);
  pivots.Resize(2);
  const support::Captured again = support::capture(
      [&] { EXPECT_EQ(codeOf([&] { crooked.Solve(pivots, &b, nullptr); }), 2875); });
  EXPECT_NE(again.err.find("Lapack call getrf() failed: info5is an invalid value.\n"),
            std::string::npos)
      << "named after the other routine, and with a point";
}

TYPED_TEST(MatMGeBlas, SolveRefusesWhatIsShorterThanTheRows) {
  using T = TypeParam;
  C_MatMGe<T> m(3, 3), wideless(3, 2);
  Pivots pivots(3, 1), few(2, 1);
  VecOf<T> b(3), shorter(2);

  EXPECT_EQ(codeOf([&] { m.Solve(pivots, &shorter, nullptr); }), 2872);
  EXPECT_EQ(codeOf([&] { m.Solve(few, &b, nullptr); }), 2872);
  EXPECT_EQ(codeOf([&] { wideless.Solve(pivots, &b, nullptr); }), 2872);
}

template <class T>
class MatMGeAny : public ::testing::Test {};
TYPED_TEST_SUITE(MatMGeAny, MatrixScalars, ScalarNames);

TYPED_TEST(MatMGeAny, ProductsTestTheirOperandsInOrder) {
  using T = TypeParam;
  C_MatMGe<T> a(2, 3), b(2, 3), c;
  VecOf<T> x(3), y(2);
  OffCoreVec<T> off(3);
  SparseVec<T> sparse(3, {}, T(0));

  EXPECT_EQ(codeOf([&] { a.Mv(T(1), off, T(0), y, 'N'); }), 2870);
  EXPECT_EQ(codeOf([&] { a.Mv(T(1), x, T(0), off, 'N'); }), 2870);
  EXPECT_EQ(codeOf([&] { a.Mv(T(1), sparse, T(0), y, 'N'); }), 2873);
  EXPECT_EQ(codeOf([&] { a.Mv(T(1), x, T(0), sparse, 'N'); }), 2873);
  EXPECT_EQ(codeOf([&] { a.Mv(T(1), y, T(0), x, 'N'); }), 2872);
  EXPECT_EQ(codeOf([&] { a.Mv(T(1), x, T(0), y, 'T'); }), 2872);
  EXPECT_EQ(y.Dim(), 2);
  EXPECT_EQ(codeOf([&] { c.MM('N', 'N', T(1), a, b, T(0)); }), 2872);
  EXPECT_EQ(codeOf([&] { c.MM('T', 'T', T(1), a, b, T(0)); }), 2872);
  EXPECT_EQ(c.NbRow(), 0);
}

// As with vectors, the argument changes and the receiver does not.
TYPED_TEST(MatMGeAny, AxpyChangesItsArgument) {
  using T = TypeParam;
  C_MatMGe<T> a = countedMatrix<T>(2, 2), b(2, 2), gap = countedMatrix<T>(4, 2), wrong(2, 3);
  gap.ResizeAndKeepValues(2, 2);
  b.Init(scalar<T>(1));

  EXPECT_EQ(a.Axpy(b, scalar<T>(2)), 0);
  EXPECT_EQ(b(1, 1), scalar<T>(45));
  EXPECT_EQ(a(1, 1), scalar<T>(22));
  EXPECT_EQ(gap.Axpy(b, scalar<T>(1)), 0);
  EXPECT_EQ(b(1, 1), scalar<T>(67));
  EXPECT_EQ(b.Axpy(gap, scalar<T>(1)), 0);
  EXPECT_EQ(gap(1, 1), scalar<T>(89));
  EXPECT_EQ(gap.Adr()[2], scalar<T>(31, 2)); // not the gap
  EXPECT_EQ(codeOf([&] { a.Axpy(wrong, T(1)); }), 2872);
}

TYPED_TEST(MatMGeAny, ScalesButNotTheGap) {
  using T = TypeParam;
  C_MatMGe<T> a = countedMatrix<T>(2, 2), gap = countedMatrix<T>(3, 2);
  gap.ResizeAndKeepValues(2, 2);

  a *= scalar<T>(2);
  gap *= scalar<T>(2);
  gap *= scalar<T>(1);

  EXPECT_EQ(a(1, 0), scalar<T>(42, 2));
  EXPECT_EQ(gap(1, 0), scalar<T>(42, 2));
  EXPECT_EQ(gap.Adr()[2], scalar<T>(31, 2));
}

TYPED_TEST(MatMGeAny, NormsByHand) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 3);
  m(0, 0) = scalar<T>(1);
  m(0, 2) = scalar<T>(-5);
  m(1, 0) = scalar<T>(4);
  m(1, 1) = isComplex<T> ? scalar<T>(0, 3) : scalar<T>(3);

  EXPECT_DOUBLE_EQ(m.Nrm(E_NrmInf), 7);
  EXPECT_DOUBLE_EQ(m.Nrm(E_Nrm1), 5);
  EXPECT_EQ(codeOf([&] { m.Nrm(static_cast<E_NrmType>(7)); }), 3);
}

TYPED_TEST(MatMGeAny, AColumnHasTheNormsOfAVector) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 1);
  m(0, 0) = scalar<T>(3);
  m(1, 0) = scalar<T>(-4);

  EXPECT_DOUBLE_EQ(m.Nrm(E_NrmInf), 4);
  EXPECT_DOUBLE_EQ(m.Nrm(E_Nrm1), 7);
  EXPECT_DOUBLE_EQ(m.Nrm(E_Nrm2), 5);
}

TYPED_TEST(MatMGeAny, AnInstalledEstimateGivesTheSpectralNormUntilItIsTakenAway) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 2), none;
  const auto withoutHook = [&] {
    if constexpr (std::is_integral_v<T>) // nothing scales integers
      EXPECT_EQ(codeOf([&] { m.Nrm(E_Nrm2); }), 2871);
    else
      EXPECT_EQ(m.Nrm(E_Nrm2), 0);
  };

  withoutHook();
  EXPECT_EQ(none.Nrm(E_Nrm2), 0);
  Zarel::setMatrixNorm2Hook<T>([](C_Mat<T>& matrix) { return 10.0 * matrix.NbRow(); });
  EXPECT_EQ(m.Nrm(E_Nrm2), 20);
  Zarel::setMatrixNorm2Hook<T>(nullptr);
  withoutHook();
}

template <class T>
class MatMGeIntegers : public ::testing::Test {};
using Integers = ::testing::Types<short int, int>;
TYPED_TEST_SUITE(MatMGeIntegers, Integers, ScalarNames);

TYPED_TEST(MatMGeIntegers, ProductsEndTheProcess) {
  using T = TypeParam;
  C_MatMGe<T> a(2, 2), b(2, 2), c, none;
  VecOf<T> x(2), y, nothing;

  EXPECT_EXIT(a.Mv(T(1), x, T(0), y, 'N'), ::testing::ExitedWithCode(255),
              "^Error : gemv with integers not yet implemented\n$");
  EXPECT_EXIT(c.MM('N', 'N', T(1), a, b, T(0)), ::testing::ExitedWithCode(255),
              "^Error : gemm with integers not yet implemented\n$");
  EXPECT_EQ(none.Mv(T(1), nothing, T(0), y, 'N'), 0);
  EXPECT_EQ(c.MM('N', 'N', T(1), none, none, T(0)), 0);
}

TYPED_TEST(MatMGeIntegers, HaveNoFactors) {
  using T = TypeParam;
  C_MatMGe<T> a(2, 2);
  Pivots pivots(2);
  VecOf<T> b(2);

  EXPECT_EQ(codeOf([&] { a.Factor(pivots, false); }), 2871);
  EXPECT_EQ(codeOf([&] { a.Solve(pivots, &b, nullptr); }), 2871);
}

} // namespace
