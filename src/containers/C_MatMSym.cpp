#include <zarel/C_MatMSym.h>

#include <climits>
#include <cstring>

#include <zarel/C_Lapack.h>
#include <zarel/C_MessageTool.h>
#include <zarel/C_Trace.h>
#include <zarel/C_ZarelException.h>
#include <zarel/bf.h>

#include "containers/blocks.h"
#include "containers/files.h"
#include "containers/matrixNorm.h"
#include "containers/matrixText.h"
#include "containers/scalars.h"
#include "containers/sptrsReport.h"
#include "runtime/fail.h"

using Zarel::fail;
using Zarel::traced;

namespace {

char kMatMSymName[] = "C_MatMSym Type";

/** Stored values of order `n`; throws 2 for a negative order and 2880 above 2147483647. */
int packedCount(int n) {
  if (n < 0) fail(2);
  const long long count = static_cast<long long>(n) * (n + 1LL) / 2;
  if (count > INT_MAX) fail(2880);
  return static_cast<int>(count);
}

char uploOf(int side) {
  return side == 0 ? 'U' : 'L';
}

/** Runs a step that throws; a failure leaves a trace and gives -1. */
template <class Step>
int tracing(Step step) {
  try {
    return step() == 0 ? 0 : traced();
  } catch (const C_ZarelException&) {
    return traced();
  }
}

} // namespace

int Zarel::reportSptrs(int info) {
  if (info >= 0) return 0;
  C_MessageTool::HandleMessageArg("Lapack call getrf() failed: info=%d is an invalid value.",
                                  E_MsgError, 0, 0, -info);
  return -1;
}

template <class T>
C_MatMSym<T>::C_MatMSym(int n, int side) {
  sizeTo(n, side);
}

template <class T>
C_MatMSym<T>::C_MatMSym(const C_MatMSym& source) : C_MatMSym() {
  *this = source;
}

template <class T>
C_MatMSym<T>& C_MatMSym<T>::operator=(const C_MatMSym& source) {
  if (this != &source && Copy(source) != 0) fail(1001);
  return *this;
}

template <class T>
C_MatMSym<T>::~C_MatMSym() = default;

template <class T>
char* C_MatMSym<T>::AffType() const {
  return kMatMSymName;
}

template <class T>
C_MatMSym<T>* C_MatMSym<T>::Lnk() {
  auto* view = new C_MatMSym;
  view->values_.Attach(values_.Dim(), Adr());
  view->rows_ = view->columns_ = this->rows_;
  view->side_ = side_;
  return view;
}

// Shape.

template <class T>
void C_MatMSym<T>::sizeTo(int n, int side) {
  values_.Resize(packedCount(n));
  this->rows_ = this->columns_ = n;
  side_ = side;
}

template <class T>
int C_MatMSym<T>::Resize(int n, int) {
  return tracing([&] {
    sizeTo(n, 0);
    return 0;
  });
}

template <class T>
int C_MatMSym<T>::Copy(C_MatMSym& source) {
  if (&source == this) return 0;
  if (Resize(source.rows_, source.columns_) != 0) return traced();
  side_ = source.side_;
  return values_.Copy(source.values_);
}

// Numerics.

template <class T>
int C_MatMSym<T>::Init(T value) {
  return values_.Init(value, 0, -1);
}

template <class T>
C_MatMSym<T>& C_MatMSym<T>::operator*=(T alpha) {
  values_ *= alpha;
  return *this;
}

template <class T>
int C_MatMSym<T>::Axpy(C_Mat<T>& b, T alpha) {
  if (auto* target = dynamic_cast<C_MatMSym*>(&b)) return values_.Axpy(target->values_, alpha);
  return C_Mat<T>::Axpy(b, alpha);
}

template <class T>
int C_MatMSym<T>::Mv(T alpha, C_Vec<T, int>& x, T beta, C_Vec<T, int>& y, char) {
  const Zarel::C_Trace frame("C_MatMSym<T>::Mv", __FILE__, __LINE__, BegFunc(), EndFunc());
  if (x.Dim() != this->rows_) fail(2872);
  if (!y.InCore()) fail(2870);
  y.Resize(this->rows_);
  T* input = x.Extract(0, -1, nullptr);
  // What a vector off core hands out for a null buffer is a block for the caller to free.
  const Zarel::WorkBlock<T> temporary(x.InCore() ? nullptr : input);
  Zarel::Lapack::spmv(uploOf(side_), this->rows_, alpha, Adr(), input, 1, beta,
                      y.Extract(0, -1, nullptr), 1);
  return 0;
}

template <class T>
int C_MatMSym<T>::Solve(C_Vec<int, int>& pivots, C_Vec<T, int>* rhs, C_Vec<T, int>* solution) {
  const Zarel::C_Trace frame("C_MatMSym<T>::Solve", __FILE__, __LINE__, BegFunc(), EndFunc());
  if (rhs->Dim() < this->rows_ || pivots.Dim() < this->rows_) fail(2872);
  if (solution != nullptr && tracing([&] { return solution->Copy(*rhs); }) != 0) return -1;
  C_Vec<T, int>& target = solution == nullptr ? *rhs : *solution;
  int info = 0;
  Zarel::Lapack::sptrs(uploOf(side_), this->rows_, 1, Adr(), pivots.Adr(0), target.Adr(0),
                       this->rows_, &info);
  return Zarel::reportSptrs(info);
}

template <class T>
double C_MatMSym<T>::Nrm(E_NrmType kind) {
  return Zarel::matrixNorm<T>(*this, kind);
}

// Files.

template <class T>
int C_MatMSym<T>::Write(FILE* file) {
  if (tracing([&] { return C_GenericMat::Write(file); }) != 0) return -1;
  if (BF_fwrite_int(file, &side_, 1) != 0) return traced();
  return tracing([&] { return values_.Write(file); });
}

template <class T>
int C_MatMSym<T>::Read(FILE* file) {
  return tracing([&] { return readBody(file); });
}

/** Reads into a matrix aside, so that a failure leaves this one as it was. */
template <class T>
int C_MatMSym<T>::readBody(FILE* file) {
  C_MatMSym read;
  read.C_GenericMat::Read(file);
  if (read.rows_ != read.columns_) fail(21);
  if (BF_fread_int(file, &read.side_, 1) != 0) fail(21);
  read.values_.Read(file);
  if (read.values_.Dim() != packedCount(read.rows_)) fail(21);
  values_.Copy(read.values_);
  this->rows_ = this->columns_ = read.rows_;
  side_ = read.side_;
  return 0;
}

// Text.

template <class T>
int C_MatMSym<T>::Print(FILE* file, int flags) {
  C_Mat<T>::Print(stdout, flags);
  if (file == nullptr) return 0;
  std::fprintf(file, "- Side : %s\n", side_ == 0 ? "Upper" : "Lower");
  for (int i = 0; i < this->rows_; ++i) {
    for (int j = i; j < this->columns_; ++j) {
      std::fprintf(file, "[%d,%d]:", i, j);
      Zarel::printScalar(file, GetVal(i, j));
      std::fprintf(file, " %s", (j - i) % 5 == 4 ? "\n" : " ");
    }
    std::fputc('\n', file);
  }
  return 0;
}

template <class T>
int C_MatMSym<T>::WriteMatlab(FILE* file) {
  C_Mat<T>::WriteMatlab(file);
  Zarel::writeMatlabRows(file, *this);
  return 0;
}

#define ZAREL_INSTANTIATE(T) template class C_MatMSym<T>;
ZAREL_SYMMETRIC_SCALARS(ZAREL_INSTANTIATE)
