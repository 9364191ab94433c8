// Products of a real matrix and complex vectors, and of a complex matrix and a real vector, against
// the plain double loop, with every option, stride and kind of factor.
#include <cmath>
#include <string>
#include <vector>

#include "numerics/precision.h"

using namespace precision;

namespace {

struct Reported {
  std::string name;
  int argument = 0;
} reported;

} // namespace

// The program's own error handler, as LAPACK allows it, takes the place of the one that prints.
extern "C" void xerbla_(const char* name, const int* argument, std::size_t length) {
  reported = {std::string(name, length), *argument};
}

namespace {

/** A product with strides that may run backwards; element i of a vector is at `at(...)`. */
struct Case {
  char trans;
  int m, n, lda, incx, incy;
  ComplexDouble alpha, beta;

  int lengthX() const { return trans == 'N' ? n : m; }
  int lengthY() const { return trans == 'N' ? m : n; }
  static std::size_t at(int i, int length, int stride) {
    return static_cast<std::size_t>(stride > 0 ? i * stride : (i - length + 1) * stride);
  }
};

template <class T>
std::vector<T> waves(int count, double phase) {
  std::vector<T> result;
  for (int i = 0; i < count; ++i)
    result.push_back(number<T>(std::sin(phase + i), std::cos(3 * phase - i)));
  return result;
}

template <class A, class X>
std::vector<ComplexDouble> plainLoop(const Case& c, const std::vector<A>& a,
                                     const std::vector<X>& x, std::vector<ComplexDouble> y) {
  for (int i = 0; i < c.lengthY(); ++i) {
    ComplexDouble sum = 0;
    for (int j = 0; j < c.lengthX(); ++j) {
      A element = c.trans == 'N' ? a[static_cast<std::size_t>(i + j * c.lda)]
                                 : a[static_cast<std::size_t>(j + i * c.lda)];
      if (c.trans == 'C') element = conjugate(element);
      sum += element * x[Case::at(j, c.lengthX(), c.incx)];
    }
    auto& out = y[Case::at(i, c.lengthY(), c.incy)];
    out = c.alpha * sum + (c.beta == 0. ? 0. : c.beta * out);
  }
  return y;
}

template <class A, class X, class Product>
void check(const Case& c, Product product) {
  auto a = waves<A>(c.lda * c.n, 0.5);
  auto x = waves<X>(std::abs(c.incx) * (c.lengthX() - 1) + 1, 1.5);
  auto y = waves<ComplexDouble>(std::abs(c.incy) * (c.lengthY() - 1) + 1, 2.5);
  const auto expected = plainLoop(c, a, x, y);
  auto alpha = c.alpha, beta = c.beta;
  char trans = c.trans;

  product(&trans, c.m, c.n, &alpha, a.data(), c.lda, x.data(), c.incx, &beta, y.data(), c.incy);

  for (std::size_t i = 0; i < y.size(); ++i)
    ASSERT_NEAR(std::abs(y[i] - expected[i]), 0, 1e-12 * c.lengthX())
        << c.trans << ' ' << c.m << 'x' << c.n << " incx " << c.incx << " incy " << c.incy
        << " alpha " << c.alpha << " beta " << c.beta << " at " << i;
}

template <class A, class X, class Product>
void checkAll(Product product) {
  const std::vector<ComplexDouble> factors{{1, 0}, {0, 0}, {-2, 0}, {0.5, 1.5}};
  for (char trans : {'N', 'T', 'C'})
    for (int m : {1, 3, 17, 300})
      for (int n : {1, 5, 270})
        for (int incx : {1, 2, -1, -3})
          for (int incy : {1, 3, -2})
            for (auto alpha : factors)
              for (auto beta : factors) {
                if (m * n > 1000 && (incx == 2 || incy == 3 || beta.real() == -2)) continue;
                check<A, X>({trans, m, n, m + 2, incx, incy, alpha, beta}, product);
                if (testing::Test::HasFatalFailure()) return;
              }
}

TEST(RealMatrixComplexVector, AgreesWithThePlainLoop) {
  checkAll<double, ComplexDouble>(ITF_dzgemv);
}
TEST(ComplexMatrixRealVector, AgreesWithThePlainLoop) {
  checkAll<ComplexDouble, double>(ITF_zdgemv);
}

TEST(RealMatrixComplexVector, MultipliesByHand) {
  std::vector<double> a{1, 3, 2, 4};
  std::vector<ComplexDouble> x{{1, 1}, {0, 2}}, y{{5, 5}, {5, 5}};
  ComplexDouble alpha{0, 1}, beta{0, 0};

  ITF_dzgemv(option("n"), 2, 2, &alpha, a.data(), 2, x.data(), 1, &beta, y.data(), 1);

  // A x = (1 + 5i, 3 + 11i), times i
  EXPECT_EQ(y, (std::vector<ComplexDouble>{{-5, 1}, {-11, 3}}));
}

TEST(ComplexMatrixRealVector, MultipliesByHand) {
  std::vector<ComplexDouble> a{{1, 1}, {3, 0}, {2, 0}, {4, -1}}, y{{1, 0}, {0, 1}};
  std::vector<double> x{1, 2};
  ComplexDouble alpha{1, 0}, beta{2, 0};

  ITF_zdgemv(option("N"), 2, 2, &alpha, a.data(), 2, x.data(), 1, &beta, y.data(), 1);

  EXPECT_EQ(y, (std::vector<ComplexDouble>{{7, 1}, {11, 0}}));
}

TEST(MixedProducts, AZeroBetaClearsWhatWasThere) {
  const double nan = std::nan("");
  std::vector<double> a{2};
  std::vector<ComplexDouble> za{{2, 0}}, x{{1, 1}}, y{{nan, nan}};
  std::vector<double> dx{3};
  ComplexDouble one{1, 0}, zero{0, 0};

  ITF_dzgemv(option("N"), 1, 1, &one, a.data(), 1, x.data(), 1, &zero, y.data(), 1);
  EXPECT_EQ(y[0], ComplexDouble(2, 2));

  y[0] = nan;
  ITF_zdgemv(option("C"), 1, 1, &one, za.data(), 1, dx.data(), 1, &zero, y.data(), 1);
  EXPECT_EQ(y[0], ComplexDouble(6, 0));
}

TEST(MixedProducts, NothingIsTouchedWhenThereIsNothingToMultiply) {
  std::vector<double> a{2};
  std::vector<ComplexDouble> x{{1, 1}}, y{{3, 4}};
  ComplexDouble one{1, 0}, zero{0, 0};

  ITF_dzgemv(option("N"), 0, 1, &one, a.data(), 1, x.data(), 1, &zero, y.data(), 1);
  ITF_dzgemv(option("N"), 1, 0, &one, a.data(), 1, x.data(), 1, &zero, y.data(), 1);
  ITF_dzgemv(option("N"), 1, 1, &zero, a.data(), 1, x.data(), 1, &one, y.data(), 1);

  EXPECT_EQ(y[0], ComplexDouble(3, 4));
}

TEST(MixedProducts, WrongArgumentsAreReportedByNameAndPlace) {
  std::vector<double> a{2};
  std::vector<ComplexDouble> x{{1, 1}}, y{{3, 4}};
  ComplexDouble one{1, 0};
  const auto call = [&](const char* trans, int m, int n, int lda, int incx, int incy) {
    reported = {};
    ITF_dzgemv(option(trans), m, n, &one, a.data(), lda, x.data(), incx, &one, y.data(), incy);
    return reported.argument;
  };

  EXPECT_EQ(call("X", 1, 1, 1, 1, 1), 1);
  EXPECT_EQ(reported.name, "DZGEMV");
  EXPECT_EQ(call("N", -1, 1, 1, 1, 1), 2);
  EXPECT_EQ(call("N", 1, -1, 1, 1, 1), 3);
  EXPECT_EQ(call("N", 1, 1, 0, 1, 1), 6);
  EXPECT_EQ(call("N", 1, 1, 1, 0, 1), 8);
  EXPECT_EQ(call("N", 1, 1, 1, 1, 0), 11);
  EXPECT_EQ(y[0], ComplexDouble(3, 4));

  ITF_zdgemv(option("?"), 1, 1, &one, x.data(), 1, a.data(), 1, &one, y.data(), 1);
  EXPECT_EQ(reported.name, "ZDGEMV");
}

} // namespace
