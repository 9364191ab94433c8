/**
 * @file model_options.h
 * The options of a fit, the same for every command that fits.
 */
#ifndef ZAREL_APP_MODEL_OPTIONS_H
#define ZAREL_APP_MODEL_OPTIONS_H

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}
template <class T>
class KrigingList;

namespace app {

/** A value of one of the library's enumerations under its name on the command line. */
struct NamedValue {
  const char* name;
  int value;
  const char* help;
};

/** The names, in the order of the library's values. */
const std::vector<NamedValue>& correlationNames();
const std::vector<NamedValue>& trendNames();
const std::vector<NamedValue>& scalingNames();
const std::vector<NamedValue>& kernelNames();

/** The name of a value; "?" if it has none. */
std::string nameOf(const std::vector<NamedValue>& names, int value);

/**
 * What a caller may choose about a fit. The four lists hold one value for all models of the list,
 * or one a model.
 */
struct ModelOptions {
  std::vector<int> correlation{2}; ///< Gaussian
  std::vector<int> trend{4};       ///< full quadratic, reduced to what the samples carry
  std::vector<int> scaling{3};     ///< inputs and outputs
  std::vector<int> kernel{1};      ///< one multiplier a variable
  double lowerBound = 0.01;        ///< of a multiplier, as a multiple of its start
  double upperBound = 20.0;
  bool optimise = true;
  std::vector<double> theta; ///< multipliers to start from, all models joined; empty: from the data
  double dropTolerance = 1e-8;
  int step = 1; ///< every step-th fit searches the multipliers again
  std::string groups = "each";
};

/** Adds all fit options to a command, under the group "Model". */
void addModelOptions(CLI::App& command, ModelOptions& options);

/**
 * Which outputs form one model, as `--groups` says: "each" one a model, "all" in one model, or
 * groups between semicolons with columns between commas, such as "fx,fy,fz;weight". Outputs that
 * no group names form one model each, behind. Throws `usage`.
 * @return one list of positions in `outputs` a model
 */
std::vector<std::vector<int>> outputGroups(const std::string& groups,
                                           const std::vector<std::string>& outputs);

/**
 * Gives the options to the list, whose models and sizes are set already. Throws `usage` if the
 * options do not fit the list, such as another number of multipliers.
 */
void apply(const ModelOptions& options, KrigingList<double>& list);

} // namespace app

#endif
