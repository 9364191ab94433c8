// Factors, inverses and solutions of small systems that can be checked by hand.
#include <vector>

#include "numerics/precision.h"

using namespace precision;

namespace {

template <class T>
class Factors : public testing::Test {};
TYPED_TEST_SUITE(Factors, All);

template <class T>
class PackedFactors : public testing::Test {};
TYPED_TEST_SUITE(PackedFactors, Doubles);

TYPED_TEST(Factors, GetrfPivotsCountFromOne) {
  using T = TypeParam;
  // [1 2; 4 4] pivots on row 2: L = [1 0; 1/4 1], U = [4 4; 0 1].
  std::vector<T> a{number<T>(1), number<T>(4), number<T>(2), number<T>(4)};
  std::vector<int> pivots(2);
  int info = -1;

  ITF(T, getrf)(2, 2, a.data(), 2, pivots.data(), &info);

  EXPECT_EQ(info, 0);
  EXPECT_EQ(pivots, (std::vector<int>{2, 2}));
  EXPECT_EQ(a, (std::vector<T>{number<T>(4), number<T>(0.25), number<T>(4), number<T>(1)}));
}

TYPED_TEST(Factors, GetrfReportsASingularMatrix) {
  using T = TypeParam;
  std::vector<T> a{number<T>(1), number<T>(2), number<T>(2), number<T>(4)};
  std::vector<int> pivots(2);
  int info = -1;

  ITF(T, getrf)(2, 2, a.data(), 2, pivots.data(), &info);

  EXPECT_EQ(info, 2);
}

TYPED_TEST(Factors, GetrsSolvesPlainAndConjugateTransposed) {
  using T = TypeParam;
  // A = [0 2; i 0] ([0 2; 1 0] when real) is a permutation and a scaling.
  const T lower = isComplex<T> ? number<T>(0, 1) : number<T>(1);
  for (const char* trans : {"N", "C"}) {
    std::vector<T> a{number<T>(0), lower, number<T>(2), number<T>(0)};
    std::vector<T> b{number<T>(6), number<T>(5)};
    std::vector<int> pivots(2);
    int info = -1;

    ITF(T, getrf)(2, 2, a.data(), 2, pivots.data(), &info);
    ITF(T, getrs)(option(trans), 2, 1, a.data(), 2, pivots.data(), b.data(), 2, &info);

    EXPECT_EQ(info, 0);
    if (*trans == 'N') { // 2 x2 = 6, l x1 = 5
      expectNear(b[0], number<T>(5) / lower, 5);
      expectNear(b[1], number<T>(3), 3);
    } else { // conj(l) x2 = 6, 2 x1 = 5
      expectNear(b[0], number<T>(2.5), 5);
      expectNear(b[1], number<T>(6) / conjugate(lower), 6);
    }
  }
}

TEST(PackedCholesky, FactorsByHandInBothTriangles) {
  // [4 2; 2 5] = [2 0; 1 2] [2 1; 0 2]
  for (const char* uplo : {"L", "U"}) {
    std::vector<double> ap{4, 2, 5};
    int info = -1;

    ITF_dpptrf(option(uplo), 2, ap.data(), &info);

    EXPECT_EQ(info, 0);
    EXPECT_EQ(ap, (std::vector<double>{2, 1, 2}));
  }
}

TEST(PackedCholesky, NamesTheFirstMinorThatIsNotPositive) {
  std::vector<double> ap{1, 2, 0,
                         1, 0, 1}; // [1 2 0; 2 1 0; 0 0 1], by columns of the lower triangle
  int info = -1;

  ITF_dpptrf(option("L"), 3, ap.data(), &info);

  EXPECT_EQ(info, 2);
  EXPECT_EQ(ap[0], 1);
  EXPECT_EQ(ap[1], 2);
  EXPECT_EQ(ap[3], -3);
}

TYPED_TEST(PackedFactors, TptriInvertsATriangle) {
  using T = TypeParam;
  const auto tptri = pick<T>(ITF_dtptri, ITF_dtptri, ITF_ztptri, ITF_ztptri);
  // [2 0; 1 d], d = 4i or 4: the inverse is [1/2 0; -1/(2d) 1/d].
  const T d = isComplex<T> ? number<T>(0, 4) : number<T>(4);
  std::vector<T> ap{number<T>(2), number<T>(1), d};
  int info = -1;

  tptri(option("L"), option("N"), 2, ap.data(), &info);

  EXPECT_EQ(info, 0);
  expectNear(ap[0], number<T>(0.5));
  expectNear(ap[1], number<T>(-0.5) / d);
  expectNear(ap[2], number<T>(1) / d);
}

TYPED_TEST(PackedFactors, TptriReportsAZeroOnTheDiagonal) {
  using T = TypeParam;
  const auto tptri = pick<T>(ITF_dtptri, ITF_dtptri, ITF_ztptri, ITF_ztptri);
  std::vector<T> ap{number<T>(2), number<T>(1), number<T>(0)};
  int info = -1;

  tptri(option("L"), option("N"), 2, ap.data(), &info);

  EXPECT_EQ(info, 2);
}

TYPED_TEST(PackedFactors, SptrsSolvesAnIndefiniteSystem) {
  using T = TypeParam;
  const auto sptrf = pick<T>(ITF_dsptrf, ITF_dsptrf, ITF_zsptrf, ITF_zsptrf);
  const auto sptrs = pick<T>(ITF_dsptrs, ITF_dsptrs, ITF_zsptrs, ITF_zsptrs);
  // [0 1 0; 1 0 0; 0 0 d]: zero pivots force a 2 x 2 block. d = 2i or 2.
  const T d = isComplex<T> ? number<T>(0, 2) : number<T>(2);
  std::vector<T> ap{number<T>(0), number<T>(1), number<T>(0), number<T>(0), number<T>(0), d};
  std::vector<T> b{number<T>(7), number<T>(8), number<T>(4)};
  std::vector<int> pivots(3);
  int info = -1;

  sptrf(option("L"), 3, ap.data(), pivots.data(), &info);
  EXPECT_EQ(info, 0);
  sptrs(option("L"), 3, 1, ap.data(), pivots.data(), b.data(), 3, &info);

  EXPECT_EQ(info, 0);
  EXPECT_LT(pivots[0], 0);
  expectNear(b[0], number<T>(8), 8);
  expectNear(b[1], number<T>(7), 8);
  expectNear(b[2], number<T>(4) / d, 4);
}

TYPED_TEST(Factors, PotrfFactorsAsTheCriterionDoes) {
  using T = TypeParam;
  // [4 2i; -2i 5] ([4 2; 2 5] when real) has the lower factor [2 0; -i 2].
  std::vector<T> a{number<T>(4), isComplex<T> ? number<T>(0, -2) : number<T>(2), number<T>(0),
                   number<T>(5)};
  int info = -1;

  ITF(T, potrf)(option("L"), 2, a.data(), 2, &info);

  EXPECT_EQ(info, 0);
  expectNear(a[0], number<T>(2));
  expectNear(a[1], isComplex<T> ? number<T>(0, -1) : number<T>(1));
  expectNear(a[3], number<T>(2));
}

TYPED_TEST(Factors, GeesPutsChosenEigenvaluesFirst) {
  using T = TypeParam;
  // Upper triangular with the eigenvalues 1, 5, 2: those above 3 come first.
  std::vector<T> a(9), vs(9), work(64);
  a[0] = number<T>(1), a[3] = number<T>(1), a[6] = number<T>(1);
  a[4] = number<T>(5), a[7] = number<T>(1), a[8] = number<T>(2);
  std::vector<T> w(3), wi(3);
  std::vector<Real<T>> rwork(3);
  std::vector<int> bwork(3);
  int chosen = -1, info = -1;

  if constexpr (isComplex<T>) {
    const auto select = [](void* z) -> int { return static_cast<T*>(z)->real() > 3; };
    pick<T>(ITF_cgees, ITF_cgees, ITF_cgees,
            ITF_zgees)(option("V"), option("S"), select, 3, a.data(), 3, &chosen, w.data(),
                       vs.data(), 3, work.data(), 64, rwork.data(), bwork.data(), &info);
  } else {
    const auto select = [](T* re, T*) -> int { return *re > 3; };
    pick<T>(ITF_sgees, ITF_dgees, ITF_dgees,
            ITF_dgees)(option("V"), option("S"), select, 3, a.data(), 3, &chosen, w.data(),
                       wi.data(), vs.data(), 3, work.data(), 64, bwork.data(), &info);
  }

  EXPECT_EQ(info, 0);
  EXPECT_EQ(chosen, 1);
  expectNear(w[0], number<T>(5), 50);
  expectNear(w[1] + w[2], number<T>(3), 50);
}

} // namespace
