#include <zarel/C_AlgoSvd.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <limits>
#include <utility>

#include <zarel/C_Trace.h>
#include <zarel/C_VecRand.h>
#include <zarel/itf.h>

#include "containers/finite.h"
#include "decomposition/lapack.h"
#include "decomposition/report.h"

using Zarel::allFinite;
using Zarel::C_VSTRUCT;
using Zarel::C_ZarelMessage;
using Zarel::traced;
using Zarel::decomposition::refused;

namespace {

using Vector = C_VecPi<double, int, C_PtrInCore<double, int>>;
using Marks = C_VecPi<int, int, C_PtrInCore<int, int>>;

constexpr char method[] = "C_AlgoSvdArpack::Run";

/** Left vectors that are made at a time: their block is a view of the data file of the basis. */
constexpr int basisBlock = 32;

constexpr double tolerance = 0; // ARPACK takes the machine's

/** Part of the largest value from which on A v alone is a left vector. Rounding leaves eps times
 * the largest value of the other directions in it, of which a shorter product holds too much. */
constexpr double trusted = 1e-4;

/**
 * Stores the part of `x` that is orthogonal to the vectors before number `i`, with length 1. What
 * remains may be rounding and is taken again until little of it lies along the others. Returns
 * whether anything did remain; a mixture of the others fades in every round.
 */
bool standsApart(C_VSTRUCT<double>& basis, int i, Vector& x) {
  constexpr double clean = 0.5;
  constexpr int rounds = 3;
  for (int round = 0; round < rounds; ++round) {
    const double norm = x.Nrm2();
    if (norm == 0) return false;
    Zarel::decomposition::rscl(x.Dim(), norm, x.Adr(0));
    if (basis.AddVector(x, i, true, clean, nullptr) == 0) return true;
  }
  return false;
}

double dot(int n, double* x, double* y) {
  return ITF_ddot(n, x, 1, y, 1);
}

/** Lets go of the view of a set that a run made, unless the run succeeded. */
class ViewOfRun {
public:
  explicit ViewOfRun(C_VSTRUCT<double>& set) : set_(set), ours_(set.Adr() == nullptr) {}
  ~ViewOfRun() {
    if (!ours_) return;
    try {
      set_.UnmapAllBlocks();
    } catch (const C_ZarelException&) { // something else went wrong before
    }
  }
  ViewOfRun(const ViewOfRun&) = delete;
  ViewOfRun& operator=(const ViewOfRun&) = delete;

  void keep() { ours_ = false; }

private:
  C_VSTRUCT<double>& set_;
  bool ours_;
};

} // namespace

/** The arrays of a run, and where ARPACK stands in it. */
struct C_AlgoSvdArpack::Iteration {
  Iteration(int order, int values, int basis, int restarts)
      : n(order),
        nev(values),
        ncv(basis),
        lworkl(std::max(basis, 0) * (std::max(basis, 0) + 8)),
        workl(lworkl),
        resid(std::max(order, 0)),
        v(std::max(order, 0), std::max(basis, 0)),
        workd(3 * std::max(order, 0)),
        d(std::max(basis, 0), 2),
        select(std::max(basis, 0)) {
    iparam[0] = 1; // exact shifts
    iparam[2] = restarts;
    iparam[6] = 1; // the standard problem
  }

  int lead() const { return std::max(n, 1); }
  int converged() const { return std::min(iparam[4], nev); }
  double* place(int k) { return workd.Adr(0) + (ipntr[k] - 1); }

  int n, nev, ncv, lworkl;
  Vector workl, resid;
  C_MatMGe<double> v;
  Vector workd;
  C_MatMGe<double> d;
  Marks select;
  int iparam[11] = {0}, ipntr[11] = {0};
  int ido = 0, info = 0, notice = 0;
};

C_AlgoSvdArpack::C_AlgoSvdArpack() = default;
C_AlgoSvdArpack::~C_AlgoSvdArpack() = default;

int C_AlgoSvdArpack::SetNbEigenValuesToFind(int& nev) {
  nev_ = nev;
  return 0;
}

double C_AlgoSvdArpack::keptValue(int j) {
  return j < values_.Dim() ? values_[j] : completedValue_;
}

void C_AlgoSvdArpack::tell(const char* format, ...) {
  C_ZarelMessage message(method, __FILE__, __LINE__, Zarel::E_MsgInfo, 3, GetDebugScope(),
                         Zarel::ALL_STREAMS);
  if (!message.IsActive()) return;
  va_list args;
  va_start(args, format);
  message.Set(format, reinterpret_cast<char**>(&args));
  va_end(args);
  message.Print();
}

int C_AlgoSvdArpack::Run(C_VSTRUCT<double>& Q, int first, int) {
  retained_ = 0;
  if (first >= 1) return Zarel::decomposition::refusedFirst(method, __FILE__, __LINE__);
  C_ItfSvdArpackCVstruct itf(Q);
  rows_ = Q.getDim1();
  columns_ = Q.getDim();
  ViewOfRun view(Q);
  const int result = Run(static_cast<C_ItfAlgorithm&>(itf));
  if (result == 0) view.keep();
  return result;
}

int C_AlgoSvdArpack::Run(C_ItfAlgorithm& problem) {
  const Zarel::C_Trace frame(method, __FILE__, __LINE__, BegFunc(), EndFunc());
  retained_ = 0;
  C_ItfSvdArpack& itf = dynamic_cast<C_ItfSvdArpack&>(problem);
  if (settle(itf) != 0) return traced();
  Iteration run = start();
  if (iterate(itf, run) != 0 || extract(run) != 0) return traced();
  take(run);
  if (ErrorEstimation() != 0) return traced();
  int kept = 0;
  std::swap(kept, retained_); // there are no results until all has succeeded
  if (kept == columns_ - 1) completeRightHand(kept++);
  tell("[SVD] Dimension Apres correction : %d", kept);
  if (replaceVectors(itf, kept) != 0) return traced();
  summarise(run);
  retained_ = kept;
  return 0;
}

/** Takes the shape of the problem, and fills in what the caller left open. */
int C_AlgoSvdArpack::settle(C_ItfSvdArpack& itf) {
  int m = 0, n = 0;
  if (itf.GetSize(m, n) != 0) return traced();
  if (m < n)
    return refused(method, __FILE__, __LINE__,
                   "ERROR in %s: The Algorithm assume that m > n.Please transpose your matrix\n",
                   method);
  rows_ = m;
  columns_ = n;
  tell("\n[SVD] Taille de la matrice a traiter : [%d,%d]", m, n);
  if (nev_ == -1) nev_ = n - 1;
  if (nev_ > n - 1)
    return refused(method, __FILE__, __LINE__, "ERROR in %s: NEV is greater than MAXNEV\n", method);
  tell("[SVD] Nombre de valeurs propres demandees : %d", nev_);
  if (maxIter_ == -1) maxIter_ = n;
  tell("[SVD] Nombre maximum d'iterations : %d", maxIter_);
  ncv_ = static_cast<int>(std::min<std::int64_t>(2 * std::int64_t(nev_), n));
  constexpr int most = std::numeric_limits<int>::max();
  if (n > most / 3 || (ncv_ > 0 && ncv_ + 8 > most / ncv_))
    return refused(method, __FILE__, __LINE__, "ERROR in %s: the basis is too large\n", method);
  return 0;
}

C_AlgoSvdArpack::Iteration C_AlgoSvdArpack::start() const {
  return Iteration(columns_, nev_, ncv_, maxIter_);
}

/** Serves ARPACK with products until it has what it wants. */
int C_AlgoSvdArpack::iterate(C_ItfSvdArpack& itf, Iteration& run) {
  Zarel::C_ProgressEngine* const progress = itf.getProgressEngine();
  for (int counter = 0;; ++counter) {
    ITF_dsaupd(&run.ido, &bmat_, run.n, which_, run.nev, tolerance, run.resid.Adr(0), run.ncv,
               run.v.Adr(), run.lead(), run.iparam, run.ipntr, run.workd.Adr(0), run.workl.Adr(0),
               run.lworkl, &run.info);
    if (run.ido != -1 && run.ido != 1) break;
    Vector x(run.n, run.place(0)), y(run.n, run.place(1));
    if (itf.ProdAtAV(x, y) != 0) return traced();
    if (!allFinite(y.Adr(0), run.n))
      return refused(method, __FILE__, __LINE__, "ERROR in %s: a product is not finite\n", method);
    tell("[SVD] Iteration %d", counter);
    if (progress != nullptr) {
      progress->Update(counter);
      progress->checkAbort();
    }
  }
  tell("[SVD] Fin des iterations");
  if (run.info < 0)
    return refused(method, __FILE__, __LINE__,
                   " [SVD] Error with _saupd, info = %d : Check documentation in _saupd\n",
                   run.info);
  run.notice = run.info;
  return 0;
}

/** Turns ARPACK's basis into eigenvalues, in ascending order, and eigenvectors. */
int C_AlgoSvdArpack::extract(Iteration& run) {
  char all[] = "All";
  ITF_dseupd(1, all, run.select.Adr(0), run.d[0], run.v.Adr(), run.lead(), 0.0, &bmat_, run.n,
             which_, run.nev, tolerance, run.resid.Adr(0), run.ncv, run.v.Adr(), run.lead(),
             run.iparam, run.ipntr, run.workd.Adr(0), run.workl.Adr(0), run.lworkl, &run.info);
  if (run.info != 0)
    return refused(method, __FILE__, __LINE__,
                   " [SVD] Error with _seupd, info = %d : Check documentation in _seupd\n",
                   run.info);
  if (run.converged() > 0) return 0;
  return refused(method, __FILE__, __LINE__, "ERROR in %s: no value converged in %d restarts\n",
                 method, maxIter_);
}

/**
 * Stores values and right vectors in descending order. The right factor has one row for each
 * vector, with all of its entries, and room for the one vector that ARPACK cannot deliver.
 */
void C_AlgoSvdArpack::take(Iteration& run) {
  const int n = run.n, found = run.converged();
  const double* const d = run.d[0];
  values_.Resize(found);
  rightHand_.Resize(found == n - 1 ? n : found, n);
  const double rounding = n * std::numeric_limits<double>::epsilon() * std::abs(d[found - 1]);
  for (int i = 0; i < found; ++i) {
    const int k = found - 1 - i;
    values_[i] = std::sqrt(d[k] < 0 && d[k] >= -rounding ? 0.0 : d[k]);
    for (int j = 0; j < n; ++j)
      rightHand_(i, j) = run.v(j, k);
  }
}

/**
 * Adds the unit vector that is orthogonal to all found ones. It is made from the axis that they
 * cover least, of which at least the part 1/n remains.
 */
void C_AlgoSvdArpack::completeRightHand(int last) {
  const int n = columns_;
  Vector covered(n), t(n);
  for (int j = 0; j < n; ++j)
    covered[j] = dot(last, rightHand_[j], rightHand_[j]);
  t[static_cast<int>(std::min_element(covered.Adr(0), covered.Adr(0) + n) - covered.Adr(0))] = 1;
  for (int pass = 0; pass < 2; ++pass)
    for (int i = 0; i < last; ++i) {
      double* const row = &rightHand_(i, 0);
      const int step = rightHand_.LeadDim();
      const double h = ITF_ddot(n, t.Adr(0), 1, row, step);
      ITF_daxpy(n, -h, row, step, t.Adr(0), 1);
    }
  t.Normalize(E_Nrm2, nullptr);
  for (int j = 0; j < n; ++j)
    rightHand_(last, j) = t[j];
}

/** Makes the left vectors on a temporary data file and hands them to the problem. */
int C_AlgoSvdArpack::replaceVectors(C_ItfSvdArpack& itf, int kept) {
  Zarel::C_ProgressEngine* const progress = itf.getProgressEngine();
  C_VSTRUCT<double> basis(2, kept, rows_, nullptr);
  for (int first = 0; first < kept; first += basisBlock) {
    if (fillBasis(itf, basis, first, std::min(basisBlock, kept - first)) != 0) return traced();
    if (progress != nullptr) progress->checkAbort();
  }
  return itf.SetNewA(basis) == 0 ? 0 : traced();
}

int C_AlgoSvdArpack::fillBasis(C_ItfSvdArpack& itf, C_VSTRUCT<double>& basis, int first,
                               int count) {
  C_MatMGe<double> right(columns_, count);
  for (int i = 0; i < count; ++i)
    for (int j = 0; j < columns_; ++j)
      right(j, i) = rightHand_(first + i, j);
  basis.MapBlock(static_cast<unsigned>(first), static_cast<unsigned>(first + count - 1));
  C_MatMGe<double> left(rows_, count, basis[first]->Adr(0), rows_);
  if (itf.ProdAMat(right, left) != 0) return traced();
  for (int i = first; i < first + count; ++i)
    normalise(basis, i);
  return 0;
}

/** Makes a unit vector of A v, whose length is its singular value. */
void C_AlgoSvdArpack::normalise(C_VSTRUCT<double>& basis, int i) {
  Values& u = *basis.GetVector(i, nullptr);
  const double norm = u.Nrm2();
  if (i == values_.Dim()) completedValue_ = norm;
  if (norm > trusted * values_[0])
    Zarel::decomposition::rscl(u.Dim(), norm, u.Adr(0));
  else
    separate(basis, i);
  const double value = keptValue(i);
  tell("[SVD] Vp No %d (%E) : Erreur Residuelle = %E", i, value, std::abs(norm - value));
}

/**
 * Makes a short left vector orthogonal to those before it. It may be a mixture of these with
 * nothing of its own: then a random direction takes its place.
 */
void C_AlgoSvdArpack::separate(C_VSTRUCT<double>& basis, int i) {
  Values x;
  x.Copy(*basis[i]);
  for (unsigned seed = 1; !standsApart(basis, i, x); ++seed)
    if (C_VecRand(x, E_SeedUser, seed) != 0) Zarel::fail(1001);
}

void C_AlgoSvdArpack::summarise(const Iteration& run) {
  if (run.notice == 1) tell("[SVD] Maximum number of iterations reached.\n");
  if (run.notice == 3)
    tell("[SVD] No shifts could be applied during implicit Arnoldi update, try increasing NCV.");
  tell("\n _SVD \n ==== \n\n Size of the matrix is %d\n"
       " The number of Ritz values requested is %d\n"
       " The number of Arnoldi vectors generated (NCV) is %d\n"
       " What portion of the spectrum: %c%c\n"
       " The number of converged Ritz values is %d\n"
       " The number of Implicit Arnoldi update iterations taken is %d\n"
       " The number of OP*x is %d\n The convergence criterion is %E\n\n",
       run.n, run.nev, run.ncv, which_[0], which_[1], run.converged(), run.iparam[2], run.iparam[8],
       tolerance);
}
