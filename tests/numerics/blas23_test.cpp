// Products of matrices and vectors, full and packed, on cases done by hand and, for blocks that
// make OpenBLAS use its large kernels, against the plain triple loop.
#include <random>
#include <vector>

#include "numerics/precision.h"

using namespace precision;

namespace {

template <class T>
class Products : public testing::Test {};
TYPED_TEST_SUITE(Products, All);

template <class T>
class PackedProducts : public testing::Test {};
TYPED_TEST_SUITE(PackedProducts, Doubles);

template <class T>
std::vector<T> randomNumbers(int count, unsigned seed) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<T> numbers;
  for (int i = 0; i < count; ++i)
    numbers.push_back(number<T>(uniform(engine), uniform(engine)));
  return numbers;
}

// A = [1 2; i 4] in the complex types, [1 2; 0 4] in the real ones, with a leading dimension of 3.
template <class T>
std::vector<T> smallMatrix() {
  return {number<T>(1), number<T>(0, 1), number<T>(77), number<T>(2), number<T>(4), number<T>(77)};
}

TYPED_TEST(Products, GemvRespectsLeadingDimensionAndBeta) {
  using T = TypeParam;
  auto a = smallMatrix<T>();
  std::vector<T> x{number<T>(1), number<T>(10)}, y{number<T>(100), number<T>(200)};
  T alpha = number<T>(2), beta = number<T>(0.5);

  ITF(T, gemv)(option("N"), 2, 2, input(alpha), a.data(), 3, x.data(), 1, input(beta), y.data(), 1);

  EXPECT_EQ(y[0], number<T>(92));
  EXPECT_EQ(y[1], number<T>(180, 2));
}

TYPED_TEST(Products, GemvConjugatesWithOptionC) {
  using T = TypeParam;
  auto a = smallMatrix<T>();
  std::vector<T> x{number<T>(1), number<T>(10)}, y(2);
  T alpha = number<T>(1), beta = number<T>(0);

  ITF(T, gemv)
  (option("Conjugate"), 2, 2, input(alpha), a.data(), 3, x.data(), 1, input(beta), y.data(), 1);

  EXPECT_EQ(y[0], number<T>(1, -10));
  EXPECT_EQ(y[1], number<T>(42));
}

TYPED_TEST(Products, GemmMultipliesByHand) {
  using T = TypeParam;
  auto a = smallMatrix<T>();
  std::vector<T> b{number<T>(1), number<T>(1), number<T>(0, 1), number<T>(2)}, c(4, number<T>(1));
  T alpha = number<T>(1), beta = number<T>(3);

  ITF(T, gemm)
  (option("N"), option("T"), 2, 2, 2, input(alpha), a.data(), 3, b.data(), 2, input(beta), c.data(),
   2);

  // B transposed is [1 1; i 2], [1 1; 0 2] when real.
  EXPECT_EQ(c[0], number<T>(4, 2));
  EXPECT_EQ(c[1], isComplex<T> ? number<T>(3, 5) : number<T>(3));
  EXPECT_EQ(c[2], number<T>(8));
  EXPECT_EQ(c[3], number<T>(11, 1));
}

TYPED_TEST(Products, GemmAgreesWithTheTripleLoopInEverySize) {
  using T = TypeParam;
  for (int n : {1, 2, 3, 5, 8, 13, 17, 31, 33, 64, 97, 130}) {
    const int m = n + 1, k = n + 2;
    auto a = randomNumbers<T>(m * k, 1), b = randomNumbers<T>(k * n, 2);
    std::vector<T> c(static_cast<std::size_t>(m * n));
    T one = number<T>(1), zero = number<T>(0);

    ITF(T, gemm)
    (option("N"), option("N"), m, n, k, input(one), a.data(), m, b.data(), k, input(zero), c.data(),
     m);

    for (int j = 0; j < n; ++j)
      for (int i = 0; i < m; ++i) {
        ComplexDouble sum = 0;
        for (int l = 0; l < k; ++l)
          sum += ComplexDouble(a[static_cast<std::size_t>(i + l * m)]) *
                 ComplexDouble(b[static_cast<std::size_t>(l + j * k)]);
        const ComplexDouble found(c[static_cast<std::size_t>(i + j * m)]);
        ASSERT_NEAR(std::abs(found - sum), 0, tolerance<T>(k)) << i << ' ' << j << " of " << n;
      }
  }
}

// The packed upper triangle of the symmetric S = [1 2 4; 2 3 5; 4 5 6] (not Hermitian when
// complex).
template <class T>
std::vector<T> packedUpper() {
  return {number<T>(1), number<T>(2), number<T>(3), number<T>(4), number<T>(5), number<T>(6, 1)};
}

TYPED_TEST(PackedProducts, SpmvIsSymmetricNotHermitian) {
  using T = TypeParam;
  auto ap = packedUpper<T>();
  std::vector<T> x{number<T>(1), number<T>(0, 1), number<T>(1)}, y(3, number<T>(1));
  T alpha = number<T>(1), beta = number<T>(2);

  pick<T>(ITF_dspmv, ITF_dspmv, ITF_zspmv, ITF_zspmv)(option("U"), 3, input(alpha), ap.data(),
                                                      x.data(), 1, input(beta), y.data(), 1);

  EXPECT_EQ(y[0], number<T>(7, 2));
  EXPECT_EQ(y[1], number<T>(9, 3));
  EXPECT_EQ(y[2], number<T>(12, 6));
}

TYPED_TEST(PackedProducts, TpmvMultipliesInPlaceByBothTriangles) {
  using T = TypeParam;
  const auto tpmv = pick<T>(ITF_dtpmv, ITF_dtpmv, ITF_ztpmv, ITF_ztpmv);
  auto ap = packedUpper<T>();
  std::vector<T> upper{number<T>(1), number<T>(1), number<T>(1)}, lower = upper, unit = upper;

  tpmv(option("U"), option("N"), option("N"), 3, ap.data(), upper.data(), 1);
  tpmv(option("L"), option("T"), option("N"), 3, ap.data(), lower.data(), 1);
  tpmv(option("U"), option("N"), option("U"), 3, ap.data(), unit.data(), 1);

  // Upper: [1 2 4; 0 3 5; 0 0 6+i]. The same numbers as a lower triangle: columns (1 2 3), (4 5),
  // 6+i.
  EXPECT_EQ(upper, (std::vector<T>{number<T>(7), number<T>(8), number<T>(6, 1)}));
  EXPECT_EQ(lower, (std::vector<T>{number<T>(6), number<T>(9), number<T>(6, 1)}));
  EXPECT_EQ(unit, (std::vector<T>{number<T>(7), number<T>(6), number<T>(1)}));
}

TYPED_TEST(Products, TrmmTakesFourOptions) {
  using T = TypeParam;
  auto a = smallMatrix<T>();
  std::vector<T> b{number<T>(1), number<T>(1)};
  T alpha = number<T>(1);

  ITF(T, trmm)
  (option("L"), option("U"), option("T"), option("N"), 2, 1, input(alpha), a.data(), 3, b.data(),
   2);

  // The transposed upper triangle is [1 0; 2 4].
  EXPECT_EQ(b[0], number<T>(1));
  EXPECT_EQ(b[1], number<T>(6));
}

} // namespace
