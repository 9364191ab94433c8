/**
 * @file engine.h
 * The rounds of a study: fit, evaluate, propose, simulate, append, until it is good enough.
 */
#ifndef ZAREL_APP_REFINE_ENGINE_H
#define ZAREL_APP_REFINE_ENGINE_H

#include "round_model.h"
#include "runner.h"
#include "settings.h"
#include "study.h"

#include <functional>
#include <memory>
#include <string>

namespace app::refine {

/** Why a study ended. */
enum class Outcome {
  target,    ///< the largest predicted relative error is at the target or below
  rounds,    ///< the round limit is reached
  budget,    ///< the point budget is used up
  exhausted, ///< no test point is left that may be simulated
};

/** "target-reached" and so on, for documents. */
const char* outcomeName(Outcome outcome);
/** A sentence for people. */
std::string outcomeText(Outcome outcome);

/** Drives one study in its folder, from wherever it stands, to its end. */
class Engine {
public:
  /**
   * @param roundEnded called after each round, and for each round of an earlier process first:
   *                   number of the round; true if it was run now
   */
  Engine(const Settings& settings, Study& study, const SimulationSettings& simulation,
         Console& console, std::function<void(std::size_t, bool)> roundEnded);
  ~Engine();

  /**
   * Throws `simulations` after too many failures, `interrupted` after a signal, `numerical` when
   * a fit fails; what is finished is on disk then.
   */
  Outcome run();

  /** The models; null until the initial samples were simulated. */
  RoundModel* model() { return model_.get(); }
  /** The last fit on the validation points; null without any. */
  const Comparison* comparison() const { return comparison_.get(); }

private:
  void simulate(const Plan& plan);
  void requireFewFailures() const;
  void buildModel();
  void noteTrend(ModelOptions& options, long long samples) const;
  void replayRounds();
  void appendPlan(const Plan& plan);
  void fitRound();
  void measure();
  void closeRound(double seconds);
  bool mayStop(Outcome& outcome) const;
  int pointsWanted();
  std::size_t lastRound() const { return study_.rounds().size() - 1; }
  KnownPoints known(const std::vector<std::size_t>& ids) const;

  const Settings& settings_;
  Study& study_;
  Console& console_;
  std::function<void(std::size_t, bool)> roundEnded_;
  Runner runner_;
  std::unique_ptr<RoundModel> model_;
  TestResult tests_; ///< of the last fit
  std::unique_ptr<Comparison> comparison_;
  double fitSeconds_ = 0; ///< of the last fit
};

} // namespace app::refine

#endif
