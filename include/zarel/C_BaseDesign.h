/**
 * @file C_BaseDesign.h
 * Designs of experiments.
 */
#ifndef ZAREL_C_BASEDESIGN_H
#define ZAREL_C_BASEDESIGN_H

#include <cstdio>

#include <zarel/C_ZarelBase.h>
#include <zarel/MessageToolEnums.h>
#include <zarel/lm_types.h>

namespace Zarel {

/**
 * A design of experiments: points in a space of `NumFactors` variables, the rows of a matrix.
 *
 * Values are coded: the centre of the space is the zero vector, its faces stand at -1 and 1. The
 * class adds the centre, given points and random points that lie far from each other, and maps
 * coded values to a range. It is complete as it stands; a design of another kind derives from it
 * and fills the matrix.
 *
 * Random points are chosen greedily from K = trunc(10000 sqrt(NumFactors)) candidates, uniform in
 * the cube (corners of it with 2 levels): each is the candidate whose nearest point, among the
 * design and those chosen before, is farthest away, the first of equal ones. The candidates depend
 * on the seed alone, which is 1 unless told otherwise, so a design comes out the same in every run.
 * `docs/designs.md` shows what that looks like.
 *
 * Storage: the design owns its matrix (lm_types.h: by rows); what `getDesignMatrix` shows is valid
 * until the next operation that adds points, and as long as the design.
 *
 * Messages: what is done is told on all streams as information of level 3 in the debug scope 452.
 *
 * Threads: the matrix kernel serves one thread at a time, and so do designs.
 *
 * Failures: -1, or false with *error at -1, as the operations say; the design is then as before.
 * Where an operation takes `error` and nothing else is said, null is not allowed.
 *
 * @code
 * int error = 0;
 * Zarel::C_BaseDesign design(2, 0);
 * design.AllocateDesignMatrix(1);             // the centre
 * design.AddRandomPoints(20, 0, 0, nullptr);  // and 20 points around it
 * design.Normalize(0.0, 1.0, &error);
 * design.Print(stdout);
 * @endcode
 */
class ZAREL_API C_BaseDesign : public C_ZarelBase {
public:
  /** No factors, no levels. */
  C_BaseDesign() = default;
  /** No points. With `numLevels` 2 random points are corners of the cube. */
  C_BaseDesign(int numFactors, int numLevels);
  C_BaseDesign(const C_BaseDesign&) = delete;
  C_BaseDesign& operator=(const C_BaseDesign&) = delete;
  /** Frees the matrix. */
  ~C_BaseDesign() override;

  /** Returns the debug scope of the messages, 452. */
  virtual E_DebugScope_enum GetDebugScope() const;

  /**
   * Gives the matrix `rows` rows of `NumFactors` columns; values that both shapes have stay, added
   * ones are zero. 0 rows give one row of zeros. Returns 0, or -1 after a trace.
   */
  int AllocateDesignMatrix(int rows);
  /** Shows the matrix, null until there is one. */
  MAT* getDesignMatrix();

  /**
   * Adds the zero vector as AddSpecificPoint does, and returns what that returns. False at once for
   * a null `error`. Sets *error to 0 when it is done, also where the point could not be added; -1
   * only when there was no memory for the vector.
   */
  bool AddCentralPoint(int position, int* error);
  /** The same at position 0. */
  bool AddCentralPoint(int* error);
  /**
   * Inserts a point of `NumFactors` coordinates as row `position`, clamped to the rows that there
   * are and the one behind them. A point that is in the design, equal in all coordinates, is not
   * added: false, with *error 0.
   * False with *error -1 without a matrix, for a point of another length, without memory, and for a
   * null point (`error` may then be null).
   */
  bool AddSpecificPoint(VEC* point, int position, int* error);

  /** Adds `count` points of a kind: 'R' or 'r' for random ones, as AddRandomPoints. -1 for others.
   */
  int AugmentDesign(char kind, int count, MAT* target);
  /**
   * Chooses `count` points that lie far from each other and from the design. The two numbers are
   * not read.
   *
   * Without `target` they become further rows of the design, and `NumPoints` keeps its old value:
   * the matrix tells the true number. With `target` (count x NumFactors) they fill it, the design
   * stays, and `NumPoints` becomes `count`.
   *
   * Once all candidates are chosen, or all corners, further points repeat the first candidate.
   * Returns 0; -1 without a matrix, for a target of another shape, a negative count, fewer than 1
   * factor, a seed of 0, or no memory for the rows. Throws C_ZarelException 1001 or 2880 without
   * memory for the candidates.
   */
  int AddRandomPoints(int count, double, double, MAT* target);
  /** Sets the seed of the random points, 1 at first. A seed of 0 makes AddRandomPoints fail. */
  void SetSeed(unsigned int seed);

  /**
   * Returns the smallest squared Euclidean distance from `point` (NumFactors values) to the rows
   * `first` to `last` - 1 of `m`; 1e30 for no rows, and where all are farther than that.
   */
  double ComputeDistMin(int first, int last, double* point, MAT* m);

  /**
   * Replaces every value x by step x + low. The step is (high - low) / (NumLevels - 1), or 1 for a
   * design of one factor or none. A second call maps the mapped values again. Sets *error to 0, or
   * to -1 for low > high on a design that was never mapped, which then stays as it is.
   */
  void Normalize(double low, double high, int* error);

  /**
   * Writes a line feed and the matrix, a line a row. Two digits follow the point with fewer than 10
   * levels, one with more or a negative number; values that are not negative get a blank in front.
   */
  void Print(FILE* stream);

protected:
  int NumFactors = 0;          ///< variables
  int NumLevels = 0;           ///< levels of each variable
  int NumPoints = 0;           ///< points, as the last operation that counts them left it
  MAT* DesignMatrix = nullptr; ///< owned; a row a point
  bool Normalized = false;     ///< Normalize was applied

private:
  unsigned int Seed = 1;
};

} // namespace Zarel

#endif
