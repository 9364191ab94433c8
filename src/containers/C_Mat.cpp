#include <zarel/C_Mat.h>

#include <zarel/C_Lapack.h>

#include "containers/files.h"
#include "containers/matrixNorm.h"
#include "containers/scalars.h"
#include "runtime/fail.h"

using Zarel::fail;
using Zarel::ScalarTraits;

namespace {

char kMatName[] = "C_Mat Base Type";

template <class T>
bool hasAddress(C_Vec<T, int>& v) {
  return v.InCore() && v.Adr(0) != nullptr;
}

} // namespace

template <class T>
C_Mat<T>::C_Mat(const C_Mat& other) : C_Counter<C_Mat<T>>(other), C_GenericMat(other) {}

template <class T>
C_Mat<T>::~C_Mat() = default;

// What only a concrete matrix offers.

template <class T>
C_Mat<T>* C_Mat<T>::Lnk() {
  fail(2871);
}
template <class T>
C_Mat<T>* C_Mat<T>::Duplicate() {
  fail(2871);
}
template <class T>
T* C_Mat<T>::Adr() {
  return nullptr;
}
template <class T>
int C_Mat<T>::SetVal(int, int, T) {
  fail(2871);
}
template <class T>
int C_Mat<T>::GetCol(int, C_Vec<T, int>&) {
  fail(2871);
}
template <class T>
int C_Mat<T>::Init(T) {
  fail(2871);
}
template <class T>
C_Mat<T>& C_Mat<T>::operator*=(T) {
  fail(2871);
}
template <class T>
int C_Mat<T>::Factor(C_Vec<int, int>&, bool) {
  fail(2871);
}
template <class T>
int C_Mat<T>::Solve(C_Vec<int, int>&, C_Vec<T, int>*, C_Vec<T, int>*) {
  fail(2871);
}

// Text.

template <class T>
char* C_Mat<T>::AffType() const {
  return kMatName;
}
template <class T>
C_Type::E_Type C_Mat<T>::Type() {
  return ScalarTraits<T>::type;
}

template <class T>
int C_Mat<T>::GetVal(int i, int j, std::string& text) {
  text = Zarel::scalarText(GetVal(i, j));
  return 0;
}

template <class T>
int C_Mat<T>::WriteMatlab(FILE* file) {
  Zarel::requireHandle(file);
  std::fprintf(file, "%s\n", this->AffType());
  std::fprintf(file, "%s\n", ScalarTraits<T>::name);
  std::fprintf(file, "%d %d\n", rows_, columns_);
  return 0;
}

template <class T>
int C_Mat<T>::Print(FILE* file, int) {
  if (file == nullptr) return 0;
  std::fprintf(file, " Type: %s\n Rows: %d\n Columns: %d\n In Core: %d\n Sym: %s\n",
               ScalarTraits<T>::name, rows_, columns_, this->InCore(), this->Sym() ? "YES" : "NO");
  return 0;
}

// The walk along a row.

template <class T>
int C_Mat<T>::FirstCol(T& value) {
  if (columns_ < 1 || row_cursor_ < 0 || row_cursor_ >= rows_) fail(2872);
  column_cursor_ = 0;
  value = GetVal(row_cursor_, column_cursor_);
  return 0;
}

template <class T>
int C_Mat<T>::NextCol(T& value) {
  ++column_cursor_;
  if (column_cursor_ >= columns_) return -1;
  value = GetVal(row_cursor_, column_cursor_);
  return column_cursor_;
}

template <class T>
int C_Mat<T>::FirstCol(std::string& text) {
  T value(0);
  const int column = FirstCol(value);
  text = Zarel::scalarText(value);
  return column;
}

template <class T>
int C_Mat<T>::NextCol(std::string& text) {
  T value(0);
  const int column = NextCol(value);
  if (column != -1) text = Zarel::scalarText(value);
  return column;
}

// Operations, element by element where the class gives no address.

template <class T>
int C_Mat<T>::Zero() {
  return Init(T(0));
}

template <class T>
int C_Mat<T>::GenCopy(C_GenericMat& source) {
  C_Mat* matrix = dynamic_cast<C_Mat*>(&source);
  if (matrix == nullptr || matrix == this) return 0;
  this->Resize(matrix->NbRow(), matrix->NbCol());
  if (rows_ != matrix->NbRow() || columns_ != matrix->NbCol()) fail(2872);
  for (int i = 0; i < rows_; ++i)
    for (int j = 0; j < columns_; ++j)
      SetVal(i, j, matrix->GetVal(i, j));
  return 0;
}

template <class T>
int C_Mat<T>::Axpy(C_Mat& b, T alpha) {
  if (rows_ != b.rows_ || columns_ != b.columns_) fail(2872);
  for (int j = 0; j < columns_; ++j)
    for (int i = 0; i < rows_; ++i)
      b.SetVal(i, j, Zarel::plus(Zarel::times(GetVal(i, j), alpha), b.GetVal(i, j)));
  return 0;
}

template <class T>
int C_Mat<T>::Mv(T alpha, C_Vec<T, int>& x, T beta, C_Vec<T, int>& y, char trans) {
  const bool plain = trans == 'N' || trans == 'n';
  if (x.Dim() != (plain ? columns_ : rows_)) fail(2872);
  const int length = plain ? rows_ : columns_;
  if (y.Dim() != length) y.Resize(length);
  if (Adr() != nullptr && hasAddress(x) && hasAddress(y)) {
    Zarel::Lapack::gemv(trans, rows_, columns_, alpha, Adr(), rows_, x.Adr(0), 1, beta, y.Adr(0),
                        1);
    return 0;
  }
  if (rows_ != columns_) fail(2872);
  for (int k = 0; k < columns_; ++k) {
    const T t = Zarel::times(alpha, x.GetVal(k));
    T s = Zarel::times(beta, y.GetVal(k));
    for (int l = 0; l < rows_; ++l)
      s = Zarel::plus(s, Zarel::times(plain ? GetVal(k, l) : GetVal(l, k), t));
    y.SetVal(k, s);
  }
  return 0;
}

namespace {

template <class T>
double (*&norm2Hook())(C_Mat<T>&) {
  static double (*hook)(C_Mat<T>&) = Zarel::powerNorm2<T>;
  return hook;
}

} // namespace

template <class T>
void Zarel::setMatrixNorm2Hook(double (*norm2)(C_Mat<T>&)) {
  norm2Hook<T>() = norm2 != nullptr ? norm2 : Zarel::powerNorm2<T>;
}

template <class T>
double Zarel::spectralNorm(C_Mat<T>& matrix) {
  if (matrix.NbRow() == 0 || matrix.NbCol() == 0) return 0;
  return norm2Hook<T>()(matrix);
}

#define ZAREL_INSTANTIATE(T)                                                                       \
  template class C_Counter<C_Mat<T>>;                                                              \
  template class C_Mat<T>;                                                                         \
  template void Zarel::setMatrixNorm2Hook<T>(double (*)(C_Mat<T>&));                               \
  template double Zarel::spectralNorm<T>(C_Mat<T>&);
ZAREL_MATRIX_SCALARS(ZAREL_INSTANTIATE)
