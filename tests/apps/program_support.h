/** Runs the built program as a user does, and looks at everything it leaves. */
#ifndef ZAREL_TESTS_APPS_PROGRAM_SUPPORT_H
#define ZAREL_TESTS_APPS_PROGRAM_SUPPORT_H

#include "app_support.h"

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/types.h>
#include <vector>

namespace apptest {

using Words = std::vector<std::string>;

/** What a run left. */
struct Outcome {
  int code = -1;   ///< exit code, -1 after a signal
  int signal = 0;  ///< the signal that ended it, or 0
  std::string out; ///< standard output
  std::string err; ///< standard error
  long peakKiB = 0;

  nlohmann::json json() const { return nlohmann::json::parse(out); }
};

/** How a run differs from the usual. */
struct Around {
  std::string input;                    ///< on standard input
  std::string inputFile;                ///< instead of `input`
  std::string outputFile;               ///< standard output goes there instead of into `out`
  Words environment;                    ///< "NAME=value", added
  std::function<void()> child;          ///< called in the child before the program starts
  std::function<void(pid_t)> meanwhile; ///< called in the parent while it runs
};

/** Tests of the program, with samples to work on. */
class Program : public InFolder {
protected:
  Outcome zarel(const Words& words, const Around& setup = {}) const;

  /**
   * Samples of `exactY` and `exactZ` at points spread over [0, 1]^2 by the sequence of multiples of
   * the plastic number's powers; the first is (0.5, 0.5).
   */
  std::string writeSamples(int count = 36, const std::string& name = "samples.csv") const;

  /** Fits those samples and gives the model's path. */
  std::string fitModel(const std::string& name = "model.krg", const Words& more = {}) const;

  /** Points on a line, as CSV with the header a,b. */
  std::string writePoints(int count, const std::string& name = "points.csv") const;
};

/** The functions behind the samples. */
double exactY(double a, double b);
double exactZ(double a, double b);

/** The numbers of a CSV text without quotes; the header is left out. */
std::vector<std::vector<double>> numbersOf(const std::string& csv);

/** The first line of a text. */
std::string firstLine(const std::string& text);

} // namespace apptest

#endif
