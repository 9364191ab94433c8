#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include <zarel/mrand.h>

namespace {

// A second telling of the generator, in 64 bits that are cut by hand.
class Reference {
public:
  void seed(std::int64_t s) {
    for (int i = 0; i < 55; ++i)
      _table[i] = remainder(cut(123413 * (i ? _table[i - 1] : s)));
    for (int i = 0; i < 3025; ++i)
      (*this)();
  }
  double operator()() {
    _a = (_a + 1) % 55;
    _b = (_b + 1) % 55;
    std::int64_t value = cut(_table[_a] - _table[_b]);
    if (value < 0) value = cut(value + 2147483647);
    _table[_a] = value;
    return static_cast<double>(value) * 4.656612875245797e-10;
  }

private:
  static std::int64_t cut(std::int64_t x) {
    const std::int64_t low = x & 0xFFFFFFFF;
    return low >= 0x80000000LL ? low - 0x100000000LL : low;
  }
  // Sign of the dividend.
  static std::int64_t remainder(std::int64_t x) {
    const std::int64_t size = (x < 0 ? -x : x) % 2147483647;
    return x < 0 ? -size : size;
  }

  std::int64_t _table[55] = {};
  int _a = 0, _b = 31;
};

// After a multiple of 55 numbers the cursors are where they were: the tests keep to such counts.
TEST(Mrand, RandomNumbersFollowTheRecurrence) {
  for (const int seed : {3127, 1, 0, -77, 2147483647, -2147483647 - 1}) {
    Reference reference;
    smrand(seed);
    reference.seed(seed);
    for (int i = 0; i < 550; ++i)
      ASSERT_EQ(mrand(), reference()) << seed << " " << i;
  }
}

TEST(Mrand, SeedingLeavesTheCursors) {
  Reference reference;
  smrand(5);
  reference.seed(5);
  for (int i = 0; i < 7; ++i)
    ASSERT_EQ(mrand(), reference());
  smrand(5); // both cursors are 7 places on now, and stay there
  reference.seed(5);
  for (int i = 0; i < 103; ++i)
    ASSERT_EQ(mrand(), reference()); // 110 with the 7
}

TEST(Mrand, ListsAreTheSameNumbers) {
  smrand(42);
  std::vector<double> single(120), listed(120, -1);
  for (double& x : single)
    x = mrand();
  for (int rest = 120 % 55; rest < 55; ++rest)
    mrand(); // the cursors back to where they were
  smrand(42);
  mrandlist(listed.data(), 0);
  mrandlist(listed.data(), -3);
  EXPECT_EQ(listed[0], -1);
  mrandlist(listed.data(), 120);
  EXPECT_EQ(single, listed);
  for (int rest = 120 % 55; rest < 55; ++rest)
    mrand();
}

TEST(Mrand, NumbersLieBetweenZeroAndOne) {
  smrand(3127);
  double sum = 0, squares = 0;
  const int n = 55 * 2000;
  for (int i = 0; i < n; ++i) {
    const double x = mrand();
    ASSERT_GE(x, 0);
    ASSERT_LE(x, 1);
    sum += x;
    squares += x * x;
  }
  EXPECT_NEAR(sum / n, 0.5, 0.005);
  EXPECT_NEAR(squares / n, 1.0 / 3, 0.005);
}

} // namespace
