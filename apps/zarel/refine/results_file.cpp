#include "results_file.h"

#include "csv.h"

#include <algorithm>

#include <sys/stat.h>

namespace app::refine {
namespace {

/// Far more than any number takes as text; a simulation that writes without end is not read.
constexpr long long bytesPerCell = 4096;

std::string sizeError(const std::string& path, std::size_t outputs, int count) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return "it wrote no file of results";
  if (!S_ISREG(info.st_mode)) return "its results are not a regular file";
  const long long limit = 1 << 20;
  if (info.st_size > limit + bytesPerCell * static_cast<long long>(outputs + 1) * (count + 1))
    return "its file of results is far too long (" + std::to_string(info.st_size) + " bytes)";
  return {};
}

/// Where each output stands in the file; throws if one is missing.
std::vector<std::size_t> findColumns(const CsvReader& csv,
                                     const std::vector<std::string>& outputs) {
  std::vector<std::size_t> columns;
  const auto& names = csv.names();
  if (!csv.hasHeader() && names.size() != outputs.size())
    throw Failure(ExitCode::badInput, "the results have " + std::to_string(names.size()) +
                                          " columns and no header, for " +
                                          std::to_string(outputs.size()) + " outputs");
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const auto found = std::find(names.begin(), names.end(), outputs[i]);
    if (csv.hasHeader() && found == names.end())
      throw Failure(ExitCode::badInput, "the results have no column \"" + outputs[i] + "\"");
    columns.push_back(csv.hasHeader() ? static_cast<std::size_t>(found - names.begin()) : i);
  }
  return columns;
}

ResultRow readRow(const CsvReader& csv, const std::vector<std::size_t>& columns,
                  const std::vector<std::string>& outputs) {
  ResultRow row;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    try {
      row.values.push_back(csv.number(columns[i]));
    } catch (const Failure& failure) {
      row.values.clear();
      row.error = "results row " + std::to_string(csv.row()) + ", column \"" + outputs[i] +
                  "\": " + failure.what();
      return row;
    }
  }
  return row;
}

std::string rowsText(long long count) {
  return std::to_string(count) + (count == 1 ? " row" : " rows");
}

} // namespace

Results readResults(const std::string& path, const std::vector<std::string>& outputs, int count) {
  Results results;
  results.error = sizeError(path, outputs.size(), count);
  if (!results.error.empty()) return results;
  try {
    CsvReader csv(path);
    const std::vector<std::size_t> columns = findColumns(csv, outputs);
    while (csv.next()) {
      if (csv.row() <= count) results.rows.push_back(readRow(csv, columns, outputs));
    }
    if (csv.row() != count)
      results.error = "it wrote " + rowsText(csv.row()) + " of results for " +
                      std::to_string(count) + (count == 1 ? " point" : " points");
  } catch (const Failure& failure) {
    results.error = "its results: " + std::string(failure.what());
  }
  return results;
}

} // namespace app::refine
