// Put and Get operations of sizes, options and results.
#include <zarel/Kriging.h>

#include <algorithm>
#include <limits>
#include <new>

#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"

namespace {

/// Stores a new value. @return whether it differs from the old one.
template <class V>
bool replace(V& field, V const& value) {
  if (field == value) return false;
  field = value;
  return true;
}

template <class V>
int get(V const& field, V& value) {
  value = field;
  return 0;
}

template <class C>
int getCopy(C& field, C& value) {
  return value.Copy(field) == 0 ? 0 : 1;
}

/// Sizes of output groups: given, or one group of all, or groups of one.
std::unique_ptr<int[]> groupSizes(int numSol, int numGlobal, int const* sizes) {
  auto groups = std::make_unique<int[]>(numGlobal);
  if (numGlobal == 1) {
    groups[0] = numSol;
  } else if (numGlobal == numSol) {
    std::fill_n(groups.get(), numGlobal, 1);
  } else {
    std::copy_n(sizes, numGlobal, groups.get());
  }
  return groups;
}

bool sizesSumTo(int total, int count, int const* sizes) {
  long long sum = 0;
  for (int g = 0; g < count; ++g) {
    if (sizes[g] < 0) return false;
    sum += sizes[g];
  }
  return sum == total;
}

} // namespace

// ----- sizes -------------------------------------------------------------------------------------

template <class T>
int Kriging<T>::PutNumVar(int const& value) {
  if (value < 1) return 1;
  if (NumVar == value) return 0;
  DiffWorkVec.Resize(value);
  NumVar = value;
  InpSampSet = false;
  KernStartPending = 1;
  TestCorrStale = TestPolyStale = true;
  setNumKern();
  return 0;
}

template <class T>
int Kriging<T>::PutNumSol(int const& numSol, int const& numGlobal, int* sizes) {
  if (numSol <= 0 || numGlobal <= 0 || numGlobal > numSol) return 1;
  if (numSol == NumSol && numGlobal == NumGlobalSol) return 0;
  bool const sizesCount = numGlobal != 1 && numGlobal != numSol;
  if (sizesCount && (sizes == nullptr || !sizesSumTo(numSol, numGlobal, sizes))) return 1;
  VecGlobalSol = groupSizes(numSol, numGlobal, sizes);
  NumSol = numSol;
  NumGlobalSol = numGlobal;
  OutSampSet = false;
  return 0;
}

template <class T>
int Kriging<T>::GetOptNumSamp(int& value) const {
  long long const terms = (NumVar + 1LL) * (NumVar + 2LL) / 2;
  value = static_cast<int>(std::min<long long>(terms, std::numeric_limits<int>::max()));
  return 0;
}

template <class T>
int Kriging<T>::SetOptNumSamp() {
  int optimal = 0;
  GetOptNumSamp(optimal);
  return optimal < 1 ? 1 : PutNumSamp(optimal);
}

template <class T>
int Kriging<T>::PutNumSamp(int const& value) {
  if (value < 1) return 1;
  if (replace(NumSamp, value)) InpSampSet = OutSampSet = false;
  return 0;
}

// ----- options -----------------------------------------------------------------------------------

template <class T>
int Kriging<T>::PutDropToler(double const& value) {
  if (value <= 0.0 || value >= 1.0) return 1;
  if (replace(DropToler, value)) demote();
  return 0;
}

template <class T>
int Kriging<T>::PutMaxNumIter(int const& value) {
  if (value < 1) return 1;
  if (replace(MaxNumIter, value)) demote();
  return 0;
}

template <class T>
int Kriging<T>::PutLowerKernelMultiplierBound(double const& value) {
  if (value <= 0.0) return 1;
  if (replace(LowerKernelMultiplierBound, value)) demote();
  return 0;
}

template <class T>
int Kriging<T>::PutUpperKernelMultiplierBound(double const& value) {
  if (value <= 0.0) return 1;
  if (replace(UpperKernelMultiplierBound, value)) demote();
  return 0;
}

template <class T>
int Kriging<T>::PutKernVec(RealVec& value) {
  setNumKern();
  if (value.Dim() != NumKern) return 1;
  KernVec.Copy(value);
  KernStartPending = 0;
  TestCorrStale = true;
  demote();
  return 0;
}

template <class T>
int Kriging<T>::PutSolnType(int const& value) {
  if (replace(SolnType, value)) demote();
  return 0;
}

template <class T>
int Kriging<T>::PutCorrFuncType(int const& value) {
  if (!replace(CorrFuncType, value)) return 0;
  TestCorrStale = true;
  demote();
  return 0;
}

template <class T>
int Kriging<T>::PutKrigingKernVarType(int const& value) {
  if (!replace(KernVarType, value)) return 0;
  TestCorrStale = true;
  setNumKern();
  demote();
  return 0;
}

template <class T>
int Kriging<T>::PutKrigingKernOptType(int const& value) {
  if (replace(KernOptType, value)) demote();
  return 0;
}

template <class T>
int Kriging<T>::PutScalingType(int const& value) {
  if (!replace(ScalingType, value)) return 0;
  TestCorrStale = TestPolyStale = true;
  demote();
  return 0;
}

template <class T>
int Kriging<T>::PutPolynomType(int const& value) {
  if (!replace(PolynomType, value)) return 0;
  TestPolyStale = true;
  demote();
  return 0;
}

template <class T>
int Kriging<T>::SetStep(int const& value) {
  if (value > 0) SolveStep = value;
  return 0;
}

// ----- what is stored ----------------------------------------------------------------------------

#define ZAREL_KRIGING_GET(Operation, Type, Field)                                                  \
  template <class T>                                                                               \
  int Kriging<T>::Operation(Type& value) const {                                                   \
    return get(Field, value);                                                                      \
  }

ZAREL_KRIGING_GET(GetNumVar, int, NumVar)
ZAREL_KRIGING_GET(GetNumSol, int, NumSol)
ZAREL_KRIGING_GET(GetNumSamp, int, NumSamp)
ZAREL_KRIGING_GET(GetNumGlobalSol, int, NumGlobalSol)
ZAREL_KRIGING_GET(GetNumKern, int, NumKern)
ZAREL_KRIGING_GET(GetMaxNumIter, int, MaxNumIter)
ZAREL_KRIGING_GET(GetDropToler, double, DropToler)
ZAREL_KRIGING_GET(GetLowerKernelMultiplierBound, double, LowerKernelMultiplierBound)
ZAREL_KRIGING_GET(GetUpperKernelMultiplierBound, double, UpperKernelMultiplierBound)
ZAREL_KRIGING_GET(GetSolnType, int, SolnType)
ZAREL_KRIGING_GET(GetCorrFuncType, int, CorrFuncType)
ZAREL_KRIGING_GET(GetKrigingKernVarType, int, KernVarType)
ZAREL_KRIGING_GET(GetKrigingKernOptType, int, KernOptType)
ZAREL_KRIGING_GET(GetScalingType, int, ScalingType)
ZAREL_KRIGING_GET(GetPolynomType, int, PolynomType)

#undef ZAREL_KRIGING_GET

#define ZAREL_KRIGING_GET_COPY(Operation, Type, Field)                                             \
  template <class T>                                                                               \
  int Kriging<T>::Operation(Type& value) {                                                         \
    return getCopy(Field, value);                                                                  \
  }

ZAREL_KRIGING_GET_COPY(GetKernVec, RealVec, KernVec)
ZAREL_KRIGING_GET_COPY(GetInpScaleVec, RealVec, InpScaleVec)
ZAREL_KRIGING_GET_COPY(GetInpInterceptVec, ScalarVec, InpInterceptVec)
ZAREL_KRIGING_GET_COPY(GetOutScaleVec, RealVec, OutScaleVec)
ZAREL_KRIGING_GET_COPY(GetOutInterceptVec, ScalarVec, OutInterceptVec)
ZAREL_KRIGING_GET_COPY(GetCorrCoeff, Matrix, CorrCoeff)
ZAREL_KRIGING_GET_COPY(GetPolyCoeff, Matrix, PolyCoeff)

#undef ZAREL_KRIGING_GET_COPY

template <class T>
E_KrigingKernVarType Kriging<T>::GetKrigingKernVarType() const {
  return static_cast<E_KrigingKernVarType>(KernVarType);
}

template <class T>
int Kriging<T>::GetNumCorrCoef(int& value) const {
  return get(CorrCoeff.NbRow(), value);
}

template <class T>
int Kriging<T>::GetNumPolyCoeff(int& value) const {
  return get(PolyCoeff.NbRow(), value);
}

template <class T>
int* Kriging<T>::GetVecGlobalSol(int& status) const {
  int* const sizes = new (std::nothrow) int[std::max(NumGlobalSol, 0)];
  status = sizes == nullptr ? 1 : 0;
  if (sizes != nullptr && VecGlobalSol) std::copy_n(VecGlobalSol.get(), NumGlobalSol, sizes);
  return sizes;
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)
