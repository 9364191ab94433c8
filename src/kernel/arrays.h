// The loops of lm_arrays.h as overloads, for the templates of this room.
#ifndef ZAREL_KERNEL_ARRAYS_H
#define ZAREL_KERNEL_ARRAYS_H

#include <zarel/lm_arrays.h>

#include "kernel/complex.h"

namespace Zarel::kernel::loops {

// a := a + s b, or a + s conj(b).
template <bool conjugated = false, class T>
inline void multiplyAdd(T* a, const T* b, T s, int length) {
  for (int i = 0; i < length; ++i)
    a[i] += s * (conjugated ? conjugate(b[i]) : b[i]);
}

// The sum of a_i b_i, or of conj(a_i) b_i; in four parts, so that the sums do not wait for each
// other.
template <bool conjugated = false, class T>
inline T product(const T* a, const T* b, int length) {
  T sum[4] = {};
  int i = 0;
  for (; i + 4 <= length; i += 4)
    for (int part = 0; part < 4; ++part)
      sum[part] += (conjugated ? conjugate(a[i + part]) : a[i + part]) * b[i + part];
  for (; i < length; ++i)
    sum[0] += (conjugated ? conjugate(a[i]) : a[i]) * b[i];
  return (sum[0] + sum[1]) + (sum[2] + sum[3]);
}

} // namespace Zarel::kernel::loops

#endif
