/**
 * @file surrogate.h
 * From samples and options to a fitted list of models, and what there is to say about it.
 */
#ifndef ZAREL_APP_SURROGATE_H
#define ZAREL_APP_SURROGATE_H

#include "model_file.h"
#include "samples.h"

#include <string>
#include <vector>

namespace app {

/** What one model of a list is, for people and for reports. */
struct ModelFacts {
  std::vector<std::string> outputs;
  int correlation = 0;
  int trend = 0; ///< the one in use, which may be a reduced one
  int terms = 0;
  int scaling = 0;
  int kernel = 0;
  bool optimised = false;
  std::vector<double> theta;
};

/** The order in which the list holds the outputs, as the groups say. */
std::vector<std::string> orderedNames(const std::vector<std::vector<int>>& groups,
                                      const std::vector<std::string>& outputs);

/** Sizes, samples and options given to an empty list, and the notes that go with it. */
void buildList(const Samples& samples, const ModelOptions& options, KrigingList<double>& list,
               ModelNotes& notes);

/** Copies rows of a table into a matrix, a row a point. */
void toMatrix(const Table& table, C_MatMGe<double>& matrix);

/**
 * Fits the models one after the other; a signal stops the running fit.
 * Throws `numerical` when a model cannot be fitted or comes out not finite, and `interrupted` with
 * a hint on how to go on.
 */
void fitModels(KrigingList<double>& list, const ModelNotes& notes, Console& console);

/** Refits the factors that standard errors need, with the multipliers as they stand. */
void prepareErrors(KrigingList<double>& list, const ModelNotes& notes, Console& console);

/** One entry a model. */
std::vector<ModelFacts> modelFacts(KrigingList<double>& list, const ModelNotes& notes);

/** The facts as JSON. */
Json factsJson(const ModelFacts& facts);

/** The facts on one line. */
std::string factsText(const ModelFacts& facts);

int modelCount(KrigingList<double>& list);

} // namespace app

#endif
