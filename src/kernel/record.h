// What the functions of the kernel need to know of a record, and the making of records; written
// once for all of them.
#ifndef ZAREL_KERNEL_RECORD_H
#define ZAREL_KERNEL_RECORD_H

#include <type_traits>

#include <zarel/lm_types.h>

#include "kernel/call.h"

namespace Zarel::kernel {

// The fields of a vector-like record under common names.
template <class V>
struct VectorTraits;

#define LM_VECTOR_TRAITS(Record, Scalar, data_field, dim_field, max_field, number, prefix)         \
  template <>                                                                                      \
  struct VectorTraits<Record> {                                                                    \
    using Value = Scalar;                                                                          \
    static constexpr int type = number;                                                            \
    static constexpr const char* getTag = "_LM_" prefix "_get";                                    \
    static constexpr const char* resizeTag = "_LM_" prefix "_resize";                              \
    static unsigned& dim(Record* x) { return x->dim_field; }                                       \
    static unsigned& room(Record* x) { return x->max_field; }                                      \
    static Scalar*& data(Record* x) { return x->data_field; }                                      \
    static int dim(const Record* x) { return static_cast<int>(x->dim_field); }                     \
    static const Scalar* data(const Record* x) { return x->data_field; }                           \
  };
LM_VECTOR_TRAITS(VEC, double, ve, dim, max_dim, LM_TYPE_VEC, "v")
LM_VECTOR_TRAITS(ZVEC, ZCOMPLEX, ve, dim, max_dim, LM_TYPE_ZVEC, "zv")
LM_VECTOR_TRAITS(IVEC, int, ive, dim, max_dim, LM_TYPE_IVEC, "iv")
LM_VECTOR_TRAITS(LVEC, int, lve, dim, max_dim, LM_TYPE_LVEC, "lv")
LM_VECTOR_TRAITS(PERM, unsigned, pe, size, max_size, LM_TYPE_PERM, "px")
#undef LM_VECTOR_TRAITS

template <class M>
struct MatrixTraits;

template <>
struct MatrixTraits<MAT> {
  using Value = double;
  using Vector = VEC;
  static constexpr int type = LM_TYPE_MAT;
  static constexpr const char* getTag = "_LM_m_get";
  static constexpr const char* resizeTag = "_LM_m_resize";
};
template <>
struct MatrixTraits<ZMAT> {
  using Value = ZCOMPLEX;
  using Vector = ZVEC;
  static constexpr int type = LM_TYPE_ZMAT;
  static constexpr const char* getTag = "_LM_zm_get";
  static constexpr const char* resizeTag = "_LM_zm_resize";
};

template <class V>
using ValueOf = typename VectorTraits<V>::Value;
template <class M>
using EntryOf = typename MatrixTraits<M>::Value;
template <class M>
using VectorOf = typename MatrixTraits<M>::Vector;

// Length and data of a vector, whatever the fields are called.
template <class V>
int length(const V* x) {
  return VectorTraits<V>::dim(x);
}
template <class V>
auto values(V* x) {
  return VectorTraits<std::remove_const_t<V>>::data(x);
}

// Shapes and strides as the numbers that loops and BLAS take.
template <class M>
int rows(const M* A) {
  return static_cast<int>(A->m);
}
template <class M>
int columns(const M* A) {
  return static_cast<int>(A->n);
}
template <class M>
int stride(const M* A) {
  return static_cast<int>(A->max_n);
}
template <class M>
const EntryOf<M>* row(const M* A, int i) {
  return A->me[i];
}
template <class M>
bool sameShape(const M* A, const M* B) {
  return A->m == B->m && A->n == B->n;
}

// Making, resizing and freeing under the caller's tag and flag. Errors 20 and 3.
template <class V>
V* createVector(const Call& call, const char* tag, int flag, int dim);
template <class V>
V* resizeVector(const Call& call, const char* tag, int flag, V* x, int dim);
template <class V>
int freeVector(V* x);
template <class M>
M* createMatrix(const Call& call, const char* tag, int flag, int m, int n);
template <class M>
M* resizeMatrix(const Call& call, const char* tag, int flag, M* A, int m, int n);
template <class M>
int freeMatrix(M* A);

// The output of a function: `out` itself if its size is right, else what resizing gives. Null
// after a failure, which has then been passed on.
template <class V>
V* outputVector(const Call& call, V* out, int dim);
template <class M>
M* outputMatrix(const Call& call, M* out, int m, int n);

// As outputVector, but a result of length 0 keeps that length.
template <class V>
V* exactVector(const Call& call, V* out, int dim);
template <class M>
M* exactMatrix(const Call& call, M* out, int m, int n);

// Accounting of a record that changed from `before` to `after` bytes; `change` records more.
void account(int type, long before, long after, int change);

// A block for the length of a function.
template <class T>
class Scratch {
public:
  Scratch(const Call& call, int count);
  ~Scratch();
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  // Null if there was no memory, which has then been reported.
  T* get() const { return _block; }

private:
  T* _block;
};

} // namespace Zarel::kernel

// Room for a result, or the failing return.
#define LM_OUTPUT_VECTOR(out, dim)                                                                 \
  out = ::Zarel::kernel::outputVector(call, out, dim);                                             \
  if (!out) return nullptr
#define LM_OUTPUT_MATRIX(out, m, n)                                                                \
  out = ::Zarel::kernel::outputMatrix(call, out, m, n);                                            \
  if (!out) return nullptr

#endif
