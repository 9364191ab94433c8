// Construction, defaults, the state word and the tests of what fits what.
#include <zarel/Kriging.h>

#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"
#include "kriging/layout.h"

template <class T>
Kriging<T>::Kriging()
    : Status(E_KrigingStatusInit),
      StopRequested(0),
      InvCholFactor(0, 1),
      RegrFactor(0, 1),
      MLEValue(0.0) {
  Kriging::InitKriging();
}

template <class T>
Kriging<T>::~Kriging() = default;

template <class T>
char const* Kriging<T>::Version() const {
  return "1.0";
}

template <class T>
void Kriging<T>::InitKriging() {
  Status = E_KrigingStatusInit;
  StopRequested.store(0, std::memory_order_relaxed);
  NumSamp = NumVar = NumSol = NumGlobalSol = NumKern = 0;
  VecGlobalSol.reset();
  KernOptType = E_KernOptNone;
  SolnType = E_KrigingSolStandard;
  CorrFuncType = E_CorrGauss;
  PolynomType = E_PolyFullQuad;
  KernVarType = E_KernIsotropic;
  ScalingType = E_ScaleNone;
  KernStartPending = 1;
  KernRecentre = false;
  SolveRequired = true;
  InpSampSet = OutSampSet = InpTestSet = false;
  DropToler = 1e-8;
  Spare1 = 1.0;
  NuggetFactor = 1e-14;
  MaxNumIter = 0;
  NumSolves = 0;
  SolveStep = 1;
  RegrFactorIsTri = false;
  InputPointToler = 1e-7;
  Spare2 = 9.999999999999998e-15;
  LowerKernelMultiplierBound = 0.01;
  UpperKernelMultiplierBound = 20.0;
  KeepPredictorError = false;
  RescaleOnSolve = false;
  TestCorrStale = TestPolyStale = true;
}

template <class T>
void Kriging<T>::Stop() {
  StopRequested.store(1, std::memory_order_relaxed);
}

template <class T>
int Kriging<T>::GetKrigingStatus() const {
  return Status;
}

template <class T>
bool Kriging<T>::ISSolveRequired() const {
  return SolveRequired;
}

template <class T>
void Kriging<T>::demote() {
  if (Status == E_KrigingStatusSolved) Status = E_KrigingStatusReady;
}

template <class T>
void Kriging<T>::setNumKern() {
  NumKern = KernVarType != E_KernIsotropic ? NumVar : 1;
}

template <class T>
int Kriging<T>::CheckInputState() const {
  bool const complete =
      InpSampSet && OutSampSet && NumSamp >= 1 && NumVar >= 1 && NumKern >= 1 && NumSol >= 1;
  return complete ? E_KrigingStatusReady : E_KrigingStatusIncomplete;
}

template <class T>
bool Kriging<T>::SamplesFit() const {
  return InpSampMtx.NbRow() == NumSamp && InpSampMtx.NbCol() == NumVar &&
         OutSampMtx.NbRow() == NumSamp && OutSampMtx.NbCol() == NumSol;
}

template <class T>
bool Kriging<T>::KernelFits() const {
  return NumKern >= 1 && (NumKern == 1 || NumKern == NumVar) && KernVec.Dim() == NumKern;
}

template <class T>
bool Kriging<T>::GroupsFit(int outputs) const {
  if (!VecGlobalSol || NumGlobalSol < 1) return false;
  long long sum = 0;
  for (int g = 0; g < NumGlobalSol; ++g) {
    if (VecGlobalSol[g] < 0) return false;
    sum += VecGlobalSol[g];
  }
  return sum == outputs;
}

template <class T>
bool Kriging<T>::ScalingFits(int inputs, int outputs) const {
  bool const inputsFit = InpScaleVec.Dim() == inputs && InpInterceptVec.Dim() == inputs;
  bool const outputsFit = OutScaleVec.Dim() == outputs && OutInterceptVec.Dim() == outputs;
  return (!Zarel::scalesInputs(ScalingType) || inputsFit) &&
         (!Zarel::scalesOutputs(ScalingType) || outputsFit);
}

template <class T>
bool Kriging<T>::CoefficientsFit() const {
  bool const trendFits = PolyCoeff.NbRow() == 0 || PolyCoeff.NbCol() == NumSol;
  return SamplesFit() && KernelFits() && ScalingFits(NumVar, NumSol) && trendFits &&
         CorrCoeff.NbRow() == NumSamp && CorrCoeff.NbCol() == NumSol;
}

template <class T>
void Kriging<T>::ClearTemporaryMatrices() {
  // A resized symmetric matrix is an upper one; these two are lower ones also when empty.
  C_MatMSym<double> noRealFactor(0, 1);
  C_MatMSym<T> noFactor(0, 1);
  InvCholFactor.Copy(noRealFactor);
  RegrFactor.Copy(noFactor);
  DenseRegrFactor.Release();
  WhitenedRegrT.Release();
  ProcVarnc.Release();
  LastPredictorError.Release();
  InpTestMtx.Release();
  TestCorrMtx.Release();
  TestPolyMtx.Release();
  TestRelativeErrorVec.Release();
  DiffWorkVec.Release();
  workspace.reset();
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)
