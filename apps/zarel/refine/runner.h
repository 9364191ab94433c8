/**
 * @file runner.h
 * Runs the simulation: files of points out, files of results in, several processes at a time.
 */
#ifndef ZAREL_APP_REFINE_RUNNER_H
#define ZAREL_APP_REFINE_RUNNER_H

#include "process.h"

#include <chrono>
#include <deque>
#include <list>
#include <string>
#include <utility>
#include <vector>

namespace app::refine {

using Row = std::vector<double>;

/** How the simulation is called. */
struct SimulationSettings {
  std::string program;            ///< absolute path
  std::vector<std::string> words; ///< the command, {points} and {results} not yet filled
  std::string startDirectory;     ///< fills {cwd}
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  std::string study; ///< absolute path of the study folder
  int jobs = 1;
  int batch = 1;         ///< points a run, at most
  double timeout = 0;    ///< seconds a run may take; 0: no limit
  double grace = 5;      ///< seconds between SIGTERM and SIGKILL
  bool keepRuns = false; ///< runs that succeeded keep their folder
};

/** One point to simulate. */
struct Task {
  long long id = 0;
  Row x;
  bool alone = false; ///< not in a batch with others: a batch with it has failed
};

/** What became of the points of one run. Each point stands in one of the three lists. */
struct RunResult {
  std::vector<std::pair<long long, Row>> done;
  std::vector<std::pair<long long, std::string>> failed; ///< with the reason
  std::vector<long long> split;                          ///< to be run again, one by one
  std::string folder; ///< what a failed run left, relative to the study; empty if nothing failed
  double seconds = 0;
};

/** Hears of each run as it ends, before any other is started. */
class RunListener {
public:
  virtual ~RunListener() = default;
  /** Stores the result for good. False: start no more runs. May throw, which ends all runs. */
  virtual bool runEnded(const RunResult& result) = 0;
  /** Called about ten times a second while runs are going on. */
  virtual void waiting() {}
};

/**
 * Starts runs in fresh folders `work/run-NNNNNN` of the study. A run that ends with exit code 0 and
 * a row of results for each of its points is judged row by row: a row that is not all finite
 * numbers costs its point only. Any other run has failed: if it held several points they are run
 * again one by one, if it held one that point has failed, and the folder moves to `failed/`.
 * For the main thread.
 */
class Runner {
public:
  /** Removes what an earlier, killed process left in `work/`. */
  explicit Runner(const SimulationSettings& settings);
  ~Runner();
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  enum class Outcome {
    finished,   ///< every point was done or has failed
    stopped,    ///< the listener wanted no more
    interrupted ///< a signal came; unfinished points are neither done nor failed
  };

  /** Simulates all points, in order, up to `jobs` runs at a time. */
  Outcome run(std::deque<Task> tasks, RunListener& listener);

private:
  struct Run;
  using Clock = std::chrono::steady_clock;

  std::vector<Task> takeBatch();
  void start(std::vector<Task> tasks);
  void startMore();
  void wait() const;
  void watchClock(Run& run, Clock::time_point now) const;
  void collect(RunListener& listener);
  void stopAll();
  void finish(Run& run, RunListener& listener);
  RunResult judge(Run& run);
  void putAway(const Run& run, RunResult& result);

  const SimulationSettings& settings_;
  long long nextRun_ = 1;
  std::deque<Task> tasks_;
  std::list<Run> runs_;
  bool accepting_ = true; ///< the listener wants more
  bool interrupted_ = false;
};

} // namespace app::refine

#endif
