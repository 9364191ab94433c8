// The LAPACK routines of this room, overloaded by scalar.
#ifndef ZAREL_DECOMPOSITION_LAPACK_H
#define ZAREL_DECOMPOSITION_LAPACK_H

#include <complex>
#include <type_traits>

#include <zarel/itf.h>

#include "runtime/fail.h"
#include "vectorset/blas3.h"

namespace Zarel::decomposition {

/** Divides `n` values by a real number, without overflow on the way; throws 2871 for integers. */
template <class T>
void rscl(int n, double by, T* x) {
  if constexpr (std::is_integral_v<T>)
    fail(2871);
  else
    Blas::divide(n, by, x);
}

template <class T>
struct RealOf {
  using type = T;
};
template <class R>
struct RealOf<std::complex<R>> {
  using type = R;
};
template <class T>
using Real = typename RealOf<T>::type;

/**
 * Decomposes `a` (m x n by columns, `m` apart): its columns become the left singular vectors, `vt`
 * (leading dimension n) takes V^H and `s` the min(m, n) values. With `lwork` -1 only asks how much
 * room in `work` would be best, the answer standing in its first value. Returns LAPACK's info.
 */
#define ZAREL_GESVD(T, P, ...)                                                                     \
  inline int gesvd(int m, int n, T* a, Real<T>* s, T* vt, T* work, int lwork,                      \
                   [[maybe_unused]] Real<T>* rwork) {                                              \
    char overwrite[] = "O", some[] = "S";                                                          \
    const int lead = m > 1 ? m : 1;                                                                \
    T unused{};                                                                                    \
    int info = 0;                                                                                  \
    ITF_##P##gesvd(overwrite, some, m, n, a, lead, s, &unused, lead, vt, n, work, lwork,           \
                   __VA_ARGS__);                                                                   \
    return info;                                                                                   \
  }
ZAREL_GESVD(float, s, &info)
ZAREL_GESVD(double, d, &info)
ZAREL_GESVD(std::complex<float>, c, rwork, &info)
ZAREL_GESVD(std::complex<double>, z, rwork, &info)
#undef ZAREL_GESVD

} // namespace Zarel::decomposition

#endif
