// The arithmetic of vectors in core.
#include <cmath>

#include "containers/OffCore.h"
#include "containers/support.h"

namespace {

template <class C>
class VecArith : public ::testing::Test {};
TYPED_TEST_SUITE(VecArith, StorageCases, ScalarNames);

#define ZAREL_TYPES                                                                                \
  using T [[maybe_unused]] = typename TypeParam::T;                                                \
  using I [[maybe_unused]] = typename TypeParam::I;                                                \
  using V = typename TypeParam::Vec

TYPED_TEST(VecArith, AxpyChangesItsArgumentAndNotTheReceiver) {
  ZAREL_TYPES;
  V a(3, scalar<T>(1, 1)), b(3, scalar<T>(10));

  EXPECT_EQ(a.Axpy(b, scalar<T>(2)), 0);

  EXPECT_EQ(a[1], scalar<T>(1, 1));
  for (I i = 0; i < 3; ++i)
    EXPECT_EQ(b[i], scalar<T>(12, 2));
}

TYPED_TEST(VecArith, AxpyTestsDimensionsThenFullness) {
  ZAREL_TYPES;
  V a(3), b(2), none, nothing;

  EXPECT_EQ(codeOf([&] { a.Axpy(b, T(1)); }), 2872);
  EXPECT_EQ(none.Axpy(nothing, T(1)), 0);
  if constexpr (std::is_same_v<I, int>) {
    SparseVec<T> sparse(3, {}, T(0)), small(2, {}, T(0));
    EXPECT_EQ(codeOf([&] { sparse.Axpy(a, T(1)); }), 2873);
    EXPECT_EQ(codeOf([&] { a.Axpy(sparse, T(1)); }), 2873);
    EXPECT_EQ(codeOf([&] { a.Axpy(small, T(1)); }), 2872);
  }
}

TYPED_TEST(VecArith, AddsAndSubtractsInPlace) {
  ZAREL_TYPES;
  V a(2, scalar<T>(5, 3)), b(2, scalar<T>(2, 1));

  a += b;
  EXPECT_EQ(a[0], scalar<T>(7, 4));
  EXPECT_EQ(b[0], scalar<T>(2, 1));
  a -= b;
  EXPECT_EQ(a[1], scalar<T>(5, 3));
  a += scalar<T>(1, 1);
  EXPECT_EQ(a[1], scalar<T>(6, 4));
  V shorter(1);
  EXPECT_EQ(codeOf([&] { a += shorter; }), 2872);
}

TYPED_TEST(VecArith, AddingANumberNeedsValuesInMemory) {
  ZAREL_TYPES;
  V empty, negative(-1);

  empty += scalar<T>(3);
  EXPECT_EQ(codeOf([&] { negative += scalar<T>(3); }), 38);
}

TYPED_TEST(VecArith, DotProductConjugatesItsReceiver) {
  ZAREL_TYPES;
  V a(3), b(3);
  T sum(0);
  for (int i = 0; i < 3; ++i) {
    a[i] = scalar<T>(i + 1, 1);
    b[i] = scalar<T>(2, i);
    sum = static_cast<T>(sum + conjugate(a[i]) * b[i]);
  }

  EXPECT_EQ(a * b, sum);
  EXPECT_EQ(b * a, conjugate(sum));
  EXPECT_EQ(a * b != b * a, isComplex<T>);
}

TYPED_TEST(VecArith, DotProductOfDifferentDimensionsThrows2872) {
  ZAREL_TYPES;
  V a(3), b(4), none, nothing;

  EXPECT_EQ(codeOf([&] { a* b; }), 2872);
  EXPECT_EQ(none * nothing, T(0));
}

TYPED_TEST(VecArith, ScalesInPlace) {
  ZAREL_TYPES;
  V a(3, scalar<T>(2, 1));

  a *= scalar<T>(3);

  for (I i = 0; i < 3; ++i)
    EXPECT_EQ(a[i], scalar<T>(6, 3));
}

TYPED_TEST(VecArith, EqualityComparesDimensionsThenValues) {
  ZAREL_TYPES;
  V a(2, scalar<T>(1)), b(2, scalar<T>(1)), c(3), none, nothing;

  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a == c);
  EXPECT_FALSE(a == none);
  EXPECT_EQ(codeOf([&] { EXPECT_FALSE(none == nothing); }), 38);
  b[1] = scalar<T>(2);
  EXPECT_FALSE(a == b);
  if constexpr (!std::is_integral_v<T>) {
    a[0] = scalar<T>(std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(a == a);
  }
}

TYPED_TEST(VecArith, HadamardProduct) {
  ZAREL_TYPES;
  V x(2), y(2), z;
  x[0] = scalar<T>(2, 1);
  x[1] = scalar<T>(3);
  y[0] = scalar<T>(4, 1);
  y[1] = scalar<T>(5);

  EXPECT_EQ(z.Had(x, y), 0);

  EXPECT_EQ(z.Dim(), 2);
  EXPECT_EQ(z[0], isComplex<T> ? scalar<T>(7, 6) : scalar<T>(8));
  EXPECT_EQ(z[1], scalar<T>(15));
}

TYPED_TEST(VecArith, HadamardTestsTheFactorsThenResizesThenTestsFullness) {
  ZAREL_TYPES;
  V x(2), y(3), z(1), none, nothing;

  EXPECT_EQ(codeOf([&] { z.Had(x, y); }), 2872);
  EXPECT_EQ(z.Dim(), 1);
  EXPECT_EQ(z.Had(none, nothing), 0);
  EXPECT_EQ(z.Dim(), 0);
  if constexpr (std::is_same_v<I, int>) {
    SparseVec<T> sparse(2, {}, T(0));
    EXPECT_EQ(codeOf([&] { z.Had(x, sparse); }), 2873);
    EXPECT_EQ(z.Dim(), 2);
  }
}

TYPED_TEST(VecArith, DiffIsTheModulusOfTheSumOfSquares) {
  ZAREL_TYPES;
  V a(3), b(3);
  a[0] = scalar<T>(3);
  b[1] = isComplex<T> ? scalar<T>(0, 4) : scalar<T>(4);
  double result = -1;

  EXPECT_EQ(a.Diff(b, result), 0);

  // Squares are not conjugated: (0 - 4i)^2 is -16.
  EXPECT_DOUBLE_EQ(result, isComplex<T> ? 7 : 25);
}

TYPED_TEST(VecArith, DiffWithItselfLooksAtNothing) {
  ZAREL_TYPES;
  V a(-5);
  double result = -1;

  EXPECT_EQ(a.Diff(a, result), 0);

  EXPECT_EQ(result, 0);
}

TYPED_TEST(VecArith, DiffTestsDimensionsThenAccess) {
  ZAREL_TYPES;
  V a(2), b(3), none, nothing;
  double result = -1;

  EXPECT_EQ(codeOf([&] { a.Diff(b, result); }), 2872);
  EXPECT_EQ(codeOf([&] { none.Diff(nothing, result); }), 14014);
  if constexpr (std::is_same_v<I, int>) {
    SparseVec<T> sparse(2, {}, T(0));
    EXPECT_EQ(codeOf([&] { a.Diff(sparse, result); }), 14014);
  }
  EXPECT_EQ(result, -1);
}

TYPED_TEST(VecArith, NormsOfTheTriple345) {
  ZAREL_TYPES;
  V v(3);
  v[0] = scalar<T>(3);
  v[2] = isComplex<T>
             ? scalar<T>(0, 4)
             : static_cast<T>(std::is_same_v<T, char> && std::is_unsigned_v<char> ? 4 : -4);

  EXPECT_DOUBLE_EQ(v.Nrm(E_NrmInf), 4);
  EXPECT_DOUBLE_EQ(v.Nrm(E_Nrm1), 7);
  EXPECT_DOUBLE_EQ(v.Nrm(E_Nrm2), 5);
  EXPECT_DOUBLE_EQ(v.NrmInf(), 4);
  EXPECT_DOUBLE_EQ(v.Nrm2(), 5);
}

TYPED_TEST(VecArith, IntegerNormsDoNotWrap) {
  ZAREL_TYPES;
  if constexpr (std::is_integral_v<T>) {
    V v(4, std::numeric_limits<T>::max());
    const double largest = static_cast<double>(std::numeric_limits<T>::max());

    EXPECT_DOUBLE_EQ(v.Nrm(E_Nrm2), 2 * largest);
    EXPECT_DOUBLE_EQ(v.Nrm(E_Nrm1), 4 * largest);
    v[2] = std::numeric_limits<T>::min();
    EXPECT_DOUBLE_EQ(v.Nrm(E_NrmInf), std::abs(static_cast<double>(v[2])) > largest
                                          ? std::abs(static_cast<double>(v[2]))
                                          : largest);
  }
}

TYPED_TEST(VecArith, NormFailures) {
  ZAREL_TYPES;
  V v(2, scalar<T>(1)), none, negative(-2);

  EXPECT_EQ(none.Nrm(E_Nrm2), 0);
  EXPECT_EQ(none.Nrm(static_cast<E_NrmType>(3)), 0);
  EXPECT_EQ(codeOf([&] { negative.Nrm(E_Nrm2); }), 38);
  EXPECT_EQ(codeOf([&] { v.Nrm(static_cast<E_NrmType>(3)); }), 3);
}

TYPED_TEST(VecArith, NormalizeDividesAndTellsTheNorm) {
  ZAREL_TYPES;
  V v(2);
  v[0] = isComplex<T> ? scalar<T>(0, 3) : scalar<T>(3);
  v[1] = scalar<T>(4);
  double norm = -1;

  EXPECT_EQ(v.Normalize(E_Nrm2, &norm), 0);

  EXPECT_DOUBLE_EQ(norm, 5);
  if constexpr (std::is_integral_v<T>) {
    EXPECT_EQ(v.Sum(0, -1), T(0)); // the reciprocal of 5 is 0 among integers
  } else {
    expectClose(v[0], isComplex<T> ? std::complex<double>(0, 0.6) : 0.6);
    expectClose(v[1], 0.8);
  }
}

TYPED_TEST(VecArith, NormalizeOfZeroLeavesItAndStillTellsTheNorm) {
  ZAREL_TYPES;
  V v(2);
  double norm = -1;

  EXPECT_EQ(v.Normalize(E_Nrm1, &norm), 0);
  EXPECT_EQ(v.Normalize(E_NrmInf, nullptr), 0);

  EXPECT_EQ(norm, 0);
  EXPECT_EQ(v.Sum(0, -1), T(0));
}

TYPED_TEST(VecArith, ExtremesAreCountedFromTheFirstIndex) {
  ZAREL_TYPES;
  V v(7, scalar<T>(5));
  v[5] = scalar<T>(9);
  v[4] = scalar<T>(1);

  EXPECT_EQ(v.IMax(0, -1), 5);
  EXPECT_EQ(v.IMax(3, -1), 2);
  EXPECT_EQ(v.IMax(0, 4), 0);
  EXPECT_EQ(v.IMin(0, -1), 4);
  EXPECT_EQ(v.IMin(3, 6), 1);
  EXPECT_EQ(v.IMin(5, -1), 1);
  EXPECT_EQ(v.IMax(3, 100), 2);
}

TYPED_TEST(VecArith, FirstOfEqualExtremesWinsAndSignsDoNotCount) {
  ZAREL_TYPES;
  V v(4, scalar<T>(2));
  EXPECT_EQ(v.IMax(1, -1), 0);
  EXPECT_EQ(v.IMin(1, -1), 0);
  if constexpr (std::is_signed_v<T> || isComplex<T>) {
    v[2] = scalar<T>(-7, 1);
    v[3] = scalar<T>(0, -1);
    EXPECT_EQ(v.IMax(0, -1), 2);
    EXPECT_EQ(v.IMin(0, -1), 3);
  }
}

TYPED_TEST(VecArith, EmptyRangesHaveNoExtreme) {
  ZAREL_TYPES;
  V v(3), none;

  EXPECT_EQ(none.IMax(0, -1), -1);
  EXPECT_EQ(none.IMin(0, -1), -1);
  EXPECT_EQ(v.IMax(2, 1), -1);
  EXPECT_EQ(v.IMin(2, 1), -1);
  EXPECT_EQ(v.IMax(3, -1), -1);
  EXPECT_EQ(v.IMin(3, -1), -1);
}

// Complex searches compare |re| + |im|, the norm then takes the modulus of what they found.
TEST(VecArithComplex, InfinityNormIsTheModulusAtTheIndexOfTheSearch) {
  const auto v = vecOf<std::complex<double>>({{5, 0}, {4, 3.5}, {3, 4.6}});

  EXPECT_EQ(const_cast<VecOf<std::complex<double>>&>(v).IMax(0, -1), 2);
  EXPECT_DOUBLE_EQ(const_cast<VecOf<std::complex<double>>&>(v).Nrm(E_NrmInf), std::hypot(3, 4.6));
  auto w = vecOf<std::complex<double>>({{5, 0}, {3, 3}});
  EXPECT_EQ(w.IMax(0, -1), 1);
  EXPECT_DOUBLE_EQ(w.Nrm(E_NrmInf), std::sqrt(18.0)); // though 5 is larger
}

TYPED_TEST(VecArith, LongVectorsAgreeWithPlainLoops) {
  ZAREL_TYPES;
  if constexpr (!std::is_integral_v<T>) {
    const int n = 10007;
    V a(n), b(n);
    Noise noise;
    std::complex<double> dot = 0;
    double sum = 0, squares = 0;
    std::vector<std::complex<double>> updated;
    for (int i = 0; i < n; ++i) {
      a[i] = noise.value<T>();
      b[i] = noise.value<T>();
      dot += std::conj(wide(a[i])) * wide(b[i]);
      sum += std::abs(wide(a[i]));
      squares += std::norm(wide(a[i]));
      updated.push_back(wide(b[i]) + wide(scalar<T>(0.5, 0.25)) * wide(a[i]));
    }

    expectClose(a * b, dot, std::sqrt(n), 64);
    expectClose(static_cast<T>(a.Nrm(E_Nrm1)), sum, n, 64);
    expectClose(static_cast<T>(a.Nrm2()), std::sqrt(squares), std::sqrt(n), 64);
    a.Axpy(b, scalar<T>(0.5, 0.25));
    for (int i = 0; i < n; ++i)
      expectClose(b[i], updated[static_cast<std::size_t>(i)], 2);
  }
}

} // namespace
