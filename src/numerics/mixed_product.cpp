// Products of a matrix and a vector of which one is real and the other complex. A complex vector is
// two interleaved real ones, so the work is the BLAS's own real product wherever that fits.
#include <algorithm>
#include <complex>

#include <zarel/itf.h>

namespace {

using Complex = std::complex<double>;

/** Elements of a vector that are scaled or gathered on the stack at a time. */
constexpr int blockSize = 256;

constexpr bool isOneOf(char option, const char* letters) {
  for (; *letters; ++letters)
    if (option == *letters || option == *letters - 'A' + 'a') return true;
  return false;
}

/** The shape of a product y := alpha op(A) x + beta y. */
struct Shape {
  char trans;
  int m, n, lda, incx, incy;

  bool transposed() const { return !isOneOf(trans, "N"); }
  bool conjugated() const { return isOneOf(trans, "C"); }
  int lengthX() const { return transposed() ? m : n; }
  int lengthY() const { return transposed() ? n : m; }

  /** Position of the first wrong argument in the list, 0 if there is none. */
  int firstWrongArgument() const {
    if (!isOneOf(trans, "NTC")) return 1;
    if (m < 0) return 2;
    if (n < 0) return 3;
    if (lda < std::max(1, m)) return 6;
    if (incx == 0) return 8;
    if (incy == 0) return 11;
    return 0;
  }
};

/** Where element 0 of a vector lies: with a negative stride it is the last one in memory. */
std::ptrdiff_t origin(int length, int stride) {
  return stride > 0 ? 0 : static_cast<std::ptrdiff_t>(1 - length) * stride;
}

/** y := beta y. A zero beta clears y, whatever it holds. */
void scale(Complex beta, int length, Complex* y, int incy) {
  if (beta == Complex(1)) return;
  const int stride = std::abs(incy);
  if (beta != Complex(0)) return ITF_zscal(length, &beta, y, stride);
  for (std::ptrdiff_t i = 0; i < length; ++i)
    y[i * stride] = 0;
}

/** Reports a wrong argument or does what needs no product; false when nothing is left to do. */
bool begin(const char* name, const Shape& shape, Complex alpha, Complex beta, Complex* y) {
  if (int wrong = shape.firstWrongArgument()) {
    ITF_xerbla(const_cast<char*>(name), &wrong);
    return false;
  }
  if (shape.m == 0 || shape.n == 0) return false;
  scale(beta, shape.lengthY(), y, shape.incy);
  return alpha != Complex(0);
}

/** y += alpha op(A) x for a real A and a real alpha: once for the real parts, once for the others.
 */
void addRealProduct(const Shape& s, double alpha, double* a, Complex* x, Complex* y) {
  char trans = s.trans;
  for (int part = 0; part < 2; ++part)
    ITF_dgemv(&trans, s.m, s.n, alpha, a, s.lda, reinterpret_cast<double*>(x) + part, 2 * s.incx,
              1.0, reinterpret_cast<double*>(y) + part, 2 * s.incy);
}

/** The same for a complex alpha, by blocks of alpha x. */
void addScaledRealProduct(const Shape& s, Complex alpha, double* a, const Complex* x, Complex* y) {
  Complex scaled[blockSize];
  x += origin(s.lengthX(), s.incx);
  for (int start = 0; start < s.lengthX(); start += blockSize) {
    const int count = std::min(blockSize, s.lengthX() - start);
    for (int i = 0; i < count; ++i)
      scaled[i] = alpha * x[std::ptrdiff_t(start + i) * s.incx];
    Shape block = s;
    block.incx = 1;
    (s.transposed() ? block.m : block.n) = count;
    addRealProduct(block, 1.0, a + std::ptrdiff_t(start) * (s.transposed() ? 1 : s.lda), scaled, y);
  }
}

/** y += alpha A x for a complex A and a real x: A is a real matrix of twice the rows. */
void addComplexProduct(const Shape& s, Complex alpha, Complex* a, double* x, Complex* y) {
  char trans = 'N';
  const auto rows = [&](int start, int count, double factor, double beta, Complex* out) {
    ITF_dgemv(&trans, 2 * count, s.n, factor, reinterpret_cast<double*>(a + start), 2 * s.lda, x,
              s.incx, beta, reinterpret_cast<double*>(out), 1);
  };
  if (s.incy == 1 && alpha.imag() == 0) return rows(0, s.m, alpha.real(), 1.0, y);
  Complex product[blockSize];
  y += origin(s.m, s.incy);
  for (int start = 0; start < s.m; start += blockSize) {
    const int count = std::min(blockSize, s.m - start);
    rows(start, count, 1.0, 0.0, product);
    for (int i = 0; i < count; ++i)
      y[std::ptrdiff_t(start + i) * s.incy] += alpha * product[i];
  }
}

/** Sum of a[i] x[i * incx] for complex a and real x, in independent sums that vectorise. */
Complex mixedDot(int length, const double* a, const double* x, int incx) {
  constexpr int lanes = 4;
  double sums[2 * lanes] = {};
  std::ptrdiff_t i = 0;
  for (; i + lanes <= length; i += lanes)
    for (int k = 0; k < lanes; ++k) {
      const double factor = x[(i + k) * incx];
      sums[2 * k] += a[2 * (i + k)] * factor;
      sums[2 * k + 1] += a[2 * (i + k) + 1] * factor;
    }
  for (; i < length; ++i) {
    sums[0] += a[2 * i] * x[i * incx];
    sums[1] += a[2 * i + 1] * x[i * incx];
  }
  return {(sums[0] + sums[2]) + (sums[4] + sums[6]), (sums[1] + sums[3]) + (sums[5] + sums[7])};
}

/** y += alpha op(A) x for a transposed complex A and a real x, column by column. */
void addTransposedProduct(const Shape& s, Complex alpha, const Complex* a, const double* x,
                          Complex* y) {
  x += origin(s.m, s.incx);
  y += origin(s.n, s.incy);
  for (std::ptrdiff_t j = 0; j < s.n; ++j) {
    const Complex dot = mixedDot(s.m, reinterpret_cast<const double*>(a + j * s.lda), x, s.incx);
    y[j * s.incy] += alpha * (s.conjugated() ? std::conj(dot) : dot);
  }
}

} // namespace

void ITF_dzgemv(char* trans, int m, int n, void* alpha, double* a, int lda, void* x, int incx,
                void* beta, void* y, int incy) {
  const Shape shape{*trans, m, n, lda, incx, incy};
  const Complex factor = *static_cast<Complex*>(alpha);
  const auto vector = static_cast<Complex*>(x), result = static_cast<Complex*>(y);
  if (!begin("DZGEMV", shape, factor, *static_cast<Complex*>(beta), result)) return;
  if (factor.imag() == 0) return addRealProduct(shape, factor.real(), a, vector, result);
  addScaledRealProduct(shape, factor, a, vector, result);
}

void ITF_zdgemv(char* trans, int m, int n, void* alpha, void* a, int lda, double* x, int incx,
                void* beta, void* y, int incy) {
  const Shape shape{*trans, m, n, lda, incx, incy};
  const Complex factor = *static_cast<Complex*>(alpha);
  const auto matrix = static_cast<Complex*>(a), result = static_cast<Complex*>(y);
  if (!begin("ZDGEMV", shape, factor, *static_cast<Complex*>(beta), result)) return;
  if (shape.transposed()) return addTransposedProduct(shape, factor, matrix, x, result);
  addComplexProduct(shape, factor, matrix, x, result);
}
