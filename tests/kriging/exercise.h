// Uses an object in every way that could read past the end of something, whatever it holds. The
// results do not matter, only that every operation comes back with 0 or 1.
#ifndef ZAREL_TESTS_KRIGING_EXERCISE_H
#define ZAREL_TESTS_KRIGING_EXERCISE_H

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <zarel/Kriging.h>
#include <zarel/KrigingList.h>

namespace kriging_test {

/// Ends the process, also where no test framework watches, if a result is neither 0 nor 1.
inline void answered(int result) {
  if (result == 0 || result == 1) return;
  std::fprintf(stderr, "an operation answered %d\n", result);
  std::abort();
}

/// Points that fit the model, or a shape of their own if it has no variables.
template <class T>
C_MatMGe<T> somePoints(int variables) {
  int const columns = variables >= 1 && variables <= 100 ? variables : 2;
  C_MatMGe<T> points(3, columns);
  for (int j = 0; j < columns; ++j) {
    for (int i = 0; i < 3; ++i)
      points(i, j) = T(0.25 * (i + 1) + 0.5 * j);
  }
  return points;
}

template <class T>
void exerciseErrors(Kriging<T>& model, C_MatMGe<T>& points) {
  C_MatMGe<T> values;
  C_MatMGe<T> chosen;
  C_MatMGe<double> errors;
  double first = 0.0;
  double second = 0.0;
  int count = 2;
  answered(model.EvalModelAndPredictor(points, values, errors));
  answered(model.PutInpTestMtx(points));
  answered(model.EvalModel(points, values, count, chosen, first, true));
  answered(model.GetPredictorError(points, first, second, count));
  answered(model.GetRelativeError(first));
  answered(model.getR2(first));
}

template <class T>
void exerciseSamples(Kriging<T>& model, C_MatMGe<T>& points) {
  int outputs = 0;
  model.GetNumSol(outputs);
  C_MatMGe<T> values(points.NbRow(), outputs >= 1 && outputs <= 100 ? outputs : 1);
  answered(model.AppendSampData(points, values, false));
  for (int i = 0; i < points.NbRow(); ++i)
    model.IsInputPoint(points, i);
  C_MatMGe<T> accepted;
  int* ids = nullptr;
  answered(model.CheckNewPoints(points, accepted, ids, 0.1));
  delete[] ids;
}

template <class T>
void exercise(Kriging<T>& model) {
  int variables = 0;
  model.GetNumVar(variables);
  C_MatMGe<T> points = somePoints<T>(variables);
  C_MatMGe<T> values;
  C_MatMGe<double> correlations;
  C_MatMGe<T> terms;
  answered(model.EvalModel(points, values));
  answered(model.EvalSampCorrAndPol(points, correlations, terms));
  exerciseErrors(model, points);
  Kriging<T> copy;
  answered(copy.Copy(&model));
  FILE* file = std::tmpfile();
  if (file != nullptr) {
    answered(model.Write(file));
    std::fclose(file);
  }
  exerciseSamples(model, points);
  answered(model.ReSolve());
  answered(model.EvalModel(points, values));
}

template <class T>
void exercise(KrigingList<T>& list) {
  int models = 0;
  int variables = 0;
  list.GetNumKriging(models);
  list.GetNumVar(variables);
  C_MatMGe<T> points = somePoints<T>(variables);
  C_MatMGe<T> values;
  C_MatMGe<T> chosen;
  C_MatMGe<double> errors;
  double worst = 0.0;
  int count = 2;
  answered(list.EvalModel(points, values));
  answered(list.EvalModelAndPredictor(points, values, errors));
  answered(list.PutInpTestMtx(points, -1));
  answered(list.EvalTestModel(values, count, chosen, worst));
  answered(list.GetOutSampMtx(values, -1));
  for (int i = 0; i < std::min(models, 4); ++i)
    exercise(*list.GetItemKriging(i));
  answered(list.EvalModel(points, values));
}

} // namespace kriging_test

#endif
