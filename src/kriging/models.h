/**
 * @file models.h
 * What models and lists do alike, and the loops over the models of a list: the first failure ends
 * them.
 */
#ifndef ZAREL_KRIGING_MODELS_H
#define ZAREL_KRIGING_MODELS_H

#include <zarel/Kriging.h>

namespace Zarel {

/// The plain prediction of a model or a list: the full one, with no points wanted.
template <class Model, class T>
int predictOnly(Model& model, C_MatMGe<T>& X, C_MatMGe<T>& Y) {
  int none = 0;
  C_MatMGe<T> points;
  double error = 0.0;
  return model.EvalModel(X, Y, none, points, error, false);
}

/// Calls `act(model, i)` for each model. @return 1 at the first result that is not 0.
template <class T, class Act>
int forEachModel(Kriging<T>* models, int count, Act&& act) {
  for (int i = 0; i < count; ++i) {
    if (act(models[i], i) != 0) return 1;
  }
  return 0;
}

/// Calls `act(model)` for model `index`, or for all if it is negative. @return 1 if there is no
/// such model or one fails.
template <class T, class Act>
int forTarget(Kriging<T>* models, int count, int index, Act&& act) {
  if (index >= count) return 1;
  if (index >= 0) return act(models[index]) != 0 ? 1 : 0;
  return forEachModel(models, count, [&](Kriging<T>& model, int) { return act(model); });
}

/// Calls `act(model, i, first)` for each model, with the first of its output columns.
template <class T, class Act>
int forEachSlice(Kriging<T>* models, int count, int const* sizes, Act&& act) {
  int first = 0;
  return forEachModel(models, count, [&](Kriging<T>& model, int i) {
    int const start = first;
    first += sizes[i];
    return act(model, i, start);
  });
}

} // namespace Zarel

#endif
