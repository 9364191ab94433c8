// Complex dot products. Their results come back in registers as a pair of numbers, which a plain
// structure of two numbers describes to C and C++ compilers alike.
#include <zarel/itf.h>

#include "numerics/keep_blas_core.h"

namespace {
struct DoubleComplex {
  double re, im;
};
} // namespace

extern "C" {
ITF_Complex cdotu_(const int*, const void*, const int*, const void*, const int*);
ITF_Complex cdotc_(const int*, const void*, const int*, const void*, const int*);
DoubleComplex zdotu_(const int*, const void*, const int*, const void*, const int*);
DoubleComplex zdotc_(const int*, const void*, const int*, const void*, const int*);

void ITF_zarelcdot(int n, void* x, void* y, void* result, int flag) {
  const int one = 1;
  *static_cast<ITF_Complex*>(result) = (flag == 0 ? cdotu_ : cdotc_)(&n, x, &one, y, &one);
}

void ITF_zarelzdot(int n, void* x, void* y, void* result, int flag) {
  const int one = 1;
  *static_cast<DoubleComplex*>(result) = (flag == 0 ? zdotu_ : zdotc_)(&n, x, &one, y, &one);
}

// The strides of these four are ignored: hosts rely on consecutive values.
ITF_Complex ITF_cdotu(int n, void* x, int, void* y, int) {
  ITF_Complex result;
  ITF_zarelcdot(n, x, y, &result, 0);
  return result;
}

ITF_Complex ITF_cdotc(int n, void* x, int, void* y, int) {
  ITF_Complex result;
  ITF_zarelcdot(n, x, y, &result, 1);
  return result;
}

void* ITF_zdotu(void* result, int n, void* x, int, void* y, int) {
  ITF_zarelzdot(n, x, y, result, 0);
  return result;
}

void* ITF_zdotc(void* result, int n, void* x, int, void* y, int) {
  ITF_zarelzdot(n, x, y, result, 1);
  return result;
}
}
