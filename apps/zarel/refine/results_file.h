/**
 * @file results_file.h
 * Reads what a simulation wrote, and trusts none of it.
 */
#ifndef ZAREL_APP_REFINE_RESULTS_FILE_H
#define ZAREL_APP_REFINE_RESULTS_FILE_H

#include <string>
#include <vector>

namespace app::refine {

/** The outputs of one point, or why there are none. */
struct ResultRow {
  std::vector<double> values;
  std::string error; ///< empty when the row is good
};

/** A file of results as a whole. */
struct Results {
  std::vector<ResultRow> rows;
  std::string error; ///< why the file as a whole is of no use; empty when it is
};

/**
 * Reads `count` rows with these outputs: columns by name, in any order, others ignored; a file
 * without a header must have exactly these columns in this order. Throws nothing of its own: what
 * is wrong is told in the result.
 */
Results readResults(const std::string& path, const std::vector<std::string>& outputs, int count);

} // namespace app::refine

#endif
