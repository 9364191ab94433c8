/**
 * @file study.h
 * The study folder: everything a refinement study knows, on disk. The layout is told in
 * docs/formats/study_folder.md.
 */
#ifndef ZAREL_APP_REFINE_STUDY_H
#define ZAREL_APP_REFINE_STUDY_H

#include "journal.h"
#include "runner.h"

#include <memory>
#include <string>
#include <vector>

namespace app::refine {

/** One point of the study: simulated, given with its results, failed, or waiting. */
struct StudyPoint {
  enum class State { waiting, done, failed };

  Row x;
  Row y; ///< outputs, when done
  State state = State::waiting;
  bool given = false; ///< its outputs came with the initial samples
  bool alone = false; ///< a batch with it has failed
  std::string reason; ///< when failed
  std::string folder; ///< what the failed run left, relative to the study
};

/** How the model does on the validation points. */
struct Validation {
  double largestError = 0; ///< largest relative error over points and models
  double rmsError = 0;     ///< root mean square of the points' largest relative errors
  std::vector<double> r2;  ///< one an output
  double smallestR2() const;
};

/** One finished fit. Round 0 is the fit of the initial samples. */
struct RoundRecord {
  int samples = 0;
  int simulated = 0;         ///< points simulated so far, failed ones included
  int failed = 0;            ///< failed ones among them
  double predictedError = 0; ///< largest predicted relative error over the test points
  double predictedRms = 0;   ///< root mean square of the test points' predicted relative errors
  std::unique_ptr<Validation> validation; ///< null without validation points
  std::vector<double> theta;              ///< multipliers of all models, joined
  double fitSeconds = 0;
  double seconds = 0; ///< of the whole round: its simulations, its fit and its evaluations
};

/** Points proposed after a round: a range of the study's points. */
struct Plan {
  std::size_t first = 0;
  std::size_t count = 0;
};

/** What a study begins with. */
struct StudyStart {
  Json settings; ///< an object; what must be the same whenever the study goes on
  std::vector<Row> points;
  std::vector<Row> results; ///< of all initial points, or empty: they are to be simulated
};

/** An open study. One process at a time. Errors: `Failure`. */
class Study {
public:
  /**
   * Opens the folder for this process alone, makes it if it is not there, and begins the study or
   * takes up what stands in it.
   * @param begin called when the folder holds no study yet
   * @param force an existing study is removed first
   * Throws `usage` if another process has it, if it holds other files and no study, or if its
   * settings differ from these.
   */
  Study(const std::string& folder, bool force, const Json& settings,
        const std::function<StudyStart()>& begin);
  Study(const Study&) = delete;
  Study& operator=(const Study&) = delete;
  ~Study();

  const std::string& folder() const { return folder_; } ///< absolute path
  std::string path(const std::string& name) const { return folder_ + '/' + name; }
  /** True if the folder held a study with anything done. */
  bool wasResumed() const { return resumed_; }
  bool wasTorn() const { return torn_; }

  const std::vector<StudyPoint>& points() const { return points_; }
  const std::vector<RoundRecord>& rounds() const { return rounds_; }
  /** plans()[0] are the initial points; plans()[r] those proposed after round r - 1. */
  const std::vector<Plan>& plans() const { return plans_; }

  int simulatedCount() const; ///< points that were simulated, failed ones included
  int failedCount() const;
  /** Points of a plan that still wait. */
  std::deque<Task> waiting(const Plan& plan) const;
  /** Ids of the points of a plan that have results, in order. */
  std::vector<std::size_t> finished(const Plan& plan) const;

  void recordRun(const RunResult& result);
  void recordRound(RoundRecord round);
  void recordPlan(const std::vector<Row>& points);

private:
  void lock();
  void requireOurFolder() const;
  void removeFormer() const;
  void start(const StudyStart& start);
  void checkSettings(const Json& settings) const;
  void append(const Json& record);

  void take(const Json& record);
  void takeStart(const Json& record);
  void takeRun(const Json& record);
  void takeRound(const Json& record);
  void takePlan(const Json& record);
  void addPlan(const std::vector<Row>& points);
  StudyPoint& waitingPoint(const Json& id);

  std::string folder_;
  int lock_ = -1;
  std::unique_ptr<Journal> journal_;
  bool resumed_ = false;
  bool torn_ = false;
  Json settings_;
  std::vector<StudyPoint> points_;
  std::vector<RoundRecord> rounds_;
  std::vector<Plan> plans_;
};

} // namespace app::refine

#endif
