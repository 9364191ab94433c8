// Index of the element of smallest modulus, the mirror of the BLAS search for the largest one: the
// modulus of a complex number is |re| + |im|, the first of equal ones counts, NaN wins no
// comparison.
#include <cmath>
#include <cstddef>

#include <zarel/itf.h>

namespace {

/** Moduli of real numbers, `stride` apart. */
template <class R>
struct RealModulus {
  const R* x;
  std::ptrdiff_t stride;
  R operator()(std::ptrdiff_t i) const { return std::abs(x[i * stride]); }
};

/** Moduli of complex numbers, `stride` apart. */
template <class R>
struct ComplexModulus {
  const R* x;
  std::ptrdiff_t stride;
  R operator()(std::ptrdiff_t i) const {
    return std::abs(x[2 * i * stride]) + std::abs(x[2 * i * stride + 1]);
  }
};

constexpr int lanes = 16;

/** The least of `lanes` moduli from `start` on, if one is below `bound`, else `bound`. */
template <class R, class Modulus>
R leastOfGroup(Modulus modulus, std::ptrdiff_t start, R bound) {
  R least[lanes];
  for (int k = 0; k < lanes; ++k) {
    const R value = modulus(start + k);
    least[k] = value < bound ? value : bound;
  }
  for (int half = lanes / 2; half > 0; half /= 2)
    for (int k = 0; k < half; ++k)
      least[k] = least[k + half] < least[k] ? least[k + half] : least[k];
  return least[0];
}

/** 1-based index of the smallest modulus, 0 for nothing to search. Groups without a new least
 * element are passed over in vector operations. */
template <class R, class Modulus>
int smallest(int n, Modulus modulus) {
  int index = 0;
  R least = modulus(0);
  std::ptrdiff_t i = 0;
  const auto searchUpTo = [&](std::ptrdiff_t end) {
    for (; i < end; ++i)
      if (modulus(i) < least) {
        least = modulus(i);
        index = static_cast<int>(i);
      }
  };
  while (n - i >= lanes)
    if (leastOfGroup(modulus, i, least) < least)
      searchUpTo(i + lanes);
    else
      i += lanes;
  searchUpTo(n);
  return index + 1;
}

template <class R>
int smallestReal(int n, const R* x, int incx) {
  if (n < 1 || incx < 1) return 0;
  if (incx == 1) return smallest<R>(n, RealModulus<R>{x, 1});
  return smallest<R>(n, RealModulus<R>{x, incx});
}

template <class R>
int smallestComplex(int n, const void* x, int incx) {
  if (n < 1 || incx < 1) return 0;
  return smallest<R>(n, ComplexModulus<R>{static_cast<const R*>(x), incx});
}

} // namespace

int ITF_isamin(int n, float* x, int incx) {
  return smallestReal(n, x, incx);
}
int ITF_idamin(int n, double* x, int incx) {
  return smallestReal(n, x, incx);
}
int ITF_icamin(int n, void* x, int incx) {
  return smallestComplex<float>(n, x, incx);
}
int ITF_izamin(int n, void* x, int incx) {
  return smallestComplex<double>(n, x, incx);
}
