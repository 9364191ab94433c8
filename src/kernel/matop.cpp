// Sums, multiples and products of matrices.
#include <algorithm>

#include <zarel/lm_mat.h>

#include "kernel/blas.h"
#include "kernel/complex.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

// out := f(A, B), entry by entry.
template <class M, class F>
M* combine(const Call& call, const M* A, const M* B, M* out, F f) {
  LM_NEED(A && B);
  if (!sameShape(A, B)) return call.fail(1);
  LM_OUTPUT_MATRIX(out, rows(A), columns(A));
  const int n = columns(A);
  for (int i = 0; i < rows(A); ++i) {
    const auto *a = row(A, i), *b = row(B, i);
    auto* const to = out->me[i];
    for (int j = 0; j < n; ++j)
      to[j] = f(a[j], b[j]);
  }
  return out;
}

template <class M>
M* scale(const Call& call, EntryOf<M> s, const M* A, M* out) {
  return combine(call, A, A, out, [s](auto a, auto) { return s * a; });
}

// A factor of a product: the matrix as it is, or its transpose (adjoint, if complex).
template <class M>
struct Factor {
  const M* A;
  bool turned;
  int m() const { return turned ? columns(A) : rows(A); }
  int n() const { return turned ? rows(A) : columns(A); }
  // A matrix by rows is its transpose by columns, so that option "N" is the matrix as it is.
  const char* option() const { return turned ? "C" : "N"; }
};

// C := s a b + beta C, as the transposed product by columns: C^T := s b^T a^T + beta C^T. A product
// without rows or columns touches nothing.
template <class M>
void multiply(const Factor<M>& a, const Factor<M>& b, EntryOf<M> s, EntryOf<M> beta, M* C) {
  blas::gemm(b.option(), a.option(), b.n(), a.m(), a.n(), s, b.A->base, stride(b.A), a.A->base,
             stride(a.A), beta, C->base, stride(C));
}

template <class M>
M* product(const Call& call, const Factor<M>& a, const Factor<M>& b, M* out) {
  LM_NEED(a.A && b.A);
  if (a.n() != b.m()) return call.fail(1);
  if (out == a.A || out == b.A) return call.fail(12);
  LM_OUTPUT_MATRIX(out, a.m(), b.n());
  multiply(a, b, scalar<EntryOf<M>>(1.0), EntryOf<M>(), out);
  return out;
}

// y := s A x + beta y or, turned, s A^T x + beta y.
void multiplyVector(const MAT* A, bool turned, const double* x, double s, double beta, double* y) {
  blas::gemv(turned ? "N" : "T", columns(A), rows(A), s, A->base, stride(A), x, beta, y);
}

// The same with the adjoint. BLAS has no product with the conjugate of a matrix and a vector, but
// one with matrices: y^T := s x^T conj(A) + beta y^T.
void multiplyVector(const ZMAT* A, bool turned, const ZCOMPLEX* x, ZCOMPLEX s, ZCOMPLEX beta,
                    ZCOMPLEX* y) {
  if (turned)
    blas::gemm("N", "C", 1, columns(A), rows(A), s, x, 1, A->base, stride(A), beta, y, 1);
  else
    blas::gemv("T", columns(A), rows(A), s, A->base, stride(A), x, beta, y);
}

// y := beta y + s op(A) x with the empty matrices that BLAS passes over.
template <class M>
void accumulate(const M* A, bool turned, const EntryOf<M>* x, EntryOf<M> s, EntryOf<M> beta,
                EntryOf<M>* y) {
  const int length = turned ? columns(A) : rows(A);
  if (A->m > 0 && A->n > 0)
    multiplyVector(A, turned, x, s, beta, y);
  else if (isZero(beta))
    std::fill_n(y, length, EntryOf<M>());
}

template <class M>
VectorOf<M>* vectorProduct(const Call& call, const M* A, bool turned, const VectorOf<M>* x,
                           VectorOf<M>* out) {
  LM_NEED(A && x);
  const Factor<M> a = {A, turned};
  if (length(x) != a.n()) return call.fail(1);
  if (out == x) return call.fail(12);
  LM_OUTPUT_VECTOR(out, a.m());
  accumulate(A, turned, x->ve, scalar<EntryOf<M>>(1.0), EntryOf<M>(), out->ve);
  return out;
}

// out := x + s op(A) y.
template <class M>
VectorOf<M>* vectorProductAdd(const Call& call, const VectorOf<M>* x, const VectorOf<M>* y,
                              const M* A, bool turned, EntryOf<M> s, VectorOf<M>* out) {
  LM_NEED(A && x && y);
  const Factor<M> a = {A, turned};
  if (length(x) != a.m() || length(y) != a.n()) return call.fail(1);
  if (out == y) return call.fail(12);
  LM_OUTPUT_VECTOR(out, a.m());
  if (out != x) std::copy_n(x->ve, a.m(), out->ve);
  accumulate(A, turned, y->ve, s, scalar<EntryOf<M>>(1.0), out->ve);
  return out;
}

} // namespace

#define LM_DEFINE_SUM(name, M, op)                                                                 \
  M* name(const M* A, const M* B, M* out, LM_ARGS) {                                               \
    LM_ENTER(name);                                                                                \
    return combine(call, A, B, out, [](auto a, auto b) { return a op b; });                        \
  }
LM_DEFINE_SUM(LM_m_add, MAT, +)
LM_DEFINE_SUM(LM_zm_add, ZMAT, +)
LM_DEFINE_SUM(LM_m_sub, MAT, -)
LM_DEFINE_SUM(LM_zm_sub, ZMAT, -)

#define LM_DEFINE_SCALE(name, M)                                                                   \
  M* name(EntryOf<M> s, const M* A, M* out, LM_ARGS) {                                             \
    LM_ENTER(name);                                                                                \
    return scale(call, s, A, out);                                                                 \
  }
LM_DEFINE_SCALE(LM_sm_mlt, MAT)
LM_DEFINE_SCALE(LM_zsm_mlt, ZMAT)

#define LM_DEFINE_SCALED_SUM(name, M)                                                              \
  M* name(const M* A, const M* B, EntryOf<M> s, M* out, LM_ARGS) {                                 \
    LM_ENTER(name);                                                                                \
    return combine(call, A, B, out, [s](auto a, auto b) { return a + s * b; });                    \
  }
LM_DEFINE_SCALED_SUM(LM_ms_mltadd, MAT)
LM_DEFINE_SCALED_SUM(LM_mz_mltadd, ZMAT)

#define LM_DEFINE_PRODUCT(name, M, turnA, turnB)                                                   \
  M* name(const M* A, const M* B, M* out, LM_ARGS) {                                               \
    LM_ENTER(name);                                                                                \
    return product<M>(call, {A, turnA}, {B, turnB}, out);                                          \
  }
LM_DEFINE_PRODUCT(LM_m_mlt, MAT, false, false)
LM_DEFINE_PRODUCT(LM_zm_mlt, ZMAT, false, false)
LM_DEFINE_PRODUCT(LM_mmtr_mlt, MAT, false, true)
LM_DEFINE_PRODUCT(LM_zmma_mlt, ZMAT, false, true)
LM_DEFINE_PRODUCT(LM_mtrm_mlt, MAT, true, false)
LM_DEFINE_PRODUCT(LM_zmam_mlt, ZMAT, true, false)

#define LM_DEFINE_VECTOR_PRODUCTS(M, p, turned)                                                    \
  VectorOf<M>* LM_##p##_mlt(const M* A, const VectorOf<M>* x, VectorOf<M>* out, LM_ARGS) {         \
    LM_ENTER(LM_##p##_mlt);                                                                        \
    return vectorProduct(call, A, turned, x, out);                                                 \
  }                                                                                                \
  VectorOf<M>* LM_##p##_mltadd(const VectorOf<M>* x, const VectorOf<M>* y, const M* A,             \
                               EntryOf<M> s, VectorOf<M>* out, LM_ARGS) {                          \
    LM_ENTER(LM_##p##_mltadd);                                                                     \
    return vectorProductAdd(call, x, y, A, turned, s, out);                                        \
  }
LM_DEFINE_VECTOR_PRODUCTS(MAT, mv, false)
LM_DEFINE_VECTOR_PRODUCTS(MAT, vm, true)
LM_DEFINE_VECTOR_PRODUCTS(ZMAT, zmv, false)
LM_DEFINE_VECTOR_PRODUCTS(ZMAT, zvm, true)

MAT* LM_m_mltadd(const MAT* A, const MAT* B, const MAT* C, double s, MAT* out, LM_ARGS) {
  LM_ENTER(LM_m_mltadd);
  LM_NEED(A && B && C);
  if (A->m != B->m || B->n != C->m || A->n != C->n) return call.fail(1);
  if (out == B || out == C) return call.fail(12);
  LM_OUTPUT_MATRIX(out, rows(A), columns(A));
  for (int i = 0; i < rows(A) && out != A; ++i)
    std::copy_n(A->me[i], columns(A), out->me[i]);
  multiply<MAT>({B, false}, {C, false}, s, 1.0, out);
  return out;
}
