/**
 * @file C_MatMSym.h
 * Symmetric matrices, one packed triangle.
 */
#ifndef ZAREL_C_MATMSYM_H
#define ZAREL_C_MATMSYM_H

#include <utility>

#include <zarel/C_Mat.h>
#include <zarel/C_VecPi.h>

/**
 * A square matrix of which one triangle is stored, column after column, as the packed routines of
 * BLAS and LAPACK expect it.
 *
 * Storage, with n rows and columns and indices from 0:
 * - side 0, the upper triangle: (i, j), i <= j, is value i + j (j + 1) / 2;
 * - any other side, the lower triangle: (i, j), j <= i, is value n j - j (j + 1) / 2 + i.
 *
 * The element (j, i) is the element (i, j), for complex scalars without conjugation. The array may
 * hold the factors of a packed routine instead of a matrix.
 *
 * Threads: no lock.
 * Failures: Mv throws 2872 and 2870. Resize, Copy, Write and Read return -1 after a trace. Factor,
 * Duplicate, GetCol and `Nrm(E_Nrm1)`, which needs columns, throw 2871. More than 2147483647 stored
 * values (n above 65535) throw 2880 in the constructor.
 * Exists for `double` and `std::complex<double>`.
 */
template <class T>
class ZAREL_API C_MatMSym : public C_Mat<T> {
public:
  /** The class of the stored values. */
  using Storage = C_VecPi<T, int, C_PtrInCore<T, int>>;

  /** 0 by 0, upper. */
  C_MatMSym() = default;
  /** `n` by `n`, cleared; `side` 0 upper, else lower. Throws 2, 1001, 2880. */
  C_MatMSym(int n, int side);
  /** A copy that owns its values. Throws 1001. */
  C_MatMSym(const C_MatMSym& source);
  /** Copy; throws 1001 where Copy returns -1. */
  C_MatMSym& operator=(const C_MatMSym& source);
  ~C_MatMSym() override;

  /** Returns a new matrix that shows the same packed array; the caller deletes it. */
  C_MatMSym* Lnk() override;
  T* Adr() override { return values_.Adr(0); }
  using C_Mat<T>::GetVal;
  T GetVal(int i, int j) override { return (*this)(i, j); }
  /** Stores (i, j) and with it (j, i). Returns 0. */
  int SetVal(int i, int j, T value) override {
    (*this)(i, j) = value;
    return 0;
  }
  int Init(T value) override;
  /** Computes y = alpha A x + beta y; the letter plays no part. Throws 2872, 2870. */
  int Mv(T alpha, C_Vec<T, int>& x, T beta, C_Vec<T, int>& y, char trans) override;
  /**
   * Adds `alpha` times this packed array to that of `b`, which must have the same order and side.
   * The side is not tested; another order throws 2872. Any other class of `b` is served element by
   * element.
   */
  int Axpy(C_Mat<T>& b, T alpha) override;
  C_MatMSym& operator*=(T alpha) override;
  /**
   * Solves with a packed factorisation (of `sptrf`) that the caller put at Adr(), in `solution`
   * or, if that is null, in `rhs`. Returns 0, or -1 after a message or a trace. Throws 2872 if a
   * vector or the pivots are shorter than the order.
   */
  int Solve(C_Vec<int, int>& pivots, C_Vec<T, int>* rhs, C_Vec<T, int>* solution) override;

  using C_Mat<T>::Print;
  using C_Mat<T>::WriteMatlab;
  int MemSize() const override { return values_.MemSize(); }
  int InCore() override { return 1; }
  bool Sym() override { return true; }
  C_GenericMat::E_Side GetSide() override { return static_cast<C_GenericMat::E_Side>(side_); }
  __int64 NbVal() override { return values_.Dim(); }
  char* AffType() const override;
  int Write(FILE* file) override;
  /** Reads order, side and values. Returns 0, or -1 after a trace; the matrix is then as it was. */
  int Read(FILE* file) override;
  int WriteMatlab(FILE* file) override;
  /** Prints; the heading goes to the standard output whatever `file` is. */
  int Print(FILE* file, int flags) override;
  /** Becomes `n` by `n` and upper; values are not kept. Returns 0, or -1 after a trace. */
  int Resize(int n, int ignored) override;
  /**
   * Returns a norm. The spectral one is the modulus of the dominant eigenvalue by power iteration,
   * which ends when a round changes it by less than a thousandth, or after `NbCol() + 1` rounds; a
   * matrix with two dominant eigenvalues of opposite sign gets a lower estimate.
   * Throws 3, 2871 for E_Nrm1, and 13202 for E_Nrm2 when values are above 1e100.
   */
  double Nrm(E_NrmType kind) override;

  /** Returns a reference to the stored value that is (i, j) and (j, i), not checked. */
  T& operator()(int i, int j) { return data()[index(i, j)]; }
  T const& operator()(int i, int j) const {
    return const_cast<C_MatMSym*>(this)->data()[index(i, j)];
  }
  /** Takes over order, side and values. Returns 0, or -1 after a trace at each level. */
  int Copy(C_MatMSym& source);
  /** Becomes `n` by `n` of that side; values are not kept. Throws 2, 1001, 2880. */
  void Shape(int n, int side) { sizeTo(n, side); }
  int Copy(const C_MatMSym& source) { return Copy(const_cast<C_MatMSym&>(source)); }

private:
  T* data() { return values_.Storage().C_PtrInCore<T, int>::Adr(0); }
  long long index(int i, int j) const {
    if (side_ == 0) {
      if (i > j) std::swap(i, j);
      return i + static_cast<long long>(j) * (j + 1LL) / 2;
    }
    if (j > i) std::swap(i, j);
    return static_cast<long long>(j) * (2LL * this->rows_ - j - 1) / 2 + i;
  }
  void sizeTo(int n, int side);
  int readBody(FILE* file);

  int side_ = 0;
  Storage values_;
};

/// @cond
#define ZAREL_EXTERN(T) extern template class C_MatMSym<T>;
ZAREL_SYMMETRIC_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

#endif
