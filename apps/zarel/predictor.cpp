#include "predictor.h"

#include "interrupt.h"
#include "library.h"
#include "suggest.h"

#include <algorithm>
#include <cmath>

namespace app {

namespace {

constexpr int blockValues = 1 << 21; // 16 MiB of doubles
constexpr int smallestBlock = 64;
constexpr int largestBlock = 8192;

int sampleCount(KrigingList<double>& list) {
  int samples = 0;
  list.GetNumSamp(samples);
  return samples;
}

[[noreturn]] void refuse(const CsvReader& points, const std::string& what,
                         const std::string& hint) {
  Place place;
  place.file = points.file();
  throw Failure(ExitCode::badInput, what, hint, place);
}

} // namespace

int blockRows(int samples) {
  return std::clamp(blockValues / std::max(1, samples), smallestBlock, largestBlock);
}

Columns inputColumns(const CsvReader& points, const std::string& chosen, const ModelNotes& notes) {
  const auto& names = points.names();
  const std::size_t wanted = notes.inputs.size();
  Columns columns;
  if (!chosen.empty()) {
    columns = selectColumns(chosen, names, allColumns(names.size()), "--inputs", points.file());
  } else if (points.hasHeader() && notes.stored) {
    for (const auto& name : notes.inputs)
      columns.push_back(findColumn(name, names, points.file()));
  } else {
    columns = allColumns(std::min(wanted, names.size()));
  }
  if (columns.size() != wanted)
    refuse(points,
           std::to_string(columns.size()) + " columns of inputs, where the model has " +
               std::to_string(wanted),
           "its inputs are " + listed(notes.inputs) + "; see --inputs");
  return columns;
}

Predictor::Predictor(KrigingList<double>& list, const ModelNotes& notes,
                     const PredictChoice& choice)
    : list_(list), notes_(notes), choice_(choice), capacity_(blockRows(sampleCount(list))) {
  block_.names = notes.inputs;
}

std::vector<std::string> Predictor::columnNames() const {
  std::vector<std::string> names;
  if (choice_.withInputs) names = notes_.inputs;
  names.insert(names.end(), notes_.outputs.begin(), notes_.outputs.end());
  if (choice_.errors)
    for (const auto& output : notes_.outputs)
      names.push_back(output + "_error");
  return names;
}

/** Reads the next rows; a signal while it waits for them ends the block early. */
void Predictor::readBlock(CsvReader& points, const Columns& columns) {
  block_.values.clear();
  const std::size_t most = static_cast<std::size_t>(capacity_) * columns.size();
  try {
    while (block_.values.size() < most && points.next()) {
      if (points.row() <= choice_.skip) continue;
      for (const auto column : columns)
        block_.values.push_back(points.number(column));
    }
  } catch (const Failure& failure) {
    if (failure.code != ExitCode::interrupted) throw;
  }
}

void Predictor::predictBlock() {
  toMatrix(block_, x_);
  library::Details details;
  const int result =
      choice_.errors ? list_.EvalModelAndPredictor(x_, y_, e_) : list_.EvalModel(x_, y_);
  if (result != 0)
    throw Failure(ExitCode::numerical, "the prediction failed",
                  details.text().empty() ? "" : "the library stopped at " + details.text());
}

void Predictor::writeBlock(PointsOutput& output) {
  const int inputs = static_cast<int>(block_.columns());
  for (int i = 0; i < x_.NbRow(); ++i) {
    row_.clear();
    for (int j = 0; choice_.withInputs && j < inputs; ++j)
      row_.push_back(x_(i, j));
    for (int j = 0; j < y_.NbCol(); ++j)
      row_.push_back(y_(i, j));
    for (int j = 0; choice_.errors && j < e_.NbCol(); ++j)
      row_.push_back(e_(i, j));
    notFinite_ +=
        std::count_if(row_.begin(), row_.end(), [](double v) { return !std::isfinite(v); });
    output.row(row_);
    ++rows_;
  }
}

bool Predictor::run(CsvReader& points, const Columns& columns, PointsOutput& output,
                    Console& console) {
  Progress progress(console, "predicting", points.bytesTotal());
  for (;;) {
    readBlock(points, columns);
    if (block_.values.empty()) return !interrupt::requested();
    predictBlock();
    writeBlock(output);
    if (interrupt::requested()) return false;
    progress.update(points.bytesDone());
  }
}

} // namespace app
