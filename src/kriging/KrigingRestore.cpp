// What a copy and a read have in common: restored fields are tested against the restored samples
// and then become the model's.
#include <zarel/Kriging.h>

#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"

template <class T>
int Kriging<T>::adoptKernel() {
  int const multipliers = KernVarType != E_KernIsotropic ? InpSampMtx.NbCol() : 1;
  if (KernVec.Dim() != multipliers) return 1;
  NumKern = multipliers;
  return 0;
}

template <class T>
int Kriging<T>::adoptRestored() {
  DiffWorkVec.Resize(InpSampMtx.NbCol());
  NumSamp = InpSampMtx.NbRow();
  NumVar = InpSampMtx.NbCol();
  NumSol = OutSampMtx.NbCol();
  InpSampSet = OutSampSet = true;
  KernStartPending = 0;
  SolveRequired = true;
  TestCorrStale = TestPolyStale = true;
  return GetOutputGlobalRange(OutputGlobalRange);
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)
