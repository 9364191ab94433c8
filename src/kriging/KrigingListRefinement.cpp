// Where a list would have the next samples: well-spread test points of largest relative error.
#include <zarel/KrigingList.h>

#include <algorithm>
#include <cmath>
#include <complex>

#include "kriging/columns.h"
#include "kriging/instantiate.h"
#include "kriging/models.h"

namespace {

/// Proposed points keep this part of the test points' size between them.
constexpr double spacing = 0.02;

template <class T>
double spreadOfMagnitudes(T const* column, int rows) {
  double smallest = std::abs(column[0]);
  double largest = smallest;
  for (int i = 1; i < rows; ++i) {
    smallest = std::min(smallest, std::abs(column[i]));
    largest = std::max(largest, std::abs(column[i]));
  }
  return largest - smallest;
}

} // namespace

// ----- test points -------------------------------------------------------------------------------

template <class T>
int KrigingList<T>::PutInpTestMtx(Matrix& X, int index) {
  if (X.NbRow() < 1 || X.NbCol() != NumVar || index >= NumKriging) return 1;
  int const result = Zarel::forTarget(Models.get(), NumKriging, index,
                                      [&](Kriging<T>& model) { return model.PutInpTestMtx(X); });
  if (result != 0) return 1;
  InpTestMtx.Copy(X);
  TestSize = ComputeSizeOfTestMtx();
  return 0;
}

template <class T>
double KrigingList<T>::ComputeSizeOfTestMtx() {
  int const columns = InpTestMtx.NbCol();
  if (columns != NumVar || columns < 1 || InpTestMtx.NbRow() < 1) return 0.0;
  // Each column's spread takes the place of the one before it, so that the last one is the size.
  return spreadOfMagnitudes(InpTestMtx[columns - 1], InpTestMtx.NbRow());
}

// ----- evaluation and choice ---------------------------------------------------------------------

template <class T>
int KrigingList<T>::EvalTestModel(Matrix& Y, int& numNew, Matrix& newPoints, double& maxRelErr) {
  NumNewPoints = 0;
  maxRelErr = 0.0;
  // With one point wanted, each model works out the relative errors of all test points.
  if (evalModels(InpTestMtx, Y, 1, newPoints, maxRelErr, true) != 0) return 1;
  if (numNew > 0 && chooseNewPoints(numNew, newPoints) != 0) return 1;
  NumNewPoints = numNew;
  return 0;
}

template <class T>
int KrigingList<T>::chooseNewPoints(int& numNew, Matrix& newPoints) {
  numNew = std::min(numNew, MaxNewPoints);
  std::vector<int> ids(numNew);
  RealVec values;
  double const distance = spacing * TestSize;
  if (searchNewPoints(numNew, ids.data(), values, distance * distance) != 0) return 1;
  if (numNew < 1) return 0;
  newPoints.Resize(numNew, NumVar);
  for (int k = 0; k < numNew; ++k) {
    Zarel::copyRow(InpTestMtx, ids[k], newPoints, k);
    NewPointIds[k] = ids[k];
  }
  return 0;
}

template <class T>
int KrigingList<T>::searchNewPoints(int& numNew, int* ids, RealVec& values, double t) {
  RealVec errors;
  if (collectErrors(errors) != 0) return 1;
  int const wanted = numNew;
  values.Resize(wanted);
  numNew = 0;
  bool found = true;
  for (int k = 0; k < wanted && found; ++k) {
    if (searchNextNewPoint(errors, wanted, numNew, ids, values, found, t) != 0) return 1;
  }
  return 0;
}

/// Largest relative error of each test point over the models.
template <class T>
int KrigingList<T>::collectErrors(RealVec& errors) {
  int const rows = InpTestMtx.NbRow();
  errors.Resize(rows);
  errors.Init(0.0, 0, -1);
  return Zarel::forTarget(Models.get(), NumKriging, -1, [&](Kriging<T>& model) {
    if (model.GetTestRelativeErrorDim() != rows) return 1;
    for (int i = 0; i < rows; ++i) {
      double const error = model.TestRelativeError(i);
      if (error > errors[i]) errors[i] = error;
    }
    return 0;
  });
}

template <class T>
int KrigingList<T>::searchNextNewPoint(RealVec& errors, int /*wanted*/, int& numNew, int* ids,
                                       RealVec& values, bool& found, double t) {
  found = false;
  if (errors.Dim() != InpTestMtx.NbRow() || NumKriging < 1) return 1;
  double best = 0.0;
  int choice = -1;
  for (int i = 0; i < errors.Dim(); ++i) {
    // An equal error takes the place of an earlier one.
    if (errors[i] >= best && mayBeChosen(i, ids, numNew, t)) {
      best = errors[i];
      choice = i;
    }
  }
  if (choice < 0) return 0;
  values.Resize(numNew + 1);
  values[numNew] = best;
  ids[numNew] = choice;
  ++numNew;
  found = true;
  return 0;
}

/// @return whether test point i is new, far enough from those chosen, and no sample. All models
/// have
///         the same samples, so the first one is asked.
template <class T>
bool KrigingList<T>::mayBeChosen(int i, int const* ids, int numNew, double t) {
  auto const excludes = [&](int id) { return id == i || IsCloseToExistingPoint(i, id, t); };
  return std::none_of(ids, ids + numNew, excludes) && !Models[0].IsInputPoint(InpTestMtx, i);
}

template <class T>
bool KrigingList<T>::IsCloseToExistingPoint(int i, int j, double& t) {
  double squared = 0.0;
  for (int k = 0; k < InpTestMtx.NbCol(); ++k)
    squared += std::norm(InpTestMtx(i, k) - InpTestMtx(j, k));
  return t > squared;
}

template <class T>
int KrigingList<T>::GetIdOfNewPoint(int k, int& id) const {
  bool const known = k >= 0 && k < NumNewPoints;
  id = known ? NewPointIds[k] : -1;
  return known ? 0 : 1;
}

// ----- how many points ---------------------------------------------------------------------------

template <class T>
int KrigingList<T>::EvaluateNumberOfNewPointsRequired(double oldError, double newError,
                                                      int numAdded, double target) {
  if (target > newError) return 1;
  double const gainPerPoint = (newError - oldError) / numAdded;
  double const needed = std::trunc((target - newError) / gainPerPoint);
  if (needed == 0.0) return 1;
  // Below 0 the last step made the error worse; not a number when it changed nothing at all.
  bool const withinReach = needed > 0.0 && needed < NumVar;
  return withinReach ? static_cast<int>(needed) : NumVar;
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(KrigingList)
