#include "refine/refine.h"

#include "command.h"
#include "engine.h"
#include "failure.h"
#include "option_values.h"
#include "report.h"
#include "settings.h"
#include "study.h"
#include "study_report.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <memory>

namespace app {
namespace refine {
namespace {

constexpr long long largestCount = 1000000;

void addStudyOptions(CLI::App& command, Options& options) {
  const std::string group = "Study";
  command.add_option("--study", options.study, "Folder of the study; made if it is not there")
      ->type_name("FOLDER")
      ->take_last()
      ->group(group);
  command
      .add_option("--input", options.inputs,
                  "An input of the simulation with its bounds; once for each input")
      ->type_name("NAME=LOW:HIGH")
      ->group(group);
  command
      .add_option("--outputs", options.outputs,
                  "Columns of the simulation's results to be modelled, between commas")
      ->type_name("NAME,...")
      ->take_last()
      ->group(group);
  command
      .add_option("--samples", options.samplesFile,
                  "CSV file of initial samples; with the outputs, or without them to be simulated")
      ->type_name("FILE")
      ->take_last()
      ->group(group);
  addInteger(command, "--initial", options.initial,
             "Initial samples to draw when no file gives them; 0 for ten an input", 0, largestCount)
      ->group(group);
  command.add_option("--tests", options.testFile, "CSV file of test points: the candidates")
      ->type_name("FILE")
      ->take_last()
      ->group(group);
  addInteger(command, "--test-points", options.testPoints,
             "Test points to draw when no file gives them; 0 for a hundred an input, at least 500",
             0, largestCount)
      ->group(group);
  command
      .add_option("--validation", options.validationFile,
                  "CSV file of points with outputs that measure the models and are never fitted")
      ->type_name("FILE")
      ->take_last()
      ->group(group);
}

void addEndOptions(CLI::App& command, Options& options) {
  const std::string group = "End of the study";
  addReal(command, "--target", options.target,
          "Largest predicted relative error at the test points that is good enough",
          {0, 1e300, true})
      ->group(group);
  addInteger(command, "--rounds", options.rounds, "Refinement rounds, at most", 0, largestCount)
      ->group(group);
  addInteger(command, "--budget", options.budget,
             "Points to simulate, at most, initial and failed ones included; 0 for no limit", 0,
             largestCount)
      ->group(group);
  addInteger(command, "--points-per-round", options.pointsPerRound, "New points a round, at most",
             1, KrigingList<double>::MaxNewPoints)
      ->group(group);
  addInteger(command, "--max-failures", options.maxFailures,
             "Failed points that the study bears before it gives up (exit code 6)", 0, largestCount)
      ->group(group);
}

void addSimulationOptions(CLI::App& command, Options& options) {
  const std::string group = "Simulation";
  command
      .add_option(
          "--command", options.command,
          "How the simulation is called, without a shell; {points} is the CSV file to read, "
          "{results} the one to write, {cwd} the folder in which zarel was started")
      ->type_name("COMMAND")
      ->take_last()
      ->group(group);
  addInteger(command, "-j,--jobs", options.jobs, "Simulations that run at the same time", 1, 4096)
      ->group(group);
  addInteger(command, "--batch", options.batch,
             "Points that one call of the simulation gets, at most", 1, largestCount)
      ->group(group);
  addReal(command, "--timeout", options.timeout, "Seconds that one call may take; 0 for no limit",
          {0, 1e9, false})
      ->group(group);
  addReal(command, "--grace", options.grace,
          "Seconds between asking a simulation to end and killing it", {0, 1e6, false})
      ->group(group);
  command
      .add_flag("--keep-runs", options.keepRuns,
                "Keep the working folders of simulations that succeeded, too")
      ->group(group);
}

SimulationSettings simulationSettings(const Settings& settings, const Study& study,
                                      const std::vector<std::string>& words,
                                      const std::string& program, const std::string& directory) {
  SimulationSettings simulation;
  simulation.program = program;
  simulation.words = words;
  simulation.startDirectory = directory;
  simulation.inputs = settings.inputNames();
  simulation.outputs = settings.outputs;
  simulation.study = study.folder();
  simulation.jobs = static_cast<int>(settings.options.jobs);
  simulation.batch = static_cast<int>(settings.options.batch);
  simulation.timeout = settings.options.timeout;
  simulation.grace = settings.options.grace;
  simulation.keepRuns = settings.options.keepRuns;
  return simulation;
}

/// The command line once more, without what must not be repeated.
std::string goOnCommand(const Globals& globals) {
  std::vector<std::string> words;
  for (const std::string& word : globals.arguments)
    if (word != "--force" && word != "-f") words.push_back(word);
  return quoteWords(words);
}

void replaceFile(const std::string& path, const std::string& text) {
  OutputFile file(path, true);
  file.write(text);
  file.commit();
}

/// One call of the command.
class Session {
public:
  Session(const Options& options, Globals& globals)
      : globals_(globals), settings_(prepare(options, globals)) {}

  void run() {
    const std::string directory = std::filesystem::current_path().string();
    const auto words = withFileArguments(splitCommand(settings_.options.command));
    const std::string program =
        findProgram(fillPlaceholders({words.front()}, {{"cwd", directory}}).front(), directory);
    warnErrorsWithoutUnit();
    openStudy();
    const SimulationSettings simulation =
        simulationSettings(settings_, *study_, words, program, directory);
    engine_ =
        std::make_unique<Engine>(settings_, *study_, simulation, globals_.console,
                                 [this](std::size_t round, bool now) { roundEnded(round, now); });
    try {
      outcome_ = engine_->run();
    } catch (const Failure& failure) {
      keepTables();
      if (failure.code != ExitCode::interrupted) throw;
      throw Failure(failure.code,
                    "interrupted; all finished simulations are kept in " + study_->folder(),
                    "to go on: " + goOnCommand(globals_));
    }
    finish();
  }

private:
  /// Without a trend the errors of a model have no unit, and a target means nothing for them.
  void warnErrorsWithoutUnit() const {
    const auto& trends = settings_.options.model.trend;
    if (std::find(trends.begin(), trends.end(), 0) != trends.end())
      globals_.console.warn("predicted errors of models without a trend are not in units of the "
                            "outputs, so --target does not measure them",
                            "choose --trend constant, or a richer one");
  }

  void openStudy() {
    study_ = std::make_unique<Study>(
        settings_.options.study, globals_.force, settings_.identity, [this] {
          return StudyStart{settings_.identity, settings_.initialPoints, settings_.initialResults};
        });
    if (study_->wasTorn())
      globals_.console.note("the last record of the study was cut short and is done again");
    if (study_->wasResumed())
      globals_.console.note("going on with the study in " + study_->folder() + ": " +
                            std::to_string(study_->simulatedCount()) + " points simulated, " +
                            std::to_string(study_->rounds().size()) + " rounds finished");
  }

  void roundEnded(std::size_t round, bool now) {
    if (!globals_.json) {
      if (round == 0) printData(tableHead(!settings_.validation.x.empty()));
      printData(tableRow(round, study_->rounds()[round]));
    }
    if (now) writeFiles();
  }

  ReportData reportData() const {
    ReportData data{settings_, *study_, {}, engine_->comparison(), outcome_};
    if (engine_->model()) data.models = engine_->model()->facts();
    return data;
  }

  void writeTables() const {
    writeSamples(study_->path("samples.csv"), settings_, *study_);
    writeFailed(study_->path("failed.csv"), settings_, *study_);
  }

  /// What a study that ends early has to show; what ends it matters more than a table.
  void keepTables() const {
    try {
      writeTables();
    } catch (const Failure&) {
    }
  }

  void writeFiles() const {
    const ReportData data = reportData();
    writeTables();
    replaceFile(study_->path("report.svg"), svgReport(data));
    replaceFile(study_->path("report.html"), htmlReport(data));
  }

  void finish() const {
    writeFiles();
    globals_.console.note(outcomeText(*outcome_));
    if (globals_.json) {
      Json document = newReport("refine");
      addToDocument(document, reportData());
      printReport(document);
      return;
    }
    std::string text = "\n";
    for (const ModelFacts& facts : reportData().models)
      text += factsText(facts) + '\n';
    printData(text + "\nmodel   " + study_->path("study.krg") + "\nreport  " +
              study_->path("report.html") + '\n');
  }

  Globals& globals_;
  Settings settings_;
  std::unique_ptr<Study> study_;
  std::unique_ptr<Engine> engine_;
  std::optional<Outcome> outcome_;
};

} // namespace
} // namespace refine

void addRefine(CLI::App& root, Globals& globals) {
  auto options = std::make_shared<refine::Options>();
  CLI::App& command = *root.add_subcommand(
      "refine", "Simulate, fit, propose new points, until the models are good enough");
  refine::addStudyOptions(command, *options);
  refine::addSimulationOptions(command, *options);
  refine::addEndOptions(command, *options);
  addModelOptions(command, options->model);
  command.footer(
      std::string("The study goes on where it was when the same command is given again.\n") +
      globalsFooter());
  command.callback([options, &globals] {
    globals.action = [options, &globals] { refine::Session(*options, globals).run(); };
  });
}

} // namespace app
