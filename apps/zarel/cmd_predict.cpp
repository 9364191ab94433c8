#include "cli.h"
#include "option_values.h"
#include "predictor.h"
#include "suggest.h"

#include <limits>
#include <memory>

namespace app {

namespace {

struct PredictCommand {
  std::string model;
  std::string points;
  std::string inputs;
  std::string output = "-";
  PredictChoice choice;
};

void checkStreams(const PredictCommand& command) {
  if (command.model == "-" && command.points == "-")
    throw Failure(ExitCode::usage, "model and points cannot both come from standard input",
                  "give one of them as a file");
}

/** Says how to go on; the rows that are done are kept. */
Failure interruptedFailure(const PredictCommand& command, long long done, OutputFile& output) {
  const std::string rows = std::to_string(command.choice.skip + done);
  std::string where = "standard output";
  if (!output.isStandardOutput()) {
    where = command.output + ".partial";
    output.commitAs(where);
  }
  return {ExitCode::interrupted,
          "interrupted; the " + std::to_string(done) + " points that were done are in " + where,
          "to go on behind them, add --skip " + rows + " and write to another file"};
}

void warnNotFinite(const Predictor& predictor, Console& console) {
  if (predictor.notFinite() == 0) return;
  console.warn(std::to_string(predictor.notFinite()) +
                   " values are not finite; they are written as nan or inf",
               "without a trend, a standard error next to a sample can be the root of a negative "
               "number");
}

/** Without a trend an error is 0 at a sample and 1 far from all, whatever the outputs measure. */
void warnErrorsWithoutUnit(KrigingList<double>& list, const ModelNotes& notes, Console& console) {
  std::vector<std::string> without;
  for (const auto& facts : modelFacts(list, notes))
    if (facts.terms == 0) without.insert(without.end(), facts.outputs.begin(), facts.outputs.end());
  if (!without.empty())
    console.warn("the standard errors of " + listed(without, 3) +
                     " run from 0 to 1 and are not in units of the output: the model has no trend",
                 "fit with --trend constant, or a richer one, for errors in units of the output");
}

/** The last row and, if something stopped the work, why, in the output's own form. */
void finish(const PredictCommand& command, const Predictor& predictor, PointsOutput& rows,
            OutputFile& output, bool complete) {
  if (complete) {
    rows.end(predictor.rows(), nullptr);
    output.commit();
    return;
  }
  const Failure shown(ExitCode::interrupted, "interrupted");
  rows.end(predictor.rows(), &shown);
  throw interruptedFailure(command, predictor.rows(), output);
}

Json predictReport(const PredictCommand& command, const Predictor& predictor) {
  Json document = newReport("predict");
  document["model"] = command.model;
  document["output"] = command.output;
  document["columns"] = predictor.columnNames();
  document["points"] = predictor.rows();
  document["values_not_finite"] = predictor.notFinite();
  return document;
}

/** True if the rows themselves are the JSON document on standard output. */
bool rowsAreDocument(const PredictCommand& command, const Globals& globals) {
  return globals.json && command.output == "-";
}

void predictRows(const PredictCommand& command, Globals& globals, Predictor& predictor,
                 CsvReader& points, const Columns& columns) {
  OutputFile output(command.output, globals.force);
  const bool asDocument = rowsAreDocument(command, globals);
  const auto rows = asDocument ? jsonPoints(output) : csvPoints(output);
  rows->begin(predictor.columnNames());
  globals.documentStarted = asDocument;
  bool complete = false;
  try {
    complete = predictor.run(points, columns, *rows, globals.console);
  } catch (const Failure& failure) {
    if (failure.code != ExitCode::io && output.isStandardOutput())
      rows->end(predictor.rows(), &failure);
    throw;
  }
  finish(command, predictor, *rows, output, complete);
}

void runPredict(const PredictCommand& command, Globals& globals) {
  checkStreams(command);
  checkOverwrite(command.output, globals.force);
  KrigingList<double> list;
  ModelNotes notes;
  readModel(command.model, list, notes);
  CsvReader points(command.points);
  const Columns columns = inputColumns(points, command.inputs, notes);
  if (command.choice.errors) {
    warnErrorsWithoutUnit(list, notes, globals.console);
    prepareErrors(list, notes, globals.console);
  }
  Predictor predictor(list, notes, command.choice);
  predictRows(command, globals, predictor, points, columns);
  warnNotFinite(predictor, globals.console);
  if (command.output != "-")
    globals.console.note("wrote " + std::to_string(predictor.rows()) + " points to " +
                         command.output);
  if (globals.json && !globals.documentStarted) printReport(predictReport(command, predictor));
}

void addPredictOptions(CLI::App& predict, PredictCommand& command) {
  predict.add_option("model", command.model, "Model file; - for a stream")
      ->required()
      ->type_name("MODEL");
  predict.add_option("points", command.points, "CSV file of points; - for a stream")
      ->required()
      ->type_name("POINTS.csv");
  predict.add_flag("-e,--error", command.choice.errors,
                   "Standard errors too, in columns NAME_error");
  predict.add_flag("--with-inputs", command.choice.withInputs,
                   "The points in front of the predictions");
  predict
      .add_option("-i,--inputs", command.inputs,
                  "Columns of the points, in the order of the model's inputs; without it they are "
                  "found by name")
      ->type_name("N|NAMES");
  predict.add_option("-o,--output", command.output, "CSV file to write; - for a stream")
      ->capture_default_str()
      ->type_name("OUT.csv");
  predict
      .add_option_function<std::string>(
          "--skip",
          [&command](const std::string& text) {
            command.choice.skip =
                readInteger("--skip", text, 0, std::numeric_limits<long long>::max());
          },
          "Points to leave out at the start")
      ->type_name("N")
      ->default_str("0");
}

} // namespace

void addPredict(CLI::App& root, Globals& globals) {
  auto command = std::make_shared<PredictCommand>();
  CLI::App* predict = root.add_subcommand("predict", "Predict at points");
  addPredictOptions(*predict, *command);
  predict->footer(globalsFooter());
  predict->callback([command, &globals] {
    globals.action = [command, &globals] { runPredict(*command, globals); };
  });
}

} // namespace app
