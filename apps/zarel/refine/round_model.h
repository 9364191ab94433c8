/**
 * @file round_model.h
 * The models of a study as its rounds see them: fit, measure, propose, append.
 */
#ifndef ZAREL_APP_REFINE_ROUND_MODEL_H
#define ZAREL_APP_REFINE_ROUND_MODEL_H

#include "console.h"
#include "model_file.h"
#include "samples.h"
#include "study.h"
#include "surrogate.h"

#include <memory>
#include <string>
#include <vector>

namespace app::refine {

/** Points with known outputs, in the study's order of columns. */
struct KnownPoints {
  std::vector<Row> x;
  std::vector<Row> y;
};

/** What the test points say about the present fit. */
struct TestResult {
  double largest = 0; ///< largest predicted relative error of a test point that is no sample
  double rms = 0;     ///< root mean square of all test points' predicted relative errors
  std::vector<Row> proposals; ///< well-spread test points of largest error, best first
};

/** Predictions beside what was simulated; rows are points, columns the study's outputs. */
struct Comparison {
  std::vector<Row> simulated;
  std::vector<Row> predicted;
  std::vector<Row> error; ///< standard errors
  Validation measures;
};

/**
 * The richest trend, up to the wanted one, that has at most half as many terms as there are
 * samples. With as many terms as samples a fit has no residual left, and would report errors of
 * zero: a study would believe that it has reached its target.
 */
int carriedTrend(int wanted, long long inputs, long long samples);

/** Owns the list of models and its samples. */
class RoundModel {
public:
  /** Builds the models on the first samples; nothing is fitted yet. */
  RoundModel(const Samples& samples, const ModelOptions& options,
             const std::vector<Row>& testPoints);

  /** Fits; throws `numerical` or `interrupted`. */
  void fit(Console& console);
  /**
   * Takes the fit of a former process up: the multipliers that it found, without searching them
   * again. Later fits go on as if this process had searched. Only for models whose every fit
   * searches (`--step` 1); others must repeat their fits.
   */
  void restore(const std::vector<double>& theta, Console& console);
  /** The same for a fit that is not the last one: nothing is computed. */
  bool canSkipFits() const { return options_.step == 1; }

  /** Adds samples behind those before. */
  void append(const KnownPoints& points);
  /** Takes points away from the test points: they can not be simulated. */
  void removeTestPoints(const std::vector<Row>& points);

  /** Evaluates the test points and proposes up to `wanted` (1 to 100) of them. */
  TestResult evaluateTests(int wanted);
  /** How many points the next round should add, as the library estimates it. */
  int pointsRequired(double oldError, double newError, int added, double target);
  Comparison compare(const KnownPoints& known);

  std::vector<double> theta();
  std::vector<ModelFacts> facts() { return modelFacts(list_, notes_); }
  int testCount() const { return static_cast<int>(testPoints_.size()); }
  void save(const std::string& path) { saveModel(path, true, list_, notes_); }

private:
  using Matrix = C_MatMGe<double>;
  Matrix inputs(const std::vector<Row>& rows) const;
  Matrix outputs(const std::vector<Row>& rows) const;
  std::vector<Row> rows(const Matrix& matrix, bool outputOrder) const;
  void putTestPoints();
  void putTrend();
  void putOptimise(bool optimise);
  double testError(int point);
  void measureErrors(Matrix& actual, Matrix& predicted, Validation& measures);

  KrigingList<double> list_;
  ModelNotes notes_;
  ModelOptions options_;
  std::vector<Row> testPoints_;
  std::vector<std::size_t> order_; ///< the list's column j is the study's output order_[j]
  std::vector<int> sizes_;         ///< outputs of each model
  bool optimiseSuspended_ = false;
};

} // namespace app::refine

#endif
