/**
 * @file samples.h
 * Samples of a simulation: read from CSV, and checked for what a fit cannot or should not take.
 */
#ifndef ZAREL_APP_SAMPLES_H
#define ZAREL_APP_SAMPLES_H

#include "console.h"
#include "model_options.h"

#include <cstddef>
#include <string>
#include <vector>

namespace app {

/** Named columns of numbers; a row a point. */
struct Table {
  std::vector<std::string> names;
  std::vector<double> values; ///< row after row

  std::size_t columns() const { return names.size(); }
  std::size_t rows() const { return names.empty() ? 0 : values.size() / names.size(); }
  double at(std::size_t row, std::size_t column) const {
    return values[row * names.size() + column];
  }
};

/** Inputs and outputs of the same rows. */
struct Samples {
  std::string file;
  Table inputs;
  Table outputs;
  std::vector<long long> lines; ///< where each row stands in the file; empty if it is in none
};

/**
 * Reads samples.
 * @param inputs  which columns are inputs, as `selectColumns` reads it
 * @param outputs the same for outputs; empty for all that are not inputs
 */
Samples readSamples(const std::string& path, const std::string& inputs, const std::string& outputs,
                    Console& console);

/**
 * Refuses samples that the fit would fail on (`badInput`): none at all, fewer than the start of
 * the multipliers needs, an input that never changes where the scaling divides by its deviation.
 * Warns about duplicate points, outputs and inputs that never change, and a trend that will be
 * reduced.
 */
void checkSamples(const Samples& samples, const ModelOptions& options, Console& console);

/** Terms of a trend in n variables. */
long long trendTerms(int trend, long long n);

/** The richest trend up to `wanted` that has no more terms than there are samples. */
int trendForCount(int wanted, const Samples& samples);

/** The value for a model, of a list with one value for all models or one a model. */
int valueFor(const std::vector<int>& values, std::size_t model);

} // namespace app

#endif
