#include <zarel/C_AlgoPower.h>

#include <cmath>

#include <zarel/C_VecPi.h>
#include <zarel/C_VecRand.h>

#include "containers/matrixNorm.h"
#include "decomposition/lapack.h"

using Zarel::fail;
using Zarel::modulus;
using Zarel::widen;

namespace {

template <class T>
using Work = C_VecPi<T, int, C_PtrInCore<T, int>>;

constexpr double largestNorm = 1e100;
constexpr double smallestEstimate = 1e-14;

template <class T>
void randomise(C_Vec<T, int>& x, int n) {
  x.Resize(n);
  if (C_VecRand(x, E_SeedUser, 1) != 0) fail(1001);
}

template <class T>
void normalise(C_Vec<T, int>& x) {
  const double norm = x.Nrm2();
  if (norm > largestNorm) fail(13202);
  Zarel::decomposition::rscl(x.Dim(), norm, x.Adr(0));
}

/** y = A x, or y = A^H A x by way of `t` where there is one. */
template <class T>
void apply(C_Mat<T>& A, C_Vec<T, int>& x, C_Vec<T, int>& y, Work<T>* t) {
  if (t == nullptr) {
    A.Mv(T(1), x, T(0), y, 'N');
  } else {
    A.Mv(T(1), x, T(0), *t, 'N');
    A.Mv(T(1), *t, T(0), y, 'C');
  }
}

template <class T>
double realPart(T value) {
  return std::real(widen(value));
}

} // namespace

template <class T>
C_AlgoPower<T>::C_AlgoPower(std::string const& name, double tolerance)
    : C_Algorithm(name),
      _message("C_AlgoPower", __FILE__, __LINE__, Zarel::E_MsgInfo, 3, Zarel::E_ScopePower,
               Zarel::ALL_STREAMS),
      _tolerance(tolerance) {
  C_AlgoPower::InitOptions();
}

template <class T>
C_AlgoPower<T>::~C_AlgoPower() = default;

template <class T>
Zarel::E_DebugScope_enum C_AlgoPower<T>::GetDebugScope() {
  return Zarel::E_ScopePower;
}

template <class T>
void C_AlgoPower<T>::InitOptions() {
  setOption("A*A", false);
  setOption("StopCriteria", 0);
}

template <class T>
bool C_AlgoPower<T>::reached(int rule, double residual, double change, int round,
                             int maxIter) const {
  switch (rule) {
  case 0:
    return residual <= _tolerance || round >= maxIter;
  case 1:
    return change <= _tolerance;
  case 2:
    return change <= _tolerance || round >= maxIter;
  default:
    return true;
  }
}

template <class T>
T C_AlgoPower<T>::Run(C_Mat<T>& A, C_Vec<T, int>& x, C_Vec<T, int>& y, int maxIter) {
  const int n = A.NbCol(), rule = getOption_i("StopCriteria");
  if (maxIter == -1) maxIter = n;
  randomise(x, n);
  y.Resize(n);
  Work<T> ofRows;
  Work<T>* const t = getOption_b("A*A") ? &ofRows : nullptr;
  if (t != nullptr) t->Resize(A.NbRow());
  T former(0);
  for (int round = 0;; ++round) {
    normalise(x);
    apply(A, x, y, t);
    const T estimate = x * y;
    const double size = modulus(estimate);
    if (size == 0) {
      if (round == 0) return T(0);
      throw -1;
    }
    x.SMlt(estimate, 0, -1);
    const double change = std::abs((widen(estimate) - widen(former)) / widen(estimate));
    double residual = 0;
    y.Diff(x, residual);
    // An estimate that is not a number never becomes one again.
    if (reached(rule, residual / size, change, round, maxIter) || size < smallestEstimate ||
        std::isnan(size)) {
      _message.Print("[%s]\tIter [%3d] : Teta = %g", Nom(), round, realPart(estimate));
      return estimate;
    }
    x.Copy(y);
    former = estimate;
  }
}

namespace {

template <class T>
double dominant(C_Mat<T>& matrix, bool squared) {
  constexpr double tolerance = 0.001;
  C_AlgoPower<T> power("MatNrm2", tolerance);
  power.setOption("A*A", squared);
  power.setOption("StopCriteria", 2);
  Work<T> x(matrix.NbCol()), y(matrix.NbCol());
  const double size = modulus(power.Run(matrix, x, y, -1));
  return squared ? std::sqrt(size) : size;
}

} // namespace

// A symmetric matrix gives its eigenvalue directly. Where that iteration runs into a quotient of 0,
// which an indefinite matrix may have, the squared one still finds the norm.
template <class T>
double Zarel::powerNorm2(C_Mat<T>& matrix) {
  try {
    return dominant(matrix, !matrix.Sym());
  } catch (int) {
    return dominant(matrix, true);
  }
}

#define ZAREL_INSTANTIATE(T)                                                                       \
  template class C_AlgoPower<T>;                                                                   \
  template double Zarel::powerNorm2<T>(C_Mat<T>&);
ZAREL_MATRIX_SCALARS(ZAREL_INSTANTIATE)
