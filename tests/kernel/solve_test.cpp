#include "kernel/records.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numeric>

#include <zarel/itf.h>

#include "kernel/triangle.h"
#include "support/FailingAllocation.h"

using namespace kernel;
using testing::ElementsAre;

namespace {

using C = std::complex<double>;
constexpr double inf = std::numeric_limits<double>::infinity();

C value(double x) {
  return x;
}
C value(ZCOMPLEX z) {
  return {z.re, z.im};
}

Own<VEC> copied(const VEC* x) {
  return own(LM__v_copy(x, nullptr, 0, 0, nullptr, nullptr));
}
Own<ZVEC> copied(const ZVEC* x) {
  return own(LM__zv_copy(x, nullptr, 0, 0, nullptr, nullptr));
}
Own<MAT> copied(const MAT* A) {
  return own(LM__m_copy(A, nullptr, 0, 0, 0, nullptr, nullptr));
}
Own<ZMAT> copied(const ZMAT* A) {
  return own(LM__zm_copy(A, nullptr, 0, 0, 0, nullptr, nullptr));
}

// What the two kinds of records need to be tested by the same words.
struct Real {
  using M = MAT;
  using V = VEC;
  static Own<MAT> matrix(int m, int n) { return mat(m, n); }
  static Own<VEC> vector(int n) { return vec(std::vector<double>(static_cast<std::size_t>(n))); }
  static constexpr auto Usolve = LM_Usolve;
  static constexpr auto Lsolve = LM_Lsolve;
  static constexpr auto UTsolve = LM_UTsolve;
  static constexpr auto LTsolve = LM_LTsolve;
  static constexpr auto Dsolve = LM_Dsolve;
  static constexpr auto factor = LM_LUfactor;
  static constexpr auto LUsolve = LM_LUsolve;
  static constexpr auto LUTsolve = LM_LUTsolve;
  static constexpr auto condest = LM_LUcondest;
  static constexpr auto inverse = LM_m_inverse;
};
struct Complex {
  using M = ZMAT;
  using V = ZVEC;
  static Own<ZMAT> matrix(int m, int n) { return zmat(m, n); }
  static Own<ZVEC> vector(int n) {
    return zvec(std::vector<ZCOMPLEX>(static_cast<std::size_t>(n)));
  }
  static constexpr auto Usolve = LM_zUsolve;
  static constexpr auto Lsolve = LM_zLsolve;
  static constexpr auto UTsolve = LM_zUAsolve;
  static constexpr auto LTsolve = LM_zLAsolve;
  static constexpr auto Dsolve = LM_zDsolve;
  static constexpr auto factor = LM_zLUfactor;
  static constexpr auto LUsolve = LM_zLUsolve;
  static constexpr auto LUTsolve = LM_zLUAsolve;
  static constexpr auto condest = LM_zLUcondest;
  static constexpr auto inverse = LM_zm_inverse;
};

template <class Kind>
class Solve : public Kernel {
protected:
  using M = typename Kind::M;
  using V = typename Kind::V;

  // A random matrix with a heavy diagonal, so that triangles of it are well conditioned.
  Own<M> heavy(int n) {
    auto A = Kind::matrix(n, n);
    random.fill(A.get());
    for (int i = 0; i < n; ++i)
      set(A->me[i][i], C(n + 1.0, 0));
    return A;
  }
  Own<M> any(int m, int n) {
    auto A = Kind::matrix(m, n);
    random.fill(A.get());
    return A;
  }
  Own<V> side(int n) {
    auto b = Kind::vector(n);
    random.fill(b->ve, n);
    return b;
  }
  static void set(double& x, C z) { x = z.real(); }
  static void set(ZCOMPLEX& x, C z) { x = {z.real(), z.imag()}; }

  // The largest part of op(T) x - b, T being the part of A that `in(i, j)` tells, with ones or the
  // matrix on the diagonal.
  template <class In>
  double residual(const M* A, In in, bool adjoint, double diagonal, const V* x, const V* b) {
    const int n = static_cast<int>(A->m);
    double largest = 0;
    for (int i = 0; i < n; ++i) {
      C sum = -value(b->ve[i]);
      for (int j = 0; j < n; ++j) {
        const int r = adjoint ? j : i, c = adjoint ? i : j;
        C entry = r == c && diagonal != 0 ? C(diagonal) : in(r, c) ? value(A->me[r][c]) : C(0);
        sum += (adjoint ? std::conj(entry) : entry) * value(x->ve[j]);
      }
      largest = std::max(largest, std::abs(sum));
    }
    return largest;
  }

  Random random{12};
};

// Typed tests find this one, their fixture's being a name of a dependent class.
int status = 0;

using Kinds = testing::Types<Real, Complex>;
TYPED_TEST_SUITE(Solve, Kinds, );

TYPED_TEST(Solve, TriangularSystemsReadTheirTriangleOnly) {
  const auto upper = [](int r, int c) { return r <= c; };
  const auto lower = [](int r, int c) { return r >= c; };
  const auto onDiagonal = [](int r, int c) { return r == c; };
  for (const int n : {1, 2, 5, 23})
    for (const double d : {0.0, 1.0, -30.0}) {
      const auto A = this->heavy(n);
      const auto b = this->side(n);
      const double tolerance = 1e-12;
      if (d == 1.0) // ones on a heavy triangle grow too fast to be solved to this tolerance
        for (int i = 0; i < n; ++i)
          for (int j = 0; j < n; ++j)
            this->set(A->me[i][j], value(A->me[i][j]) / double(n + 1));
      const auto check = [&](auto solve, auto in, bool adjoint) {
        const auto x = own(solve(A.get(), b.get(), nullptr, d, 0, nullptr, &status));
        EXPECT_EQ(status, 0);
        EXPECT_LE(this->residual(A.get(), in, adjoint, d, x.get(), b.get()), tolerance);
        auto inPlace = copied(b.get());
        solve(A.get(), inPlace.get(), inPlace.get(), d, 0, nullptr, &status);
        EXPECT_EQ(list(inPlace.get()), list(x.get()));
      };
      check(TypeParam::Usolve, upper, false);
      check(TypeParam::Lsolve, lower, false);
      check(TypeParam::UTsolve, upper, true);
      check(TypeParam::LTsolve, lower, true);
      if (d == 0.0) {
        const auto x = own(TypeParam::Dsolve(A.get(), b.get(), nullptr, 0, nullptr, &status));
        EXPECT_LE(this->residual(A.get(), onDiagonal, false, 0, x.get(), b.get()), tolerance);
      }
    }
}

TYPED_TEST(Solve, ZeroOnTheDiagonalIsError4) {
  auto A = this->heavy(3);
  this->set(A->me[1][1], 0);
  auto b = this->side(3);
  const auto before = list(b.get());
  EXPECT_FAILS(4, TypeParam::Usolve(A.get(), b.get(), b.get(), 0, 0, nullptr, &status));
  EXPECT_FAILS(4, TypeParam::Lsolve(A.get(), b.get(), b.get(), 0, 0, nullptr, &status));
  EXPECT_FAILS(4, TypeParam::UTsolve(A.get(), b.get(), b.get(), 0, 0, nullptr, &status));
  EXPECT_FAILS(4, TypeParam::LTsolve(A.get(), b.get(), b.get(), 0, 0, nullptr, &status));
  EXPECT_FAILS(4, TypeParam::Dsolve(A.get(), b.get(), b.get(), 0, nullptr, &status));
  EXPECT_EQ(list(b.get()), before);
  EXPECT_TRUE(own(TypeParam::Lsolve(A.get(), b.get(), nullptr, 1, 0, nullptr, &status)));
}

TYPED_TEST(Solve, SizesAndNullsAreTested) {
  const auto A = this->heavy(3), wide = this->any(2, 3);
  auto b = this->side(2);
  const auto pivot = perm({0, 1, 2}), small = perm({0, 1});
  EXPECT_FAILS(1, TypeParam::Usolve(A.get(), b.get(), nullptr, 0, 0, nullptr, &status));
  EXPECT_FAILS(1, TypeParam::Lsolve(wide.get(), b.get(), nullptr, 0, 0, nullptr, &status));
  EXPECT_FAILS(1, TypeParam::LUsolve(A.get(), pivot.get(), b.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, TypeParam::LUsolve(A.get(), small.get(), b.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, TypeParam::factor(A.get(), small.get(), 0, nullptr, &status));
  EXPECT_FAILS(1, TypeParam::condest(wide.get(), small.get(), 0, nullptr, &status));
  EXPECT_FAILS(9, TypeParam::inverse(wide.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, TypeParam::Usolve(nullptr, b.get(), nullptr, 0, 0, nullptr, &status));
  EXPECT_FAILS(8, TypeParam::factor(A.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, TypeParam::LUsolve(nullptr, pivot.get(), b.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, TypeParam::LUTsolve(A.get(), pivot.get(), nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, TypeParam::condest(nullptr, pivot.get(), 0, nullptr, &status));
  EXPECT_FAILS(8, TypeParam::inverse(nullptr, nullptr, 0, nullptr, &status));
}

// The elimination column by column, as plain as can be, with the pivots of the header.
template <class M>
std::vector<unsigned> eliminate(std::vector<std::vector<C>>& a, const M* A) {
  const int m = static_cast<int>(A->m), n = static_cast<int>(A->n);
  a.assign(static_cast<std::size_t>(m), {});
  std::vector<double> scale(static_cast<std::size_t>(m));
  for (int i = 0; i < m; ++i)
    for (int j = 0; j < n; ++j) {
      a[i].push_back(value(A->me[i][j]));
      scale[i] = std::max(scale[i], std::abs(a[i][j]));
    }
  std::vector<unsigned> pivot(static_cast<std::size_t>(m));
  std::iota(pivot.begin(), pivot.end(), 0u);
  for (int k = 0; k <= std::min(m, n) - 2; ++k) {
    int best = -1;
    double ratio = 0;
    for (int i = k; i < m; ++i)
      if (scale[i] > 0 && std::abs(a[i][k]) / scale[i] > ratio) {
        ratio = std::abs(a[i][k]) / scale[i];
        best = i;
      }
    if (best < 0) continue;
    std::swap(a[k], a[best]);
    std::swap(scale[k], scale[best]);
    std::swap(pivot[k], pivot[best]);
    for (int i = k + 1; i < m; ++i) {
      a[i][k] /= a[k][k];
      for (int j = k + 1; j < n; ++j)
        a[i][j] -= a[i][k] * a[k][j];
    }
  }
  return pivot;
}

template <class M>
void expectSameFactors(const M* before, const M* factors, const PERM* pivot) {
  std::vector<std::vector<C>> expected;
  EXPECT_EQ(list(pivot), eliminate(expected, before));
  for (unsigned i = 0; i < factors->m; ++i)
    for (unsigned j = 0; j < factors->n; ++j)
      ASSERT_LE(std::abs(value(factors->me[i][j]) - expected[i][j]),
                1e-10 * (1 + std::abs(expected[i][j])))
          << i << " " << j;
}

// Smaller and larger than a panel, square, tall and wide, with rows of very different sizes.
TYPED_TEST(Solve, FactorsAreThoseOfThePlainElimination) {
  for (const auto& [m, n] : {std::pair(1, 1),
                             {2, 2},
                             {5, 5},
                             {24, 24},
                             {25, 25},
                             {26, 26},
                             {60, 60},
                             {60, 31},
                             {31, 60},
                             {97, 97},
                             {4, 1},
                             {1, 4}}) {
    auto A = this->any(m, n);
    for (int i = 0; i < m; ++i)
      for (int j = 0; j < n; ++j)
        this->set(A->me[i][j], value(A->me[i][j]) * std::pow(10.0, i % 7 - 3));
    const auto before = copied(A.get());
    auto pivot = own(LM_px_get("t", 0, m, 0, nullptr, &status));
    std::reverse(pivot->pe, pivot->pe + m); // the call starts from the identity whatever was there
    EXPECT_EQ(TypeParam::factor(A.get(), pivot.get(), 0, nullptr, &status), A.get());
    EXPECT_EQ(status, 0);
    expectSameFactors(before.get(), A.get(), pivot.get());
  }
}

// Columns without a pivot, alone and in the middle of a panel, are left out without a word.
TYPED_TEST(Solve, SingularMatricesAreFactoredAllTheSame) {
  for (const int n : {2, 6, 40, 70})
    for (const int column : {0, 1, n / 2, n - 1}) {
      auto A = this->any(n, n);
      for (int i = 0; i < n; ++i)
        this->set(A->me[i][column], 0);
      for (int j = 0; j < n; ++j)
        this->set(A->me[n / 3][j], 0); // and a row with no scale
      const auto before = copied(A.get());
      auto pivot = own(LM_px_get("t", 0, n, 0, nullptr, &status));
      EXPECT_TRUE(TypeParam::factor(A.get(), pivot.get(), 0, nullptr, &status));
      EXPECT_EQ(status, 0);
      expectSameFactors(before.get(), A.get(), pivot.get());
      auto b = this->side(n);
      EXPECT_FAILS(4,
                   TypeParam::LUsolve(A.get(), pivot.get(), b.get(), nullptr, 0, nullptr, &status));
      EXPECT_FAILS(
          4, TypeParam::LUTsolve(A.get(), pivot.get(), b.get(), nullptr, 0, nullptr, &status));
      EXPECT_EQ(TypeParam::condest(A.get(), pivot.get(), 0, nullptr, &status), inf);
      EXPECT_FAILS(4, TypeParam::inverse(before.get(), nullptr, 0, nullptr, &status));
    }
}

TYPED_TEST(Solve, SystemsAreSolvedWithTheFactors) {
  const auto everywhere = [](int, int) { return true; };
  for (const int n : {1, 3, 10, 64, 130}) {
    auto A = this->any(n, n);
    const auto before = copied(A.get());
    auto pivot = own(LM_px_get("t", 0, n, 0, nullptr, &status));
    TypeParam::factor(A.get(), pivot.get(), 0, nullptr, &status);
    auto b = this->side(n);
    const auto x =
        own(TypeParam::LUsolve(A.get(), pivot.get(), b.get(), nullptr, 0, nullptr, &status));
    ASSERT_TRUE(x) << n << " " << lastError();
    EXPECT_LE(this->residual(before.get(), everywhere, false, 0, x.get(), b.get()), 1e-9);
    const auto y =
        own(TypeParam::LUTsolve(A.get(), pivot.get(), b.get(), nullptr, 0, nullptr, &status));
    EXPECT_LE(this->residual(before.get(), everywhere, true, 0, y.get(), b.get()), 1e-9);
    auto inPlace = copied(b.get());
    EXPECT_EQ(
        TypeParam::LUsolve(A.get(), pivot.get(), inPlace.get(), inPlace.get(), 0, nullptr, &status),
        inPlace.get());
    EXPECT_EQ(list(inPlace.get()), list(x.get()));
    TypeParam::LUTsolve(A.get(), pivot.get(), b.get(), b.get(), 0, nullptr, &status);
    EXPECT_EQ(list(b.get()), list(y.get()));
  }
}

TYPED_TEST(Solve, InverseTimesMatrixIsTheIdentity) {
  for (const int n : {1, 2, 9, 50}) {
    auto A = this->heavy(n);
    const auto B = own(TypeParam::inverse(A.get(), nullptr, 0, nullptr, &status));
    ASSERT_TRUE(B);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j) {
        C sum = i == j ? -1.0 : 0.0;
        for (int k = 0; k < n; ++k)
          sum += value(A->me[i][k]) * value(B->me[k][j]);
        ASSERT_LE(std::abs(sum), 1e-13);
      }
    EXPECT_EQ(TypeParam::inverse(A.get(), A.get(), 0, nullptr, &status), A.get());
    EXPECT_EQ(list(A.get()), list(B.get()));
  }
}

// Never above the true condition, and hardly ever below a third of it.
TYPED_TEST(Solve, ConditionIsEstimatedFromBelow) {
  for (const int n : {1, 2, 5, 20, 80})
    for (int trial = 0; trial < 5; ++trial) {
      auto A = this->any(n, n);
      const auto inverse = own(TypeParam::inverse(A.get(), nullptr, 0, nullptr, &status));
      ASSERT_TRUE(inverse);
      const auto norm1 = [n](const auto* X) {
        double largest = 0;
        for (int j = 0; j < n; ++j) {
          double sum = 0;
          for (int i = 0; i < n; ++i)
            sum += std::abs(value(X->me[i][j]));
          largest = std::max(largest, sum);
        }
        return largest;
      };
      const double exact = norm1(A.get()) * norm1(inverse.get());
      auto pivot = own(LM_px_get("t", 0, n, 0, nullptr, &status));
      TypeParam::factor(A.get(), pivot.get(), 0, nullptr, &status);
      const double estimate = TypeParam::condest(A.get(), pivot.get(), 0, nullptr, &status);
      EXPECT_LE(estimate, exact * (1 + 1e-8));
      EXPECT_GE(estimate, exact / 3);
    }
}

// The products with triangles, on which the estimate stands, undo the solves.
TYPED_TEST(Solve, TriangularProductsUndoTheSolves) {
  namespace triangle = Zarel::kernel::triangle;
  const int n = 11;
  auto A = this->heavy(n);
  for (int i = 0; i < n; ++i)
    this->set(A->me[i][i], C(n + 1.0, -2.0 - i));
  const auto before = this->side(n);
  const auto expectUndone = [&](auto multiply, auto solve, double diagonal) {
    auto x = copied(before.get());
    multiply(A.get(), x->ve);
    solve(A.get(), x.get(), x.get(), diagonal, 0, nullptr, &status);
    for (int i = 0; i < n; ++i)
      EXPECT_LE(std::abs(value(x->ve[i]) - value(before->ve[i])), 1e-13);
  };
  using Matrix = typename TypeParam::M;
  expectUndone(triangle::multiplyUpper<Matrix>, TypeParam::Usolve, 0);
  expectUndone(triangle::multiplyUpperAdjoint<Matrix>, TypeParam::UTsolve, 0);
  expectUndone(triangle::multiplyUnitLower<Matrix>, TypeParam::Lsolve, 1);
  expectUndone(triangle::multiplyUnitLowerAdjoint<Matrix>, TypeParam::LTsolve, 1);
}

TYPED_TEST(Solve, EmptyMatricesAreFine) {
  auto A = TypeParam::matrix(0, 0);
  auto pivot = perm({});
  EXPECT_TRUE(TypeParam::factor(A.get(), pivot.get(), 0, nullptr, &status));
  EXPECT_EQ(TypeParam::condest(A.get(), pivot.get(), 0, nullptr, &status), 0.0);
  auto out = TypeParam::matrix(0, 0);
  EXPECT_TRUE(TypeParam::inverse(A.get(), out.get(), 0, nullptr, &status));
  EXPECT_EQ(status, 0);
}

TYPED_TEST(Solve, FailingAllocationsAreError3) {
  const auto A = this->heavy(4);
  const auto before = list(A.get());
  const long failures = support::forEachFailingAllocation([&] {
    const auto B = own(TypeParam::inverse(A.get(), nullptr, 0, nullptr, &status));
    const support::Unharmed unharmed;
    if (!B) {
      EXPECT_EQ(status, -1);
      EXPECT_EQ(lastError(), 3);
    }
  });
  EXPECT_GE(failures, 5);
  EXPECT_EQ(list(A.get()), before);
}

class Factors : public Kernel {};

// By hand: row 1 is large in absolute terms, row 2 relative to its scale.
TEST_F(Factors, PivotsAreChosenRelativeToTheScaleOfTheRow) {
  auto A = mat(3, 3, {1, 2, 4, 10, 1000, 1, 2, 1, 2});
  auto pivot = perm({0, 1, 2});
  LM_LUfactor(A.get(), pivot.get(), 0, nullptr, &status);
  EXPECT_EQ(pivot->pe[0], 2u); // 2/2 against 1/4 and 10/1000
  EXPECT_EQ(A->me[0][0], 2);
}

TEST_F(Factors, TheFirstOfEqualRatiosWins) {
  auto A = mat(3, 3, {1, 1, 1, 5, 5, 2, -7, 3, 7});
  auto pivot = perm({0, 1, 2});
  LM_LUfactor(A.get(), pivot.get(), 0, nullptr, &status);
  EXPECT_EQ(pivot->pe[0], 0u);
}

TEST_F(Factors, LastColumnOfATallMatrixStaysAsItIs) {
  auto A = mat(3, 1, {2, 4, 8});
  auto pivot = perm({0, 1, 2});
  LM_LUfactor(A.get(), pivot.get(), 0, nullptr, &status);
  EXPECT_THAT(list(A.get()), ElementsAre(2, 4, 8));
}

// What stands in the row of a step that was left out is no pivot row: its infinity goes nowhere.
TEST_F(Factors, AStepThatIsLeftOutChangesNothing) {
  const int n = 40;
  auto A = mat(n, n);
  auto pivot = own(LM_px_get("t", 0, n, 0, nullptr, &status));
  LM_m_ident(A.get(), 0, nullptr, &status);
  A->me[0][0] = 0;
  A->me[0][n - 1] = inf;
  const std::vector<double> before = list(A.get());
  LM_LUfactor(A.get(), pivot.get(), 0, nullptr, &status);
  EXPECT_EQ(list(A.get()), before);
}

// With rows of equal scale the pivots are those of LAPACK.
TEST_F(Factors, AgreeWithLapackWhereTheScalesAreEqual) {
  const int n = 75;
  Random random(13);
  auto A = mat(n, n);
  random.fill(A.get());
  for (int i = 0; i < n; ++i)
    A->me[i][(i * 31) % n] = i % 2 ? 1.0 : -1.0; // every row: scale 1
  std::vector<double> byColumns(n * n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      byColumns[i + j * n] = A->me[i][j];
  std::vector<int> ipiv(n);
  int info = 0;
  ITF_dgetrf(n, n, byColumns.data(), n, ipiv.data(), &info);
  auto pivot = own(LM_px_get("t", 0, n, 0, nullptr, &status));
  LM_LUfactor(A.get(), pivot.get(), 0, nullptr, &status);
  std::vector<unsigned> expected(n);
  std::iota(expected.begin(), expected.end(), 0u);
  for (int k = 0; k < n; ++k)
    std::swap(expected[k], expected[ipiv[k] - 1]);
  EXPECT_EQ(list(pivot.get()), expected);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      ASSERT_NEAR(A->me[i][j], byColumns[i + j * n], 1e-10);
}

// The estimate of LAPACK, which knows the norm of A, is no more than a few times away.
TEST_F(Factors, ConditionIsNearThatOfLapack) {
  const int n = 60;
  auto A = mat(n, n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      A->me[i][j] = 1.0 / (1 + std::abs(i - j)) + (i == j);
  std::vector<double> a = list(A.get()); // symmetric, so by rows is by columns
  std::vector<int> ipiv(n), iwork(n);
  std::vector<double> work(4 * n);
  int info = 0;
  double rcond = 0;
  const double norm = LM_m_norm1(A.get(), 0, nullptr, &status);
  ITF_dgetrf(n, n, a.data(), n, ipiv.data(), &info);
  char one[] = "1";
  ITF_dgecon(one, n, a.data(), n, norm, &rcond, work.data(), iwork.data(), &info);
  auto pivot = own(LM_px_get("t", 0, n, 0, nullptr, &status));
  LM_LUfactor(A.get(), pivot.get(), 0, nullptr, &status);
  const double estimate = LM_LUcondest(A.get(), pivot.get(), 0, nullptr, &status);
  EXPECT_NEAR(estimate * rcond, 1, 0.01);
}

double estimatedCondition(Own<MAT> A) {
  auto pivot = own(LM_px_get("t", 0, static_cast<int>(A->m), 0, nullptr, &status));
  LM_LUfactor(A.get(), pivot.get(), 0, nullptr, &status);
  return LM_LUcondest(A.get(), pivot.get(), 0, nullptr, &status);
}

// A climb of three columns ends at the largest one: 8 in the matrix, 7/3 in its inverse.
TEST_F(Factors, ConditionClimbsFromColumnToColumn) {
  EXPECT_NEAR(estimatedCondition(mat(3, 3, {1, -2, 0, 0, -2, -3, 3, -3, 0})), 56.0 / 3.0, 1e-9);
}

// The climb stays at a column of sum 4 in the first matrix; the vector (1, -4/3, 5/3, -2) tells
// 2 |A x| / (3 n) = 47/9. In the inverse the climb finds 105/106.
TEST_F(Factors, ConditionIsAlsoThatOfAnAlternatingVector) {
  EXPECT_NEAR(estimatedCondition(mat(4, 4, {2, 0, 2, 1, -2, 0, 1, 3, 3, 2, 1, -3, 0, 2, -3, 3})),
              47.0 / 9.0 * 105.0 / 106.0, 1e-9);
}

TEST_F(Factors, APivotOutOfRangeIsError2AndAWrongLengthError1) {
  const auto LU = mat(2, 2, {1, 2, 0, 1}), singular = mat(2, 2);
  const auto outside = perm({0, 2}), longer = perm({0, 1, 2});
  const auto b = vec({1, 1});
  EXPECT_FAILS(2, LM_LUcondest(LU.get(), outside.get(), 0, nullptr, &status));
  EXPECT_FAILS(2, LM_LUsolve(LU.get(), outside.get(), b.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_LUTsolve(LU.get(), outside.get(), b.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_LUcondest(LU.get(), longer.get(), 0, nullptr, &status));
  EXPECT_FAILS(1, LM_LUsolve(singular.get(), longer.get(), b.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_LUTsolve(singular.get(), longer.get(), b.get(), nullptr, 0, nullptr, &status));
}

TEST_F(Factors, ScalesAreReleasedWithTheirGroup) {
  mem_stat_mark(6);
  auto A = mat(2, 2, {1, 2, 3, 4});
  auto pivot = perm({0, 1});
  LM_LUfactor(A.get(), pivot.get(), 0, nullptr, &status);
  mem_info_on(1);
  mem_numvar_list(LM_TYPE_VEC, 1, 0); // made before accounting was on
  mem_bytes_list(LM_TYPE_VEC, 0, 1000000, 0);
  const int before = mem_info_numvar(LM_TYPE_VEC, 0);
  EXPECT_EQ(mem_stat_free_list(6, 0), 0);
  EXPECT_EQ(mem_info_numvar(LM_TYPE_VEC, 0), before - 1);
  mem_bytes_list(LM_TYPE_VEC, mem_info_bytes(LM_TYPE_VEC, 0), 0, 0);
  mem_info_on(0);
  mem_stat_mark(0);
  A = mat(2, 2, {0, 2, 3, 4});
  EXPECT_TRUE(LM_LUfactor(A.get(), pivot.get(), 0, nullptr, &status));
  EXPECT_THAT(list(pivot.get()), ElementsAre(1, 0));
}

} // namespace
