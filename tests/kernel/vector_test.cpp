#include "kernel/records.h"

#include <cmath>
#include <limits>

#include <zarel/mrand.h>

using namespace kernel;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();
constexpr int intMax = std::numeric_limits<int>::max();

class Vectors : public Kernel {};

TEST_F(Vectors, SumsAndMultiples) {
  const auto x = vec({1, 2, 3}), y = vec({10, -20, 30});
  VEC* out = nullptr;
  out = LM_v_add(x.get(), y.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(11, -18, 33));
  out = LM_v_sub(x.get(), y.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(-9, 22, -27));
  out = LM_sv_mlt(-2, x.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(-2, -4, -6));
  out = LM_v_mltadd(x.get(), y.get(), 0.5, out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(6, -8, 18));
  out = LM_v_star(x.get(), y.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(10, -40, 90));
  out = LM_v_slash(y.get(), x.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(10, -10, 10));
  EXPECT_EQ(status, 0);
  v_free(out);
}

TEST_F(Vectors, ComplexSumsAndMultiples) {
  const auto x = zvec({{1, 2}, {3, 4}}), y = zvec({{0, 1}, {-2, 0}});
  ZVEC* out = nullptr;
  out = LM_zv_add(x.get(), y.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(ZCOMPLEX{1, 3}, ZCOMPLEX{1, 4}));
  out = LM_zv_sub(x.get(), y.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(ZCOMPLEX{1, 1}, ZCOMPLEX{5, 4}));
  out = LM_zv_mlt({0, 2}, x.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(ZCOMPLEX{-4, 2}, ZCOMPLEX{-8, 6}));
  out = LM_zv_mltadd(x.get(), y.get(), {0, 1}, out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(ZCOMPLEX{0, 2}, ZCOMPLEX{3, 2}));
  out = LM_zv_star(x.get(), y.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(ZCOMPLEX{-2, 1}, ZCOMPLEX{-6, -8}));
  out = LM_zv_slash(x.get(), y.get(), out, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(ZCOMPLEX{2, -1}, ZCOMPLEX{-1.5, -2}));
  zv_free(out);
}

TEST_F(Vectors, OutputMayBeAnInput) {
  auto x = vec({1, 2, 3});
  const auto y = vec({4, 5, 6});
  EXPECT_EQ(LM_v_mltadd(x.get(), y.get(), 2, x.get(), 0, nullptr, &status), x.get());
  EXPECT_THAT(list(x.get()), ElementsAre(9, 12, 15));
  LM_v_sub(y.get(), x.get(), x.get(), 0, nullptr, &status);
  EXPECT_THAT(list(x.get()), ElementsAre(-5, -7, -9));
}

TEST_F(Vectors, DifferentLengthsAreError1) {
  const auto x = vec({1, 2}), y = vec({1, 2, 3});
  const auto zx = zvec({{1, 2}}), zy = zvec({{1, 0}, {2, 0}});
  const auto ix = ivec({1}), iy = ivec({1, 2});
  const auto lx = lvec({1}), ly = lvec({1, 2});
  auto out = vec({7});
  EXPECT_FAILS(1, LM_v_add(x.get(), y.get(), out.get(), 0, nullptr, &status));
  EXPECT_FAILS(1, LM_v_sub(x.get(), y.get(), out.get(), 0, nullptr, &status));
  EXPECT_FAILS(1, LM_v_mltadd(x.get(), y.get(), 1, out.get(), 0, nullptr, &status));
  EXPECT_FAILS(1, LM_v_star(x.get(), y.get(), out.get(), 0, nullptr, &status));
  EXPECT_FAILS(1, LM_v_slash(x.get(), y.get(), out.get(), 0, nullptr, &status));
  EXPECT_FAILS(1, LM_zv_add(zx.get(), zy.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_zv_slash(zx.get(), zy.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_iv_add(ix.get(), iy.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_lv_sub(lx.get(), ly.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM__in_prod(x.get(), y.get(), 0, 0, nullptr, &status));
  EXPECT_FAILS(1, LM__v_norm2(x.get(), y.get(), 0, nullptr, &status));
  EXPECT_THAT(list(out.get()), ElementsAre(7));
}

TEST_F(Vectors, NullArgumentsAreError8) {
  const auto x = vec({1});
  EXPECT_FAILS(8, LM_v_add(x.get(), nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_sub(nullptr, x.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_sv_mlt(1, nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_map(nullptr, x.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM__v_map(nullptr, nullptr, x.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_max(nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_sort(nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_zero(nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_rand(nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM__v_copy(nullptr, nullptr, 0, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_move(nullptr, 0, 0, nullptr, 0, 0, nullptr, &status));
  EXPECT_FAILS(8, LM__v_norm1(nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_iv_cmp(nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_zv_linlist(nullptr, 0, nullptr, &status, nullptr, ZCOMPLEX{1, 0}));
}

TEST_F(Vectors, SlashRefusesAZeroAndChangesNothing) {
  auto x = vec({1, 2, 3});
  const auto y = vec({1, 0, 1});
  EXPECT_FAILS(4, LM_v_slash(x.get(), y.get(), x.get(), 0, nullptr, &status));
  EXPECT_THAT(list(x.get()), ElementsAre(1, 2, 3));
  auto z = zvec({{1, 0}});
  const auto zero = zvec({{0, 0}});
  EXPECT_FAILS(4, LM_zv_slash(z.get(), zero.get(), nullptr, 0, nullptr, &status));
  const auto imaginary = zvec({{0, 2}});
  const auto quotient = own(LM_zv_slash(z.get(), imaginary.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(quotient.get()), ElementsAre(ZCOMPLEX{0, -0.5}));
}

// Longer than a piece of the sum, and with the output among the terms.
TEST_F(Vectors, LinearCombinationMatchesItsTerms) {
  const int n = 700;
  Random random(1);
  std::vector<Own<VEC>> terms;
  std::vector<const VEC*> pointers;
  const std::vector<double> a = {2, -1, 0.5};
  for (int k = 0; k < 3; ++k) {
    terms.push_back(vec(std::vector<double>(n)));
    random.fill(terms.back()->ve, n);
    pointers.push_back(terms.back().get());
  }
  std::vector<double> expected(n);
  for (int i = 0; i < n; ++i)
    expected[i] = 2 * terms[0]->ve[i] - terms[1]->ve[i] + 0.5 * terms[2]->ve[i];
  VEC* const out = LM_v_lincomb(3, pointers.data(), a.data(), terms[1].get(), 0, nullptr, &status);
  EXPECT_EQ(out, terms[1].get());
  for (int i = 0; i < n; ++i)
    ASSERT_NEAR(out->ve[i], expected[i], 1e-15);
}

TEST_F(Vectors, LinearCombinationTestsItsTerms) {
  const auto x = vec({1, 2}), y = vec({1});
  const VEC* pair[] = {x.get(), y.get()};
  const VEC* hole[] = {x.get(), nullptr};
  const double a[] = {1, 1};
  EXPECT_FAILS(20, LM_v_lincomb(-1, pair, a, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_v_lincomb(0, pair, a, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_v_lincomb(2, pair, a, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_lincomb(2, hole, a, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_lincomb(1, nullptr, a, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_v_lincomb(1, pair, nullptr, nullptr, 0, nullptr, &status));
}

TEST_F(Vectors, ComplexCombinationsByArrayAndByList) {
  const auto x = zvec({{1, 0}, {0, 1}}), y = zvec({{2, 0}, {0, 2}});
  const ZVEC* terms[] = {x.get(), y.get()};
  const ZCOMPLEX a[] = {{0, 1}, {1, 0}};
  const auto sum = own(LM_zv_lincomb(2, terms, a, nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(sum.get()), ElementsAre(ZCOMPLEX{2, 1}, ZCOMPLEX{-1, 2}));
  const auto listed =
      own(LM_zv_linlist(nullptr, 0, nullptr, &status, x.get(), a[0],
                        static_cast<const ZVEC*>(y.get()), a[1], (const ZVEC*)nullptr));
  EXPECT_EQ(list(listed.get()), list(sum.get()));
  const auto shorter = zvec({{1, 0}});
  EXPECT_FAILS(1,
               LM_zv_linlist(nullptr, 0, nullptr, &status, x.get(), a[0],
                             static_cast<const ZVEC*>(shorter.get()), a[1], (const ZVEC*)nullptr));
}

TEST_F(Vectors, MapsCallTheFunctionForEachEntry) {
  const auto x = vec({1, 4, 9});
  const auto roots =
      own(LM_v_map([](double v) { return std::sqrt(v); }, x.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(roots.get()), ElementsAre(1, 2, 3));
  double shift = 10;
  const auto shifted =
      own(LM__v_map([](void* by, double v) { return v + *static_cast<double*>(by); }, &shift,
                    x.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(shifted.get()), ElementsAre(11, 14, 19));
  const auto z = zvec({{1, 2}});
  const auto turned = own(LM_zv_map(
      [](ZCOMPLEX v) {
        return ZCOMPLEX{-v.im, v.re};
      },
      z.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(turned.get()), ElementsAre(ZCOMPLEX{-2, 1}));
  const auto raised = own(LM__zv_map(
      [](void* by, ZCOMPLEX v) {
        return ZCOMPLEX{v.re + *static_cast<double*>(by), v.im};
      },
      &shift, z.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(raised.get()), ElementsAre(ZCOMPLEX{11, 2}));
}

TEST_F(Vectors, LargestAndSmallestTellTheFirstPlace) {
  const auto x = vec({nan, 3, -1, 3, nan, -1});
  int place = 99;
  EXPECT_EQ(LM_v_max(x.get(), &place, 0, nullptr, &status), 3);
  EXPECT_EQ(place, 1);
  EXPECT_EQ(LM_v_min(x.get(), &place, 0, nullptr, &status), -1);
  EXPECT_EQ(place, 2);
  EXPECT_EQ(LM_v_min(x.get(), nullptr, 0, nullptr, &status), -1);
  EXPECT_FAILS(1, LM_v_max(vec({}).get(), &place, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_iv_max(ivec({}).get(), &place, 0, nullptr, &status));
}

TEST_F(Vectors, SumsAndInnerProducts) {
  const auto x = vec({1, 2, 3, 4, 5}), y = vec({1, 10, 100, 1000, 10000});
  EXPECT_EQ(LM_v_sum(x.get(), 0, nullptr, &status), 15);
  EXPECT_EQ(LM__in_prod(x.get(), y.get(), 0, 0, nullptr, &status), 54321);
  EXPECT_EQ(LM__in_prod(x.get(), y.get(), 3, 0, nullptr, &status), 54000);
  EXPECT_EQ(LM__in_prod(x.get(), y.get(), 5, 0, nullptr, &status), 0);
  EXPECT_EQ(status, 0);
  EXPECT_FAILS(2, LM__in_prod(x.get(), y.get(), 6, 0, nullptr, &status));
  EXPECT_FAILS(2, LM__in_prod(x.get(), y.get(), -1, 0, nullptr, &status));
  const auto a = zvec({{1, 2}, {3, 4}}), b = zvec({{5, 6}, {7, 8}});
  EXPECT_EQ(LM__zin_prod(a.get(), b.get(), 0, LM_NOCONJ, 0, nullptr, &status), (ZCOMPLEX{-18, 68}));
  EXPECT_EQ(LM__zin_prod(a.get(), b.get(), 0, LM_CONJ, 0, nullptr, &status), (ZCOMPLEX{70, -8}));
  EXPECT_EQ(LM__zin_prod(a.get(), b.get(), 1, LM_CONJ, 0, nullptr, &status), (ZCOMPLEX{53, -4}));
  EXPECT_EQ(LM_zv_sum(a.get(), 0, nullptr, &status), (ZCOMPLEX{4, 6}));
}

TEST_F(Vectors, SortGivesThePermutation) {
  auto x = vec({3, nan, -1, 3, 2});
  auto order = perm({0});
  EXPECT_EQ(LM_v_sort(x.get(), order.get(), 0, nullptr, &status), x.get());
  EXPECT_THAT(std::vector<double>(x->ve, x->ve + 4), ElementsAre(-1, 2, 3, 3));
  EXPECT_TRUE(std::isnan(x->ve[4]));
  EXPECT_THAT(list(order.get()), ElementsAre(2, 4, 0, 3, 1));
  auto z = zvec({{1, 5}, {0, 9}, {1, -5}, {nan, 0}, {1, nan}});
  LM_zv_sort(z.get(), order.get(), 0, nullptr, &status);
  EXPECT_THAT(list(order.get()), ElementsAre(1, 2, 0, 4, 3));
  auto i = ivec({5, -3, 5, 0});
  LM_iv_sort(i.get(), order.get(), 0, nullptr, &status);
  EXPECT_THAT(list(i.get()), ElementsAre(-3, 0, 5, 5));
  EXPECT_THAT(list(order.get()), ElementsAre(1, 3, 0, 2));
  auto l = lvec({2, 1});
  LM_lv_sort(l.get(), nullptr, 0, nullptr, &status);
  EXPECT_THAT(list(l.get()), ElementsAre(1, 2));
}

TEST_F(Vectors, SortedWithOrderIsSortedWithout) {
  Random random(2);
  for (int n = 0; n < 40; ++n) {
    auto x = vec(std::vector<double>(n)), y = vec(std::vector<double>(n));
    random.fill(x->ve, n);
    for (int i = 0; i < n; ++i)
      y->ve[i] = x->ve[i] = std::floor(4 * x->ve[i]);
    const auto old = list(x.get());
    auto order = perm({});
    LM_v_sort(x.get(), order.get(), 0, nullptr, &status);
    LM_v_sort(y.get(), nullptr, 0, nullptr, &status);
    ASSERT_EQ(list(x.get()), list(y.get()));
    ASSERT_EQ(order->size, static_cast<unsigned>(n));
    for (int i = 0; i < n; ++i)
      ASSERT_EQ(old[order->pe[i]], x->ve[i]);
  }
}

TEST_F(Vectors, NormsWithAndWithoutScale) {
  const auto x = vec({3, -4}), scale = vec({3, 0}), z = vec({0, 0});
  EXPECT_EQ(LM__v_norm1(x.get(), nullptr, 0, nullptr, &status), 7);
  EXPECT_EQ(LM__v_norm2(x.get(), nullptr, 0, nullptr, &status), 5);
  EXPECT_EQ(LM__v_norm_inf(x.get(), nullptr, 0, nullptr, &status), 4);
  EXPECT_EQ(LM__v_norm1(x.get(), scale.get(), 0, nullptr, &status), 5); // 0 counts as 1
  EXPECT_NEAR(LM__v_norm2(x.get(), scale.get(), 0, nullptr, &status), std::sqrt(17.0), 1e-14);
  EXPECT_EQ(LM__v_norm_inf(x.get(), scale.get(), 0, nullptr, &status), 4);
  EXPECT_EQ(LM__v_norm2(z.get(), scale.get(), 0, nullptr, &status), 0);
  const auto c = zvec({{3, 4}, {0, -12}});
  EXPECT_EQ(LM__zv_norm1(c.get(), nullptr, 0, nullptr, &status), 17);
  EXPECT_EQ(LM__zv_norm2(c.get(), nullptr, 0, nullptr, &status), 13);
  EXPECT_EQ(LM__zv_norm_inf(c.get(), nullptr, 0, nullptr, &status), 12);
  const auto five = vec({5, 12});
  EXPECT_NEAR(LM__zv_norm2(c.get(), five.get(), 0, nullptr, &status), std::sqrt(2.0), 1e-15);
  EXPECT_EQ(LM__v_norm2(vec({}).get(), nullptr, 0, nullptr, &status), 0);
}

TEST_F(Vectors, NormsDoNotOverflow) {
  const auto x = vec({3e300, 4e300}), ones = vec({1, 1}), y = vec({3e-320, 4e-320});
  EXPECT_NEAR(LM__v_norm2(x.get(), nullptr, 0, nullptr, &status) / 5e300, 1, 1e-15);
  EXPECT_NEAR(LM__v_norm2(x.get(), ones.get(), 0, nullptr, &status) / 5e300, 1, 1e-15);
  EXPECT_GT(LM__v_norm2(y.get(), ones.get(), 0, nullptr, &status), 0);
  const auto huge = vec({1, -inf});
  EXPECT_EQ(LM__v_norm2(huge.get(), ones.get(), 0, nullptr, &status), inf);
}

TEST_F(Vectors, CopyBeginsAtAnIndex) {
  const auto x = vec({1, 2, 3, 4});
  auto out = vec({9, 9, 9, 9});
  LM__v_copy(x.get(), out.get(), 2, 0, nullptr, &status);
  EXPECT_THAT(list(out.get()), ElementsAre(9, 9, 3, 4));
  LM__v_copy(x.get(), out.get(), 4, 0, nullptr, &status);
  EXPECT_THAT(list(out.get()), ElementsAre(9, 9, 3, 4));
  EXPECT_EQ(status, 0);
  EXPECT_FAILS(2, LM__v_copy(x.get(), out.get(), 5, 0, nullptr, &status));
  EXPECT_FAILS(2, LM__v_copy(x.get(), out.get(), -1, 0, nullptr, &status));
  EXPECT_EQ(LM__v_copy(x.get(), const_cast<VEC*>(x.get()), 0, 0, nullptr, &status), x.get());
  EXPECT_THAT(list(own(LM__v_copy(vec({}).get(), nullptr, 0, 0, nullptr, &status)).get()),
              IsEmpty());
  EXPECT_THAT(list(own(LM_iv_copy(ivec({1, 2}).get(), nullptr, 0, nullptr, &status)).get()),
              ElementsAre(1, 2));
  EXPECT_THAT(list(own(LM_lv_copy(lvec({1, 2}).get(), nullptr, 0, nullptr, &status)).get()),
              ElementsAre(1, 2));
  EXPECT_THAT(list(own(LM__zv_copy(zvec({{1, 2}}).get(), nullptr, 0, 0, nullptr, &status)).get()),
              ElementsAre(ZCOMPLEX{1, 2}));
}

TEST_F(Vectors, MoveReachesBehindTheEndAndOverlaps) {
  const auto x = vec({1, 2, 3, 4});
  VEC* out = LM_v_move(x.get(), 1, 2, nullptr, 3, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(0, 0, 0, 2, 3));
  LM_v_move(x.get(), 0, 1, out, 0, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(1, 0, 0, 2, 3));
  LM_v_move(out, 0, 5, out, 2, 0, nullptr, &status); // grows and overlaps
  EXPECT_THAT(list(out), ElementsAre(1, 0, 1, 0, 0, 2, 3));
  LM_v_move(out, 2, 5, out, 0, 0, nullptr, &status);
  EXPECT_THAT(list(out), ElementsAre(1, 0, 0, 2, 3, 2, 3));
  LM_v_move(x.get(), 4, 0, out, 0, 0, nullptr, &status);
  EXPECT_EQ(status, 0);
  EXPECT_FAILS(20, LM_v_move(x.get(), 0, -1, out, 0, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_v_move(x.get(), 3, 2, out, 0, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_v_move(x.get(), -1, 1, out, 0, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_v_move(x.get(), 0, 1, out, -1, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_v_move(x.get(), 0, 1, out, intMax, 0, nullptr, &status));
  EXPECT_EQ(out->dim, 7u);
  v_free(out);
  EXPECT_THAT(
      list(own(LM_iv_move(ivec({1, 2}).get(), 1, 1, nullptr, 1, 0, nullptr, &status)).get()),
      ElementsAre(0, 2));
  EXPECT_THAT(
      list(own(LM_lv_move(lvec({1, 2}).get(), 1, 1, nullptr, 1, 0, nullptr, &status)).get()),
      ElementsAre(0, 2));
  EXPECT_THAT(
      list(own(LM_zv_move(zvec({{1, 2}}).get(), 0, 1, nullptr, 1, 0, nullptr, &status)).get()),
      ElementsAre(ZCOMPLEX{0, 0}, ZCOMPLEX{1, 2}));
}

TEST_F(Vectors, FillAndRandom) {
  auto x = vec({1, 2});
  EXPECT_THAT(list(LM_v_ones(x.get(), 0, nullptr, &status)), Each(1));
  EXPECT_THAT(list(LM_v_zero(x.get(), 0, nullptr, &status)), Each(0));
  const auto i = ivec({4});
  EXPECT_THAT(list(LM_iv_zero(i.get(), 0, nullptr, &status)), Each(0));
  auto z = zvec({{1, 2}, {3, 4}});
  smrand(11);
  LM_zv_rand(z.get(), 0, nullptr, &status);
  for (int rest = 4; rest < 55; ++rest)
    mrand(); // the generator's cursors back to their place
  smrand(11);
  auto four = vec({0, 0, 0, 0});
  LM_v_rand(four.get(), 0, nullptr, &status);
  for (int rest = 4; rest < 55; ++rest)
    mrand();
  EXPECT_THAT(list(four.get()), ElementsAre(z->ve[0].re, z->ve[0].im, z->ve[1].re, z->ve[1].im));
  EXPECT_THAT(list(LM_zv_zero(z.get(), 0, nullptr, &status)), Each(ZCOMPLEX{0, 0}));
}

TEST_F(Vectors, IntegersWrapAndCompare) {
  const auto x = ivec({intMax, 1}), y = ivec({1, 2});
  EXPECT_THAT(list(own(LM_iv_add(x.get(), y.get(), nullptr, 0, nullptr, &status)).get()),
              ElementsAre(-intMax - 1, 3));
  EXPECT_THAT(list(own(LM_iv_sub(y.get(), x.get(), nullptr, 0, nullptr, &status)).get()),
              ElementsAre(2 - intMax - 1, 1));
  const auto lx = lvec({5}), ly = lvec({3});
  EXPECT_THAT(list(own(LM_lv_add(lx.get(), ly.get(), nullptr, 0, nullptr, &status)).get()),
              ElementsAre(8));
  EXPECT_THAT(list(own(LM_lv_sub(lx.get(), ly.get(), nullptr, 0, nullptr, &status)).get()),
              ElementsAre(2));
  const auto cmp = [this](const std::vector<int>& a, const std::vector<int>& b) {
    return LM_iv_cmp(ivec(a).get(), ivec(b).get(), 0, nullptr, &status);
  };
  EXPECT_EQ(cmp({1, 2}, {1, 2}), 0);
  EXPECT_EQ(cmp({1, 2}, {1, 3}), -1);
  EXPECT_EQ(cmp({2, 0}, {1, 3}), 1);
  EXPECT_EQ(cmp({1}, {1, 3}), -1);
  EXPECT_EQ(cmp({1, 3}, {1}), 1);
  int place = 9;
  EXPECT_EQ(LM_iv_max(ivec({-5, -2, -2}).get(), &place, 0, nullptr, &status), -2);
  EXPECT_EQ(place, 1);
  EXPECT_EQ(LM_iv_sum(ivec({intMax, intMax}).get(), 0, nullptr, &status), 2LL * intMax);
}

TEST_F(Vectors, RawLoopsDoWhatTheySay) {
  const double a[] = {1, 2, 3, 4, 5}, b[] = {5, 4, 3, 2, 1};
  double out[5];
  _add__(a, b, out, 5);
  EXPECT_THAT(out, Each(6));
  _sub__(a, b, out, 5);
  EXPECT_THAT(out, ElementsAre(-4, -2, 0, 2, 4));
  _smlt__(a, 3, out, 5);
  EXPECT_THAT(out, ElementsAre(3, 6, 9, 12, 15));
  _mltadd__(out, b, -1, 5);
  EXPECT_THAT(out, ElementsAre(-2, 2, 6, 10, 14));
  EXPECT_EQ(_ip__(a, b, 5), 35);
  EXPECT_EQ(_ip__(a, b, 0), 0);
  _zero__(out, 4);
  EXPECT_THAT(out, ElementsAre(0, 0, 0, 0, 14));
  _zero__(out, -1);
  int i[] = {1, 2};
  _izero__(i, 1);
  EXPECT_THAT(i, ElementsAre(0, 2));
  const ZCOMPLEX x[] = {{1, 2}}, y[] = {{3, -4}};
  ZCOMPLEX z[1];
  _zadd__(x, y, z, 1);
  EXPECT_EQ(z[0], (ZCOMPLEX{4, -2}));
  _zsub__(x, y, z, 1);
  EXPECT_EQ(z[0], (ZCOMPLEX{-2, 6}));
  _zmlt__(x, {0, 1}, z, 1);
  EXPECT_EQ(z[0], (ZCOMPLEX{-2, 1}));
  _zmltadd__(z, y, {1, 1}, 1, LM_NOCONJ);
  EXPECT_EQ(z[0], (ZCOMPLEX{5, 0}));
  _zmltadd__(z, y, {1, 1}, 1, LM_CONJ);
  EXPECT_EQ(z[0], (ZCOMPLEX{4, 7}));
  _zconj__(z, 1);
  EXPECT_EQ(z[0], (ZCOMPLEX{4, -7}));
  EXPECT_EQ(_zip__(x, y, 1, LM_NOCONJ), (ZCOMPLEX{11, 2}));
  EXPECT_EQ(_zip__(x, y, 1, LM_CONJ), (ZCOMPLEX{-5, -10}));
  _zzero__(z, 1);
  EXPECT_EQ(z[0], (ZCOMPLEX{0, 0}));
}

} // namespace
