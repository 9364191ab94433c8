#include "report.h"

#include "output_file.h"
#include "version.h"

namespace app {

Json newReport(const std::string& command) {
  Json document;
  document["schema_version"] = reportSchema;
  document["program"] = "zarel";
  document["version"] = programVersion();
  document["command"] = command;
  return document;
}

Json errorReport(const Failure& failure) {
  Json error;
  error["exit_code"] = static_cast<int>(failure.code);
  error["message"] = failure.what();
  if (!failure.hint.empty()) error["hint"] = failure.hint;
  const Place& place = failure.place;
  if (!place.file.empty()) error["file"] = place.file;
  if (place.line > 0) error["line"] = place.line;
  if (place.row > 0) error["row"] = place.row;
  if (place.column > 0) error["column"] = place.column;
  if (!place.name.empty()) error["name"] = place.name;
  return error;
}

std::string reportText(const Json& document) {
  return document.dump(2, ' ', false, Json::error_handler_t::replace);
}

void printReport(const Json& document) {
  printData(reportText(document) + "\n");
}

void printData(const std::string& text) {
  OutputFile output("-", true);
  output.write(text);
  output.commit();
}

} // namespace app
