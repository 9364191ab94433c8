/**
 * @file C_AlgoSvd.h
 * Singular value decompositions of sets of vectors: by a direct solver, and by implicit restart.
 */
#ifndef ZAREL_C_ALGOSVD_H
#define ZAREL_C_ALGOSVD_H

#include <zarel/C_Algorithm.h>
#include <zarel/C_MatMGe.h>
#include <zarel/C_VecPi.h>
#include <zarel/C_vstruct.h>

/**
 * What the decompositions share: results, the estimate of the error of truncation, and the choice
 * of how many singular vectors to keep.
 *
 * A run takes a set A of n vectors of length m to A = U S V^H and leaves the first columns of U in
 * place of the vectors. With the singular values s in descending order, entry i of the error table
 * is the share of their sum that is lost when i + 1 vectors are kept,
 * 1 - (s[0] + ... + s[i]) / (s[0] + ... + s[n - 1]). The first entry that is at or below the
 * threshold decides. docs/decompositions.md has the mathematics.
 *
 * Results stay readable until the next run. A run that failed, by its result or an exception,
 * leaves none, even where it was refused at once; one with no vectors to treat leaves the earlier
 * ones.
 *
 * Messages: values and errors under debug scope 451, level 3.
 * Threads: an object belongs to one thread; nobody else may touch the set during a run.
 * Failures: results are 0, or -1 after a trace; containers and sets throw (C_MatMGe, C_VSTRUCT).
 * Exists for the scalars of ZAREL_BLAS_SCALARS.
 */
template <class T>
class ZAREL_API C_AlgoSvd : public C_Algorithm {
public:
  /** A vector of results. */
  using Values = C_VecPi<T, int, C_PtrInCore<T, int>>;

  C_AlgoSvd();
  C_AlgoSvd(const C_AlgoSvd&) = default;
  C_AlgoSvd& operator=(const C_AlgoSvd&) = default;
  ~C_AlgoSvd() override;

  using C_Algorithm::Run;

  /** Tells 451. */
  Zarel::E_DebugScope_enum GetDebugScope() override;
  /**
   * Decomposes the vectors of `Q` from `first` on, in place. `keep` is the number of vectors to
   * keep; -1 leaves that to the error table. Returns 0, or -1.
   */
  virtual int Run(Zarel::C_VSTRUCT<T>& Q, int first, int keep) = 0;

  /**
   * Copies all singular values to `values`, which is resized. Returns 0; before a run prints a line
   * on the standard error and returns -1.
   */
  int GetSingularValues(Values& values);
  /** Copies the error table to `errors`, which is resized. Returns as GetSingularValues. */
  int GetTabErr(Values& errors);
  /**
   * Gives each vector of the run as a combination of the kept ones: A is about U M^T, with
   * M(i, j) = s[j] (V^H)(j, i), vectors x kept. `M` is resized. Returns 0, or -1 if that fails.
   */
  int GetLinearComb(C_MatMGe<T>& M);
  /**
   * Gives each kept vector as a combination of the vectors of the run: U = A M, with
   * M(i, j) = V(i, j) / s[j], vectors x kept. `M` is resized. Returns 0, or -1 if that fails.
   */
  int GetLinearCombFromVecToBase(C_MatMGe<T>& M);
  /** Tells the largest error that is let pass; 1e-7 at first. */
  double GetThresholdValue() const { return threshold_; }
  /** Sets it. Returns 0. */
  int SetThresholdValue(double threshold);
  /** Tells how many vectors the last run kept; 0 before the first and after one that failed. */
  int GetNbRetained() const { return retained_; }

protected:
  /** Fills the error table and sets how many vectors to keep. Returns 0. Throws 3 for an unknown
   * error mode. */
  int ErrorEstimation();
  /** Tells singular value `j` of the kept vectors. */
  virtual T keptValue(int j);

  double threshold_ = 1e-7;
  int errorMode_ = 1;     ///< 1: share of the sum; 0: first dropped value relative to the largest
  int rows_ = 0;          ///< length of the vectors
  int columns_ = 0;       ///< number of vectors
  int retained_ = 0;      ///< number of vectors kept, 0 until a run has ended
  C_MatMGe<T> rightHand_; ///< V^H: row j is the conjugate of right singular vector j
  Values values_;
  Values errors_;

private:
  template <class Entry>
  int combine(C_MatMGe<T>& M, Entry entry);
  int copyOf(Values& from, Values& to);
  T lostShare(double kept, double total, int i);
};

/**
 * The direct solver: one `gesvd` in place.
 *
 * Memory: the set itself, V^H (n x n) and a work array of about n^2 + 1200 n values; no copy of the
 * set. All vectors that take part have to fit into the address space as one view, without gaps:
 * links into longer vectors, files with gaps and file-resident sets are refused with an error and
 * -1 before anything is changed. Out of core the data file is changed in place.
 *
 * A NaN or an infinity is refused likewise, with an error that names the first vector that has one.
 *
 * With fewer rows than vectors there are only m singular values. The other entries of values keep
 * what they held (zeros on a new object), and the vectors from m on hold no meaning.
 *
 * Example:
 * @code
 * C_AlgoSvdLapack<double> svd;
 * svd.SetThresholdValue(1e-3);
 * if (svd.Run(snapshots, 0, -1) == 0)  // snapshots is now an orthonormal basis
 *   svd.GetLinearComb(coefficients);
 * @endcode
 */
template <class T>
class ZAREL_API C_AlgoSvdLapack : public C_AlgoSvd<T> {
public:
  using typename C_AlgoSvd<T>::Values;

  /**
   * `ComputeQtQ` true takes another road, which forms the Gram matrix as the right factor, prints
   * the singular values of the last use on the standard output and reverses their square roots. It
   * solves nothing.
   */
  explicit C_AlgoSvdLapack(bool ComputeQtQ = false);
  C_AlgoSvdLapack(const C_AlgoSvdLapack&) = default;
  C_AlgoSvdLapack& operator=(const C_AlgoSvdLapack&) = default;
  ~C_AlgoSvdLapack() override;

  using C_AlgoSvd<T>::Run;

  /**
   * Decomposes the vectors of `Q` from `first` on and cuts the set to `first` and the kept ones.
   * The vectors before `first` are left alone. With a `keep` from 0 to n the error table stays as
   * it was; -1 lets the table decide. No vectors to treat: returns 0 and changes nothing.
   */
  int Run(Zarel::C_VSTRUCT<T>& Q, int first, int keep) override;
  /** The same on the columns of a matrix, whose leading dimension must equal its rows. */
  int Run(C_MatMGe<T>& A, int first);

private:
  void prepare(int m, int n);
  int callLapack(T* a, int number);
  int estimate();
  void reverseOldValues();
  int refuseQtQ();

  bool computeQtQ_;
  Values work_;
};

/**
 * What C_AlgoSvdArpack asks of a matrix A of m rows and n columns. All functions return 0 for
 * success.
 */
class ZAREL_API C_ItfSvdArpack : public C_ItfAlgorithm {
public:
  ~C_ItfSvdArpack() override;
  /** Gives the shape of A. */
  virtual int GetSize(int& m, int& n) = 0;
  /** Computes y = A x, with x of length n and y of length m. */
  virtual int ProdAV(C_Vec<double, int>& x, C_Vec<double, int>& y) = 0;
  /** Computes y = A^T A x, both of length n. */
  virtual int ProdAtAV(C_Vec<double, int>& x, C_Vec<double, int>& y) = 0;
  /** Replaces the columns of A by the vectors of `q`. */
  virtual int SetNewA(Zarel::C_VSTRUCT<double>& q) = 0;
  /** Computes Y = A X, column by column with ProdAV unless a class knows better. */
  virtual int ProdAMat(C_MatMGe<double>& X, C_MatMGe<double>& Y);
};

/**
 * The columns of A are the vectors of a set, which it does not own and which must outlive it.
 *
 * A run begins with GetSize, from which on a whole view is tried once.
 *
 * A set in core or mapped is multiplied in panels of rows that stay in the cache, each of which is
 * read once for both halves of A^T A x. Vectors that cannot be one matrix (gaps that are no whole
 * numbers, no room for one view, file-resident ones) are read in order, once for each half. A NaN
 * or an infinity in the set is an error that names the first vector that has one; so are values
 * whose squares overflow.
 */
class ZAREL_API C_ItfSvdArpackCVstruct : public C_ItfSvdArpack {
public:
  explicit C_ItfSvdArpackCVstruct(Zarel::C_VSTRUCT<double>& set);
  ~C_ItfSvdArpackCVstruct() override;

  int GetSize(int& m, int& n) override;
  int ProdAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override;
  int ProdAtAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override;
  /**
   * The set must own its storage unless the number of vectors stays. It is cut first and takes the
   * vectors one by one then: a failure on the way leaves some of them replaced.
   */
  int SetNewA(Zarel::C_VSTRUCT<double>& q) override;
  int ProdAMat(C_MatMGe<double>& X, C_MatMGe<double>& Y) override;

protected:
  /** @name A prepared Gram matrix
   * A class that has A^T A at hand stores it here and has it used in place of the set. @{ */
  C_MatMGe<double> gram_;
  bool useGram_ = false;
  /** @} */

private:
  using Vector = C_VecPi<double, int, C_PtrInCore<double, int>>;

  int blocksOf(int vectors) const;
  double* wholeMatrix();
  int lead() const;
  int multiply(C_Vec<double, int>& x, C_Vec<double, int>& y);
  void gramProduct(double* a, C_Vec<double, int>& x, C_Vec<double, int>& y);
  int tellFault();

  Zarel::C_VSTRUCT<double>* set_;
  Vector work_;
  int blockSize_ = 1;
  int blocks_;
  bool noWholeView_ = false; ///< a view of all vectors was refused during this run
};

/**
 * The solver for large sets: the largest singular values and their vectors by the implicitly
 * restarted Lanczos iteration of ARPACK on A^T A, which is never formed.
 *
 * Needs at least as many rows as vectors, and finds at most n - 1 values; when all of these are
 * kept, the last vector is completed from them. Only products with the set are needed, so memory
 * beside the set is a basis of NCV = min(2 NEV, n) vectors of length n. The kept left vectors
 * first go to a temporary data file, then into the set.
 *
 * Accuracy: squaring the operator halves the digits, so that values below about 1e-8 of the largest
 * may be rounding, and so may be what their vectors say of the set; the left vectors are
 * orthonormal all the same. An eigenvalue of A^T A that rounding made negative counts as 0; one
 * that is truly negative, from an operator that is not A^T A, gives a value that is not a number.
 *
 * Defaults that a run has filled in (NEV, restarts) stay for the next one.
 * Progress: the engine of the interface, if any, hears each product through Update, and may end
 * the run by throwing in checkAbort, also while the left vectors are made. The set is then as it
 * was.
 * Threads: ARPACK has static state, so one run at a time in a process, also from within ProdAtAV.
 */
class ZAREL_API C_AlgoSvdArpack : public C_AlgoSvd<double> {
public:
  C_AlgoSvdArpack();
  C_AlgoSvdArpack(const C_AlgoSvdArpack&) = default;
  C_AlgoSvdArpack& operator=(const C_AlgoSvdArpack&) = default;
  ~C_AlgoSvdArpack() override;

  /** Decomposes all vectors of `Q`; a `first` above 0 is refused, `keep` has no effect. */
  int Run(Zarel::C_VSTRUCT<double>& Q, int first, int keep) override;
  /** Decomposes A behind a C_ItfSvdArpack. Throws `std::bad_cast` for any other interface. */
  int Run(C_ItfAlgorithm& problem) override;
  /** Sets how many values to find; -1 at first, meaning n - 1. Returns 0. */
  int SetNbEigenValuesToFind(int& nev);

protected:
  double keptValue(int j) override;

private:
  struct Iteration;
  int settle(C_ItfSvdArpack& itf);
  Iteration start() const;
  int iterate(C_ItfSvdArpack& itf, Iteration& run);
  int extract(Iteration& run);
  void take(Iteration& run);
  void completeRightHand(int last);
  int replaceVectors(C_ItfSvdArpack& itf, int kept);
  int fillBasis(C_ItfSvdArpack& itf, Zarel::C_VSTRUCT<double>& basis, int first, int count);
  void normalise(Zarel::C_VSTRUCT<double>& basis, int i);
  void separate(Zarel::C_VSTRUCT<double>& basis, int i);
  void summarise(const Iteration& run);
  void tell(const char* format, ...);

  int nev_ = -1;
  int ncv_ = 0;
  char bmat_ = 'I';
  char which_[3] = "LM";
  int maxIter_ = -1;
  double completedValue_ = 0; ///< value of the vector that was completed
};

/// @cond
#define ZAREL_EXTERN(T)                                                                            \
  extern template class C_AlgoSvd<T>;                                                              \
  extern template class C_AlgoSvdLapack<T>;
ZAREL_BLAS_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

namespace Zarel {
using ::C_AlgoSvd;
using ::C_AlgoSvdArpack;
using ::C_AlgoSvdLapack;
using ::C_ItfSvdArpack;
using ::C_ItfSvdArpackCVstruct;
} // namespace Zarel

#endif
