// Vector sets: orthonormal vectors.
#include <zarel/C_vstruct.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include <zarel/C_Lapack.h>

#include "containers/blas.h"
#include "containers/scalars.h"
#include "vectorset/BlockGramSchmidt.h"
#include "vectorset/instantiate.h"
#include "vectorset/steps.h"
#include "vectorset/walk.h"

namespace Zarel {

namespace {

/** Coefficients below this part of a vector's length cannot change it in double precision. */
template <class T>
constexpr double smallestCoefficient = 1e-16;

/** The length of a vector, also where the sum of its squares leaves the range of the scalar. */
template <class T>
double lengthOf(C_Vec<T, int>& x) {
  if constexpr (!std::is_integral_v<T>)
    if (x.InCore()) return Blas::length(x.Dim(), x.Adr(0));
  return x.Nrm2();
}

/** The same in a given inner product; a negative product gives none. */
template <class T>
double lengthBy(C_FInnerProd<T>& ip, C_Vec<T, int>& x) {
  const Wide<T> square = widen(ip(x, x));
  return std::real(square) < 0 ? std::numeric_limits<double>::quiet_NaN()
                               : std::sqrt(std::abs(square));
}

template <class T>
void divide(C_Vec<T, int>& x, double a) {
  if constexpr (std::is_integral_v<T>)
    fail(NotForScalar);
  else if (x.InCore())
    Blas::divide(x.Dim(), a, x.Adr(0));
  else
    x.SMlt(fromReal<T>(1 / a), 0, -1);
}

/** Packs the columns one behind the other. Either of the two may be missing. */
template <class T>
class PackedTriangle : public CoefficientSink<T> {
public:
  using Vector = typename C_VSTRUCT<T>::Vector;
  using Counts = typename C_VSTRUCT<T>::Counts;

  PackedTriangle(int start, int vectors, Counts* lengths, Vector* r)
      : start_(start), lengths_(lengths), r_(r) {
    const long long entries = static_cast<long long>(vectors) * (vectors + 1LL) / 2;
    if (r_ != nullptr && entries > INT_MAX) fail(OutOfRange);
    if (r_ != nullptr) clearTo(*r_, static_cast<int>(entries));
    if (lengths_ != nullptr) clearTo(*lengths_, vectors);
  }

  void zeroVector(int) override {}

  void column(int input, int directions, bool kept, T const* coefficients, double norm0) override {
    const int length = directions + (kept ? 1 : 0);
    if (lengths_ != nullptr) (*lengths_)[input] = length;
    if (r_ != nullptr)
      for (int j = start_; j < length; ++j)
        (*r_)[position_ + j] = times(coefficients[j - start_], fromReal<T>(norm0));
    position_ += length;
  }

  /** Cuts the triangle to what the lengths say. */
  void finish() {
    if (r_ != nullptr && lengths_ != nullptr) r_->Resize(position_);
  }

private:
  int start_;
  Counts* lengths_;
  Vector* r_;
  int position_ = 0;
};

} // namespace

template <class T>
int C_VSTRUCT<T>::GramSchmidt(double tol, int start, Counts* lengths, Vector* R) {
  ZAREL_STEP("GramSchmidt");
  requireValid();
  if (start < 0 || start > this->columns_) fail(OutOfRange);
  const int last = this->columns_ - 1;
  const bool stays =
      start > last || isMapped(static_cast<unsigned int>(start), static_cast<unsigned int>(last));
  PackedTriangle<T> triangle(start, this->columns_, lengths, R);
  T* data = nullptr;
  int lead = 0;
  int kept = start;
  const bool empty = start > last || this->rows_ == 0;
  if (!std::is_integral_v<T> && !empty && asMatrix(start, last, data, lead))
    kept = withMemory([&] { return orthonormaliseByBlocks(tol, start, triangle, data, lead); });
  else if (!empty)
    kept = orthonormaliseByVectors(tol, start, triangle);
  if (!stays) UnmapAllBlocks(nullptr);
  Resize(kept, nullptr);
  triangle.finish();
  return 0;
}

template <class T>
int C_VSTRUCT<T>::orthonormaliseByBlocks(double tol, int start, CoefficientSink<T>& sink, T* data,
                                         int lead) {
  if constexpr (std::is_integral_v<T>) {
    fail(NotForScalar);
  } else {
    const Columns<T> vectors{data, this->rows_, lead, start};
    return BlockGramSchmidt<T>(vectors, rowPanels(), tol, start, sink).run(this->columns_);
  }
}

/** One vector after the other, for sets that are no matrix. */
template <class T>
int C_VSTRUCT<T>::orthonormaliseByVectors(double tol, int start, CoefficientSink<T>& sink) {
  int k = start;
  Vector t;
  Vector h;
  resize(h, this->columns_ - start);
  for (int i = start; i < this->columns_; ++i) {
    double norm0 = 0;
    withVector(i, [&] {
      copyTo(t, *(*this)[i]);
      norm0 = lengthOf(t);
      if (norm0 > smallestNorm) {
        divide(t, norm0);
        store(i, t.Adr(0));
      }
    });
    if (norm0 <= smallestNorm) {
      sink.zeroVector(i);
      continue;
    }
    h.Zero(0, -1);
    for (int j = start; j < k; ++j)
      withVector(j, [&] { projectOut(t, j, h[j - start]); });
    const double norm1 = lengthOf(t);
    const bool keep = !(norm1 < smallestNorm || tol > norm1);
    h[k - start] = fromReal<T>(norm1);
    sink.column(i, k, keep, h.Adr(0), norm0);
    if (!keep) continue;
    divide(t, norm1);
    withVector(k, [&] { store(k, t.Adr(0)); });
    ++k;
  }
  return k;
}

/** Takes the part along vector `j` out of `t`, twice; the coefficient grows by what was taken. */
template <class T>
void C_VSTRUCT<T>::projectOut(C_Vec<T, int>& t, int j, T& coefficient) {
  C_Vec<T, int>& direction = *(*this)[j];
  for (int pass = 0; pass < 2; ++pass) {
    const T h = direction * t;
    coefficient = plus(coefficient, h);
    direction.Axpy(t, times(T(-1), h));
  }
}

// Single vectors.

template <class T>
void C_VSTRUCT<T>::requirePlace(C_Vec<T, int>& x, int i) const {
  requireValid();
  requireVector(i);
  if (x.Dim() != this->rows_) fail(OutOfRange);
}

template <class T>
void C_VSTRUCT<T>::storeVector(int i, C_Vec<T, int>& x) {
  if (this->rows_ == 0) return;
  Vector copy;
  if (!x.InCore()) copyTo(copy, x);
  withVector(i, [&] { store(i, x.InCore() ? x.Adr(0) : copy.Adr(0)); });
}

/** Calls with(vector j) for the vectors before `i`. */
template <class T>
template <class With>
void C_VSTRUCT<T>::forEachBefore(int i, With with) {
  forEachRange(0, i - 1, [&](T* data, int lead, int j, int count) {
    for (int k = 0; k < count; ++k) {
      Vector v(this->rows_, data + static_cast<std::ptrdiff_t>(k) * lead);
      with(v, j + k);
    }
  });
}

template <class T>
int C_VSTRUCT<T>::AddVector(C_Vec<T, int>& x, int i, bool orthogonalise, double tol,
                            double* ratio) {
  ZAREL_STEP("AddVector");
  requirePlace(x, i);
  if (orthogonalise) {
    const double norm0 = lengthOf(x);
    if (norm0 == 0 || tol / 100 > norm0) return 5;
    for (int pass = 0; pass < 2; ++pass)
      forEachBefore(i, [&](Vector& v, int) { v.Axpy(x, times(T(-1), v * x)); });
    const double norm1 = lengthOf(x);
    const double left = std::abs(norm1 / norm0);
    if (ratio != nullptr) *ratio = left;
    if (norm1 == 0 || tol > left) return 12;
    divide(x, norm1);
  }
  storeVector(i, x);
  return 0;
}

template <class T>
int C_VSTRUCT<T>::SetVector(C_Vec<T, int>& x, int i, bool orthogonalise, double tol,
                            double* ratio) {
  ZAREL_STEP("SetVector");
  requirePlace(x, i);
  if (orthogonalise) {
    const double norm0 = lengthOf(x);
    for (int pass = 0; pass < 2; ++pass)
      forEachBefore(i, [&](Vector& v, int) { addIfFelt(v, x, times(T(-1), v * x), norm0); });
    const double norm1 = lengthOf(x);
    requireIndependent(norm1, norm0, tol, ratio);
    divide(x, norm1);
  }
  storeVector(i, x);
  return 0;
}

template <class T>
int C_VSTRUCT<T>::SetVector(C_Vec<T, int>& x, int i, double tol, C_Vec<T, int>& coef, double* ratio,
                            C_FInnerProd<T>* ip) {
  ZAREL_STEP("SetVector");
  requirePlace(x, i);
  if (ip == nullptr) fail(OutOfRange);
  const double norm0 = lengthBy(*ip, x);
  double s = norm0;
  if (norm0 > smallestNorm) {
    divide(x, norm0);
    s = 1;
  }
  clearTo(coef, i + 1);
  for (int pass = 0; pass < 2; ++pass)
    forEachBefore(i, [&](Vector& v, int j) {
      const T h = (*ip)(v, x);
      coef[j] = plus(coef[j], times(h, fromReal<T>(norm0)));
      addIfFelt(v, x, times(T(-1), h), norm0);
    });
  const double norm1 = i == 0 ? s : lengthBy(*ip, x);
  requireIndependent(norm1, s, tol, ratio);
  if (norm1 != 1) divide(x, norm1);
  coef[i] = fromReal<T>(norm1 * norm0);
  storeVector(i, x);
  return 0;
}

/** x := x + a v, unless that cannot be felt in a vector that was `norm0` long. */
template <class T>
void C_VSTRUCT<T>::addIfFelt(Vector& v, C_Vec<T, int>& x, T a, double norm0) {
  if (a != T(0) && modulus(a) / norm0 > smallestCoefficient<T>) v.Axpy(x, a);
}

/** Tells what part of a vector is left; throws 2866 unless that is at least `tol`. */
template <class T>
void C_VSTRUCT<T>::requireIndependent(double left, double whole, double tol, double* ratio) {
  const double part = left == 0 ? 0 : std::abs(left / whole);
  if (ratio != nullptr) *ratio = part;
  if (left == 0 || tol > part || std::isnan(part)) fail(Dependent);
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
