// Dense general matrices: shape, storage, files and text. The numerics stand in
// C_MatMGeNumerics.tpp, the transposition in transpose.h.
#include <zarel/C_MatMGe.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <iostream>
#include <memory>

#include <zarel/C_Lapack.h>
#include <zarel/C_Trace.h>

#include "containers/blas.h"
#include "containers/files.h"
#include "containers/matrixNorm.h"
#include "containers/matrixText.h"
#include "containers/scalars.h"
#include "containers/transpose.h"
#include "runtime/fail.h"

using Zarel::fail;

namespace {

// A matrix without rows may have that many columns in a file.
constexpr int mostEmptyColumns = 1 << 16;

char kMatMGeName[] = "C_MatMGe Type";
constexpr char kMatMSymName[] = "C_MatMSym Type";

/** Values of a legal shape; throws 2 for a negative side and 2880 above 2147483647. */
long long valuesOf(int rows, int columns) {
  if (rows < 0 || columns < 0) fail(2);
  const long long count = static_cast<long long>(rows) * columns;
  if (count > INT_MAX) fail(2880);
  return count;
}

template <class T>
bool isGeneral(const C_Mat<T>& matrix) {
  return std::strcmp(matrix.AffType(), kMatMGeName) == 0;
}

/** Integers of work that a transposition takes. */
int marksFor(int rows, int columns) {
  return static_cast<int>((static_cast<long long>(rows) + columns) / 2);
}

template <class T>
bool isSymmetric(const C_Mat<T>& matrix) {
  return std::strcmp(matrix.AffType(), kMatMSymName) == 0;
}

} // namespace

template <class T>
C_MatMGe<T>::C_MatMGe(int rows, int columns) : C_MatMGe() { // whose destructor frees the table
  Resize(rows, columns);
}

template <class T>
C_MatMGe<T>::C_MatMGe(int rows, int columns, T* data, int lead) : C_MatMGe() {
  if (rows < 0 || columns < 0) fail(2);
  if (lead == -1) lead = rows;
  reserveTable(columns);
  values_.Attach(static_cast<__int64>(lead) * columns, data);
  setShape(rows, columns, lead);
}

template <class T>
C_MatMGe<T>::C_MatMGe(const C_MatMGe& source) : C_MatMGe() {
  Copy(source);
}

template <class T>
C_MatMGe<T>::C_MatMGe(const C_Mat<T>& source) : C_MatMGe() {
  assign(source);
}

template <class T>
C_MatMGe<T>& C_MatMGe<T>::operator=(const C_MatMGe& source) {
  if (this != &source) Copy(source);
  return *this;
}

template <class T>
C_MatMGe<T>& C_MatMGe<T>::operator=(const C_Mat<T>& source) {
  if (this != &source) assign(source);
  return *this;
}

template <class T>
C_MatMGe<T>::~C_MatMGe() {
  Zarel::freeValues(table_);
}

template <class T>
void C_MatMGe<T>::assign(const C_Mat<T>& source) {
  C_Mat<T>& matrix = const_cast<C_Mat<T>&>(source);
  if (isGeneral(source)) {
    Copy(dynamic_cast<C_MatMGe&>(matrix));
    return;
  }
  if (!isSymmetric(source)) fail(2871);
  this->GenCopy(matrix);
}

template <class T>
char* C_MatMGe<T>::AffType() const {
  return kMatMGeName;
}
template <class T>
int C_MatMGe<T>::LeadDim() const {
  return lead_;
}

template <class T>
C_MatMGe<T>* C_MatMGe<T>::Lnk() {
  return new C_MatMGe(this->rows_, this->columns_, Adr(), LeadDim());
}

template <class T>
C_MatMGe<T>* C_MatMGe<T>::Duplicate() {
  auto copy = std::make_unique<C_MatMGe>(this->rows_, this->columns_);
  copy->Copy(*this);
  return copy.release();
}

template <class T>
int C_MatMGe<T>::Copy(C_MatMGe& source) {
  if (&source == this) return 0;
  Resize(source.rows_, source.columns_);
  if (packed() && source.packed()) {
    std::copy_n(source.Adr(), NbVal(), Adr());
    return 0;
  }
  for (int j = 0; j < this->columns_; ++j)
    std::copy_n(source[j], this->rows_, (*this)[j]);
  return 0;
}

template <class T>
int C_MatMGe<T>::GetCol(int j, C_Vec<T, int>& v) {
  if (j < 0 || j >= this->columns_) fail(12);
  return v.Attach(this->rows_, table_[j]);
}

template <class T>
int C_MatMGe<T>::GetCol(int j, C_VecPi<T, int, C_PtrInCore<T, int>>& v) {
  return GetCol(j, static_cast<C_Vec<T, int>&>(v));
}

// Shape.

template <class T>
void C_MatMGe<T>::reserveTable(int columns) {
  if (columns <= table_size_) return;
  table_ = Zarel::resizedValues(table_, columns);
  table_size_ = columns;
}

/** Takes a shape for which values and table have room, and points the table at the columns. */
template <class T>
void C_MatMGe<T>::setShape(int rows, int columns, int lead) {
  this->rows_ = rows;
  this->columns_ = columns;
  lead_ = lead;
  T* column = Adr();
  for (int j = 0; j < columns; ++j)
    table_[j] = column + static_cast<std::ptrdiff_t>(j) * lead;
}

template <class T>
int C_MatMGe<T>::ConnectCols() {
  reserveTable(this->columns_);
  setShape(this->rows_, this->columns_, lead_);
  return 0;
}

template <class T>
int C_MatMGe<T>::Release() {
  setShape(0, 0, 0);
  factored_ = 0;
  values_.Release();
  Zarel::freeValues(table_);
  table_ = nullptr;
  table_size_ = 0;
  return 0;
}

template <class T>
int C_MatMGe<T>::Resize(int rows, int columns) {
  if (rows == this->rows_ && columns == this->columns_) return 0;
  const long long count = valuesOf(rows, columns);
  reserveTable(columns);
  values_.Resize(count);
  setShape(rows, columns, rows);
  return 0;
}

template <class T>
void C_MatMGe<T>::clearFrom(__int64 position) {
  if (position < values_.Dim()) values_.Zero(position, -1);
}

template <class T>
int C_MatMGe<T>::ResizeAndKeepValues(int rows, int columns) {
  valuesOf(rows, columns);
  const int oldRows = this->rows_;
  const int oldColumns = this->columns_;
  if (columns != oldColumns) {
    Resize(oldRows, columns);
    clearFrom(static_cast<__int64>(oldRows) * oldColumns);
  }
  if (rows < oldRows)
    this->rows_ = rows; // block, leading dimension and table stay: a view inside the block
  else if (rows > oldRows)
    growRows(rows);
  return 0;
}

/**
 * Adds cleared rows: transposed, they are columns at the end. All memory is taken beforehand, so
 * that a failure leaves the matrix as it was.
 */
template <class T>
void C_MatMGe<T>::growRows(int rows) {
  const int oldRows = this->rows_;
  const int columns = this->columns_;
  Marks moved(marksFor(std::max(rows, lead_), columns));
  reserveTable(std::max({rows, lead_, columns}));
  values_.Resize(std::max(values_.Dim(), static_cast<__int64>(rows) * columns));
  setShape(oldRows, columns, lead_); // the block may have moved
  if (!packed()) Resize(lead_, columns);
  transposeWith(moved);
  Resize(columns, rows);
  clearFrom(static_cast<__int64>(oldRows) * columns);
  transposeWith(moved);
}

template <class T>
int C_MatMGe<T>::TransposeInSitu() {
  Marks moved(marksFor(this->rows_, this->columns_));
  reserveTable(this->rows_);
  transposeWith(moved);
  return 0;
}

template <class T>
void C_MatMGe<T>::transposeWith(Marks& moved) {
  Resize(this->columns_, this->rows_);
  const int rows = this->rows_;
  const int columns = this->columns_;
  if (rows < 2 || columns < 2) return;
  if (rows == columns) {
    swapAcrossDiagonal();
    return;
  }
  moved.Zero(0, -1);
  Zarel::CycleTransposition<T>(Adr(), rows, columns, moved.Adr(0), marksFor(rows, columns)).run();
}

template <class T>
void C_MatMGe<T>::swapAcrossDiagonal() {
  for (int j = 1; j < this->columns_; ++j)
    for (int i = 0; i < j; ++i)
      std::swap(table_[j][i], table_[i][j]);
}

template <class T>
void C_MatMGe<T>::requireErasable(int first, int last, int size) const {
  if (first < 0 || last < first || last >= size) fail(12);
}

template <class T>
int C_MatMGe<T>::EraseCol(int first, int last) {
  if (last == -1) last = first;
  requireErasable(first, last, this->columns_);
  const int erased = last - first + 1;
  const int moved = std::min(erased, this->columns_ - 1 - last);
  if (moved > 0)
    std::memmove(static_cast<void*>(table_[first]), table_[last + 1],
                 Zarel::bytesOf(static_cast<long long>(lead_) * moved, sizeof(T)));
  return Resize(this->rows_, this->columns_ - erased);
}

template <class T>
int C_MatMGe<T>::EraseRow(int first, int last) {
  if (last == -1) last = first;
  requireErasable(first, last, this->rows_);
  const int kept = this->rows_ - (last - first + 1);
  T* target = Adr();
  for (int j = 0; j < this->columns_; ++j) {
    T* column = table_[j];
    std::copy_n(column, first, target);
    std::copy(column + last + 1, column + this->rows_, target + first);
    target += kept;
  }
  return Resize(kept, this->columns_);
}

// Files.

template <class T>
int C_MatMGe<T>::Write(FILE* file) {
  C_GenericMat::Write(file);
  // The count is computed in 32 bits; no shape that Resize lets pass can exceed them.
  const int count =
      static_cast<int>(static_cast<unsigned>(this->rows_) * static_cast<unsigned>(this->columns_));
  Zarel::writeValues(file, &count, 1);
  if (packed()) {
    Zarel::writeValues(file, Adr(), count);
    return 0;
  }
  for (int j = 0; j < this->columns_; ++j)
    Zarel::writeValues(file, table_[j], this->rows_);
  return 0;
}

template <class T>
int C_MatMGe<T>::Read(FILE* file) {
  Zarel::requireHandle(file);
  const int rows = Zarel::readOne<int>(file);
  const int columns = Zarel::readOne<int>(file);
  const long long product = static_cast<long long>(rows) * columns;
  if (rows < 0 || columns < 0) fail(21);
  const long long count =
      product <= INT_MAX ? Zarel::readOne<int>(file) : Zarel::readOne<__int64>(file);
  if (count != product) fail(21);
  Zarel::requireHolds(file, count, sizeof(T));
  // Columns without rows take no bytes of the file, yet a pointer each here.
  if (rows == 0 && columns > mostEmptyColumns) fail(21);
  reserveTable(columns);
  values_.Resize(count);
  setShape(rows, columns, rows);
  Zarel::readValues(file, Adr(), count);
  return 0;
}

// Text.

template <class T>
int C_MatMGe<T>::Print(FILE* file, int row) {
  if (file == nullptr) return 0;
  C_Mat<T>::Print(file, row);
  std::fputs(" Values: \n", file);
  const int first = row == -1 ? 0 : std::max(row, 0);
  const int end = row == -1 ? this->rows_ : std::min(row + 1, this->rows_);
  for (int i = first; i < end; ++i) {
    for (int j = 0; j < this->columns_; ++j) {
      std::fprintf(file, "[%d,%d]:", i + 1, j + 1);
      Zarel::printScalar(file, GetVal(i, j));
      if (j % 5 == 4) std::fputc('\n', file);
    }
    std::fputc('\n', file);
  }
  return 0;
}

template <class T>
int C_MatMGe<T>::WriteMatlab(FILE* file) {
  C_Mat<T>::WriteMatlab(file);
  Zarel::writeMatlabRows(file, *this);
  return 0;
}

#include "containers/C_MatMGeNumerics.tpp"

#define ZAREL_INSTANTIATE(T) template class C_MatMGe<T>;
ZAREL_MATRIX_SCALARS(ZAREL_INSTANTIATE)
