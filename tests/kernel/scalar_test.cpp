#include "kernel/records.h"

#include <complex>

using namespace kernel;

namespace {

using C = std::complex<double>;

C value(ZCOMPLEX z) {
  return {z.re, z.im};
}

void expectNear(ZCOMPLEX got, C expected) {
  EXPECT_LE(std::abs(value(got) - expected), 4e-16 * std::abs(expected));
}

class Scalars : public Kernel {};

TEST_F(Scalars, AgreeWithTheStandardLibrary) {
  for (const C a : {C(1, 2), C(-3, 0.5), C(0, -1), C(-4, 0)})
    for (const C b : {C(2, -1), C(-0.25, 3), C(0, 2), C(5, 0)}) {
      const ZCOMPLEX x = zmake(a.real(), a.imag()), y = zmake(b.real(), b.imag());
      expectNear(zadd(x, y), a + b);
      expectNear(zsub(x, y), a - b);
      expectNear(zmlt(x, y), a * b);
      expectNear(zdiv(x, y, 0, nullptr, &status), a / b);
      expectNear(zinv(x, 0, nullptr, &status), 1.0 / a);
      expectNear(zsmlt(3, x), 3.0 * a);
      expectNear(zconj(x), std::conj(a));
      expectNear(zneg(x), -a);
      expectNear(zsqrt(x), std::sqrt(a));
      expectNear(zexp(x), std::exp(a));
      expectNear(zlog(x), std::log(a));
      EXPECT_DOUBLE_EQ(zabs(x), std::abs(a));
    }
}

TEST_F(Scalars, DivisionByZeroIsError4) {
  status = 0;
  EXPECT_EQ(zinv({0, 0}, 0, nullptr, &status), (ZCOMPLEX{0, 0}));
  EXPECT_EQ(status, -1);
  EXPECT_EQ(lastError(), 4);
  EXPECT_STREQ(LM_error_get(0)->function, "zinv");
  EXPECT_EQ(zdiv({1, 1}, {0, 0}, 0, nullptr, &status), (ZCOMPLEX{0, 0}));
  EXPECT_EQ(status, -1);
  zdiv({1, 1}, {0, 1e-300}, 0, nullptr, &status);
  EXPECT_EQ(status, 0);
}

TEST_F(Scalars, NothingOverflowsInBetween) {
  EXPECT_DOUBLE_EQ(zabs({3e300, 4e300}), 5e300);
  expectNear(zdiv({1e300, 1e300}, {1e300, 1e300}, 0, nullptr, &status), C(1, 0));
  expectNear(zinv({0, 1e-300}, 0, nullptr, &status), C(0, -1e300));
}

} // namespace
