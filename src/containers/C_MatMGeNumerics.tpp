// The numerics of C_MatMGe, included by C_MatMGe.cpp.

namespace {

bool isPlain(char trans) {
  return trans == 'N' || trans == 'n';
}

/** Says what LAPACK refused and throws 2875. The text names getrf for the solver as well. */
[[noreturn]] void refuse(int info, char const* end) {
  std::cerr << "Lapack call getrf() failed: info" << -info << "is an invalid value" << end
            << std::endl;
  fail(2875);
}

/** Calls on(column) for every column as a vector. */
template <class T, class Visit>
void forEachColumn(C_MatMGe<T>& matrix, Visit visit) {
  C_VecPi<T, int, C_PtrInCore<T, int>> column;
  for (int j = 0; j < matrix.NbCol(); ++j) {
    matrix.GetCol(j, column);
    visit(column);
  }
}

} // namespace

template <class T>
int C_MatMGe<T>::Init(T value) {
  if (packed()) return values_.Init(value, 0, -1);
  forEachColumn(*this, [&](auto& column) { column.Init(value, 0, -1); });
  return 0;
}

template <class T>
C_MatMGe<T>& C_MatMGe<T>::operator*=(T alpha) {
  if (alpha == T(1)) return *this;
  if (packed())
    values_ *= alpha;
  else
    forEachColumn(*this, [&](auto& column) { column *= alpha; });
  return *this;
}

template <class T>
int C_MatMGe<T>::Axpy(C_Mat<T>& b, T alpha) {
  if (!isGeneral(b)) return C_Mat<T>::Axpy(b, alpha);
  if (this->rows_ != b.NbRow() || this->columns_ != b.NbCol()) fail(2872);
  C_MatMGe& target = dynamic_cast<C_MatMGe&>(b);
  if (packed() && target.packed()) {
    Zarel::Blas::axpy(NbVal(), alpha, Adr(), target.Adr());
    return 0;
  }
  for (int j = 0; j < this->columns_; ++j)
    Zarel::Blas::axpy(this->rows_, alpha, table_[j], target.table_[j]);
  return 0;
}

template <class T>
int C_MatMGe<T>::Mv(T alpha, C_Vec<T, int>& x, T beta, C_Vec<T, int>& y, char trans) {
  if (!x.InCore() || !y.InCore()) fail(2870);
  if (!x.Full() || !y.Full()) fail(2873);
  if (x.Dim() != (isPlain(trans) ? this->columns_ : this->rows_)) fail(2872);
  y.Resize(isPlain(trans) ? this->rows_ : this->columns_);
  if (this->rows_ != 0)
    Zarel::Lapack::gemv(trans, this->rows_, this->columns_, alpha, Adr(), lead_, x.Adr(0), 1, beta,
                        y.Adr(0), 1);
  return 0;
}

template <class T>
int C_MatMGe<T>::MM(char ta, char tb, T alpha, C_MatMGe& a, C_MatMGe& b, T beta) {
  const int m = isPlain(ta) ? a.rows_ : a.columns_;
  const int k = isPlain(ta) ? a.columns_ : a.rows_;
  const int n = isPlain(tb) ? b.columns_ : b.rows_;
  if (k != (isPlain(tb) ? b.rows_ : b.columns_)) fail(2872);
  if (m == 0 || n == 0) return 0;
  Resize(m, n);
  Zarel::Lapack::gemm(ta, tb, m, n, k, alpha, a.Adr(), a.lead_, b.Adr(), b.lead_, beta, Adr(),
                      lead_);
  return 0;
}

template <class T>
int C_MatMGe<T>::Factor(C_Vec<int, int>& pivots, bool force) {
  const Zarel::C_Trace frame("C_MatMGe<T>::Factor", __FILE__, __LINE__, BegFunc(), EndFunc());
  if (factored_ != 0 && !force) return 0;
  if (this->rows_ == 0) return 0;
  pivots.Resize(this->rows_);
  int info = 0;
  Zarel::Lapack::getrf(this->rows_, this->columns_, Adr(), lead_, pivots.Adr(0), &info);
  if (info < 0) refuse(info, "");
  if (info > 0) fail(2869);
  factored_ = 1;
  return 0;
}

template <class T>
int C_MatMGe<T>::Solve(C_Vec<int, int>& pivots, C_Vec<T, int>* rhs, C_Vec<T, int>* solution) {
  const Zarel::C_Trace frame("C_MatMGe<T>::Solve", __FILE__, __LINE__, BegFunc(), EndFunc());
  if (this->rows_ == 0) return 0;
  C_Vec<T, int>& target = solution == nullptr ? *rhs : *solution;
  if (rhs->Dim() < this->rows_ || pivots.Dim() < this->rows_ || this->columns_ < this->rows_)
    fail(2872);
  if (solution != nullptr) solution->Copy(*rhs);
  // OpenBLAS leaves info as it was when it refuses; the fifth argument, the leading dimension, is
  // the only one that can be wrong.
  int info = -5;
  Zarel::Lapack::getrs('N', this->rows_, 1, Adr(), lead_, pivots.Adr(0), target.Adr(0), this->rows_,
                       &info);
  if (info < 0) refuse(info, ".");
  return 0;
}

template <class T>
double C_MatMGe<T>::Nrm(E_NrmType kind) {
  if (this->columns_ != 1) return Zarel::matrixNorm<T>(*this, kind);
  C_VecPi<T, int, C_PtrInCore<T, int>> column;
  GetCol(0, column);
  return column.Nrm(kind);
}
