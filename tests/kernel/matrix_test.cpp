#include "kernel/records.h"

#include <cmath>
#include <complex>
#include <limits>

#include <zarel/mrand.h>

#include "support/FailingAllocation.h"

using namespace kernel;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using C = std::complex<double>;

C value(double x) {
  return x;
}
C value(ZCOMPLEX z) {
  return {z.re, z.im};
}

// A matrix as numbers, for products by the definition.
struct Dense {
  int m, n;
  std::vector<C> a;
  C& operator()(int i, int j) { return a[static_cast<std::size_t>(i * n + j)]; }
  C operator()(int i, int j) const { return a[static_cast<std::size_t>(i * n + j)]; }
};

template <class M>
Dense dense(const M* A) {
  Dense d = {static_cast<int>(A->m), static_cast<int>(A->n), {}};
  for (const auto& x : list(A))
    d.a.push_back(value(x));
  return d;
}
template <class V>
Dense column(const V* x) {
  Dense d = {static_cast<int>(x->dim), 1, {}};
  for (const auto& v : list(x))
    d.a.push_back(value(v));
  return d;
}
Dense adjoint(const Dense& a) {
  Dense t = {a.n, a.m, std::vector<C>(a.a.size())};
  for (int i = 0; i < a.m; ++i)
    for (int j = 0; j < a.n; ++j)
      t(j, i) = std::conj(a(i, j));
  return t;
}
Dense product(const Dense& a, const Dense& b) {
  Dense c = {a.m, b.n, std::vector<C>(static_cast<std::size_t>(a.m * b.n))};
  for (int i = 0; i < a.m; ++i)
    for (int j = 0; j < b.n; ++j)
      for (int k = 0; k < a.n; ++k)
        c(i, j) += a(i, k) * b(k, j);
  return c;
}
Dense sum(const Dense& a, C s, const Dense& b) {
  Dense c = a;
  for (std::size_t k = 0; k < c.a.size(); ++k)
    c.a[k] += s * b.a[k];
  return c;
}
void expectNear(const Dense& got, const Dense& expected) {
  ASSERT_EQ(got.m, expected.m);
  ASSERT_EQ(got.n, expected.n);
  for (std::size_t k = 0; k < got.a.size(); ++k)
    ASSERT_LE(std::abs(got.a[k] - expected.a[k]), 1e-13) << k;
}

Own<MAT> make(MAT*, int m, int n) {
  return mat(m, n);
}
Own<ZMAT> make(ZMAT*, int m, int n) {
  return zmat(m, n);
}

// A random matrix whose row stride is larger than its rows, as after a resize.
template <class M>
Own<M> wide(Random& random, int m, int n) {
  auto A = make(static_cast<M*>(nullptr), m + 1, n + 3);
  random.fill(A.get());
  A->m = static_cast<unsigned>(m);
  A->n = static_cast<unsigned>(n);
  return A;
}

struct Shape {
  int m, k, n;
};
const Shape shapes[] = {{1, 1, 1}, {2, 3, 4}, {5, 1, 3}, {17, 9, 13}, {3, 40, 2}};

class Matrices : public Kernel {};

TEST_F(Matrices, ProductsMatchTheDefinition) {
  Random random(3);
  for (const Shape& s : shapes) {
    const auto A = wide<MAT>(random, s.m, s.k), B = wide<MAT>(random, s.k, s.n);
    const auto Bt = wide<MAT>(random, s.n, s.k), At = wide<MAT>(random, s.k, s.m);
    auto out = wide<MAT>(random, s.m, s.n); // stale values and a stride of its own
    expectNear(dense(LM_m_mlt(A.get(), B.get(), out.get(), 0, nullptr, &status)),
               product(dense(A.get()), dense(B.get())));
    expectNear(dense(LM_mmtr_mlt(A.get(), Bt.get(), out.get(), 0, nullptr, &status)),
               product(dense(A.get()), adjoint(dense(Bt.get()))));
    expectNear(dense(LM_mtrm_mlt(At.get(), B.get(), out.get(), 0, nullptr, &status)),
               product(adjoint(dense(At.get())), dense(B.get())));
    const auto D = wide<MAT>(random, s.m, s.n);
    const auto combined =
        own(LM_m_mltadd(D.get(), A.get(), B.get(), -0.5, nullptr, 0, nullptr, &status));
    expectNear(dense(combined.get()),
               sum(dense(D.get()), -0.5, product(dense(A.get()), dense(B.get()))));
  }
}

TEST_F(Matrices, ComplexProductsMatchTheDefinition) {
  Random random(4);
  for (const Shape& s : shapes) {
    const auto A = wide<ZMAT>(random, s.m, s.k), B = wide<ZMAT>(random, s.k, s.n);
    const auto Ba = wide<ZMAT>(random, s.n, s.k), Aa = wide<ZMAT>(random, s.k, s.m);
    auto out = wide<ZMAT>(random, s.m, s.n);
    expectNear(dense(LM_zm_mlt(A.get(), B.get(), out.get(), 0, nullptr, &status)),
               product(dense(A.get()), dense(B.get())));
    expectNear(dense(LM_zmma_mlt(A.get(), Ba.get(), out.get(), 0, nullptr, &status)),
               product(dense(A.get()), adjoint(dense(Ba.get()))));
    expectNear(dense(LM_zmam_mlt(Aa.get(), B.get(), out.get(), 0, nullptr, &status)),
               product(adjoint(dense(Aa.get())), dense(B.get())));
  }
}

TEST_F(Matrices, ProductsWithVectorsMatchTheDefinition) {
  Random random(5);
  for (const Shape& s : shapes) {
    const auto A = wide<MAT>(random, s.m, s.n);
    auto x = vec(std::vector<double>(s.n)), y = vec(std::vector<double>(s.m));
    random.fill(x->ve, s.n);
    random.fill(y->ve, s.m);
    const auto Ax = own(LM_mv_mlt(A.get(), x.get(), nullptr, 0, nullptr, &status));
    expectNear(column(Ax.get()), product(dense(A.get()), column(x.get())));
    const auto Aty = own(LM_vm_mlt(A.get(), y.get(), nullptr, 0, nullptr, &status));
    expectNear(column(Aty.get()), product(adjoint(dense(A.get())), column(y.get())));
    const auto sumY = own(LM_mv_mltadd(y.get(), x.get(), A.get(), 2, nullptr, 0, nullptr, &status));
    expectNear(column(sumY.get()), sum(column(y.get()), 2, column(Ax.get())));
    const auto expected = sum(column(x.get()), -1, column(Aty.get()));
    EXPECT_EQ(LM_vm_mltadd(x.get(), y.get(), A.get(), -1, x.get(), 0, nullptr, &status), x.get());
    expectNear(column(x.get()), expected);
  }
}

TEST_F(Matrices, ComplexProductsWithVectorsMatchTheDefinition) {
  Random random(6);
  for (const Shape& s : shapes) {
    const auto A = wide<ZMAT>(random, s.m, s.n);
    auto x = zvec(std::vector<ZCOMPLEX>(s.n)), y = zvec(std::vector<ZCOMPLEX>(s.m));
    random.fill(x->ve, s.n);
    random.fill(y->ve, s.m);
    const auto Ax = own(LM_zmv_mlt(A.get(), x.get(), nullptr, 0, nullptr, &status));
    expectNear(column(Ax.get()), product(dense(A.get()), column(x.get())));
    const auto Aay = own(LM_zvm_mlt(A.get(), y.get(), nullptr, 0, nullptr, &status));
    expectNear(column(Aay.get()), product(adjoint(dense(A.get())), column(y.get())));
    const auto sumY =
        own(LM_zmv_mltadd(y.get(), x.get(), A.get(), {2, 1}, nullptr, 0, nullptr, &status));
    expectNear(column(sumY.get()), sum(column(y.get()), C(2, 1), column(Ax.get())));
    const auto sumX =
        own(LM_zvm_mltadd(x.get(), y.get(), A.get(), {0, 1}, nullptr, 0, nullptr, &status));
    expectNear(column(sumX.get()), sum(column(x.get()), C(0, 1), column(Aay.get())));
  }
}

TEST_F(Matrices, EmptyFactorsGiveZeros) {
  const auto A = mat(3, 0), B = mat(0, 2), none = mat(0, 0);
  const auto empty = vec({}), three = vec({1, 2, 3});
  auto out = mat(3, 2, {9, 9, 9, 9, 9, 9});
  EXPECT_THAT(list(LM_m_mlt(A.get(), B.get(), out.get(), 0, nullptr, &status)), Each(0));
  auto y = vec({9, 9, 9});
  EXPECT_THAT(list(LM_mv_mlt(A.get(), empty.get(), y.get(), 0, nullptr, &status)), Each(0));
  EXPECT_THAT(
      list(own(LM_mv_mltadd(three.get(), empty.get(), A.get(), 1, nullptr, 0, nullptr, &status))
               .get()),
      ElementsAre(1, 2, 3));
  auto row = mat(1, 2, {9, 9}), noRows = mat(0, 2);
  const auto rowless = mat(0, 3), wide = mat(3, 2, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(LM_m_mlt(rowless.get(), wide.get(), noRows.get(), 0, nullptr, &status), noRows.get());
  EXPECT_EQ(noRows->m, 0u);
  EXPECT_EQ(
      LM_m_mltadd(noRows.get(), rowless.get(), wide.get(), 2, noRows.get(), 0, nullptr, &status),
      noRows.get());
  LM_m_mltadd(row.get(), mat(1, 0).get(), mat(0, 2).get(), 2, row.get(), 0, nullptr, &status);
  EXPECT_THAT(list(row.get()), ElementsAre(9, 9));
  auto fits = mat(0, 0);
  EXPECT_THAT(list(LM_m_add(none.get(), none.get(), fits.get(), 0, nullptr, &status)), IsEmpty());
  EXPECT_EQ(status, 0);
}

TEST_F(Matrices, SizesAndSharedStorageAreTested) {
  auto A = mat(2, 3), B = mat(2, 3), S = mat(2, 2), T = mat(2, 2);
  auto x = vec({1, 2, 3}), two = vec({1, 2}), other = vec({1, 1});
  EXPECT_FAILS(1, LM_m_mlt(A.get(), B.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_mmtr_mlt(A.get(), S.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_mtrm_mlt(A.get(), mat(3, 2).get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_m_add(A.get(), S.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_ms_mltadd(A.get(), S.get(), 2, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_mv_mlt(A.get(), two.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_vm_mlt(A.get(), x.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_mv_mltadd(x.get(), x.get(), A.get(), 1, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_m_mltadd(A.get(), S.get(), S.get(), 1, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(12, LM_m_mlt(S.get(), T.get(), S.get(), 0, nullptr, &status));
  EXPECT_FAILS(12, LM_m_mlt(S.get(), T.get(), T.get(), 0, nullptr, &status));
  EXPECT_FAILS(12, LM_m_mltadd(S.get(), T.get(), S.get(), 1, T.get(), 0, nullptr, &status));
  EXPECT_FAILS(12, LM_m_mltadd(S.get(), S.get(), T.get(), 1, T.get(), 0, nullptr, &status));
  EXPECT_FAILS(12, LM_mv_mlt(S.get(), two.get(), two.get(), 0, nullptr, &status));
  EXPECT_FAILS(12, LM_vm_mlt(S.get(), two.get(), two.get(), 0, nullptr, &status));
  EXPECT_FAILS(12,
               LM_mv_mltadd(other.get(), two.get(), S.get(), 1, two.get(), 0, nullptr, &status));
  EXPECT_FAILS(12,
               LM_vm_mltadd(other.get(), two.get(), S.get(), 1, two.get(), 0, nullptr, &status));
  EXPECT_FAILS(8, LM_m_mlt(nullptr, S.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_mv_mlt(S.get(), nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_m_norm1(nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(two.get()), ElementsAre(1, 2));
}

TEST_F(Matrices, SumsEntryByEntry) {
  const auto A = mat(2, 2, {1, 2, 3, 4}), B = mat(2, 2, {10, 20, 30, 40});
  MAT* out = nullptr;
  out = LM_m_add(A.get(), B.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(11, 22, 33, 44));
  out = LM_m_sub(B.get(), A.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(9, 18, 27, 36));
  out = LM_sm_mlt(2, A.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(2, 4, 6, 8));
  out = LM_ms_mltadd(A.get(), B.get(), -1, out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(-9, -18, -27, -36));
  LM_m_add(out, A.get(), out, 0, nullptr, &status); // in place
  EXPECT_THAT(list(out), ElementsAre(-8, -16, -24, -32));
  m_free(out);
  auto Z = zmat(1, 2), W = zmat(1, 2);
  Z->me[0][0] = {1, 2};
  W->me[0][1] = {0, 3};
  ZMAT* z = nullptr;
  z = LM_zm_add(Z.get(), W.get(), z, 0, nullptr, &status);
  EXPECT_THAT(list(z), ElementsAre(ZCOMPLEX{1, 2}, ZCOMPLEX{0, 3}));
  z = LM_zm_sub(Z.get(), W.get(), z, 0, nullptr, &status);
  EXPECT_THAT(list(z), ElementsAre(ZCOMPLEX{1, 2}, ZCOMPLEX{0, -3}));
  z = LM_zsm_mlt({0, 1}, Z.get(), z, 0, nullptr, &status);
  EXPECT_THAT(list(z), ElementsAre(ZCOMPLEX{-2, 1}, ZCOMPLEX{0, 0}));
  z = LM_mz_mltadd(Z.get(), W.get(), {0, 1}, z, 0, nullptr, &status);
  EXPECT_THAT(list(z), ElementsAre(ZCOMPLEX{1, 2}, ZCOMPLEX{-3, 0}));
  zm_free(z);
}

TEST_F(Matrices, TranspositionOfShapesAroundThePieces) {
  Random random(7);
  const int sizes[] = {0, 1, 3, 7, 8, 9, 16, 31, 63, 64, 65, 72, 129};
  for (const int m : sizes)
    for (const int n : sizes) {
      const auto A = wide<MAT>(random, m, n);
      auto out = mat(n, m);
      LM_m_transp(A.get(), out.get(), 0, nullptr, &status);
      ASSERT_EQ(status, 0);
      for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j)
          ASSERT_EQ(out->me[j][i], A->me[i][j]);
    }
}

TEST_F(Matrices, TranspositionInPlaceIsForSquareOnesOnly) {
  Random random(8);
  for (int n = 1; n < 50; n += 5) {
    auto A = wide<MAT>(random, n, n);
    const auto before = dense(A.get());
    EXPECT_EQ(LM_m_transp(A.get(), A.get(), 0, nullptr, &status), A.get());
    expectNear(dense(A.get()), adjoint(before));
    auto Z = wide<ZMAT>(random, n, n);
    const auto complexBefore = dense(Z.get());
    LM_zm_adjoint(Z.get(), Z.get(), 0, nullptr, &status);
    expectNear(dense(Z.get()), adjoint(complexBefore));
  }
  auto B = mat(2, 3, {1, 2, 3, 4, 5, 6});
  EXPECT_FAILS(11, LM_m_transp(B.get(), B.get(), 0, nullptr, &status));
  EXPECT_THAT(list(B.get()), ElementsAre(1, 2, 3, 4, 5, 6));
  const auto W = wide<ZMAT>(random, 3, 5);
  const auto adj = own(LM_zm_adjoint(W.get(), nullptr, 0, nullptr, &status));
  expectNear(dense(adj.get()), adjoint(dense(W.get())));
}

TEST_F(Matrices, RowsAndColumnsAreExchangedInARange) {
  auto A = mat(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  LM_swap_rows(A.get(), 0, 2, 1, 2, 0, nullptr, &status);
  EXPECT_THAT(list(A.get()), ElementsAre(1, 8, 9, 4, 5, 6, 7, 2, 3));
  LM_swap_cols(A.get(), 0, 1, 0, 1, 0, nullptr, &status);
  EXPECT_THAT(list(A.get()), ElementsAre(8, 1, 9, 5, 4, 6, 7, 2, 3));
  LM_swap_rows(A.get(), 1, 1, 0, 2, 0, nullptr, &status);
  LM_swap_rows(A.get(), 0, 1, 2, 1, 0, nullptr, &status); // empty ranges, wherever they are
  LM_swap_rows(A.get(), 0, 1, 2, -5, 0, nullptr, &status);
  LM_swap_rows(A.get(), 0, 1, 9, 7, 0, nullptr, &status);
  LM_swap_cols(A.get(), 0, 1, 9, 7, 0, nullptr, &status);
  EXPECT_EQ(status, 0);
  EXPECT_THAT(list(A.get()), ElementsAre(8, 1, 9, 5, 4, 6, 7, 2, 3));
  EXPECT_FAILS(10, LM_swap_rows(A.get(), 0, 3, 0, 2, 0, nullptr, &status));
  EXPECT_FAILS(10, LM_swap_rows(A.get(), -1, 0, 0, 2, 0, nullptr, &status));
  EXPECT_FAILS(10, LM_swap_rows(A.get(), 0, 1, 0, 3, 0, nullptr, &status));
  EXPECT_FAILS(10, LM_swap_cols(A.get(), 0, 1, -1, 2, 0, nullptr, &status));
  auto Z = zmat(2, 2);
  Z->me[0][0] = {1, 1};
  LM_zswap_rows(Z.get(), 0, 1, 0, 1, 0, nullptr, &status);
  EXPECT_EQ(Z->me[1][0], (ZCOMPLEX{1, 1}));
  LM_zswap_cols(Z.get(), 0, 1, 0, 1, 0, nullptr, &status);
  EXPECT_EQ(Z->me[1][1], (ZCOMPLEX{1, 1}));
}

TEST_F(Matrices, RowsColumnsAndPartsAreCopied) {
  auto A = mat(2, 3, {1, 2, 3, 4, 5, 6});
  EXPECT_THAT(list(own(LM_get_col(A.get(), 1, nullptr, 0, nullptr, &status)).get()),
              ElementsAre(2, 5));
  EXPECT_THAT(list(own(LM_get_row(A.get(), 1, nullptr, 0, nullptr, &status)).get()),
              ElementsAre(4, 5, 6));
  LM__set_col(A.get(), 2, vec({7, 8}).get(), 1, 0, nullptr, &status);
  EXPECT_THAT(list(A.get()), ElementsAre(1, 2, 3, 4, 5, 8));
  LM__set_row(A.get(), 0, vec({-1, -2, -3}).get(), 1, 0, nullptr, &status);
  EXPECT_THAT(list(A.get()), ElementsAre(1, -2, -3, 4, 5, 8));
  EXPECT_THAT(list(own(LM_sub_mat(A.get(), 0, 1, 1, 2, nullptr, 0, nullptr, &status)).get()),
              ElementsAre(-2, -3, 5, 8));
  LM__set_col(A.get(), 2, vec({9, 9}).get(), 2, 0, nullptr, &status); // nothing from the end on
  LM__set_row(A.get(), 0, vec({9, 9, 9}).get(), 3, 0, nullptr, &status);
  EXPECT_EQ(status, 0);
  EXPECT_THAT(list(A.get()), ElementsAre(1, -2, -3, 4, 5, 8));
  const auto x = vec({1, 2, 3, 4});
  EXPECT_THAT(list(own(LM_sub_vec(x.get(), 1, 2, nullptr, 0, nullptr, &status)).get()),
              ElementsAre(2, 3));
  EXPECT_FAILS(10, LM_get_col(A.get(), 3, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(10, LM_get_row(A.get(), -1, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(10, LM__set_col(A.get(), 0, vec({7, 8}).get(), 3, 0, nullptr, &status));
  EXPECT_FAILS(1, LM__set_col(A.get(), 0, x.get(), 0, 0, nullptr, &status));
  EXPECT_FAILS(1, LM__set_row(A.get(), 0, x.get(), 0, 0, nullptr, &status));
  EXPECT_FAILS(10, LM_sub_mat(A.get(), 0, 0, 2, 0, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(10, LM_sub_mat(A.get(), 1, 0, 0, 0, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(12, LM_sub_mat(A.get(), 0, 0, 0, 0, A.get(), 0, nullptr, &status));
  EXPECT_FAILS(10, LM__set_row(A.get(), 0, vec({7, 8, 9}).get(), 4, 0, nullptr, &status));
  EXPECT_FAILS(10, LM_sub_vec(x.get(), 2, 4, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(12, LM_sub_vec(x.get(), 1, 2, x.get(), 0, nullptr, &status));
  auto Z = zmat(2, 2);
  LM_zset_col(Z.get(), 1, zvec({{1, 2}, {3, 4}}).get(), 0, 0, nullptr, &status);
  LM_zset_row(Z.get(), 0, zvec({{5, 6}, {7, 8}}).get(), 0, 0, nullptr, &status);
  EXPECT_THAT(list(own(LM_zget_col(Z.get(), 1, nullptr, 0, nullptr, &status)).get()),
              ElementsAre(ZCOMPLEX{7, 8}, ZCOMPLEX{3, 4}));
  EXPECT_THAT(list(own(LM_zget_row(Z.get(), 0, nullptr, 0, nullptr, &status)).get()),
              ElementsAre(ZCOMPLEX{5, 6}, ZCOMPLEX{7, 8}));
}

TEST_F(Matrices, NormsOfASmallMatrix) {
  const auto A = mat(2, 3, {1, -2, 3, -4, 5, -6});
  EXPECT_EQ(LM_m_norm1(A.get(), 0, nullptr, &status), 9);
  EXPECT_EQ(LM_m_norm_inf(A.get(), 0, nullptr, &status), 15);
  EXPECT_DOUBLE_EQ(LM_m_norm_frob(A.get(), 0, nullptr, &status), std::sqrt(91.0));
  auto Z = zmat(1, 2);
  Z->me[0][0] = {3, 4};
  Z->me[0][1] = {0, 12};
  EXPECT_EQ(LM_zm_norm1(Z.get(), 0, nullptr, &status), 12);
  EXPECT_EQ(LM_zm_norm_inf(Z.get(), 0, nullptr, &status), 17);
  EXPECT_EQ(LM_zm_norm_frob(Z.get(), 0, nullptr, &status), 13);
  EXPECT_EQ(LM_m_norm_frob(mat(0, 0).get(), 0, nullptr, &status), 0);
  const auto big = mat(2, 1, {3e300, 4e300});
  EXPECT_DOUBLE_EQ(LM_m_norm_frob(big.get(), 0, nullptr, &status), 5e300);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(std::isnan(LM_m_norm1(mat(1, 2, {nan, 1}).get(), 0, nullptr, &status)));
}

TEST_F(Matrices, NormsOfWideMatricesMatchTheDefinition) {
  Random random(9);
  const auto A = wide<MAT>(random, 30, 200);
  double largest = 0;
  for (int j = 0; j < 200; ++j) {
    double sum = 0;
    for (int i = 0; i < 30; ++i)
      sum += std::fabs(A->me[i][j]);
    largest = std::max(largest, sum);
  }
  EXPECT_DOUBLE_EQ(LM_m_norm1(A.get(), 0, nullptr, &status), largest);
}

TEST_F(Matrices, CopyAndMoveOfBlocks) {
  const auto A = mat(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  auto out = mat(3, 3, std::vector<double>(9, 0.5));
  LM__m_copy(A.get(), out.get(), 1, 2, 0, nullptr, &status);
  EXPECT_THAT(list(out.get()), ElementsAre(.5, .5, .5, .5, .5, 6, .5, .5, 9));
  EXPECT_FAILS(2, LM__m_copy(A.get(), out.get(), 4, 0, 0, nullptr, &status));
  EXPECT_FAILS(2, LM__m_copy(A.get(), out.get(), 0, -1, 0, nullptr, &status));
  const auto empty = own(LM__m_copy(mat(3, 0).get(), nullptr, 0, 0, 0, nullptr, &status));
  EXPECT_EQ(empty->m, 3u);
  EXPECT_EQ(empty->n, 0u);
  MAT* B = LM_m_move(A.get(), 1, 0, 2, 2, nullptr, 1, 2, 0, nullptr, &status);
  EXPECT_EQ(B->m, 3u);
  EXPECT_EQ(B->n, 4u);
  EXPECT_THAT(list(B), ElementsAre(0, 0, 0, 0, 0, 0, 4, 5, 0, 0, 7, 8));
  LM_m_move(B, 0, 2, 3, 2, B, 1, 1, 0, nullptr, &status); // downwards, overlapping, growing
  EXPECT_THAT(list(B), ElementsAre(0, 0, 0, 0, 0, 0, 0, 5, 0, 4, 5, 8, 0, 7, 8, 0));
  LM_m_move(B, 1, 1, 3, 3, B, 0, 0, 0, nullptr, &status); // upwards
  EXPECT_THAT(list(B), ElementsAre(0, 0, 5, 0, 4, 5, 8, 5, 7, 8, 0, 8, 0, 7, 8, 0));
  EXPECT_FAILS(20, LM_m_move(A.get(), 0, 0, -1, 1, B, 0, 0, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_m_move(A.get(), 2, 0, 2, 1, B, 0, 0, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_m_move(A.get(), 0, 3, 1, 1, B, 0, 0, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_m_move(A.get(), 0, 0, 1, 1, B, -1, 0, 0, nullptr, &status));
  m_free(B);
}

TEST_F(Matrices, BlocksMoveToVectorsAndBack) {
  const auto A = mat(2, 3, {1, 2, 3, 4, 5, 6});
  const auto x = own(LM_mv_move(A.get(), 0, 1, 2, 2, nullptr, 1, 0, nullptr, &status));
  EXPECT_THAT(list(x.get()), ElementsAre(0, 2, 3, 5, 6));
  const auto B = own(LM_vm_move(x.get(), 1, nullptr, 0, 1, 2, 2, 0, nullptr, &status));
  EXPECT_THAT(list(B.get()), ElementsAre(0, 2, 3, 0, 5, 6));
  EXPECT_FAILS(2, LM_vm_move(x.get(), 2, nullptr, 0, 0, 2, 2, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_mv_move(A.get(), 0, 2, 1, 2, nullptr, 0, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_vm_move(x.get(), 0, nullptr, 0, 0, 1, -1, 0, nullptr, &status));
  Random random(10);
  const auto Z = wide<ZMAT>(random, 3, 2);
  const auto z = own(LM_zmv_move(Z.get(), 0, 0, 3, 2, nullptr, 0, 0, nullptr, &status));
  EXPECT_EQ(list(z.get()), list(Z.get()));
  const auto W = own(LM_zvm_move(z.get(), 0, nullptr, 0, 0, 3, 2, 0, nullptr, &status));
  EXPECT_EQ(list(W.get()), list(Z.get()));
  const auto V = own(LM_zm_move(Z.get(), 1, 0, 1, 2, nullptr, 0, 0, 0, nullptr, &status));
  EXPECT_THAT(list(V.get()), ElementsAre(Z->me[1][0], Z->me[1][1]));
  const auto U = own(LM__zm_copy(Z.get(), nullptr, 0, 0, 0, nullptr, &status));
  EXPECT_EQ(list(U.get()), list(Z.get()));
}

TEST_F(Matrices, FillStaysWithinTheColumns) {
  Random random(11);
  auto A = wide<MAT>(random, 2, 3);
  const double beyond = A->me[0][3];
  EXPECT_THAT(list(LM_m_ones(A.get(), 0, nullptr, &status)), Each(1));
  EXPECT_THAT(list(LM_m_zero(A.get(), 0, nullptr, &status)), Each(0));
  EXPECT_THAT(list(LM_m_ident(A.get(), 0, nullptr, &status)), ElementsAre(1, 0, 0, 0, 1, 0));
  EXPECT_EQ(A->me[0][3], beyond);
  smrand(1);
  LM_m_rand(A.get(), 0, nullptr, &status);
  for (int rest = 6; rest < 55; ++rest)
    mrand();
  smrand(1);
  for (const double x : list(A.get()))
    EXPECT_EQ(x, mrand());
  for (int rest = 6; rest < 55; ++rest)
    mrand();
  auto Z = wide<ZMAT>(random, 2, 2);
  LM_zm_rand(Z.get(), 0, nullptr, &status);
  EXPECT_GT(Z->me[1][1].im, 0);
  EXPECT_THAT(list(LM_zm_zero(Z.get(), 0, nullptr, &status)), Each(ZCOMPLEX{0, 0}));
}

class Permutations : public Kernel {};

TEST_F(Permutations, InverseProductAndSign) {
  const auto p = perm({2, 0, 3, 1});
  const auto inverse = own(LM_px_inv(p.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(inverse.get()), ElementsAre(1, 3, 0, 2));
  const auto one = own(LM_px_mlt(p.get(), inverse.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(one.get()), ElementsAre(0, 1, 2, 3));
  auto q = perm({2, 0, 3, 1});
  LM_px_inv(q.get(), q.get(), 0, nullptr, &status); // in place
  EXPECT_EQ(list(q.get()), list(inverse.get()));
  EXPECT_EQ(LM_px_sign(p.get(), 0, nullptr, &status), -1); // one cycle of four
  EXPECT_EQ(LM_px_sign(perm({1, 2, 0}).get(), 0, nullptr, &status), 1);
  EXPECT_EQ(LM_px_sign(perm({}).get(), 0, nullptr, &status), 1);
  EXPECT_THAT(list(LM_px_ident(q.get(), 0, nullptr, &status)), ElementsAre(0, 1, 2, 3));
  LM_px_transp(q.get(), 1, 3, 0, nullptr, &status);
  EXPECT_THAT(list(q.get()), ElementsAre(0, 3, 2, 1));
  EXPECT_THAT(list(own(LM_px_copy(q.get(), nullptr, 0, nullptr, &status)).get()),
              ElementsAre(0, 3, 2, 1));
}

// The sign by counting inversions, over all permutations of six.
TEST_F(Permutations, SignCountsInversions) {
  std::vector<unsigned> p = {0, 1, 2, 3, 4, 5};
  do {
    int inversions = 0;
    for (int i = 0; i < 6; ++i)
      for (int j = i + 1; j < 6; ++j)
        inversions += p[i] > p[j];
    ASSERT_EQ(LM_px_sign(perm(p).get(), 0, nullptr, &status), inversions % 2 ? -1 : 1);
  } while (std::next_permutation(p.begin(), p.end()));
}

TEST_F(Permutations, ApplyToVectorsAndUndo) {
  const auto p = perm({2, 0, 1});
  auto x = vec({10, 20, 30});
  const auto y = own(LM_px_vec(p.get(), x.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(y.get()), ElementsAre(30, 10, 20));
  const auto back = own(LM_pxinv_vec(p.get(), y.get(), nullptr, 0, nullptr, &status));
  EXPECT_EQ(list(back.get()), list(x.get()));
  LM_px_vec(p.get(), x.get(), x.get(), 0, nullptr, &status); // in place
  EXPECT_EQ(list(x.get()), list(y.get()));
  LM_pxinv_vec(p.get(), x.get(), x.get(), 0, nullptr, &status);
  EXPECT_THAT(list(x.get()), ElementsAre(10, 20, 30));
  auto z = zvec({{1, 0}, {2, 0}, {3, 1}});
  const auto w = own(LM_px_zvec(p.get(), z.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(w.get()), ElementsAre(ZCOMPLEX{3, 1}, ZCOMPLEX{1, 0}, ZCOMPLEX{2, 0}));
  LM_pxinv_zvec(p.get(), w.get(), w.get(), 0, nullptr, &status);
  EXPECT_EQ(list(w.get()), list(z.get()));
}

TEST_F(Permutations, ProductAppliesTheFirstThenTheSecond) {
  const auto p = perm({2, 0, 3, 1}), q = perm({1, 0, 3, 2});
  const auto x = vec({10, 20, 30, 40});
  const auto both = own(LM_px_mlt(p.get(), q.get(), nullptr, 0, nullptr, &status));
  auto steps = own(LM_px_vec(p.get(), x.get(), nullptr, 0, nullptr, &status));
  LM_px_vec(q.get(), steps.get(), steps.get(), 0, nullptr, &status);
  EXPECT_EQ(list(own(LM_px_vec(both.get(), x.get(), nullptr, 0, nullptr, &status)).get()),
            list(steps.get()));
}

TEST_F(Permutations, ApplyToRowsAndColumns) {
  const auto p = perm({2, 0, 1});
  auto A = mat(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_THAT(list(own(LM_px_rows(p.get(), A.get(), nullptr, 0, nullptr, &status)).get()),
              ElementsAre(7, 8, 9, 1, 2, 3, 4, 5, 6));
  EXPECT_THAT(list(own(LM_px_cols(p.get(), A.get(), nullptr, 0, nullptr, &status)).get()),
              ElementsAre(3, 1, 2, 6, 4, 5, 9, 7, 8));
  LM_px_rows(p.get(), A.get(), A.get(), 0, nullptr, &status);
  LM_px_cols(p.get(), A.get(), A.get(), 0, nullptr, &status);
  EXPECT_THAT(list(A.get()), ElementsAre(9, 7, 8, 3, 1, 2, 6, 4, 5));
}

TEST_F(Permutations, WrongOnesAreRefused) {
  const auto p = perm({0, 1}), out = perm({0, 2}), twice = perm({1, 1});
  auto x = vec({1, 2, 3}), y = vec({1, 2});
  auto A = mat(3, 3);
  EXPECT_FAILS(1, LM_px_vec(p.get(), x.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_pxinv_vec(p.get(), x.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_px_mlt(p.get(), perm({0}).get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_px_rows(p.get(), A.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_px_cols(p.get(), A.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_vec(out.get(), y.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_pxinv_vec(out.get(), y.get(), y.get(), 0, nullptr, &status));
  EXPECT_FAILS(2, LM_pxinv_vec(twice.get(), y.get(), y.get(), 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_inv(twice.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_inv(out.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_sign(twice.get(), 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_mlt(out.get(), p.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_mlt(p.get(), out.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_cols(perm({0, 1, 3}).get(), A.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(12, LM_px_mlt(twice.get(), p.get(), p.get(), 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_transp(p.get(), 0, 2, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_transp(p.get(), -1, 0, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_px_rows(perm({0, 1, 3}).get(), A.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(12, LM_px_mlt(p.get(), twice.get(), p.get(), 0, nullptr, &status));
  EXPECT_FAILS(8, LM_px_vec(nullptr, y.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_px_ident(nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(y.get()), ElementsAre(1, 2));
}

} // namespace
