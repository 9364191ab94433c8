#include "settings.h"

#include "columns.h"
#include "csv.h"
#include "failure.h"
#include "journal.h"
#include "number.h"
#include "space_filling.h"
#include "suggest.h"

#include <algorithm>
#include <set>

namespace app::refine {
namespace {

/// Streams of the generator: what is drawn for one purpose does not depend on the others.
enum Stream : unsigned { initialStream = 1, testStream = 2 };

/// How points are drawn; grows when other points would be drawn. What a study has drawn in one way
/// does not go together with what is drawn in another.
constexpr int sampling = 2;

constexpr int initialPerVariable = 10;
constexpr int testsPerVariable = 100;
constexpr int fewestTests = 500;

[[noreturn]] void failUsage(const std::string& what, const std::string& hint = {}) {
  throw Failure(ExitCode::usage, what, hint);
}

std::vector<std::string> parseOutputs(const std::string& text,
                                      const std::vector<Variable>& variables) {
  std::vector<std::string> outputs;
  std::set<std::string> names;
  for (const Variable& v : variables)
    names.insert(v.name);
  forEachPart(text, ',', [&](std::string_view part) {
    if (part.empty())
      failUsage("--outputs is missing or holds an empty name",
                "name the columns of the simulation's results: --outputs mass,stress");
    outputs.emplace_back(part);
    if (!names.insert(outputs.back()).second)
      failUsage("--outputs: the name \"" + outputs.back() + "\" stands twice");
  });
  return outputs;
}

/// A table read from a file: some of its columns, in the order asked for.
struct NumberTable {
  std::vector<Row> rows;
  std::string text; ///< all numbers, for the fingerprint
};

NumberTable readColumns(CsvReader& csv, const std::vector<std::string>& names) {
  std::vector<std::size_t> positions;
  for (const std::string& name : names)
    positions.push_back(findColumn(name, csv.names(), csv.file()));
  NumberTable table;
  while (csv.next()) {
    Row row;
    for (std::size_t position : positions) {
      row.push_back(csv.number(position));
      appendNumber(table.text, row.back());
      table.text += ' ';
    }
    table.rows.push_back(std::move(row));
  }
  if (table.rows.empty())
    throw Failure(ExitCode::badInput, "no points", "a row a point behind the line of names",
                  Place{csv.file(), 0, 0, 0, {}});
  return table;
}

std::string fingerprint(const std::string& text) {
  return "crc32 " + std::to_string(crc32(text)) + ", " + std::to_string(text.size()) + " bytes";
}

int countNames(const std::vector<std::string>& names, const std::vector<std::string>& header) {
  return static_cast<int>(std::count_if(names.begin(), names.end(), [&](const std::string& name) {
    return std::find(header.begin(), header.end(), name) != header.end();
  }));
}

/// Splits rows of inputs and outputs.
void splitRows(const std::vector<Row>& rows, std::size_t inputs, std::vector<Row>& x,
               std::vector<Row>& y) {
  for (const Row& row : rows) {
    const auto middle = row.begin() + static_cast<std::ptrdiff_t>(inputs);
    x.emplace_back(row.begin(), middle);
    y.emplace_back(middle, row.end());
  }
}

std::vector<std::string> joined(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

/// Initial samples from a file: with all outputs, or with none.
void readInitial(Settings& settings) {
  const std::string& path = settings.options.samplesFile;
  const auto inputs = settings.inputNames();
  CsvReader csv(path);
  if (countNames(settings.outputs, csv.names()) == 0) {
    NumberTable table = readColumns(csv, inputs);
    settings.identity["samples"] = fingerprint(table.text);
    settings.initialPoints = std::move(table.rows);
    return;
  }
  const NumberTable table = readColumns(csv, joined(inputs, settings.outputs));
  settings.identity["samples"] = fingerprint(table.text);
  splitRows(table.rows, inputs.size(), settings.initialPoints, settings.initialResults);
}

void drawInitial(Settings& settings, std::uint64_t seed) {
  const int variables = static_cast<int>(settings.variables.size());
  const int count = settings.options.initial > 0 ? static_cast<int>(settings.options.initial)
                                                 : initialPerVariable * variables;
  settings.identity["initial"] = count;
  settings.identity["sampling"] = sampling;
  settings.initialPoints = drawPoints(count, settings.variables, seed, initialStream);
}

void prepareTests(Settings& settings, std::uint64_t seed) {
  if (!settings.options.testFile.empty()) {
    CsvReader csv(settings.options.testFile);
    NumberTable table = readColumns(csv, settings.inputNames());
    settings.identity["tests"] = fingerprint(table.text);
    settings.testPoints = std::move(table.rows);
    return;
  }
  const int variables = static_cast<int>(settings.variables.size());
  const int count = settings.options.testPoints > 0
                        ? static_cast<int>(settings.options.testPoints)
                        : std::max(fewestTests, testsPerVariable * variables);
  settings.identity["tests"] = count;
  settings.identity["sampling"] = sampling;
  settings.testPoints = drawPoints(count, settings.variables, seed, testStream);
}

void readValidation(Settings& settings) {
  if (settings.options.validationFile.empty()) return;
  const auto inputs = settings.inputNames();
  CsvReader csv(settings.options.validationFile);
  const NumberTable table = readColumns(csv, joined(inputs, settings.outputs));
  splitRows(table.rows, inputs.size(), settings.validation.x, settings.validation.y);
}

Json modelIdentity(const ModelOptions& model) {
  return {{"correlation", model.correlation},
          {"trend", model.trend},
          {"scaling", model.scaling},
          {"kernel", model.kernel},
          {"bounds", {model.lowerBound, model.upperBound}},
          {"optimise", model.optimise},
          {"theta", model.theta},
          {"drop_tolerance", model.dropTolerance},
          {"step", model.step},
          {"groups", model.groups}};
}

void checkPaths(const Options& options) {
  if (options.study.empty())
    failUsage("--study is missing", "name a folder for the study: --study out/wing");
  if (options.command.empty())
    failUsage("--command is missing",
              "tell how the simulation is called: --command 'simulate {points} {results}'");
  for (const std::string* path : {&options.samplesFile, &options.testFile, &options.validationFile})
    if (*path == "-")
      failUsage("a study reads no standard input",
                "a study must find its files again when it goes on");
}

void checkCounts(const Settings& settings) {
  const auto variables = settings.variables.size();
  if (settings.initialPoints.size() < variables + 1)
    failUsage(std::to_string(settings.initialPoints.size()) + " initial samples are too few for " +
                  std::to_string(variables) + " inputs",
              "a fit needs " + std::to_string(variables + 1) +
                  " or more: see --initial and --samples");
  const auto budget = static_cast<std::size_t>(settings.options.budget);
  if (budget > 0 && settings.initialResults.empty() && settings.initialPoints.size() > budget)
    failUsage("--budget " + std::to_string(budget) + " does not suffice for the " +
              std::to_string(settings.initialPoints.size()) + " initial samples");
}

} // namespace

std::vector<std::string> Settings::inputNames() const {
  std::vector<std::string> names;
  for (const Variable& v : variables)
    names.push_back(v.name);
  return names;
}

Settings prepare(const Options& options, const Globals& globals) {
  checkPaths(options);
  Settings settings;
  settings.options = options;
  settings.variables = parseVariables(options.inputs);
  settings.outputs = parseOutputs(options.outputs, settings.variables);
  outputGroups(options.model.groups, settings.outputs); // refuses wrong names before any work
  Json inputs;
  for (const Variable& v : settings.variables)
    inputs[v.name] = {v.low, v.high};
  settings.identity = {{"inputs", inputs}, {"outputs", settings.outputs}, {"seed", globals.seed}};
  if (options.samplesFile.empty())
    drawInitial(settings, globals.seed);
  else
    readInitial(settings);
  prepareTests(settings, globals.seed);
  readValidation(settings);
  settings.identity["model"] = modelIdentity(options.model);
  checkCounts(settings);
  return settings;
}

} // namespace app::refine
