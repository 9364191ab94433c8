// Least squares and singular values, on matrices whose answers are known.
#include <cmath>
#include <vector>

#include "numerics/precision.h"

using namespace precision;

namespace {

template <class T>
class LeastSquares : public testing::Test {};
TYPED_TEST_SUITE(LeastSquares, All);

template <class T>
class SingularValues : public testing::Test {};
TYPED_TEST_SUITE(SingularValues, All);

/** gels with the workspace it asks for. */
template <class T>
int solve(const char* trans, int m, int n, std::vector<T>& a, std::vector<T>& b) {
  int info = -1;
  T wanted{};
  ITF(T, gels)(option(trans), m, n, 1, a.data(), m, b.data(), std::max(m, n), &wanted, -1, &info);
  std::vector<T> work(static_cast<std::size_t>(std::real(wanted)));
  ITF(T, gels)
  (option(trans), m, n, 1, a.data(), m, b.data(), std::max(m, n), work.data(),
   static_cast<int>(work.size()), &info);
  return info;
}

TYPED_TEST(LeastSquares, FitsALineThroughThreePoints) {
  using T = TypeParam;
  // Heights 1, 2, 4 at 0, 1, 2: the line 5/6 + 3/2 t; the misfits 1/6, -1/3, 1/6 have the square
  // sum 1/6.
  std::vector<T> a(3, number<T>(1)), b{number<T>(1), number<T>(2), number<T>(4)};
  for (double t : {0., 1., 2.})
    a.push_back(number<T>(t));

  EXPECT_EQ(solve("N", 3, 2, a, b), 0);

  expectNear(b[0], number<T>(5. / 6), 4);
  expectNear(b[1], number<T>(1.5), 4);
  EXPECT_NEAR(std::norm(b[2]), 1. / 6, tolerance<T>(4));
}

TYPED_TEST(LeastSquares, TransposedFindsTheShortestSolution) {
  using T = TypeParam;
  // A = (1, c)^T with c = i or 1: conj-transposed, x1 + conj(c) x2 = 4 has the shortest x = (2,
  // 2c).
  const T c = isComplex<T> ? number<T>(0, 1) : number<T>(1);
  std::vector<T> a{number<T>(1), c}, b{number<T>(4), number<T>(0)};

  EXPECT_EQ(solve(isComplex<T> ? "C" : "T", 2, 1, a, b), 0);

  expectNear(b[0], number<T>(2), 4);
  expectNear(b[1], number<T>(2) * c, 4);
}

TYPED_TEST(LeastSquares, AWrongOptionIsReportedThroughInfo) {
  using T = TypeParam;
  std::vector<T> a{number<T>(1)}, b{number<T>(1)}, work(8);
  int info = 0;

  ITF(T, gels)(option("?"), 1, 1, 1, a.data(), 1, b.data(), 1, work.data(), 8, &info);

  EXPECT_EQ(info, -1);
}

template <class T>
struct Svd {
  std::vector<Real<T>> s;
  std::vector<T> u, vt;
  int info = -1;

  Svd(int m, int n, std::vector<T> a)
      : s(static_cast<std::size_t>(std::min(m, n))),
        u(static_cast<std::size_t>(m * m)),
        vt(static_cast<std::size_t>(n * n)) {
    std::vector<T> work(256);
    std::vector<Real<T>> rwork(64);
    const auto svd = ITF(T, gesvd);
    if constexpr (isComplex<T>)
      svd(option("A"), option("A"), m, n, a.data(), m, s.data(), u.data(), m, vt.data(), n,
          work.data(), 256, rwork.data(), &info);
    else
      svd(option("A"), option("A"), m, n, a.data(), m, s.data(), u.data(), m, vt.data(), n,
          work.data(), 256, &info);
  }
};

TYPED_TEST(SingularValues, OfAThreeByTwoMatrixAreKnown) {
  using T = TypeParam;
  // [3 0; 0 4c; 0 0] has the values 4 and 3; c = i or 1.
  const T c = isComplex<T> ? number<T>(0, 1) : number<T>(1);
  const std::vector<T> a{number<T>(3), number<T>(0),     number<T>(0),
                         number<T>(0), number<T>(4) * c, number<T>(0)};

  const Svd<T> svd(3, 2, a);

  EXPECT_EQ(svd.info, 0);
  EXPECT_NEAR(svd.s[0], 4, tolerance<T>(4));
  EXPECT_NEAR(svd.s[1], 3, tolerance<T>(4));
}

TYPED_TEST(SingularValues, RebuildTheMatrix) {
  using T = TypeParam;
  std::vector<T> a;
  for (int i = 0; i < 6; ++i)
    a.push_back(number<T>(std::sin(i + 1.), std::cos(2. * i)));

  const Svd<T> svd(2, 3, a);

  EXPECT_EQ(svd.info, 0);
  EXPECT_GE(svd.s[0], svd.s[1]);
  for (int i = 0; i < 2; ++i)
    for (int j = 0; j < 3; ++j) {
      T sum{};
      for (int k = 0; k < 2; ++k)
        sum += svd.u[static_cast<std::size_t>(i + 2 * k)] * svd.s[static_cast<std::size_t>(k)] *
               svd.vt[static_cast<std::size_t>(k + 3 * j)];
      expectNear(sum, a[static_cast<std::size_t>(i + 2 * j)], 4);
    }
}

} // namespace
