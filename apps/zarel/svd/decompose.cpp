#include "svd/decompose.h"

#include "interrupt.h"
#include "library.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace app {

namespace {

/** The restarted solver is slow for fewer values: its basis then has too little room. */
constexpr int fewestSought = 8;

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

/** A set of zeros loses nothing, whatever is kept; the table of its shares is 0 / 0. */
void settleZeros(SvdResult& result) {
  for (double& error : result.errors)
    if (std::isnan(error)) error = 0;
}

using Solver = Reading<C_AlgoSvdArpack>;

/** The set as a problem that hands its basis out instead of taking it. */
class Problem : public C_ItfSvdArpackCVstruct, private Zarel::C_ProgressEngine {
public:
  Problem(VectorSet& set, int keep, Solver& solver, SvdResult& result, Progress& progress,
          const SvdCalls& calls)
      : C_ItfSvdArpackCVstruct(set),
        keep_(keep),
        solver_(solver),
        result_(result),
        bar_(progress),
        calls_(calls) {
    _progress = this;
  }

  /** The last moment before anything changes: all that may be refused is refused here. */
  int SetNewA(VectorSet& basis) override {
    checkAbort();
    if (basis.getDim() < keep_)
      throw Failure(ExitCode::numerical,
                    "only " + std::to_string(basis.getDim()) + " of " + std::to_string(keep_) +
                        " values converged",
                    "nothing was written; try more values with --largest");
    solver_.keep(keep_ > 0 ? keep_ : basis.getDim());
    solver_.tell(result_);
    settleZeros(result_);
    calls_.start(result_);
    for (int i = 0; i < result_.kept; ++i) {
      basis.MapBlock(static_cast<unsigned>(i), static_cast<unsigned>(i));
      calls_.take(i, basis[i]->Adr(0));
    }
    return 0;
  }
  int ProdAMat(C_MatMGe<double>& x, C_MatMGe<double>& y) override {
    calls_.check();
    return C_ItfSvdArpackCVstruct::ProdAMat(x, y);
  }
  int ProdAtAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override {
    calls_.check();
    return C_ItfSvdArpackCVstruct::ProdAtAV(x, y);
  }

private:
  void Update(int step) override {
    result_.products = step + 1;
    bar_.update(result_.products);
  }
  void checkAbort() override { interrupt::check("nothing was written"); }

  int keep_;
  Solver& solver_;
  SvdResult& result_;
  Progress& bar_;
  const SvdCalls& calls_;
};

bool isZero(VectorSet& set) {
  for (int j = 0; j < set.getDim(); ++j) {
    set.MapBlock(static_cast<unsigned>(j), static_cast<unsigned>(j));
    const double* const values = set[j]->Adr(0);
    if (!std::all_of(values, values + set.getDim1(), [](double x) { return x == 0; })) return false;
  }
  return true;
}

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

void direct(VectorSet& set, const SvdChoice& choice, const SvdCalls& calls, SvdResult& result) {
  result.method = SvdMethod::lapack;
  Reading<C_AlgoSvdLapack<double>> solver;
  const int n = set.getDim(), ranks = std::min(n, set.getDim1());
  solver.SetThresholdValue(choice.threshold);
  // All are kept at first, so that a set without storage of its own need not be cut.
  calls.check();
  if (solver.Run(set, 0, n) != 0) {
    calls.check();
    throw failureOf(set, "the decomposition did not converge",
                    choice.inPlace ? "the vectors may be overwritten" : "try --method arpack");
  }
  // In place there is no way back: what is left to do saves more than leaving it would.
  if (!choice.inPlace) interrupt::check("nothing was written");
  solver.ErrorEstimation();
  solver.keepAtMost(ranks);
  if (choice.keep > 0) solver.keep(static_cast<int>(choice.keep));
  solver.tell(result);
  result.values.resize(static_cast<std::size_t>(ranks));
  result.errors.resize(static_cast<std::size_t>(ranks));
  settleZeros(result);
  calls.start(result);
  for (int i = 0; i < result.kept; ++i) {
    set.MapBlock(static_cast<unsigned>(i), static_cast<unsigned>(i));
    calls.take(i, set[i]->Adr(0));
  }
}

/** How many values the restarted solver looks for. */
int sought(const SvdChoice& choice, int n) {
  const long long most = n - 1;
  if (choice.largest > 0) return static_cast<int>(std::min(choice.largest, most));
  if (choice.keep == 0) return static_cast<int>(most);
  return static_cast<int>(std::min(std::max<long long>(choice.keep, fewestSought), most));
}

void restarted(VectorSet& set, const SvdChoice& choice, Console& console, const SvdCalls& calls,
               SvdResult& result) {
  if (set.getDim() < 2 || set.getDim() > set.getDim1())
    throw Failure(ExitCode::usage,
                  "arpack needs two vectors or more, and as many numbers in each as there are "
                  "vectors",
                  "use --method lapack, or --transpose");
  result.method = SvdMethod::arpack;
  Solver solver;
  int nev = sought(choice, set.getDim());
  solver.SetNbEigenValuesToFind(nev);
  solver.SetThresholdValue(choice.keep > 0 ? -1 : choice.threshold); // -1: no index, all of them
  Progress progress(console, "multiplying", 0);
  Problem problem(set, static_cast<int>(choice.keep), solver, result, progress, calls);
  if (solver.Run(static_cast<C_ItfAlgorithm&>(problem)) == 0) return;
  calls.check();
  if (isZero(set))
    throw Failure(ExitCode::numerical, "all vectors are zero: there is nothing to look for",
                  "--method lapack gives a basis of any set");
  throw failureOf(set, "the iteration did not converge", "try --method lapack, or more values");
}

} // namespace

void checkChoice(const SvdChoice& choice) {
  if (choice.largest == 0) return;
  if (choice.method == SvdMethod::lapack)
    throw Failure(ExitCode::usage, "--largest is for arpack; lapack finds all values",
                  "leave one of --largest and --method lapack out");
  if (choice.keep > choice.largest)
    throw Failure(ExitCode::usage, "--keep " + std::to_string(choice.keep) + ", but --largest " +
                                       std::to_string(choice.largest) + " looks for fewer");
}

SvdResult decompose(VectorSet& set, const SvdChoice& choice, Console& console,
                    const SvdCalls& calls) {
  checkChoice(choice);
  checkKeep(choice, set);
  const library::Details details;
  const library::Hushed hushed;
  SvdResult result;
  result.vectors = set.getDim();
  result.length = set.getDim1();
  if (choice.method == SvdMethod::arpack)
    restarted(set, choice, console, calls, result);
  else
    direct(set, choice, calls, result);
  return result;
}

} // namespace app
