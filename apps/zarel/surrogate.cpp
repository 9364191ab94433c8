#include "surrogate.h"

#include "interrupt.h"
#include "library.h"
#include "number.h"
#include "suggest.h"

#include <cmath>
#include <functional>

namespace app {

namespace {

using RealVec = Kriging<double>::RealVec;
using Matrix = C_MatMGe<double>;

Kriging<double>& item(KrigingList<double>& list, int i) {
  return *list.GetItemKriging(i);
}

/** A refusal by a setter whose value the program has checked itself. */
void must(int result, const char* what) {
  if (result != 0)
    throw Failure(ExitCode::failure, std::string("the library does not take ") + what);
}

std::vector<double> valuesOf(RealVec& vector) {
  std::vector<double> values(static_cast<std::size_t>(vector.Dim()));
  for (int i = 0; i < vector.Dim(); ++i)
    values[static_cast<std::size_t>(i)] = vector[i];
  return values;
}

std::vector<double> multipliers(Kriging<double>& model) {
  RealVec vector;
  model.GetKernVec(vector);
  return valuesOf(vector);
}

Table columnsInOrder(const Table& table, const std::vector<std::vector<int>>& groups) {
  Table result;
  result.names = orderedNames(groups, table.names);
  for (std::size_t row = 0; row < table.rows(); ++row)
    for (const auto& group : groups)
      for (const int column : group)
        result.values.push_back(table.at(row, static_cast<std::size_t>(column)));
  return result;
}

bool isFinite(Matrix& matrix) {
  for (int j = 0; j < matrix.NbCol(); ++j)
    for (int i = 0; i < matrix.NbRow(); ++i)
      if (!std::isfinite(matrix(i, j))) return false;
  return true;
}

bool isFinite(Kriging<double>& model) {
  double criterion = 0;
  Matrix coefficients;
  if (model.GetMLE(criterion) != 0 || !std::isfinite(criterion)) return false;
  model.GetCorrCoeff(coefficients);
  if (!isFinite(coefficients)) return false;
  Matrix trend;
  model.GetPolyCoeff(trend);
  return isFinite(trend);
}

/** All multipliers between commas, or nothing as long as a model has none. */
std::string thetaSoFar(KrigingList<double>& list) {
  std::string text;
  for (int i = 0; i < modelCount(list); ++i) {
    int wanted = 0;
    item(list, i).GetNumKern(wanted);
    const auto theta = multipliers(item(list, i));
    if (static_cast<int>(theta.size()) != wanted) return "";
    for (const double value : theta) {
      if (!(std::isfinite(value) && value > 0)) return "";
      text += (text.empty() ? "" : ",") + numberText(value);
    }
  }
  return text;
}

/** How to go on with a fit that was stopped. */
std::string wayOn(KrigingList<double>& list) {
  const std::string theta = thetaSoFar(list);
  return theta.empty() ? "run the same command to start again"
                       : "to go on from the multipliers found so far, add --theta " + theta;
}

[[noreturn]] void failFit(const std::string& outputs, const std::string& why) {
  throw Failure(ExitCode::numerical,
                "the model of " + outputs + " could not be fitted" +
                    (why.empty() ? "" : " (" + why + ")"),
                "try another --correlation, a smaller --trend or a larger --drop-tolerance; look "
                "for duplicate or nearly equal samples");
}

std::vector<std::string> outputsOf(KrigingList<double>& list, const ModelNotes& notes, int model) {
  std::size_t begin = 0;
  int count = 0;
  for (int i = 0; i <= model; ++i) {
    begin += static_cast<std::size_t>(count);
    item(list, i).GetNumSol(count);
  }
  const auto first = notes.outputs.begin() + static_cast<std::ptrdiff_t>(begin);
  return {first, first + count};
}

void solveWith(KrigingList<double>& list, const std::function<int(Kriging<double>&)>& solve,
               const std::function<std::string(int)>& name,
               const std::function<std::string()>& howToGoOn, Console& console) {
  const interrupt::OnStop stop([&list] {
    for (int i = 0; i < modelCount(list); ++i)
      item(list, i).Stop();
  });
  const int models = modelCount(list);
  for (int i = 0; i < models; ++i) {
    library::FitProgress progress(console, "fitting " + name(i), item(list, i));
    library::Details details;
    const int result = solve(item(list, i));
    if (interrupt::requested()) interrupt::check(howToGoOn());
    if (result != 0) failFit(name(i), details.text());
    if (!isFinite(item(list, i))) failFit(name(i), "its coefficients are not finite");
  }
}

template <class Put>
void putEach(const std::vector<int>& values, int models, const char* option, Put put) {
  const auto given = static_cast<int>(values.size());
  if (given != 1 && given != models)
    throw Failure(ExitCode::usage,
                  std::string(option) + " has " + std::to_string(given) + " values, where there " +
                      (models == 1 ? "is 1 model" : "are " + std::to_string(models) + " models"),
                  "give one value for all, or one a model; --groups makes the models");
  for (int i = 0; i < models; ++i)
    must(put(valueFor(values, static_cast<std::size_t>(i)), i), option);
}

void putTheta(const std::vector<double>& theta, KrigingList<double>& list) {
  int total = 0;
  for (int i = 0; i < modelCount(list); ++i) {
    int count = 0;
    item(list, i).GetNumKern(count);
    total += count;
  }
  if (static_cast<int>(theta.size()) != total)
    throw Failure(ExitCode::usage,
                  "--theta has " + std::to_string(theta.size()) +
                      " multipliers, where the models have " + std::to_string(total),
                  "one a model with --kernel isotropic, one an input and model otherwise");
  std::size_t next = 0;
  for (int i = 0; i < modelCount(list); ++i) {
    int count = 0;
    item(list, i).GetNumKern(count);
    RealVec values;
    values.Resize(count);
    for (int k = 0; k < count; ++k)
      values[k] = theta[next++];
    must(item(list, i).PutKernVec(values), "--theta");
  }
}

} // namespace

int modelCount(KrigingList<double>& list) {
  int count = 0;
  list.GetNumKriging(count);
  return count;
}

std::vector<std::string> orderedNames(const std::vector<std::vector<int>>& groups,
                                      const std::vector<std::string>& outputs) {
  std::vector<std::string> names;
  for (const auto& group : groups)
    for (const int column : group)
      names.push_back(outputs[static_cast<std::size_t>(column)]);
  return names;
}

void toMatrix(const Table& table, Matrix& matrix) {
  matrix.Resize(static_cast<int>(table.rows()), static_cast<int>(table.columns()));
  for (std::size_t row = 0; row < table.rows(); ++row)
    for (std::size_t column = 0; column < table.columns(); ++column)
      matrix(static_cast<int>(row), static_cast<int>(column)) = table.at(row, column);
}

void apply(const ModelOptions& options, KrigingList<double>& list) {
  const int models = modelCount(list);
  putEach(options.correlation, models, "--correlation",
          [&](int value, int i) { return list.PutCorrFuncType(value, i); });
  putEach(options.trend, models, "--trend",
          [&](int value, int i) { return list.PutPolynomType(value, i); });
  putEach(options.scaling, models, "--scaling",
          [&](int value, int i) { return list.PutScalingType(value, i); });
  putEach(options.kernel, models, "--kernel",
          [&](int value, int i) { return list.PutKrigingKernVarType(value, i); });
  must(list.PutKrigingKernOptType(options.optimise ? E_KernOptPattern : E_KernOptNone, -1),
       "--no-optimise");
  list.SetStep(options.step, -1); // answers 1 whatever happened
  for (int i = 0; i < models; ++i) {
    must(item(list, i).PutDropToler(options.dropTolerance), "--drop-tolerance");
    must(item(list, i).PutLowerKernelMultiplierBound(options.lowerBound), "--bounds");
    must(item(list, i).PutUpperKernelMultiplierBound(options.upperBound), "--bounds");
  }
  if (!options.theta.empty()) putTheta(options.theta, list);
}

void buildList(const Samples& samples, const ModelOptions& options, KrigingList<double>& list,
               ModelNotes& notes) {
  const auto groups = outputGroups(options.groups, samples.outputs.names);
  std::vector<int> sizes;
  for (const auto& group : groups)
    sizes.push_back(static_cast<int>(group.size()));
  const Table outputs = columnsInOrder(samples.outputs, groups);
  Matrix x;
  Matrix y;
  toMatrix(samples.inputs, x);
  toMatrix(outputs, y);
  must(list.PutNumKriging(static_cast<int>(groups.size())), "the number of models");
  must(list.PutNumVar(x.NbCol()), "the number of inputs");
  must(list.PutNumSol(y.NbCol(), static_cast<int>(groups.size()), sizes.data()), "the groups");
  must(list.PutInpSampMtx(x), "the inputs of the samples");
  must(list.PutOutSampMtx(y), "the outputs of the samples");
  apply(options, list);
  notes.inputs = samples.inputs.names;
  notes.outputs = outputs.names;
  notes.dropTolerance = options.dropTolerance;
  notes.lowerBound = options.lowerBound;
  notes.upperBound = options.upperBound;
}

void fitModels(KrigingList<double>& list, const ModelNotes& notes, Console& console) {
  library::takeBlasBuffer();
  solveWith(
      list, [](Kriging<double>& model) { return model.Solve(); },
      [&](int i) { return listed(outputsOf(list, notes, i), 3); }, [&] { return wayOn(list); },
      console);
}

void prepareErrors(KrigingList<double>& list, const ModelNotes& notes, Console& console) {
  library::takeBlasBuffer();
  // A search would move the multipliers, and with them the predictions.
  must(list.PutKrigingKernOptType(E_KernOptNone, -1), "a fit without a search");
  solveWith(
      list, [](Kriging<double>& model) { return model.ReSolve(); },
      [&](int i) { return listed(outputsOf(list, notes, i), 3); },
      [] { return "run the same command again"; }, console);
}

std::vector<ModelFacts> modelFacts(KrigingList<double>& list, const ModelNotes& notes) {
  std::vector<ModelFacts> all;
  for (int i = 0; i < modelCount(list); ++i) {
    auto& model = item(list, i);
    ModelFacts facts;
    facts.outputs = outputsOf(list, notes, i);
    model.GetCorrFuncType(facts.correlation);
    model.GetPolynomType(facts.trend);
    model.GetNumPolyCoeff(facts.terms);
    // A reduction down to the constant or to nothing leaves the type as it was.
    if (facts.terms < 2) facts.trend = facts.terms;
    model.GetScalingType(facts.scaling);
    model.GetKrigingKernVarType(facts.kernel);
    int optimise = 0;
    model.GetKrigingKernOptType(optimise);
    facts.optimised = optimise != 0;
    facts.theta = multipliers(model);
    all.push_back(facts);
  }
  return all;
}

Json factsJson(const ModelFacts& facts) {
  Json json;
  json["outputs"] = facts.outputs;
  json["correlation"] = nameOf(correlationNames(), facts.correlation);
  json["trend"] = nameOf(trendNames(), facts.trend);
  json["trend_terms"] = facts.terms;
  json["scaling"] = nameOf(scalingNames(), facts.scaling);
  json["kernel"] = nameOf(kernelNames(), facts.kernel);
  json["optimised"] = facts.optimised;
  json["theta"] = facts.theta;
  return json;
}

std::string factsText(const ModelFacts& facts) {
  constexpr std::size_t shown = 12;
  std::vector<std::string> theta;
  for (const double value : facts.theta)
    theta.push_back(roundedText(value));
  const std::string trend = facts.terms == 0 ? "no trend"
                                             : nameOf(trendNames(), facts.trend) + " trend (" +
                                                   std::to_string(facts.terms) +
                                                   (facts.terms == 1 ? " term)" : " terms)");
  return listed(facts.outputs) + ": " + nameOf(correlationNames(), facts.correlation) + ", " +
         trend + ", scaling " + nameOf(scalingNames(), facts.scaling) + ", " +
         nameOf(kernelNames(), facts.kernel) + " multipliers " + listed(theta, shown);
}

} // namespace app
