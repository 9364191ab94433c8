#include <zarel/C_VecRand.h>

#include <algorithm>
#include <climits>

#include "containers/scalars.h"
#include "runtime/fail.h"

namespace {

/** What a scalar is made of for the generator: a real, or pairs of them. */
template <class T>
struct Parts {
  using type = T;
  static constexpr long long count = 1;
};
template <class R>
struct Parts<std::complex<R>> {
  using type = R;
  static constexpr long long count = 2;
};

template <class R>
int drawAll(C_RandNum& generator, long long count, R* out) {
  while (count > 0) {
    const int run = static_cast<int>(std::min<long long>(count, INT_MAX));
    if (generator.GetRandNum(run, out) != 0) return 1;
    out += run;
    count -= run;
  }
  return 0;
}

} // namespace

template <class T, class I>
int C_VecRand(C_Vec<T, I>& v, E_InitSeedType type, unsigned int seed) {
  using Part = typename Parts<T>::type;
  if (!v.InCore() || !v.Full()) Zarel::fail(2870);
  C_RandNum generator;
  if (generator.Init(type, seed) != 0) return Zarel::traced();
  if (drawAll(generator, v.Dim() * Parts<T>::count, reinterpret_cast<Part*>(v.Adr(0))) != 0)
    return Zarel::traced();
  return 0;
}

#define ZAREL_INSTANTIATE(T)                                                                       \
  template ZAREL_API int C_VecRand<T, int>(C_Vec<T, int>&, E_InitSeedType, unsigned int);          \
  template ZAREL_API int C_VecRand<T, __int64>(C_Vec<T, __int64>&, E_InitSeedType, unsigned int);
ZAREL_MATRIX_SCALARS(ZAREL_INSTANTIATE)
