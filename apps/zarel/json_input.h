/**
 * @file json_input.h
 * JSON that comes from a file: size, depth and duplicate keys are checked while it is read.
 */
#ifndef ZAREL_APP_JSON_INPUT_H
#define ZAREL_APP_JSON_INPUT_H

#include "report.h"

#include <string>
#include <string_view>

namespace app {

/**
 * Parses one JSON text. Texts that are not JSON, that nest deeper than 32 levels or that repeat a
 * key in an object throw `badInput`.
 * @param file what the text is part of, for the message
 */
Json parseJson(std::string_view text, const std::string& file);

} // namespace app

#endif
