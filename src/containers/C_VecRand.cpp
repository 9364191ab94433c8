#include <zarel/C_VecRand.h>

#include "containers/blocks.h"
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
  int result = 0;
  Zarel::forEachIntPiece(
      count, [&](long long at, int length) { result |= generator.GetRandNum(length, out + at); });
  return result;
}

} // namespace

template <class T, class I>
int C_VecRand(C_Vec<T, I>& v, E_InitSeedType type, unsigned int seed) {
  using Part = typename Parts<T>::type;
  if (!v.InCore() || !v.Full()) Zarel::fail(2870);
  C_RandNum generator;
  const bool drawn =
      generator.Init(type, seed) == 0 &&
      drawAll(generator, v.Dim() * Parts<T>::count, reinterpret_cast<Part*>(v.Adr(0))) == 0;
  return drawn ? 0 : Zarel::traced();
}

#define ZAREL_INSTANTIATE(T)                                                                       \
  template ZAREL_API int C_VecRand<T, int>(C_Vec<T, int>&, E_InitSeedType, unsigned int);          \
  template ZAREL_API int C_VecRand<T, __int64>(C_Vec<T, __int64>&, E_InitSeedType, unsigned int);
ZAREL_MATRIX_SCALARS(ZAREL_INSTANTIATE)
