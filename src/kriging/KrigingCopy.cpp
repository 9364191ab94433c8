// A model from another: everything comes through the source's Get operations, so that the view of
// a subclass counts.
#include <zarel/Kriging.h>

#include <memory>
#include <utility>

#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"
#include "kriging/layout.h"

template <class T>
Kriging<T>::Kriging(Kriging& source, int& error) : Kriging() {
  error = takeFields(source);
  if (error != 0) return;
  source.GetLowerKernelMultiplierBound(LowerKernelMultiplierBound);
  source.GetUpperKernelMultiplierBound(UpperKernelMultiplierBound);
}

template <class T>
int Kriging<T>::Copy(Kriging* source) {
  return source == nullptr ? 1 : takeFields(*source);
}

template <class T>
int Kriging<T>::takeFields(Kriging& source) {
  bool const taken = takeSamples(source) == 0 && takeKernel(source) == 0 &&
                     takeScaling(source) == 0 && takeCoefficients(source) == 0;
  if (!taken) return 1;
  Status = source.GetKrigingStatus();
  NumSolves = 0;
  SolveStep = 1;
  KeepPredictorError = false;
  StopRequested.store(0, std::memory_order_relaxed);
  return adoptRestored();
}

template <class T>
int Kriging<T>::takeSamples(Kriging& source) {
  if (source.GetInpSampMtx(InpSampMtx) != 0 || source.GetOutSampMtx(OutSampMtx) != 0) return 1;
  if (InpSampMtx.NbRow() != OutSampMtx.NbRow()) return 1;
  int groups = 0;
  int status = 0;
  if (source.GetNumGlobalSol(groups) != 0) return 1;
  std::unique_ptr<int[]> sizes(source.GetVecGlobalSol(status));
  if (status != 0) return 1;
  VecGlobalSol = std::move(sizes);
  NumGlobalSol = groups;
  return 0;
}

template <class T>
int Kriging<T>::takeKernel(Kriging& source) {
  if (source.GetKrigingKernVarType(KernVarType) != 0 || source.GetKernVec(KernVec) != 0) return 1;
  return adoptKernel();
}

template <class T>
int Kriging<T>::takeScaling(Kriging& source) {
  if (source.GetScalingType(ScalingType) != 0) return 1;
  if (Zarel::scalesInputs(ScalingType)) {
    if (source.GetInpScaleVec(InpScaleVec) != 0) return 1;
    if (source.GetInpInterceptVec(InpInterceptVec) != 0) return 1;
  }
  if (Zarel::scalesOutputs(ScalingType)) {
    if (source.GetOutScaleVec(OutScaleVec) != 0) return 1;
    if (source.GetOutInterceptVec(OutInterceptVec) != 0) return 1;
  }
  return ScalingFits(InpSampMtx.NbCol(), OutSampMtx.NbCol()) ? 0 : 1;
}

template <class T>
int Kriging<T>::takeCoefficients(Kriging& source) {
  if (source.GetCorrFuncType(CorrFuncType) != 0 || source.GetCorrCoeff(CorrCoeff) != 0) return 1;
  int const q = OutSampMtx.NbCol();
  if (CorrCoeff.NbRow() != InpSampMtx.NbRow() || CorrCoeff.NbCol() != q) return 1;
  if (source.GetPolynomType(PolynomType) != 0) return 1;
  if (PolynomType != E_PolyNone) {
    if (source.GetPolyCoeff(PolyCoeff) != 0) return 1;
    if (PolyCoeff.NbCol() != q) return 1;
  }
  bool const rest =
      source.GetSolnType(SolnType) == 0 && source.GetKrigingKernOptType(KernOptType) == 0;
  return rest ? 0 : 1;
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)
