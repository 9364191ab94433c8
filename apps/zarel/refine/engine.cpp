#include "engine.h"

#include "failure.h"
#include "interrupt.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace app::refine {
namespace {

class Stopwatch {
public:
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

std::string pointsText(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " point" : " points");
}

/// Stores runs in the study as they end, and shows how far they are.
class StoringListener : public RunListener {
public:
  StoringListener(Study& study, Console& console, std::size_t waiting, long long maxFailures)
      : study_(study),
        console_(console),
        bar_(console, "simulating", static_cast<double>(waiting)),
        maxFailures_(maxFailures) {}

  bool runEnded(const RunResult& result) override {
    study_.recordRun(result);
    ended_ += static_cast<double>(result.done.size() + result.failed.size());
    for (const auto& [id, reason] : result.failed)
      console_.warn("point " + std::to_string(id + 1) + " failed: " + reason,
                    "what the simulation left is in " + study_.path(result.folder));
    bar_.update(ended_);
    return study_.failedCount() <= maxFailures_;
  }

  void waiting() override { bar_.update(ended_); }

private:
  Study& study_;
  Console& console_;
  Progress bar_;
  long long maxFailures_;
  double ended_ = 0;
};

} // namespace

const char* outcomeName(Outcome outcome) {
  switch (outcome) {
  case Outcome::target:
    return "target-reached";
  case Outcome::rounds:
    return "round-limit";
  case Outcome::budget:
    return "point-budget";
  case Outcome::exhausted:
    return "no-candidates";
  }
  return "";
}

std::string outcomeText(Outcome outcome) {
  switch (outcome) {
  case Outcome::target:
    return "the target is reached";
  case Outcome::rounds:
    return "the round limit is reached; raise --rounds to go on";
  case Outcome::budget:
    return "the point budget is used up; raise --budget to go on";
  case Outcome::exhausted:
    return "no test point is left to simulate: each is a sample or has no predicted error";
  }
  return {};
}

Engine::Engine(const Settings& settings, Study& study, const SimulationSettings& simulation,
               Console& console, std::function<void(std::size_t, bool)> roundEnded)
    : settings_(settings),
      study_(study),
      console_(console),
      roundEnded_(std::move(roundEnded)),
      runner_(simulation) {}

Engine::~Engine() = default;

Outcome Engine::run() {
  Stopwatch round;
  simulate(study_.plans().front());
  buildModel();
  if (!study_.rounds().empty()) replayRounds();
  for (;; round = Stopwatch()) {
    if (study_.rounds().size() < study_.plans().size()) {
      simulate(study_.plans().back());
      if (!study_.rounds().empty()) appendPlan(study_.plans().back());
      fitRound();
      closeRound(round.seconds());
    }
    Outcome outcome{};
    if (mayStop(outcome)) return outcome;
    auto& proposals = tests_.proposals;
    proposals.resize(std::min(proposals.size(), static_cast<std::size_t>(pointsWanted())));
    study_.recordPlan(proposals);
  }
}

void Engine::simulate(const Plan& plan) {
  requireFewFailures();
  std::deque<Task> tasks = study_.waiting(plan);
  if (tasks.empty()) return;
  Runner::Outcome outcome;
  {
    StoringListener listener(study_, console_, tasks.size(), settings_.options.maxFailures);
    outcome = runner_.run(std::move(tasks), listener);
  }
  if (outcome == Runner::Outcome::interrupted)
    throw Failure(ExitCode::interrupted,
                  "interrupted; " + pointsText(static_cast<std::size_t>(study_.simulatedCount())) +
                      " of the study are on disk");
  requireFewFailures();
}

void Engine::requireFewFailures() const {
  const int failed = study_.failedCount();
  if (failed <= settings_.options.maxFailures) return;
  throw Failure(ExitCode::simulations,
                std::to_string(failed) + " simulations failed, more than --max-failures " +
                    std::to_string(settings_.options.maxFailures) + " allows",
                "look into " + study_.path("failed") +
                    "; to go on without these points raise --max-failures");
}

KnownPoints Engine::known(const std::vector<std::size_t>& ids) const {
  KnownPoints points;
  for (std::size_t id : ids) {
    points.x.push_back(study_.points()[id].x);
    points.y.push_back(study_.points()[id].y);
  }
  return points;
}

void Engine::buildModel() {
  const KnownPoints initial = known(study_.finished(study_.plans().front()));
  const std::size_t needed = settings_.variables.size() + 1;
  if (initial.x.size() < needed)
    throw Failure(ExitCode::simulations,
                  "only " + pointsText(initial.x.size()) +
                      " of the initial samples succeeded, and a "
                      "fit needs " +
                      std::to_string(needed),
                  "look into " + study_.path("failed") + " and start over with --force");
  Samples samples;
  samples.file = settings_.options.samplesFile.empty() ? study_.path("samples.csv")
                                                       : settings_.options.samplesFile;
  samples.inputs.names = settings_.inputNames();
  samples.outputs.names = settings_.outputs;
  for (std::size_t i = 0; i < initial.x.size(); ++i) {
    samples.inputs.values.insert(samples.inputs.values.end(), initial.x[i].begin(),
                                 initial.x[i].end());
    samples.outputs.values.insert(samples.outputs.values.end(), initial.y[i].begin(),
                                  initial.y[i].end());
  }
  ModelOptions carried = settings_.options.model;
  noteTrend(carried, static_cast<long long>(initial.x.size()));
  checkSamples(samples, carried, console_);
  model_ = std::make_unique<RoundModel>(samples, settings_.options.model, settings_.testPoints);
}

/// Takes the trends down to what the initial samples carry, and says so.
void Engine::noteTrend(ModelOptions& options, long long samples) const {
  const auto inputs = static_cast<long long>(settings_.variables.size());
  for (int& trend : options.trend) {
    const int wanted = std::exchange(trend, carriedTrend(trend, inputs, samples));
    if (trend == wanted) continue;
    const long long terms = trendTerms(wanted, inputs);
    console_.note("the " + nameOf(trendNames(), wanted) + " trend has " + std::to_string(terms) +
                  " terms and is used from " + std::to_string(2 * terms) + " samples on; the " +
                  nameOf(trendNames(), trend) + " one begins");
  }
}

/// Brings the models to where an earlier process left them: the same samples in the same steps,
/// and the multipliers that its last fit found.
void Engine::replayRounds() {
  const auto& rounds = study_.rounds();
  for (std::size_t r = 0; r < rounds.size(); ++r) {
    if (r > 0) appendPlan(study_.plans()[r]);
    if (!model_->canSkipFits())
      model_->fit(console_);
    else if (r + 1 == rounds.size())
      model_->restore(rounds[r].theta, console_);
    roundEnded_(r, false);
  }
  measure();
}

void Engine::appendPlan(const Plan& plan) {
  const KnownPoints added = known(study_.finished(plan));
  if (!added.x.empty()) model_->append(added);
}

void Engine::fitRound() {
  const Stopwatch watch;
  model_->fit(console_);
  fitSeconds_ = watch.seconds();
  measure();
}

/// Evaluates the test points, without those that cannot be simulated.
void Engine::measure() {
  std::vector<Row> failed;
  for (const StudyPoint& point : study_.points())
    if (point.state == StudyPoint::State::failed) failed.push_back(point.x);
  model_->removeTestPoints(failed);
  const auto cap =
      std::min<long long>(settings_.options.pointsPerRound, KrigingList<double>::MaxNewPoints);
  tests_ = model_->evaluateTests(static_cast<int>(cap));
  if (!settings_.validation.x.empty())
    comparison_ = std::make_unique<Comparison>(model_->compare(settings_.validation));
}

void Engine::closeRound(double seconds) {
  RoundRecord record;
  for (const StudyPoint& point : study_.points())
    record.samples += point.state == StudyPoint::State::done;
  record.simulated = study_.simulatedCount();
  record.failed = study_.failedCount();
  record.predictedError = tests_.largest;
  record.predictedRms = tests_.rms;
  if (comparison_) record.validation = std::make_unique<Validation>(comparison_->measures);
  record.theta = model_->theta();
  record.fitSeconds = fitSeconds_;
  record.seconds = seconds;
  model_->save(study_.path("study.krg"));
  study_.recordRound(std::move(record));
  roundEnded_(lastRound(), true);
}

bool Engine::mayStop(Outcome& outcome) const {
  const RoundRecord& last = study_.rounds().back();
  const long long budget = settings_.options.budget;
  if (tests_.proposals.empty())
    outcome = Outcome::exhausted;
  else if (last.predictedError <= settings_.options.target)
    outcome = Outcome::target;
  else if (static_cast<long long>(lastRound()) >= settings_.options.rounds)
    outcome = Outcome::rounds;
  else if (budget > 0 && study_.simulatedCount() >= budget)
    outcome = Outcome::budget;
  else
    return false;
  return true;
}

/// The library estimates the number from the last step; the first step has none to go by and takes
/// as many points as there are inputs, the most that the estimate ever gives.
int Engine::pointsWanted() {
  const auto& rounds = study_.rounds();
  long long wanted = static_cast<long long>(settings_.variables.size());
  if (rounds.size() > 1) {
    const RoundRecord& before = rounds[rounds.size() - 2];
    const RoundRecord& now = rounds.back();
    const int added = now.samples - before.samples;
    if (added > 0 && before.predictedError != now.predictedError)
      wanted = model_->pointsRequired(before.predictedError, now.predictedError, added,
                                      settings_.options.target);
  }
  if (settings_.options.budget > 0)
    wanted = std::min(wanted, settings_.options.budget - study_.simulatedCount());
  return static_cast<int>(std::min(wanted, settings_.options.pointsPerRound));
}

} // namespace app::refine
