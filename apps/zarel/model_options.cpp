#include "model_options.h"

#include "failure.h"
#include "number.h"
#include "option_values.h"
#include "suggest.h"

namespace app {

namespace {

constexpr long long largestStep = 1000000;

void readBounds(const std::string& text, ModelOptions& options) {
  const Range positive{0, std::numeric_limits<double>::infinity(), true};
  const auto colon = text.find(':');
  if (colon == std::string::npos)
    throw CLI::ValidationError("--bounds", "\"" + text + "\" is not of the form LOWER:UPPER");
  options.lowerBound = readReal("--bounds", text.substr(0, colon), positive);
  options.upperBound = readReal("--bounds", text.substr(colon + 1), positive);
  if (options.lowerBound > 1 || options.upperBound < 1)
    throw CLI::ValidationError("--bounds", "\"" + text + "\" leaves out the start, which is at 1");
}

int positionOf(std::string_view wanted, const std::vector<std::string>& outputs) {
  for (std::size_t i = 0; i < outputs.size(); ++i)
    if (outputs[i] == wanted) return static_cast<int>(i);
  throw Failure(ExitCode::usage, "--groups: no output is called \"" + std::string(wanted) + "\"",
                didYouMean(wanted, outputs));
}

std::vector<int> readGroup(std::string_view text, const std::vector<std::string>& outputs,
                           std::vector<bool>& taken) {
  std::vector<int> group;
  forEachPart(text, ',', [&](std::string_view name) {
    const int position = positionOf(name, outputs);
    if (taken[position])
      throw Failure(ExitCode::usage,
                    "--groups: \"" + std::string(name) + "\" stands in more than one place");
    taken[position] = true;
    group.push_back(position);
  });
  return group;
}

} // namespace

const std::vector<NamedValue>& correlationNames() {
  static const std::vector<NamedValue> names{
      {"exponential", 1, "rough, not differentiable"},
      {"gaussian", 2, "very smooth"},
      {"linear", 3, "compact support"},
      {"spherical", 4, "compact support"},
      {"cubic", 5, "compact support, once differentiable"},
      {"multiquadric", 6, "grows with distance"},
      {"spline", 7, "compact support, twice differentiable"},
      {"matern52", 8, "Matern with smoothness 5/2, twice differentiable"},
      {"quadratic", 9, "compact support"},
      {"bessel", 10, "J0 up to its first minimum"},
      {"sinc", 11, "sin(x)/x up to its first minimum"}};
  return names;
}

const std::vector<NamedValue>& trendNames() {
  static const std::vector<NamedValue> names{{"none", 0, "no regression term"},
                                             {"constant", 1, "1"},
                                             {"linear", 2, "and x_i"},
                                             {"pure-quadratic", 3, "and x_i^2"},
                                             {"quadratic", 4, "and x_i x_j"}};
  return names;
}

const std::vector<NamedValue>& scalingNames() {
  static const std::vector<NamedValue> names{{"none", 0, "as given"},
                                             {"inputs", 1, "each input to mean 0 and deviation 1"},
                                             {"outputs", 2, "all outputs of a model by one factor"},
                                             {"both", 3, "both of these"}};
  return names;
}

const std::vector<NamedValue>& kernelNames() {
  static const std::vector<NamedValue> names{{"isotropic", 0, "one multiplier for all variables"},
                                             {"anisotropic", 1, "one multiplier a variable"}};
  return names;
}

std::string nameOf(const std::vector<NamedValue>& names, int value) {
  for (const auto& name : names)
    if (name.value == value) return name.name;
  return "?";
}

void addModelOptions(CLI::App& command, ModelOptions& options) {
  const Range positive{0, std::numeric_limits<double>::infinity(), true};
  const std::string group = "Model (one value for all models, or one a model between commas)";
  addNamed(command, "--correlation", options.correlation, correlationNames(),
           "Correlation function:")
      ->group(group);
  addNamed(command, "--trend", options.trend, trendNames(),
           "Regression polynomial, reduced by itself to what the samples carry:")
      ->group(group);
  addNamed(command, "--scaling", options.scaling, scalingNames(), "Scaling before the fit:")
      ->group(group);
  addNamed(command, "--kernel", options.kernel, kernelNames(), "Kernel multipliers:")->group(group);

  const std::string fit = "Fit";
  command
      .add_option_function<std::string>(
          "--bounds", [&options](const std::string& text) { readBounds(text, options); },
          "Bounds of the search for the multipliers, as multiples of their start")
      ->type_name("LOWER:UPPER")
      ->default_str(numberText(options.lowerBound) + ":" + numberText(options.upperBound))
      ->group(fit);
  addReals(command, "--theta", options.theta,
           "Multipliers to start from, those of all models one after the other; "
           "without it they come from the data's variances",
           positive)
      ->group(fit);
  command
      .add_flag_callback(
          "--no-optimise,--no-optimize", [&options] { options.optimise = false; },
          "Take the multipliers as they are, without a search")
      ->group(fit);
  addReal(command, "--drop-tolerance", options.dropTolerance,
          "Correlations below this become 0; its multiple by the square root of the number of "
          "samples is added to the diagonal",
          {0, 1, true})
      ->group(fit);
  command
      .add_option_function<std::string>(
          "--step",
          [&options](const std::string& text) {
            options.step = static_cast<int>(readInteger("--step", text, 1, largestStep));
          },
          "Search the multipliers in every N-th fit only, where a command fits more than once")
      ->type_name("N")
      ->default_str(std::to_string(options.step))
      ->group(fit);
  command
      .add_option("--groups", options.groups,
                  "Outputs that share a model and are judged together: each, all, or names like "
                  "\"fx,fy;weight\"")
      ->type_name("GROUPS")
      ->capture_default_str()
      ->group(fit);
}

std::vector<std::vector<int>> outputGroups(const std::string& groups,
                                           const std::vector<std::string>& outputs) {
  const int count = static_cast<int>(outputs.size());
  std::vector<std::vector<int>> result;
  std::vector<bool> taken(outputs.size());
  if (groups == "all") {
    result.emplace_back();
    for (int i = 0; i < count; ++i)
      result.back().push_back(i);
    return result;
  }
  if (groups != "each" && !groups.empty())
    forEachPart(groups, ';', [&](std::string_view part) {
      if (!part.empty()) result.push_back(readGroup(part, outputs, taken));
    });
  for (int i = 0; i < count; ++i)
    if (!taken[i]) result.push_back({i});
  return result;
}

} // namespace app
