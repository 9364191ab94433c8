// The generator against std::mt19937 and the outputs that its authors published.
#include <random>

#include <zarel/C_RandNum.h>
#include <zarel/C_VecRand.h>

#include "containers/OffCore.h"
#include "containers/support.h"

namespace {

double unit(std::uint32_t y) {
  return (y + 0.5) / 4294967296.0;
}

std::vector<double> drawn(C_RandNum& generator, int count) {
  std::vector<double> values(static_cast<std::size_t>(count), -1.0);
  EXPECT_EQ(generator.GetRandNum(count, values.data()), 0);
  return values;
}

TEST(RandNum, FollowsTheStandardGeneratorFromASeed) {
  for (unsigned int seed : {1U, 5489U, 4294967295U}) {
    C_RandNum generator;
    std::mt19937 reference(seed);
    ASSERT_EQ(generator.Init(E_SeedUser, seed), 0);

    for (double value : drawn(generator, 5000))
      ASSERT_EQ(value, unit(static_cast<std::uint32_t>(reference())));
  }
}

TEST(RandNum, DefaultSeedIs123457) {
  C_RandNum generator;
  std::mt19937 reference(123457);
  unsigned int seed = 0;

  EXPECT_EQ(generator.Init(E_SeedDefault, 99), 0);

  EXPECT_EQ(generator.GetSeed(seed), 0);
  EXPECT_EQ(seed, 123457U);
  EXPECT_EQ(drawn(generator, 1)[0], unit(static_cast<std::uint32_t>(reference())));
}

// The first outputs of the authors' reference run for this array (mt19937ar.out, 2002).
TEST(RandNum, ArraySeedingGivesThePublishedOutputs) {
  const unsigned int seeds[] = {0x123, 0x234, 0x345, 0x456};
  const std::uint32_t published[] = {1067595299U, 955945823U, 477289528U, 4107218783U, 4228976476U};
  C_RandNum generator;
  int size = 0;
  unsigned int seed = 0;

  ASSERT_EQ(generator.Init(4, seeds), 0);

  const std::vector<double> values = drawn(generator, 5);
  for (std::size_t i = 0; i < 5; ++i)
    EXPECT_EQ(values[i], unit(published[i]));
  EXPECT_EQ(generator.GetSeedVectorSize(size), 0);
  EXPECT_EQ(size, 4);
  EXPECT_EQ(generator.GetSeed(2, seed), 0);
  EXPECT_EQ(seed, 0x345U);
  EXPECT_EQ(generator.GetSeed(4, seed), 1);
  EXPECT_EQ(generator.GetSeed(-1, seed), 1);
}

/** The published seeding by an array, written once more from its description. */
std::vector<std::uint32_t> seededByArray(const std::vector<std::uint32_t>& key) {
  std::vector<std::uint32_t> w(624);
  w[0] = 19650218;
  for (std::uint32_t k = 1; k < 624; ++k)
    w[k] = 1812433253U * (w[k - 1] ^ (w[k - 1] >> 30)) + k;
  std::size_t i = 1, j = 0;
  for (std::size_t k = std::max<std::size_t>(624, key.size()); k > 0; --k) {
    w[i] = (w[i] ^ ((w[i - 1] ^ (w[i - 1] >> 30)) * 1664525U)) + key[j] +
           static_cast<std::uint32_t>(j);
    if (++i >= 624) {
      w[0] = w[623];
      i = 1;
    }
    if (++j >= key.size()) j = 0;
  }
  for (int k = 623; k > 0; --k) {
    w[i] = (w[i] ^ ((w[i - 1] ^ (w[i - 1] >> 30)) * 1566083941U)) - static_cast<std::uint32_t>(i);
    if (++i >= 624) {
      w[0] = w[623];
      i = 1;
    }
  }
  w[0] = 0x80000000U;
  return w;
}

/** Hands a state to the standard generator as it is. */
struct StateAsSeed {
  using result_type = std::uint32_t;
  const std::vector<std::uint32_t>* words;
  template <class It>
  void generate(It first, It last) {
    std::copy_n(words->begin(), last - first, first);
  }
};

TEST(RandNum, ArraysLongerThanTheStateSeedToo) {
  for (int count : {1, 624, 700}) {
    std::vector<std::uint32_t> key;
    for (int i = 0; i < count; ++i)
      key.push_back(static_cast<std::uint32_t>(i * 7 + 3));
    const std::vector<std::uint32_t> words = seededByArray(key);
    StateAsSeed state{&words};
    std::mt19937 reference(state);
    C_RandNum generator;
    ASSERT_EQ(generator.Init(count, key.data()), 0);

    for (double value : drawn(generator, 1300))
      ASSERT_EQ(value, unit(static_cast<std::uint32_t>(reference())));
  }
}

// The first refill comes with number 1, the second with number 625; how the numbers are asked for
// makes no difference.
TEST(RandNum, RunsAcrossRefillsInAnyPieces) {
  C_RandNum whole, pieces;
  whole.Init(E_SeedUser, 42);
  pieces.Init(E_SeedUser, 42);
  const std::vector<double> expected = drawn(whole, 2000);
  std::vector<double> values;

  for (int length : {1, 623, 1, 1, 0, 622, 3, 700})
    for (double value : drawn(pieces, length))
      values.push_back(value);

  ASSERT_LE(values.size(), expected.size());
  for (std::size_t i = 0; i < values.size(); ++i)
    ASSERT_EQ(values[i], expected[i]) << i;
}

TEST(RandNum, RefusesBadSeeds) {
  C_RandNum generator;
  const unsigned int withZero[] = {5, 0}, good[] = {5};
  int size = 7;

  EXPECT_EQ(generator.Init(E_SeedUser, 0), 1);
  EXPECT_EQ(generator.Init(static_cast<E_InitSeedType>(3), 5), 1);
  EXPECT_EQ(generator.Init(2, withZero), 1);
  EXPECT_EQ(generator.Init(0, good), 1);
  EXPECT_EQ(generator.Init(-1, good), 1);
  EXPECT_EQ(generator.GetSeedVectorSize(size), 1);
  EXPECT_EQ(size, 7);
}

TEST(RandNum, ARefusedSeedLeavesTheState) {
  C_RandNum generator, twin;
  const unsigned int withZero[] = {5, 0};
  generator.Init(E_SeedUser, 11);
  twin.Init(E_SeedUser, 11);

  EXPECT_EQ(generator.Init(2, withZero), 1);
  EXPECT_EQ(generator.Init(E_SeedUser, 0), 1);

  EXPECT_EQ(drawn(generator, 10), drawn(twin, 10));
}

TEST(RandNum, ALaterInitRestarts) {
  C_RandNum generator;
  generator.Init(E_SeedUser, 11);
  const std::vector<double> first = drawn(generator, 700);

  generator.Init(E_SeedUser, 11);

  EXPECT_EQ(drawn(generator, 700), first);
}

TEST(RandNum, GivesNothingBeforeInit) {
  C_RandNum generator;
  double value = -1;
  unsigned int seed = 9;

  EXPECT_EQ(generator.GetRandNum(1, &value), 1);
  EXPECT_EQ(value, -1);
  EXPECT_EQ(generator.GetSeed(seed), 1);
  EXPECT_EQ(generator.GetSeed(0, seed), 1);
  EXPECT_EQ(seed, 9U);
}

TEST(RandNum, WithoutMemoryInitFails) {
  C_RandNum generator;
  double value = 0;
  {
    const AllocatorProbe none(0);
    EXPECT_EQ(generator.Init(E_SeedUser, 5), 1);
  }

  EXPECT_EQ(generator.GetRandNum(1, &value), 1);
  EXPECT_EQ(generator.Init(E_SeedUser, 5), 0);
}

TEST(RandNum, TheClockSeeds) {
  C_RandNum generator;
  unsigned int seed = 0;
  const auto before = static_cast<unsigned int>(std::time(nullptr));

  EXPECT_EQ(generator.Init(), 0);

  EXPECT_EQ(generator.GetSeed(seed), 0);
  EXPECT_GE(seed, before);
  EXPECT_LE(seed, static_cast<unsigned int>(std::time(nullptr)));
}

TEST(RandNum, NumbersLieStrictlyInTheRange) {
  C_RandNum generator;
  std::mt19937 reference(8);
  generator.SetRangeValue(-1.0, 1.0);
  generator.Init(E_SeedUser, 8);

  for (double value : drawn(generator, 3000)) {
    ASSERT_GT(value, -1.0);
    ASSERT_LT(value, 1.0);
    ASSERT_EQ(value, 2.0 * unit(static_cast<std::uint32_t>(reference())) - 1.0);
  }
}

TEST(RandNum, IntegersAreTheTruncatedLowerBound) {
  C_RandNum generator;
  generator.Init(E_SeedUser, 8);
  std::vector<int> ints(50, -1);
  std::vector<short> shorts(50, -1);

  generator.SetRangeValue(3, 9);
  EXPECT_EQ(generator.GetRandNum<int>(50, ints.data()), 0);
  generator.SetRangeValue(-2.7, 9);
  EXPECT_EQ(generator.GetRandNum<short>(50, shorts.data()), 0);

  EXPECT_EQ(ints, std::vector<int>(50, 3));
  generator.SetRangeValue(-2147483648.5, 9);
  EXPECT_EQ(generator.GetRandNum<int>(50, ints.data()), 0);
  EXPECT_EQ(ints, std::vector<int>(50, -2147483647 - 1)) << "the lowest there is";
  EXPECT_EQ(shorts, std::vector<short>(50, -2));
}

TEST(RandNum, FloatsAreRoundedBeforeTheyAreMapped) {
  C_RandNum generator;
  std::mt19937 reference(8);
  generator.SetRangeValue(1, 3);
  generator.Init(E_SeedUser, 8);
  std::vector<float> values(1000);

  EXPECT_EQ(generator.GetRandNum<float>(1000, values.data()), 0);

  for (float value : values) {
    const auto rounded = static_cast<float>(unit(static_cast<std::uint32_t>(reference())));
    ASSERT_EQ(value, static_cast<float>(2.0 * static_cast<double>(rounded) + 1.0));
  }
}

TEST(RandNum, CopyingEndsTheProcess) {
  C_RandNum generator;
  generator.Init(E_SeedUser, 8);

  EXPECT_EXIT(C_RandNum copy(generator), ::testing::ExitedWithCode(0), "");
}

template <class T>
class VecRand : public ::testing::Test {};
TYPED_TEST_SUITE(VecRand, MatrixScalars, ScalarNames);

template <class T, class I>
void expectRandomFill() {
  const int n = 700;
  C_VecPi<T, I, C_PtrInCore<T, I>> v(n, scalar<T>(9));
  std::mt19937 reference(77);
  const auto next = [&] { return unit(static_cast<std::uint32_t>(reference())); };

  EXPECT_EQ(C_VecRand(v, E_SeedUser, 77), 0);

  for (int i = 0; i < n; ++i) {
    const double re = next();
    if constexpr (std::is_integral_v<T>)
      ASSERT_EQ(v[i], T(0));
    else
      ASSERT_EQ(v[i], scalar<T>(re, isComplex<T> ? next() : 0));
  }
}

TYPED_TEST(VecRand, FillsInOrderRealPartFirst) {
  expectRandomFill<TypeParam, int>();
  expectRandomFill<TypeParam, __int64>();
}

TYPED_TEST(VecRand, NeedsFullVectorsInCore) {
  using T = TypeParam;
  OffCoreVec<T> off(3);
  SparseVec<T> sparse(3, {}, T(0));

  EXPECT_EQ(codeOf([&] { C_VecRand<T, int>(off, E_SeedDefault, 0); }), 2870);
  EXPECT_EQ(codeOf([&] { C_VecRand<T, int>(sparse, E_SeedDefault, 0); }), 2870);
}

TYPED_TEST(VecRand, ARefusedSeedLeavesTheVector) {
  using T = TypeParam;
  VecOf<T> v(3, scalar<T>(4)), none;

  EXPECT_EQ(C_VecRand(v, E_SeedUser, 0), -1);
  EXPECT_EQ(v[2], scalar<T>(4));
  EXPECT_EQ(C_VecRand(none, E_SeedDefault, 0), 0);
}

} // namespace
