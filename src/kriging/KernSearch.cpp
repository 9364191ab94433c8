// The bounded pattern search for the kernel multipliers.
#include <algorithm>
#include <cmath>

#include <zarel/Kriging.h>

#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"

namespace {

double lower(const Zarel::KernSearch& search, int i) {
  return search.bounds(i, 0);
}
double upper(const Zarel::KernSearch& search, int i) {
  return search.bounds(i, 1);
}

double clamp(const Zarel::KernSearch& search, int i, double value) {
  if (value < lower(search, i)) return lower(search, i);
  return value > upper(search, i) ? upper(search, i) : value;
}

/** A NaN never improves on anything and is never improved on. */
bool improves(double value, double best) {
  return best > value && std::fabs(best - value) > 1e-15;
}

template <class Vector>
void raiseToPower(Vector& values, double power) {
  for (int i = 0; i < values.Dim(); ++i)
    values[i] = std::pow(values[i], power);
}

} // namespace

template <class T>
int Kriging<T>::OptimizeKernVec() {
  if (Status == E_KrigingStatusSolved) return 0;
  if (Status != E_KrigingStatusReady) return 1;
  Zarel::WorkspaceScope<T> scope(workspace);
  if (PrepareSamples(*workspace) != 0) return 1;
  RealVec start;
  if (KernStartForSearch(workspace->inputs, start) != 0) return 1;
  Zarel::KernSearch search;
  SetKernBounds(start, search.bounds);
  if (KernRecentre)
    for (int i = 0; i < NumKern; ++i)
      KernVec[i] = clamp(search, i, KernVec[i]);
  if (const int code = KernPatternSearch(search)) return code;
  // The search leaves the best multipliers, but the factors of its last trial.
  Status = E_KrigingStatusReady;
  if (SolveForKernel() != 0) return 1;
  TestCorrStale = TestPolyStale = true;
  return 0;
}

template <class T>
int Kriging<T>::KernStartForSearch(Matrix& Xs, RealVec& start) {
  bool started = false;
  if (StartKernelIfDue(Xs, started) != 0) return 1;
  if (!started && KernRecentre) return EvalStartKernel(Xs, start);
  start.Copy(KernVec);
  return 0;
}

template <class T>
void Kriging<T>::SetKernBounds(RealVec& start, RealMatrix& bounds) {
  bounds.Resize(NumKern, 2);
  for (int i = 0; i < NumKern; ++i) {
    bounds(i, 0) = LowerKernelMultiplierBound * start[i];
    bounds(i, 1) = UpperKernelMultiplierBound * start[i];
  }
}

template <class T>
int Kriging<T>::KernPatternSearch(Zarel::KernSearch& search) {
  if (KernSearchStart(search) != 0) return 1;
  const int p = KernVec.Dim();
  const int passes = p < 2 ? 2 : std::min(p, 4);
  for (int pass = 0; pass < passes; ++pass) {
    RealVec before(KernVec);
    if (KernSearchExplore(search) != 0 || KernSearchMove(search, before) != 0) return 1;
    KernSearchRotate(search);
  }
  return 0;
}

template <class T>
int Kriging<T>::EvalKernel(RealVec& trial, double& value) {
  KernVec.Copy(trial);
  Status = E_KrigingStatusReady;
  if (FitAtKernel(false) != 0) return 1;
  value = MLEValue;
  return 0;
}

template <class T>
int Kriging<T>::TryKernel(Zarel::KernSearch& search, RealVec& best, RealVec& trial, bool& better) {
  double value = 0.0;
  if (EvalKernel(trial, value) != 0) return 1;
  better = improves(value, search.best);
  if (!better) return 0;
  search.best = value;
  best.Copy(trial);
  return 0;
}

template <class T>
int Kriging<T>::KernSearchStart(Zarel::KernSearch& search) {
  const int p = KernVec.Dim();
  int outside = 0;
  search.factors.Resize(p);
  for (int i = 0; i < p; ++i) {
    const double lo = lower(search, i);
    const double hi = upper(search, i);
    if (lo == hi) {
      search.factors[i] = 1.0;
      KernVec[i] = hi;
      continue;
    }
    search.factors[i] = std::pow(2.0, (i + 1.0) / (p + 2.0));
    if (!(KernVec[i] < lo || KernVec[i] > hi)) continue;
    KernVec[i] = std::pow(lo * std::pow(hi, 7.0), 0.125);
    ++outside;
  }
  if (outside != 0) return 1; // the repaired point is not used: such a start is a failure
  RealVec start(KernVec);
  return EvalKernel(start, search.best);
}

template <class T>
int Kriging<T>::KernSearchExplore(Zarel::KernSearch& search) {
  RealVec best(KernVec);
  for (int i = 0; i < best.Dim(); ++i) {
    const double lo = lower(search, i);
    const double hi = upper(search, i);
    const double factor = search.factors[i];
    if (hi <= lo) continue;
    RealVec trial(best);
    if (best[i] <= lo + 1e-13)
      trial[i] = std::sqrt(factor) * lo;
    else if (best[i] >= hi - 1e-13)
      trial[i] = hi / std::sqrt(factor);
    else
      trial[i] = std::min(hi, factor * best[i]);
    bool better = false;
    if (TryKernel(search, best, trial, better) != 0) return 1;
    if (better) continue;
    trial[i] = std::max(lo, best[i] / factor); // in any case, also at a bound
    if (TryKernel(search, best, trial, better) != 0) return 1;
  }
  KernVec.Copy(best);
  return 0;
}

template <class T>
int Kriging<T>::KernSearchMove(Zarel::KernSearch& search, RealVec& before) {
  if (KernVec == before) {
    raiseToPower(search.factors, 0.2);
    return 0;
  }
  RealVec best(KernVec), trial(KernVec), ratio(KernVec);
  for (int i = 0; i < best.Dim(); ++i)
    ratio[i] = best[i] / before[i];
  for (bool better = true; better;) {
    for (int i = 0; i < best.Dim(); ++i)
      trial[i] = clamp(search, i, ratio[i] * best[i]);
    if (TryKernel(search, best, trial, better) != 0) return 1;
    for (int i = 0; i < best.Dim() && better; ++i)
      ratio[i] *= ratio[i];
  }
  KernVec.Copy(best);
  raiseToPower(search.factors, 0.25);
  return 0;
}

template <class T>
void Kriging<T>::KernSearchRotate(Zarel::KernSearch& search) {
  double* const first = search.factors.Adr(0);
  if (const int p = search.factors.Dim()) std::rotate(first, first + p - 1, first + p);
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)
