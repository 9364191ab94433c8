/**
 * @file C_Mat.h
 * The abstract matrices: `C_GenericMat` knows the shape, `C_Mat` the operations on values.
 */
#ifndef ZAREL_C_MAT_H
#define ZAREL_C_MAT_H

#include <cstdio>
#include <string>

#include <zarel/C_Counter.h>
#include <zarel/C_Type.h>
#include <zarel/C_Vec.h>
#include <zarel/export.h>
#include <zarel/scalars.h>

/**
 * What all matrices share whatever their scalar: a shape, a cursor, a word of flags for the caller.
 *
 * Threads: the cursors are state of the object, so two threads cannot walk one matrix.
 * Failures: an operation that only a derived class can offer throws 2871. A null stream throws 12,
 * a failing read 21, a failing write 22.
 */
class ZAREL_API C_GenericMat : public C_Type {
public:
  /** Which part of a matrix is stored: 0 upper triangle, 1 lower triangle, 3 everything. */
  enum E_Side : int {};

  C_GenericMat(int rows = 0, int columns = 0) : rows_(rows), columns_(columns) {}
  C_GenericMat(const C_GenericMat&) = default;
  C_GenericMat& operator=(const C_GenericMat&) = default;
  ~C_GenericMat() override;

  /** Returns the bytes of all stored values, as an `int`. */
  virtual int MemSize() const = 0;
  /** Tells whether all values lie in memory. */
  virtual int InCore() = 0;
  /** Tells whether the element (i, j) is the element (j, i) by construction. */
  virtual bool Sym() = 0;
  /** Returns the part that is stored; 3 here. */
  virtual E_Side GetSide();
  /** Returns the count of stored values; here rows times columns, in 32 bits. */
  virtual __int64 NbVal();
  /** Returns the number of columns of a class that stores columns, -1 here. */
  virtual int MaxLength();
  /** Returns the name of the class as it is printed. */
  virtual char* AffType() const;
  /** Returns "0.1". */
  virtual char const* Version() const;
  /** Returns the scalar. */
  virtual C_Type::E_Type Type();
  /** Writes the matrix; the shape alone here. Returns 0. Throws 12, 22. */
  virtual int Write(FILE* file);
  /** Reads the matrix; the shape alone here. Returns 0. Throws 12, 21. */
  virtual int Read(FILE* file);
  /** Opens the file `name` for writing, writes the numbers as text, closes it. */
  virtual int WriteMatlab(char const* name);
  /** Writes the numbers as text. Throws 2871 here, 12 on a null stream in derived classes. */
  virtual int WriteMatlab(FILE* file);
  /** Prints for a reader: all rows, or only `row` if that is not -1. Returns 0. */
  virtual int Print(FILE* file, int row);
  /** Prints into the file `name`, at its end if `append`; nothing if it cannot be opened. */
  virtual int Print(char const* name, int row, bool append);
  /** Becomes a copy of any matrix; copies the shape alone here. Returns 0. */
  virtual int GenCopy(C_GenericMat& source);
  /** Changes the shape; values are not kept in place. Returns 0. */
  virtual int Resize(int rows, int columns);
  /** Changes the shape, keeps what both shapes share and clears what is new. Throws 2871 here. */
  virtual int ResizeAndKeepValues(int rows, int columns);
  /** Formats the value (i, j) as Print does. Returns 0. */
  virtual int GetVal(int i, int j, std::string& text) = 0;
  /** Sets the row cursor. Returns it, or -1 if `row` is at or past the rows. */
  virtual int Row(int row);
  /** Advances the row cursor. Returns it, or -1 when it has reached the rows. */
  virtual int NextRow();
  /** Formats the first value of the row under the cursor. Returns 0. */
  virtual int FirstCol(std::string& text) = 0;
  /** Formats the next value of that row. Returns its column, -1 at the end. */
  virtual int NextCol(std::string& text) = 0;
  /** Removes the columns `first` to `last` (-1: `first` alone). Throws 2871 here. */
  virtual int EraseCol(int first, int last);
  /** Removes the rows `first` to `last` (-1: `first` alone). Throws 2871 here. */
  virtual int EraseRow(int first, int last);
  /** Clears all values. Throws 2871 here. */
  virtual int Zero();
  /** Returns a norm. Throws 2871 here. */
  virtual double Nrm(E_NrmType kind);

  /** Returns the number of rows. */
  int NbRow() const { return rows_; }
  /** Returns the number of rows. */
  int NbLig() const { return rows_; }
  /** Returns the number of columns. */
  int NbCol() const { return columns_; }
  /** Returns bit `flag` of the flags; the library reads none. */
  bool getFlag(int flag) const;
  /** Sets or clears bit `flag` (0 to 31) of the flags. */
  void setFlag(int flag, bool value);

protected:
  int rows_ = 0;
  int columns_ = 0;
  int row_cursor_ = 0;
  int column_cursor_ = 0;
  int flags_ = 0;
};

/**
 * A matrix of scalar `T`.
 *
 * Failures, all thrown: 3 unknown norm, 12 index out of range or null file, 21 and 22 failing read
 * and write, 2870 vector not in core, 2871 not offered by this class, 2872 shapes differ, 2873
 * vector not full.
 * Exists for the scalars of ZAREL_MATRIX_SCALARS.
 */
template <class T>
class ZAREL_API C_Mat : public C_Counter<C_Mat<T>>, public C_GenericMat {
public:
  explicit C_Mat(int rows = 0, int columns = 0) : C_GenericMat(rows, columns) {}
  /** Takes shape, cursors and flags. The copy is not counted (C_Counter). */
  C_Mat(const C_Mat& other);
  C_Mat& operator=(const C_Mat&) = delete;
  ~C_Mat() override;

  /** Returns a new view on the same values; the caller deletes it. Throws 2871 here. */
  virtual C_Mat* Lnk();
  /** Returns a new matrix with a copy of the values; the caller deletes it. Throws 2871 here. */
  virtual C_Mat* Duplicate();
  /** Returns the address of the first stored value. Null here. */
  virtual T* Adr();
  /** Returns the value (i, j), not checked. */
  virtual T GetVal(int i, int j) = 0;
  /** Stores the value (i, j), not checked. Returns 0. Throws 2871 here. */
  virtual int SetVal(int i, int j, T value);
  /** Makes `v` a view on column `j`. Throws 2871 here. */
  virtual int GetCol(int j, C_Vec<T, int>& v);
  /**
   * Gives the first value of the row under the row cursor. Returns 0.
   * Throws 2872 without columns or when the row cursor is outside the rows.
   */
  virtual int FirstCol(T& value);
  /** Gives the next value of that row. Returns its column, -1 at the end. */
  virtual int NextCol(T& value);
  /** Sets all values. Throws 2871 here. */
  virtual int Init(T value);
  /**
   * Computes y = alpha op(A) x + beta y, with op(A) = A for `trans` 'N', else what BLAS makes of
   * the letter. `y` is resized. Returns 0. Throws 2872 when `x` does not fit.
   *
   * A class without an address for its values goes through GetVal, for square matrices only (2872
   * otherwise), and multiplies the row sums of op(A) by x: y[k] = beta y[k] + alpha x[k] sum_l
   * op(A)(k, l). Classes that need the true product override this function.
   */
  virtual int Mv(T alpha, C_Vec<T, int>& x, T beta, C_Vec<T, int>& y, char trans);
  /**
   * Adds `alpha` times this matrix to `b`. The argument changes, not this matrix. Returns 0.
   * Throws 2872.
   */
  virtual int Axpy(C_Mat& b, T alpha);
  /** Multiplies all values. Throws 2871 here. */
  virtual C_Mat& operator*=(T alpha);
  /** Replaces the values by their triangular factors. Throws 2871 here. */
  virtual int Factor(C_Vec<int, int>& pivots, bool force);
  /** Solves with the factors, in `solution` or, if that is null, in `rhs`. Throws 2871 here. */
  virtual int Solve(C_Vec<int, int>& pivots, C_Vec<T, int>* rhs, C_Vec<T, int>* solution);

  using C_GenericMat::Print;
  using C_GenericMat::WriteMatlab;
  char* AffType() const override;
  C_Type::E_Type Type() override;
  int WriteMatlab(FILE* file) override;
  int Print(FILE* file, int row) override;
  int GenCopy(C_GenericMat& source) override;
  int GetVal(int i, int j, std::string& text) override;
  int FirstCol(std::string& text) override;
  int NextCol(std::string& text) override;
  int Zero() override;
};

namespace Zarel {
/**
 * Installs another estimate of the spectral norm for `Nrm(E_Nrm2)` of a matrix with more than one
 * column. Null brings the library's own back, the power iteration of C_AlgoPower.
 * Exists for the scalars of ZAREL_MATRIX_SCALARS.
 */
template <class T>
ZAREL_API void setMatrixNorm2Hook(double (*norm2)(C_Mat<T>& matrix));
} // namespace Zarel

/// @cond
#define ZAREL_EXTERN(T)                                                                            \
  extern template class C_Counter<C_Mat<T>>;                                                       \
  extern template class C_Mat<T>;
ZAREL_MATRIX_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

#endif
