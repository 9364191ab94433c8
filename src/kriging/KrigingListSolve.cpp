// Fits and predictions of a list, with their messages.
#include <zarel/KrigingList.h>

#include <cstdarg>
#include <cstdio>

#include "kriging/columns.h"
#include "kriging/instantiate.h"
#include "kriging/message.h"
#include "kriging/models.h"

using Zarel::forEachSlice;
using Zarel::forTarget;

// ----- messages ----------------------------------------------------------------------------------

template <class T>
int KrigingList<T>::Print(std::string const& text) {
  return Zarel::reportKriging(text, __FILE__, __LINE__);
}

template <class T>
int KrigingList<T>::Print(char const* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  char text[4096];
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return Print(std::string(text));
}

// ----- fits --------------------------------------------------------------------------------------

template <class T>
int KrigingList<T>::Solve() {
  Print("\n================================================");
  Print(">> New Solve of list of Kriging models...");
  return Zarel::forEachModel(Models.get(), NumKriging, [&](Kriging<T>& model, int i) {
    Print(">> -> Solve of %d-th Kriging model...", i);
    return model.Solve();
  });
}

template <class T>
int KrigingList<T>::ReSolve() {
  return forTarget(Models.get(), NumKriging, -1, [](Kriging<T>& model) { return model.ReSolve(); });
}

// ----- predictions -------------------------------------------------------------------------------

template <class T>
int KrigingList<T>::EvalModel(Matrix& X, Matrix& Y) {
  return Zarel::predictOnly(*this, X, Y);
}

template <class T>
int KrigingList<T>::EvalModel(Matrix& X, Matrix& Y, int& numNew, Matrix& newPoints,
                              double& maxRelErr, bool useTest) {
  maxRelErr = 0.0;
  if (evalModels(X, Y, numNew, newPoints, maxRelErr, useTest) != 0) return 1;
  numNew = maxRelErr > 0.0 ? newPoints.NbRow() : 0;
  return 0;
}

/// Evaluates all models; the one of the largest error, if that is above 0, names the points.
template <class T>
int KrigingList<T>::evalModels(Matrix& X, Matrix& Y, int wanted, Matrix& newPoints,
                               double& maxRelErr, bool useTest) {
  Y.Resize(X.NbRow(), NumSol);
  Matrix values;
  Matrix points;
  int const* const sizes = SolPerModel.get();
  return forEachSlice(Models.get(), NumKriging, sizes, [&](Kriging<T>& model, int i, int first) {
    int count = wanted;
    double error = 0.0;
    if (model.EvalModel(X, values, count, points, error, useTest) != 0) return 1;
    if (values.NbCol() != sizes[i] || values.NbRow() != X.NbRow()) return 1;
    Zarel::putColumns(values, Y, first);
    if (error > maxRelErr) {
      maxRelErr = error;
      newPoints.Copy(points);
    }
    return 0;
  });
}

template <class T>
int KrigingList<T>::EvalModelAndPredictor(Matrix& X, Matrix& Y, RealMatrix& E) {
  Y.Resize(X.NbRow(), NumSol);
  E.Resize(X.NbRow(), NumSol);
  Matrix values;
  RealMatrix errors;
  int const* const sizes = SolPerModel.get();
  return forEachSlice(Models.get(), NumKriging, sizes, [&](Kriging<T>& model, int i, int first) {
    if (model.EvalModelAndPredictor(X, values, errors) != 0) return 1;
    if (values.NbCol() != sizes[i] || values.NbRow() != X.NbRow()) return 1;
    if (errors.NbCol() != sizes[i] || errors.NbRow() != X.NbRow()) return 1;
    Zarel::putColumns(values, Y, first);
    Zarel::putColumns(errors, E, first);
    return 0;
  });
}

template <class T>
int KrigingList<T>::CheckRelativeError(Matrix& X, Matrix& Y, double& e, double& maxPredicted) {
  if (X.NbRow() != Y.NbRow() || X.NbCol() != NumVar || Y.NbCol() != NumSol) return 0;
  e = 0.0;
  int count = 1;
  Matrix point;
  Matrix predicted;
  if (EvalModel(X, predicted, count, point, maxPredicted, false) != 0) return 1;
  Matrix actualSlice;
  Matrix predictedSlice;
  int const* const sizes = SolPerModel.get();
  return forEachSlice(Models.get(), NumKriging, sizes, [&](Kriging<T>& model, int i, int first) {
    Zarel::takeColumns(Y, first, sizes[i], actualSlice);
    Zarel::takeColumns(predicted, first, sizes[i], predictedSlice);
    double error = 0.0;
    if (model.GetRelativeError(actualSlice, predictedSlice, error) != 0) return 1;
    if (error > e) e = error;
    return 0;
  });
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(KrigingList)
