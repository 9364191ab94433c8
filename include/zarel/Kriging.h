/**
 * @file Kriging.h
 * One Kriging surrogate model, its configuration, its samples, its fit and its predictions.
 */
#ifndef ZAREL_KRIGING_H
#define ZAREL_KRIGING_H

#include <atomic>
#include <complex>
#include <cstdio>
#include <memory>

#include <zarel/C_MatMGe.h>
#include <zarel/C_MatMSym.h>
#include <zarel/C_VecPi.h>
#include <zarel/export.h>

/** State word of a model. */
enum E_KrigingStatus : int {
  E_KrigingStatusInit = 0,      ///< fresh, nothing checked yet
  E_KrigingStatusReady = 1,     ///< samples and sizes complete, a fit is due
  E_KrigingStatusSolved = 2,    ///< the coefficients are valid for the configuration
  E_KrigingStatusIncomplete = 3 ///< a check found sizes or samples missing
};

/** Kind of solution; a fit fails for any value but the one here. */
enum E_KrigingSolType : int { E_KrigingSolStandard = 0 };

/** Whether a fit looks for the kernel multipliers. Every non-zero value means that it does. */
enum E_KrigingKernOptType : int {
  E_KernOptNone = 0,   ///< the kernel vector is used as it stands
  E_KernOptPattern = 1 ///< bounded pattern search
};

/** How many kernel multipliers there are. */
enum E_KrigingKernVarType : int {
  E_KernIsotropic = 0,  ///< one, shared by all variables
  E_KernAnisotropic = 1 ///< one for each variable
};

/** Correlation function of two points; formulas in docs/kriging.md. */
enum E_CorrFuncType : int {
  E_CorrExp = 1,
  E_CorrGauss = 2,
  E_CorrLin = 3,
  E_CorrSpherical = 4,
  E_CorrCubic = 5,
  E_CorrMultiquadric = 6,
  E_CorrSpline = 7,
  E_CorrMatern52 = 8,
  E_CorrQuadratic = 9,
  E_CorrBessel = 10,
  E_CorrSinc = 11
};

/** Trend. With n variables it has p terms. */
enum E_KrigingPolynomType : int {
  E_PolyNone = 0,     ///< p = 0
  E_PolyConst = 1,    ///< p = 1
  E_PolyLinear = 2,   ///< p = n + 1
  E_PolyPureQuad = 3, ///< p = 2 n + 1
  E_PolyFullQuad = 4  ///< p = (n + 1)(n + 2)/2
};

/** What is scaled before a fit. */
enum E_KrigingScalingType : int {
  E_ScaleNone = 0,
  E_ScaleInputs = 1,  ///< each input column to mean 0 and deviation 1
  E_ScaleOutputs = 2, ///< all output columns by one common factor
  E_ScaleBoth = 3
};

namespace Zarel {
/// Buffers that a fit and a prediction keep between calls; private to the library.
template <class T>
struct KrigingWorkspace;
/// Standard errors of a block of points; private to the library.
template <class T>
class PredictorError;
/// State of the pattern search; private to the library.
struct KernSearch;
class CorrelationFactor;
} // namespace Zarel

/**
 * A Kriging (Gaussian process) model of q outputs over n input variables, from m samples: a
 * regression polynomial plus a correlated residual, fitted by generalised least squares, with
 * kernel multipliers that are given or found by maximum likelihood. The mathematics, and the life
 * of a model from its first Put to its refinement, are told in docs/kriging.md.
 *
 * Storage. Points are rows: a matrix of points is N x n, a matrix of values N x q. The model owns
 * all that it holds: every Put copies, every Get copies out.
 *
 * Configuration. A Put whose value equals the stored one does nothing and returns 0; a value out
 * of its range is refused first. A Put that changes what a fit depends on takes a solved model
 * back to ready ("demotes" it), and the next `Solve` or evaluation fits again.
 *
 * Failures. Operations return 0 for success and 1 for failure and throw nothing of their own.
 * What the containers throw when memory is exhausted passes through. A model whose sizes no longer
 * fit its samples or coefficients (say `PutNumSamp` after a fit, or a failed `Read`) answers 1
 * from every operation that would read them.
 *
 * Threads. One thread at a time, but for `Stop`, which any thread may call while a fit runs.
 *
 * Scalars: `double` and `std::complex<double>`. For the complex form samples, values, trend
 * coefficients, correlation coefficients and intercepts are complex; kernels, scales, correlations,
 * errors and ranges are real, and |.| is the modulus.
 *
 * @code
 *   Kriging<double> model;
 *   model.PutNumVar(n);
 *   model.PutNumSol(q, q, nullptr);
 *   model.PutInpSampMtx(x);                         // m x n
 *   model.PutOutSampMtx(y);                         // m x q
 *   model.PutKrigingKernOptType(E_KernOptPattern);
 *   if (model.Solve() == 0) model.EvalModelAndPredictor(points, values, errors);
 * @endcode
 */
template <class T>
class ZAREL_API Kriging {
public:
  using RealVec = C_VecPi<double, int, C_PtrInCore<double, int>>;
  using ScalarVec = C_VecPi<T, int, C_PtrInCore<T, int>>;
  using RealMatrix = C_MatMGe<double>;
  using Matrix = C_MatMGe<T>;
  using IndexVec = C_VecPi<int, int, C_PtrInCore<int, int>>;

  /// A model with the default configuration, no sizes and no samples.
  Kriging();

  /**
   * Builds a model from another, as `Copy` does, and takes over the two multiplier bounds as well.
   * @param error receives 0, or 1 when the source is not complete or not consistent; the new model
   *              is then to be discarded.
   */
  Kriging(Kriging& source, int& error);

  Kriging(Kriging const&) = delete;
  Kriging& operator=(Kriging const&) = delete;

  /**
   * Takes over samples, groups, kernel, scaling, coefficients and types of `source`, through its
   * Get operations, so that what a subclass answers counts. The state word is the source's; the
   * copy predicts at once and needs a fit only for predictor errors (`ISSolveRequired` is true).
   * Tolerances, multiplier bounds, step and internal factors are not copied.
   * @return 1 if the source lacks samples or its parts do not fit each other; this model then
   *         holds what had been copied so far.
   */
  int Copy(Kriging* source);

  virtual ~Kriging();

  /// @return the version text that `Write` puts in front: "1.0".
  virtual char const* Version() const;

  // ----- sizes ----------------------------------------------------------------------------------

  /**
   * Sets the number of variables, n. Clears the input samples' set flag, makes the kernel pending,
   * the test caches stale, and sets the number of multipliers. The state word stays.
   * @return 1 if value < 1.
   */
  virtual int PutNumVar(int const& value);
  virtual int GetNumVar(int& value) const;

  /**
   * Sets the number of outputs, q, and their groups. A group is a set of outputs that belong
   * together, such as the components of a vector: relative errors take a group as one norm.
   * Nothing happens when both counts equal the stored ones, whatever `sizes` says. Otherwise the
   * output samples' set flag is cleared.
   * @param sizes numGlobal sizes, none negative, whose sum is numSol. Ignored, and may be null,
   *              when numGlobal is 1 (one group of all outputs) or numSol (groups of one).
   * @return 1, with nothing changed, unless 0 < numGlobal <= numSol and `sizes` is as told.
   */
  virtual int PutNumSol(int const& numSol, int const& numGlobal, int* sizes);
  virtual int GetNumSol(int& value) const;

  /**
   * Sets the level below which correlations are dropped; it is part of the diagonal increment too.
   * Demotes.
   * @return 1 unless 0 < value < 1.
   */
  virtual int PutDropToler(double const& value);
  virtual int GetDropToler(double& value) const;

  /// Yields (n + 1)(n + 2)/2, the terms of the full quadratic, whatever the trend is.
  virtual int GetOptNumSamp(int& value) const;
  /**
   * Sets m to what `GetOptNumSamp` yields; if that differs from m, both set flags are cleared.
   * @return 1 if `GetOptNumSamp` yields less than 1.
   */
  virtual int SetOptNumSamp();

  /**
   * Sets the number of samples, m, and clears both samples' set flags. The state word stays.
   * @return 1 if value < 1.
   */
  virtual int PutNumSamp(int const& value);
  virtual int GetNumSamp(int& value) const;

  /// Stored and returned only. Demotes. @return 1 if value < 1.
  virtual int PutMaxNumIter(int const& value);
  virtual int GetMaxNumIter(int& value) const;

  // ----- samples --------------------------------------------------------------------------------

  /**
   * Copies the input samples, X (m x n), and takes m and n from them. The state word becomes ready
   * whatever it was, both test caches become stale, and bounds no longer recentre. The number of
   * kernel multipliers is not set here but by `PutNumVar`, `PutKrigingKernVarType` or `PutKernVec`.
   * @return 1 if X has no rows or no columns.
   */
  virtual int PutInpSampMtx(Matrix& X);
  /// Copies the input samples out. @return 1 if none are set.
  virtual int GetInpSampMtx(Matrix& X);

  /**
   * Copies the output samples, Y (m x q), and computes the ranges of the outputs from them. The
   * state word stays.
   * @return 1 unless Y is m x q with the m and q of the model.
   */
  virtual int PutOutSampMtx(Matrix& Y);
  /// Copies the output samples out. @return 1 if none are set.
  virtual int GetOutSampMtx(Matrix& Y);

  /**
   * Adds r samples, X (r x n) and Y (r x q), behind those present. The state word becomes ready,
   * and from now on kernel bounds and start are recomputed from the data at each optimisation.
   * Ranges take in Y's magnitudes: a stored range is replaced only by a strictly larger one.
   * @param kernStartPending true to have the next fit compute the kernel anew.
   * @return 1, with nothing changed, unless both samples are set and fit the sizes and X and Y have
   *         the shapes told; 1 with the samples added if the ranges cannot be updated.
   */
  virtual int AppendSampData(Matrix& X, Matrix& Y, bool kernStartPending);

  // ----- options --------------------------------------------------------------------------------

  /**
   * Sets the kernel multipliers and ends their pending state. The number of multipliers is first
   * set to n or 1 as the kernel's variable type says. Demotes, also for equal values.
   * @return 1 if the length is not that number.
   */
  virtual int PutKernVec(RealVec& value);
  virtual int GetKernVec(RealVec& value);

  /// `E_KrigingSolType`. Demotes.
  virtual int PutSolnType(int const& value);
  virtual int GetSolnType(int& value) const;

  /// `E_CorrFuncType`, checked only where a correlation is evaluated. Demotes.
  virtual int PutCorrFuncType(int const& value);
  virtual int GetCorrFuncType(int& value) const;

  /// `E_KrigingKernVarType`. Sets the number of multipliers. Demotes.
  virtual int PutKrigingKernVarType(int const& value);
  virtual int GetKrigingKernVarType(int& value) const;
  virtual E_KrigingKernVarType GetKrigingKernVarType() const;

  /// `E_KrigingKernOptType`. Demotes.
  virtual int PutKrigingKernOptType(int const& value);
  virtual int GetKrigingKernOptType(int& value) const;

  /**
   * Factors on the start kernel that bound the search, 0.01 and 20 by default. They are not checked
   * against each other. Demote.
   * @return 1 if value <= 0.
   */
  virtual int PutLowerKernelMultiplierBound(double const& value);
  virtual int GetLowerKernelMultiplierBound(double& value) const;
  virtual int PutUpperKernelMultiplierBound(double const& value);
  virtual int GetUpperKernelMultiplierBound(double& value) const;

  /// `E_KrigingScalingType`, checked by the fit. Demotes.
  virtual int PutScalingType(int const& value);
  virtual int GetScalingType(int& value) const;

  /**
   * `E_KrigingPolynomType`, checked by the fit. Demotes. A fit that has to reduce the trend stores
   * the reduced type (of at least two terms) here. `E_PolyNone` after a fit with a trend leaves the
   * old trend coefficients in place, and they go on being used.
   */
  virtual int PutPolynomType(int const& value);
  virtual int GetPolynomType(int& value) const;

  /// Has the kernel optimised on every value-th fit only; values below 1 are ignored. @return 0.
  virtual int SetStep(int const& value);

  /// @return the state word.
  virtual int GetKrigingStatus() const;

  // ----- fit ------------------------------------------------------------------------------------

  /**
   * Adds those rows of X that lie farther than `toler` from all samples and from each other, fits
   * again and reports the predictor error at the samples.
   * @param X          candidates (N x n).
   * @param Y          their outputs (N x q); the first `numNew` rows are taken for the accepted
   *                   candidates, in order, whichever these are.
   * @param maxRelErr  largest relative standard error at the samples.
   * @param maxAbsErr  largest standard error at the samples.
   * @param numNew     number of candidates accepted; at 0 nothing else is touched.
   * @param newPoints  the accepted candidates (numNew x n).
   * @param numSamp    m after the addition.
   * @param allInputs  all input samples (m x n).
   * @return 1 if Y has not q columns, or a step fails.
   */
  virtual int Solve(Matrix& X, Matrix& Y, double& maxRelErr, double& maxAbsErr, int& numNew,
                    Matrix& newPoints, int& numSamp, Matrix& allInputs, double toler);

  /**
   * Fits the model if it is not solved. The state word ends at solved.
   * @return 1 if samples or sizes are missing (state incomplete), or if the fit fails (state
   * ready): an option outside its table, a stop request, too few samples for the start kernel, a
   *         start outside the bounds.
   */
  virtual int Solve();

  /// Fits also when the state word is solved. @return as `Solve`.
  virtual int ReSolve();

  // ----- prediction -----------------------------------------------------------------------------

  /// Predicts: Y (N x q) at the points X (N x n), fitting first if a fit is due. @return 1 on
  /// failure.
  virtual int EvalModel(Matrix& X, Matrix& Y);

  /**
   * Predicts and names the points where a further sample helps most.
   * @param numNew    in: how many points are wanted, 0 for none; out: how many were found.
   * @param newPoints the points of largest relative error (numNew x n), largest first; sample
   * points are left out. Untouched when none is found or wanted.
   * @param maxRelErr the error of the first of them, 0 if none is found. Untouched if none is
   * wanted.
   * @param useTest   true to take the test points of `PutInpTestMtx` instead of X, with the caches.
   * @return 1 on failure: no fit, no test points, columns that are not n, an error estimate that
   *         fails.
   */
  virtual int EvalModel(Matrix& X, Matrix& Y, int& numNew, Matrix& newPoints, double& maxRelErr,
                        bool useTest);

  /// Predicts Y (N x q) and standard errors E (N x q) at X (N x n). @return 1 on failure.
  virtual int EvalModelAndPredictor(Matrix& X, Matrix& Y, RealMatrix& E);

  /// Correlations C (N x m) with the samples, and trend terms F (N x p), of the points X (N x n).
  virtual int EvalSampCorrAndPol(Matrix& X, RealMatrix& C, Matrix& F);

  // ----- quality --------------------------------------------------------------------------------

  /// Relative error of B against A (both N x q) for each group: D (N x groups).
  virtual int GetRelativeError(Matrix& A, Matrix& B, RealMatrix& D);
  /// Largest of it for each group.
  virtual int GetRelativeError(Matrix& A, Matrix& B, RealVec& V);
  /// Largest of it.
  virtual int GetRelativeError(Matrix& A, Matrix& B, double& e);
  /// Largest relative error of the model at its own samples.
  virtual int GetRelativeError(double& e);

  /// |A - B| value by value: D (N x q). The shapes must agree and the model be solved.
  virtual int GetError(Matrix& A, Matrix& B, RealMatrix& D);
  /// Largest of it for each output.
  virtual int GetError(Matrix& A, Matrix& B, RealVec& V);
  /// Largest of it.
  virtual int GetError(Matrix& A, Matrix& B, double& e);

  /**
   * Largest relative error of predictions at X (N x n) against Y (N x q), and the largest relative
   * predictor error there. Shapes that do not fit return 0 and touch nothing.
   */
  virtual int CheckRelativeError(Matrix& X, Matrix& Y, double& e, double& maxPredicted);
  /// Largest error of predictions at X against Y. Shapes that do not fit return 0, e untouched.
  virtual int CheckError(Matrix& X, Matrix& Y, double& e);

  /// r2 = 1 - sum |b - a|^2 / sum |b - mean(a)|^2. @return 1 if the lengths differ.
  virtual int getR2(ScalarVec& a, ScalarVec& b, double& r2);
  /// Smallest of it over the columns, at most 1. @return 1 if the shapes differ; r2 is then 0.
  virtual int getR2(Matrix& A, Matrix& B, double& r2);
  /// The same of the samples against the model's predictions there.
  virtual int getR2(double& r2);

  // ----- files ----------------------------------------------------------------------------------

  /**
   * Writes what a prediction needs, in the layout of docs/formats/kriging.md, at the position of
   * the stream's descriptor. The stream stays open and is the caller's.
   * @return 1, with nothing written, if the model is not solved; 1 if a write fails.
   */
  virtual int Write(FILE* file);

  /**
   * Reads a model that `Write` wrote. The state word becomes solved, and a fit is required for
   * predictor errors only. Options that are not in the file stay.
   * @return 1 if the stream ends early, or holds sizes that do not fit each other or that it cannot
   *         fill. The model is then as far as the read got; it may be read again or destroyed.
   */
  virtual int Read(FILE* file);

  /// `Read` for a stream that has no version text in front; the caller knows which it has.
  virtual int ReadOld(FILE* file);

  // ----- what a fit left ------------------------------------------------------------------------

  virtual int GetNumGlobalSol(int& value) const;
  /// @return a fresh array of the group sizes, to be freed with `delete[]`, and status 0; or null
  ///         and status 1 if there is no memory for it.
  virtual int* GetVecGlobalSol(int& status) const;
  virtual int GetInpScaleVec(RealVec& value);
  virtual int GetInpInterceptVec(ScalarVec& value);
  virtual int GetOutScaleVec(RealVec& value);
  virtual int GetOutInterceptVec(ScalarVec& value);
  virtual int GetCorrCoeff(Matrix& value);
  virtual int GetPolyCoeff(Matrix& value);
  virtual int GetNumKern(int& value) const;
  /// Rows of the correlation coefficients.
  virtual int GetNumCorrCoef(int& value) const;
  /// Rows of the trend coefficients, p.
  virtual int GetNumPolyCoeff(int& value) const;
  /// Sets value to 1. @return 1 unless the model is solved and 0 <= index <= q.
  virtual int GetProcVarnc(double& value, int index) const;
  /// Fitting criterion by output. @return 1 unless the model is solved.
  virtual int GetMLE(RealVec& value);
  /// Fitting criterion. @return 1 unless the model is solved.
  virtual int GetMLE(double& value) const;

  // ----- predictor error and points -------------------------------------------------------------

  /// Standard errors E (N x q) from correlations C (N x m) and trend terms F (N x p).
  virtual int GetPredictorError(RealMatrix& C, Matrix& F, RealMatrix& E);
  /// Largest standard error, absolute and relative, over the rows of X; count is set to m.
  virtual int GetPredictorError(Matrix& X, double& maxAbs, double& maxRel, int& count);

  /**
   * Chooses the rows of X that lie farther than `toler` from all samples and from each other.
   * @param accepted the chosen rows; emptied if there is none.
   * @param ids      their row numbers; if null it is allocated with one entry for each row of X,
   * and is the caller's to free with `delete[]`.
   * @return 1 if X has fewer columns than the samples.
   */
  virtual int CheckNewPoints(Matrix& X, Matrix& accepted, int*& ids, double toler);

  /**
   * Copies the test points, X (N x n). Cached correlations of earlier test points of the same count
   * go on being used.
   * @return 1 if X has no rows or not n columns.
   */
  virtual int PutInpTestMtx(Matrix& X);

  /// @return true if a sample lies within 1e-7 (unscaled) of the row of X.
  virtual bool IsInputPoint(Matrix& X, int row);
  /// @return how many test points have a relative error.
  virtual int GetTestRelativeErrorDim() const;
  /// @return the relative error of a test point; the index is not checked.
  virtual double TestRelativeError(int i);

  // ----- ingredients ----------------------------------------------------------------------------

  /// In place: column j of Y := (Y_j - intercept[j]) / scale[j]; a scale of 0 is not divided by.
  virtual int InvScaleSample(Matrix& Y, RealVec& scale, ScalarVec& intercept);
  /// Column j of out := scale[j] X_j + intercept[j]. @return 1 unless the lengths fit X's columns.
  virtual int ScaleSample(Matrix& X, RealVec& scale, ScalarVec& intercept, Matrix& out);
  /// Correlation matrix of the rows of X, lower side. @return 1 if stopped or of unknown function.
  virtual int EvalCorrMtx(Matrix& X, C_MatMSym<double>& R);
  /**
   * Trend terms of the rows of X.
   * @param numCoef in: a number of terms, or -1 for the richest trend, up to the model's own, that
   *                the samples carry; out: the number of terms.
   * @param F       the terms (rows of X x numCoef); rows before firstRow are kept.
   * @return 1 if X does not fit, or no trend has that number of terms.
   */
  virtual int EvalQuadPolynomMtx(Matrix& X, int& numCoef, Matrix& F, int firstRow);
  /// Correlation r of two points of n values. @return 1 if the function is unknown.
  virtual int EvalCorrVal(ScalarVec& x, ScalarVec& y, double& r);
  /// E relative to the values M, group by group: out (N x groups).
  virtual int GetRelativePredictorErrorNorm(Matrix& M, RealMatrix& E, RealMatrix& out);

  /// Rebuilds the ranges from the output samples; value receives the norm of each group's ranges.
  virtual int GetOutputGlobalRange(RealVec& value);
  /// E relative to the values M, output by output: out (N x q).
  virtual int GetRelativePredictorError(Matrix& M, RealMatrix& E, RealMatrix& out);
  /// @return true as long as the factors that predictor errors need are not there.
  virtual bool ISSolveRequired() const;
  /// Variance of each column of X. @return 1 if X has more columns than rows.
  virtual int DiagOfCovarMtx(Matrix& X, RealVec& variances);

  /// Restores the default of every field but vectors and matrices, whose contents stay.
  virtual void InitKriging();

  /// Sets the criterion value to det^(1/m) of the matrix with this Cholesky factor. @return 0.
  virtual int GetFittingCriteria(C_MatMSym<double>& factor);

  /**
   * Asks a running fit to end with 1 at its next row or trial. May be called from any thread. The
   * request stays: all later fits fail until `InitKriging` or a copy into this model.
   */
  virtual void Stop();

  /// Frees what only a running fit or a predictor error needs. No state word or flag changes.
  virtual void ClearTemporaryMatrices();

  // The same Get operations for callers that hold the enumerations.
  int GetSolnType(E_KrigingSolType& value) const { return asEnum(value, &Kriging::GetSolnType); }
  int GetCorrFuncType(E_CorrFuncType& value) const {
    return asEnum(value, &Kriging::GetCorrFuncType);
  }
  int GetKrigingKernVarType(E_KrigingKernVarType& value) const {
    return asEnum(value, &Kriging::GetKrigingKernVarType);
  }
  int GetKrigingKernOptType(E_KrigingKernOptType& value) const {
    return asEnum(value, &Kriging::GetKrigingKernOptType);
  }
  int GetScalingType(E_KrigingScalingType& value) const {
    return asEnum(value, &Kriging::GetScalingType);
  }
  int GetPolynomType(E_KrigingPolynomType& value) const {
    return asEnum(value, &Kriging::GetPolynomType);
  }

protected:
  int Status;                          ///< `E_KrigingStatus`
  std::atomic<int> StopRequested;      ///< relaxed: a flag of its own, it orders nothing else
  int NumSamp;                         ///< m
  int NumVar;                          ///< n
  int NumSol;                          ///< q
  int NumGlobalSol;                    ///< number of output groups
  std::unique_ptr<int[]> VecGlobalSol; ///< their sizes, which sum to q
  int NumKern;                         ///< 1 or n
  RealVec KernVec;                     ///< kernel multipliers
  int KernOptType;
  int SolnType;
  int CorrFuncType;
  int PolynomType;
  int KernStartPending; ///< 1: the next fit computes KernVec
  int KernVarType;
  bool KernRecentre;  ///< bounds and start come from the data, KernVec is clamped into them
  bool SolveRequired; ///< the internal factors are not available, whatever Status says
  Matrix InpSampMtx;  ///< m x n
  bool InpSampSet;
  Matrix OutSampMtx; ///< m x q
  bool OutSampSet;
  int ScalingType;
  RealVec InpScaleVec;             ///< n
  ScalarVec InpInterceptVec;       ///< n
  RealVec OutScaleVec;             ///< q
  ScalarVec OutInterceptVec;       ///< q
  Matrix PolyCoeff;                ///< p x q
  Matrix CorrCoeff;                ///< m x q
  double DropToler;                ///< drop level of correlations
  double Spare1;                   ///< written by InitKriging only
  double NuggetFactor;             ///< diagonal increment factor
  int MaxNumIter;                  ///< stored and returned only
  int NumSolves;                   ///< completed fits
  int SolveStep;                   ///< the kernel is optimised on every SolveStep-th fit
  C_MatMSym<double> InvCholFactor; ///< inverse Cholesky factor of the correlation matrix, lower
  C_MatMSym<T> RegrFactor;         ///< triangular factor of the whitened regression matrix, lower
  Matrix DenseRegrFactor;          ///< alternative to RegrFactor; nothing fills it
  bool RegrFactorIsTri;            ///< RegrFactor is the one to use
  Matrix WhitenedRegrT;            ///< p x m
  RealVec ProcVarnc;               ///< process variance by output, in units of the outputs
  double InputPointToler;          ///< below this distance a point counts as a sample point
  double Spare2;                   ///< written by InitKriging only
  RealMatrix OutputRanges;         ///< q x 3: smallest, largest magnitude, difference
  RealVec OutputGlobalRange;       ///< norm of the ranges of each group
  double LowerKernelMultiplierBound;
  double UpperKernelMultiplierBound;
  double MLEValue; ///< fitting criterion
  RealVec MLEVec;  ///< fitting criterion by output
  bool KeepPredictorError;
  RealMatrix LastPredictorError;
  Matrix InpTestMtx;
  bool InpTestSet;
  RealMatrix TestCorrMtx; ///< cache: test points x samples
  Matrix TestPolyMtx;     ///< cache: trend terms of the test points
  bool RescaleOnSolve;    ///< the coming fit recomputes the input scaling
  bool TestCorrStale;
  bool TestPolyStale;
  RealVec TestRelativeErrorVec; ///< largest relative error of each test point
  ScalarVec DiffWorkVec;        ///< work vector of the distance routine

  // ----- state, sizes and ranges ----------------------------------------------------------------

  /// @return ready if samples and sizes are complete, incomplete otherwise.
  int CheckInputState() const;
  /// @return whether both sample matrices have the shapes that NumSamp, NumVar and NumSol say.
  bool SamplesFit() const;
  /// @return whether KernVec has NumKern values and NumKern is 1 or n, so that it may be read.
  bool KernelFits() const;
  /// @return whether the group sizes are there, none negative, and sum to that number of outputs.
  bool GroupsFit(int outputs) const;
  bool GroupsFit() const { return GroupsFit(NumSol); }
  /// @return whether the scaling vectors that ScalingType asks for fit that many columns.
  bool ScalingFits(int inputs, int outputs) const;
  /// @return whether a prediction may read samples, kernel, scaling and coefficients.
  bool CoefficientsFit() const;
  /// @return whether a fit was asked to stop.
  bool stopped() const { return StopRequested.load(std::memory_order_relaxed) != 0; }
  /// Takes a solved model back to ready.
  void demote();
  /// Sets the number of multipliers as the kernel's variable type says.
  void setNumKern();

  int ComputeOutputRanges();
  int UpdateOutputRanges(Matrix& Y);
  int UpdateOutputGlobalRange(Matrix& Y);
  int collectGlobalRange(RealVec& value) const;

  // ----- copying and files ----------------------------------------------------------------------

  int takeFields(Kriging& source);
  int takeSamples(Kriging& source);
  int takeKernel(Kriging& source);
  int takeScaling(Kriging& source);
  int takeCoefficients(Kriging& source);
  int writeFields(FILE* file);
  int readFields(FILE* file);
  int readSamples(FILE* file);
  int readGroups(FILE* file);
  int readKernel(FILE* file);
  int readScaling(FILE* file);
  int readCoefficients(FILE* file);
  /// Sets the number of multipliers for a restored kernel. @return 1 if KernVec has another length.
  int adoptKernel();
  /// Makes the restored fields the model's: sizes, flags and ranges. @return 1 if ranges fail.
  int adoptRestored();

  // ----- fit, prediction and their steps --------------------------------------------------------
  // Scaling. The scaling vectors must have an entry for each column.
  int ComputeColScaling(ScalarVec& column, double& scale, T& intercept);
  int ComputeInpScaling(Matrix& X, RealVec& scale, ScalarVec& intercept);
  int ComputeOutScaling(Matrix& Y, RealVec& scale, ScalarVec& intercept);
  /// Scaled copies of the samples for one fit.
  int ScaleSampleData(Matrix& Xs, Matrix& Ys);
  /// Points in the scaling of the last fit.
  int ScalePoints(Matrix& X, Matrix& scaled);
  /// The same for `rows` rows of X from `first` on.
  void ScaleBlock(Matrix& X, int first, int rows, Matrix& points);
  /// Predictions in the units of the outputs.
  int ScaleBack(Matrix& Y);

  // Ingredients.
  /// Fills the terms of a known trend, from firstRow on.
  void FillTrend(int type, Matrix& X, Matrix& F, int firstRow);
  /// Runs over the rows of X: column(j) receives the correlations of row j with the rows from j on.
  template <class Column>
  int CorrelateRows(Matrix& X, Column column);
  /// Correlation matrix with its diagonal increment and without its small entries.
  int FillCorrelationFactor(Zarel::CorrelationFactor& factor, Matrix& X);
  /// Correlations C of scaled points with scaled samples, from column firstSample on.
  int CorrelatePoints(Matrix& points, Matrix& samples, RealMatrix& C, int firstSample);

  // Fit at one kernel.
  int SolveForKernel();
  /// The same; with keepModel false only the criterion is computed, and the coefficients, factors
  /// and variances of an earlier fit stay.
  int FitAtKernel(bool keepModel);
  int PrepareSamples(Zarel::KrigingWorkspace<T>& work);
  int PrepareTrend(Zarel::KrigingWorkspace<T>& work);
  /// Computes KernVec by the start rule if it is pending or does not fit; done tells whether.
  int StartKernelIfDue(Matrix& Xs, bool& done);
  /// The start rule: the inverse of the mean variance, or of each variable's.
  int EvalStartKernel(Matrix& Xs, RealVec& start);
  int SolveRegression(Zarel::KrigingWorkspace<T>& work, bool keepModel);
  void WhitenSystem(Zarel::KrigingWorkspace<T>& work);
  int SolveLeastSquares(Zarel::KrigingWorkspace<T>& work);
  double SumOfVariances(Zarel::KrigingWorkspace<T>& work, double* each);
  void KeepTrendFactors(Zarel::KrigingWorkspace<T>& work);
  void SetErrorMeasures(Zarel::KrigingWorkspace<T>& work);
  void KeepCoefficients(Zarel::KrigingWorkspace<T>& work);

  // Search for the kernel.
  int OptimizeKernVec();
  int KernStartForSearch(Matrix& Xs, RealVec& start);
  void SetKernBounds(RealVec& start, RealMatrix& bounds);
  int KernPatternSearch(Zarel::KernSearch& search);
  int KernSearchStart(Zarel::KernSearch& search);
  int KernSearchExplore(Zarel::KernSearch& search);
  int KernSearchMove(Zarel::KernSearch& search, RealVec& before);
  void KernSearchRotate(Zarel::KernSearch& search);
  int EvalKernel(RealVec& trial, double& value);
  int TryKernel(Zarel::KernSearch& search, RealVec& best, RealVec& trial, bool& better);

  // Prediction.
  int SolveIfReady();
  /// Fits again if the internal factors are missing; a failure shows where they are needed.
  void RefitIfRequired();
  int PredictPoints(Matrix& X, Matrix& Y, RealMatrix* E);
  int PredictTestPoints(Matrix& Y, RealMatrix* E);
  void AddTrend(int rows, const T* points, int ldp, Matrix& trend, T* values, int ldv);
  int UpdateTestCorrelations(Matrix& points);
  int UpdateTestTrend(Matrix& points);
  int SetUpPredictorError(Zarel::PredictorError<T>& errors, int points, int samples, int terms);

  // Quality and new points.
  double MaxAbsOfMatrix(RealMatrix& M);
  void RowMaxOfMatrix(RealMatrix& M, RealVec& out);
  bool IsPointsAndValues(Matrix& X, Matrix& Y);
  int ProposePoints(Matrix& points, Matrix& Y, RealMatrix& E, int& numNew, Matrix& newPoints,
                    double& maxRelErr);
  int SelectLargestErrors(Matrix& points, RealVec& errors, int& k, IndexVec& ids, RealVec& values);
  bool IsFarFromRows(Matrix& X, int row, Matrix& others, int count, double limit, double& distance);

  /// What a fit keeps between its trials; there is one only while a fit runs.
  std::unique_ptr<Zarel::KrigingWorkspace<T>> workspace;

  // ----- end of fit and prediction --------------------------------------------------------------

private:
  template <class E>
  int asEnum(E& value, int (Kriging::*get)(int&) const) const {
    int raw = 0;
    int const result = (this->*get)(raw);
    value = static_cast<E>(raw);
    return result;
  }
};

extern template class Kriging<double>;
extern template class Kriging<std::complex<double>>;

#endif
