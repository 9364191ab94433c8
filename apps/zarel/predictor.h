/**
 * @file predictor.h
 * Predictions at a stream of points, in blocks of bounded size.
 */
#ifndef ZAREL_APP_PREDICTOR_H
#define ZAREL_APP_PREDICTOR_H

#include "columns.h"
#include "csv.h"
#include "points_output.h"
#include "surrogate.h"

#include <string>
#include <vector>

namespace app {

/** How `predictAll` writes its rows. */
struct PredictChoice {
  bool errors = false;     ///< standard errors behind the predictions
  bool withInputs = false; ///< the points in front of them
  long long skip = 0;      ///< data rows to leave out at the start
};

/** Rows a block has, so that its correlations with m samples take some 16 MiB at most. */
int blockRows(int samples);

/**
 * The columns of the points that hold the model's inputs: by name when the file has a header,
 * else the first ones in order; or as `chosen` says when it is not empty.
 */
Columns inputColumns(const CsvReader& points, const std::string& chosen, const ModelNotes& notes);

/** Reads points, predicts and writes, block by block. */
class Predictor {
public:
  Predictor(KrigingList<double>& list, const ModelNotes& notes, const PredictChoice& choice);

  /** All rows up to the end or a signal; returns false at a signal. */
  bool run(CsvReader& points, const Columns& columns, PointsOutput& output, Console& console);

  /** Names of the columns that are written. */
  std::vector<std::string> columnNames() const;
  long long rows() const { return rows_; }
  /** Values written that are not finite. */
  long long notFinite() const { return notFinite_; }

private:
  void readBlock(CsvReader& points, const Columns& columns);
  void predictBlock();
  void writeBlock(PointsOutput& output);

  KrigingList<double>& list_;
  const ModelNotes& notes_;
  PredictChoice choice_;
  int capacity_;
  Table block_;
  C_MatMGe<double> x_, y_, e_;
  std::vector<double> row_;
  long long rows_ = 0;
  long long notFinite_ = 0;
};

} // namespace app

#endif
