/**
 * @file report.h
 * The one JSON document of a command that was given --json.
 */
#ifndef ZAREL_APP_REPORT_H
#define ZAREL_APP_REPORT_H

#include "failure.h"

#include <nlohmann/json.hpp>
#include <string>

namespace app {

using Json = nlohmann::ordered_json;

/** Version of the documents' layout; grows when a field changes its meaning or goes away. */
constexpr int reportSchema = 1;

/** A document with its first fields: the schema version, the program and the command. */
Json newReport(const std::string& command);

/** The "error" object of a failed command. */
Json errorReport(const Failure& failure);

/** The document as text; texts that are not UTF-8 are mended, numbers that are not finite null. */
std::string reportText(const Json& document);

/** Writes the document and a line feed on standard output; throws `io`. */
void printReport(const Json& document);

/** Writes text on standard output; throws `io`. */
void printData(const std::string& text);

} // namespace app

#endif
