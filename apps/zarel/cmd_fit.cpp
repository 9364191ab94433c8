#include "cli.h"
#include "number.h"
#include "output_file.h"
#include "report.h"
#include "samples.h"
#include "suggest.h"
#include "surrogate.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <memory>

namespace app {

namespace {

struct FitCommand {
  std::string samples;
  std::string inputs;
  std::string outputs;
  std::string model;
  ModelOptions options;
};

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

void tell(const FitCommand& command, const Samples& samples, const std::vector<ModelFacts>& facts,
          double seconds, Console& console) {
  console.note("fitted " + counted(facts.size(), "model") + " to " +
               counted(samples.inputs.rows(), "sample") + " of " +
               counted(samples.inputs.columns(), "input") + " in " + duration(seconds));
  for (const auto& model : facts)
    console.note("  " + factsText(model));
  console.note("wrote " + (command.model == "-" ? "the model on standard output" : command.model));
}

/** Samples may be enough for a trend and yet lie so that they carry only a poorer one. */
void warnReducedTrends(const Samples& samples, const ModelOptions& options,
                       const std::vector<ModelFacts>& facts, Console& console) {
  for (std::size_t i = 0; i < facts.size(); ++i) {
    const int enough = trendForCount(valueFor(options.trend, i), samples);
    if (facts[i].trend < enough)
      console.warn(samples.file + ": the samples do not tell the terms of the " +
                       nameOf(trendNames(), enough) + " trend apart; the model of " +
                       listed(facts[i].outputs, 3) + " has the " +
                       nameOf(trendNames(), facts[i].trend) + " one",
                   "look for inputs that depend on each other or take few values");
  }
}

Json fitReport(const FitCommand& command, const Samples& samples, const ModelNotes& notes,
               KrigingList<double>& list, double seconds) {
  Json document = newReport("fit");
  document["model"] = command.model;
  document["samples"] = samples.inputs.rows();
  document["inputs"] = notes.inputs;
  document["outputs"] = notes.outputs;
  document["models"] = Json::array();
  int index = 0;
  for (const auto& facts : modelFacts(list, notes)) {
    Json model = factsJson(facts);
    double criterion = 0;
    list.GetItemKriging(index++)->GetMLE(criterion);
    model["criterion"] = criterion;
    document["models"].push_back(model);
  }
  document["seconds"] = seconds;
  return document;
}

void runFit(const FitCommand& command, Globals& globals) {
  if (command.model == "-" && globals.json)
    throw Failure(ExitCode::usage, "--json and --output - both write on standard output",
                  "give the model a file name");
  // Opened before the fit, so that a place that cannot be written costs no time.
  OutputFile output(command.model, globals.force);
  const Samples samples =
      readSamples(command.samples, command.inputs, command.outputs, globals.console);
  checkSamples(samples, command.options, globals.console);
  KrigingList<double> list;
  ModelNotes notes;
  buildList(samples, command.options, list, notes);
  const auto start = Clock::now();
  fitModels(list, notes, globals.console);
  const double seconds = secondsSince(start);
  writeModel(output, list, notes);
  output.commit();
  const auto facts = modelFacts(list, notes);
  tell(command, samples, facts, seconds, globals.console);
  warnReducedTrends(samples, command.options, facts, globals.console);
  if (globals.json) printReport(fitReport(command, samples, notes, list, seconds));
}

} // namespace

void addFit(CLI::App& root, Globals& globals) {
  auto command = std::make_shared<FitCommand>();
  CLI::App* fit = root.add_subcommand("fit", "Fit models to samples");
  fit->add_option("samples", command->samples, "CSV file of samples, a row a point; - for a stream")
      ->required()
      ->type_name("SAMPLES.csv");
  fit->add_option("-i,--inputs", command->inputs,
                  "Input columns: their names or numbers between commas (x1,x2 or 1-3,5), or how "
                  "many there are in front")
      ->required()
      ->type_name("N|NAMES");
  fit->add_option("-y,--outputs", command->outputs,
                  "Output columns, likewise; all others when it is not given")
      ->type_name("N|NAMES");
  fit->add_option("-o,--output", command->model, "Model file to write; - for a stream")
      ->required()
      ->type_name("MODEL");
  addModelOptions(*fit, command->options);
  fit->footer(globalsFooter());
  fit->callback(
      [command, &globals] { globals.action = [command, &globals] { runFit(*command, globals); }; });
}

} // namespace app
