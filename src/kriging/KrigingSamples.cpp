// Samples, test points, and the ranges of the outputs.
#include <zarel/Kriging.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"

namespace {

/// Columns of the matrix of ranges.
enum RangeColumn { Smallest = 0, Largest = 1, Spread = 2 };

struct Range {
  double smallest;
  double largest;
  double spread() const { return largest - smallest; }

  void fold(double magnitude) {
    if (magnitude < smallest) smallest = magnitude;
    if (magnitude > largest) largest = magnitude;
  }
};

template <class T>
void foldColumn(Range& range, T const* column, int rows) {
  for (int i = 0; i < rows; ++i)
    range.fold(std::abs(column[i]));
}

void store(C_MatMGe<double>& ranges, int output, Range const& range) {
  ranges(output, Smallest) = range.smallest;
  ranges(output, Largest) = range.largest;
  ranges(output, Spread) = range.spread();
}

/// Grows a matrix by rows and copies `added` into them.
template <class T>
void appendRows(C_MatMGe<T>& matrix, C_MatMGe<T>& added) {
  int const before = matrix.NbRow();
  matrix.ResizeAndKeepValues(before + added.NbRow(), matrix.NbCol());
  for (int j = 0; j < matrix.NbCol(); ++j)
    std::copy_n(added[j], added.NbRow(), matrix[j] + before);
}

} // namespace

template <class T>
int Kriging<T>::PutInpSampMtx(Matrix& X) {
  if (X.NbRow() < 1 || X.NbCol() < 1) return 1;
  InpSampMtx.Copy(X);
  NumSamp = X.NbRow();
  NumVar = X.NbCol();
  InpSampSet = true;
  KernRecentre = false;
  Status = E_KrigingStatusReady;
  TestCorrStale = TestPolyStale = true;
  return 0;
}

template <class T>
int Kriging<T>::GetInpSampMtx(Matrix& X) {
  if (!InpSampSet) return 1;
  X.Copy(InpSampMtx);
  return 0;
}

template <class T>
int Kriging<T>::PutOutSampMtx(Matrix& Y) {
  if (Y.NbRow() != NumSamp || Y.NbCol() != NumSol) return 1;
  OutSampMtx.Copy(Y);
  if (GetOutputGlobalRange(OutputGlobalRange) != 0) return 1;
  OutSampSet = true;
  return 0;
}

template <class T>
int Kriging<T>::GetOutSampMtx(Matrix& Y) {
  if (!OutSampSet) return 1;
  Y.Copy(OutSampMtx);
  return 0;
}

template <class T>
int Kriging<T>::AppendSampData(Matrix& X, Matrix& Y, bool kernStartPending) {
  bool const shapesFit = X.NbRow() >= 1 && X.NbCol() >= 1 && Y.NbRow() == X.NbRow() &&
                         X.NbCol() == NumVar && Y.NbCol() == NumSol;
  if (!InpSampSet || !OutSampSet || !shapesFit || !SamplesFit()) return 1;
  if (X.NbRow() > std::numeric_limits<int>::max() - NumSamp) return 1;
  appendRows(OutSampMtx, Y);
  appendRows(InpSampMtx, X);
  NumSamp += X.NbRow();
  Status = E_KrigingStatusReady;
  KernStartPending = kernStartPending ? 1 : 0;
  KernRecentre = true;
  return UpdateOutputGlobalRange(Y);
}

template <class T>
int Kriging<T>::PutInpTestMtx(Matrix& X) {
  if (X.NbRow() < 1 || X.NbCol() != NumVar) return 1;
  InpTestMtx.Copy(X);
  InpTestSet = true;
  return 0;
}

// ----- ranges of the outputs ---------------------------------------------------------------------

template <class T>
int Kriging<T>::ComputeOutputRanges() {
  int const rows = OutSampMtx.NbRow();
  if (OutSampMtx.NbCol() != NumSol || (rows < 1 && NumSol > 0)) return 1;
  OutputRanges.Resize(NumSol, 3);
  for (int j = 0; j < NumSol; ++j) {
    double const first = std::abs(OutSampMtx[j][0]);
    Range range{first, first};
    foldColumn(range, OutSampMtx[j], rows);
    store(OutputRanges, j, range);
  }
  return 0;
}

template <class T>
int Kriging<T>::UpdateOutputRanges(Matrix& Y) {
  if (OutputRanges.NbRow() != NumSol || OutputRanges.NbCol() != 3 || Y.NbCol() != NumSol) return 1;
  for (int j = 0; j < NumSol; ++j) {
    Range range{OutputRanges(j, Smallest), OutputRanges(j, Largest)};
    foldColumn(range, Y[j], Y.NbRow());
    if (range.spread() > OutputRanges(j, Spread)) store(OutputRanges, j, range);
  }
  return 0;
}

/// Norm, group by group, of the ranges as they stand.
template <class T>
int Kriging<T>::collectGlobalRange(RealVec& value) const {
  if (!GroupsFit()) return 1;
  value.Resize(NumGlobalSol);
  int output = 0;
  for (int g = 0; g < NumGlobalSol; ++g) {
    double sum = 0.0;
    for (int const end = output + VecGlobalSol[g]; output < end; ++output) {
      double const spread = OutputRanges(output, Largest) - OutputRanges(output, Smallest);
      sum += spread * spread;
    }
    value[g] = std::sqrt(sum);
  }
  return 0;
}

template <class T>
int Kriging<T>::GetOutputGlobalRange(RealVec& value) {
  return ComputeOutputRanges() != 0 ? 1 : collectGlobalRange(value);
}

template <class T>
int Kriging<T>::UpdateOutputGlobalRange(Matrix& Y) {
  return UpdateOutputRanges(Y) != 0 ? 1 : collectGlobalRange(OutputGlobalRange);
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)
