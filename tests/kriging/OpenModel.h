// What all tests of models share: small matrices by rows, and models whose state a test can set and
// see.
#ifndef ZAREL_TESTS_KRIGING_OPENMODEL_H
#define ZAREL_TESTS_KRIGING_OPENMODEL_H

#include <complex>
#include <initializer_list>
#include <vector>

#include <gtest/gtest.h>

#include <zarel/Kriging.h>

namespace kriging_test {

using Scalars = ::testing::Types<double, std::complex<double>>;

template <class T>
using Vec = C_VecPi<T, int, C_PtrInCore<T, int>>;
using RealVec = Vec<double>;

template <class T>
C_MatMGe<T> matrix(std::initializer_list<std::initializer_list<T>> rows) {
  C_MatMGe<T> result(static_cast<int>(rows.size()),
                     rows.size() == 0 ? 0 : static_cast<int>(rows.begin()->size()));
  int i = 0;
  for (auto const& row : rows) {
    int j = 0;
    for (T value : row)
      result(i, j++) = value;
    ++i;
  }
  return result;
}

template <class T>
Vec<T> vector(std::initializer_list<T> values) {
  Vec<T> result(static_cast<int>(values.size()));
  int i = 0;
  for (T value : values)
    result[i++] = value;
  return result;
}

/// A model whose fields a test may set and see.
template <class T>
class OpenModel : public Kriging<T> {
public:
  using Kriging<T>::Kriging;
  using Kriging<T>::Status;
  using Kriging<T>::StopRequested;
  using Kriging<T>::NumSamp;
  using Kriging<T>::NumVar;
  using Kriging<T>::NumSol;
  using Kriging<T>::NumGlobalSol;
  using Kriging<T>::VecGlobalSol;
  using Kriging<T>::NumKern;
  using Kriging<T>::KernVec;
  using Kriging<T>::KernOptType;
  using Kriging<T>::SolnType;
  using Kriging<T>::CorrFuncType;
  using Kriging<T>::PolynomType;
  using Kriging<T>::KernStartPending;
  using Kriging<T>::KernVarType;
  using Kriging<T>::KernRecentre;
  using Kriging<T>::SolveRequired;
  using Kriging<T>::InpSampMtx;
  using Kriging<T>::InpSampSet;
  using Kriging<T>::OutSampMtx;
  using Kriging<T>::OutSampSet;
  using Kriging<T>::ScalingType;
  using Kriging<T>::InpScaleVec;
  using Kriging<T>::InpInterceptVec;
  using Kriging<T>::OutScaleVec;
  using Kriging<T>::OutInterceptVec;
  using Kriging<T>::PolyCoeff;
  using Kriging<T>::CorrCoeff;
  using Kriging<T>::DropToler;
  using Kriging<T>::Spare1;
  using Kriging<T>::NuggetFactor;
  using Kriging<T>::MaxNumIter;
  using Kriging<T>::NumSolves;
  using Kriging<T>::SolveStep;
  using Kriging<T>::InvCholFactor;
  using Kriging<T>::RegrFactor;
  using Kriging<T>::DenseRegrFactor;
  using Kriging<T>::RegrFactorIsTri;
  using Kriging<T>::WhitenedRegrT;
  using Kriging<T>::ProcVarnc;
  using Kriging<T>::InputPointToler;
  using Kriging<T>::Spare2;
  using Kriging<T>::OutputRanges;
  using Kriging<T>::OutputGlobalRange;
  using Kriging<T>::LowerKernelMultiplierBound;
  using Kriging<T>::UpperKernelMultiplierBound;
  using Kriging<T>::KeepPredictorError;
  using Kriging<T>::LastPredictorError;
  using Kriging<T>::InpTestMtx;
  using Kriging<T>::InpTestSet;
  using Kriging<T>::TestCorrMtx;
  using Kriging<T>::TestPolyMtx;
  using Kriging<T>::RescaleOnSolve;
  using Kriging<T>::TestCorrStale;
  using Kriging<T>::TestPolyStale;
  using Kriging<T>::TestRelativeErrorVec;
  using Kriging<T>::DiffWorkVec;
  using Kriging<T>::CheckInputState;
  using Kriging<T>::SamplesFit;
  using Kriging<T>::CoefficientsFit;
  using Kriging<T>::UpdateOutputRanges;
  using Kriging<T>::stopped;
  using Kriging<T>::SelectLargestErrors;
  using Kriging<T>::MLEVec;
  using Kriging<T>::MLEValue;
  using Kriging<T>::KernSearchRotate;
  using Kriging<T>::FitAtKernel;
  using Kriging<T>::EvalStartKernel;
  using Kriging<T>::EvalKernel;
  using Kriging<T>::TryKernel;

  void clearStale() { TestCorrStale = TestPolyStale = false; }

  std::vector<int> groups() const {
    return std::vector<int>(VecGlobalSol.get(), VecGlobalSol.get() + NumGlobalSol);
  }
};

} // namespace kriging_test

#endif
