// Vectors: every operation in every precision that the library itself uses, on cases done by hand.
#include <cmath>
#include <vector>

#include "numerics/precision.h"

using namespace precision;

namespace {

template <class T>
class Blas1 : public testing::Test {};
TYPED_TEST_SUITE(Blas1, All);

template <class T>
class ComplexBlas1 : public testing::Test {};
TYPED_TEST_SUITE(ComplexBlas1, Complexes);

/** The complex dot product by name: `flag` as in ITF_zarelzdot. */
template <class T>
T zarelDot(int n, T* x, T* y, int flag) {
  T result;
  (std::is_same_v<T, ComplexFloat> ? ITF_zarelcdot : ITF_zarelzdot)(n, x, y, &result, flag);
  return result;
}

ComplexFloat value(ITF_Complex c) {
  return {c.re, c.im};
}

TYPED_TEST(Blas1, AxpyAddsAMultiple) {
  using T = TypeParam;
  std::vector<T> x{number<T>(1, 1), number<T>(2), number<T>(-3)};
  std::vector<T> y{number<T>(10), number<T>(20), number<T>(30, 5)};
  T alpha = number<T>(2, 1);

  ITF(T, axpy)(3, input(alpha), x.data(), 1, y.data(), 1);

  // (2 + i)(1 + i) = 1 + 3i, (2 + i) 2 = 4 + 2i, (2 + i)(-3) = -6 - 3i
  EXPECT_EQ(y[0], isComplex<T> ? number<T>(11, 3) : number<T>(12));
  EXPECT_EQ(y[1], number<T>(24, 2));
  EXPECT_EQ(y[2], number<T>(24, 2));
}

TYPED_TEST(Blas1, AxpyHonoursStrides) {
  using T = TypeParam;
  std::vector<T> x{number<T>(1), number<T>(99), number<T>(2)};
  std::vector<T> y{number<T>(0), number<T>(0)};
  T alpha = number<T>(1);

  ITF(T, axpy)(2, input(alpha), x.data(), 2, y.data(), -1);

  EXPECT_EQ(y[0], number<T>(2));
  EXPECT_EQ(y[1], number<T>(1));
}

TYPED_TEST(Blas1, CopyTakesEveryOther) {
  using T = TypeParam;
  std::vector<T> x{number<T>(1, 5), number<T>(2), number<T>(3, 6), number<T>(4)};
  std::vector<T> y(3, number<T>(-1));

  ITF(T, copy)(2, x.data(), 2, y.data(), 1);

  EXPECT_EQ(y, (std::vector<T>{number<T>(1, 5), number<T>(3, 6), number<T>(-1)}));
}

TYPED_TEST(Blas1, ScalMultiplies) {
  using T = TypeParam;
  std::vector<T> x{number<T>(1, 2), number<T>(3)};
  T alpha = number<T>(2, -1);

  ITF(T, scal)(2, input(alpha), x.data(), 1);

  // (2 - i)(1 + 2i) = 4 + 3i
  EXPECT_EQ(x[0], isComplex<T> ? number<T>(4, 3) : number<T>(2));
  EXPECT_EQ(x[1], number<T>(6, -3));
}

TYPED_TEST(Blas1, IndexOfLargestCountsFromOne) {
  using T = TypeParam;
  const auto search = pick<T>(ITF_isamax, ITF_idamax, ITF_icamax, ITF_izamax);
  std::vector<T> x{number<T>(1), number<T>(-4), number<T>(4), number<T>(2)};

  EXPECT_EQ(search(4, x.data(), 1), 2);
  EXPECT_EQ(search(1, x.data(), 1), 1);
  EXPECT_EQ(search(2, x.data(), 2), 2);
  EXPECT_EQ(search(0, x.data(), 1), 0);
  EXPECT_EQ(search(4, x.data(), 0), 0);
}

TYPED_TEST(Blas1, IndexOfSmallestCountsFromOneAndTakesTheFirst) {
  using T = TypeParam;
  const auto search = pick<T>(ITF_isamin, ITF_idamin, ITF_icamin, ITF_izamin);
  std::vector<T> x{number<T>(3), number<T>(-1), number<T>(1), number<T>(2)};

  EXPECT_EQ(search(4, x.data(), 1), 2);
  EXPECT_EQ(search(1, x.data(), 1), 1);
  EXPECT_EQ(search(2, x.data(), 2), 2);
  EXPECT_EQ(search(0, x.data(), 1), 0);
  EXPECT_EQ(search(-1, x.data(), 1), 0);
  EXPECT_EQ(search(4, x.data(), 0), 0);
  EXPECT_EQ(search(4, x.data(), -1), 0);
}

TYPED_TEST(Blas1, IndexOfSmallestIsFoundAtEveryPlaceOfEveryLength) {
  using T = TypeParam;
  const auto search = pick<T>(ITF_isamin, ITF_idamin, ITF_icamin, ITF_izamin);
  for (int stride : {1, 3})
    for (int n = 1; n <= 70; ++n)
      for (int place = 0; place < n; ++place) {
        std::vector<T> x(static_cast<std::size_t>(n * stride), number<T>(0));
        for (int i = 0; i < n; ++i)
          x[static_cast<std::size_t>(i * stride)] = number<T>(i % 2 ? 7 : -7, i % 3);
        x[static_cast<std::size_t>(place * stride)] = number<T>(-0.5, 0.25);
        if (place + 1 < n) x[static_cast<std::size_t>((n - 1) * stride)] = number<T>(0.5, -0.25);
        ASSERT_EQ(search(n, x.data(), stride), place + 1) << "n " << n << " stride " << stride;
      }
}

TYPED_TEST(Blas1, NanWinsNoSearchForTheSmallest) {
  using T = TypeParam;
  const auto search = pick<T>(ITF_isamin, ITF_idamin, ITF_icamin, ITF_izamin);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<T> late(40, number<T>(5));
  late[3] = number<T>(nan);
  late[20] = number<T>(1);
  std::vector<T> first(40, number<T>(5));
  first[0] = number<T>(nan);

  EXPECT_EQ(search(40, late.data(), 1), 21);
  EXPECT_EQ(search(40, first.data(), 1), 1);
}

TEST(ComplexModulus, IsTheSumOfBothPartsInTheSearches) {
  // |3| + |4| = 7 beats 6, though the modulus 5 does not.
  std::vector<ComplexDouble> x{{6, 0}, {3, 4}, {0, 6.5}};

  EXPECT_EQ(ITF_izamax(3, x.data(), 1), 2);
  EXPECT_EQ(ITF_izamin(3, x.data(), 1), 1);
}

TEST(RealDot, MultipliesAndAdds) {
  std::vector<float> xs{1, 2, 3}, ys{4, -5, 6};
  std::vector<double> xd{1, 0, 2, 0, 3}, yd{4, -5, 6};

  EXPECT_EQ(ITF_sdot(3, xs.data(), 1, ys.data(), 1), 12.f);
  EXPECT_EQ(ITF_ddot(3, xd.data(), 2, yd.data(), 1), 12.);
  EXPECT_EQ(ITF_ddot(0, xd.data(), 1, yd.data(), 1), 0.);
}

TYPED_TEST(ComplexBlas1, ZarelDotConjugatesItsFirstVectorByFlag) {
  using T = TypeParam;
  std::vector<T> x{number<T>(1, 2), number<T>(0, 1)}, y{number<T>(3, -1), number<T>(2, 2)};

  // (1+2i)(3-i) = 5+5i, i(2+2i) = -2+2i; (1-2i)(3-i) = 1-7i, -i(2+2i) = 2-2i
  EXPECT_EQ(zarelDot(2, x.data(), y.data(), 0), number<T>(3, 7));
  EXPECT_EQ(zarelDot(2, x.data(), y.data(), 1), number<T>(3, -9));
  EXPECT_EQ(zarelDot(2, x.data(), y.data(), -5), number<T>(3, -9));
  EXPECT_EQ(zarelDot(0, x.data(), y.data(), 0), number<T>(0));
}

TEST(ComplexDot, OfDoublesIgnoresStridesAndGivesTheAddressBack) {
  std::vector<ComplexDouble> x{{1, 2}, {0, 1}, {9, 9}, {9, 9}}, y{{3, -1}, {2, 2}, {8, 8}, {8, 8}};
  ComplexDouble plain, conjugated;

  EXPECT_EQ(ITF_zdotu(&plain, 2, x.data(), 2, y.data(), -1), &plain);
  EXPECT_EQ(ITF_zdotc(&conjugated, 2, x.data(), 2, y.data(), 2), &conjugated);

  EXPECT_EQ(plain, ComplexDouble(3, 7));
  EXPECT_EQ(conjugated, ComplexDouble(3, -9));
}

TEST(ComplexDot, OfFloatsIgnoresStridesAndGivesTheValueBack) {
  std::vector<ComplexFloat> x{{1, 2}, {0, 1}, {9, 9}, {9, 9}}, y{{3, -1}, {2, 2}, {8, 8}, {8, 8}};

  EXPECT_EQ(value(ITF_cdotu(2, x.data(), 2, y.data(), 0)), ComplexFloat(3, 7));
  EXPECT_EQ(value(ITF_cdotc(2, x.data(), 2, y.data(), 2)), ComplexFloat(3, -9));
}

TEST(Norms, AreEuclideanWithoutOverflow) {
  std::vector<double> x{3e200, 4e200};
  std::vector<float> xs{3, 0, 4};
  std::vector<ComplexDouble> z{{1, 2}, {2, 4}};
  std::vector<ComplexFloat> c{{1, 2}, {2, 4}};

  EXPECT_DOUBLE_EQ(ITF_dnrm2(2, x.data(), 1), 5e200);
  EXPECT_FLOAT_EQ(ITF_snrm2(2, xs.data(), 2), 5.f);
  EXPECT_DOUBLE_EQ(ITF_dznrm2(2, z.data(), 1), 5.);
  EXPECT_FLOAT_EQ(ITF_scnrm2(2, c.data(), 1), 5.f);
}

TEST(Sums, AddModuli) {
  std::vector<float> s{1, -2, 3};
  std::vector<double> d{1, -2, 3};
  std::vector<ComplexFloat> c{{1, -2}, {-3, 4}};
  std::vector<ComplexDouble> z{{1, -2}, {-3, 4}};

  EXPECT_EQ(ITF_sasum(3, s.data(), 1), 6.f);
  EXPECT_EQ(ITF_dasum(3, d.data(), 1), 6.);
  EXPECT_EQ(ITF_scasum(2, c.data(), 1), 10.f);
  EXPECT_EQ(ITF_dzasum(2, z.data(), 1), 10.);
}

TEST(Rscl, DividesByARealNumberEvenATinyOne) {
  std::vector<float> s{4, 6};
  std::vector<double> d{1e-310, 2e-310};
  std::vector<ComplexFloat> c{{4, 6}, {2, -8}};
  std::vector<ComplexDouble> z{{4, 6}, {2, -8}};

  ITF_srscl(2, 2.f, s.data(), 1);
  ITF_drscl(2, 1e-310, d.data(), 1);
  ITF_csrscl(2, 2.f, c.data(), 1);
  ITF_zdrscl(2, 2., z.data(), 1);

  EXPECT_EQ(s, (std::vector<float>{2, 3}));
  EXPECT_NEAR(d[0], 1, 1e-12);
  EXPECT_NEAR(d[1], 2, 1e-12);
  EXPECT_EQ(c, (std::vector<ComplexFloat>{{2, 3}, {1, -4}}));
  EXPECT_EQ(z, (std::vector<ComplexDouble>{{2, 3}, {1, -4}}));
}

TEST(RealScal, OfComplexVectorsTakesTheFactorByValue) {
  std::vector<ComplexFloat> c{{4, 6}};
  std::vector<ComplexDouble> z{{4, 6}};

  ITF_csscal(1, 0.5f, c.data(), 1);
  ITF_zdscal(1, 0.5, z.data(), 1);

  EXPECT_EQ(c[0], ComplexFloat(2, 3));
  EXPECT_EQ(z[0], ComplexDouble(2, 3));
}

} // namespace
