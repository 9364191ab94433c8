#include "samples.h"

#include "columns.h"
#include "csv.h"
#include "suggest.h"

#include <algorithm>
#include <numeric>

namespace app {

namespace {

constexpr std::size_t shownDuplicates = 3;

Table emptyTable(const std::vector<std::string>& names, const Columns& columns) {
  Table table;
  for (const auto column : columns)
    table.names.push_back(names[column]);
  return table;
}

void refuseSameNames(const Table& table, const std::vector<std::string>& names,
                     const std::string& file) {
  for (const auto& name : table.names)
    findColumn(name, names, file);
}

void refuseOverlap(const Columns& inputs, const Columns& outputs,
                   const std::vector<std::string>& names) {
  for (const auto column : outputs)
    if (std::find(inputs.begin(), inputs.end(), column) != inputs.end())
      throw Failure(ExitCode::badInput,
                    "the column \"" + names[column] + "\" is both an input and an output",
                    "see --inputs and --outputs");
}

[[noreturn]] void refuse(const Samples& samples, const std::string& what, const std::string& hint) {
  Place place;
  place.file = samples.file;
  throw Failure(ExitCode::badInput, what, hint, place);
}

bool isConstant(const Table& table, std::size_t column) {
  for (std::size_t row = 1; row < table.rows(); ++row)
    if (table.at(row, column) != table.at(0, column)) return false;
  return true;
}

template <class Predicate>
bool anyModel(const std::vector<int>& values, Predicate predicate) {
  return std::any_of(values.begin(), values.end(), predicate);
}

void checkCounts(const Samples& samples, const ModelOptions& options) {
  const std::size_t rows = samples.inputs.rows();
  const std::size_t inputs = samples.inputs.columns();
  if (rows == 0) refuse(samples, "no samples", "a row a point behind the line of names");
  if (rows == 1) refuse(samples, "a single sample", "a fit needs two or more");
  if (rows < inputs && options.theta.empty())
    refuse(samples,
           std::to_string(rows) + " samples are too few for " + std::to_string(inputs) + " inputs",
           "give as many samples as inputs at least, or the multipliers by --theta");
}

void checkInputs(const Samples& samples, const ModelOptions& options, Console& console) {
  const bool divides =
      anyModel(options.scaling, [](int scaling) { return scaling == 1 || scaling == 3; }) ||
      (options.theta.empty() && anyModel(options.kernel, [](int kernel) { return kernel != 0; }));
  for (std::size_t column = 0; column < samples.inputs.columns(); ++column) {
    if (!isConstant(samples.inputs, column)) continue;
    const std::string what =
        "the input \"" + samples.inputs.names[column] + "\" has the same value in every row";
    if (divides)
      refuse(
          samples, what,
          "leave it out by --inputs, or choose --scaling none or outputs and --kernel isotropic");
    console.warn(samples.file + ": " + what);
  }
}

void warnConstantOutputs(const Samples& samples, Console& console) {
  for (std::size_t column = 0; column < samples.outputs.columns(); ++column)
    if (isConstant(samples.outputs, column))
      console.warn(samples.file + ": the output \"" + samples.outputs.names[column] +
                   "\" has the same value in every row");
}

void warnTrend(const Samples& samples, const ModelOptions& options, Console& console) {
  const long long inputs = static_cast<long long>(samples.inputs.columns());
  const int wanted = *std::max_element(options.trend.begin(), options.trend.end());
  const int possible = trendForCount(wanted, samples);
  if (possible == wanted) return;
  console.warn("the " + nameOf(trendNames(), wanted) + " trend of " + std::to_string(inputs) +
                   " inputs has " + std::to_string(trendTerms(wanted, inputs)) + " terms; " +
                   std::to_string(samples.inputs.rows()) + " samples carry the " +
                   nameOf(trendNames(), possible) + " one",
               "choose it by --trend, or give more samples");
}

/** Rows in an order in which equal points are neighbours, the first of them in front. */
std::vector<std::size_t> sortedRows(const Table& inputs) {
  std::vector<std::size_t> order(inputs.rows());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const std::size_t n = inputs.columns();
  const double* values = inputs.values.data();
  std::stable_sort(order.begin(), order.end(), [=](std::size_t a, std::size_t b) {
    return std::lexicographical_compare(values + a * n, values + (a + 1) * n, values + b * n,
                                        values + (b + 1) * n);
  });
  return order;
}

bool sameRow(const Table& table, std::size_t a, std::size_t b) {
  const double* values = table.values.data();
  const std::size_t n = table.columns();
  return std::equal(values + a * n, values + (a + 1) * n, values + b * n);
}

std::string rowText(const Samples& samples, std::size_t row) {
  return samples.lines.empty() ? "row " + std::to_string(row + 1)
                               : "line " + std::to_string(samples.lines[row]);
}

void warnDuplicates(const Samples& samples, Console& console) {
  const auto order = sortedRows(samples.inputs);
  std::vector<std::string> pairs;
  bool contradict = false;
  for (std::size_t i = 1; i < order.size(); ++i) {
    if (!sameRow(samples.inputs, order[i - 1], order[i])) continue;
    pairs.push_back(rowText(samples, order[i - 1]) + " and " + rowText(samples, order[i]));
    contradict = contradict || !sameRow(samples.outputs, order[i - 1], order[i]);
  }
  if (pairs.empty()) return;
  console.warn(samples.file + ": " + std::to_string(pairs.size()) + " duplicate point" +
                   (pairs.size() == 1 ? "" : "s") + ": " + listed(pairs, shownDuplicates),
               contradict ? "their outputs differ, so no model passes through all of them"
                          : "each point is needed once");
}

} // namespace

long long trendTerms(int trend, long long n) {
  const long long terms[] = {0, 1, n + 1, 2 * n + 1, (n + 1) * (n + 2) / 2};
  return terms[trend];
}

int trendForCount(int wanted, const Samples& samples) {
  const auto rows = static_cast<long long>(samples.inputs.rows());
  const auto inputs = static_cast<long long>(samples.inputs.columns());
  while (wanted > 0 && trendTerms(wanted, inputs) > rows)
    --wanted;
  return wanted;
}

int valueFor(const std::vector<int>& values, std::size_t model) {
  return values.size() == 1 ? values.front() : values.at(model);
}

Samples readSamples(const std::string& path, const std::string& inputs, const std::string& outputs,
                    Console& console) {
  CsvReader reader(path);
  const auto& names = reader.names();
  const Columns x =
      selectColumns(inputs, names, allColumns(names.size()), "--inputs", reader.file());
  const Columns others = otherColumns(names.size(), x);
  const Columns y =
      outputs.empty() ? others : selectColumns(outputs, names, others, "--outputs", reader.file());
  Samples samples;
  samples.file = reader.file();
  samples.inputs = emptyTable(names, x);
  samples.outputs = emptyTable(names, y);
  if (y.empty()) refuse(samples, "no column is left for outputs", "see --inputs");
  refuseOverlap(x, y, names);
  refuseSameNames(samples.inputs, names, reader.file());
  refuseSameNames(samples.outputs, names, reader.file());
  Progress progress(console, "reading " + reader.file(), reader.bytesTotal());
  while (reader.next()) {
    for (const auto column : x)
      samples.inputs.values.push_back(reader.number(column));
    for (const auto column : y)
      samples.outputs.values.push_back(reader.number(column));
    samples.lines.push_back(reader.place().line);
    progress.update(reader.bytesDone());
  }
  return samples;
}

void checkSamples(const Samples& samples, const ModelOptions& options, Console& console) {
  checkCounts(samples, options);
  checkInputs(samples, options, console);
  warnConstantOutputs(samples, console);
  warnTrend(samples, options, console);
  warnDuplicates(samples, console);
}

} // namespace app
