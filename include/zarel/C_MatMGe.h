/**
 * @file C_MatMGe.h
 * Dense general matrices.
 */
#ifndef ZAREL_C_MATMGE_H
#define ZAREL_C_MATMGE_H

#include <zarel/C_Mat.h>
#include <zarel/C_VecPi.h>

/**
 * A dense matrix of scalar `T`, stored by columns.
 *
 * Storage: column `j` begins at `Adr() + j * LeadDim()`, and the value (i, j) is `m[j][i]`. The
 * leading dimension is at least the number of rows; it is greater for some views and after
 * ResizeAndKeepValues to fewer rows. An owner frees its values; a view (built with a pointer or by
 * Lnk) shows memory of another and must not outlive it.
 *
 * Factored mark: set by Factor, cleared by Release alone. Who changes the values after Factor
 * passes `force`.
 *
 * Threads: no lock; the cursors are state of the object.
 *
 * Failures, all thrown: 2 negative size, 3 unknown norm, 12 index out of range or null file, 21
 * and 22 failing read and write, 1001 no memory, 2869 singular, 2870 vector not in core, or a view
 * cannot grow, 2871 not offered for this scalar or source, 2872 shapes differ, 2873 vector not
 * full, 2875 LAPACK refused an argument, 2880 more than 2147483647 values.
 *
 * Example:
 * @code
 * C_MatMGe<double> a(2, 2);
 * a(0, 0) = 2; a(1, 1) = 4;
 * C_VecPi<double, int, C_PtrInCore<double, int>> b(2, 8.0);
 * C_VecPi<int, int, C_PtrInCore<int, int>> pivots;
 * a.Factor(pivots, false);
 * a.Solve(pivots, &b, nullptr);  // b is now 4, 2
 * @endcode
 *
 * Exists for the scalars of ZAREL_MATRIX_SCALARS.
 */
template <class T>
class ZAREL_API C_MatMGe : public C_Mat<T> {
public:
  /** The class of the stored values. */
  using Storage = C_VecPi<T, __int64, C_PtrInCore<T, __int64>>;

  /** 0 by 0. */
  C_MatMGe() = default;
  /** `rows` by `columns`, cleared. Throws 2, 1001, 2880. */
  C_MatMGe(int rows, int columns);
  /** A view on `data` (lead x columns, by columns); `lead` -1 means `rows`. Throws 2, 1001. */
  C_MatMGe(int rows, int columns, T* data, int lead);
  /** A copy that owns its values. Throws 1001. */
  C_MatMGe(const C_MatMGe& source);
  /** A copy of a general matrix, or a symmetric one written out in full. Throws 2871, 1001. */
  explicit C_MatMGe(const C_Mat<T>& source);
  /** Copy. Throws 1001, 2870. */
  C_MatMGe& operator=(const C_MatMGe& source);
  /** Copy, or a symmetric matrix written out in full. Throws 2871, 1001, 2870. */
  C_MatMGe& operator=(const C_Mat<T>& source);
  ~C_MatMGe() override;

  /** Returns a new view on the same values; the caller deletes it. */
  C_MatMGe* Lnk() override;
  /** Returns a new matrix with a copy of the values; the caller deletes it. */
  C_MatMGe* Duplicate() override;
  T* Adr() override { return values_.Adr(0); }
  using C_Mat<T>::GetVal;
  T GetVal(int i, int j) override { return table_[j][i]; }
  int SetVal(int i, int j, T value) override {
    table_[j][i] = value;
    return 0;
  }
  /** Makes `v` a view on column `j`: writing through `v` changes the matrix. Throws 12. */
  int GetCol(int j, C_Vec<T, int>& v) override;
  int GetCol(int j, C_VecPi<T, int, C_PtrInCore<T, int>>& v);
  int Init(T value) override;
  /**
   * Computes y = alpha op(A) x + beta y by one BLAS call. With integers ends the process with exit
   * code -1 once the shapes are found to fit. Throws 2870, 2873, 2872.
   */
  int Mv(T alpha, C_Vec<T, int>& x, T beta, C_Vec<T, int>& y, char trans) override;
  int Axpy(C_Mat<T>& b, T alpha) override;
  C_MatMGe& operator*=(T alpha) override;
  /**
   * Replaces the values by their LU factors and marks the matrix as factored; returns at once if
   * it is marked and `force` is false. `pivots` takes `NbRow()` values, numbered from 1.
   * Throws 2869 at a zero pivot (the values are then partly factored, the mark stays clear), 2875,
   * 2871 for integers.
   */
  int Factor(C_Vec<int, int>& pivots, bool force) override;
  /**
   * Solves A x = rhs with the factors that stand in the values. The factored mark is not tested.
   * Throws 2872 if a vector or the pivots are shorter than the rows, 2875, 2871 for integers.
   */
  int Solve(C_Vec<int, int>& pivots, C_Vec<T, int>* rhs, C_Vec<T, int>* solution) override;
  /** Returns the distance between columns, in values. */
  virtual int LeadDim() const;
  /**
   * Becomes alpha op(A) op(B) + beta times itself by one BLAS call, with 'N' for no transposition.
   * The matrix is resized first, which clears nothing. An empty result leaves it alone. With
   * integers ends the process with exit code -1 once the shapes are found to fit. Throws 2872.
   */
  virtual int MM(char ta, char tb, T alpha, C_MatMGe& a, C_MatMGe& b, T beta);

  using C_Mat<T>::Print;
  using C_Mat<T>::WriteMatlab;
  int MemSize() const override { return values_.MemSize(); }
  int InCore() override { return 1; }
  bool Sym() override { return false; }
  __int64 NbVal() override { return values_.Dim(); }
  int MaxLength() override { return this->columns_; }
  char* AffType() const override;
  int Write(FILE* file) override;
  /**
   * Reads shape and values. A shape or count that is negative, does not agree, or promises more
   * than the file still holds throws 21 and leaves the matrix as it was. So do more than 65536
   * columns of no rows, for which the file holds nothing.
   */
  int Read(FILE* file) override;
  int WriteMatlab(FILE* file) override;
  int Print(FILE* file, int row) override;
  /** Takes a shape; values stay where they are and fall under new indices. Throws 2, 2880, 2870. */
  int Resize(int rows, int columns) override;
  /** Takes a shape and keeps values; fewer rows keep block and leading dimension. */
  int ResizeAndKeepValues(int rows, int columns) override;
  /**
   * Removes columns. Only as many columns as are removed move down from behind them: with a longer
   * tail the columns after the moved ones stay in place. Throws 12.
   */
  int EraseCol(int first, int last) override;
  /** Removes rows; the values are compacted in place. Throws 12. */
  int EraseRow(int first, int last) override;
  /**
   * Returns a norm. The spectral one of several columns is an estimate by power iteration on A^H A,
   * which ends when a round changes it by less than a thousandth, or after `NbCol() + 1` rounds.
   * Throws 3, and for that estimate 2871 with integers and 13202 when values are above 1e100.
   */
  double Nrm(E_NrmType kind) override;

  /** Returns the address of column `j`, not checked. */
  T* operator[](int j) { return table_[j]; }
  T const* operator[](int j) const { return table_[j]; }
  /** Returns a reference to the value (i, j), not checked. */
  T& operator()(int i, int j) { return table_[j][i]; }
  T const& operator()(int i, int j) const { return table_[j][i]; }
  /** Becomes a copy of `source`. Returns 0. Throws 1001, 2870. */
  int Copy(C_MatMGe& source);
  int Copy(const C_MatMGe& source) { return Copy(const_cast<C_MatMGe&>(source)); }
  /** Sets the table of columns anew. Returns 0. Throws 1001. */
  int ConnectCols();
  /** Gives values and table back; 0 by 0 and not factored afterwards. Returns 0. */
  int Release();
  /**
   * Transposes in place with a work vector of (rows + columns) / 2 integers. The leading dimension
   * must equal the rows. Returns 0. Throws 1001.
   */
  int TransposeInSitu();

private:
  using Marks = C_VecPi<int, int, C_PtrInCore<int, int>>;

  bool packed() const { return lead_ == this->rows_; }
  void reserveTable(int columns);
  void setShape(int rows, int columns, int lead);
  void assign(const C_Mat<T>& source);
  void clearFrom(__int64 position);
  void growRows(int rows);
  void transposeWith(Marks& moved);
  void swapAcrossDiagonal();
  void requireErasable(int first, int last, int size) const;

  int factored_ = 0;
  Storage values_;
  T** table_ = nullptr;
  int table_size_ = 0;
  int lead_ = 0;
};

/// @cond
#define ZAREL_EXTERN(T) extern template class C_MatMGe<T>;
ZAREL_MATRIX_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

#endif
