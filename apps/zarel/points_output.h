/**
 * @file points_output.h
 * Where predictions go: rows of CSV, or one JSON document, both written as they come.
 */
#ifndef ZAREL_APP_POINTS_OUTPUT_H
#define ZAREL_APP_POINTS_OUTPUT_H

#include "csv.h"
#include "failure.h"
#include "report.h"

#include <memory>
#include <string>
#include <vector>

namespace app {

/** Takes rows of numbers. */
class PointsOutput {
public:
  virtual ~PointsOutput() = default;
  virtual void begin(const std::vector<std::string>& names) = 0;
  virtual void row(const std::vector<double>& values) = 0;
  /** Ends the document, with the number of rows; `failure` is null if all went well. */
  virtual void end(long long rows, const Failure* failure) = 0;
};

std::unique_ptr<PointsOutput> csvPoints(OutputFile& output);
/** The document of `zarel predict --json`: head, "columns", "rows", then "points". */
std::unique_ptr<PointsOutput> jsonPoints(OutputFile& output);

} // namespace app

#endif
