#include "round_model.h"

#include "failure.h"
#include "library.h"

#include <algorithm>
#include <cmath>

#include <zarel/KrigingList.h>

namespace app::refine {
namespace {

[[noreturn]] void failNumerical(const char* what) {
  throw Failure(ExitCode::numerical, std::string(what) + " failed",
                "try another --correlation or --trend; look for samples that nearly coincide");
}

void must(int result, const char* what) {
  if (result != 0) failNumerical(what);
}

/**
 * The share of the spread that a model explains: 1 - sum (y - p)^2 / sum (y - mean y)^2, with y
 * simulated and p predicted. Not a number when all y are equal.
 */
double determination(const std::vector<Row>& simulated, const std::vector<Row>& predicted,
                     std::size_t output) {
  double mean = 0, residual = 0, spread = 0;
  for (const Row& y : simulated)
    mean += y[output] / static_cast<double>(simulated.size());
  for (std::size_t i = 0; i < simulated.size(); ++i) {
    const double y = simulated[i][output], p = predicted[i][output];
    residual += (y - p) * (y - p);
    spread += (y - mean) * (y - mean);
  }
  return spread > 0 ? 1 - residual / spread : std::nan("");
}

} // namespace

int carriedTrend(int wanted, long long inputs, long long samples) {
  while (wanted > E_PolyConst && 2 * trendTerms(wanted, inputs) > samples)
    --wanted;
  return wanted;
}

RoundModel::RoundModel(const Samples& samples, const ModelOptions& options,
                       const std::vector<Row>& testPoints)
    : options_(options), testPoints_(testPoints) {
  buildList(samples, options, list_, notes_);
  for (const auto& group : outputGroups(options.groups, samples.outputs.names)) {
    sizes_.push_back(static_cast<int>(group.size()));
    order_.insert(order_.end(), group.begin(), group.end());
  }
  putTestPoints();
}

void RoundModel::fit(Console& console) {
  if (optimiseSuspended_) putOptimise(true);
  putTrend();
  fitModels(list_, notes_, console);
}

/// Asked for anew in each round: the samples may carry more than before, and a fit that finds them
/// too few for a trend reduces it for good.
void RoundModel::putTrend() {
  int samples = 0;
  list_.GetNumSamp(samples);
  const auto inputs = static_cast<long long>(notes_.inputs.size());
  for (int i = 0; i < modelCount(list_); ++i) {
    const int wanted = valueFor(options_.trend, static_cast<std::size_t>(i));
    must(list_.PutPolynomType(carriedTrend(wanted, inputs, samples), i), "choosing the trend");
  }
}

void RoundModel::restore(const std::vector<double>& theta, Console& console) {
  std::size_t next = 0;
  for (int i = 0; i < modelCount(list_); ++i) {
    int count = 0;
    list_.GetItemKriging(i)->GetNumKern(count);
    if (next + static_cast<std::size_t>(count) > theta.size())
      throw Failure(ExitCode::badInput, "the study's journal has too few kernel multipliers");
    Kriging<double>::RealVec values(count);
    for (int k = 0; k < count; ++k)
      values[k] = theta[next++];
    must(list_.GetItemKriging(i)->PutKernVec(values), "taking the kernel multipliers up");
  }
  if (options_.optimise) putOptimise(false);
  putTrend();
  fitModels(list_, notes_, console);
}

/// A change of this option asks for a new fit, so it is only made when one is due anyway.
void RoundModel::putOptimise(bool optimise) {
  must(list_.PutKrigingKernOptType(optimise ? E_KernOptPattern : E_KernOptNone, -1),
       "choosing the search");
  optimiseSuspended_ = !optimise;
}

void RoundModel::append(const KnownPoints& points) {
  Matrix x = inputs(points.x), y = outputs(points.y);
  must(list_.AppendSampData(x, y), "adding samples to the models");
}

void RoundModel::removeTestPoints(const std::vector<Row>& points) {
  const auto isRemoved = [&](const Row& x) {
    return std::find(points.begin(), points.end(), x) != points.end();
  };
  const auto end = std::remove_if(testPoints_.begin(), testPoints_.end(), isRemoved);
  if (end == testPoints_.end()) return;
  testPoints_.erase(end, testPoints_.end());
  putTestPoints();
}

void RoundModel::putTestPoints() {
  if (testPoints_.empty()) return;
  Matrix x = inputs(testPoints_);
  must(list_.PutInpTestMtx(x, -1), "setting the test points");
}

TestResult RoundModel::evaluateTests(int wanted) {
  TestResult result;
  if (testPoints_.empty()) return result;
  library::Details details;
  Matrix predictions, proposals;
  int count = wanted;
  must(list_.EvalTestModel(predictions, count, proposals, result.largest),
       "evaluating the test points");
  if (count > 0) result.proposals = rows(proposals, false);
  double sum = 0;
  for (int i = 0; i < testCount(); ++i)
    sum += testError(i) * testError(i);
  result.rms = std::sqrt(sum / testCount());
  return result;
}

/// The largest predicted relative error of a test point over the models.
double RoundModel::testError(int point) {
  double largest = 0;
  for (int i = 0; i < modelCount(list_); ++i)
    largest = std::max(largest, list_.GetItemKriging(i)->TestRelativeError(point));
  return largest;
}

int RoundModel::pointsRequired(double oldError, double newError, int added, double target) {
  return list_.EvaluateNumberOfNewPointsRequired(oldError, newError, added, target);
}

Comparison RoundModel::compare(const KnownPoints& known) {
  library::Details details;
  Matrix x = inputs(known.x), actual = outputs(known.y), predicted, error;
  must(list_.EvalModelAndPredictor(x, predicted, error), "predicting the validation points");
  Comparison result;
  result.simulated = known.y;
  result.predicted = rows(predicted, true);
  result.error = rows(error, true);
  measureErrors(actual, predicted, result.measures);
  for (std::size_t j = 0; j < order_.size(); ++j)
    result.measures.r2.push_back(determination(result.simulated, result.predicted, j));
  return result;
}

/// Relative errors as the models define them, so that they compare with the predicted ones.
void RoundModel::measureErrors(Matrix& actual, Matrix& predicted, Validation& measures) {
  const int points = actual.NbRow();
  std::vector<double> worst(static_cast<std::size_t>(points), 0.0);
  for (int i = 0, first = 0; i < modelCount(list_);
       first += sizes_[static_cast<std::size_t>(i)], ++i) {
    const int size = sizes_[static_cast<std::size_t>(i)];
    Matrix a(points, size), b(points, size), relative;
    for (int j = 0; j < size; ++j)
      for (int p = 0; p < points; ++p) {
        a(p, j) = actual(p, first + j);
        b(p, j) = predicted(p, first + j);
      }
    must(list_.GetItemKriging(i)->GetRelativeError(a, b, relative), "measuring the errors");
    for (int p = 0; p < points; ++p)
      worst[static_cast<std::size_t>(p)] =
          std::max(worst[static_cast<std::size_t>(p)], relative(p, 0));
  }
  double sum = 0;
  for (double e : worst) {
    measures.largestError = std::max(measures.largestError, e);
    sum += e * e;
  }
  measures.rmsError = std::sqrt(sum / points);
}

std::vector<double> RoundModel::theta() {
  std::vector<double> all;
  for (const ModelFacts& facts : modelFacts(list_, notes_))
    all.insert(all.end(), facts.theta.begin(), facts.theta.end());
  return all;
}

RoundModel::Matrix RoundModel::inputs(const std::vector<Row>& points) const {
  Matrix matrix(static_cast<int>(points.size()), static_cast<int>(notes_.inputs.size()));
  for (std::size_t i = 0; i < points.size(); ++i)
    for (std::size_t j = 0; j < notes_.inputs.size(); ++j)
      matrix(static_cast<int>(i), static_cast<int>(j)) = points[i][j];
  return matrix;
}

RoundModel::Matrix RoundModel::outputs(const std::vector<Row>& values) const {
  Matrix matrix(static_cast<int>(values.size()), static_cast<int>(order_.size()));
  for (std::size_t i = 0; i < values.size(); ++i)
    for (std::size_t j = 0; j < order_.size(); ++j)
      matrix(static_cast<int>(i), static_cast<int>(j)) = values[i][order_[j]];
  return matrix;
}

/// Rows of a matrix; with `outputOrder` its columns go back to the study's order of outputs.
std::vector<Row> RoundModel::rows(const Matrix& matrix, bool outputOrder) const {
  std::vector<Row> result(static_cast<std::size_t>(matrix.NbRow()),
                          Row(static_cast<std::size_t>(matrix.NbCol())));
  for (std::size_t i = 0; i < result.size(); ++i)
    for (std::size_t j = 0; j < result[i].size(); ++j)
      result[i][outputOrder ? order_[j] : j] = matrix(static_cast<int>(i), static_cast<int>(j));
  return result;
}

} // namespace app::refine
