#include "svd/decompose.h"

#include "interrupt.h"
#include "library.h"

#include <algorithm>
#include <string>
#include <zarel/C_MessageTool.h>

namespace app {

namespace {

/** The restarted solver is slow for fewer values: its basis then has too little room. */
constexpr int fewestSought = 8;

using Starter = std::function<void(int)>;
using Coefficients = C_MatMGe<double>;

/** The library's own words about a failure stay unsaid while this lives; the program has better. */
class Hushed {
public:
  Hushed() : tool_(Zarel::C_MessageTool::Instance("DefaultMessageTool")), filter_(mask()) {
    if (tool_ != nullptr) tool_->ActivateMessageType(Zarel::E_MsgError, false, Zarel::SCREEN);
  }
  Hushed(const Hushed&) = delete;
  Hushed& operator=(const Hushed&) = delete;
  ~Hushed() {
    if (tool_ != nullptr) tool_->setMessageTypeFilter(filter_, Zarel::SCREEN);
  }

private:
  unsigned mask() const {
    return tool_ == nullptr ? 0 : tool_->getMessageTypeFilter(Zarel::SCREEN);
  }
  Zarel::C_MessageTool* tool_;
  unsigned filter_;
};

/** What both solvers give the program beyond their public functions. */
template <class Solver>
class Reading : public Solver {
public:
  void keepAtMost(int count) { this->retained_ = std::min(this->retained_, count); }
  void keep(int count) { this->retained_ = count; }
  using Solver::ErrorEstimation;

  void tell(SvdResult& result) {
    typename Solver::Values values, errors;
    if (this->GetSingularValues(values) != 0 || this->GetTabErr(errors) != 0 ||
        this->GetLinearComb(result.coefficients) != 0)
      throw Failure(ExitCode::failure, "the results cannot be read");
    for (int i = 0; i < values.Dim(); ++i) {
      result.values.push_back(values[i]);
      result.errors.push_back(errors[i]);
    }
    result.kept = this->GetNbRetained();
    if (static_cast<std::size_t>(result.kept) > result.values.size()) addCompleted(result);
  }

private:
  /** The value of the vector that completes the restarted solver's, and the table with it. */
  void addCompleted(SvdResult& result) {
    result.values.push_back(this->keptValue(result.kept - 1));
    double total = 0, sum = 0;
    for (const double value : result.values)
      total += value;
    result.errors.clear();
    for (const double value : result.values)
      result.errors.push_back(1 - (sum += value) / total);
    result.errors.back() = 0;
  }
};

/** The set as a problem that hands its basis out instead of taking it. */
class Problem : public C_ItfSvdArpackCVstruct, private Zarel::C_ProgressEngine {
public:
  Problem(VectorSet& set, int keep, Progress& progress, const Starter& start,
          const TakeVector& take)
      : C_ItfSvdArpackCVstruct(set), keep_(keep), bar_(progress), start_(start), take_(take) {
    _progress = this;
  }

  int SetNewA(VectorSet& basis) override {
    const int kept = keep_ > 0 ? std::min(keep_, basis.getDim()) : basis.getDim();
    start_(kept);
    for (int i = 0; i < kept; ++i) {
      basis.MapBlock(static_cast<unsigned>(i), static_cast<unsigned>(i));
      take_(i, basis[i]->Adr(0));
    }
    return 0;
  }
  int products = 0;

private:
  void Update(int step) override {
    products = step + 1;
    bar_.update(products);
  }
  void checkAbort() override { interrupt::check("nothing was written"); }

  int keep_;
  Progress& bar_;
  const Starter& start_;
  const TakeVector& take_;
};

Failure failureOf(VectorSet& set, const std::string& what, const std::string& hint) {
  const int bad = set.FirstNotFinite();
  if (bad < 0) return {ExitCode::numerical, what, hint};
  return {ExitCode::badInput,
          "vector " + std::to_string(bad + 1) + " holds a value that is not a finite number",
          "vectors count from 1"};
}

void checkKeep(const SvdChoice& choice, VectorSet& set) {
  const int most = std::min(set.getDim(), set.getDim1());
  if (choice.keep > most)
    throw Failure(ExitCode::usage, "--keep " + std::to_string(choice.keep) + ", but " +
                                       std::to_string(set.getDim()) + " vectors of " +
                                       std::to_string(set.getDim1()) + " numbers have " +
                                       std::to_string(most) + " singular values");
}

SvdResult direct(VectorSet& set, const SvdChoice& choice, const Starter& start,
                 const TakeVector& take) {
  SvdResult result;
  result.method = SvdMethod::lapack;
  Reading<C_AlgoSvdLapack<double>> solver;
  const int n = set.getDim(), ranks = std::min(n, set.getDim1());
  solver.SetThresholdValue(choice.threshold);
  // All are kept at first, so that a set without storage of its own need not be cut.
  if (solver.Run(set, 0, n) != 0)
    throw failureOf(set, "the decomposition did not converge", "try --method arpack");
  interrupt::check("nothing was written");
  solver.ErrorEstimation();
  solver.keepAtMost(ranks);
  if (choice.keep > 0) solver.keep(static_cast<int>(choice.keep));
  solver.tell(result);
  result.values.resize(static_cast<std::size_t>(ranks));
  result.errors.resize(static_cast<std::size_t>(ranks));
  start(result.kept);
  for (int i = 0; i < result.kept; ++i) {
    set.MapBlock(static_cast<unsigned>(i), static_cast<unsigned>(i));
    take(i, set[i]->Adr(0));
  }
  return result;
}

/** How many values the restarted solver looks for. */
int sought(const SvdChoice& choice, int n) {
  const long long most = n - 1;
  if (choice.largest > 0) return static_cast<int>(std::min(choice.largest, most));
  if (choice.keep == 0) return static_cast<int>(most);
  return static_cast<int>(std::min(std::max<long long>(choice.keep, fewestSought), most));
}

SvdResult restarted(VectorSet& set, const SvdChoice& choice, Console& console, const Starter& start,
                    const TakeVector& take) {
  if (set.getDim() < 2 || set.getDim() > set.getDim1())
    throw Failure(ExitCode::usage,
                  "arpack needs two vectors or more, and as many numbers in each as there are "
                  "vectors",
                  "use --method lapack, or --transpose");
  SvdResult result;
  result.method = SvdMethod::arpack;
  Reading<C_AlgoSvdArpack> solver;
  int nev = sought(choice, set.getDim());
  solver.SetNbEigenValuesToFind(nev);
  solver.SetThresholdValue(choice.keep > 0 ? -1 : choice.threshold); // -1: no index, all of them
  Progress progress(console, "multiplying", 0);
  const int keep = static_cast<int>(choice.keep);
  Problem problem(set, keep, progress, start, take);
  if (solver.Run(static_cast<C_ItfAlgorithm&>(problem)) != 0)
    throw failureOf(set, "the iteration did not converge", "try --method lapack, or more values");
  if (keep > 0) {
    if (solver.GetNbRetained() < keep)
      throw Failure(ExitCode::numerical,
                    "only " + std::to_string(solver.GetNbRetained()) + " values converged", "");
    solver.keepAtMost(keep);
  }
  solver.tell(result);
  result.products = problem.products;
  return result;
}

} // namespace

SvdResult decompose(VectorSet& set, const SvdChoice& choice, Console& console, const Starter& start,
                    const TakeVector& take) {
  checkKeep(choice, set);
  const library::Details details;
  const Hushed hushed;
  const int vectors = set.getDim(), length = set.getDim1();
  SvdResult result = choice.method == SvdMethod::arpack
                         ? restarted(set, choice, console, start, take)
                         : direct(set, choice, start, take);
  result.vectors = vectors;
  result.length = length;
  return result;
}

} // namespace app
