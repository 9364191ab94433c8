// Vector sets: products.
#include <zarel/C_vstruct.h>

#include <algorithm>
#include <type_traits>

#include <zarel/C_Communicator.h>
#include <zarel/C_Lapack.h>

#include "containers/blas.h"
#include "vectorset/RowPanels.h"
#include "vectorset/blas3.h"
#include "vectorset/block.h"
#include "vectorset/instantiate.h"
#include "vectorset/steps.h"
#include "vectorset/walk.h"

namespace Zarel {

namespace {

/** Sums a packed n x n matrix over all processes, in as many calls as counts of `int` need. */
template <class T>
void sumOverProcesses(C_MatMGe<T>& M, long long n) {
  if (C_Communicator* const processes = C_Communicator::Instance())
    forEachIntPiece(n * n,
                    [&](long long at, int count) { processes->glbSum(count, M.Adr() + at); });
}

/** C := A^H B for the first `n` vectors each. */
template <class T>
void mutualProduct(int n, const RowPanels& left, T* a, int lda, const RowPanels& right, T* b,
                   int ldb, T* c) {
  right.forEach({0, n}, {0, 0}, [&](int row, int rows) {
    left.prepare({0, n}, row, rows);
    Lapack::gemm('C', 'N', n, n, rows, T(1), a + row, lda, b + row, ldb, T(row == 0 ? 0 : 1), c, n);
  });
}

} // namespace

/** Throws 12 for an operand without values in memory. */
template <class T>
void C_VSTRUCT<T>::requireOperand(C_Vec<T, int>& v) const {
  if (!v.InCore() || v.Adr(0) == nullptr) fail(OutOfRange);
}

/**
 * Shows vectors as a matrix by columns, after mapping them. False where they are none: in files
 * without mapping, at distances that are no whole elements, or when the range cannot be mapped.
 */
template <class T>
bool C_VSTRUCT<T>::asMatrix(int first, int last, T*& data, int& lead) {
  const unsigned __int64 stride = strideBytes();
  if (fileResident() || !aligned() || stride % sizeof(T) != 0 || stride / sizeof(T) > INT_MAX)
    return false;
  try {
    MapBlock(static_cast<unsigned int>(first), static_cast<unsigned int>(last));
  } catch (const C_ZarelException& e) {
    if (e.getExceptionCode() != NotMapped) throw;
    return false;
  }
  data = (*this)[first]->Adr(0);
  lead = static_cast<int>(stride / sizeof(T));
  return true;
}

/** The panels of the vectors that are mapped now, or lie in memory. */
template <class T>
RowPanels C_VSTRUCT<T>::rowPanels() const {
  if (blocks_.empty()) return RowPanels(this->rows_);
  const _Cblock& block = *blocks_.back();
  return RowPanels(this->rows_, sizeof(T), *block.view, static_cast<int>(block.first),
                   strideBytes());
}

template <class T>
int C_VSTRUCT<T>::Mv(C_Vec<T, int>& x, C_Vec<T, int>& y, bool transpose, int first, int last) {
  ZAREL_STEP("Mv");
  requireValid();
  if (last == -1) last = this->columns_ - 1;
  if (first < 0 || last < first - 1 || last >= this->columns_) fail(OutOfRange);
  const int count = last - first + 1;
  const int m = transpose ? count : this->rows_;
  const int n = transpose ? this->rows_ : count;
  if (x.Dim() != n) fail(WrongLength);
  resize(y, m);
  if (m == 0) return 0;
  if (n == 0) return y.Zero(0, -1);
  requireOperand(x);
  requireOperand(y);
  if (coreMode_ == 1 && base_ == nullptr) fail(OutOfRange);
  if (coreMode_ == 1 || (coreMode_ == 2 && base_ != nullptr && blockGap_ == 0))
    mvOneBlock(x.Adr(0), y.Adr(0), transpose, first, count);
  else if (coreMode_ != 2)
    fail(BadCoreMode);
  else if (transpose)
    mvTransposed(x.Adr(0), y.Adr(0), first, last);
  else
    mvPlain(x.Adr(0), y.Adr(0), first, last);
  return 0;
}

/** The block starts `first * DimVec` elements in, also where the vectors of a link lie further
 * apart than they are long. */
template <class T>
void C_VSTRUCT<T>::mvOneBlock(T* x, T* y, bool transpose, int first, int count) {
  T* const a = base_ + static_cast<std::ptrdiff_t>(first) * this->rows_;
  const char op = transpose ? 'C' : 'N';
  if constexpr (std::is_integral_v<T>)
    Lapack::gemm(op, 'N', transpose ? count : this->rows_, 1, transpose ? this->rows_ : count, T(1),
                 a, leadDimension_, x, 1, T(0), y, 1);
  else
    Lapack::gemv(op, this->rows_, count, T(1), a, leadDimension_, x, 1, T(0), y, 1);
}

template <class T>
void C_VSTRUCT<T>::mvTransposed(T* x, T* y, int first, int last) {
  forEachRange(first, last, [&](T* data, int lead, int j, int count) {
    if constexpr (std::is_integral_v<T>)
      for (int k = 0; k < count; ++k)
        y[j - first + k] = Blas::dot(this->rows_, data + static_cast<std::ptrdiff_t>(k) * lead, x);
    else
      Lapack::gemv('C', this->rows_, count, T(1), data, lead, x, 1, T(0), y + (j - first), 1);
  });
}

/** Vectors with a zero coefficient are not even mapped. */
template <class T>
void C_VSTRUCT<T>::mvPlain(T* x, T* y, int first, int last) {
  std::fill_n(y, this->rows_, T(0));
  const auto add = [&](T* data, int lead, int j, int count) {
    if constexpr (std::is_integral_v<T>)
      for (int k = 0; k < count; ++k)
        Blas::axpy(this->rows_, x[j - first + k], data + static_cast<std::ptrdiff_t>(k) * lead, y);
    else
      Lapack::gemv('N', this->rows_, count, T(1), data, lead, x + (j - first), 1, T(1), y, 1);
  };
  const auto isZero = [&](int j) { return x[j - first] == T(0); };
  for (int j = first; j <= last;) {
    int end = j;
    while (end <= last && !isZero(end))
      ++end;
    forEachRange(j, end - 1, add);
    for (j = end; j <= last && isZero(j);)
      ++j;
  }
}

template <class T>
int C_VSTRUCT<T>::Mv(T alpha, C_Vec<T, int>& x, T beta, C_Vec<T, int>& y, char trans) {
  if (beta == T(0)) resize(y, trans == 'N' ? this->rows_ : this->columns_);
  if (beta != T(1)) y.SMlt(beta, 0, -1);
  Vector product;
  Mv(x, product, trans != 'N', 0, -1);
  return product.Axpy(y, alpha);
}

template <class T>
void C_VSTRUCT<T>::MM(T alpha, C_Mat<T>& B, T beta, C_Mat<T>& C, char trans) {
  ZAREL_STEP("MM");
  auto* const set = dynamic_cast<C_VSTRUCT*>(&C);
  if (set == this) fail(OutOfRange);
  const bool moves = coreMode_ == 2 && dynamic_cast<C_VSTRUCT*>(&B) == this;
  resize(C, trans != 'N' ? this->columns_ : this->rows_, B.NbCol());
  Vector b;
  Vector c;
  Vector copy;
  for (int j = 0; j < B.NbCol(); ++j) {
    B.GetCol(j, b);
    if (moves) copyTo(copy, b); // the product moves the range in which the column lies
    C.GetCol(j, c);
    Mv(alpha, moves ? copy : b, beta, c, trans);
    // A column of a set on a file is a copy, which has to go back.
    if (set != nullptr && set->fileResident()) set->storeVector(j, c);
  }
}

// Gram matrices.

template <class T>
int C_VSTRUCT<T>::MatQtQ(C_MatMGe<T>& M) {
  ZAREL_STEP("MatQtQ");
  requireValid();
  const int n = this->columns_;
  resize(M, n, n);
  M.Zero();
  if (n == 0 || this->rows_ == 0) return 0;
  const auto end = static_cast<unsigned int>(n - 1);
  const bool stays = isMapped(0, end);
  if (!gramByPanels(M)) gramByVectors(M);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < j; ++i)
      M(j, i) = M(i, j);
  if (!stays) {
    UnmapAllBlocks(nullptr);
    MapBlock(end, end);
  }
  return 0;
}

/** Sums the products of panels of rows. False for integers, and for a set that is no matrix. */
template <class T>
bool C_VSTRUCT<T>::gramByPanels([[maybe_unused]] C_MatMGe<T>& M) {
  if constexpr (std::is_integral_v<T>) {
    return false;
  } else {
    const int n = this->columns_;
    T* data = nullptr;
    int lead = 0;
    if (!asMatrix(0, n - 1, data, lead)) return false;
    rowPanels().forEach({0, n}, {0, 0}, [&](int row, int rows) {
      Blas::gramUpper(n, rows, data + row, lead, row == 0 ? 0 : 1, M.Adr(), M.LeadDim());
    });
    return true;
  }
}

/** A copy of vector i lets the range move on to vector j. */
template <class T>
void C_VSTRUCT<T>::gramByVectors(C_MatMGe<T>& M) {
  Vector t;
  for (int i = 0; i < this->columns_; ++i) {
    MapBlock(static_cast<unsigned int>(i), static_cast<unsigned int>(i));
    copyTo(t, *(*this)[i]);
    M(i, i) = t * t;
    for (int j = i + 1; j < this->columns_; ++j) {
      MapBlock(static_cast<unsigned int>(j), static_cast<unsigned int>(j));
      M(i, j) = t * *(*this)[j];
    }
  }
}

template <class T>
int C_VSTRUCT<T>::MatQ1tQ(C_VSTRUCT& Q1, C_MatMGe<T>& M, int n) {
  ZAREL_STEP("MatQ1tQ");
  requireValid();
  Q1.requireValid();
  if (n == -1) n = this->columns_;
  if (n < 0 || n > this->columns_ || n > Q1.columns_ || Q1.rows_ != this->rows_) fail(OutOfRange);
  resize(M, n, n);
  M.Zero();
  if (M.LeadDim() != n) {
    productByVectors(Q1, M, n);
    return 0;
  }
  if (n > 0 && this->rows_ > 0) {
    T* a = nullptr;
    T* b = nullptr;
    int lda = 0;
    int ldb = 0;
    if (Q1.asMatrix(0, Q1.columns_ - 1, a, lda) && asMatrix(0, this->columns_ - 1, b, ldb))
      mutualProduct(n, Q1.rowPanels(), a, lda, rowPanels(), b, ldb, M.Adr());
    else
      productByVectors(Q1, M, n);
  }
  sumOverProcesses(M, n);
  return 0;
}

/** The copy of vector i stays when this set, which may be Q1 itself, moves its one range on. */
template <class T>
void C_VSTRUCT<T>::productByVectors(C_VSTRUCT& Q1, C_MatMGe<T>& M, int n) {
  Vector t;
  for (int i = 0; i < n; ++i) {
    Q1.withVector(i, [&] { copyTo(t, *Q1[i]); });
    for (int j = 0; j < n; ++j)
      withVector(j, [&] { M(i, j) = t * *(*this)[j]; });
  }
}

template <class T>
typename C_VSTRUCT<T>::Vector C_VSTRUCT<T>::operator*(C_VSTRUCT&) {
  return Vector();
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
