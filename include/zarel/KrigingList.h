/**
 * @file KrigingList.h
 * Several Kriging models that share their input samples, and the proposal of refinement points.
 */
#ifndef ZAREL_KRIGINGLIST_H
#define ZAREL_KRIGINGLIST_H

#include <array>
#include <complex>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <zarel/C_MatMGe.h>
#include <zarel/C_VecPi.h>
#include <zarel/Kriging.h>
#include <zarel/export.h>

/**
 * A list of Kriging models over the same input samples, each with its own contiguous slice of the
 * output columns: to a caller it is one model with many outputs. Options are set on one model or on
 * all. On top of that the list proposes where to add samples: it evaluates all models at a set of
 * test points and picks points of largest predicted relative error that keep a distance from each
 * other. The life of a list is told in docs/kriging.md.
 *
 * Storage. Points and values as for `Kriging`: one row a point. The output columns of model i start
 * behind those of the models before it. The list owns its models. Copy construction and assignment
 * share the models with the source (both then see every change, and the last one frees them) and
 * copy everything else; `KrigingList(source, error)` makes models of its own.
 *
 * Failures. 0 for success, 1 for failure, and nothing of its own is thrown. The first failure of a
 * model ends a loop over the models, with those before it already changed.
 *
 * Threads. One thread at a time. To stop a running `Solve`, call `Stop` of the models from another
 * thread.
 *
 * Scalars: `double` and `std::complex<double>`.
 *
 * @code
 *   KrigingList<double> list;
 *   list.PutNumKriging(2);
 *   list.PutNumVar(n);
 *   int sizes[] = {1, 3};
 *   list.PutNumSol(4, 2, sizes);
 *   list.PutInpSampMtx(x);                // m x n
 *   list.PutOutSampMtx(y);                // m x 4
 *   list.Solve();
 *   list.PutInpTestMtx(testPoints, -1);   // N x n
 *   int wanted = 3;
 *   list.EvalTestModel(values, wanted, newPoints, worst);
 * @endcode
 */
template <class T>
class ZAREL_API KrigingList {
public:
  using RealVec = typename Kriging<T>::RealVec;
  using RealMatrix = C_MatMGe<double>;
  using Matrix = C_MatMGe<T>;

  /// The most refinement points that one `EvalTestModel` proposes.
  static constexpr int MaxNewPoints = 100;

  KrigingList();

  /**
   * Copies all models of `source`.
   * @param error receives 0, or the failure code, 1 as a rule: an empty source, or a model that
   *              cannot be copied. The list is then to be discarded.
   */
  KrigingList(KrigingList& source, int& error);

  /**
   * Copies the models of `source` that `ids` names, in that order.
   * @param error as above; also 1 if an id names no model or there are no ids.
   */
  KrigingList(KrigingList& source, std::vector<int>& ids, int& error);

  KrigingList(KrigingList const& source);
  KrigingList& operator=(KrigingList const& source);
  virtual ~KrigingList();

  /// @return the version text that `Write` puts in front: "1.0".
  virtual char const* Version() const;

  /**
   * Makes `value` default models. To be called once, on a new list; a later call starts over with
   * models that know nothing.
   * @return 1 if value < 0.
   */
  virtual int PutNumKriging(int const& value);
  virtual int GetNumKriging(int& value) const;

  /// Sets the number of variables of all models. @return 1 if value < 1 or a model refuses.
  virtual int PutNumVar(int const& value);
  virtual int GetNumVar(int& value) const;

  /**
   * Sets the outputs of each model; the outputs of one model are one output group.
   * @param sizes numModels sizes that sum to total; the list copies them.
   * @return 1 unless numModels is the number of models, total >= 0 and the sizes sum to it; 1 also
   *         when a model refuses its size.
   */
  virtual int PutNumSol(int const& total, int const& numModels, int* sizes);

  /// Yields (n + 1)(n + 2)/2.
  virtual int GetOptNumSamp(int& value);
  /// Calls `SetOptNumSamp` of all models.
  virtual int SetOptNumSamp();

  /// Sets the number of samples of all models. @return 1 if value < 1 or a model refuses.
  virtual int PutNumSamp(int const& value);
  virtual int GetNumSamp(int& value) const;

  /// Gives all models the input samples X (m x n). @return 1 if X is empty or a model refuses.
  virtual int PutInpSampMtx(Matrix& X);
  /// Copies the input samples of model i out. @return 1 if there is no such model.
  virtual int GetInpSampMtx(Matrix& X, int i);

  /// Gives each model its columns of Y (m x outputs of all). @return 1 if Y has another shape.
  virtual int PutOutSampMtx(Matrix& Y);
  /**
   * Copies output samples out: for i < 0 those of all models, side by side, else those of model i.
   * @return 1 if there is no such model, or models differ in their numbers of samples.
   */
  virtual int GetOutSampMtx(Matrix& Y, int i);

  /// Gives each model the r new samples X (r x n) and its columns of Y (r x outputs of all), with
  /// their kernels kept. @return 1 if a shape is wrong or a model refuses.
  virtual int AppendSampData(Matrix& X, Matrix& Y);

  /// Yields the kernel vectors of all models, one behind the other.
  virtual int GetKernVec(RealVec& value);

  // Options: a negative index sets all models, an index with no model returns 1 and sets nothing.
  virtual int PutCorrFuncType(int const& value, int index);
  virtual int PutKrigingKernVarType(int const& value, int index);
  virtual int PutKrigingKernOptType(int const& value, int index);
  virtual int PutScalingType(int const& value, int index);
  virtual int PutPolynomType(int const& value, int index);
  /// @return always 1, also where the step was set; callers ignore it.
  virtual int SetStep(int const& value, int index);

  /// Fits each model, with a line of message each. @return 1 at the first failure.
  virtual int Solve();
  /// Fits each model, solved or not, without messages. @return 1 at the first failure.
  virtual int ReSolve();

  /// Predicts: Y (N x outputs of all) at X (N x n).
  virtual int EvalModel(Matrix& X, Matrix& Y);
  /**
   * Predicts, and takes the refinement points of the model with the largest relative error.
   * @param numNew  in: points wanted of each model; out: the rows of newPoints, 0 if no model saw
   * an error.
   * @param useTest true to use the test points, of which X must then have as many rows.
   */
  virtual int EvalModel(Matrix& X, Matrix& Y, int& numNew, Matrix& newPoints, double& maxRelErr,
                        bool useTest);
  /// Predicts Y and standard errors E (both N x outputs of all) at X (N x n).
  virtual int EvalModelAndPredictor(Matrix& X, Matrix& Y, RealMatrix& E);

  /**
   * Evaluates the test points and proposes samples: points of largest relative error over all
   * models, no sample points, at least 2 % of the test points' size apart from each other.
   * @param Y         values at the test points (N x outputs of all).
   * @param numNew    in: points wanted; out: points found. More than `MaxNewPoints` are never
   * given.
   * @param newPoints the points (numNew x n), largest error first; if none is found, or wanted, the
   *                  point of the model with the largest error.
   * @param maxRelErr the largest relative error of all models.
   * @return 1 if a model fails.
   */
  virtual int EvalTestModel(Matrix& Y, int& numNew, Matrix& newPoints, double& maxRelErr);

  /**
   * Largest relative error e of predictions at X (N x n) against Y (N x outputs of all), and the
   * largest relative predictor error there. Shapes that do not fit return 0 and touch nothing.
   */
  virtual int CheckRelativeError(Matrix& X, Matrix& Y, double& e, double& maxPredicted);

  /// Writes the list in the layout of docs/formats/kriging.md. @return 1 if a write fails or a
  /// model is not solved.
  virtual int Write(FILE* file);
  /// Reads a list that `Write` wrote. @return 1 as `Kriging::Read`; the list may then be read again
  /// or destroyed. Test points and proposed points stay.
  virtual int Read(FILE* file);

  /**
   * Gives test points X (N x n) to one model or all, and keeps them for `EvalTestModel`.
   * @return 1 if X has no rows or not n columns, or if there is no such model.
   */
  virtual int PutInpTestMtx(Matrix& X, int index);

  /**
   * Estimates from the last step how many more points reach the target error.
   * @return 1 if the target is above newError; else the points that the last step's gain a point
   *         asks for, at least 1 and at most the number of variables; the number of variables when
   *         the error got worse.
   */
  virtual int EvaluateNumberOfNewPointsRequired(double oldError, double newError, int numAdded,
                                                double target);

  /**
   * @return model i, or null for i < 0 or i > number of models. The index one beyond the last gives
   *         the address one past it, not to be read through. The list keeps the model.
   */
  Kriging<T>* GetItemKriging(int i);

  /// Yields the row, among the test points, of proposed point k; -1 and a result of 1 if there is
  /// none.
  int GetIdOfNewPoint(int k, int& id) const;

  /// Sends a text as a message of debug scope 502 and level 3.
  int Print(std::string const& text);
  /// The same of a text formatted as by printf.
  int Print(char const* format, ...)
#if defined(__GNUC__)
      __attribute__((format(printf, 2, 3)))
#endif
      ;

protected:
  int NumKriging;
  std::shared_ptr<Kriging<T>[]> Models;
  int NumVar;
  int NumSamp;
  int NumSol;
  std::shared_ptr<int[]> SolPerModel; ///< outputs of each model, which sum to NumSol
  Matrix InpTestMtx;
  double TestSize; ///< `ComputeSizeOfTestMtx` of the test points
  int NumNewPoints;
  std::array<int, MaxNewPoints> NewPointIds;

  /// Spread of the magnitudes of the last column of the test points; 0 if these have not n columns.
  double ComputeSizeOfTestMtx();
  int searchNewPoints(int& numNew, int* ids, RealVec& values, double t);
  int searchNextNewPoint(RealVec& errors, int wanted, int& numNew, int* ids, RealVec& values,
                         bool& found, double t);
  /// @return whether test points i and j are closer than the square root of t.
  bool IsCloseToExistingPoint(int i, int j, double& t);

private:
  int copyModels(KrigingList& source, std::vector<int> const& ids);
  void makeModels(int count);
  int adoptSize(Kriging<T>& model, int i);
  int joinOutSamples(Matrix& Y);
  int readModels(FILE* file);
  int evalModels(Matrix& X, Matrix& Y, int wanted, Matrix& newPoints, double& maxRelErr,
                 bool useTest);
  int chooseNewPoints(int& numNew, Matrix& newPoints);
  int collectErrors(RealVec& errors);
  bool mayBeChosen(int i, int const* ids, int numNew, double t);
};

extern template class KrigingList<double>;
extern template class KrigingList<std::complex<double>>;

#endif
