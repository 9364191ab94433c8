#include <algorithm>
#include <cstdarg>
#include <cstdint>

#include <zarel/lm_ivec.h>
#include <zarel/lm_perm.h>
#include <zarel/lm_vec.h>
#include <zarel/zarelmem.h>

#include "kernel/lists.h"
#include "kernel/record.h"

namespace Zarel::kernel {

namespace {

template <class V>
long bytes(unsigned room) {
  return static_cast<long>(sizeof(V) + std::size_t{room} * sizeof(ValueOf<V>));
}

// What new entries hold: zero, but in a permutation their own index.
template <class V>
void fillNew(V* x, unsigned from, unsigned to) {
  std::fill(values(x) + from, values(x) + to, ValueOf<V>());
}
void fillNew(PERM* px, unsigned from, unsigned to) {
  for (unsigned i = from; i < to; ++i)
    px->pe[i] = i;
}

// Room for at least `dim` entries, old ones kept.
template <class V>
bool grow(V* x, const char* tag, int flag, unsigned dim) {
  using Traits = VectorTraits<V>;
  void* const block = zarelmem_realloc(values(x), std::size_t{dim} * sizeof(ValueOf<V>), tag, flag,
                                       __FILE__, __LINE__);
  if (!block) return false;
  account(Traits::type, bytes<V>(Traits::room(x)), bytes<V>(dim), 0);
  Traits::data(x) = static_cast<ValueOf<V>*>(block);
  Traits::room(x) = dim;
  return true;
}

} // namespace

template <class V>
V* createVector(const Call& call, const char* tag, int flag, int dim) {
  using Traits = VectorTraits<V>;
  if (dim < 0) return call.fail(20);
  const unsigned room = std::max(dim, 1);
  auto* const x = static_cast<V*>(zarelmem_calloc(1, sizeof(V), tag, flag, __FILE__, __LINE__));
  if (!x) return call.fail(3);
  Traits::data(x) = static_cast<ValueOf<V>*>(
      zarelmem_calloc(room, sizeof(ValueOf<V>), tag, flag, __FILE__, __LINE__));
  if (!values(x)) {
    zarelmem_free(x, __FILE__, __LINE__);
    return call.fail(3);
  }
  Traits::dim(x) = static_cast<unsigned>(dim);
  Traits::room(x) = room;
  fillNew(x, 0, room);
  account(Traits::type, 0, bytes<V>(room), 1);
  return x;
}

template <class V>
V* resizeVector(const Call& call, const char* tag, int flag, V* x, int dim) {
  using Traits = VectorTraits<V>;
  if (dim < 0) return call.fail(20);
  const unsigned wanted = std::max(dim, 1); // resizing to 0 gives length 1
  if (!x || (Traits::room(x) == 0 && Traits::dim(x) != wanted))
    return createVector<V>(call, tag, flag, static_cast<int>(wanted));
  if (Traits::dim(x) == wanted) return x;
  if ((wanted > Traits::room(x) || !values(x)) && !grow(x, tag, flag, wanted)) return call.fail(3);
  if (wanted > Traits::dim(x)) fillNew(x, Traits::dim(x), wanted);
  Traits::dim(x) = wanted;
  return x;
}

template <class V>
int freeVector(V* x) {
  using Traits = VectorTraits<V>;
  if (!x) return -1;
  account(Traits::type, bytes<V>(Traits::room(x)), 0, -1);
  zarelmem_free(values(x), __FILE__, __LINE__);
  zarelmem_free(x, __FILE__, __LINE__);
  return 0;
}

template <class V>
V* outputVector(const Call& call, V* out, int dim) {
  if (out && length(out) == dim) return out;
  const Call resizing(VectorTraits<V>::resizeTag, call);
  V* const sized = resizeVector(resizing, call.tag(), allocationFlag(), out, dim);
  if (!sized) return call.pass();
  return sized;
}

template <class V>
V* exactVector(const Call& call, V* out, int dim) {
  V* const sized = outputVector(call, out, dim);
  if (sized) VectorTraits<V>::dim(sized) = static_cast<unsigned>(dim);
  return sized;
}

template <class T>
Scratch<T>::Scratch(const Call& call, int count)
    : _block(static_cast<T*>(zarelmem_malloc(std::max<std::size_t>(count, 1) * sizeof(T),
                                             call.tag(), allocationFlag(), __FILE__, __LINE__))) {
  if (!_block) call.fail(3);
}

template <class T>
Scratch<T>::~Scratch() {
  zarelmem_free(_block, __FILE__, __LINE__);
}

#define LM_INSTANTIATE(V)                                                                          \
  template V* createVector<V>(const Call&, const char*, int, int);                                 \
  template V* resizeVector<V>(const Call&, const char*, int, V*, int);                             \
  template int freeVector<V>(V*);                                                                  \
  template V* outputVector<V>(const Call&, V*, int);                                               \
  template V* exactVector<V>(const Call&, V*, int);
LM_INSTANTIATE(VEC)
LM_INSTANTIATE(ZVEC)
LM_INSTANTIATE(IVEC)
LM_INSTANTIATE(LVEC)
LM_INSTANTIATE(PERM)
#undef LM_INSTANTIATE

template class Scratch<double>;
template class Scratch<ZCOMPLEX>;
template class Scratch<int>;
template class Scratch<unsigned>;
template class Scratch<unsigned char>;

} // namespace Zarel::kernel

using namespace Zarel::kernel;

// The five families, each with its list forms.
#define LM_VECTOR_FAMILY(V, p)                                                                     \
  V* LM_##p##_get(LM_TAG, int dim, LM_ARGS) {                                                      \
    LM_ENTER(LM_##p##_get);                                                                        \
    return createVector<V>(call, tag, flag, dim);                                                  \
  }                                                                                                \
  V* LM_##p##_resize(LM_TAG, V* x, int dim, LM_ARGS) {                                             \
    LM_ENTER(LM_##p##_resize);                                                                     \
    return resizeVector(call, tag, flag, x, dim);                                                  \
  }                                                                                                \
  int LM_##p##_get_vars(LM_TAG, int dim, LM_ARGS, V** first, ...) {                                \
    LM_ENTER(LM_##p##_get_vars);                                                                   \
    LM_FOR_LIST(V, first, createVector<V>(call, tag, flag, dim))                                   \
  }                                                                                                \
  int LM_##p##_resize_vars(LM_TAG, int dim, LM_ARGS, V** first, ...) {                             \
    LM_ENTER(LM_##p##_resize_vars);                                                                \
    LM_FOR_LIST(V, first, resizeVector(call, tag, flag, *entry, dim))                              \
  }                                                                                                \
  int p##_free(V* x) {                                                                             \
    return freeVector(x);                                                                          \
  }                                                                                                \
  int p##_free_vars(V** first, ...) {                                                              \
    LM_FREE_LIST(V, first, freeVector)                                                             \
  }

LM_VECTOR_FAMILY(VEC, v)
LM_VECTOR_FAMILY(ZVEC, zv)
LM_VECTOR_FAMILY(IVEC, iv)
LM_VECTOR_FAMILY(LVEC, lv)
LM_VECTOR_FAMILY(PERM, px)
