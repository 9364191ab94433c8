/**
 * @file settings.h
 * What `zarel refine` was asked for: options as given, checked and completed.
 */
#ifndef ZAREL_APP_REFINE_SETTINGS_H
#define ZAREL_APP_REFINE_SETTINGS_H

#include "cli.h"
#include "model_options.h"
#include "report.h"
#include "round_model.h"
#include "variable.h"

#include <string>
#include <vector>

namespace app::refine {

/** The options, as the command line and the study file give them. */
struct Options {
  std::string study;
  std::string command;
  std::vector<std::string> inputs; ///< "NAME=LOW:HIGH"
  std::string outputs;             ///< names between commas
  std::string samplesFile;
  std::string testFile;
  std::string validationFile;
  long long initial = 0;    ///< 0: ten a variable
  long long testPoints = 0; ///< 0: a hundred a variable, 500 at least
  double target = 0.01;
  long long rounds = 20;
  long long budget = 0; ///< 0: no limit
  long long pointsPerRound = KrigingList<double>::MaxNewPoints;
  long long jobs = 1;
  long long batch = 1;
  double timeout = 0;
  double grace = 5;
  long long maxFailures = 10;
  bool keepRuns = false;
  std::string report;
  ModelOptions model;
};

/** Options checked, files read, points drawn: all that a study needs, and nothing that can fail. */
struct Settings {
  Options options;
  std::vector<Variable> variables;
  std::vector<std::string> outputs;
  std::vector<std::string> inputNames() const;

  std::vector<Row> initialPoints;  ///< given or drawn
  std::vector<Row> initialResults; ///< empty when they are to be simulated
  std::vector<Row> testPoints;
  KnownPoints validation; ///< empty when none were given

  /** What must stay the same whenever the study goes on. */
  Json identity;
};

/** Checks the options, reads the files and draws what is drawn. Throws `Failure`. */
Settings prepare(const Options& options, const Globals& globals);

} // namespace app::refine

#endif
