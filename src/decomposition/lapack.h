// The LAPACK routines of this room, overloaded by scalar.
#ifndef ZAREL_DECOMPOSITION_LAPACK_H
#define ZAREL_DECOMPOSITION_LAPACK_H

#include <complex>

#include <zarel/itf.h>

#include "runtime/fail.h"

namespace Zarel::decomposition {

/** Divides `n` values by a real number, without overflow or underflow on the way. */
inline void rscl(int n, double by, float* x) {
  ITF_srscl(n, static_cast<float>(by), x, 1);
}
inline void rscl(int n, double by, double* x) {
  ITF_drscl(n, by, x, 1);
}
inline void rscl(int n, double by, std::complex<float>* x) {
  ITF_csrscl(n, static_cast<float>(by), x, 1);
}
inline void rscl(int n, double by, std::complex<double>* x) {
  ITF_zdrscl(n, by, x, 1);
}
[[noreturn]] inline void rscl(int, double, short*) {
  fail(2871);
}
[[noreturn]] inline void rscl(int, double, int*) {
  fail(2871);
}

} // namespace Zarel::decomposition

#endif
