// A model to and from a stream, in the layout of docs/formats/kriging.md.
#include <zarel/Kriging.h>

#include <memory>
#include <utility>

#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"
#include "kriging/layout.h"
#include "kriging/streamed.h"

using Zarel::failed;
using Zarel::readInt;
using Zarel::writeInt;

// ----- writing -----------------------------------------------------------------------------------

template <class T>
int Kriging<T>::Write(FILE* file) {
  bool const writable =
      file != nullptr && Status == E_KrigingStatusSolved && CoefficientsFit() && GroupsFit();
  return writable ? Zarel::withoutThrowing([&] { return writeFields(file); }) : 1;
}

template <class T>
int Kriging<T>::writeFields(FILE* file) {
  if (failed(Zarel::settle(file)) || failed(Zarel::writeText(file, Version()))) return 1;
  if (failed(InpSampMtx.Write(file)) || failed(OutSampMtx.Write(file))) return 1;
  if (failed(writeInt(file, NumGlobalSol))) return 1;
  if (failed(BF_fwrite_int(file, VecGlobalSol.get(), NumGlobalSol))) return 1;
  if (failed(writeInt(file, KernVarType)) || failed(KernVec.Write(file))) return 1;
  if (failed(writeInt(file, ScalingType))) return 1;
  if (Zarel::scalesInputs(ScalingType)) {
    if (failed(InpScaleVec.Write(file)) || failed(InpInterceptVec.Write(file))) return 1;
  }
  if (Zarel::scalesOutputs(ScalingType)) {
    if (failed(OutScaleVec.Write(file)) || failed(OutInterceptVec.Write(file))) return 1;
  }
  if (failed(writeInt(file, CorrFuncType)) || failed(CorrCoeff.Write(file))) return 1;
  if (failed(writeInt(file, PolynomType))) return 1;
  if (PolynomType != E_PolyNone && failed(PolyCoeff.Write(file))) return 1;
  if (failed(writeInt(file, SolnType)) || failed(writeInt(file, KernOptType))) return 1;
  return failed(Zarel::settle(file)) ? 1 : 0;
}

// ----- reading -----------------------------------------------------------------------------------

template <class T>
int Kriging<T>::Read(FILE* file) {
  if (file == nullptr || failed(Zarel::skipText(file))) return 1;
  return ReadOld(file);
}

template <class T>
int Kriging<T>::ReadOld(FILE* file) {
  if (file == nullptr) return 1;
  return Zarel::withoutThrowing([&] { return readFields(file); });
}

template <class T>
int Kriging<T>::readFields(FILE* file) {
  bool const read = readSamples(file) == 0 && readGroups(file) == 0 && readKernel(file) == 0 &&
                    readScaling(file) == 0 && readCoefficients(file) == 0;
  if (!read) return 1;
  if (failed(readInt(file, SolnType)) || failed(readInt(file, KernOptType))) return 1;
  if (adoptRestored() != 0) return 1;
  Status = E_KrigingStatusSolved;
  return 0;
}

template <class T>
int Kriging<T>::readSamples(FILE* file) {
  if (failed(InpSampMtx.Read(file)) || failed(OutSampMtx.Read(file))) return 1;
  if (InpSampMtx.NbRow() < 1 || InpSampMtx.NbCol() < 1 || OutSampMtx.NbCol() < 1) return 1;
  return InpSampMtx.NbRow() == OutSampMtx.NbRow() ? 0 : 1;
}

template <class T>
int Kriging<T>::readGroups(FILE* file) {
  int groups = 0;
  if (failed(readInt(file, groups))) return 1;
  if (groups < 1 || groups > OutSampMtx.NbCol()) return 1;
  auto sizes = std::make_unique<int[]>(groups);
  if (failed(BF_fread_int(file, sizes.get(), groups))) return 1;
  VecGlobalSol = std::move(sizes);
  NumGlobalSol = groups;
  return GroupsFit(OutSampMtx.NbCol()) ? 0 : 1;
}

template <class T>
int Kriging<T>::readKernel(FILE* file) {
  if (failed(readInt(file, KernVarType)) || failed(KernVec.Read(file))) return 1;
  return adoptKernel();
}

template <class T>
int Kriging<T>::readScaling(FILE* file) {
  if (failed(readInt(file, ScalingType))) return 1;
  if (Zarel::scalesInputs(ScalingType)) {
    if (failed(InpScaleVec.Read(file)) || failed(InpInterceptVec.Read(file))) return 1;
  }
  if (Zarel::scalesOutputs(ScalingType)) {
    if (failed(OutScaleVec.Read(file)) || failed(OutInterceptVec.Read(file))) return 1;
  }
  return ScalingFits(InpSampMtx.NbCol(), OutSampMtx.NbCol()) ? 0 : 1;
}

template <class T>
int Kriging<T>::readCoefficients(FILE* file) {
  int const q = OutSampMtx.NbCol();
  if (failed(readInt(file, CorrFuncType)) || failed(CorrCoeff.Read(file))) return 1;
  if (CorrCoeff.NbRow() != InpSampMtx.NbRow() || CorrCoeff.NbCol() != q) return 1;
  if (failed(readInt(file, PolynomType))) return 1;
  if (PolynomType == E_PolyNone) return 0;
  if (failed(PolyCoeff.Read(file))) return 1;
  return PolyCoeff.NbCol() == q ? 0 : 1;
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)
