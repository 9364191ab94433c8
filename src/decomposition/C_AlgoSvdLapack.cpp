#include <zarel/C_AlgoSvd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include <zarel/C_Trace.h>

#include "containers/scalars.h"
#include "decomposition/finite.h"
#include "decomposition/lapack.h"
#include "decomposition/report.h"

using Zarel::C_VSTRUCT;
using Zarel::traced;
using Zarel::widen;
using Zarel::decomposition::firstNotFinite;
using Zarel::decomposition::refused;
using Zarel::decomposition::refusedNotFinite;

namespace {

constexpr char method[] = "C_AlgoSvdLapack<T>::Run";

/** The least work array that gesvd takes, or that of a symmetric solver of order n. */
std::int64_t leastWork(std::int64_t m, std::int64_t n, bool ofQtQ) {
  if (ofQtQ) return std::max<std::int64_t>(1, 3 * n - 1);
  return std::max({3 * std::min(m, n) + std::max(m, n), 5 * std::min(m, n), std::int64_t(1)});
}

/**
 * Room for the road of gesvd that factors a tall matrix first and multiplies back in panels of
 * rows: a square of n, its own blocks, and panels that are high enough for the product to be fast.
 * The room that it would call optimal holds a second copy of the matrix.
 */
std::int64_t fastWork(std::int64_t n) {
  constexpr std::int64_t widestBlock = 64, panelRows = 1024;
  return n * n + (3 + 2 * widestBlock + panelRows) * n;
}

template <class T>
std::int64_t bestWork(int m, int n) {
  T room(0), dummy(0);
  Zarel::decomposition::Real<T> none(0);
  Zarel::decomposition::gesvd(m, n, &dummy, &none, &dummy, &room, -1, &none);
  return static_cast<std::int64_t>(std::real(widen(room)));
}

/**
 * Maps the vectors from `first` on for the time of `operation`, however it ends. A refusal to unmap
 * is told unless something else went wrong before.
 */
template <class T, class Operation>
int whileMapped(C_VSTRUCT<T>& Q, int first, Operation operation) {
  int result = 0;
  Q.MapBlock(static_cast<unsigned>(first), static_cast<unsigned>(Q.getDim() - 1));
  try {
    result = operation(Q[first]->Adr(0));
  } catch (...) {
    try {
      Q.UnmapAllBlocks();
    } catch (const C_ZarelException&) {
    }
    throw;
  }
  Q.UnmapAllBlocks();
  return result;
}

/** Whether the vectors from `first` on are the columns of one matrix, and can be made so. */
template <class T>
bool isOneMatrix(C_VSTRUCT<T>& Q, int first) {
  const bool inCore = Q.getCoreMode() == 1;
  if (!inCore && !Q.GetMapFile()) return false;
  const bool dense = Q.LeadDim() == Q.getDim1() && (inCore || Q.getBlockGap() == 0);
  return Q.getDim() - first == 1 || dense;
}

} // namespace

template <class T>
C_AlgoSvdLapack<T>::C_AlgoSvdLapack(bool ComputeQtQ) : computeQtQ_(ComputeQtQ) {}
template <class T>
C_AlgoSvdLapack<T>::~C_AlgoSvdLapack() = default;

template <class T>
void C_AlgoSvdLapack<T>::prepare(int m, int n) {
  if (m == this->rows_ && n == this->columns_) return;
  std::int64_t work = leastWork(m, n, computeQtQ_);
  if (!computeQtQ_) work = std::max(work, std::min(fastWork(n), bestWork<T>(m, n)));
  // Should a step fail, the next run starts anew.
  this->rows_ = this->columns_ = 0;
  this->rightHand_.Resize(n, n);
  this->values_.Resize(n);
  work_.Resize(static_cast<int>(std::min<std::int64_t>(work, std::numeric_limits<int>::max())));
  this->rows_ = m;
  this->columns_ = n;
}

template <class T>
int C_AlgoSvdLapack<T>::callLapack(T* a, int number) {
  const int m = this->rows_, n = this->columns_, least = std::min(m, n);
  const int bad = firstNotFinite(a, m, n);
  if (bad >= 0) return refusedNotFinite(method, number + bad, __FILE__, __LINE__);
  using R = Zarel::decomposition::Real<T>;
  Values real(std::max(3 * least, least + 4 * (least - 1)));
  C_VecPi<R, int, C_PtrInCore<R, int>> s(std::max(least, 1));
  const int info =
      Zarel::decomposition::gesvd(m, n, a, s.Adr(0), this->rightHand_.Adr(), work_.Adr(0),
                                  work_.Dim(), reinterpret_cast<R*>(real.Adr(0)));
  if (info != 0) return traced();
  for (int i = 0; i < least; ++i)
    this->values_[i] = T(s[i]);
  return 0;
}

/** Tells how many vectors to keep; there are no results until they alone are left. */
template <class T>
int C_AlgoSvdLapack<T>::estimate() {
  this->ErrorEstimation();
  return std::exchange(this->retained_, 0);
}

template <class T>
int C_AlgoSvdLapack<T>::refuseQtQ() {
  return Zarel::decomposition::refusedFirst(method, __FILE__, __LINE__);
}

template <class T>
void C_AlgoSvdLapack<T>::reverseOldValues() {
  Values& values = this->values_;
  values.Print(stdout);
  for (int i = 0; i < values.Dim(); ++i)
    values[i] = std::sqrt(values[i]);
  for (int i = 0, j = values.Dim() - 1; i < j; ++i, --j)
    std::swap(values[i], values[j]);
}

template <class T>
int C_AlgoSvdLapack<T>::Run(C_VSTRUCT<T>& Q, int first, int keep) {
  const Zarel::C_Trace frame(method, __FILE__, __LINE__, BegFunc(), EndFunc());
  const int n = Q.getDim() - first;
  if (n == 0) return 0;
  this->retained_ = 0;
  if (first < 0 || n < 0 || keep < -1 || keep > n)
    return refused(method, __FILE__, __LINE__,
                   "ERROR in %s: vectors from %d and %d to keep, of %d\n", method, first, keep,
                   Q.getDim());
  if (computeQtQ_ && first > 0) return refuseQtQ();
  if (!computeQtQ_ && !isOneMatrix(Q, first))
    return refused(method, __FILE__, __LINE__,
                   "ERROR in %s: the vectors do not lie one behind the other\n", method);
  prepare(Q.getDim1(), n);
  if (computeQtQ_) {
    if (Q.MatQtQ(this->rightHand_) != 0) return traced();
    reverseOldValues();
  } else {
    if (whileMapped(Q, first, [&](T* a) { return callLapack(a, first); }) != 0) return traced();
  }
  if (keep == -1) keep = estimate();
  Q.Resize(keep + first, nullptr);
  this->retained_ = keep;
  return 0;
}

template <class T>
int C_AlgoSvdLapack<T>::Run(C_MatMGe<T>& A, int first) {
  const Zarel::C_Trace frame(method, __FILE__, __LINE__, BegFunc(), EndFunc());
  const int m = A.NbRow(), n = A.NbCol() - first;
  if (n == 0) return 0;
  this->retained_ = 0;
  if (first < 0 || n < 0)
    return refused(method, __FILE__, __LINE__, "ERROR in %s: columns from %d, of %d\n", method,
                   first, A.NbCol());
  if (computeQtQ_ && first > 0) return refuseQtQ();
  if (A.LeadDim() != m)
    return refused(method, __FILE__, __LINE__,
                   "ERROR in %s: the columns do not lie one behind the other\n", method);
  prepare(m, n);
  if (!computeQtQ_ && callLapack(A[first], first) != 0) return traced();
  const int keep = estimate();
  A.Resize(m, keep + first);
  this->retained_ = keep;
  return 0;
}

#define ZAREL_INSTANTIATE(T) template class C_AlgoSvdLapack<T>;
ZAREL_BLAS_SCALARS(ZAREL_INSTANTIATE)
